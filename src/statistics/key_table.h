// Byte strings by numbers: each is stored once.
//
// Shape    The first gets 0, and so on. Strings of one hash are told apart by their bytes. The hash
//          has a secret of the process, so that nobody can prepare strings that are slow to find.
// Owner    Holds the bytes. A view of them is valid until the next Insert or Clear.
// Errors   std::bad_alloc.
// Threads  One at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class KeyTable {
 public:
  static std::uint64_t HashOf(std::string_view key);

  std::optional<std::uint32_t> Find(std::string_view key, std::uint64_t hash) const;
  // REQUIRES: Find does not find it, and there are less than 2^31.
  std::uint32_t Insert(std::string_view key, std::uint64_t hash);
  std::string_view operator[](std::uint32_t number) const {
    const Entry& entry = m_entries[number];
    return std::string_view(m_bytes).substr(entry.place, entry.length);
  }
  std::uint64_t HashAt(std::uint32_t number) const { return m_entries[number].hash; }
  std::size_t Size() const { return m_entries.size(); }
  std::size_t Bytes() const { return m_bytes.size(); }
  void Clear();

 private:
  struct Entry {
    std::uint64_t hash;
    std::size_t place;
    std::size_t length;
  };
  void Grow();
  void Place(std::uint32_t number);

  std::vector<std::uint32_t> m_slots;  // number + 1; 0: free. Always some free ones
  std::vector<Entry> m_entries;
  std::string m_bytes;
};

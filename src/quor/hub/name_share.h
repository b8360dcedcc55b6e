// How many names one account may add to those of a hub, which all accounts share.
//
// Owner    Shared by the sources of the account.
// Threads  One.
#pragma once

#include <cstddef>
#include <cstdint>

class NameShare {
 public:
  static constexpr std::size_t kNamesMax = 16384, kBytesMax = 16u << 20;

  // A name of so many bytes is new in this generation of the hub's names. False: no more.
  bool Take(std::uint32_t generation, std::size_t bytes) {
    if (generation != m_generation) *this = NameShare(generation);
    if (m_names >= kNamesMax || m_bytes + bytes > kBytesMax) {
      m_full = true;
      return false;
    }
    ++m_names;
    m_bytes += bytes;
    return true;
  }
  // True once after it was used up.
  bool MustReport() {
    const bool must = m_full && !m_reported;
    m_reported = m_reported || m_full;
    return must;
  }

  NameShare() = default;

 private:
  explicit NameShare(std::uint32_t generation) : m_generation(generation) {}

  std::uint32_t m_generation = 0;
  std::size_t m_names = 0, m_bytes = 0;
  bool m_full = false, m_reported = false;
};

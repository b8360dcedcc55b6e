// The counts of many traces by one field: the parts of pieces, joined in their order.
//
// Shape    Keys are in the order in which they came first. A bounded number of them is told apart:
//          of a file with a million different patterns the first ones are, and the traces of all
//          further ones are counted together as Others. So the sum is always that of all traces.
// Errors   std::bad_alloc.
// Threads  One at a time.
#pragma once

#include <vector>

#include "statistics/stat_counter.h"

struct StatBounds {
  std::size_t keys = 65536, bytes = std::size_t{16} << 20;
};

class StatTable {
 public:
  // The number of all keys that are not told apart.
  static constexpr std::uint32_t kOthers = 0xFFFFFFFF;

  explicit StatTable(const StatBounds& bounds = {}) : m_bounds(bounds) {}

  void Join(const StatPart& part);
  // The number of a key, which is new where it was not met before.
  std::uint32_t NumberOf(std::string_view key, std::uint64_t hash);

  // One more trace with this number.
  void AddTo(std::uint32_t number, WhereStamp stamp) {
    (number == kOthers ? m_others : m_tallies[number]).Add(stamp);
    m_all.Add(stamp);
  }
  // The keys stay.
  void ClearTallies();
  // Is there a key that was not told apart?
  bool IsFull() const { return m_isFull; }

  std::size_t Size() const { return m_keys.Size(); }
  std::string_view KeyAt(std::uint32_t number) const { return m_keys[number]; }
  const Tally& TallyAt(std::uint32_t number) const { return m_tallies[number]; }
  const Tally& Others() const { return m_others; }
  const Tally& All() const { return m_all; }

 private:
  StatBounds m_bounds;
  KeyTable m_keys;
  std::vector<Tally> m_tallies;
  Tally m_others, m_all;
  bool m_isFull = false;
};

#include "controls/tree/row_sums.h"

#include <algorithm>

void RowSums::Add(std::uint64_t number, std::int64_t rows) {
  for (Level& level : m_levels) {
    number >>= kGroupBits;
    if (level.sums.empty()) level.base = std::max(level.base, number);
    while (number < level.base) {
      level.sums.push_front(0);
      --level.base;
    }
    while (number - level.base >= level.sums.size()) level.sums.push_back(0);
    level.sums[number - level.base] += rows;
  }
}

std::int64_t RowSums::BeforeGroupOf(std::uint64_t number) const {
  std::int64_t rows = 0;
  std::uint64_t end = number >> kGroupBits;  // groups of the level that are added one by one
  for (std::size_t i = 0; i < m_levels.size(); ++i) {
    const Level& level = m_levels[i];
    const bool top = i + 1 == m_levels.size();
    const std::uint64_t begin = top ? 0 : end >> kGroupBits << kGroupBits;
    for (std::uint64_t group = std::max(begin, level.base); group < end; ++group)
      if (group - level.base < level.sums.size()) rows += level.sums[group - level.base];
    end >>= kGroupBits;
  }
  return rows;
}

std::uint64_t RowSums::GroupWith(std::int64_t& row) const {
  std::uint64_t group = 0;
  for (std::size_t i = m_levels.size(); i-- > 0;) {
    const Level& level = m_levels[i];
    group = std::max(group, level.base);
    while (row >= level.sums[group - level.base]) row -= level.sums[group++ - level.base];
    group <<= kGroupBits;
  }
  return group;
}

void RowSums::DropBefore(std::uint64_t number) {
  for (Level& level : m_levels) {
    number >>= kGroupBits;
    while (!level.sums.empty() && level.base < number) {
      level.sums.pop_front();
      ++level.base;
    }
  }
}

#include "controls/list/row_ranges.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

bool RowRanges::Contains(Row row) const {
  const auto behind = m_lastByFirst.upper_bound(row);
  return behind != m_lastByFirst.begin() && std::prev(behind)->second >= row;
}

RowRanges::Row RowRanges::FirstFrom(Row from) const {
  const auto behind = m_lastByFirst.upper_bound(from);
  if (behind != m_lastByFirst.begin() && std::prev(behind)->second >= from) return from;
  return behind == m_lastByFirst.end() ? -1 : behind->first;
}

void RowRanges::Clear() {
  m_lastByFirst.clear();
  m_count = 0;
}

void RowRanges::Add(Row first, Row last) {
  if (last < first) return;
  Remove(first, last);
  m_count += last - first + 1;
  auto behind = m_lastByFirst.lower_bound(first);
  if (behind != m_lastByFirst.end() && behind->first == last + 1) {
    last = behind->second;
    behind = m_lastByFirst.erase(behind);
  }
  if (behind != m_lastByFirst.begin() && std::prev(behind)->second == first - 1)
    std::prev(behind)->second = last;
  else
    m_lastByFirst.emplace_hint(behind, first, last);
}

void RowRanges::Remove(Row first, Row last) {
  if (last < first) return;
  auto range = m_lastByFirst.upper_bound(first);
  if (range != m_lastByFirst.begin() && std::prev(range)->second >= first) --range;
  while (range != m_lastByFirst.end() && range->first <= last) {
    const auto [begin, end] = *range;
    range = m_lastByFirst.erase(range);
    m_count -= std::min(end, last) - std::max(begin, first) + 1;
    if (begin < first) m_lastByFirst.emplace(begin, first - 1);
    if (end > last) m_lastByFirst.emplace(last + 1, end);
  }
}

void RowRanges::Close(Row first, Row count) {
  Remove(first, first + count - 1);
  const auto behind = m_lastByFirst.lower_bound(first);
  const std::vector<std::pair<Row, Row>> moved(behind, m_lastByFirst.end());
  m_lastByFirst.erase(behind, m_lastByFirst.end());
  for (const auto& [begin, end] : moved) m_count -= end - begin + 1;
  for (const auto& [begin, end] : moved) Add(begin - count, end - count);
}

RowRanges RowRanges::MovedBy(Row rows) const {
  RowRanges moved;
  moved.m_count = m_count;
  for (const auto& [first, last] : m_lastByFirst)
    moved.m_lastByFirst.emplace_hint(moved.m_lastByFirst.end(), first + rows, last + rows);
  return moved;
}

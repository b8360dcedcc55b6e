#include "listview/colours/place_search.h"

#include <algorithm>

std::optional<std::size_t> PlaceSearch::Find(const TraceEvent_i& wanted) {
  const Number first = m_list.Popped(), end = first + m_list.size();
  if (first == end) return 0;
  if (m_left == 0) return std::nullopt;
  if (m_wanted != &wanted) {
    m_wanted = &wanted;
    m_begin = m_end = std::clamp(m_near, first, end - 1);
  }
  m_begin = std::clamp(m_begin, first, end);
  m_end = std::clamp(m_end, m_begin, end);
  while (m_left > 0 && (m_begin > first || m_end < end)) {
    if (!Extend(wanted, first, end)) continue;
    m_wanted = nullptr;
    return static_cast<std::size_t>(m_near - first);
  }
  if (m_begin > first || m_end < end) return std::nullopt;
  m_wanted = nullptr;
  return m_list.size();
}

// Rows of a page mostly follow one another closely.
bool PlaceSearch::Extend(const TraceEvent_i& wanted, Number first, Number end) {
  constexpr Number kPart = 256;
  const auto is = [&](Number number) {
    if (m_left > 0) --m_left;
    if (At(number) != &wanted) return false;
    m_near = number;
    return true;
  };
  const Number behind = std::min(m_end + kPart, end);
  while (m_end < behind)
    if (is(m_end++)) return true;
  const Number before = std::max(m_begin, first + kPart) - kPart;
  while (m_begin > before)
    if (is(--m_begin)) return true;
  return false;
}

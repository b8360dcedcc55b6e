#include "filter/shown_traces.h"

#include <algorithm>

#include "terminal/output.h"

bool ShownTraces::Filter(const FilterPaths& paths) {
  if (paths.Empty()) return true;
  if (std::string why; !paths.Apply(m_document, m_filter, &why)) {
    PrintError(why);
    return false;
  }
  if (m_filter.allTraces) return true;
  m_all = false;
  m_pass = std::make_unique<FilterPass>(m_filter);
  return true;
}

void ShownTraces::Keep(Test test) {
  m_all = false;
  m_test = std::move(test);
}

bool ShownTraces::SearchOn() {
  if (m_next >= All()) return false;
  const std::size_t behindLook = m_next % kTracesPerSearchLook;
  if (behindLook == 0 && m_look && !m_look(m_next)) return false;
  const std::size_t end = std::min(m_next - behindLook + kTracesPerSearchLook, All());
  const std::size_t rows = m_places.size();
  // Only up to the next row, because the caller waits.
  while (m_next < end && m_places.size() == rows) {
    if (Passes(*m_document.m_traces[m_next]))
      m_places.push_back(static_cast<std::uint32_t>(m_next));
    ++m_next;
  }
  return true;
}

std::size_t ShownTraces::Count() {
  if (m_all) return All();
  while (SearchOn()) {
  }
  return m_places.size();
}

std::size_t ShownTraces::FirstRowFrom(std::uint64_t place) {
  const auto from = static_cast<std::size_t>(std::min<std::uint64_t>(place, All()));
  if (m_all) return from;
  m_next = from;
  for (std::size_t before = from; before-- > 0 && m_places.empty();)
    if (Passes(*m_document.m_traces[before]))
      m_places.push_back(static_cast<std::uint32_t>(before));
  return m_places.size();
}

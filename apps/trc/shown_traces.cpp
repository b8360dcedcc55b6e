#include "shown_traces.h"

#include <algorithm>

#include "output.h"
#include "tree/filter/filter_pass.h"

bool ShownTraces::Filter(const FilterPaths& paths) {
  if (paths.Empty()) return true;
  CTraceFilter filter;
  if (std::string why; !paths.Apply(m_document, filter, &why)) {
    Complain(why);
    return false;
  }
  if (filter.allTraces) return true;
  m_all = false;
  FilterPass pass(filter);
  std::uint32_t place = 0;
  m_document.m_traces.ForEach(0, [&](TraceEvent_i* trace) {
    if (pass.Matches(*trace)) m_places.push_back(place);
    ++place;
  });
  return true;
}

std::size_t ShownTraces::FirstRowFrom(std::uint64_t place) const {
  if (m_all) return static_cast<std::size_t>(std::min<std::uint64_t>(place, Size()));
  const auto row = std::lower_bound(m_places.begin(), m_places.end(), place);
  return static_cast<std::size_t>(row - m_places.begin());
}

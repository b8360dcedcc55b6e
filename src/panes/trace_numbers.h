// The numbers of traces (notes/kept/doc_notes.h), found from where others were found.
//
// Owner    Borrows the list.
// Threads  One.
#pragma once

#include <optional>

#include "listview/colours/place_search.h"

class TraceNumbers {
 public:
  explicit TraceNumbers(const TraceList_t& list) : m_list(list), m_search(list) {}

  // Nothing: it is not in the list.
  std::optional<std::uint64_t> Of(const TraceEvent_i& trace) {
    std::optional<std::size_t> place;
    while (!(place = m_search.Find(trace))) m_search.BeginPage();
    if (*place >= m_list.size()) return std::nullopt;
    return m_list.Popped() + *place;
  }

 private:
  const TraceList_t& m_list;
  PlaceSearch m_search;
};

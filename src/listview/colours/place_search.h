// Where a trace stands in its document's list, found from where others were found.
//
// Shape    A page may look at kPerPage places. A search that is not over goes on with the next
//          page, if that asks about the same trace first.
// Owner    Borrows the list. A trace is only compared.
// Threads  One.
#pragma once

#include <optional>

#include "records/trace_list.h"

class PlaceSearch {
 public:
  static constexpr std::size_t kPerPage = 200'000;

  explicit PlaceSearch(const TraceList_t& list) : m_list(list) {}

  void BeginPage() { m_left = kPerPage; }
  // Nothing: it is not known yet. The size of the list: it is not there.
  std::optional<std::size_t> Find(const TraceEvent_i& wanted);

 private:
  using Number = std::uint64_t;  // places, counted with TraceList_t::Popped
  const TraceEvent_i* At(Number number) const {
    return m_list[static_cast<std::size_t>(number - m_list.Popped())];
  }
  bool Extend(const TraceEvent_i& wanted, Number first, Number end);

  const TraceList_t& m_list;
  std::size_t m_left = kPerPage;
  const TraceEvent_i* m_wanted = nullptr;
  Number m_near = 0;              // the one that was found last
  Number m_begin = 0, m_end = 0;  // these have been looked at
};

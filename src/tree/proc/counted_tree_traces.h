// The traces whose hits are counted for the tree: those of the document that pass its filter, in
// the order of the document, each with its own text. A row is a place in the document.
//
// The search itself looks at whole labels, which have more than the text, and at those of threads
// and processes too. They are no traces and have no place in that order.
//
// Owner    Borrows the view.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "tree/filter/filter_pass.h"
#include "tree/find/count/hit_count.h"
#include "tree/proc/proc_view.h"

class CountedTreeTraces final : public CountedRows {
 public:
  // `goTo` selects the item of a trace.
  CountedTreeTraces(const CProcView& view, std::function<void(const TraceEvent_i&)> goTo)
      : m_view(view), m_goTo(std::move(goTo)) {}
  // How many of the hint's traces are the oldest of the document, before they are removed.
  static int OldestIn(const CTraceDoc& document, const CTraceHint& hint);

  int CountedSize() const override { return static_cast<int>(Traces().size()); }
  const TraceEvent_i* CountedAt(int row) const override {
    return Traces()[static_cast<std::size_t>(row)];
  }
  bool AreRowsWhole() const override { return !m_view.FilterProgress(); }
  bool IsShown(int row) override;
  void BeginStep() override;
  int CurrentRow() const override;
  void GoTo(int row) override { m_goTo(*CountedAt(row)); }

 private:
  const TraceList_t& Traces() const { return m_view.Document().m_traces; }

  const CProcView& m_view;
  const std::function<void(const TraceEvent_i&)> m_goTo;
  CTraceFilter m_filter;  // of the step
  std::optional<FilterPass> m_pass;
  // The last answer of CurrentRow, counted from the first trace that there ever was.
  mutable const TraceEvent_i* m_current = nullptr;
  mutable std::uint64_t m_generation = 0, m_place = 0;
};

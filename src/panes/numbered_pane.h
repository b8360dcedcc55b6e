// The traces of a pane by their numbers (notes/kept/doc_notes.h), and where they stand.
//
// Owner    A base of TracePane and of nothing else.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

class TraceEvent_i;

class NumberedPane {
 public:
  // The trace of the row above the current one; null without one.
  virtual const TraceEvent_i* EventAbove() const { return nullptr; }
  // Of the trace of the current row or item.
  std::optional<std::uint64_t> CurrentNumber() const;
  // Those of the selected traces, ascending; when there are more than `most`, some more than that.
  virtual std::vector<std::uint64_t> SelectedNumbers(std::size_t most) const;
  // Selects the trace, or the nearest one that is shown; the other views follow if they should.
  // Does nothing if it has gone.
  virtual void ShowNumber(std::uint64_t number);

 protected:
  ~NumberedPane() = default;
};

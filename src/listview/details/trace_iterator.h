// A cursor over the traces that a view shows, for the properties dialog. The list has one and the
// tree has another.
//
// Owner    Borrows view and traces. It gets no hints: while a dialog runs, a monitor adds and trims
//          rows, and the cursor keeps its row number.
// Threads  Interface thread.
#pragma once

#include "records/trace_event.h"

class CTraceIterator {
 public:
  virtual ~CTraceIterator() = default;
  // Move to the next or the previous item, select it, and update `current`. They check nothing:
  // call HasNext or HasPrev first.
  virtual void Next() = 0;
  virtual void Prev() = 0;
  virtual bool HasNext() const = 0;
  virtual bool HasPrev() const = 0;

  // The user cancelled the last move, which takes long if many items must be made. The cursor has
  // not moved.
  bool cancelled = false;
  TraceEvent_i* current = nullptr;  // may be null after a trim
};

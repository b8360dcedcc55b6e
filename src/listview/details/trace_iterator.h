// A cursor over the traces that a view shows, for the properties dialog. The list has one, the tree
// has another.
//
// Owner    Borrows view and traces. No hint tells it anything: while a dialog runs, a monitor adds
//          and trims rows, and the cursor's index keeps its number.
// Threads  Interface thread.
#pragma once

#include "records/trace_event.h"

class CTraceIterator {
 public:
  virtual ~CTraceIterator() = default;
  // Move to the following or the earlier item, show it as the selection, update `current`. They
  // check nothing: ask HasNext or HasPrev first.
  virtual void Next() = 0;
  virtual void Prev() = 0;
  virtual bool HasNext() const = 0;
  virtual bool HasPrev() const = 0;

  // The person cancelled the last move, which takes long where there is much to open: the cursor is
  // where it was.
  bool cancelled = false;
  TraceEvent_i* current = nullptr;  // may be null after a trim behind the cursor
};

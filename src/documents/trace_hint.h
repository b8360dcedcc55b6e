// The changes that a trace document reports to its views, and the messages that carry them.
//
// Owner    A hint borrows its traces. It is on the sender's stack for the one UpdateAllViews.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <deque>

#include "docview/object.h"
#include "records/trace_event.h"

enum TraceHint : unsigned {
  kHintOptions = 1001,  // options changed; no object
  kHintReady = 1002,    // contents cleared or ready: rebuild from the document; no object
  kHintCleared = 1003,  // second half of a clear. No view acts on it; it is sent nevertheless
  kHintAdded = 1004,    // CTraceHint: new traces, in order
  kHintTrimmed = 1005,  // CTraceHint: traces about to be released; valid during the call only
  kHintFollow = 1006,   // CTraceHint with one trace: move to the nearest trace shown
  kHintMarked = 1007,   // marks or notes have changed; no object
};

class CTraceHint : public CObject {
 public:
  CTraceHint() = default;
  explicit CTraceHint(TraceEvent_i* event) : m_events{event} {}
  std::deque<TraceEvent_i*> m_events;
};

// Messages. The numbers are historical: two of them are used twice, with different receivers.
enum TraceMessage : unsigned {
  WM_TRACE_ROWCOUNT = 1125,   // view to main frame, sent: row count, or -1 to clear the pane
  WM_TRACE_OPTIONS = 1125,    // application to itself, posted: tell all views of new options
  WM_TRACE_FILTERED = 1126,   // view to main frame, sent: 1, 0, or -1 to clear the pane
  WM_TRACE_SAVEORDER = 1126,  // list view to itself, posted: the columns' order is final
  WM_TRACE_SHOWROW = 1127,    // list view to itself, posted: scroll to the row
  WM_TRACE_UPDATE = 1128,     // to a view, posted: a hint code to take by OnUpdate without sender
  WM_TRACE_PROGRESS = 1129,   // load thread to main frame, posted: see load_progress.h
};

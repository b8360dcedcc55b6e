// Events for tests of the list.
#pragma once

#include <memory>

#include "records/trace_event.h"
#include "support/trc_image.h"

struct EventReleaser {
  void operator()(TraceEvent_i* event) const { ReleaseTrace(event); }
};
using EventPtr = std::unique_ptr<TraceEvent_i, EventReleaser>;

// Without a count the trace has no number.
inline EventPtr MakeEvent(const TraceFields& fields) {
  return EventPtr(TraceEvent_i::Create(
      fields.count.value_or(kNoSequenceNumber), fields.machine, fields.app, fields.component,
      fields.category, fields.date, fields.time, fields.tic, fields.pid, fields.tid,
      fields.attributes, fields.file, fields.line, fields.text, fields.stack));
}

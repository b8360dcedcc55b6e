// Writes traces to a .trc file of their own, as long work, with the words of a save that fails.
//
// Shape    Header, then every trace behind the names that it is the first to use: the marks of the
//          document's names are cleared at the start.
// Owner    Borrows everything for the one call. What was written before a write failed stays on the
//          disk. A save that the person cancelled leaves no file, and an existing one as it was.
// Errors   False, and a box has said why; or the person cancelled it.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>

#include "documents/trace_doc.h"
#include "docview/long_work.h"

// The traces that the file gets, in order.
class TraceSource {
 public:
  virtual const TraceEvent_i* Next() = 0;           // null behind the last
  virtual std::optional<int> Progress() const = 0;  // as that of LongWork

 protected:
  ~TraceSource() = default;
};

bool SaveTraces(CTraceDoc& document, const std::string& path, BoxIcon icon, TraceSource& source);

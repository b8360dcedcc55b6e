// Writes traces to a new .trc file, as long work, and shows a message when that fails.
//
// Shape    Header, then every trace, preceded by the names that it is the first to use. The marks
//          of the document's names are cleared at the start.
// Owner    Borrows everything for the one call. After a failed write the part that was written
//          stays on the disk. A save that the user cancelled leaves no new file, and an existing
//          one as it was.
// Errors   False after a message box with the reason, or after the user cancelled.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>

#include "documents/trace_doc.h"
#include "docview/dialogs/long_work.h"

// The traces to save, in order.
class TraceSource {
 public:
  virtual const TraceEvent_i* Next() = 0;           // null after the last
  virtual std::optional<int> Progress() const = 0;  // as in LongWork

 protected:
  ~TraceSource() = default;
};

bool SaveTraces(CTraceDoc& document, const std::string& path, BoxIcon icon, TraceSource& source);

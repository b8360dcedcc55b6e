// Writes the text file of an export as long work.
//
// Owner    Borrows everything for the one call. What was written before a write failed stays on the
//          disk. An export that the person cancelled leaves no file, and an existing one as it was.
// Errors   A box says that the file cannot be opened. The rest is the caller's to say.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>

#include "documents/trace_doc.h"
#include "docview/dialogs/long_work.h"

// The lines, in order.
class ExportText {
 public:
  // Appends the next one, without its end; false behind the last.
  virtual bool Next(std::string& out) = 0;
  virtual std::optional<int> Progress() const = 0;  // as that of LongWork

 protected:
  ~ExportText() = default;
};

enum class ExportResult { Whole, NotOpened, Failed, Cancelled };
ExportResult RunExport(CTraceDoc& document, const std::string& path, ExportText& text);

// Writes the text file of an export as long work.
//
// Owner    Borrows everything for the one call. After a failed write the part that was written
//          stays on the disk. An export that the user cancelled leaves no new file, and an existing
//          one as it was.
// Errors   A message box says if the file cannot be opened. The caller reports everything else.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>

#include "documents/trace_doc.h"
#include "docview/dialogs/long_work.h"

// The lines, in order.
class ExportText {
 public:
  // Appends the next line, without its end; false after the last line.
  virtual bool Next(std::string& out) = 0;
  virtual std::optional<int> Progress() const = 0;  // as in LongWork

 protected:
  ~ExportText() = default;
};

enum class ExportResult { Whole, NotOpened, Failed, Cancelled };
ExportResult RunExport(CTraceDoc& document, const std::string& path, ExportText& text);

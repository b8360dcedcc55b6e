// A form of log lines: reads one line into a trace.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "import/fields/imported_trace.h"

class LineFormat {
 public:
  virtual ~LineFormat() = default;
  // False: the line is not understood. The trace borrows from the line and from this, until the
  // next call.
  virtual bool Read(std::string_view line, ImportedTrace& trace) = 0;
  // May its input have entries in the export form of the journal, which become lines of JSON?
  virtual bool MayBeExported() const { return false; }
  // What is told at the end of the lines that were read: a text for each kind of what was special.
  virtual std::vector<std::string> Notes() const { return {}; }
};

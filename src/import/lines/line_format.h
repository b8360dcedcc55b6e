// A form of log lines: reads one line into a trace.
#pragma once

#include <string_view>

#include "import/fields/imported_trace.h"

class LineFormat {
 public:
  virtual ~LineFormat() = default;
  // False: the line is not understood. The trace borrows from the line and from this, until the
  // next call.
  virtual bool Read(std::string_view line, ImportedTrace& trace) = 0;
};

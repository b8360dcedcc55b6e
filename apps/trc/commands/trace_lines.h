// Traces of a stream as lines, for users or for programs. Later traces are unknown, so columns are
// as wide as the widest cell so far.
//
// Owner    Borrows names, options and the output. The names may grow meanwhile.
// Errors   False: the output takes no more.
// Threads  One.
#pragma once

#include <memory>

#include "commands/dump.h"
#include "filter/live_choice.h"

class TraceLines {
 public:
  virtual ~TraceLines() = default;
  // `previous`: the one that was taken before, null at first.
  virtual bool Add(const TakenTrace& taken, const TraceEvent_i* previous) = 0;
  // Ids mean other names from now on.
  virtual void ForgetIds() {}
};

struct TraceLinesWay {
  DumpFormat format = DumpFormat::Text;
  bool coloured = false;
  ColourProgramPtr colours = {};  // null: lines have no colours
  bool byPlace = false;           // numbered by their places in the stream, else by what is taken
};
std::unique_ptr<TraceLines> MakeTraceLines(const TraceLinesWay& way, const TraceOptions& options,
                                           const NameMap& names, Output& output);

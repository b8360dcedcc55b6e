// trc notes: the marks and notes of a trace file. Other commands: what their filter text asks of
// them.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "filter/shown_traces.h"
#include "input/trace_input.h"

struct NotesOptions {
  std::string file;
  bool json = false;
  // By the places of traces. 0 and an empty text take away.
  std::vector<std::pair<std::uint64_t, std::uint8_t>> marks;
  std::vector<std::pair<std::uint64_t, std::string>> notes;
  bool replace = false;  // those of another trace file
};

int RunNotes(const NotesOptions& options);

// Reads the notes beside the input if the filter text asks for them. False after a message.
bool UseNotes(const TraceInput& input, const TraceOptions& options, ShownTraces& traces);

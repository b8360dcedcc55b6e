// trc dump: the traces of a file, as lines for users or for programs.
#pragma once

#include <string>
#include <vector>

#include "filter/shown_traces.h"
#include "listview/cells/cell_text.h"
#include "terminal/output.h"
#include "terminal/progress_line.h"
#include "where/colours/colour_program.h"

enum class DumpFormat { Text, Jsonl };

struct DumpOptions {
  std::vector<std::string> files;
  DumpFormat format = DumpFormat::Text;
  bool coloured = false;          // severities of the text
  ColourProgramPtr colours = {};  // null: lines have no colours
  TraceOptions traces;            // columns go with the text only
};

// The shown traces from a row on.
struct DumpRange {
  ShownTraces& traces;
  std::size_t from;

  bool Has(std::size_t row) const { return traces.Has(row); }
  // Does a gap stand before it, where what stands beside the chosen ones is shown, too?
  bool IsGapBefore(std::size_t row) const {
    return traces.HasContext() && row > from && traces.PlaceOf(row) != traces.PlaceOf(row - 1) + 1;
  }
  const NameMap& Names() const { return traces.Document().m_names; }
};

int RunDump(const DumpOptions& options);

// The formats. Both stop when the output cannot take more.
void DumpAsJsonl(const DumpRange& range, bool utc, Output& output, ProgressLine& progress);
void DumpAsText(const DumpRange& range, const DumpOptions& options, Output& output,
                ProgressLine& progress);

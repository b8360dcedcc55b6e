// trc dump: the traces of a file, as lines for users or for programs.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "filter/shown_traces.h"
#include "listview/cells/cell_text.h"
#include "terminal/output.h"
#include "terminal/progress_line.h"

enum class DumpFormat { Text, Jsonl };

struct DumpOptions {
  std::string file;
  DumpFormat format = DumpFormat::Text;
  std::vector<Column> columns;  // text only
  bool utc = false;             // text only
  std::uint64_t from = 0;       // index in the file of the first trace
  std::uint64_t count = std::numeric_limits<std::uint64_t>::max();
  FilterPaths filter;
};

// Rows [from, to) of the shown traces, as far as they exist.
struct DumpRange {
  ShownTraces& traces;
  std::size_t from, to;

  bool Has(std::size_t row) const { return row < to && traces.Has(row); }
  const NameMap& Names() const { return traces.Document().m_names; }
};

int RunDump(const DumpOptions& options);

// The formats. Both stop when the output cannot take more.
void DumpAsJsonl(const DumpRange& range, Output& output, ProgressLine& progress);
void DumpAsText(const DumpRange& range, const DumpOptions& options, Output& output,
                ProgressLine& progress);

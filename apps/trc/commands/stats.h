// trc stats: how many traces a file has of each component, category, pattern of the text ...
#pragma once

#include <string>
#include <vector>

#include "filter/trace_options.h"
#include "statistics/stat_rows.h"

struct StatsOptions {
  std::vector<std::string> files;
  std::vector<StatField> fields = {kAllStatFields.begin(), kAllStatFields.end()};
  StatColumn sortedBy = StatColumn::Count;
  std::uint64_t top = 20;  // rows of each table; 0: all
  bool json = false;
  TraceOptions traces;
};

int RunStats(const StatsOptions& options);

// The values of one field, sorted.
struct StatsTable {
  StatField field;
  std::vector<StatRow> rows;
  std::uint64_t traces;  // of all rows
  const NameMap& names;
};
class Output;
// False when the output takes no more.
bool WriteStatsAsText(const StatsTable& table, const StatsOptions& options, Output& output);
bool WriteStatsAsJson(const StatsTable& table, const StatsOptions& options, Output& output);

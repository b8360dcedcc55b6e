// trc stats: how many traces a file has of each component, category, pattern of the text ...
#pragma once

#include <string>
#include <vector>

#include "filter/trace_options.h"
#include "overview/time_slices.h"
#include "records/moments/trace_moments.h"
#include "statistics/stat_rows.h"

struct StatsOptions {
  std::vector<std::string> files;
  std::vector<StatField> fields = {kAllStatFields.begin(), kAllStatFields.end()};
  StatColumn sortedBy = StatColumn::Count;
  std::uint64_t top = 20;    // rows of each table; 0: all
  std::uint64_t slices = 0;  // of time, at most, instead of the fields; 0: none
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

// The traces of each slice of time by severity.
bool WriteSlicesAsText(const TimeSlices& slices, const StatsOptions& options, Output& output);
bool WriteSlicesAsJson(const TimeSlices& slices, const StatsOptions& options, Output& output);
// A time in quotes, or null if it is none.
void AppendJsonTime(std::string& json, WhereStamp stamp, TraceMoments& moments);

// What the options that all commands with traces share say: which traces, and how many.
//
// Threads  Plain data.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "filter/filter_paths.h"
#include "filter/trace_choice.h"
#include "listview/cells/cell_text.h"
#include "where/where_program.h"

struct TraceOptions {
  static constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

  FilterPaths filter;
  TraceChoice choice;
  WhereProgramPtr where;  // null: no --where
  std::optional<std::vector<Column>> columns;
  std::optional<std::uint64_t> sinceRow;  // index in the file of what "Since" counts from
  bool utc = false;            // times that are shown, and times of options without a zone
  std::uint64_t from = 0;      // index in the file of the first trace
  std::uint64_t count = kAll;  // at most so many chosen ones
  std::uint64_t tail = kAll;   // of the chosen ones the last
  std::uint64_t context = 0;   // traces before and after each chosen one
  bool follow = false;         // also what is appended to the file meanwhile
};

// The counts as rows for the user: a value, how many traces have it, their share, their rate, the
// first and the last of them; sorted by any of these.
//
// Owner    Values.
// Threads  Pure.
#pragma once

#include <vector>

#include "statistics/stat_table.h"

enum class StatColumn : std::uint8_t { Value, Count, Share, Rate, First, Last };
constexpr std::size_t kStatColumns = 6;

struct StatRow {
  std::string value;
  Tally tally;
  double share = 0;            // of all counted traces, 0 to 1
  std::optional<double> rate;  // see RatePerSecond
  std::string key;             // for OnlyThisValue; empty: of the others
  bool isOthers = false;       // the values that were not told apart
};

// In the order in which the values came first; the others, if there are any, at the end.
std::vector<StatRow> StatRowsOf(StatField field, const StatTable& table, const NameMap& names);

// Equal rows keep the order that they have. The others stay at the end, and rows without a rate
// stand behind those that have one.
void SortStatRows(std::vector<StatRow>& rows, StatColumn column, bool descending);
// In which direction a column is sorted at first: numbers with the largest at the top.
bool IsFirstDescending(StatColumn column);

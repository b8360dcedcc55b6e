#include <fmt/format.h>

#include <array>

#include "commands/stats.h"
#include "statistics/stat_texts.h"
#include "terminal/output.h"
#include "text/text_line.h"
#include "text/visible_text.h"

namespace {

using Cells = std::array<std::string, kStatColumns>;
// The value is the last: it may be long.
constexpr StatColumn kOrder[kStatColumns] = {StatColumn::Count, StatColumn::Share,
                                             StatColumn::Rate,  StatColumn::First,
                                             StatColumn::Last,  StatColumn::Value};

Cells HeadingsOf(StatField field) {
  std::string value(WordOf(field));
  value[0] = static_cast<char>(value[0] - 'a' + 'A');
  return {"Count", "Share", "Per Second", "First", "Last", value};
}

Cells CellsOf(const StatRow& row, bool utc) {
  return {std::to_string(row.tally.count), ShareText(row.share),           RateText(row.rate),
          StampText(row.tally.first, utc), StampText(row.tally.last, utc), VisibleText(row.value)};
}

bool WriteRow(const Cells& cells, const std::array<std::size_t, kStatColumns>& widths,
              LineWriter& line) {
  for (std::size_t i = 0; i < kStatColumns; ++i) {
    const bool right = kOrder[i] <= StatColumn::Rate && kOrder[i] != StatColumn::Value;
    line.Add(cells[i], ScreenWidth(cells[i]), widths[i], right);
  }
  return line.End();
}

}  // namespace

bool WriteStatsAsText(const StatsTable& table, const StatsOptions& options, Output& output) {
  std::vector<Cells> lines = {HeadingsOf(table.field)};
  std::uint64_t left = 0, traces = 0;
  for (std::size_t i = 0; i < table.rows.size(); ++i) {
    if (options.top == 0 || i < options.top) {
      lines.push_back(CellsOf(table.rows[i], options.traces.utc));
    } else {
      ++left;
      traces += table.rows[i].tally.count;
    }
  }
  std::array<std::size_t, kStatColumns> widths = {};
  for (const Cells& cells : lines)
    for (std::size_t i = 0; i + 1 < kStatColumns; ++i)
      widths[i] = std::max(widths[i], ScreenWidth(cells[i]));
  LineWriter line(output);
  for (const Cells& cells : lines)
    if (!WriteRow(cells, widths, line)) return false;
  if (left == 0) return true;
  return line.Line(fmt::format("and {} more with {} of {} traces", left, traces, table.traces));
}

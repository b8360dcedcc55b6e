#include "commands/columns_option.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>

#include "base/near/near_word.h"
#include "listview/columns/time_columns.h"

namespace {

std::vector<std::string> HeaderList() {
  std::vector<std::string> headers;
  headers.reserve(kAllColumnCount + 1);
  for (const ColumnInfo& column : kColumns) headers.emplace_back(column.header);
  for (const Column column : kTimeColumns) headers.emplace_back(InfoOf(column).header);
  headers.emplace_back(InfoOf(Column::Account).header);
  return headers;
}

std::string Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return std::string(text);
}

}  // namespace

std::string AllHeaders() {
  std::string list;
  for (const std::string& header : HeaderList())
    list.append(list.empty() ? "" : ", ").append(header);
  return list;
}

std::vector<Column> ReadColumns(const std::string& list) {
  std::vector<Column> columns;
  std::istringstream parts(list + ",");
  for (std::string part; std::getline(parts, part, ',');) {
    const std::string header = Trimmed(part);
    const std::optional<Column> column = ColumnByHeader(header);
    if (!column) {
      throw CLI::ValidationError("--columns", "there is no column \"" + header + "\"" +
                                                  DidYouMean(header, HeaderList()) +
                                                  "; the columns are " + AllHeaders());
    }
    columns.push_back(*column);
  }
  return columns;
}

std::vector<Column> DefaultColumns() {
  std::vector<Column> columns;
  for (const std::int32_t index : kDefaultColumnOrder) {
    const auto column = static_cast<Column>(index);
    if (column == Column::Time || kDefaultActiveColumns[static_cast<std::size_t>(index)] == 1) {
      columns.push_back(column);
    }
  }
  return columns;
}

bool HasTimeColumn(const std::vector<Column>& columns) {
  return std::ranges::any_of(columns, IsTimeColumn);
}

void RefuseColumnsOf(DumpFormat format, const TraceOptions& traces) {
  if (format == DumpFormat::Jsonl && traces.columns)
    throw CLI::ValidationError("--columns", "goes with the text format only");
  const bool since = traces.columns && std::ranges::count(*traces.columns, Column::Since) > 0;
  if (since && traces.follow)
    throw CLI::ValidationError("--columns", "the column Since goes with no --follow");
  if (since && !traces.sinceRow)
    throw CLI::ValidationError("--columns",
                               "the column Since needs --since-row, which dump and find have");
  if (traces.sinceRow && !since)
    throw CLI::ValidationError("--since-row", "needs the column Since: --columns Since,Trace");
}

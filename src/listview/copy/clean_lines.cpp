#include "listview/copy/clean_lines.h"

#include <algorithm>
#include <string_view>

#include "base/json_text.h"

bool IsNumberColumn(Column column) {
  return column == Column::Count || column == Column::TicCount || column == Column::TicDiff ||
         column == Column::Delta || column == Column::Since;
}

std::string CleanValue(Column column, const CleanRow& row) {
  if (column == Column::Sev) return std::string(SeverityWord(row.event));
  if (column == Column::Source && row.event.GetSourceFileName(row.names).empty()) return {};
  if (column == Column::Time) {
    std::string time;
    row.moments.Append(time, row.place, row.event);
    return time;
  }
  std::string value = CellText(column, row.event, row.previous, row.names, false);
  if (IsNumberColumn(column) && value == "n/a") return {};
  return value;
}

void WriteRfc4180Cell(std::string& out, std::string_view value) {
  const bool plain = std::none_of(value.begin(), value.end(), [](char c) {
    return c == ',' || c == '"' || c == '\r' || c == '\n';
  });
  if (!plain) out += '"';
  std::size_t run = 0;  // the beginning of the run of bytes without a quote
  for (std::size_t quote = value.find('"'); quote != value.npos; quote = value.find('"', run)) {
    out += value.substr(run, quote + 1 - run);
    out += '"';
    run = quote + 1;
  }
  out += value.substr(run);
  if (!plain) out += '"';
}

void WriteRfc4180Header(std::string& out, const std::vector<Column>& columns) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) out += ',';
    WriteRfc4180Cell(out, InfoOf(columns[i]).header);
  }
  out += '\r';
}

void WriteRfc4180Line(std::string& out, const std::vector<Column>& columns, const CleanRow& row) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) out += ',';
    WriteRfc4180Cell(out, CleanValue(columns[i], row));
  }
  out += '\r';
}

void WriteJsonLine(std::string& out, const std::vector<Column>& columns, const CleanRow& row) {
  out += '{';
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const Column column = columns[i];
    if (i > 0) out += ',';
    out += '"';
    out += InfoOf(column).header;
    out += "\":";
    const std::string value = CleanValue(column, row);
    const bool mayLack = IsNumberColumn(column) || column == Column::Sev ||
                         column == Column::Source || column == Column::Time;
    if (value.empty() && mayLack) {
      out += "null";
    } else if (IsNumberColumn(column)) {
      out += value;
    } else {
      AppendJsonText(out, value);
    }
  }
  out += '}';
}

#include "text/clean_lines.h"

#include <algorithm>
#include <string_view>

#include "text/json_text.h"
#include "text/text_line.h"

namespace {

bool IsNumber(Column column) {
  return column == Column::Count || column == Column::TicCount || column == Column::TicDiff;
}

// Empty if the trace has no such value.
std::string ValueOf(Column column, const TraceEvent_i& event, const TraceEvent_i* previous,
                    const NameMap& names, bool utc) {
  if (column == Column::Sev) return std::string(SeverityWord(event));
  if (column == Column::Source && event.GetSourceFileName(names).empty()) return {};
  std::string value = CellText(column, event, previous, names, utc);
  if (IsNumber(column) && value == "n/a") return {};
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

}  // namespace

void WriteRfc4180Header(std::string& out, const std::vector<Column>& columns) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) out += ',';
    WriteRfc4180Cell(out, InfoOf(columns[i]).header);
  }
  out += '\r';
}

void WriteRfc4180Line(std::string& out, const std::vector<Column>& columns,
                      const TraceEvent_i& event, const TraceEvent_i* previous, const NameMap& names,
                      bool utc) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) out += ',';
    WriteRfc4180Cell(out, ValueOf(columns[i], event, previous, names, utc));
  }
  out += '\r';
}

void WriteJsonLine(std::string& out, const std::vector<Column>& columns, const TraceEvent_i& event,
                   const TraceEvent_i* previous, const NameMap& names, bool utc) {
  out += '{';
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const Column column = columns[i];
    if (i > 0) out += ',';
    out += '"';
    out += InfoOf(column).header;
    out += "\":";
    const std::string value = ValueOf(column, event, previous, names, utc);
    const bool lacks =
        value.empty() && (IsNumber(column) || column == Column::Sev || column == Column::Source);
    if (lacks) {
      out += "null";
    } else if (IsNumber(column)) {
      out += value;
    } else {
      AppendJsonText(out, value);
    }
  }
  out += '}';
}

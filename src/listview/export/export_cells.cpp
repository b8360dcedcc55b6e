#include "listview/export/export_cells.h"

#include <charconv>
#include <concepts>
#include <utility>

#include "base/quor_str.h"

namespace {

constexpr char kNotAvailable[] = "\"n/a\"";

template <std::integral Number>
void WriteNumber(std::string& out, Number number, int base = 10) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number, base).ptr;
  out.append(digits, static_cast<std::size_t>(end - digits));
}

void WriteUnescaped(std::string& out, std::string_view text) {
  out += '"';
  out += text;
  out += '"';
}

void WriteBufferAddress(std::string& out, const std::string& text) {
  out += "0x";
  WriteNumber(out, reinterpret_cast<std::uintptr_t>(text.data()), 16);
}

// Kept: three columns contain the address of the buffer with their text, not the text. Programs
// that read this format skip these cells. Safe: the address is only a number, and the clean formats
// have the values.
AddressWriter addressWriter = WriteBufferAddress;

void WriteSeverity(std::string& out, const TraceEvent_i& event) {
  switch (event.GetAttributes() & kSeverityMask) {
    case kAttributeInfo:
      out += "\"Info\"";
      break;
    case kAttributeWarn:
      out += "\"Warn\"";
      break;
    case kAttributeError:
      out += "\"Error\"";
      break;
    default:
      break;
  }
}

// Kept: a trace without a number is written as -1, where the list shows nothing.
void WriteCount(std::string& out, const TraceEvent_i& event) {
  const std::uint32_t count = event.GetSequenceNumber();
  if (count == kNoSequenceNumber)
    out += "-1";
  else
    WriteNumber(out, count);
}

std::string TicDiff(const TraceEvent_i& event, const TraceEvent_i* previous) {
  if (!previous || event.GetPidId() != previous->GetPidId()) return kNotAvailable;
  return std::to_string(event.GetTicCount() - previous->GetTicCount());
}

}  // namespace

AddressWriter SetAddressWriter(AddressWriter writer) {
  return std::exchange(addressWriter, writer);
}

std::vector<Column> ExportColumns(const ColumnOrder& order, const ColumnFlags& shown, bool hidden) {
  std::vector<Column> columns;
  for (const std::int32_t index : order)
    if (hidden || shown[static_cast<std::size_t>(index)] != 0)
      columns.push_back(static_cast<Column>(index));
  return columns;
}

void WriteQuoted(std::string& out, std::string_view text) {
  out += '"';
  std::size_t plain = 0;  // the beginning of the run of plain bytes
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '"' && text[at] != '\\') continue;
    out += text.substr(plain, at - plain);
    out += '\\';
    plain = at;
  }
  out += text.substr(plain);
  out += '"';
}

void WriteExportCell(std::string& out, Column column, const TraceEvent_i& event,
                     const TraceEvent_i* previous, const NameMap& names, bool utc) {
  switch (column) {
    case Column::Sev:
      return WriteSeverity(out, event);
    case Column::Count:
      return WriteCount(out, event);
    case Column::TicCount:
      return addressWriter(out, std::to_string(event.GetTicCount()));
    case Column::TicDiff:
      return addressWriter(out, TicDiff(event, previous));
    case Column::Time:
    case Column::Machine:
    case Column::Application:
    case Column::Component:
    case Column::Category:
    case Column::Pid:
    case Column::Tid:
    case Column::Account:
    case Column::Delta:
    case Column::Since:
    case Column::WallTime:
      return WriteUnescaped(out, CellText(column, event, previous, names, utc));
    case Column::Attributes:
      out += '"';
      addressWriter(out, AttributesToLabel(event.GetAttributes()));
      out += '"';
      return;
    case Column::Trace:
      return WriteQuoted(out, event.GetText());
    case Column::Source:
      return WriteQuoted(
          out, event.GetSourceFileName(names) + ":" + QuorStr::NumToStr(event.GetSourceLine()));
    case Column::Stack:
      return WriteQuoted(out, event.GetStack());
  }
}

void WriteExportHeader(std::string& out, const std::vector<Column>& columns) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) out += ',';
    WriteQuoted(out, InfoOf(columns[i]).header);
  }
}

void WriteExportLine(std::string& out, const std::vector<Column>& columns,
                     const TraceEvent_i& event, const TraceEvent_i* previous, const NameMap& names,
                     bool utc) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) out += ',';
    WriteExportCell(out, columns[i], event, previous, names, utc);
  }
}

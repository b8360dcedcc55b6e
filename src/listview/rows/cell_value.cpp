#include "listview/rows/cell_value.h"

namespace {

std::optional<CellValue> SeverityOf(const TraceEvent_i& event) {
  static constexpr const char* kWords[] = {"info", "warn", "error"};
  const int icon = SeverityIcon(event);
  if (icon < 0) return std::nullopt;
  return CellValue{WhereField::Severity, kWords[icon]};
}

std::optional<CellValue> NumberOf(WhereField field, std::uint64_t number, bool isOne) {
  if (!isOne) return std::nullopt;
  return CellValue{field, std::to_string(number)};
}

}  // namespace

std::optional<CellValue> CellValueOf(Column column, const TraceEvent_i& event,
                                     const NameMap& names) {
  switch (column) {
    case Column::Sev:
      return SeverityOf(event);
    case Column::Count:
      return NumberOf(WhereField::Count, event.GetSequenceNumber(),
                      event.GetSequenceNumber() != kNoSequenceNumber);
    case Column::TicCount:
      return NumberOf(WhereField::Tic, event.GetTicCount(), event.GetTicCount() != 0);
    case Column::Machine:
      return CellValue{WhereField::Machine, event.GetMachineName(names)};
    case Column::Application:
      return CellValue{WhereField::Application, event.GetAppName(names)};
    case Column::Component:
      return CellValue{WhereField::Component, event.GetComponentName(names)};
    case Column::Category:
      return CellValue{WhereField::Category, event.GetCategoryName(names)};
    case Column::Attributes:
      return CellValue{WhereField::Attributes, std::to_string(event.GetAttributes())};
    case Column::Pid:
      return CellValue{WhereField::Pid, event.GetPidName(names)};
    case Column::Tid:
      return CellValue{WhereField::Tid, event.GetTidName(names)};
    case Column::Trace:
      return CellValue{WhereField::Text, event.GetText()};
    case Column::Source:
      return CellValue{WhereField::File, event.GetSourceFileName(names)};
    case Column::TicDiff:
    case Column::Time:
    case Column::Stack:
    case Column::Account:
    case Column::Delta:
    case Column::Since:
    case Column::WallTime:
      break;
  }
  return std::nullopt;
}

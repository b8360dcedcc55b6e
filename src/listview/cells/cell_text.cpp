#include "listview/cells/cell_text.h"

#include "records/process_name.h"

namespace {

constexpr char kNotAvailable[] = "n/a";

std::string CountText(const TraceEvent_i& event) {
  const std::uint32_t number = event.GetSequenceNumber();
  return number == kNoSequenceNumber ? std::string() : std::to_string(number);
}

std::string TicCountText(const TraceEvent_i& event) {
  const std::uint64_t tic = event.GetTicCount();
  return tic == 0 ? kNotAvailable : std::to_string(tic);
}

std::string TicDiffText(const TraceEvent_i& event, const TraceEvent_i* previous) {
  const std::uint64_t tic = event.GetTicCount();
  if (!previous || tic == 0 || event.GetPidId() != previous->GetPidId()) return kNotAvailable;
  // Kept: a previous trace without a tic count, or with a later one, gives a difference too, which
  // is then very large. The numbers are unsigned, so it is defined.
  return std::to_string(tic - previous->GetTicCount());
}

}  // namespace

std::string CellText(Column column, const TraceEvent_i& event, const TraceEvent_i* previous,
                     const NameMap& names, bool utc) {
  switch (column) {
    case Column::Sev:
    default:
      return {};
    case Column::Count:
      return CountText(event);
    case Column::TicCount:
      return TicCountText(event);
    case Column::TicDiff:
      return TicDiffText(event, previous);
    case Column::Time:
      return event.GetTimeString(!utc);
    case Column::Machine:
      return event.GetMachineName(names);
    case Column::Application:
      return event.GetAppName(names);
    case Column::Component:
      return event.GetComponentName(names);
    case Column::Category:
      return event.GetCategoryName(names);
    case Column::Attributes:
      return AttributesToLabel(event.GetAttributes());
    case Column::Pid:
      return event.GetPidName(names);
    case Column::Tid:
      return event.GetTidName(names);
    case Column::Trace:
      return event.GetText();
    case Column::Source:
      // Kept: a trace without a source file shows ":0".
      return event.GetSourceFileName(names) + ":" + std::to_string(event.GetSourceLine());
    case Column::Stack:
      return event.GetStack();
    case Column::Account:
      return std::string(ProcessName::Of(event.GetPidName(names)).account);
  }
  return {};
}

int SeverityIcon(const TraceEvent_i& event) {
  switch (event.GetAttributes() & kSeverityMask) {
    case kAttributeInfo:
      return 0;
    case kAttributeWarn:
      return 1;
    case kAttributeError:
      return 2;
    default:
      return -1;
  }
}

std::string_view SeverityWord(const TraceEvent_i& event) {
  constexpr std::string_view kWords[] = {"Info", "Warn", "Error"};
  const int icon = SeverityIcon(event);
  return icon < 0 ? std::string_view() : kWords[icon];
}

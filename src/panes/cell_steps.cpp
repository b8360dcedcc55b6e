#include "panes/cell_steps.h"

#include <utility>

#include "base/text.h"
#include "docview/commands/command_ids.h"
#include "records/trace_event.h"
#include "where/steps/cell_step.h"
#include "where/text/where_writer.h"
#include "where/where_clock.h"

namespace {

constexpr std::size_t kLabelBytes = 48;
constexpr std::int64_t kAroundNanoseconds = 5'000'000'000;

// As the user reads it: in quotes, one line, cut.
std::string ShownValue(std::string_view value) {
  std::string shown = WhereQuoted(value);
  if (shown.starts_with('"')) shown = shown.substr(1, shown.size() - 2);
  if (shown.size() > kLabelBytes) shown = std::string(CutUtf8(shown, kLabelBytes)) + "...";
  std::string label = "\"";
  for (const char c : shown) label += c == '&' ? std::string("&&") : std::string(1, c);
  return label + '"';
}

std::string FieldName(WhereField field) {
  switch (field) {
    case WhereField::Pid:
      return "Process";
    case WhereField::Tid:
      return "Thread";
    case WhereField::Tic:
      return "Tic Count";
    default:
      break;
  }
  std::string name(WordOf(field));
  name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name;
}

void AddCell(std::vector<CellStep>& steps, const CellValue& cell) {
  const std::optional<std::string> only = OnlyThis(cell.field, cell.value);
  const std::optional<std::string> hide = HideThis(cell.field, cell.value);
  if (!only || !hide) return;
  const std::string of = FieldName(cell.field) + " " + ShownValue(cell.value);
  steps.push_back({ID_FILTER_ONLYTHIS, "&Only This " + of, *only});
  steps.push_back({ID_FILTER_HIDETHIS, "&Hide This " + of, *hide});
}

}  // namespace

std::vector<CellStep> StepsOfCell(const std::optional<CellValue>& cell, const TraceEvent_i* event,
                                  const NameMap& names) {
  std::vector<CellStep> steps;
  if (cell) AddCell(steps, *cell);
  if (!event) return steps;
  const std::string machine = event->GetMachineName(names), process = event->GetPidName(names),
                    thread = event->GetTidName(names);
  steps.push_back(
      {ID_FILTER_ONLYTHREAD, "Only This Th&read", OnlyThisThread({machine, process, thread})});
  const WhereStamp stamp = std::uint64_t{event->GetDate()} << 32 | event->GetTime();
  const std::optional<std::int64_t> moment = MomentOfStamp(stamp);
  if (!moment) return steps;
  if (std::optional<std::string> around = OnlyAroundTime(*moment, kAroundNanoseconds))
    steps.push_back({ID_FILTER_ONLYAROUND, "Only &Around This (5 s)", std::move(*around)});
  return steps;
}

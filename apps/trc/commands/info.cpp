#include "commands/info.h"

#include <bit>
#include <optional>

#include "filter/trace_choice.h"
#include "input/trace_input.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

namespace {

std::uint64_t StampOfTrace(const RawTrace& trace) {
  return (std::uint64_t{trace.Date()} << 32) | trace.Time();
}

std::uint64_t& CountOf(FileInfo& info, unsigned severity) {
  return severity == TraceChoice::kOtherSeverity
             ? info.otherSeverities
             : info.severities[static_cast<std::size_t>(std::countr_zero(severity))];
}

void CountTraces(FileInfo& info) {
  for (IdCounts* counts :
       {&info.machines, &info.applications, &info.components, &info.categories}) {
    counts->resize(kNameIds);
  }
  info.records = info.document->NameRecords() + info.document->m_traces.size();
  std::uint64_t earliest = 0, latest = 0, place = 0;
  info.document->m_traces.ForEach(0, [&](const TraceEvent_i* event) {
    const RawTrace trace(event->Record());  // a file's traces have one
    ++info.machines[trace.MachineId()];
    ++info.applications[trace.AppId()];
    ++info.components[trace.ComponentId()];
    ++info.categories[trace.CategoryId()];
    ++CountOf(info, SeverityBit(*event));
    const std::uint64_t stamp = StampOfTrace(trace);
    if (!info.earliest || stamp < earliest) {
      info.earliest = event;
      info.earliestPlace = place;
      earliest = stamp;
    }
    if (!info.latest || stamp > latest) {
      info.latest = event;
      info.latestPlace = place;
      latest = stamp;
    }
    ++place;
  });
}

std::optional<FileInfo> Examine(TraceInput& input, const std::string& path) {
  FileInfo info;
  info.path = path;
  if (!input.Open({path})) return std::nullopt;
  info.document = &input.Document();
  CountTraces(info);
  return info;
}

}  // namespace

int RunInfo(const InfoOptions& options) {
  TerminalHost host;
  Output output;
  bool good = true, whole = true;
  bool first = true;
  for (const std::string& path : options.files) {
    TraceInput input(host);
    const std::optional<FileInfo> info = Examine(input, path);
    if (Interrupted()) break;
    if (!info) {
      good = false;
      continue;
    }
    if (!first && !options.json) output.Line("");
    first = false;
    if (!output.Line(options.json ? InfoAsJson(*info) : InfoAsText(*info))) break;
    whole = input.StatusOfAnswer(kExitGood) == kExitGood && whole;
  }
  const int status = output.Finish();
  if (status != kExitGood) return status;
  return !good ? kExitBad : whole ? kExitGood : kExitDamaged;
}

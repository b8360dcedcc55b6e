#include "info.h"

#include <optional>

#include "exit_status.h"
#include "interrupt.h"
#include "listview/cells/cell_text.h"
#include "output.h"
#include "records/trc_walk.h"
#include "trace_file.h"

namespace {

// Counts what the document does not keep: each single name record.
struct RecordCounter {
  void OnName(NameId, std::string_view) { ++records; }
  void OnTrace(const std::uint8_t*) { ++records; }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t) { return !Interrupted(); }
  std::uint64_t records = 0;
};

bool CountRecords(FileInfo& info) {
  std::string why;
  const auto file = MappedFile::Open(info.path, &why);
  if (!file) {
    Complain(info.path + ": " + why);
    return false;
  }
  RecordCounter counter;
  WalkTrc(file->View(), counter);
  info.records = counter.records;
  return !Interrupted();
}

std::uint64_t StampOf(const TraceEvent_i& trace) {
  return (std::uint64_t{trace.GetDate()} << 32) | trace.GetTime();
}

void CountTraces(FileInfo& info) {
  constexpr std::size_t kIds = 65536;
  for (IdCounts* counts :
       {&info.machines, &info.applications, &info.components, &info.categories}) {
    counts->resize(kIds);
  }
  info.document->m_traces.ForEach(0, [&info](const TraceEvent_i* trace) {
    ++info.machines[trace->GetMachineId()];
    ++info.applications[trace->GetAppId()];
    ++info.components[trace->GetComponentId()];
    ++info.categories[trace->GetCategoryId()];
    const int severity = SeverityIcon(*trace);
    ++(severity < 0 ? info.otherSeverities : info.severities[static_cast<std::size_t>(severity)]);
    if (!info.earliest || StampOf(*trace) < StampOf(*info.earliest)) info.earliest = trace;
    if (!info.latest || StampOf(*trace) > StampOf(*info.latest)) info.latest = trace;
  });
}

std::optional<FileInfo> Examine(TerminalHost& host, const std::string& path) {
  FileInfo info;
  info.path = path;
  info.document = OpenTraceFile(host, path);
  if (!info.document || !CountRecords(info)) return std::nullopt;
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
    const std::optional<FileInfo> info = Examine(host, path);
    if (Interrupted()) break;
    if (!info) {
      good = false;
      continue;
    }
    whole = whole && !info->document->Damage().Any();
    if (!first && !options.json) output.Line("");
    first = false;
    if (!output.Line(options.json ? InfoAsJson(*info) : InfoAsText(*info))) break;
  }
  const int status = output.Finish();
  if (status != kExitGood) return status;
  return !good ? kExitBad : whole ? kExitGood : kExitDamaged;
}

#include "commands/export_otlp.h"

#include "quor/otlp/out/out_json.h"
#include "terminal/interrupt.h"

namespace {

std::string_view NameIn(const NameMap& names, NameId id) {
  const auto entry = names.find(id);
  return entry == names.end() ? std::string_view("") : std::string_view(entry->second.name);
}

template <class Export>
void Append(std::string& line, const std::string& body) {
  Export message;
  if (message.ParseFromString(body)) AppendOtlpJson(line, message);
}

}  // namespace

void OtlpExporter::AppendLine(std::string& line, const OutRequest& request) {
  if (request.kind == OutRequest::Kind::Logs)
    Append<quor::otlp::ExportLogs>(line, request.body);
  else
    Append<quor::otlp::ExportSpans>(line, request.body);
}

// When the file begins: another file may have a process of the same number.
std::uint64_t OtlpExporter::Mark() const {
  if (m_traces.All() == 0) return 0;
  const TraceEvent_i& first = *m_traces.Document().m_traces[0];
  return std::uint64_t{first.GetDate()} << 32 | first.GetTime();
}

void OtlpExporter::Take(std::size_t row, OutFile& file, OutRequests& requests) {
  const TraceEvent_i& event = m_traces.At(row);
  const NameMap& names = m_traces.Document().m_names;
  const std::string text = event.GetText(), stack = event.GetStack();
  OutTrace trace;
  trace.serial = m_traces.PlaceOf(row) + 1;
  trace.machine = NameIn(names, event.GetMachineId());
  trace.app = NameIn(names, event.GetAppId());
  trace.component = NameIn(names, event.GetComponentId());
  trace.category = NameIn(names, event.GetCategoryId());
  trace.process = NameIn(names, event.GetPidId());
  trace.thread = NameIn(names, event.GetTidId());
  trace.file = NameIn(names, event.GetSourceFileId());
  trace.date = event.GetDate();
  trace.time = event.GetTime();
  trace.tic = event.GetTicCount();
  trace.attributes = event.GetAttributes();
  trace.line = event.GetSourceLine();
  trace.text = text;
  trace.stack = stack;
  file.Take(trace, event.GetSequenceNumber() == kNoSequenceNumber, requests);
}

bool OtlpExporter::LookAt(std::size_t place) {
  m_progress.Show("Writing...", place, m_traces.All());
  return !Interrupted();
}

bool OtlpExporter::Look(std::size_t row) {
  return row % kTracesPerLook != 0 || LookAt(m_traces.PlaceOf(row));
}

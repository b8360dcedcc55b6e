#include "quor/otlp/send/frame_traces.h"

#include "quor/otlp/out/out_sources.h"
#include "records/raw_trace.h"

FrameTraces::FrameTraces(const TakenFrame& frame) : m_names(frame.names) {
  if (!frame.records.empty()) ReadDataBody(frame.records, *this, nullptr);  // it was checked
}

std::string_view FrameTraces::TextOf(HubNameId id) const {
  const auto found = m_names->find(id);
  return found == m_names->end() ? std::string_view("") : std::string_view(found->second);
}

void FrameTraces::OnTrace(const std::uint8_t* record, std::size_t) {
  const RawHubTrace raw(record);
  OutTrace& trace = m_traces.emplace_back();
  if (raw.SequenceNumber() == kNoSequenceNumber) trace.serial = OutSources::kOutReport;
  trace.machine = TextOf(raw.MachineId());
  trace.app = TextOf(raw.AppId());
  trace.component = TextOf(raw.ComponentId());
  trace.category = TextOf(raw.CategoryId());
  trace.process = TextOf(raw.PidId());
  trace.thread = TextOf(raw.TidId());
  trace.file = TextOf(raw.SourceFileId());
  trace.date = raw.Date();
  trace.time = raw.Time();
  trace.tic = raw.TicCount();
  trace.attributes = raw.Attributes();
  trace.line = raw.SourceLine();
  trace.text = raw.Text();
  trace.stack = raw.Stack();
}

// What the environment of an application gave it for its start, read from its segment.
#include <sstream>

#include "quor/settings/written_sink.h"
#include "quor/traced/traced_app.h"

InstanceStart TracedApp::ReadStart() const {
  InstanceStart start;
  if (m_segment.Layout().startNotes == AppNameId{}) return start;
  std::istringstream lines(m_names.TextOf(m_segment.Layout().startNotes));
  for (std::string line; std::getline(lines, line);) start.notes.push_back(line);
  const std::uint32_t name = m_segment.Header()->startSink.load(std::memory_order_relaxed);
  if (name == 0 || name >= kNameIds) return start;
  if (auto sink = WrittenSink::Read(m_names.TextOf(static_cast<AppNameId>(name))))
    start.sink = LinkSink{sink->file ? SinkKind::File : SinkKind::Socket, std::move(sink->name),
                          std::move(sink->options)};
  return start;
}

void TracedApp::DropStartSink() {
  m_segment.Header()->startSink.store(0, std::memory_order_relaxed);
}

bool TracedApp::TakesRules() const {
  return m_segment.Header()->takesRules.load(std::memory_order_relaxed) != 0;
}

#include "documents/trace_realtime_doc.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "docview/commands/command_ids.h"
#include "settings/globals.h"

TraceThread_i* CTraceRealtimeDoc::ConnectToTraceService(const QuorStr::String_t& machine,
                                                        NameMap& names) {
  return TraceThread_i::ConnectToTraceService(machine, names);
}

CTraceRealtimeDoc::CTraceRealtimeDoc(Host& host, Connector connector)
    : CTraceDoc(host), m_connector(std::move(connector)) {
  MapCommand(
      ID_VIEW_PAUSE, [this] { TogglePause(); },
      [this](CCmdUI& ui) {
        ui.SetCheck(m_paused);
        ui.Enable(m_connection != nullptr);
      });
}

// The connection is destroyed first, so that nothing uses names or traces after it.
CTraceRealtimeDoc::~CTraceRealtimeDoc() {
  if (TraceThread_i* const connection = std::exchange(m_connection, nullptr))
    connection->Disconnect();
  CTraceDoc::DeleteContents();
  m_capture.Finish();
}

std::string CTraceRealtimeDoc::TitleFor(const std::string& machine) {
  return "Traces sent to " + machine;
}

bool CTraceRealtimeDoc::ConnectToMachine(const std::string& machine) {
  if (machine.empty()) return OnNewDocument();
  m_machine = machine;
  {
    const CWaitCursor wait(GetHost());
    m_connection = m_connector(m_machine, m_names);
  }
  if (!m_connection) return false;
  SetTitle(TitleFor(m_machine));
  SetModifiedFlag(false);
  m_loading = false;
  return true;
}

void CTraceRealtimeDoc::Drain() {
  if (!m_connection) return;
  const bool live = IsLive();  // read once: the connection's thread may change it
  const Withheld withheld = HowWithheld();
  const bool isOther = std::exchange(m_notifiedLive, live) != live;
  if (std::exchange(m_notifiedWithheld, withheld) != withheld || isOther) NotifyWhyEmpty();
  if (!m_connection->HasTraces()) return;
  CTraceHint batch;
  do {
    TraceEvent_i* const event = m_connection->NextTrace();
    if (!event) break;
    AddTrace(event, &batch);
    batch.m_events.push_back(event);
    // Kept: a capture that cannot be written ends without a message; its menu item is unchecked.
    // Safe: the traces that were not written stay in the list, and none of them gets into a later
    // file.
    if (IsCapturing() && !m_capture.Write(*event, m_names)) m_capture.Finish();
  } while (m_connection->HasTraces());
  if (!batch.m_events.empty()) UpdateAllViews(nullptr, kHintAdded, &batch);
}

void CTraceRealtimeDoc::AddTrace(TraceEvent_i* event, CTraceHint* pending) {
  // The limit is read each time: a lower limit takes effect with the next trace, and each further
  // trace then shortens the list by 99.
  if (m_traces.size() >= g_traceLimit) Trim(pending);
  CTraceDoc::AddTrace(event);
}

void CTraceRealtimeDoc::Trim(CTraceHint* pending) {
  // A limit that was stored by hand may be smaller than a block of traces, or 0.
  const std::size_t count = std::min(kTrimTraces, m_traces.size());
  if (count == 0) return;
  CTraceHint oldest;
  for (std::size_t i = 0; i < count; ++i) oldest.m_events.push_back(m_traces[i]);
  UpdateAllViews(nullptr, kHintTrimmed, &oldest);
  m_notes.ForgetBefore(m_traces.Popped() + count);
  for (const TraceEvent_i* const event : oldest.m_events) {
    if (pending && !pending->m_events.empty() && pending->m_events.front() == event)
      pending->m_events.pop_front();
    m_traces.PopFront();
  }
}

bool CTraceRealtimeDoc::ToggleCapture() {
  if (IsCapturing()) {
    m_capture.Finish();
    return true;
  }
  FileDialogRequest request;
  request.save = true;
  request.title = "Capture Output";
  request.defaultExtension = ".trc";
  request.filters = {{"Trace Files (*.trc)", "*.trc"}};
  const auto answer = GetHost().RunFileDialog(request);
  if (!answer) return true;
  // Kept: the name without its folder. Safe: the dialog made its folder the current one.
  return BeginCapture(std::filesystem::path(answer->path).filename().string());
}

bool CTraceRealtimeDoc::BeginCapture(const std::string& name) {
  const auto failed = [this](const char* text) {
    m_capture.Finish();
    GetHost().MessageBox({text, BoxIcon::None, BoxButtons::Ok});
    return false;
  };
  if (!m_capture.Create(name)) return failed("Cannot open output file");
  // Written immediately, so that a full disk shows while the user is present.
  m_captureName = name;
  if (!m_capture.WriteHeader() || !m_capture.Flush()) return failed("Cannot write to output file");
  return true;
}

void CTraceRealtimeDoc::TogglePause() {
  if (!m_connection) return;
  m_paused = !m_paused;
  if (m_paused) {
    m_connection->Pause();
  } else {
    m_connection->Resume();
  }
  NotifyWhyEmpty();
}

// Empty views now show another reason.
void CTraceRealtimeDoc::NotifyWhyEmpty() {
  if (m_traces.empty()) UpdateAllViews(nullptr, kHintOptions);
}

std::string CTraceRealtimeDoc::WhyEmpty() const {
  if (!m_connection) return CTraceDoc::WhyEmpty();
  const char* why = "They show as soon as an application there sends some";
  if (m_notifiedWithheld == Withheld::Now)
    why = "Some came, and the filter text withholds them at the source";
  if (m_notifiedWithheld == Withheld::Before)
    why = "Some came earlier, and a filter text withheld them at the source";
  if (m_paused) why = "The display is paused: View > Pause goes on";
  if (!IsLive()) why = "Not connected: no trace service answers there, and it is asked again";
  return "Waiting for traces from " + m_machine + "\n" + why;
}

CTraceRealtimeDoc::Withheld CTraceRealtimeDoc::HowWithheld() const {
  using Kind = SourceFilterState::Kind;
  if (Counts().withheld == 0) return Withheld::Nothing;
  const Kind kind = SourceFilter().kind;
  return kind == Kind::InForce || kind == Kind::Asked ? Withheld::Now : Withheld::Before;
}

void CTraceRealtimeDoc::FilterAtSource(const std::string& text) {
  if (m_connection) m_connection->FilterAtSource(text);
}

SourceFilterState CTraceRealtimeDoc::SourceFilter() const {
  return m_connection ? m_connection->GetSourceFilter() : SourceFilterState();
}

TraceThread_i::Counts CTraceRealtimeDoc::Counts() const {
  return m_connection ? m_connection->GetCounts() : TraceThread_i::Counts();
}

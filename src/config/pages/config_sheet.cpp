#include "config/pages/config_sheet.h"

#include "base/text.h"
#include "config/traces/kept_note.h"

namespace {

constexpr std::size_t kStartNotesShown = 4, kStartNoteBytes = 200;

std::string CutNote(const std::string& text) {
  const std::string_view cut = CutUtf8(text, kStartNoteBytes);
  return std::string(cut) + (cut.size() < text.size() ? "..." : "");
}

void AddLine(std::string& text, const std::string& line) {
  if (!line.empty()) text += (text.empty() ? "" : "\n") + line;
}

}  // namespace

CConfigPropertySheet::CConfigPropertySheet(Host& host, CConfigDoc& document, trace_App_i& app,
                                           std::size_t firstPage)
    : CPropertySheet(host, "Configuration for " + _UTF2MBS(app.GetAppName()), firstPage),
      m_document(document),
      m_app(&app),
      m_traces(host),
      m_sink(host) {
  {
    const CWaitCursor wait(host);
    m_refreshed = app.Refresh();
    m_answered = m_refreshed || document.IsLive();
  }
  m_traces.m_pDoc = &document;
  m_traces.m_pApp = &app;
  AddPage(m_traces);
  m_sink.LoadFromApplication(&document, &app);
  m_sink.FollowPage(&m_traces);
  AddPage(m_sink);
}

std::string CConfigPropertySheet::Note() const {
  const std::string machine = m_document.GetMachineName();
  // The Sink page submits after the Traces page, and all that their common handle holds.
  const std::optional<SubmitResult> last =
      m_sink.Submitted() ? m_sink.Submitted() : m_traces.Submitted();
  if (last == SubmitResult::Refused) return machine + " has refused these changes.";
  if (last == SubmitResult::Unanswered)
    return "These changes are not in force: " + machine + " does not answer.";
  if (last || m_refreshed) return GoodNote();
  return machine + (m_answered ? " does not tell its settings." : " does not answer.") +
         " These are the settings that it had before.";
}

std::string CConfigPropertySheet::GoodNote() const {
  std::string text;
  if (const std::string why = m_app->WhySinkFails(); !why.empty()) {
    trc_SinkTypes_e type{};
    std::string machine, options;
    m_app->GetSink(type, machine, options);
    AddLine(text, CutNote(machine + " cannot be reached: " + why));
  }
  AddLine(text, KeptNote(*m_app));
  AddLine(text, StartNote());
  return text;
}

std::string CConfigPropertySheet::StartNote() const {
  std::string text;
  std::size_t shown = 0;
  for (const trace_StartNote_t& note : m_app->GetStartNotes()) {
    if (++shown > kStartNotesShown) return text + "\n...";
    AddLine(text, "Process " + std::to_string(note.pid) + ": " + CutNote(note.text));
  }
  return text;
}

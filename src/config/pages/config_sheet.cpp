#include "config/pages/config_sheet.h"

#include "base/text.h"

namespace {

constexpr std::size_t kStartNotesShown = 4, kStartNoteBytes = 200;

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
  if (last || m_refreshed) return StartNote();
  return machine + (m_answered ? " does not tell its settings." : " does not answer.") +
         " These are the settings that it had before.";
}

std::string CConfigPropertySheet::StartNote() const {
  std::string text;
  std::size_t shown = 0;
  for (const trace_StartNote_t& note : m_app->GetStartNotes()) {
    if (++shown > kStartNotesShown) return text + "\n...";
    const std::string_view line = CutUtf8(note.text, kStartNoteBytes);
    text += (text.empty() ? "" : "\n") + std::string("Process ") + std::to_string(note.pid) + ": " +
            std::string(line) + (line.size() < note.text.size() ? "..." : "");
  }
  return text;
}

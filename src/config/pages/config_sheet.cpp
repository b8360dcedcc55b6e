#include "config/pages/config_sheet.h"

#include "base/text.h"

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
  if (!m_traces.IsTaken() || !m_sink.IsTaken()) {
    if (m_document.IsLive()) return machine + " has refused these changes.";
    return "These changes are not in force: " + machine + " does not answer.";
  }
  if (m_refreshed) return {};
  return machine + " does not answer. These are the settings that it had before.";
}

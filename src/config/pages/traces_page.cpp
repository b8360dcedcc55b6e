#include "config/pages/traces_page.h"

CAppTraceCfgPropertyPage::CAppTraceCfgPropertyPage(Host& host)
    : CPropertyPage(host, kId, "Traces"), m_traces(host, [this] { SetModified(); }) {}

void CAppTraceCfgPropertyPage::FillList() {
  TraceItems items;
  for (const trace_Component_t& component : m_pApp->GetTraceMap())
    for (const trace_Category_t& category : component.categories)
      items.push_back(new CTraceItem(component.name, category.name, category.traceId,
                                     m_pApp->GetSettings(category.traceId)));
  m_traces.Fill(std::move(items));
}

void CAppTraceCfgPropertyPage::OnOK() {
  const CWaitCursor wait(GetHost());
  m_submitted.reset();
  for (const QuorPtr<CTraceItem>& item : m_traces.Items())
    m_pApp->SetSettings(item->m_traceId, item->m_settings);
  if (!m_traces.Items().empty()) m_submitted = SubmitFor(*m_pDoc, *m_pApp);
  SetModified(m_submitted && m_submitted != SubmitResult::Taken);  // Apply tries again
  m_pDoc->SetModifiedFlag(true);
  CPropertyPage::OnOK();
}

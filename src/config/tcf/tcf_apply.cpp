#include "config/tcf/tcf_apply.h"

bool TcfApplier::OnApp(const std::string& name) {
  if (m_machine.IsSilent()) return false;
  m_current = m_open(name);
  if (!m_current) return false;
  m_apps.push_back(m_current);
  m_current->SetAllTraces(0);
  return true;
}

bool TcfApplier::OnSink(unsigned char type, const std::string& name, const std::string& options) {
  m_current->SetSink(static_cast<trc_SinkTypes_e>(type), name, options);
  return true;
}

bool TcfApplier::OnTrace(const std::string& component, const std::string& category,
                         unsigned short settings) {
  const unsigned traceId = m_current->GetTraceId(component, category);
  if ((traceId & TRC_NO_TRACE_ID) != TRC_NO_TRACE_ID) m_current->SetSettings(traceId, settings);
  return true;
}

void TcfApplier::OnAppEnd() {
  if (!m_current->Submit()) m_notTaken.insert(m_current->GetAppName());
}

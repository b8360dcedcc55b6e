#include "wizard/tables/configure_app.h"

namespace {

unsigned IdOf(const WizTraces::key_type& name, WizTrace& trace, const trace_App_i& app) {
  if (trace.m_nId == WizTrace::kNotLookedUp)
    trace.m_nId = static_cast<std::uint16_t>(app.GetTraceId(name.first, name.second));
  return trace.m_nId;
}

}  // namespace

bool ConfigureApp(WizApp& entry, trace_App_i& app) {
  trc_SinkTypes_e type = trc_SinkSocket;
  std::string name, options;
  entry.m_app->GetSink(type, name, options);
  app.SetSink(type, name, options);
  app.SetAllTraces(0);
  for (auto& [key, trace] : entry.m_traces)
    app.SetSettings(IdOf(key, trace, *entry.m_app), trace.m_nSettings);
  return app.Submit();
}

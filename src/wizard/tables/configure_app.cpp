#include "wizard/tables/configure_app.h"

// Kept: also for an application on another machine, configured the same, the sink is that of the
// entry's own handle. Safe: "localhost" there means the machine that traces.
// The ids are not taken from there: each machine numbers its traces as they come.
void FillApp(const WizApp& entry, trace_App_i& app) {
  trc_SinkTypes_e type = trc_SinkSocket;
  std::string name, options;
  entry.m_app->GetSink(type, name, options);
  app.SetSink(type, name, options);
  app.SetAllTraces(0);
  for (const auto& [trace, wanted] : entry.m_traces)
    app.SetSettings(app.GetTraceId(trace.first, trace.second), wanted.m_nSettings);
}

bool ConfigureApp(const WizApp& entry, trace_App_i& app) {
  FillApp(entry, app);
  return app.Submit();
}

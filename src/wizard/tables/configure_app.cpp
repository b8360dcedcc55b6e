#include "wizard/tables/configure_app.h"

namespace {

// Kept: also for an application on another machine, configured the same, the sink is that of the
// entry's own handle. Safe: "localhost" there means the machine that traces.
// The ids are not taken from there: each machine numbers its traces as they come.
void Fill(const WizSink& sink, const WizTraces& traces, trace_App_i& app) {
  app.SetSink(sink.type, sink.name, sink.options);
  app.SetAllTraces(0);
  for (const auto& [trace, wanted] : traces)
    app.SetSettings(app.GetTraceId(trace.first, trace.second), wanted.m_nSettings);
}

}  // namespace

void FillApp(const WizApp& entry, trace_App_i& app) {
  Fill(SinkOf(*entry.m_app), entry.m_traces, app);
}

bool ConfigureApp(const ChosenApp& chosen, trace_App_i& app) {
  Fill(chosen.sink, chosen.traces, app);
  return app.Submit();
}

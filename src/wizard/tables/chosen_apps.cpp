#include "wizard/tables/chosen_apps.h"

#include <set>
#include <utility>

WizSink SinkOf(const trace_App_i& app) {
  WizSink sink;
  app.GetSink(sink.type, sink.name, sink.options);
  return sink;
}

std::map<std::string, ChosenApps> TakeChosen(WizMachines& machines) {
  std::map<std::string, ChosenApps> chosen;
  std::set<const trace_App_i*> held;
  for (auto& [machine, table] : machines)
    for (auto& [name, entry] : table.m_apps) {
      QuorPtr<trace_App_i> handle = std::exchange(entry.m_app, nullptr);
      if (!entry.m_bSelected || !handle) continue;
      const WizSink sink = SinkOf(*handle);
      if (!held.insert(handle.Get()).second) handle = nullptr;
      chosen[machine].push_back({name, sink, std::move(entry.m_traces), std::move(handle)});
    }
  return chosen;
}

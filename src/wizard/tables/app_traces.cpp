#include "wizard/tables/app_traces.h"

#include <algorithm>

namespace {

// A handle that was there may know an earlier state of the machine. That of an open configuration
// may also hold changes that the machine has not taken: they belong to that window. A machine that
// has not answered is not asked again.
bool MakeHandle(const std::string& name, WizApp& entry, const trace_Config_i& machine,
                const WizOpenApp& open, bool failed) {
  const bool up = machine.IsUp();
  if (entry.m_app && up && !entry.m_bShared) entry.m_app->Refresh();
  if (!entry.m_app && (up || !failed)) entry.m_app = open(machine.GetHostName(), name);
  return static_cast<bool>(entry.m_app);
}

}  // namespace

void CollectTraces(WizApp& entry) {
  for (const trace_Component_t& component : entry.m_app->GetTraceMap())
    for (const trace_Category_t& category : component.categories) {
      const WizTrace found{static_cast<std::uint16_t>(category.traceId), WizTrace::kNotRead};
      const auto place = entry.m_traces.try_emplace({component.name, category.name}, found).first;
      place->second.m_nSettings = WizTrace::kNotRead;
    }
}

void ReadSettings(WizApp& entry) {
  for (auto& [name, trace] : entry.m_traces) {
    if (trace.m_nSettings != WizTrace::kNotRead) continue;
    if (trace.m_nId == WizTrace::kNotLookedUp)
      trace.m_nId = static_cast<std::uint16_t>(entry.m_app->GetTraceId(name.first, name.second));
    trace.m_nSettings = entry.m_app->GetSettings(trace.m_nId);
  }
}

// Kept: what a file or the user has set is replaced by what the machine has. Only traces that the
// application does not know keep their settings. Safe: the next page shows what is there.
bool ReadSelected(WizMachine& machine, const WizOpenApp& open) {
  bool all = true;
  for (auto& [name, entry] : machine.m_apps) {
    if (!entry.m_bSelected) continue;
    if (MakeHandle(name, entry, *machine.m_pConfig, open, !all)) {
      CollectTraces(entry);
      ReadSettings(entry);
    } else {
      entry.m_bSelected = all = false;
    }
  }
  return all;
}

WizApps::iterator NextSelected(WizApps& apps, WizApps::iterator from) {
  return std::find_if(from, apps.end(), [](const auto& app) { return app.second.m_bSelected; });
}

void CopyToOthers(WizMachines& machines, WizMachines::const_iterator from) {
  for (auto machine = machines.begin(); machine != machines.end(); ++machine)
    if (machine != from) machine->second = from->second;
}

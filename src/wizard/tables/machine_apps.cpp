#include "wizard/tables/machine_apps.h"

#include "base/fail_with.h"
#include "base/text.h"
#include "quor/protocol/machine.h"

bool EnterAppList(WizMachine& machine, std::string* why) {
  for (const std::string& name : machine.m_pConfig->GetAppList()) machine.m_apps[name] = {};
  return machine.m_pConfig->WasAnswered() || FailWith(why, "no answer in time");
}

void EnterOpenApps(WizMachine& machine, const std::list<QuorPtr<trace_App_i>>& open,
                   const std::set<std::string>& unsent) {
  for (const QuorPtr<trace_App_i>& app : open)
    if (app)
      machine.m_apps[app->GetAppName()] = {app, {}, false, unsent.contains(app->GetAppName())};
}

bool IsConnectedWith(const WizMachine& machine, const std::string& name) {
  const auto own = ParseMachine(name), has = ParseMachine(machine.m_pConfig->GetHostName());
  return own && has && own->local == has->local && own->port == has->port &&
         CompareIgnoringCase(own->host, has->host) == 0;
}

void TakeOwnConnection(WizMachine& machine, const QuorPtr<trace_Config_i>& own) {
  machine.m_pConfig = own;
  for (auto& [name, entry] : machine.m_apps) {
    const QuorPtr<trace_App_i> other = std::exchange(entry.m_app, nullptr);
    entry.m_bUnsent = false;
    for (auto trace = entry.m_traces.begin(); trace != entry.m_traces.end();) {
      const auto& [component, category] = trace->first;
      const bool known = other && static_cast<std::uint16_t>(other->GetTraceId(
                                      component, category)) != WizTrace::kNotLookedUp;
      trace->second.m_nId = WizTrace::kNotLookedUp;
      trace = known ? entry.m_traces.erase(trace) : std::next(trace);
    }
  }
}

void MakeNamesIdentical(WizMachines& machines) {
  for (auto& [name, machine] : machines)
    for (const auto& [otherName, other] : machines)
      for (const auto& [app, entry] : other.m_apps) machine.m_apps.try_emplace(app);
}

#include "wizard/tables/machine_apps.h"

void EnterAppList(WizMachine& machine) {
  for (const std::string& name : machine.m_pConfig->GetAppList()) machine.m_apps[name] = {};
}

void EnterOpenApps(WizMachine& machine, const std::list<QuorPtr<trace_App_i>>& open,
                   const std::set<std::string>& unsent) {
  for (const QuorPtr<trace_App_i>& app : open)
    if (app)
      machine.m_apps[app->GetAppName()] = {app, {}, false, unsent.contains(app->GetAppName())};
}

void MakeNamesIdentical(WizMachines& machines) {
  for (auto& [name, machine] : machines)
    for (const auto& [otherName, other] : machines)
      for (const auto& [app, entry] : other.m_apps) machine.m_apps.try_emplace(app);
}

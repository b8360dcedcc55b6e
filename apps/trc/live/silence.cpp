#include "live/silence.h"

#include "filter/account.h"
#include "quor/address/relay_address.h"
#include "quor/client/trace_config.h"
#include "text/visible_text.h"

namespace {

bool HasTraceOn(const trace_App_i& app) {
  for (const trace_Component_t& component : app.GetTraceMap())
    for (const trace_Category_t& category : component.categories)
      if (app.GetSettings(category.traceId) != 0) return true;
  return false;
}

}  // namespace

std::string WhyNothingComes(const std::string& machine, const std::string& account) {
  std::string why;
  if (IsRelayAddress(machine)) return "the stream has none of that time yet";
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(machine, &why);
  if (!config) return why;
  unsigned running = 0;
  const std::list<std::string> apps = config->GetAppList();
  std::vector<std::string> accounts;
  for (const std::string& name : apps) {
    if (config->GetInstances(name) == 0) continue;
    accounts.push_back(config->GetAccount(name));
    if (!account.empty() && accounts.back() != account) continue;
    ++running;
    const QuorPtr<trace_App_i> app = trace_App_i::Create(machine, name, &why);
    if (!app) return why;
    if (HasTraceOn(*app)) return "\"" + VisibleText(name) + "\" runs and has traced nothing since";
  }
  if (running == 0 && !accounts.empty())
    return NoSuchAccount("application that runs", account, accounts);
  if (running == 0) return "no application that traces runs";
  return "all traces are off; switch them on with trc set APP --all support";
}

std::string WhyNoAccounts(const std::string& machine) {
  if (IsRelayAddress(machine)) return {};
  const QuorPtr<trace_Config_i> config = trace_Config_i::CreateToList(machine);
  if (!config) return {};
  const std::list<std::string> apps = config->GetAppList();
  for (const std::string& app : apps)
    if (!config->GetAccount(app).empty()) return {};
  return apps.empty() ? "" : "--user: the trace service there is for one account";
}

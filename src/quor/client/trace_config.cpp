#include "quor/client/trace_config.h"

#include <cstdio>
#include <map>

#include "quor/client/config_link.h"
#include "quor/settings/settings_words.h"

namespace {

class Config final : public trace_Config_i {
 public:
  Config(std::string host, std::shared_ptr<ConfigLink> link)
      : m_host(std::move(host)), m_link(std::move(link)) {}

  const std::string& GetHostName() const override { return m_host; }
  const std::list<std::string>& GetAppList() const override {
    m_apps.clear();
    m_instances.clear();
    m_accounts.clear();
    m_waiting.clear();
    m_failing.clear();
    quor::wire::Request request;
    quor::wire::Response response;
    request.mutable_list_apps();
    m_answered = m_link->Ask(request, ConfigLink::Deadline(), &response);
    if (!m_answered) return m_apps;
    for (int i = 0; i < response.app_names_size(); ++i) {
      const std::string& app = response.app_names(i);
      const unsigned instances = i < response.app_instances_size() ? response.app_instances(i) : 0;
      if (m_instances.try_emplace(app, instances).second) m_apps.push_back(app);
      if (i < response.accounts_size()) m_accounts[app] = response.accounts(i);
    }
    for (const auto& waiting : response.waiting())
      m_waiting.push_back({waiting.app(), waiting.kept(), waiting.prepared()});
    for (const auto& sink : response.failing_sinks())
      m_failing.push_back({sink.app(), sink.machine(), sink.why()});
    return m_apps;
  }
  unsigned GetInstances(const std::string& app) const override {
    const auto known = m_instances.find(app);
    return known == m_instances.end() ? 0 : known->second;
  }
  std::string GetAccount(const std::string& app) const override {
    const auto known = m_accounts.find(app);
    return known == m_accounts.end() ? std::string() : known->second;
  }
  std::vector<trace_Waiting_t> GetWaiting() const override { return m_waiting; }
  std::vector<trace_FailingSink_t> GetFailingSinks() const override { return m_failing; }
  bool Keep(const std::string& app, const std::string& rules, std::string* why) override {
    quor::wire::Request request;
    request.mutable_keep()->set_app(app);
    request.mutable_keep()->set_rules(rules);
    return m_link->Ask(std::move(request), ConfigLink::Deadline(), nullptr, why);
  }
  bool ForgetApp(const std::string& app, std::string* why) override {
    quor::wire::Request request;
    request.mutable_forget_app()->set_name(app);
    return m_link->Ask(std::move(request), ConfigLink::Deadline(), nullptr, why);
  }
  bool WasAnswered() const override { return m_answered; }
  bool IsUp() const override { return m_link->IsUp(); }
  bool IsSilent() const override { return m_link->IsSilent(); }

 private:
  const std::string m_host;
  const std::shared_ptr<ConfigLink> m_link;
  mutable std::list<std::string> m_apps;
  mutable std::map<std::string, unsigned> m_instances;
  mutable std::map<std::string, std::string> m_accounts;
  mutable std::vector<trace_Waiting_t> m_waiting;
  mutable std::vector<trace_FailingSink_t> m_failing;
  mutable bool m_answered = true;
};

}  // namespace

trace_Config_i* trace_Config_i::Create(const std::string& host, std::string* why) {
  auto link = ConfigLink::To(host, ConfigLink::Deadline(), why);
  return link ? new Config(host, std::move(link)) : nullptr;
}

trace_Config_i* trace_Config_i::CreateToList(const std::string& host, std::string* why) {
  const auto until = ConfigLink::Deadline();
  auto link = ConfigLink::To(host, until, why);
  if (!link) link = ConfigLink::To(host, until, why, quor::wire::ROLE_MONITOR);
  return link ? new Config(host, std::move(link)) : nullptr;
}

trace_AppList_i* trace_AppList_i::Create() {
  return new trace_AppList_i;
}

QuorStr::String_t SettingsToLabel(unsigned settings) {
  if (settings == 0) return "Off";
  std::string label;
  const auto append = [&label](std::string_view word) {
    label.append(label.empty() ? "" : ", ").append(word);
  };
  for (const auto& [bit, word] : kSettingsWords) {
    if (settings & bit) append(word);
    settings &= ~bit;
  }
  char number[16];
  std::snprintf(number, sizeof number, "0x%04X", settings);
  if (settings != 0) append(number);
  return label;
}

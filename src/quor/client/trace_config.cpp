#include "quor/client/trace_config.h"

#include <map>

#include "quor/client/config_link.h"

namespace {

class Config final : public trace_Config_i {
 public:
  Config(std::string host, std::shared_ptr<ConfigLink> link)
      : m_host(std::move(host)), m_link(std::move(link)) {}

  const std::string& GetHostName() const override { return m_host; }
  const std::list<std::string>& GetAppList() const override {
    m_apps.clear();
    m_instances.clear();
    quor::wire::Request request;
    quor::wire::Response response;
    request.mutable_list_apps();
    if (!m_link->Ask(request, &response)) return m_apps;
    for (int i = 0; i < response.app_names_size(); ++i) {
      const std::string& app = response.app_names(i);
      const unsigned instances = i < response.app_instances_size() ? response.app_instances(i) : 0;
      if (m_instances.try_emplace(app, instances).second) m_apps.push_back(app);
    }
    return m_apps;
  }
  unsigned GetInstances(const std::string& app) const override {
    const auto known = m_instances.find(app);
    return known == m_instances.end() ? 0 : known->second;
  }
  bool IsUp() const override { return m_link->IsUp(); }

 private:
  const std::string m_host;
  const std::shared_ptr<ConfigLink> m_link;
  mutable std::list<std::string> m_apps;
  mutable std::map<std::string, unsigned> m_instances;
};

}  // namespace

trace_Config_i* trace_Config_i::Create(const std::string& host, std::string* why) {
  auto link = ConfigLink::To(host, why);
  return link ? new Config(host, std::move(link)) : nullptr;
}

trace_AppList_i* trace_AppList_i::Create() {
  return new trace_AppList_i;
}

QuorStr::String_t SettingsToLabel(unsigned settings) {
  constexpr struct {
    unsigned bit;
    const char* word;
  } kWords[] = {{TRC_SET_INFO, "Info"},       {TRC_SET_WARN, "Warn"},
                {TRC_SET_ERROR, "Error"},     {TRC_SET_DEVELOPER, "Developer"},
                {TRC_SET_VERBOSE, "Verbose"}, {TRC_SET_LOCATION, "Location"},
                {TRC_SET_STACK, "Stack"}};
  std::string label;
  for (const auto& [bit, word] : kWords) {
    if (!(settings & bit)) continue;
    if (!label.empty()) label += ", ";
    label += word;
  }
  return label;
}

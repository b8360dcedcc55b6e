#include "quor/client/trace_config.h"

#include <algorithm>

#include "quor/client/config_link.h"

namespace {

class Config final : public trace_Config_i {
 public:
  Config(std::string host, std::shared_ptr<ConfigLink> link)
      : m_host(std::move(host)), m_link(std::move(link)) {}

  const std::string& GetHostName() const override { return m_host; }
  const std::list<std::string>& GetAppList() const override {
    m_apps.clear();
    quor::wire::Request request;
    quor::wire::Response response;
    request.mutable_list_apps();
    if (!m_link->Ask(request, &response)) return m_apps;
    for (const std::string& app : response.app_names())
      if (std::find(m_apps.begin(), m_apps.end(), app) == m_apps.end()) m_apps.push_back(app);
    return m_apps;
  }

 private:
  const std::string m_host;
  const std::shared_ptr<ConfigLink> m_link;
  mutable std::list<std::string> m_apps;
};

}  // namespace

trace_Config_i* trace_Config_i::Create(const std::string& host, std::string* why) {
  auto link = ConfigLink::To(host, why);
  return link ? new Config(host, std::move(link)) : nullptr;
}

trace_AppList_i* trace_AppList_i::Create() {
  return new trace_AppList_i;
}

std::string SettingsToLabel(unsigned settings) {
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

#include "wizard/tables/load_tcf.h"

#include "config/tcf/config_texts.h"
#include "config/tcf/tcf_file.h"
#include "config/tcf/tcf_read.h"

namespace {

class AppsOfFile final : public TcfHandler {
 public:
  explicit AppsOfFile(WizApps& apps) : m_apps(apps), m_current(apps.end()) {}

  void OnHeader() override {
    m_apps.clear();
    m_current = m_apps.end();
  }
  // A later group of the same application starts afresh.
  bool OnApp(const std::string& name) override {
    m_current = m_apps.insert_or_assign(name, WizApp{nullptr, {}, true}).first;
    return true;
  }
  bool OnSink(unsigned char, const std::string&, const std::string&) override { return true; }
  bool OnTrace(const std::string& component, const std::string& category,
               unsigned short settings) override {
    if (component == "*" || category == "*") return false;
    m_current->second.m_traces[{component, category}] = {WizTrace::kNotLookedUp, settings};
    return true;
  }

 private:
  WizApps& m_apps;
  WizApps::iterator m_current;
};

}  // namespace

const char* WordsOf(WizLoad result) {
  switch (result) {
    case WizLoad::NotOpened:
      return ConfigTexts::kNotOpened;
    case WizLoad::Invalid:
      return ConfigTexts::kInvalid;
    case WizLoad::Wildcard:
      return "Wildcards in component and category names are not supported by Tessera";
    default:
      return "";
  }
}

WizLoad LoadTcf(const std::string& file, WizMachine& machine) {
  std::ifstream in = OpenTcf(file);
  if (!in.is_open()) return WizLoad::NotOpened;
  AppsOfFile apps(machine.m_apps);
  const TcfEnd end = ReadTcf(in, apps);
  if (end == TcfEnd::BadLine) return WizLoad::Invalid;
  if (end == TcfEnd::Stopped) return WizLoad::Wildcard;
  machine.m_strConfigFile = file;
  return WizLoad::Loaded;
}

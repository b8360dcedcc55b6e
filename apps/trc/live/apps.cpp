// trc apps: the applications of a machine, and what waits for those that do not run.
#include <algorithm>

#include "base/json_text.h"
#include "filter/account.h"
#include "live/app_text.h"
#include "live/live.h"
#include "quor/address/relay_address.h"
#include "quor/client/trace_config.h"
#include "terminal/exit_status.h"
#include "text/text_line.h"
#include "text/visible_text.h"

namespace {

struct ListedApp {
  std::string name, account;
  unsigned instances = 0;
  const trace_Waiting_t* waiting = nullptr;
  const trace_FailingSink_t* failing = nullptr;
};

// The answer to one question, in its order; what only waits comes last.
class AppListing {
 public:
  explicit AppListing(const trace_Config_i& config)
      : m_waiting(config.GetWaiting()), m_failing(config.GetFailingSinks()) {}

  void Add(const std::string& app, const trace_Config_i& config) {
    const auto waits = WaitsFor(app);
    m_apps.push_back({app, config.GetAccount(app), config.GetInstances(app),
                      waits == m_waiting.end() ? nullptr : &*waits, FailsOf(app)});
    m_hasAccounts = m_hasAccounts || !m_apps.back().account.empty();
  }
  void AddRest() {
    for (const trace_Waiting_t& one : m_waiting) {
      const auto known = std::find_if(m_apps.begin(), m_apps.end(),
                                      [&one](const ListedApp& app) { return app.name == one.app; });
      if (known == m_apps.end())
        m_apps.push_back({one.app, AccountInName(one.app), 0, &one, nullptr});
    }
  }
  // False after a message: nothing is of this account.
  bool Keep(const std::string& account) {
    std::vector<std::string> accounts;
    for (const ListedApp& app : m_apps) accounts.push_back(app.account);
    std::erase_if(m_apps, [&account](const ListedApp& app) { return app.account != account; });
    if (!m_apps.empty()) return true;
    PrintError(NoSuchAccount("application", account, accounts));
    return false;
  }

  void WriteText(Output& output) const;
  void WriteJson(Output& output) const;

 private:
  std::vector<trace_Waiting_t>::const_iterator WaitsFor(const std::string& app) const {
    return std::find_if(m_waiting.begin(), m_waiting.end(),
                        [&app](const trace_Waiting_t& one) { return one.app == app; });
  }
  const trace_FailingSink_t* FailsOf(const std::string& app) const {
    for (const trace_FailingSink_t& one : m_failing)
      if (one.app == app) return &one;
    return nullptr;
  }
  // Of an application that only waits. Who sees several accounts has their names with the account
  // in front: "alice/shop". Anybody else sees the own account alone.
  std::string AccountInName(const std::string& app) const {
    if (!m_hasAccounts) return {};
    const std::size_t slash = app.find('/');
    const bool inFront = m_apps.front().name.starts_with(m_apps.front().account + "/");
    return inFront && slash != app.npos ? app.substr(0, slash) : m_apps.front().account;
  }
  void WriteLine(const ListedApp& app, LineWriter& line) const;

  const std::vector<trace_Waiting_t> m_waiting;
  const std::vector<trace_FailingSink_t> m_failing;
  std::vector<ListedApp> m_apps;
  bool m_hasAccounts = false;
  mutable std::size_t m_nameWidth = 0, m_accountWidth = 0;
};

std::string WaitingText(const trace_Waiting_t& waiting) {
  std::string text = "(does not run";
  if (!waiting.kept.empty()) text += "; kept: " + VisibleText(waiting.kept);
  if (waiting.prepared) text += "; settings wait for its next instance";
  return text + ")";
}

std::string FailingText(const trace_FailingSink_t& sink) {
  return "(" + Quoted(sink.machine) + " cannot be reached: " + VisibleText(sink.why) + ")";
}

void AppListing::WriteLine(const ListedApp& app, LineWriter& line) const {
  const std::string name = VisibleText(app.name), account = VisibleText(app.account);
  line.Add(name, ScreenWidth(name), m_nameWidth, false);
  if (m_hasAccounts) line.Add(account, ScreenWidth(account), m_accountWidth, false);
  if (app.waiting || app.failing) {
    const std::string text = app.waiting ? WaitingText(*app.waiting) : FailingText(*app.failing);
    line.Add(text, ScreenWidth(text), 0, false);
  }
  line.End();
}

// Without accounts a name is followed by nothing that would have to be aligned.
void AppListing::WriteText(Output& output) const {
  LineWriter line(output);
  if (m_hasAccounts)
    for (const ListedApp& app : m_apps) {
      m_nameWidth = std::max(m_nameWidth, ScreenWidth(VisibleText(app.name)));
      m_accountWidth = std::max(m_accountWidth, ScreenWidth(VisibleText(app.account)));
    }
  for (const bool waiting : {false, true})
    for (const ListedApp& app : m_apps)
      if ((app.waiting != nullptr) == waiting) WriteLine(app, line);
}

void AppListing::WriteJson(Output& output) const {
  std::string& json = output.Buffer();
  json.push_back('[');
  const char* between = "";
  for (const ListedApp& app : m_apps) {
    json.append(std::exchange(between, ","));
    AppendField(json, "{\"application\":", app.name);
    if (m_hasAccounts) AppendField(json, ",\"account\":", app.account);
    json.append(app.instances > 0 ? ",\"running\":true" : ",\"running\":false");
    json.append(",\"instances\":");
    AppendNumber(json, app.instances);
    if (app.waiting) {
      AppendField(json, ",\"kept\":", app.waiting->kept);
      json.append(app.waiting->prepared ? ",\"prepared\":true" : ",\"prepared\":false");
    }
    if (app.failing) AppendField(json, ",\"sinkTrouble\":", app.failing->why);
    json.push_back('}');
  }
  json.push_back(']');
  output.EndLine();
}

}  // namespace

int RunApps(const AppsOptions& options) {
  std::string why;
  if (IsRelayAddress(options.machine))
    return Unreachable("the applications of a cluster are not listed; its traces can be watched");
  const QuorPtr<trace_Config_i> config = trace_Config_i::CreateToList(options.machine, &why);
  if (!config) return Unreachable(why);
  const std::list<std::string>& apps = config->GetAppList();
  if (!config->WasAnswered()) return Unreachable("no answer in time");
  AppListing listing(*config);
  for (const std::string& app : apps) listing.Add(app, *config);
  listing.AddRest();
  if (!options.account.empty() && !listing.Keep(options.account)) return kExitNo;
  Output output;
  options.json ? listing.WriteJson(output) : listing.WriteText(output);
  return output.Finish();
}

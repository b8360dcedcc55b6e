#include "live/setup.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

#include "base/near/near_word.h"
#include "base/text.h"
#include "commands/columns_option.h"
#include "config/tcf/config_texts.h"
#include "live/app_text.h"
#include "live/config_sources.h"
#include "live/live.h"
#include "live/setup_report.h"
#include "quor/client/trace_thread.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "text/visible_text.h"
#include "wizard/tables/app_traces.h"
#include "wizard/tables/configure_app.h"
#include "wizard/tables/load_tcf.h"
#include "wizard/tables/machine_apps.h"

namespace {

constexpr const char* kNoConnection = ConfigTexts::kNoConnection;
// A service gives a client 1,024 handles. The others are closed: their settings stay in force as
// long as the application runs.
constexpr std::size_t kHeldMax = 1000;

std::string Because(const std::string& why) {
  return why.empty() ? "" : " (" + VisibleText(why) + ")";
}

// The walk through the wizard's pages. What a page would do is a step.
class Setup {
 public:
  explicit Setup(const SetupOptions& options) : m_options(options), m_report(options.dryRun) {}

  int Run() {
    if (!m_options.file.empty() && !LoadFile()) return m_report.Finish(false);
    Connect();
    OfferApps();
    for (auto& [name, machine] : m_machines) {
      ReadMachine(name, machine);
      if (m_options.same) break;
    }
    if (m_options.same && !m_machines.empty()) CopyToOthers(m_machines, m_machines.begin());
    for (auto& [name, machine] : m_machines)
      if (!IsCut()) Finish(name, machine);
    return Monitor(m_report.Finish(m_cut));
  }

 private:
  // Asked before each step that a signal prevents.
  bool IsCut() { return m_cut = m_cut || Interrupted(); }
  bool LoadFile();
  void Connect();
  void Add(const std::string& name);
  void OfferApps();
  void Select(const std::string& where, WizApps& apps);
  void ReadMachine(const std::string& name, WizMachine& machine);
  void TellLeft(const std::string& machine, std::size_t apps);
  void GiveSettings(const std::string& app, WizTraces& traces) const;
  void Finish(const std::string& name, WizMachine& machine);
  QuorPtr<trace_App_i> Open(const std::string& machine, const std::string& app, std::string* why);
  bool Configure(const std::string& machine, const WizApp& entry, trace_App_i& app);
  int Monitor(int status) const;

  const SetupOptions& m_options;
  SetupReport m_report;
  bool m_cut = false;
  WizMachine m_file;  // its applications only
  WizMachines m_machines;
  std::vector<QuorPtr<trace_Config_i>> m_connections;  // for as long as the command runs
  std::vector<QuorPtr<trace_App_i>> m_held;            // for as long as the monitor runs
};

// Whole before anything else: a bad line changes nothing.
bool Setup::LoadFile() {
  const WizLoad result = LoadTcf(m_options.file, m_file);
  if (result != WizLoad::Loaded) {
    m_report.Fault(kExitBad, VisibleText(m_options.file) + ": " + WordsOf(result) +
                                 Because(WhyBadConfigFile(m_options.file)));
    return false;
  }
  Select(m_options.file, m_file.m_apps);
  return true;
}

void Setup::Connect() {
  for (const std::string& name : m_options.machines)
    if (!IsCut()) Add(name);
  if (!m_options.machines.empty()) return;
  std::string why;
  const QuorPtr<trace_Config_i> local = trace_Config_i::Create("localhost", &why);
  if (!local) return m_report.Fault(kExitBad, ConfigTexts::kNoLocalConnection + Because(why));
  m_machines[_trc_GetHostName()] = {local, {}, {}};
}

void Setup::Add(const std::string& name) {
  const auto is = [&](const auto& entry) { return CompareIgnoringCase(entry.first, name) == 0; };
  if (std::any_of(m_machines.begin(), m_machines.end(), is))
    return PrintError(VisibleText(name) + ": " + ConfigTexts::kDuplicateMachine);
  std::string why;
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(name, &why);
  if (!config)
    return m_report.Fault(kExitBad,
                          ConfigTexts::kNoConnectionOn + VisibleText(name) + Because(why));
  m_machines[name] = {config, {}, {}};
}

void Setup::OfferApps() {
  for (auto& [name, machine] : m_machines) {
    m_connections.push_back(machine.m_pConfig);
    if (!m_options.file.empty()) {
      machine.m_apps = m_file.m_apps;
      machine.m_strConfigFile = m_file.m_strConfigFile;
      continue;
    }
    EnterAppList(machine);
    if (!machine.m_pConfig->WasAnswered())
      m_report.Fault(kExitBad, VisibleText(name) + ": no answer in time");
  }
  if (!m_options.file.empty()) return;
  if (m_options.same) MakeNamesIdentical(m_machines);
  for (auto& [name, machine] : m_machines) {
    if (machine.m_pConfig->WasAnswered() || m_options.same) Select(name, machine.m_apps);
    if (m_options.same) break;
  }
}

void Setup::Select(const std::string& where, WizApps& apps) {
  if (apps.empty())
    m_report.Fault(kExitNo, VisibleText(where) + ": there is no application to configure");
  for (auto& [name, entry] : apps) entry.m_bSelected = m_options.apps.empty();
  std::vector<std::string> known;
  for (const auto& [name, entry] : apps) known.push_back(VisibleText(name));
  for (const std::string& name : m_options.apps) {
    const auto app = apps.find(name);
    if (app != apps.end()) {
      app->second.m_bSelected = true;
    } else if (!apps.empty()) {
      m_report.Fault(kExitNo, VisibleText(where) + ": there is no application " + Quoted(name) +
                                  DidYouMean(VisibleText(name), known));
    }
  }
}

// Looks at the applications without a handle: what is only read may be told and not done.
void Setup::ReadMachine(const std::string& name, WizMachine& machine) {
  if (IsCut()) return;
  std::map<std::string, std::string> refused;  // why, of those that were asked for
  const WizApps chosen = machine.m_apps;
  ReadSelected(machine, [this, &refused](const std::string& host, const std::string& app) {
    std::string why;
    trace_App_i* const handle = IsCut() ? nullptr : trace_App_i::Look(host, app, &why);
    if (!handle) refused[app] = why;
    return handle;
  });
  std::size_t left = 0;
  for (auto& [app, entry] : machine.m_apps) {
    if (entry.m_bSelected) {
      GiveSettings(app, entry.m_traces);
    } else if (chosen.at(app).m_bSelected && !m_cut) {
      const auto why = refused.find(app);
      if (why == refused.end())
        ++left;
      else
        m_report.Fault(kExitBad, VisibleText(name) + ": " + Quoted(app) + ": " + kNoConnection +
                                     Because(why->second));
    }
  }
  TellLeft(name, left);
}

void Setup::TellLeft(const std::string& machine, std::size_t apps) {
  if (apps > 0)
    m_report.Fault(kExitBad, VisibleText(machine) + ": the machine does not answer, and " +
                                 Counted(apps, "more application") + " could not be configured");
}

// What a user would choose on the page of traces.
void Setup::GiveSettings(const std::string& app, WizTraces& traces) const {
  for (auto& [name, trace] : traces) {
    if (m_options.preset) trace.m_nSettings = *m_options.preset;
    if (m_options.file.empty()) continue;
    const WizTraces& ofFile = m_file.m_apps.at(app).m_traces;
    const auto found = ofFile.find(name);
    trace.m_nSettings = found == ofFile.end() ? 0 : found->second.m_nSettings;
  }
}

void Setup::Finish(const std::string& name, WizMachine& machine) {
  std::string why;
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(name, &why);
  if (!config)
    return m_report.Fault(kExitBad, VisibleText(name) + ": " + kNoConnection + Because(why));
  std::size_t held = 0, left = 0;
  bool away = false;
  for (auto& [appName, entry] : machine.m_apps) {
    if (!entry.m_bSelected || !entry.m_app || IsCut()) continue;
    const QuorPtr<trace_App_i> app = away ? nullptr : Open(name, appName, &why);
    if (app && Configure(name, entry, *app)) {
      if (m_options.monitor && held++ < kHeldMax) m_held.push_back(app);
      continue;
    }
    if (away) ++left;
    if (!app && !away)
      m_report.Fault(kExitBad, VisibleText(name) + ": " + Quoted(appName) + ": " + kNoConnection +
                                   Because(std::exchange(why, {})));
    // A machine that has left a question without an answer is not asked once more.
    away = !config->IsUp();
  }
  TellLeft(name, left);
}

QuorPtr<trace_App_i> Setup::Open(const std::string& machine, const std::string& app,
                                 std::string* why) {
  return m_options.dryRun ? trace_App_i::Look(machine, app, why)
                          : trace_App_i::Create(machine, app, why);
}

bool Setup::Configure(const std::string& machine, const WizApp& entry, trace_App_i& app) {
  const AppState had(app);
  FillApp(entry, app);
  const AppState has(app);
  if (!m_options.dryRun && !app.Submit()) {
    m_report.Fault(kExitBad, VisibleText(machine) +
                                 ": the machine has not accepted the change of " +
                                 Quoted(app.GetAppName()));
    return false;
  }
  m_report.Tell(machine, app.GetAppName(), had, has);
  const bool copied = m_options.same && machine != m_machines.begin()->first;
  const std::string origin = copied ? m_machines.begin()->first : "";
  m_report.TellRest(machine, app.GetAppName(), entry.m_traces, has, origin);
  if (m_options.preset && has.settings.empty())
    m_report.Fault(kExitNo,
                   VisibleText(machine) + ": " + Quoted(app.GetAppName()) + " has no traces yet");
  return true;
}

// The handles are held meanwhile, as by the windows that the wizard opens.
int Setup::Monitor(int status) const {
  if (!m_options.monitor || m_options.dryRun || m_machines.empty() || Interrupted()) return status;
  TailOptions tail;
  tail.machine = _trc_GetHostName();
  return std::max(status, RunTail(tail));
}

}  // namespace

int RunSetup(const SetupOptions& options) {
  // A service that is started would be a change, too.
  if (options.dryRun) setenv("QUOR_AUTOSTART", "0", 1);
  return Setup(options).Run();
}

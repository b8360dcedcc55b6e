#include "live/config_sources.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "base/fail_with.h"
#include "base/text.h"
#include "config/tcf/tcf_file.h"
#include "live/app_text.h"
#include "terminal/exit_status.h"
#include "text/visible_text.h"

namespace {

constexpr std::size_t kLongestShownBytes = 200;

// A bad line may have a megabyte.
std::string ShortText(const std::string& text) {
  const std::string_view cut = CutUtf8(text, kLongestShownBytes);
  return VisibleText(cut) + (cut.size() < text.size() ? "..." : "");
}

// False: `why` has the reason, after the number of the line if it is one.
bool ReadConfig(const std::string& path, TcfConfig* config, std::string* why) {
  std::string reason;
  std::ifstream in = OpenTcf(path, &reason, TcfPipes::Read);
  if (!in.is_open()) return FailWith(why, " " + reason);
  TcfCollector collector;
  TcfFault fault;
  if (ReadTcf(in, collector, &fault) != TcfEnd::Whole) {
    const std::string text = fault.text.empty() ? "" : ": " + ShortText(fault.text);
    return FailWith(why, std::to_string(fault.line) + ": " + ShortText(fault.why) + text);
  }
  *config = collector.Config();
  return true;
}

}  // namespace

int ReadConfigFile(const std::string& path, TcfConfig* config) {
  std::string why;
  if (ReadConfig(path, config, &why)) return kExitGood;
  PrintError(VisibleText(path) + ":" + why);
  return kExitBad;
}

std::string WhyBadConfigFile(const std::string& path) {
  TcfConfig config;
  std::string why;
  std::error_code error;
  if (std::filesystem::is_fifo(path, error)) return "Is a pipe";
  if (ReadConfig(path, &config, &why)) return "";
  return why.starts_with(' ') ? why.substr(1) : "line " + why;
}

int MachineLook::Connect() {
  std::string why;
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(m_machine, &why);
  if (!config) return Unreachable(why);
  m_registered = config->GetAppList();
  return config->WasAnswered() ? kExitGood : Unreachable("no answer in time");
}

int MachineLook::Take(const std::vector<std::string>& names, AppHandles* apps) const {
  std::vector<std::string> wanted = names;
  if (names.empty()) wanted.assign(m_registered.begin(), m_registered.end());
  for (const std::string& name : wanted) {
    const auto is = [&name](const QuorPtr<trace_App_i>& app) { return app->GetAppName() == name; };
    if (std::any_of(apps->begin(), apps->end(), is)) continue;
    int status = kExitGood;
    const QuorPtr<trace_App_i> app = Find(name, &status);
    if (!app) return status == kExitGood ? NoSuchApp(name, m_registered) : status;
    apps->push_back(app);
  }
  return kExitGood;
}

QuorPtr<trace_App_i> MachineLook::Find(const std::string& name, int* status) const {
  std::string why;
  QuorPtr<trace_App_i> app = trace_App_i::Look(m_machine, name, &why);
  if (!app) *status = Unreachable(why);
  const bool registered =
      std::find(m_registered.begin(), m_registered.end(), name) != m_registered.end();
  // The maps of applications that ran before are known.
  if (app && !registered && app->GetTraceMap().empty()) return nullptr;
  return app;
}

std::string Counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

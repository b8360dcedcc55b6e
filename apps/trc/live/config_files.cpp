#include "live/config_files.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/fail_with.h"
#include "base/new_file.h"
#include "config/tcf/tcf_apply.h"
#include "config/tcf/tcf_write.h"
#include "live/app_text.h"
#include "live/config_sources.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "text/visible_text.h"

namespace {

constexpr std::size_t kUnknownPrintedMax = 10;

std::string TraceText(const TcfTrace& trace, const std::string& app) {
  return "unknown trace " + Quoted(trace.component + "/" + trace.category) + " of " + Quoted(app);
}

int PrintUnknown(const TcfConfig& config, const std::string& machine, Output& output) {
  MachineLook look(machine);
  int status = look.Connect();
  for (const TcfApp& app : config) {
    if (status != kExitGood) break;
    const QuorPtr<trace_App_i> there = look.Find(app.name, &status);
    if (!there && status == kExitGood) output.Line("unknown application " + Quoted(app.name));
    if (!there) continue;
    for (const TcfTrace& trace : TracesUnknownTo(*there, app))
      output.Line(TraceText(trace, app.name));
  }
  return status;
}

void ShowAll(const std::vector<ShownApp>& apps, bool json, Output& output) {
  const char* between = "";
  if (json) output.Buffer().push_back('[');
  for (const ShownApp& app : apps) {
    if (json) {
      output.Buffer().append(std::exchange(between, ","));
      AppendAppJson(output.Buffer(), app);
    } else {
      if (&app != &apps.front()) output.Line("");
      ShowAsText(app, output);
    }
  }
  if (!json) return;
  output.Buffer().push_back(']');
  output.EndLine();
}

// A name may have what the format cannot tell from the end of a field or of a line.
bool ReadsBack(const std::string& text, const TcfConfig& wanted, std::string* why) {
  std::istringstream in(text);
  TcfCollector collector;
  TcfFault fault;
  if (ReadTcf(in, collector, &fault) != TcfEnd::Whole)
    return FailWith(why, "a .tcf file cannot hold this line: " + VisibleText(fault.text));
  const std::vector<std::string> lines = TcfDifference(wanted, collector.Config());
  if (lines.empty() && collector.Config().size() == wanted.size()) return true;
  const std::string line = lines.empty() ? "" : lines[lines[0].starts_with(' ') ? 1 : 0].substr(2);
  return FailWith(why, "a .tcf file cannot hold this line: " + VisibleText(line));
}

bool ConfigText(const AppHandles& apps, std::string* text, std::string* why) {
  std::ostringstream to;
  if (const TcfWritten written = WriteTcf(to, apps); written != TcfWritten::Whole)
    return FailWith(why, WordsOf(written));
  *text = to.str();
  return ReadsBack(*text, TcfConfigOf(apps), why);
}

bool WriteNewFile(const std::string& path, const std::string& text, std::string* why) {
  NewFile file;
  CatchEndSignals();
  if (!file.Begin(path, why)) return false;
  errno = 0;
  std::ofstream out(file.WriteTo(), std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) return FailWith(why, SystemReason());
  return file.Finish(why);
}

void PrintUnknownTraces(const TcfConfig& config, const AppHandles& handles) {
  std::size_t unknown = 0;
  auto handle = handles.begin();
  for (const TcfApp& app : config) {
    if (handle == handles.end()) break;
    for (const TcfTrace& trace : TracesUnknownTo(**handle++, app))
      if (++unknown <= kUnknownPrintedMax) PrintError(TraceText(trace, app.name) + ", passed over");
  }
  if (unknown > kUnknownPrintedMax)
    PrintError("and " + Counted(unknown - kUnknownPrintedMax, "more unknown trace") +
               ", passed over");
}

// A file that exists, else a machine.
int ReadSide(const std::string& name, TcfConfig* config) {
  std::error_code error;
  const auto status = std::filesystem::status(name, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_directory(status))
    return ReadConfigFile(name, config);
  MachineLook look(name);
  AppHandles apps;
  int result = look.Connect();
  if (result == kExitGood) result = look.Take({}, &apps);
  if (result != kExitGood) {
    PrintError(name + " was taken for a machine: there is no such file");
    return kExitBad;
  }
  *config = TcfConfigOf(apps);
  return kExitGood;
}

}  // namespace

int RunConfigCheck(const ConfigCheckOptions& options) {
  TcfConfig config;
  if (const int status = ReadConfigFile(options.file, &config); status != kExitGood) return status;
  std::size_t traces = 0;
  for (const TcfApp& app : config) traces += app.traces.size();
  Output output;
  output.Line(VisibleText(options.file) + ": good, " + Counted(config.size(), "application") +
              ", " + Counted(traces, "trace"));
  const int status = options.machine ? PrintUnknown(config, *options.machine, output) : kExitGood;
  const int finished = output.Finish();
  return status != kExitGood ? status : finished;
}

int RunConfigShow(const ConfigShowOptions& options) {
  std::vector<ShownApp> shown;
  if (!options.file.empty()) {
    TcfConfig config;
    const int status = ReadConfigFile(options.file, &config);
    if (status != kExitGood) return status;
    for (const TcfApp& app : config) shown.emplace_back(app);
  } else {
    MachineLook look(options.machine);
    AppHandles apps;
    int status = look.Connect();
    if (status == kExitGood) status = look.Take({}, &apps);
    if (status != kExitGood) return status;
    for (const QuorPtr<trace_App_i>& app : apps) shown.emplace_back(*app);
  }
  Output output;
  ShowAll(shown, options.json, output);
  return output.Finish();
}

int RunConfigSave(const ConfigSaveOptions& options) {
  MachineLook look(options.machine);
  AppHandles apps;
  int status = look.Connect();
  if (status == kExitGood) status = look.Take(options.apps, &apps);
  if (status != kExitGood) return status;
  if (apps.empty()) {
    PrintError("no application is registered there, and " + options.file + " is not written");
    return kExitNo;
  }
  std::string text, why;
  if (ConfigText(apps, &text, &why) && WriteNewFile(options.file, text, &why)) return kExitGood;
  PrintError(options.file + ": not written: " + why);
  return kExitBad;
}

int RunConfigApply(const ConfigApplyOptions& options) {
  TcfConfig config;
  // As a whole first: a bad line leaves the machine as it is.
  if (const int status = ReadConfigFile(options.file, &config); status != kExitGood) return status;
  std::string why;
  const QuorPtr<trace_Config_i> machine = trace_Config_i::Create(options.machine, &why);
  if (!machine) return Unreachable(why);
  AppHandles handles;
  TcfApplier applier(
      *machine,
      [&](const std::string& app) {
        return QuorPtr<trace_App_i>(trace_App_i::Create(options.machine, app, &why));
      },
      handles);
  const bool all = ReplayTcf(config, applier);
  PrintUnknownTraces(config, handles);
  if (all && applier.NotTaken().empty()) return kExitGood;
  const std::size_t taken = handles.size() - applier.NotTaken().size();
  if (why.empty() && !applier.NotTaken().empty())
    why = "the machine has not accepted the change of " + Quoted(*applier.NotTaken().begin());
  PrintError("only " + std::to_string(taken) + " of " + Counted(config.size(), "application") +
             " could be configured" + (why.empty() ? "" : ": " + why));
  return kExitBad;
}

int RunConfigDiff(const ConfigDiffOptions& options) {
  TcfConfig before, after;
  if (ReadSide(options.before, &before) != kExitGood ||
      ReadSide(options.after, &after) != kExitGood)
    return kExitBad;
  const std::vector<std::string> lines = TcfDifference(before, after);
  Output output;
  for (const std::string& line : lines) output.Line(VisibleText(line));
  const int status = output.Finish();
  return status == kExitGood && !lines.empty() ? kExitNo : status;
}

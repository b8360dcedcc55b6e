// trc show, set, forget and sink: the configuration service of a machine.
#include <algorithm>
#include <filesystem>

#include "base/json_text.h"
#include "base/near/near_word.h"
#include "live/app_text.h"
#include "live/live.h"
#include "quor/client/trace_config.h"
#include "quor/protocol/machine.h"
#include "terminal/exit_status.h"
#include "text/visible_text.h"

namespace {

// The traces of a "COMPONENT" or "COMPONENT/CATEGORY"; either name may contain a "/". If there are
// any with the same capitals, the others are not meant.
std::vector<unsigned> TracesOf(const trace_App_i& app, const std::string& target) {
  std::vector<unsigned> same, others;
  for (const trace_Component_t& component : app.GetTraceMap())
    for (const trace_Category_t& category : component.categories) {
      const int exactness = SettingsText::ExactnessOf(target, component.name, category.name);
      if (exactness != 0) (exactness % 2 == 0 ? same : others).push_back(category.traceId);
    }
  return same.empty() ? others : same;
}

int NoSuchTrace(const trace_App_i& app, const std::string& target) {
  std::vector<std::string> known;
  for (const trace_Component_t& component : app.GetTraceMap()) {
    known.push_back(VisibleText(component.name));
    for (const trace_Category_t& category : component.categories)
      known.push_back(VisibleText(component.name + "/" + category.name));
  }
  PrintError(Quoted(app.GetAppName()) + " has no trace " + Quoted(target) +
             DidYouMean(VisibleText(target), known));
  return kExitNo;
}

// Nothing is changed if one of the rules is for no trace.
int SetByRules(trace_App_i& app, const SettingsText& rules) {
  for (const SettingsText::Rule& rule : rules.Rules())
    if (TracesOf(app, rule.traces).empty()) return NoSuchTrace(app, rule.traces);
  for (const trace_Component_t& component : app.GetTraceMap())
    for (const trace_Category_t& category : component.categories)
      if (const auto settings = rules.Of(component.name, category.name))
        app.SetSettings(category.traceId, *settings);
  return kExitGood;
}

int NoTraces(const std::string& app, const std::list<std::string>& registered) {
  if (std::find(registered.begin(), registered.end(), app) == registered.end())
    return NoSuchApp(app, registered);
  PrintError(Quoted(app) + " has no traces yet");
  return kExitNo;
}

int Submit(const trace_App_i& app) {
  if (app.Submit()) return kExitGood;
  PrintError("the machine has not accepted the change");
  return kExitBad;
}

// An application has another working directory, so a path is sent in full. A path on another
// machine is not changed. None when our own working directory no longer exists.
std::optional<std::string> FullPath(const std::string& machine, const std::string& file) {
  const auto where = ParseMachine(machine);
  if (file.empty() || !where || !where->local) return file;
  std::error_code error;
  const std::filesystem::path full = std::filesystem::absolute(file, error);
  if (!error) return full.lexically_normal().string();
  PrintError(file + ": " + error.message());
  return std::nullopt;
}

// Also for an application that was never seen.
int RunKeep(const SetOptions& options) {
  std::string why;
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(options.machine, &why);
  if (config && config->Keep(options.app, options.rules.Written(), &why)) return kExitGood;
  return Unreachable(why + (options.doubt.empty() ? "" : "; " + options.doubt));
}

}  // namespace

int RunForget(const ForgetOptions& options) {
  std::string why;
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(options.machine, &why);
  if (!config) return Unreachable(why);
  if (config->ForgetApp(options.app, &why)) return kExitGood;
  PrintError(Quoted(options.app) + ": " + why);
  return kExitNo;
}

int RunShow(const ShowOptions& options) {
  std::string why;
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(options.machine, &why);
  if (!config) return Unreachable(why);
  const std::list<std::string> running = config->GetAppList();
  const QuorPtr<trace_App_i> app = trace_App_i::Look(options.machine, options.app, &why);
  if (!app) return Unreachable(why);
  if (app->GetTraceMap().empty() &&
      std::find(running.begin(), running.end(), options.app) == running.end())
    return NoSuchApp(options.app, running);
  Output output;
  if (!options.json) {
    ShowAsText(ShownApp(*app), output);
    return output.Finish();
  }
  AppendAppJson(output.Buffer(), ShownApp(*app));
  output.EndLine();
  return output.Finish();
}

int RunSet(const SetOptions& options) {
  if (options.persist) return RunKeep(options);
  const std::string doubt = options.doubt.empty() ? "" : "; " + options.doubt;
  std::string why;
  const QuorPtr<trace_Config_i> config = trace_Config_i::Create(options.machine, &why);
  if (!config) return Unreachable(why + doubt);
  // Before our own handle registers the application.
  const std::list<std::string> registered = config->GetAppList();
  if (!config->WasAnswered()) return Unreachable("no answer in time" + doubt);
  const QuorPtr<trace_App_i> app = trace_App_i::Create(options.machine, options.app, &why);
  if (!app) return Unreachable(why + doubt);
  if (app->GetTraceMap().empty()) {
    if (!options.doubt.empty()) PrintError(options.doubt);
    return NoTraces(options.app, registered);
  }
  if (!options.rules.IsEmpty()) {
    const int status = SetByRules(*app, options.rules);
    return status == kExitGood ? Submit(*app) : status;
  }
  if (options.target.empty()) {
    app->SetAllTraces(options.settings);
    return Submit(*app);
  }
  const std::vector<unsigned> ids = TracesOf(*app, options.target);
  if (ids.empty()) return NoSuchTrace(*app, options.target);
  for (const unsigned id : ids) app->SetSettings(id, options.settings);
  return Submit(*app);
}

int RunSink(const SinkChange& command) {
  const std::optional<std::string> file = FullPath(command.machine, command.file);
  if (!file) return kExitBad;
  std::string why;
  const QuorPtr<trace_App_i> app = trace_App_i::Create(command.machine, command.app, &why);
  if (!app) return Unreachable(why);
  const bool toFile = !command.file.empty();
  app->SetSink(toFile ? trc_SinkFile : trc_SinkSocket, toFile ? *file : command.server,
               command.options);
  return Submit(*app);
}

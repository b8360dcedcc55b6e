#include "live/setup_report.h"

#include <algorithm>

#include "live/app_text.h"
#include "live/config_sources.h"
#include "terminal/exit_status.h"
#include "text/visible_text.h"

namespace {

constexpr std::size_t kUnknownToldMax = 10;

std::string Head(const std::string& machine, const std::string& app) {
  return VisibleText(machine) + ": " + Quoted(app) + ": ";
}

std::size_t ChangedFrom(const AppState& had, const AppState& has) {
  std::size_t changed = 0;
  for (const auto& [trace, settings] : has.settings) {
    const auto before = had.settings.find(trace);
    if (before == had.settings.end() || before->second != settings) ++changed;
  }
  return changed;
}

std::size_t OnIn(const AppState& state) {
  return static_cast<std::size_t>(
      std::count_if(state.settings.begin(), state.settings.end(),
                    [](const auto& trace) { return trace.second != 0; }));
}

}  // namespace

AppState::AppState(const trace_App_i& app) {
  app.GetSink(sink.type, sink.name, sink.options);
  for (const trace_Component_t& component : app.GetTraceMap())
    for (const trace_Category_t& category : component.categories)
      settings[{component.name, category.name}] = app.GetSettings(category.traceId);
}

void SetupReport::Say(const std::string& text) {
  m_output.Line(text);
  m_output.Flush();
}

void SetupReport::Fault(int status, const std::string& text) {
  PrintError(text);
  m_status = std::max(m_status, status);
}

void SetupReport::Tell(const std::string& machine, const std::string& app, const AppState& had,
                       const AppState& has) {
  const std::size_t changed = ChangedFrom(had, has);
  std::string text = Head(machine, app) + Counted(has.settings.size(), "trace") + ", " +
                     std::to_string(OnIn(has)) + " on, " + std::to_string(changed) +
                     (m_dryRun ? " would change" : " changed");
  if (had.sink != has.sink)
    text += std::string(m_dryRun ? ", sink would be " : ", sink now ") + SinkText(has.sink);
  Say(text);
}

void SetupReport::TellRest(const std::string& machine, const std::string& app,
                           const WizTraces& wanted, const AppState& has,
                           const std::string& origin) {
  std::size_t unknown = 0, unchosen = 0;
  for (const auto& [trace, settings] : wanted)
    if (!has.settings.contains(trace) && ++unknown <= kUnknownToldMax)
      Fault(kExitNo, Head(machine, app) + "unknown trace " +
                         Quoted(trace.first + "/" + trace.second) + ", passed over");
  if (unknown > kUnknownToldMax)
    Fault(kExitNo, Head(machine, app) + "and " +
                       Counted(unknown - kUnknownToldMax, "more unknown trace") + ", passed over");
  for (const auto& [trace, settings] : has.settings)
    if (!wanted.contains(trace)) ++unchosen;
  if (unchosen == 0) return;
  const bool one = unchosen == 1;
  const std::string why = origin.empty()
                              ? std::string(one ? "it is" : "they are") + " newer than the choice"
                              : VisibleText(origin) + " does not know " + (one ? "it" : "them");
  Fault(kExitNo, Head(machine, app) + Counted(unchosen, "trace") +
                     (m_dryRun ? " would be off" : " off") + ", because " + why);
}

int SetupReport::Finish(bool cut) {
  const int finished = m_output.Finish();
  if (cut && !m_dryRun)
    PrintError("interrupted: only the applications that have a line were configured");
  if (cut) return kExitInterrupted;
  return finished == kExitInterrupted ? m_status : std::max(m_status, finished);
}

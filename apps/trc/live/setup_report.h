// What trc setup prints: a line on standard output for each application that it has configured, and
// on standard error what could not be done, in the order in which it happens.
//
// Threads  One.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "config/tcf/tcf_config.h"
#include "terminal/output.h"
#include "wizard/tables/wizard_tables.h"

// What an application has, by component and category.
struct AppState {
  explicit AppState(const trace_App_i& app);

  TcfSink sink;
  std::map<std::pair<std::string, std::string>, unsigned> settings;
};

class SetupReport {
 public:
  explicit SetupReport(bool dryRun) : m_dryRun(dryRun) {}

  void Say(const std::string& text);
  // The command ends with the worst status of all faults.
  void Fault(int status, const std::string& text);
  // An application from what it had to what it has now.
  void Tell(const std::string& machine, const std::string& app, const AppState& had,
            const AppState& has);
  // Which traces of `wanted` the application does not have, and which ones of its own nobody could
  // choose because `origin`, the machine whose traces were offered, does not know them. Empty: it
  // was this machine, and they are newer.
  void TellRest(const std::string& machine, const std::string& app, const WizTraces& wanted,
                const AppState& has, const std::string& origin);
  // `cut`: a signal has ended the work before its end.
  int Finish(bool cut);

 private:
  const bool m_dryRun;
  Output m_output;
  int m_status = 0;
};

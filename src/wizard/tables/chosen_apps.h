// What Finish puts in force on the machines.
//
// Owner    A chosen application holds the wizard's own handle until its window has another one:
//          without any, an application that does not run would lose its settings.
// Threads  Interface thread.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "wizard/tables/wizard_tables.h"

struct WizSink {
  trc_SinkTypes_e type = trc_SinkSocket;
  std::string name, options;
};
// The sink of a handle, as it was read last.
WizSink SinkOf(const trace_App_i& app);

struct ChosenApp {
  std::string name;
  WizSink sink;
  WizTraces traces;
  QuorPtr<trace_App_i> handle;  // null when it is one of another machine
};
using ChosenApps = std::vector<ChosenApp>;

// The selected applications that were read, by machine, in the order of their names. They and their
// traces are taken out of the tables, which hold no handle afterwards. Of a handle that several
// machines share, because they are configured the same, only the first of them holds one more.
std::map<std::string, ChosenApps> TakeChosen(WizMachines& machines);

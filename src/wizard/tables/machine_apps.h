// Which applications a machine of the wizard offers.
//
// Errors   A machine that does not answer has no names.
// Threads  Interface thread; EnterAppList asks the machine, for at most 5 seconds.
#pragma once

#include <list>
#include <set>
#include <string>

#include "wizard/tables/wizard_tables.h"

// An entry for each application that is registered on the machine. REQUIRES: a connection.
void EnterAppList(WizMachine& machine);
// An entry for each application of an open configuration, with its handle. It replaces an entry of
// that name: nothing of it is selected then. `unsent` are those with changes that the machine has
// not taken.
void EnterOpenApps(WizMachine& machine, const std::list<QuorPtr<trace_App_i>>& open,
                   const std::set<std::string>& unsent);
// Gives each machine the names that another one has. Entries that are there stay as they are.
void MakeNamesIdentical(WizMachines& machines);

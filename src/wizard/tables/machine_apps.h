// Which applications a machine of the wizard offers.
//
// Errors   By the result. A machine that does not answer gets no entries.
// Threads  Interface thread; EnterAppList asks the machine, for at most 5 seconds.
#pragma once

#include <list>
#include <set>
#include <string>

#include "wizard/tables/wizard_tables.h"

// An entry for each application that is registered on the machine. False: it has not answered.
// REQUIRES: a connection.
bool EnterAppList(WizMachine& machine, std::string* why = nullptr);
// An entry for each application of an open configuration, with its handle. It replaces an entry of
// that name: nothing of it is selected then. `unsent` are those with changes that the machine has
// not taken.
void EnterOpenApps(WizMachine& machine, const std::list<QuorPtr<trace_App_i>>& open,
                   const std::set<std::string>& unsent);
// Is the machine's connection its own? Machines that are configured the same have copies of that of
// another one. REQUIRES: a connection.
bool IsConnectedWith(const WizMachine& machine, const std::string& name);
// Gives the machine its own connection in place of another's. What came from the other one goes:
// handles, and the traces that these know. Names, what is selected, and settings of a file stay.
void TakeOwnConnection(WizMachine& machine, const QuorPtr<trace_Config_i>& own);
// Gives each machine the names that another one has. Entries that are there stay as they are.
void MakeNamesIdentical(WizMachines& machines);

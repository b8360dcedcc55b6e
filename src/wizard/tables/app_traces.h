// The traces of the applications that the user has chosen.
//
// Threads  Interface thread.
#pragma once

#include <functional>

#include "wizard/tables/wizard_tables.h"

// An entry for each trace that the application knows, with its settings still to be read. An entry
// that is there keeps its id. REQUIRES: the entry has a handle.
void CollectTraces(WizApp& entry);
// Reads the settings, and the ids, of the traces that have none yet. REQUIRES: as above.
void ReadSettings(WizApp& entry);

// A handle on an application of a machine; null when the machine cannot be reached.
using WizOpenApp = std::function<trace_App_i*(const std::string& host, const std::string& app)>;
// Collects the traces of the selected applications with the settings that the machine has now, for
// which it opens a handle on those that have none. An application that cannot be reached is not
// selected any more. False: there was one. Each is asked for at most 5 seconds; a machine that has
// not answered is not asked again, and one that goes on refusing is asked for no more handles.
// REQUIRES: the machine has a connection.
bool ReadSelected(WizMachine& machine, const WizOpenApp& open);

// The first selected one from this place on; the end if there is none.
WizApps::iterator NextSelected(WizApps& apps, WizApps::iterator from);
// Gives every other machine a copy of this one's connection, applications and file name.
// REQUIRES: `from` is a machine of the table.
void CopyToOthers(WizMachines& machines, WizMachines::const_iterator from);

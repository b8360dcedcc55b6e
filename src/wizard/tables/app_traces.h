// The traces of the applications that the user has chosen.
//
// Threads  Interface thread.
#pragma once

#include "wizard/tables/wizard_tables.h"

// An entry for each trace that the application knows, with its settings still to be read. An entry
// that is there keeps its id. REQUIRES: the entry has a handle.
void CollectTraces(WizApp& entry);
// Reads the settings, and the ids, of the traces that have none yet. REQUIRES: as above.
void ReadSettings(WizApp& entry);
// Gives every other machine a copy of this one's connection, applications and file name.
// REQUIRES: `from` is a machine of the table.
void CopyToOthers(WizMachines& machines, WizMachines::const_iterator from);

// Puts what the wizard holds of an application in force.
//
// Threads  Interface thread; Submit blocks for at most 5 seconds.
#pragma once

#include "wizard/tables/wizard_tables.h"

// Gives `app` the sink of the entry's own handle and the settings of its traces; all other traces
// are switched off. Traces that `app` does not have are passed over. Nothing is sent. REQUIRES:
// the entry has a handle.
void FillApp(const WizApp& entry, trace_App_i& app);
// Does this and submits it. False: the machine has not taken it. REQUIRES: as above.
bool ConfigureApp(const WizApp& entry, trace_App_i& app);

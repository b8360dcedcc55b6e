// Puts what the wizard holds of an application in force.
//
// Threads  Interface thread; Submit blocks for at most 5 seconds.
#pragma once

#include "wizard/tables/chosen_apps.h"

// Gives `app` the sink of the entry's own handle and the settings of its traces; all other traces
// are switched off. Traces that `app` does not have are passed over. Nothing is sent. REQUIRES:
// the entry has a handle.
void FillApp(const WizApp& entry, trace_App_i& app);
// Does this with a chosen application and submits it. False: the machine has not taken it.
bool ConfigureApp(const ChosenApp& chosen, trace_App_i& app);

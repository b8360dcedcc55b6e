#include "wizard/tables/app_traces.h"

void CollectTraces(WizApp&) {}

void ReadSettings(WizApp&) {}

void CopyToOthers(WizMachines&, WizMachines::const_iterator) {}

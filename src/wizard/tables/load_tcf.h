// Fills a machine's table of applications from a .tcf file.
//
// Errors   By the result. What was read before a bad line stays in the table. A wrong first line
//          leaves the table as it was.
// Threads  Interface thread.
#pragma once

#include <istream>

#include "wizard/tables/wizard_tables.h"

enum class WizLoad { Loaded, Invalid, Wildcard };
// All applications of the file are selected. Its sinks are dropped.
WizLoad LoadTcf(std::istream& in, WizApps& apps);

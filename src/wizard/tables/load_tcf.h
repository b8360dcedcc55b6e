// Fills a machine's table of applications from a .tcf file.
//
// Errors   By the result. What was read before a bad line stays in the table. A file that cannot be
//          opened and one with a wrong first line leave the table as it was.
// Threads  Interface thread.
#pragma once

#include <string>

#include "wizard/tables/wizard_tables.h"

enum class WizLoad { Loaded, NotOpened, Invalid, Wildcard };
// What a person is told; empty for Loaded.
const char* WordsOf(WizLoad result);

// The applications of the file, all selected, replace those of the table. The file's sinks are
// dropped. A machine that has got the whole file also gets its name.
WizLoad LoadTcf(const std::string& file, WizMachine& machine);

// The machines that the user has connected to, kept over restarts.
//
// Shape    Newest first, each once in any case, at most ten. This machine is not among them: it is
//          offered in any case.
// Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

std::vector<std::string> UsedMachines();
void NoteUsedMachine(const std::string& machine);

// Why no trace comes, for the one who waits in front of an empty screen.
//
// Threads  The interface thread; asks the machine, which may take as long as its deadlines.
#pragma once

#include <string>

std::string WhyNothingComes(const std::string& machine);

// The reason why no trace comes, for a user who waits.
//
// Threads  The interface thread; asks the machine, which may take as long as its deadlines.
#pragma once

#include <string>

std::string WhyNothingComes(const std::string& machine);

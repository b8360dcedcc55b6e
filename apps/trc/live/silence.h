// The reasons why no trace comes, for a user who waits.
//
// Threads  The interface thread; asks the machine, which may take as long as its deadlines.
#pragma once

#include <string>

// `account`: only its applications count; empty: all.
std::string WhyNothingComes(const std::string& machine, const std::string& account);
// Why no trace can be chosen by its account there; empty: it can, or nothing is known yet.
std::string WhyNoAccounts(const std::string& machine);

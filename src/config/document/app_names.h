// Names of applications in a line for the user.
//
// Threads  Pure.
#pragma once

#include <set>
#include <string>

// "billing, orders, web and 3 more": at most three names, each cut when it is long, and in one line
// whatever bytes it has.
std::string AppNames(const std::set<std::string>& apps);

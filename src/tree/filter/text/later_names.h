// Names that may still come: one for each way in which some tests can see such a name.
//
// REQUIRES  The tests are of Equal, In or an order, no parts of names.
// Threads   Pure.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "where/where_rule.h"

using WhereTests = std::vector<const WhereRule*>;
using NameSet = std::set<std::string>;

// Of a field that holds a name.
NameSet LaterNames(const WhereTests& tests, const NameSet& known);
// Of the numbers or names of processes or threads.
NameSet LaterIds(const WhereTests& tests, const NameSet& known);
// Whole names of processes, with and without an account; the number may be a known one.
NameSet LaterProcesses(const WhereTests& pids, const WhereTests& accounts, const NameSet& known);

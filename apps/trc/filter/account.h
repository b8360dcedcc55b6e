// The option --user: an account of a machine whose service traces all accounts.
//
// Threads  Pure, but AccountOf: the system's data base of accounts.
#pragma once

#include <string>
#include <vector>

// The account of a name, or of a number that this system has a name for.
std::string AccountOf(const std::string& nameOrNumber);

// "no trace is of the account "bob"; those here are of "alice" and "carol"". `known` may have one
// several times and in any order; empty ones are passed over.
std::string NoSuchAccount(const char* what, const std::string& account,
                          const std::vector<std::string>& known);

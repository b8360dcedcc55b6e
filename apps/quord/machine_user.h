// How a service of the machine that root starts becomes a user without rights.
//
// Errors   False and a reason; then it must not serve.
// Threads  One: before any other is started.
#pragma once

#include <string>

constexpr const char* kMachineUser = "quord";

struct MachineUser {
  std::string name;
  std::string place, state;  // folders that the user gets, made if they are missing
};

// REQUIRES: this process is root's. There is no way back.
bool BecomeMachineUser(const MachineUser& user, std::string* why);

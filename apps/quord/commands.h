// The commands of quord. Each gives an exit status.
#pragma once

#include "command_line.h"

// Says why a command failed, on standard error, and gives its exit status.
int Fail(const std::string& why);

int Serve(const ServeCommand& command);
int KeysInit(const KeysInitCommand& command);
int KeysIssue(const KeysIssueCommand& command);
int Status(const StatusCommand& command);

// The socket in this folder, or where this user's service is by default.
std::string SocketPathIn(const std::string& folder);

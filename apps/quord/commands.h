// The commands of quord. Each returns an exit status.
#pragma once

#include "command_line.h"

// Prints why a command failed to standard error, and returns its exit status.
int Fail(const std::string& why);

int Serve(const ServeCommand& command);
int KeysInit(const KeysInitCommand& command);
int KeysIssue(const KeysIssueCommand& command);
int Status(const StatusCommand& command);

// The socket in this folder, or by default that of this user's service.
std::string SocketPathIn(const std::string& folder);

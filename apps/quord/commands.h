// The commands of quord. Each returns an exit status.
#pragma once

#include "command_line.h"

// Prints why a command failed to standard error, and returns its exit status.
int Fail(const std::string& why);

int Serve(const ServeCommand& command);
int KeysInit(const KeysInitCommand& command);
int KeysIssue(const KeysIssueCommand& command);
int Status(const StatusCommand& command);
int Stop(const StopCommand& command);
int Reload(const ReloadCommand& command);
int CheckConfig(const CheckConfigCommand& command);

// The settings of the file and of the command line. `file`: the path of the file that was read;
// empty if there is none.
bool SettingsFor(const ServeCommand& command, ServiceSettings* settings, std::string* file,
                 std::string* why);
// Where the certificates are.
std::string KeysFolderFor(const ServiceSettings& settings);
// The socket in this folder, or in that of the configuration file, or else that of this user's
// service.
std::string SocketPathIn(const std::string& folder);

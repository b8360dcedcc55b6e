// The command line of quord.
//
// Errors   For wrong use a message goes to standard error, for help and version the text goes to
//          standard output. In these cases there is no command, only an exit status.
#pragma once

#include <optional>
#include <variant>

#include "quor/options/service_words.h"

enum ExitStatus { kExitGood = 0, kExitNo = 1, kExitWrongUse = 2, kExitNotRunning = 3 };

struct ServeCommand {
  bool foreground = false;
  std::string config;              // empty: the usual file, if there is one
  std::vector<GivenOption> given;  // replaces what the file says
};
struct KeysInitCommand {
  std::string keysFolder;
  std::vector<std::string> hosts;  // further names and addresses of this machine
  int days = 0;                    // 0: the default
};
struct KeysIssueCommand {
  std::string keysFolder, name, role, to;
  std::vector<std::string> hosts;  // of that machine, when its service is to listen
  int days = 0;
};
struct StatusCommand {
  std::string socketFolder;
  bool json = false;
};
struct StopCommand {
  std::string socketFolder;
};
struct ReloadCommand {
  std::string socketFolder;
};
struct CheckConfigCommand {
  std::string config;  // empty: the usual file
};
using Command = std::variant<ServeCommand, KeysInitCommand, KeysIssueCommand, StatusCommand,
                             StopCommand, ReloadCommand, CheckConfigCommand>;

struct ParsedCommandLine {
  std::optional<Command> command;
  int exitStatus = kExitGood;
};
ParsedCommandLine ParseCommandLine(int argc, const char* const* argv);

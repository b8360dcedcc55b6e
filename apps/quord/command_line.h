// The command line of quord.
//
// Errors   For wrong use a message goes to standard error, for help and version the text goes to
//          standard output. In these cases there is no command, only an exit status.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "quor/log/log.h"

enum ExitStatus { kExitGood = 0, kExitNo = 1, kExitWrongUse = 2 };

struct ServeCommand {
  bool foreground = false;
  LogLevel logLevel = LogLevel::Info;
  std::vector<std::string> listen;
  std::string stateFolder, socketFolder, keysFolder;  // empty: the default
  std::uint32_t defaultSettings = 7;
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
using Command = std::variant<ServeCommand, KeysInitCommand, KeysIssueCommand, StatusCommand>;

struct ParsedCommandLine {
  std::optional<Command> command;
  int exitStatus = kExitGood;
};
ParsedCommandLine ParseCommandLine(int argc, const char* const* argv);

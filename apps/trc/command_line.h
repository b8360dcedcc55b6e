// The command line of trc.
//
// Owner    The commands and their options.
// Errors   Wrong use: words on standard error, and only the status is set.
#pragma once

#include <memory>
#include <vector>

#include "commands/command.h"

class CommandLine {
 public:
  CommandLine();

  // The command that the line names, ready to be run. Null: nothing is left to do, and Status is
  // the exit status; --help and --version have been answered on standard output.
  const Command* Read(int argc, const char* const* argv);
  int Status() const { return m_status; }

 private:
  const Command& Named();
  int Answer(const CLI::ParseError& error);

  CLI::App m_app{"Looks into trace files and live traces, and switches traces on and off.", "trc"};
  std::vector<std::unique_ptr<Command>> m_commands;
  int m_status = 0;
};

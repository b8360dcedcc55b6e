// The command line of quor-bridge.
//
// Owner    The commands and their options.
// Errors   Wrong use: words on standard error, and only the status is set.
#pragma once

#include <memory>
#include <vector>

#include "verb.h"

class CommandLine {
 public:
  CommandLine();

  // The command that the line names, ready to be run. Null: nothing is left to do, and Status is
  // the exit status; --help and --version have been answered on standard output.
  Verb* Read(int argc, const char* const* argv);
  int Status() const { return m_status; }

 private:
  Verb& Named();
  int Answer(const CLI::ParseError& error);

  CLI::App m_app{
      "Carries the traces of this machine to a cluster that stores them for monitors\n"
      "anywhere.",
      "quor-bridge"};
  std::vector<std::unique_ptr<Verb>> m_verbs;
  int m_status = kExitGood;
};

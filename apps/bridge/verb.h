// A command of quor-bridge: what it takes from the command line, and what it does then.
//
// Owner    Its options, into which the program's CLI::App writes while it reads the line.
// Threads  One.
//
// A new one: a source of its own with its class and its maker, the maker in verbs.h, and its place
// in the list of command_line.cpp.
#pragma once

#include <CLI/CLI.hpp>

// The engine, or the service of this machine, could not be reached: kExitNotReached.
enum ExitStatus { kExitGood = 0, kExitNo = 1, kExitWrongUse = 2, kExitNotReached = 3 };

class Verb {
 public:
  virtual ~Verb() = default;
  Verb(const Verb&) = delete;
  Verb& operator=(const Verb&) = delete;

  // Did the line that was read name it?
  bool IsNamed() const { return m_app.parsed(); }
  // What the options say together. Once, when it is named. Wrong use is a CLI::ParseError.
  virtual void Complete() {}
  // Gives the exit status.
  virtual int Run() = 0;

 protected:
  Verb(CLI::App& program, const char* name, const char* help)
      : m_app(*program.add_subcommand(name, help)) {}
  CLI::App& App() { return m_app; }

 private:
  CLI::App& m_app;
};

// Prints why a command failed to standard error, and returns the status.
int Fail(const std::string& why, ExitStatus status = kExitNo);

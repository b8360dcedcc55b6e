// A command of trc: what it takes from the command line, and what it does then.
//
// Owner    Its options, into which the program's CLI::App writes while it reads the line.
// Threads  One.
//
// A new one: a class of its own with its options, its maker in commands.h, and its place in the
// list of command_line.cpp.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>
#include <vector>

class Command {
 public:
  virtual ~Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  // Did the line that was read name it?
  bool IsNamed() const { return m_app.parsed(); }
  // What the options say together. Once, when it is named. Wrong use is a CLI::ParseError.
  virtual void Complete() {}
  // Gives the exit status.
  virtual int Run() const = 0;

 protected:
  Command(CLI::App& program, const char* name, const char* help)
      : m_app(*program.add_subcommand(name, help)) {}

  CLI::App& App() { return m_app; }
  // Named as the library wants it: "-n,--count". `type` is what the help calls the value.
  CLI::Option* AddNumber(const std::string& names, std::uint64_t& number, const char* help,
                         const char* type = "N");
  // The trace files that the command reads, "FILE...".
  void AddFiles(std::vector<std::string>& files, const char* help = "");
  // Of "FILE... OUT". TakeOut takes the last word out of the files.
  void AddFilesAndOut(std::vector<std::string>& files, const char* shown, const char* help);
  static std::string TakeOut(std::vector<std::string>& files, const char* shown);
  // How traces are printed: "text" or "jsonl".
  void AddLineFormat(std::string& format);
  // Whether the severities of text are coloured: "auto", "always" or "never".
  void AddColour(std::string& when);
  static bool IsColoured(const std::string& when);

 private:
  CLI::App& m_app;
};

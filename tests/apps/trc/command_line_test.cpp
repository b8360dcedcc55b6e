#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

// Wrong use: nothing on standard output, a message on standard error, status 2.
void ExpectRefused(const std::vector<std::string>& arguments, const std::string& words) {
  const TrcRun run = RunTrc(arguments);
  EXPECT_EQ(run.status, 2) << testing::PrintToString(arguments);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.substr(0, 5), "trc: ");
  EXPECT_TRUE(Has(run.err, words)) << run.err;
}

TEST(TrcCommandLine, HelpGoesToStandardOutputWithExamplesAndTheCommands) {
  for (const char* option : {"--help", "-h"}) {
    const TrcRun run = RunTrc({option});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    for (const char* part : {"Examples:", "gen", "info", "dump", "save", "--version"}) {
      EXPECT_TRUE(Has(run.out, part)) << part;
    }
  }
}

TEST(TrcCommandLine, EachCommandHasHelpWithItsOptionsAndAnExample) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> commands = {
      {"gen", {"-n,--records", "-s,--seed", "--old", "OUT"}},
      {"info", {"-j,--json", "FILE"}},
      {"dump",
       {"-f,--format", "-c,--columns", "-u,--utc", "-b,--from", "-n,--count", "FILE", "Tic Diff"}},
      {"save", {"IN", "OUT"}},
      {"convert", {"OLD", "NEW"}},
      {"export",
       {"-f,--format", "-c,--columns", "--hidden", "-u,--utc", "--uncheck", "FILE", "OUT"}},
      {"import", {"--journal", "--syslog", "--jsonl", "--regex", "--map", "--join", "IN... OUT"}},
      {"find", {"-e,--regex", "-P,--perl-regex", "-w,--word", "--total", "PATTERN", "FILE"}},
      {"tree", {"-m,--machine", "-d,--depth", "-x,--export", "--check", "FILE", "OUT"}},
      {"tail", {"-f,--format", "-n,--count", "--for", "--uncheck", "MACHINE"}},
      {"capture", {"-o,--out", "--max-size", "--max-files", "--uncheck", "MACHINE"}},
      {"apps", {"-j,--json", "MACHINE"}},
      {"show", {"-j,--json", "[MACHINE] APP"}},
      {"set", {"-a,--all", "-p,--persist", "[MACHINE] APP COMPONENT[/CATEGORY] SETTINGS...|RULES"}},
      {"forget", {"[MACHINE] APP"}},
      {"sink", {"-s,--server", "-o,--file", "--flush", "--max-files", "--max-size"}},
      {"config", {"check", "show", "save", "apply", "diff"}},
      {"setup", {"-m,--machine", "-s,--same", "-p,--preset", "--monitor", "-n,--dry-run", "FILE"}},
      {"emit", {"-a,--app", "-r,--rate", "-n,--count", "--text-bytes", "-b,--blocks"}}};
  for (const auto& [command, parts] : commands) {
    const TrcRun run = RunTrc({command, "--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_TRUE(Has(run.out, "  trc " + command + " ")) << run.out;
    for (const std::string& part : parts) EXPECT_TRUE(Has(run.out, part)) << run.out;
  }
}

TEST(TrcCommandLine, VersionIsOneLine) {
  for (const char* option : {"--version", "-V"}) {
    const TrcRun run = RunTrc({option});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "trc 3.1.0\n");
  }
}

TEST(TrcCommandLine, WithoutACommandItIsWrongUse) {
  ExpectRefused({}, "a command is needed: gen, info, dump, ");
  ExpectRefused({}, "sink, config, setup or emit\nTry 'trc --help'.\n");
  ExpectRefused({"--jsn"}, "--jsn");
}

TEST(TrcCommandLine, AnUnknownCommandOrOptionIsWrongUse) {
  ExpectRefused({"erase", "a.trc"}, "there is no command \"erase\"");
  ExpectRefused({"info", "--xml", "a.trc"}, "--xml");
  ExpectRefused({"info", "--xml", "a.trc"}, "Try 'trc info --help'");
}

TEST(TrcCommandLine, WhatIsNearlyRightIsNamed) {
  ExpectRefused({"tial"}, "there is no command \"tial\"; did you mean \"tail\"?\n");
  ExpectRefused({"cap"}, "did you mean \"capture\"?\n");
  ExpectRefused({"info", "--jsn", "a.trc"},
                "there is no option \"--jsn\"; did you mean \"--json\"?\nTry 'trc info --help'.\n");
  ExpectRefused({"gen", "--recrds=5", "out.trc"}, "\"--recrds\"; did you mean \"--records\"?\n");
  ExpectRefused({"dump", "a.trc", "--format", "josnl"}, "did you mean \"jsonl\"?\n");
  ExpectRefused({"dump", "a.trc", "--columns", "Tme"}, "did you mean \"Time\"?");
  ExpectRefused({"set", "a2", "Net", "inffo"}, "\"inffo\" is no setting; did you mean \"Info\"?\n");
  ExpectRefused({"set", "a2", "--all", "DEVELOPR"}, "did you mean \"Developer\"?\n");
  ExpectRefused({"set", "a2", "Net=Inffo+Stack"},
                "set: \"Inffo\" is no setting; did you mean \"Info\"? (in \"Net=Inffo+Stack\")\n");
  ExpectRefused({"set", "a2", "Net=max;Db", "Db=off"}, "\"Db\" has no \"=\" before its settings\n");
  ExpectRefused({"set", "a", "b", "c", "Net=max"}, "set: takes [MACHINE] APP, then ");
  ExpectRefused({"set", "a2", ";="}, "\"=\" names no traces\n");
  ExpectRefused({"set", "--persist", "a2", "a;b", "off"}, "cannot be kept");
  ExpectRefused({"sink", "a2", "fle:x.trc"}, "did you mean \"file:\"?\n");
  ExpectRefused({"sink", "a2", "file:x.trc?maxsise=1"}, "did you mean \"maxsize\"?\n");
  ExpectRefused({"sink", "a2", "file:x.trc", "--server", "b", "c"},
                "sink: takes --server NAME, --file PATH or a SINK\n");
}

TEST(TrcCommandLine, WhatIsNearToNothingIsNotGuessed) {
  ExpectRefused({"erase"}, "there is no command \"erase\"\nTry 'trc --help'.\n");
  ExpectRefused({"info", "-x", "a.trc"}, "there is no option \"-x\"\nTry");
  ExpectRefused({"set", "a2", "Net", "Loud"}, "set: takes [MACHINE] APP, then ");
}

TEST(TrcCommandLine, TheHelpAndTheErrorsSpeakOfTheCommandLineAsItIsTyped) {
  for (const std::string command : {"", "gen", "dump", "show", "set", "sink", "tail"}) {
    const TrcRun run = RunTrc(command.empty() ? std::vector<std::string>{"--help"}
                                              : std::vector<std::string>{command, "--help"});
    for (const char* word : {"WORDS", "x)", "REQUIRED", "{", "SUBCOMMAND", "Positionals"})
      EXPECT_FALSE(Has(run.out, word)) << word << " in " << run.out;
  }
  EXPECT_TRUE(Has(RunTrc({"gen", "--help"}).out, "How many traces to write (required)"));
  EXPECT_TRUE(Has(RunTrc({"show", "--help"}).out, "Usage: trc show [OPTIONS] [MACHINE] APP\n"));
  ExpectRefused({"show"}, "trc: [MACHINE] APP is required\n");
  ExpectRefused({"show", "a", "b", "c"}, "trc: that is one argument too many\n");
  ExpectRefused({"dump", "a.trc", "--columns"}, "trc: --columns needs LIST\n");
  ExpectRefused({"dump", "a.trc", "-n", "1", "--count", "2"},
                "trc: --count is given more than once\n");
}

TEST(TrcCommandLine, AMissingArgumentIsWrongUse) {
  ExpectRefused({"gen", "out.trc"}, "--records");
  ExpectRefused({"gen", "--records", "5"}, "OUT");
  ExpectRefused({"info"}, "FILE");
  ExpectRefused({"dump"}, "FILE");
  ExpectRefused({"save"}, "IN");
  ExpectRefused({"save", "in.trc"}, "OUT");
  ExpectRefused({"convert", "in.trc"}, "NEW");
  ExpectRefused({"export", "in.trc"}, "OUT");
}

TEST(TrcCommandLine, ASurplusArgumentIsWrongUse) {
  ExpectRefused({"convert", "a.trc", "b.trc", "c.trc"}, "c.trc");
}

TEST(TrcCommandLine, ANumberIsPlainDecimalDigitsThatFit) {
  for (const char* number : {"", "five", "5x", "-5", "0x10", "1.5", "18446744073709551616"}) {
    ExpectRefused({"gen", std::string("--records=") + number, "/nowhere/out.trc"}, "--records");
    ExpectRefused({"dump", std::string("--from=") + number, "a.trc"}, "--from");
    ExpectRefused({"dump", std::string("--count=") + number, "a.trc"}, "--count");
    ExpectRefused({"gen", "-n", "1", std::string("--seed=") + number, "/nowhere/out.trc"},
                  "--seed");
  }
}

TEST(TrcCommandLine, AFlagRefusesAValue) {
  ExpectRefused({"tail", "--utc=5"}, "trc: --utc takes no value\nTry 'trc tail --help'.\n");
  // Each of these would have been taken, or ignored without a message.
  for (const std::vector<std::string>& line : std::vector<std::vector<std::string>>{
           {"dump", "--utc=false", "a.trc"},
           {"dump", "--utc=", "a.trc"},
           {"info", "--json=true", "a.trc"},
           {"find", "--regex=0", "x", "a.trc"},
           {"find", "--word=no", "x", "a.trc"},
           {"tree", "--export=out.txt", "a.trc"},
           {"gen", "--old=1", "-n", "1", "a.trc"},
           {"export", "--hidden=1", "a.trc", "-"},
           {"apps", "--json=1"},
           {"set", "--all=1", "orders", "off"},
           {"sink", "orders", "--file", "a.trc", "--flush=1"},
           {"emit", "--app", "orders", "--blocks=1", "--count", "1"},
           {"tail", "--help=1"},
           {"--version=1"}}) {
    ExpectRefused(line, " takes no value\n");
  }
}

TEST(TrcCommandLine, AnUnknownFormatIsWrongUse) {
  ExpectRefused({"dump", "a.trc", "--format", "xml"}, "--format");
}

TEST(TrcCommandLine, AnUnknownColumnIsReportedWithTheListOfColumns) {
  ExpectRefused({"dump", "a.trc", "--columns", "Time,Colour"}, "\"Colour\"");
  ExpectRefused({"dump", "a.trc", "--columns", "Time,Colour"},
                "Sev, Count, Tic Count, Tic Diff, Time, Machine, Application, Component, "
                "Category, Attributes, PID, TID, Trace, Source, Stack");
  ExpectRefused({"dump", "a.trc", "--columns", "Time,"}, "\"\"");
}

TEST(TrcCommandLine, ColumnsGoWithTheTextFormatOnly) {
  ExpectRefused({"dump", "a.trc", "--format", "jsonl", "--columns", "Time"}, "--columns");
}

TEST(TrcCommandLine, AFileThatCannotBeOpenedIsReportedWithTheReason) {
  const TempDir directory;
  const std::string missing = directory.File("no.trc");
  const std::string empty = directory.File("empty.trc", "");
  for (const std::string command : {"info", "dump"}) {
    ExpectRefused({command, missing}, "no.trc: No such file or directory");
    ExpectRefused({command, directory.Path()}, "Is a directory");
    ExpectRefused({command, empty}, "empty.trc: ");
  }
  ExpectRefused({"save", missing, directory.File("out.trc")}, "No such file or directory");
  EXPECT_FALSE(std::filesystem::exists(directory.File("out.trc")));
}

TEST(TrcCommandLine, ASinkFileInACurrentFolderThatIsGoneIsReportedWithTheReason) {
  const std::filesystem::path before = std::filesystem::current_path();
  {
    const TempDir directory;
    std::filesystem::current_path(directory.Path());
  }
  const TrcRun run = RunTrc({.arguments = {"sink", "orders", "--file", "orders.trc"},
                             .environment = {"QUOR_AUTOSTART=0"}});
  std::filesystem::current_path(before);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: orders.trc: No such file or directory\n");
}

TEST(TrcCommandLine, AWrongHeaderIsInvalidFormat) {
  const TempDir directory;
  const std::string path = directory.File("text.trc", "This is no trace file at all.");
  for (const std::string command : {"info", "dump"}) {
    ExpectRefused({command, path}, "text.trc: Invalid format.\n");
  }
  ExpectRefused({"save", path, directory.File("out.trc")}, "Invalid format.\n");
}

// The first word of each line of a help that stands below the heading.
std::vector<std::string> FirstWords(const std::string& help, const std::string& heading) {
  std::vector<std::string> words;
  const std::vector<std::string> lines = LinesOf(help);
  auto line = std::find(lines.begin(), lines.end(), heading);
  if (line == lines.end()) return words;
  while (++line != lines.end() && !line->empty())
    if (line->substr(0, 2) == "  " && line->at(2) != ' ')
      words.push_back(line->substr(2, line->find(' ', 2) - 2));
  return words;
}

std::string Replaced(std::string text, char from, char to) {
  std::replace(text.begin(), text.end(), from, to);
  return text;
}

// What stands between the two; empty when the first is not there.
std::string Between(const std::string& text, const std::string& first, const std::string& last) {
  const std::size_t begin = text.find(first);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find(last, begin + first.size()) - begin);
}

TEST(TrcCommandLine, ThePackagedManualAndCompletionsKnowEveryOptionAndCommand) {
  const std::string folder = getenv("TRC_PACKAGING");
  std::string manual = ReadAll(folder + "/man/trc.1");
  for (std::size_t at; (at = manual.find("\\-")) != std::string::npos;) manual.replace(at, 2, "-");
  const std::string bash = ReadAll(folder + "/completions/trc.bash");
  const std::string zsh = ReadAll(folder + "/completions/_trc");
  const std::string fish = ReadAll(folder + "/completions/trc.fish");
  const std::string choice = Between(manual, "\n.SH THE CHOICE OF TRACES\n", "\n.S");
  std::vector<std::string> commands = FirstWords(RunTrc({"--help"}).out, "Commands:");
  EXPECT_GE(commands.size(), 16u);
  const auto parts = FirstWords(RunTrc({"config", "--help"}).out, "Commands:");
  EXPECT_GE(parts.size(), 5u);
  for (const std::string& part : parts) commands.push_back("config " + part);
  std::size_t known = 0;
  for (const std::string& command : commands) {
    const std::string section = Between(manual, "\n.SS trc " + command + "\n", "\n.S");
    const std::vector<std::string> words = LinesOf(Replaced(command, ' ', '\n'));
    for (const std::string* const file : {&bash, &zsh, &fish})
      EXPECT_TRUE(Has(*file, words.back())) << command;
    std::vector<std::string> help = words;
    help.emplace_back("--help");
    const auto options = FirstWords(RunTrc(help).out, "Options:");
    EXPECT_GE(options.size(), 1u) << command;  // --help itself
    known += options.size();
    for (const std::string& names : options) {
      const std::string option = names.substr(names.find("--"));  // after "-f,"
      EXPECT_TRUE(option == "--help" || Has(section, option) ||
                  (Has(section, ".I CHOICE") && Has(choice, option)))
          << command << " " << option;
      EXPECT_TRUE(Has(bash, option)) << option;
      EXPECT_TRUE(Has(zsh, option)) << option;
      EXPECT_TRUE(Has(fish, "-l " + option.substr(2))) << option;
    }
  }
  EXPECT_GE(known, 60u);
}

}  // namespace

// The options that all commands with traces share.
#include <sstream>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

struct SharedOption {
  std::vector<std::string> words;
  std::string columnsless;  // what commands without columns say; likewise the next two
  std::string live;
  std::string stack;
};

const SharedOption kOptions[] = {
    {{"--columns", "Time"}, "--columns: ", "", ""},
    {{"-c", "Time"}, "--columns: ", "", ""},
    {{"--utc"}, "", "", ""},
    {{"-u"}, "", "", ""},
    {{"--since", "2026-11-21 09:41"}, "", "", ""},
    {{"--until", "2126-11-21"}, "", "", ""},
    {{"--from", "1"}, "", "--from: live traces have no index", ""},
    {{"-b", "1"}, "", "--from: live traces have no index", ""},
    {{"--count", "1"}, "", "", ""},
    {{"-n", "1"}, "", "", ""},
    {{"--tail", "1"}, "", "--tail: live traces have no last ones", ""},
    {{"--severity", "warn+"}, "", "", ""},
    {{"--app", "shop"}, "", "", ""},
    {{"--component", "net"}, "", "", ""},
    {{"--category", "net"}, "", "", ""},
    {{"--machine", "desk"}, "", "", ""},
    {{"-m", "desk"}, "", "", ""},
    {{"--pid", "100"}, "", "", ""},
    {{"--tid", "one"}, "", "", ""},
    {{"--severity", "warn", "--invert"}, "", "", ""},
    {{"--severity", "warn", "-v"}, "", "", ""},
    {{"--severity", "warn", "--context", "1"}, "", "", "--context: what stands beside"},
    {{"--uncheck", "All Severities/Info"}, "", "", ""},
    {{"--check", "All Severities/Info"}, "", "", ""},
    {{"--where", "text contains order"}, "", "", ""},
};

class TrcSharedOptions : public testing::Test {
 protected:
  TrcSharedOptions() {
    TrcImage image;
    image.Name(1, "desk").Name(2, "shop").Name(3, "100").Name(4, "one").Name(5, "Net").Name(6,
                                                                                            "Db");
    for (unsigned second = 0; second < 10; ++second)
      image.Trace({.text = "order " + std::to_string(second),
                   .stack = "main",
                   .machine = 1,
                   .app = 2,
                   .component = static_cast<NameId>(second % 2 == 0 ? 5 : 6),
                   .category = 5,
                   .time = PackTime(9, 41, second, 0),
                   .pid = 3,
                   .tid = 4,
                   .attributes = second % 4 == 2   ? std::uint16_t{kAttributeWarn}
                                 : second % 4 == 3 ? std::uint16_t{kAttributeError}
                                                   : std::uint16_t{kAttributeInfo}});
    m_file = image.WriteTo(m_directory.File("in.trc"));
  }
  // "2 3": the last characters of the texts that are given.
  std::string Given(std::vector<std::string> arguments, const std::string& command = "dump") {
    std::vector<std::string> all = {command};
    if (command == "find") all.emplace_back("order");
    all.insert(all.end(), {m_file, "--format", "jsonl", "--utc"});
    all.insert(all.end(), arguments.begin(), arguments.end());
    const TrcRun run = RunTrc(all);
    EXPECT_EQ(run.err, "");
    std::string given;
    for (const json& trace : JsonLinesOf(run.out)) {
      given += given.empty() ? "" : " ";
      given += trace["text"].get<std::string>().back();
      if (trace.contains("context")) given += "*";
    }
    return given;
  }
  void ExpectRefused(std::vector<std::string> arguments, const std::string& words) {
    arguments.insert(arguments.begin(), {"dump", m_file});
    const TrcRun run = RunTrc(arguments);
    EXPECT_EQ(run.status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(Has(run.err, words)) << run.err;
  }

  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcSharedOptions, EveryCommandTakesEveryOptionOrSaysWhyNot) {
  const std::string out = m_directory.File("out");
  struct Command {
    std::vector<std::string> words;
    bool columns, live, stack;
  };
  const std::vector<Command> commands = {{{"dump", m_file}, true, false, false},
                                         {{"find", "order", m_file}, true, false, false},
                                         {{"tree", m_file}, false, false, false},
                                         {{"stack", "--recorded", m_file}, false, false, true},
                                         {{"stats", m_file}, false, false, true},
                                         {{"save", m_file, out}, false, false, false},
                                         {{"export", m_file, out}, true, false, false},
                                         {{"tail"}, true, true, false},
                                         {{"capture", "-o", out}, false, true, false}};
  for (const Command& command : commands) {
    for (const SharedOption& option : kOptions) {
      std::vector<std::string> arguments = command.words;
      arguments.insert(arguments.end(), option.words.begin(), option.words.end());
      const std::string refused = !command.columns && !option.columnsless.empty()
                                      ? option.columnsless
                                  : command.live  ? option.live
                                  : command.stack ? option.stack
                                                  : "";
      // No service is there, so that a live command which has understood its line fails behind it.
      const TrcRun run = RunTrc(
          {.arguments = arguments, .environment = {"QUOR_AUTOSTART=0", "QUOR_SOCKET=" + out}});
      const std::string shown = testing::PrintToString(arguments) + " " + run.err;
      if (!refused.empty()) {
        EXPECT_EQ(run.status, 2) << shown;
        EXPECT_EQ(run.err.substr(0, 5 + refused.size()), "trc: " + refused) << shown;
        EXPECT_EQ(LinesOf(run.err).size(), 2u) << "the reason, and where the help is: " << shown;
      } else if (command.live) {
        EXPECT_EQ(run.status, 2) << shown;
        EXPECT_FALSE(Has(run.err, "--help")) << shown;
        EXPECT_TRUE(Has(run.err, out)) << "it went on to the service: " << shown;
      } else {
        EXPECT_LE(run.status, command.words[0] == "find" ? 1 : 0) << shown;
        EXPECT_EQ(run.err, "") << shown;
      }
    }
  }
}

// The words behind "[OPTIONS]" in the help of a command, as this test can give them.
std::vector<std::string> WordsOf(const std::string& help, const std::string& in,
                                 const std::string& out) {
  const std::size_t usage = help.find("[OPTIONS] ");
  std::istringstream line(help.substr(usage, help.find('\n', usage) - usage));
  std::vector<std::string> words;
  for (std::string word; line >> word;) {
    if (word == "FILE" || word == "FILE..." || word == "IN...") words.push_back(in);
    if (word == "OUT") words.push_back(out);
    if (word == "PATTERN") words.emplace_back("order");
  }
  if (Has(help, "-o,--out FILE")) words.insert(words.end(), {"-o", out});
  return words;
}

// By the help alone, so that a new command is tried, too.
TEST_F(TrcSharedOptions, EveryCommandTakesWhatItsHelpNamesAndRefusesTheOthersByName) {
  const std::string help = RunTrc({"--help"}).out, out = m_directory.File("out");
  std::size_t commands = 0;
  for (const std::string& line : LinesOf(help.substr(help.find("\nCommands:\n") + 11))) {
    if (line.empty()) break;
    const std::string command = line.substr(2, line.find(' ', 2) - 2);
    if (command.empty()) continue;  // the rest of a text
    const std::string told = RunTrc({command, "--help"}).out;
    if (!Has(told, "--severity LIST")) continue;
    ++commands;
    const bool live = Has(told, "--for SECONDS");
    for (const SharedOption& option : kOptions) {
      std::vector<std::string> words = {command};
      for (const std::string& word : WordsOf(told, m_file, out)) words.push_back(word);
      words.insert(words.end(), option.words.begin(), option.words.end());
      const TrcRun run =
          RunTrc({.arguments = words, .environment = {"QUOR_AUTOSTART=0", "QUOR_SOCKET=" + out}});
      const std::string shown = testing::PrintToString(words) + " " + run.err;
      bool known = true;
      for (const std::string& word : option.words)
        if (word[0] == '-') known = known && Has(told, word.size() > 2 ? word + " " : word + ",");
      if (!known)
        EXPECT_TRUE(run.status == 2 && run.err.starts_with("trc: --")) << shown;
      else if (live)
        EXPECT_TRUE(run.status == 2 && Has(run.err, out)) << shown;
      else
        EXPECT_TRUE(run.status <= 1 && run.err.empty()) << shown;
    }
  }
  EXPECT_GE(commands, 8u);
}

TEST_F(TrcSharedOptions, ChoicesByValue) {
  EXPECT_EQ(Given({"--severity", "error"}), "3 7");
  EXPECT_EQ(Given({"--severity", "warn+"}), "2 3 6 7");
  EXPECT_EQ(Given({"--severity", "Info,ERROR"}), "0 1 3 4 5 7 8 9");
  EXPECT_EQ(Given({"--component", "NET"}), "0 2 4 6 8");
  EXPECT_EQ(Given({"--component", "net", "--component", "Db", "--severity", "warn"}), "2 6");
  EXPECT_EQ(Given({"--component", "Db", "--severity", "warn"}), "");
  EXPECT_EQ(Given({"--app", "shop", "--pid", "100", "--tid", "one", "-m", "desk", "--category",
                   "net", "--count", "1"}),
            "0");
}

TEST_F(TrcSharedOptions, InvertTurnsTheChoiceAroundButNoTimeAndNoFilter) {
  EXPECT_EQ(Given({"--severity", "info", "-v"}), "2 3 6 7");
  EXPECT_EQ(Given({"--component", "Net", "--severity", "warn+", "-v"}), "0 1 3 4 5 7 8 9");
  EXPECT_EQ(Given({"-v", "--severity", "info", "--since", "2026-11-21 09:41:05"}), "6 7");
  EXPECT_EQ(Given({"-v", "--severity", "info", "--uncheck", "All Severities/Warn"}), "3 7");
  ExpectRefused({"-v"}, "--invert: needs an option that chooses");
}

TEST_F(TrcSharedOptions, InFindInvertIsOfThePattern) {
  const TrcRun run = RunTrc({"find", "-v", "3", m_file, "--severity", "error", "--total"});
  EXPECT_EQ(run.out, "1\n") << run.err;
  EXPECT_EQ(RunTrc({"find", "-v", "order", m_file}).status, 1);
}

TEST_F(TrcSharedOptions, TimesAreFromTheFirstOnAndBeforeTheSecond) {
  EXPECT_EQ(Given({"--since", "2026-11-21 09:41:03", "--until", "2026-11-21T09:41:05Z"}), "3 4");
  EXPECT_EQ(Given({"--since", "2026-11-21T10:41:08.999+01:00"}), "9");
  EXPECT_EQ(Given({"--since", "2026-11-22"}), "");
  EXPECT_EQ(Given({"--until", "2026-11-21"}), "");
  EXPECT_EQ(Given({"--since", "2026-11-21", "--count", "2"}), "0 1");
  EXPECT_EQ(Given({"--since", "365000 days ago", "--tail", "1"}), "9");
  ExpectRefused({"--since", "yesterday"}, "--since: \"yesterday\" is no time");
  ExpectRefused({"--since", "2026-11-31"}, "is no time");
  ExpectRefused({"--since", "10x ago"}, "is no time");
  ExpectRefused({"--since", "99999999999999999999m ago"}, "is no time");
  ExpectRefused({"--since", "9223372036854775807w ago"}, "is no time");
  ExpectRefused({"--since", "2026-11-22", "--until", "2026-11-21"}, "is not after --since");
}

TEST_F(TrcSharedOptions, ATimeWithoutAZoneIsOfThisMachineOrOfUtc) {
  const auto given = [this](const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"dump",  m_file,    "--format",
                                          "jsonl", "--since", "2026-11-21 10:41:08"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return JsonLinesOf(RunTrc({.arguments = arguments, .environment = {"TZ=CET-1"}}).out).size();
  };
  EXPECT_EQ(given({}), 2u);
  EXPECT_EQ(given({"--utc"}), 0u);
}

TEST_F(TrcSharedOptions, FromTailAndCountWorkTogether) {
  EXPECT_EQ(Given({"--tail", "3"}), "7 8 9");
  EXPECT_EQ(Given({"--tail", "3", "--count", "2"}), "7 8");
  EXPECT_EQ(Given({"--tail", "2", "--severity", "info"}), "8 9");
  EXPECT_EQ(Given({"--tail", "9", "--severity", "error"}), "3 7");
  EXPECT_EQ(Given({"--tail", "0"}), "");
  EXPECT_EQ(Given({"--from", "6", "--tail", "9"}), "6 7 8 9");
  EXPECT_EQ(Given({"--from", "4", "--severity", "error"}), "7");
  EXPECT_EQ(Given({"--count", "3"}, "find"), "0 1 2");
  EXPECT_EQ(Given({"--tail", "2"}, "find"), "8 9");
}

TEST_F(TrcSharedOptions, ContextShowsTheNeighboursOnceAndMarksThem) {
  EXPECT_EQ(Given({"--severity", "error", "--context", "1"}), "2* 3 4* 6* 7 8*");
  EXPECT_EQ(Given({"--severity", "error", "--context", "2"}), "1* 2* 3 4* 5* 6* 7 8* 9*");
  EXPECT_EQ(Given({"--severity", "error", "--context", "1", "--count", "1"}), "2* 3 4*");
  EXPECT_EQ(Given({"--severity", "error", "--context", "1", "--tail", "1"}), "6* 7 8*");
  EXPECT_EQ(Given({"--severity", "warn+", "--context", "1", "--count", "1"}), "1* 2 3*");
  const TrcRun text =
      RunTrc({"dump", m_file, "--columns", "Trace", "--severity", "error", "--context", "1"});
  EXPECT_EQ(text.out, "Trace\norder 2\norder 3\norder 4\n--\norder 6\norder 7\norder 8\n");
  ExpectRefused({"--context", "1"}, "--context: needs an option that chooses");
  ExpectRefused({"--severity", "warn", "--context", "1000001"}, "takes 0 to 1000000");
}

TEST_F(TrcSharedOptions, TheOtherCommandsChooseTheSame) {
  const std::vector<std::string> choice = {"--component", "Net",     "--severity",         "warn",
                                           "--utc",       "--since", "2026-11-21 09:41:03"};
  const auto with = [&](std::vector<std::string> words) {
    words.insert(words.end(), choice.begin(), choice.end());
    const TrcRun run = RunTrc(words);
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
  };
  EXPECT_EQ(Given(choice), "6");
  const std::string saved = m_directory.File("saved.trc"), csv = m_directory.File("rows.csv");
  with({"save", m_file, saved});
  EXPECT_EQ(DumpedTraces(saved).size(), 1u);
  EXPECT_EQ(DumpedTraces(saved)[0]["text"], "order 6");
  EXPECT_EQ(with({"export", m_file, "-", "--format", "csv-rfc4180", "--columns", "Trace"}),
            "Trace\r\norder 6\r\n");
  EXPECT_EQ(with({"stack", "--recorded", m_file}), "6: order 6\n    main\n");
  EXPECT_TRUE(Has(with({"tree", m_file}), "|- order 6\n"));
  EXPECT_FALSE(Has(with({"tree", m_file}), "|- order 2\n"));
}

TEST_F(TrcSharedOptions, WhatIsNotThereIsNamedWithWhatIsNear) {
  ExpectRefused({"--component", "Nett"},
                "trc: there are no traces of a component \"Nett\"; did you mean \"Net\"?\n");
  ExpectRefused({"--machine", "elsewhere"}, "of a machine \"elsewhere\"; there is \"desk\"\n");
  ExpectRefused({"--pid", "\x1b[31m"}, "of a process \"\\x1b[31m\"");
  ExpectRefused({"--severity", "eror"}, "\"eror\" is no severity; did you mean \"error\"?");
  ExpectRefused({"--severity", "warn,"}, "\"\" is no severity");
}

// As a script gives it whose variable is not set.
TEST_F(TrcSharedOptions, AnEmptyTextIsNotTheSameAsNoOption) {
  for (const char* option : {"--since", "--until", "--severity", "--columns"}) {
    const TrcRun run = RunTrc({"dump", m_file, option, ""});
    EXPECT_EQ(run.status, 2) << option;
    EXPECT_EQ(run.out, "") << option;
    EXPECT_TRUE(Has(run.err, "trc: " + std::string(option) + ": ")) << run.err;
  }
  EXPECT_EQ(Given({"--severity", "warn , error"}), Given({"--severity", "warn,error"}));
}

TEST_F(TrcSharedOptions, OfSeveralSeveritiesAllWaysToChooseTakeTheLeast) {
  TrcImage image;
  for (std::uint16_t bits = 0; bits < 8; ++bits)
    image.Trace({.text = std::to_string(bits), .attributes = static_cast<std::uint16_t>(bits | 8)});
  image.WriteTo(m_file);
  const std::array<std::pair<const char*, std::string>, 3> wanted = {
      {{"info", "1 3 5 7"}, {"warn", "2 6"}, {"error", "4"}}};
  for (const auto& [word, texts] : wanted) {
    EXPECT_EQ(Given({"--severity", word}), texts);
    EXPECT_EQ(Given({"--where", std::string("severity == ") + word}), texts);
  }
  EXPECT_EQ(Given({"--severity", "warn+"}), Given({"--uncheck", "All Severities/Info"}));
  EXPECT_EQ(Given({"--severity", "other"}), "0");
  EXPECT_EQ(InfoOf(m_file).at("severities"),
            json({{"info", 4}, {"warn", 2}, {"error", 1}, {"other", 1}}));
}

TEST_F(TrcSharedOptions, APerlExpressionFindsWhatThePrescribedOnesCannot) {
  const auto total = [this](std::vector<std::string> words) {
    words.insert(words.begin(), {"find", "--total"});
    words.push_back(m_file);
    return RunTrc(words).out;
  };
  EXPECT_EQ(total({"-P", "order (?!3)\\d|cart"}), "9\n");
  EXPECT_EQ(total({"-P", "-i", "ORDER [37]"}), "2\n");
  EXPECT_EQ(total({"-P", "-w", "rder"}), "0\n");
  EXPECT_EQ(total({"-P", "-w", "order"}), "10\n");
  const TrcRun wrong = RunTrc({"find", "-P", "order (", m_file});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_EQ(wrong.err, "trc: wrong expression: missing closing parenthesis (at byte 8)\n");
  EXPECT_EQ(RunTrc({"find", "-P", "-e", "x", m_file}).status, 2);
}

TEST_F(TrcSharedOptions, APerlSearchThatTakesTooLongIsGivenUpAndTold) {
  const std::string file = TrcImage()
                               .Trace(std::string(40, 'a') + "b")
                               .Trace("aaa")
                               .Trace("a\xff\xff c")
                               .WriteTo(m_directory.File("long.trc"));
  const TrcRun run = RunTrc({"find", "-P", "^(a+)+$", file, "--columns", "Trace"});
  EXPECT_EQ(run.out, "Trace\naaa\n");
  EXPECT_EQ(run.err, "trc: 1 texts would take too long to search, and are left out\n");
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(RunTrc({"find", "-P", " c$", file, "--total"}).out, "1\n") << "behind malformed bytes";
}

TEST_F(TrcSharedOptions, TheOldCountOfFindStillWorksAndSaysItsNewName) {
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"find", "order", m_file, "--count"}, {"find", "--count", "order", m_file}}) {
    const TrcRun run = RunTrc(words);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "10\n");
    EXPECT_EQ(run.err, "trc: --count without a number is --total now\n");
  }
  EXPECT_EQ(RunTrc({"find", "--count", "--", "--count", m_file}).out, "0\n");
}

}  // namespace

// trc find, the real program.
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

class TrcFind : public testing::Test {
 protected:
  TrcFind() {
    TrcImage image;
    image.Name(1, "Net");
    image.Trace({.text = "GET /index.html took 12 ms", .component = 1});
    image.Trace({.text = "timeout of the user", .attributes = kAttributeError});
    image.Trace({.text = "Timeouts: 3\nGET again", .component = 1});
    image.Trace({.text = "nothing"});
    m_file = image.WriteTo(m_directory.File("in.trc"));
  }
  TrcRun Run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "find");
    arguments.push_back(m_file);
    return RunTrc(arguments);
  }
  // "0 2": the places in the file of what is found.
  std::string Found(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--format", "jsonl"});
    const TrcRun run = Run(arguments);
    std::string found;
    for (const std::string& line : LinesOf(run.out))
      found += (found.empty() ? "" : " ") + std::to_string(json::parse(line)["i"].get<int>());
    EXPECT_EQ(run.status, found.empty() ? 1 : 0);
    EXPECT_EQ(run.err, "");
    return found;
  }
  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcFind, PlainTextByDefault) {
  EXPECT_EQ(Found({"timeout"}), "1");
  EXPECT_EQ(Found({"."}), "0");
  EXPECT_EQ(Found({"GET"}), "0 2");
  EXPECT_EQ(Found({"nowhere"}), "");
}

TEST_F(TrcFind, ExpressionsIgnoringCaseAndWholeWords) {
  EXPECT_EQ(Found({"-e", "[0-9]+"}), "0 2");
  EXPECT_EQ(Found({"-e", "^GET"}), "0 2");
  EXPECT_EQ(Found({"-i", "TIMEOUT"}), "1 2");
  EXPECT_EQ(Found({"-iw", "TIMEOUT"}), "1");
  EXPECT_EQ(Found({"-e", "-i", "g.t"}), "0 2");
}

TEST_F(TrcFind, OnlyTheTextIsSearched) {
  EXPECT_EQ(Found({"Net"}), "");
}

TEST_F(TrcFind, PrintsTheLinesOfTheDump) {
  const TrcRun dump = RunTrc({"dump", "--format", "jsonl", "--from", "1", "--count", "1", m_file});
  EXPECT_EQ(Run({"--format", "jsonl", "timeout"}).out, dump.out);
  const TrcRun text = Run({"GET"});
  EXPECT_EQ(std::count(text.out.begin(), text.out.end(), '\n'), 3) << "a header and two lines";
  EXPECT_EQ(text.out.substr(0, 3), "Sev");
  EXPECT_EQ(Run({"nowhere"}).out, "");
}

TEST_F(TrcFind, TotalPrintsTheNumberAlone) {
  EXPECT_EQ(Run({"--total", "GET"}).out, "2\n");
  const TrcRun none = Run({"--total", "nowhere"});
  EXPECT_EQ(none.out, "0\n");
  EXPECT_EQ(none.status, 1);
}

TEST_F(TrcFind, TakesTheFilter) {
  EXPECT_EQ(Found({"-e", ".", "--uncheck", "All Severities/Info"}), "1");
  EXPECT_EQ(Run({"GET", "--uncheck", "All Severities/Wran"}).status, 2);
}

TEST_F(TrcFind, APatternThatBeginsWithAHyphenStandsAfterTwo) {
  EXPECT_EQ(Found({"--", "-"}), "");
  EXPECT_EQ(RunTrc({"find", "--total", "--", "-x", m_file}).out, "0\n");
}

TEST_F(TrcFind, AnOlderFileIsRefusedWithTheWayToConvertIt) {
  const std::string old = m_directory.File("old.trc");
  ASSERT_EQ(RunTrc({"gen", "--old", "-n", "3", old}).status, 0);
  const TrcRun run = RunTrc({"find", "x", old});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("older trace file format"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("trc convert"), std::string::npos) << run.err;
}

TEST_F(TrcFind, AnInterruptIsHeardInTheMiddleOfOneText) {
  // Tries as many ways to part the text as there are places for two cuts in it: for days.
  const std::string file =
      TrcImage().Trace(std::string(60000, 'x') + "zy").WriteTo(m_directory.File("long.trc"));
  TrcProcess trc({.arguments = {"find", "-e", "\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", file}});
  trc.WaitForWork(std::chrono::milliseconds(300));  // reading the file takes a few
  trc.Interrupt();
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.status, 130);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
}

TEST_F(TrcFind, ABadPatternIsRefusedBeforeTheFileIsRead) {
  for (const std::string& file : {m_file, m_directory.File("missing.trc")}) {
    const TrcRun run = RunTrc({"find", "-e", "[abc", file});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "trc: Illegal search pattern.\n");
  }
  EXPECT_EQ(Run({"[abc"}).status, 1) << "plain text";
}

TEST_F(TrcFind, APatternThatIsTooLongIsToldWithWhatIsPossible) {
  EXPECT_EQ(Run({std::string(511, 'a')}).status, 1);
  EXPECT_EQ(Run({"-i", std::string(60, 'a')}).status, 1);
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {std::string(512, 'a')}, {"-i", std::string(61, 'a')}, {"-e", std::string(512, 'a')}}) {
    const TrcRun run = Run(words);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
              "trc: Illegal search pattern: it is too long (at most 511 characters, with "
              "--ignore-case 60 letters); --perl-regex takes longer ones\n");
  }
  EXPECT_EQ(Run({"-P", "-i", std::string(5000, 'a')}).status, 1);
}

TEST_F(TrcFind, AFileThatCannotBeReadIsAnError) {
  EXPECT_EQ(RunTrc({"find", "x", m_directory.File("missing.trc")}).status, 2);
  EXPECT_EQ(RunTrc({"find", "x"}).status, 2);
}

// So many traces that all processors search them, beside PCRE2, which one of them does.
TEST(TrcFindInLargeFiles, AllOptionsChooseTheSameTracesForEachWayToSearch) {
  TempDir directory;
  TrcImage image;
  image.Name(1, "Net").Name(2, "a cart").Name(3, "Db");
  for (int i = 0; i < 70000; ++i) {
    if (i % 1000 == 7) image.Name(2, "a cart");
    image.Trace({.text = (i % 977 == 5    ? "Cart "
                          : i % 3001 == 8 ? "cart\0cart"
                                          : "no ") +
                         std::to_string(i % 100),
                 .component = static_cast<NameId>(1 + i % 3),
                 .attributes = static_cast<std::uint16_t>(i % 2 ? kAttributeError : kAttributeInfo),
                 .line = 0x63617274});
  }
  const std::string file = image.WriteTo(directory.File("in.trc"));
  const std::vector<std::vector<std::string>> choices = {
      {},
      {"--total"},
      {"-n", "7"},
      {"--context", "2"},
      {"--context", "300", "-n", "3"},
      {"--tail", "5"},
      {"--from", "33000"},
      {"--from", "33000", "--context", "3", "-n", "2"},
      {"--component", "Db"},
      {"--severity", "error", "--context", "1"},
      {"-v"},
      {"--where", "severity == error"},
      {"--tail", "9", "-n", "4", "--context", "2"}};
  for (const std::vector<std::string>& choice : choices)
    for (const std::vector<std::string>& pattern : std::vector<std::vector<std::string>>{
             {"cart"}, {"-i", "CART"}, {"-w", "5"}, {"nowhere"}, {"-i", "cart 5"}}) {
      std::vector<std::string> ours = {"find", "--columns", "Count,Component,Trace"};
      ours.insert(ours.end(), choice.begin(), choice.end());
      ours.insert(ours.end(), pattern.begin(), pattern.end());
      ours.push_back(file);
      std::vector<std::string> theirs = ours;
      theirs.push_back("-P");
      const TrcRun run = RunTrc(ours), wanted = RunTrc(theirs);
      ASSERT_LE(wanted.status, 1) << wanted.err;
      EXPECT_EQ(run.status, wanted.status);
      EXPECT_EQ(run.err, wanted.err);
      EXPECT_TRUE(run.out == wanted.out) << testing::PrintToString(ours);
    }
}

}  // namespace

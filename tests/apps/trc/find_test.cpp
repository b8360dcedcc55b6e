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

TEST_F(TrcFind, AFileThatCannotBeReadIsAnError) {
  EXPECT_EQ(RunTrc({"find", "x", m_directory.File("missing.trc")}).status, 2);
  EXPECT_EQ(RunTrc({"find", "x"}).status, 2);
}

}  // namespace

// --uncheck and --check of the real program.
#include <filesystem>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

class TrcFilter : public testing::Test {
 protected:
  TrcFilter() {
    TrcImage image;
    image.Name(1, "Net").Name(2, "Db").Name(3, "812").Name(4, "813").Name(5, "web-1");
    image.Trace({.text = "a", .machine = 5, .component = 1, .tic = 10, .pid = 3, .attributes = 1});
    image.Trace({.text = "b", .machine = 5, .component = 2, .tic = 30, .pid = 3, .attributes = 2});
    image.Trace({.text = "c", .machine = 5, .component = 1, .tic = 40, .pid = 4, .attributes = 4});
    image.Trace({.text = "d", .machine = 5, .component = 1, .tic = 70, .pid = 3, .attributes = 2});
    m_file = image.WriteTo(m_directory.File("in.trc"));
  }
  // "0a 3d": the place in the file and the text of what is dumped.
  std::string Dumped(const std::vector<std::string>& options) {
    std::string dumped;
    for (const json& trace : DumpedTraces(m_file, options))
      dumped += (dumped.empty() ? "" : " ") + std::to_string(trace["i"].get<int>()) +
                trace["text"].get<std::string>();
    return dumped;
  }

  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcFilter, DumpShowsWhatPassesWithItsPlaceInTheFile) {
  EXPECT_EQ(Dumped({}), "0a 1b 2c 3d");
  EXPECT_EQ(Dumped({"--uncheck", "All Components/Db"}), "0a 2c 3d");
  EXPECT_EQ(Dumped({"--uncheck", "All Threads/web-1/PID:812"}), "2c");
  EXPECT_EQ(Dumped({"--uncheck", ""}), "");
}

TEST_F(TrcFilter, TheTwoOptionsAreTakenInTheOrderInWhichTheyStand) {
  EXPECT_EQ(Dumped({"--uncheck", "All Severities", "--check", "All Severities/Warn"}), "1b 3d");
  EXPECT_EQ(Dumped({"--check", "All Severities/Warn", "--uncheck", "All Severities"}), "");
  EXPECT_EQ(Dumped({"--uncheck", "", "--uncheck", "All Components", "--check", ""}), "0a 1b 2c 3d");
  EXPECT_EQ(Dumped({"--uncheck=All Severities", "--check=All Severities/Error", "--uncheck",
                    "All Components/Db"}),
            "2c");
}

TEST_F(TrcFilter, FromCountsInTheFileAndCountInWhatPasses) {
  const std::vector<std::string> noError = {"--uncheck", "All Severities/Error"};
  const auto dumped = [&](std::vector<std::string> more) {
    more.insert(more.end(), noError.begin(), noError.end());
    return Dumped(more);
  };
  EXPECT_EQ(dumped({"--from", "1"}), "1b 3d");
  EXPECT_EQ(dumped({"--from", "2"}), "3d");
  EXPECT_EQ(dumped({"--count", "2"}), "0a 1b");
  EXPECT_EQ(dumped({"--from", "4"}), "");
}

TEST_F(TrcFilter, TheDifferenceOfTicsIsToTheTraceShownBefore) {
  const auto differences = [this](std::vector<std::string> options) {
    options.insert(options.begin(), {"dump", m_file, "-c", "Trace,Tic Diff"});
    return RunTrc(options).out;
  };
  EXPECT_EQ(differences({}),
            "Trace  Tic Diff\n"
            "a           n/a\n"
            "b            20\n"
            "c           n/a\n"
            "d           n/a\n");
  EXPECT_EQ(differences({"--uncheck", "All Severities/Error"}),
            "Trace  Tic Diff\n"
            "a           n/a\n"
            "b            20\n"
            "d            40\n");
}

TEST_F(TrcFilter, SaveWritesWhatPassesWithTheNamesThatItNeeds) {
  const std::string out = m_directory.File("out.trc");
  const TrcRun run = RunTrc({"save", m_file, out, "--uncheck", "All Components/Net"});
  EXPECT_EQ(run.status, 0) << run.err;
  TrcImage expected;
  expected.Name(5, "web-1").Name(2, "Db").Name(3, "812");
  expected.Trace({.text = "b",
                  .count = 2,
                  .machine = 5,
                  .component = 2,
                  .tic = 30,
                  .pid = 3,
                  .attributes = 2});
  EXPECT_EQ(ReadAll(out), expected.Bytes());
}

TEST_F(TrcFilter, SaveOfEverythingIsTheSameWithSteps) {
  const std::string plain = m_directory.File("plain.trc"), out = m_directory.File("out.trc");
  ASSERT_EQ(RunTrc({"save", m_file, plain}).status, 0);
  ASSERT_EQ(RunTrc({"save", m_file, out, "--check", ""}).status, 0);
  EXPECT_EQ(ReadAll(out), ReadAll(plain));
}

TEST_F(TrcFilter, ASaveThatFailsSaysSoAndLeavesTheOpenFile) {
  const std::string before = ReadAll(m_file);
  const TrcRun run = RunTrc({"save", m_file, m_file, "--uncheck", "All Components/Net"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: " + m_file + ": Error creating file. In use by this program\n");
  EXPECT_EQ(ReadAll(m_file), before);
}

TEST_F(TrcFilter, AnUnknownPathEndsTheCommandWithNearNames) {
  const std::string out = m_directory.File("out.trc");
  const std::vector<std::vector<std::string>> commands = {{"dump", m_file}, {"save", m_file, out}};
  for (std::vector<std::string> command : commands) {
    command.insert(command.end(), {"--uncheck", "All Components/Nte"});
    const TrcRun run = RunTrc(command);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "trc: there is no \"All Components/Nte\" in the filter; near it: "
              "\"All Components/Net\"\n");
  }
  EXPECT_FALSE(std::filesystem::exists(out));
}

TEST_F(TrcFilter, AnOptionWithoutItsPathIsWrongUse) {
  EXPECT_EQ(RunTrc({"dump", m_file, "--uncheck"}).status, 2);
}

TEST_F(TrcFilter, LiveAPathThatNoNameCanCompleteIsRefusedBeforeAnythingElse) {
  const std::string out = m_directory.File("out.trc");
  const std::vector<std::vector<std::string>> commands = {{"tail"}, {"capture", "-o", out}};
  for (std::vector<std::string> command : commands) {
    const std::string name = command.front();
    command.insert(command.end(), {"--check", "All Severities/Wran"});
    const TrcRun run = RunTrc(command);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err,
              "trc: there is no \"All Severities/Wran\" in the filter; near it: "
              "\"All Severities/Warn\"\nTry 'trc " +
                  name + " --help'.\n");
  }
  EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace

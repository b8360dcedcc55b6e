// Standard output that ends early, signals, and the progress line.
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

constexpr std::size_t kTraces = 100000;  // their dump is far more than a pipe holds
constexpr int kInterruptedStatus = 130;

class TrcStreams : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_directory = new TempDir;
    ASSERT_EQ(RunTrc({"gen", "-n", std::to_string(kTraces), Sample()}).status, 0);
  }
  static void TearDownTestSuite() {
    delete s_directory;
    s_directory = nullptr;
  }
  static std::string Sample() { return s_directory->File("sample.trc"); }

  static inline TempDir* s_directory = nullptr;
};

const std::vector<std::string> kFormats = {"text", "jsonl"};

TEST_F(TrcStreams, AFullDiskBehindStandardOutputIsReported) {
  const std::vector<std::vector<std::string>> commands = {
      {"dump", Sample()}, {"dump", Sample(), "-f", "jsonl"}, {"dump", Sample(), "-n", "1"},
      {"info", Sample()}, {"info", "--json", Sample()},      {"--help"},
      {"--version"}};
  for (const auto& command : commands) {
    const TrcRun run = RunTrc({.arguments = command, .outTo = "/dev/full"});
    EXPECT_EQ(run.status, 2) << testing::PrintToString(command);
    EXPECT_EQ(run.err, "trc: cannot write the output: No space left on device\n");
  }
}

TEST_F(TrcStreams, AMatchIsOutWhileTheSearchGoesOn) {
  // The first text matches immediately, the second keeps the matcher busy for days.
  const std::string path = TrcImage()
                               .Trace("y")
                               .Trace(std::string(60000, 'x') + "zy")
                               .WriteTo(s_directory->File("slow.trc"));
  const std::string pattern = "\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y";
  TrcProcess trc({.arguments = {"find", "-e", pattern, path, "-f", "jsonl"}});
  EXPECT_NE(trc.ReadOut(1), "");
  trc.Interrupt();
  EXPECT_EQ(trc.Finish().status, kInterruptedStatus);
  std::filesystem::remove(path);
}

TEST_F(TrcStreams, AReaderWhoGoesAwayEndsTheDumpQuietly) {
  for (const std::string& format : kFormats) {
    TrcProcess trc({.arguments = {"dump", Sample(), "--format", format}});
    trc.ReadOut(1000);
    trc.CloseOut();
    const TrcRun run = trc.Finish();
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
  }
}

TEST_F(TrcStreams, AReaderWhoIsNotThereIsNoFailureOfInfo) {
  const TrcRun run = RunTrc({.arguments = {"info", Sample()}, .outIsClosed = true});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

TEST_F(TrcStreams, AnInterruptEndsTheDumpAtTheEndOfALine) {
  for (const std::string& format : kFormats) {
    TrcProcess trc({.arguments = {"dump", Sample(), "--format", format}});
    trc.ReadOut(1000);  // from here on it waits for us, with most of the dump still to come
    trc.Interrupt();
    const TrcRun run = trc.Finish();
    EXPECT_EQ(run.status, kInterruptedStatus);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out.back(), '\n');
    const auto lines = LinesOf(run.out);
    EXPECT_LT(lines.size(), kTraces);
    if (format == "jsonl") {
      EXPECT_EQ(json::parse(lines.back()).at("i"), lines.size() - 1);
    }
  }
}

TEST_F(TrcStreams, AnInterruptThatWasIgnoredAtTheStartStaysIgnored) {
  TrcProcess trc({.arguments = {"dump", Sample(), "-f", "jsonl"}, .ignoreInterrupt = true});
  trc.ReadOut(1000);
  trc.Interrupt();
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(LinesOf(run.out).size(), kTraces);
}

TEST_F(TrcStreams, ASecondInterruptEndsTheProgramAtOnce) {
  TrcProcess trc({.arguments = {"dump", Sample(), "-f", "jsonl"}});
  trc.ReadOut(1000);
  // Nobody reads on: only a signal can end it.
  trc.InterruptUntilEnded();
  EXPECT_EQ(trc.Finish().status, 1000 + SIGINT);
}

TEST_F(TrcStreams, LongWorkTellsItsProgressOnATerminalAndTakesTheLineAway) {
  const std::string path = s_directory->File("progress.trc");
  TrcProcess trc({.arguments = {"gen", "-n", "25000000", path}, .errIsTerminal = true});
  const std::string shown = trc.ReadErrUntil("%");
  trc.Interrupt();
  EXPECT_NE(shown.find("\r\x1b[KWriting traces... "), std::string::npos);
  const TrcRun run = trc.Finish();
  EXPECT_NE(run.err.find("\r\x1b[Ktrc: "), std::string::npos);
  std::filesystem::remove(path);
}

TEST_F(TrcStreams, ASaveTellsOnATerminalThatItSaves) {
  const TrcRun run = RunTrc(
      {.arguments = {"save", Sample(), s_directory->File("copy.trc")}, .errIsTerminal = true});
  EXPECT_EQ(run.status, 0);
  const std::string line = "\r\x1b[KSaving...";
  EXPECT_NE(run.err.find(line), std::string::npos);
  EXPECT_EQ(run.err.substr(run.err.size() - 4), "\r\x1b[K");
}

TEST_F(TrcStreams, WordsGoToATerminalToo) {
  const TrcRun run =
      RunTrc({.arguments = {"info", s_directory->File("none.trc")}, .errIsTerminal = true});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("none.trc: No such file or directory\r\n"), std::string::npos) << run.err;
}

}  // namespace

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

// Only the last line of a terminal can be erased.
TEST_F(TrcStreams, TheProgressKeepsToItsLineOnANarrowTerminal) {
  const std::string packed = s_directory->File("with a name that is longer than a line.gz");
  EXPECT_EQ(system(("gzip -1c '" + Sample() + "' > '" + packed + "'").c_str()), 0);
  const TrcRun run = RunTrc({.arguments = {"info", packed}, .errIsTerminal = true, .columns = 40});
  EXPECT_EQ(run.status, 0);
  EXPECT_NE(run.err.find("\r\x1b[KReading "), std::string::npos) << run.err;
  const std::string erase = "\r\x1b[K";
  for (std::size_t at = 0, next = 0; next != run.err.npos; at = next + erase.size()) {
    next = run.err.find(erase, at);
    EXPECT_LT(std::min(next, run.err.size()) - at, 40u) << run.err;
  }
}

TEST_F(TrcStreams, NamesOfFilesCannotCommandATerminal) {
  const std::string evil = s_directory->File(
      "a\x1b]0;title\x07\xc2\x9b"
      "2J\xff.trc");
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"info", evil}, {"dump", evil}, {"save", Sample(), evil + "/none"}, {evil}}) {
    const TrcRun run = RunTrc(words);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("a\\x1b]0;title\\x07\\x9b2J\xef\xbf\xbd.trc"), std::string::npos)
        << run.err;
    EXPECT_EQ(run.err.find_first_of("\x1b\x07\xc2\xff"), std::string::npos) << run.err;
  }
}

TEST_F(TrcStreams, WordsGoToATerminalToo) {
  const TrcRun run =
      RunTrc({.arguments = {"info", s_directory->File("none.trc")}, .errIsTerminal = true});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("none.trc: No such file or directory\r\n"), std::string::npos) << run.err;
}

}  // namespace

// The columns of times on the command line.
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

class TrcTimeColumns : public testing::Test {
 protected:
  // Traces of one process, so many microseconds behind 09:41:07; the last one is of another process
  // and has no tic count.
  TrcTimeColumns() {
    TrcImage image;
    image.Name(1, "web").Name(2, "db");
    for (const unsigned us : {500U, 1400U, 2000U, 3999U})
      image.Trace({.text = std::to_string(us),
                   .time = PackTime(9, 41, 7, us / 1000),
                   .tic = (5'000'000ULL + us) * 1'000'000ULL,
                   .pid = 1});
    image.Trace({.text = "other", .time = PackTime(9, 41, 8, 500), .tic = 0, .pid = 2});
    m_file = image.WriteTo(m_directory.File("a.trc"));
  }
  TrcRun Dump(std::vector<std::string> more, const std::string& command = "dump") {
    std::vector<std::string> words = {command};
    if (command == "find") words.push_back("9");
    words.insert(words.end(), {m_file, "--utc"});
    words.insert(words.end(), more.begin(), more.end());
    return RunTrc(words);
  }
  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcTimeColumns, DeltaIsToTheTraceThatIsShownBefore) {
  EXPECT_EQ(Dump({"--columns", "delta,Trace"}).out,
            "      Delta  Trace\n"
            "        n/a  500\n"
            "0.000900000  1400\n"
            "0.000600000  2000\n"
            "0.001999000  3999\n"
            "      1.497  other\n");
  EXPECT_EQ(Dump({"--columns", "delta,Trace", "--where", "text != \"1400\"", "--count", "2"}).out,
            "      Delta  Trace\n        n/a  500\n0.001500000  2000\n");
}

TEST_F(TrcTimeColumns, SinceCountsFromATraceOfTheFileAlsoFromOneThatIsNotShown) {
  EXPECT_EQ(Dump({"--columns", "Since,Trace", "--since-row", "1"}).out,
            "       Since  Trace\n"
            "-0.000900000  500\n"
            "   reference  1400\n"
            " 0.000600000  2000\n"
            " 0.002599000  3999\n"
            "       1.499  other\n");
  EXPECT_EQ(
      Dump({"--columns", "Since,Trace", "--since-row", "1", "--from", "3", "--count", "1"}).out,
      "      Since  Trace\n0.002599000  3999\n");
  EXPECT_EQ(Dump({"--columns", "Since,Trace", "--since-row", "0"}, "find").out,
            "      Since  Trace\n0.003499000  3999\n");
}

TEST_F(TrcTimeColumns, WallTimeHasTheMicrosecondsThatAreKnown) {
  EXPECT_EQ(Dump({"--columns", "wall time", "--from", "1"}).out,
            "Wall Time\n"
            "2026-11-21T09:41:07.001400Z\n"
            "2026-11-21T09:41:07.002000Z\n"
            "2026-11-21T09:41:07.003999Z\n"
            "2026-11-21T09:41:08.500Z\n");
}

TEST_F(TrcTimeColumns, AFollowedFileHasDeltaAndWallTime) {
  TrcProcess trc({.arguments = {"dump", "--follow", m_file, "--utc", "--columns", "Wall Time,Delta",
                                "--count", "3"}});
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(Has(run.out, "0.000600000")) << run.out;
  EXPECT_TRUE(Has(run.out, "2026-11-21T09:41:07.002000Z")) << run.out;
}

TEST_F(TrcTimeColumns, WhatCannotBeIsRefused) {
  const auto refuses = [this](std::vector<std::string> more, const char* why) {
    const TrcRun run = Dump(more);
    EXPECT_NE(run.status, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(Has(run.err, why)) << run.err;
  };
  refuses({"--columns", "Since"}, "the column Since needs --since-row");
  refuses({"--since-row", "1"}, "--since-row: needs the column Since");
  refuses({"--columns", "Since", "--since-row", "5"}, "--since-row: there are 5 traces, from 0");
  refuses({"--columns", "Since", "--since-row", "1", "--follow"}, "goes with no --follow");
  const TrcRun exported =
      RunTrc({"export", m_file, m_directory.File("a.csv"), "--columns", "Trace,Delta"});
  EXPECT_NE(exported.status, 0);
  EXPECT_TRUE(Has(exported.err, "Delta, Since and Wall Time go with dump, find and tail"));
  const TrcRun live = RunTrc({"tail", "--columns", "Since"});
  EXPECT_NE(live.status, 0);
  EXPECT_TRUE(Has(live.err, "the column Since needs --since-row, which dump and find have"));
}

}  // namespace

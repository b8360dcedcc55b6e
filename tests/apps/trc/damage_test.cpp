// Every command that reads a trace file tells of damage, gives the traces all the same, and ends
// with a status of its own.
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

constexpr int kDamaged = 3;

class TrcDamageOfFiles : public testing::Test {
 protected:
  // Three bytes that are no record in two places, and a last record without its last four bytes.
  static TrcImage Damaged() {
    TrcImage image;
    image.Name(7, "web").Raw(0).Raw(1).Trace({.text = "first", .machine = 7}).Raw(99);
    return image.Trace({.text = "second", .machine = 7}).Cut(4);
  }
  static std::string Words(const std::string& path) {
    return "trc: " + path +
           ": damaged: 3 bytes skipped in 2 places from byte 24 on, last record cut at byte 77\n";
  }

  TempDir m_temp;
  const std::string m_path = Damaged().WriteTo(m_temp.File("damaged.trc"));
};

TEST_F(TrcDamageOfFiles, EveryCommandTellsItAndGivesTheTraces) {
  const std::string out = m_temp.File("out");
  const struct {
    std::vector<std::string> arguments;
    bool writes;
  } commands[] = {{{"info", m_path}, false},          {{"info", "--json", m_path}, false},
                  {{"dump", m_path}, false},          {{"dump", m_path, "-f", "jsonl"}, false},
                  {{"find", "first", m_path}, false}, {{"find", "first", m_path, "--total"}, false},
                  {{"tree", m_path}, false},          {{"tree", "--export", m_path, out}, true},
                  {{"save", m_path, out}, true},      {{"export", m_path, out}, true},
                  {{"export", m_path, "-"}, false}};
  for (const auto& [arguments, writes] : commands) {
    const TrcRun run = RunTrc(arguments);
    EXPECT_EQ(run.status, kDamaged) << arguments[0];
    EXPECT_EQ(run.err, Words(m_path)) << arguments[0];
    EXPECT_EQ(run.out.empty(), writes) << arguments[0];
    EXPECT_EQ(std::filesystem::exists(out), writes) << arguments[0];
    std::filesystem::remove(out);
  }
}

TEST_F(TrcDamageOfFiles, ANoFromADamagedFileIsNotTheWholeAnswer) {
  EXPECT_EQ(RunTrc({"find", "third", m_path}).status, kDamaged);
}

TEST_F(TrcDamageOfFiles, InfoTellsTheCutLastRecordInItsAnswer) {
  const TrcRun text = RunTrc({"info", m_path});
  EXPECT_NE(text.out.find("\n  last record:   cut, at byte 77\n"), std::string::npos) << text.out;
  const nlohmann::json info = InfoOf(m_path);
  EXPECT_EQ(info.at("lastRecordCut"), true);
  EXPECT_EQ(info.at("skippedPlaces"), 2);
}

TEST_F(TrcDamageOfFiles, WhatFailsForAnotherReasonKeepsItsStatus) {
  EXPECT_EQ(RunTrc({"save", m_path, "/dev/full"}).status, 2);
  EXPECT_EQ(RunTrc({"dump", m_path, "--uncheck", "nothing"}).status, 2);
  EXPECT_EQ(RunTrc({"info", m_path, m_temp.File("none.trc")}).status, 2);
}

TEST_F(TrcDamageOfFiles, OneDamagedFileAmongSeveralCounts) {
  const std::string whole = TrcImage().Trace("up").WriteTo(m_temp.File("whole.trc"));
  const TrcRun run = RunTrc({"info", m_path, whole});
  EXPECT_EQ(run.status, kDamaged);
  EXPECT_EQ(run.err, Words(m_path));
  EXPECT_EQ(RunTrc({"info", whole}).status, 0);
}

}  // namespace

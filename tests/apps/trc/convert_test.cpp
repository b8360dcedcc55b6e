#include "run_trc.h"
#include "support/old_trc_image.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

TrcRun Convert(const std::string& old, const std::string& path) {
  return RunTrc({"convert", old, path});
}

TEST(TrcConvert, WritesTheTracesAnewAndLeavesTheOldFileUntouched) {
  const TempDir directory;
  OldTrcImage image;
  image.Machine(3, "web").Trace({.text = "up", .machine = 3, .severity = 1, .pid = 42, .tid = 7});
  const std::string old = image.WriteTo(directory.File("old.trc"));
  const std::string path = directory.File("new.trc");
  const TrcRun run = Convert(old, path);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(ReadAll(old), image.Bytes());
  const auto traces = DumpedTraces(path);
  ASSERT_EQ(traces.size(), 1u);
  EXPECT_EQ(traces[0].at("text"), "up");
  EXPECT_EQ(traces[0].at("machine"), "web");
  EXPECT_EQ(traces[0].at("pid"), "42");
  EXPECT_EQ(traces[0].at("tid"), "7");
  EXPECT_EQ(traces[0].at("attributes"), 2);
  EXPECT_EQ(traces[0].at("time"), "2026-11-21T09:41:07.123000Z");
}

TEST(TrcConvert, AConvertedOldSampleHasTheTracesOfTheSampleButForItsStacks) {
  const TempDir directory;
  const std::string sample = directory.File("sample.trc"), old = directory.File("old.trc");
  const std::string path = directory.File("new.trc");
  ASSERT_EQ(RunTrc({"gen", "-n", "20000", "-s", "5", sample}).status, 0);
  const TrcRun gen = RunTrc({"gen", "--old", "-n", "20000", "-s", "5", old});
  ASSERT_EQ(gen.status, 0) << gen.err;
  EXPECT_EQ(ReadAll(old).substr(0, 12), std::string("Version 2.2", 12));
  const TrcRun run = Convert(old, path);
  ASSERT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  std::vector<json> expected = DumpedTraces(sample);
  ASSERT_EQ(expected.size(), 20000u);
  for (json& trace : expected) trace["stack"] = "";
  EXPECT_EQ(DumpedTraces(path), expected);
}

TEST(TrcConvert, AnExistingNewFileIsReplacedAsOtherCommandsDo) {
  const TempDir directory;
  const std::string old = OldTrcImage().WriteTo(directory.File("old.trc"));
  const std::string path = directory.File("new.trc", "something longer than sixteen bytes");
  EXPECT_EQ(Convert(old, path).status, 0);
  EXPECT_EQ(ReadAll(path), std::string("TRC Version 3.1", 16));
}

TEST(TrcConvert, OverTheOldFileItselfIsRefusedAndItStays) {
  const TempDir directory;
  const OldTrcImage image = OldTrcImage().Trace("a");
  const std::string old = image.WriteTo(directory.File("old.trc"));
  const std::string link = directory.File("link.trc");
  std::filesystem::create_hard_link(old, link);
  for (const std::string& path : {old, link}) {
    const TrcRun run = Convert(old, path);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "trc: " + path + ": In use by this program\n");
    EXPECT_EQ(ReadAll(old), image.Bytes());
  }
}

TEST(TrcConvert, AFileOfAnotherFormatIsRefusedAndNoNewFileIsMade) {
  const TempDir directory;
  const std::string path = directory.File("new.trc");
  const std::string current = TrcImage().WriteTo(directory.File("current.trc"));
  const std::string text = directory.File("text.trc", "This is no trace file at all.");
  const std::string missing = directory.File("no.trc");
  EXPECT_EQ(Convert(current, path).err,
            "trc: " + current + ": it is in the current format already\n");
  EXPECT_EQ(Convert(text, path).err, "trc: " + text + ": Invalid format.\n");
  EXPECT_EQ(Convert(missing, path).err, "trc: " + missing + ": No such file or directory\n");
  for (const std::string& old : {current, text, missing}) EXPECT_EQ(Convert(old, path).status, 2);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TrcConvert, AFolderThatIsNotThereIsReportedWithTheReason) {
  const TempDir directory;
  const TrcRun run = Convert(OldTrcImage().WriteTo(directory.File("old.trc")), "/nowhere/new.trc");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: /nowhere/new.trc: No such file or directory\n");
}

TEST(TrcConvert, AFullDiskIsReportedAlsoWhenItShowsOnlyAtTheEnd) {
  const TempDir directory;
  for (const int traces : {0, 1, 1000}) {
    OldTrcImage image;
    for (int i = 0; i < traces; ++i) image.Trace("some text");
    const TrcRun run = Convert(image.WriteTo(directory.File("old.trc")), "/dev/full");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "trc: /dev/full: Error writing to file. No space left on device\n");
  }
}

TEST(TrcConvert, WhatHasNoPlaceInTheNewFileIsReported) {
  const TempDir directory;
  OldTrcImage image;
  image.Raw(6).Trace({.text = std::string(65536, 'x')}).Raw(77);
  const std::string old = image.WriteTo(directory.File("old.trc"));
  const TrcRun run = Convert(old, directory.File("new.trc"));
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "trc: " + old +
                         ": damaged: 2 bytes skipped in 2 places from byte 12 on\ntrc: " + old +
                         ": 1 text was cut: a trace file holds 65535 bytes of each\n");
}

TEST(TrcConvert, NamesThatAreCutAreReported) {
  const TempDir directory;
  OldTrcImage image;
  image.Machine(1, std::string(70000, 'm')).App(1, std::string(65536, 'a'));
  image.Component(1, std::string(65535, 'c')).Trace("up");
  const std::string old = image.WriteTo(directory.File("old.trc"));
  const TrcRun run = Convert(old, directory.File("new.trc"));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err,
            "trc: " + old + ": 2 names were cut: a trace file holds 65535 bytes of each\n");
}

TEST(TrcConvert, ACutLastRecordIsReported) {
  const TempDir directory;
  const std::string old =
      OldTrcImage().Trace("one").Trace("two").Cut(1).WriteTo(directory.File("old.trc"));
  const TrcRun run = Convert(old, directory.File("new.trc"));
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "trc: " + old + ": damaged: last record cut at byte 63\n");
  EXPECT_EQ(DumpedTraces(directory.File("new.trc")).size(), 2u);
}

// After its traces it has zeros without end, which are empty name records: enough to do for many
// seconds, and no blocks on the disk.
std::string EndlessFile(const TempDir& directory, int traces) {
  OldTrcImage image;
  for (int i = 0; i < traces; ++i) image.Trace("up");
  const std::string path = image.WriteTo(directory.File("old.trc"));
  std::filesystem::resize_file(path, 4'000'000'000);
  return path;
}

TEST(TrcConvert, AnInterruptSaysHowFarItCameAndMakesNoFile) {
  const TempDir directory;
  const std::string path = directory.File("new.trc");
  TrcProcess process(
      {.arguments = {"convert", EndlessFile(directory, 2000), path}, .errIsTerminal = true});
  const std::string shown = process.ReadErrUntil("%");
  EXPECT_NE(shown.find("\r\x1b[KConverting... "), std::string::npos) << shown;
  process.Interrupt();
  const TrcRun run = process.Finish();
  EXPECT_EQ(run.status, 130);
  EXPECT_NE(
      run.err.find("\r\x1b[Ktrc: " + path + ": interrupted after 2000 traces, and not written"),
      std::string::npos)
      << run.err;
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(TrcConvert, TheOtherCommandsRefuseAnOlderFileAndNameThisOne) {
  const TempDir directory;
  const OldTrcImage image = OldTrcImage().Trace("a");
  const std::string old = image.WriteTo(directory.File("old.trc"));
  const std::vector<std::vector<std::string>> commands = {
      {"info", old}, {"dump", old}, {"save", old, directory.File("new.trc")}};
  for (const auto& command : commands) {
    const TrcRun run = RunTrc(command);
    EXPECT_EQ(run.status, 2) << command[0];
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err,
              "trc: " + old +
                  ": an older trace file format; 'trc convert OLD.trc NEW.trc' converts it\n");
  }
  EXPECT_EQ(ReadAll(old), image.Bytes());
}

}  // namespace

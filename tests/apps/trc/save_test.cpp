#include <sys/stat.h>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

TrcRun Save(const std::string& in, const std::string& out) {
  return RunTrc({"save", in, out});
}

TEST(TrcSave, GivesTheSameTracesAndNames) {
  const TempDir directory;
  const std::string in = directory.File("in.trc"), out = directory.File("out.trc");
  ASSERT_EQ(RunTrc({"gen", "-n", "5000", "-s", "3", in}).status, 0);
  const TrcRun run = Save(in, out);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(ReadAll(out), ReadAll(in));
  EXPECT_EQ(DumpedTraces(out), DumpedTraces(in));
  json before = InfoOf(in), after = InfoOf(out);
  before.erase("path");
  after.erase("path");
  EXPECT_EQ(after, before);
}

TEST(TrcSave, WritesNamesAnewAndLeavesOutWhatWasSkippedOrIsNotUsed) {
  const TempDir directory;
  TrcImage image;
  image.Name(5, "old").Name(6, "unused").Raw(99).Name(5, "new");
  image.Trace({.text = "a", .machine = 5, .app = 8}).Raw(0);
  const std::string in = image.WriteTo(directory.File("in.trc"));
  const std::string out = directory.File("out.trc");
  ASSERT_EQ(Save(in, out).status, 3);
  TrcImage expected;
  expected.Name(5, "new").Trace({.text = "a", .machine = 5, .app = 8});
  EXPECT_EQ(ReadAll(out), expected.Bytes());
}

TEST(TrcSave, BytesThatAreNotUtf8AndNulBytesStay) {
  const TempDir directory;
  TrcImage image;
  image.Trace({.text = std::string("a\0b\xFF", 4), .stack = "\x80"});
  const std::string out = directory.File("out.trc");
  ASSERT_EQ(Save(image.WriteTo(directory.File("in.trc")), out).status, 0);
  EXPECT_EQ(ReadAll(out), image.Bytes());
}

TEST(TrcSave, AFileWithoutTracesIsSavedAs16Bytes) {
  const TempDir directory;
  const std::string out = directory.File("out.trc", "something longer than sixteen bytes");
  ASSERT_EQ(Save(TrcImage().WriteTo(directory.File("in.trc")), out).status, 0);
  EXPECT_EQ(ReadAll(out), TrcImage().Bytes());
}

TEST(TrcSave, ACutTraceIsSavedAsWhatItReadsAs) {
  const TempDir directory;
  const std::string in =
      TrcImage().Trace("whole").Trace("cut").Cut(3).WriteTo(directory.File("in.trc"));
  const std::string out = directory.File("out.trc");
  ASSERT_EQ(Save(in, out).status, 3);
  const auto saved = DumpedTraces(out);
  ASSERT_EQ(saved.size(), 2u);
  EXPECT_EQ(saved[1].at("text"), "cu");
  EXPECT_EQ(saved, JsonLinesOf(RunTrc({"dump", in, "-f", "jsonl", "--utc"}).out));
}

TEST(TrcSave, OverTheFileItselfFailsAndLeavesItAsItWas) {
  const TempDir directory;
  const TrcImage image = TrcImage().Trace("a");
  const std::string in = image.WriteTo(directory.File("in.trc"));
  const std::string link = directory.File("link.trc");
  std::filesystem::create_hard_link(in, link);
  for (const std::string& out : {in, link}) {
    const TrcRun run = Save(in, out);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "trc: " + out + ": Error creating file. In use by this program\n");
    EXPECT_EQ(ReadAll(in), image.Bytes());
  }
}

TEST(TrcSave, AFolderThatIsNotThereGivesTheDocumentsMessage) {
  const TempDir directory;
  const TrcRun run = Save(TrcImage().WriteTo(directory.File("in.trc")), "/nowhere/out.trc");
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: /nowhere/out.trc: Error creating file. No such file or directory\n");
}

TEST(TrcSave, AFullDiskIsReportedAlsoWhenItShowsOnlyAtTheEnd) {
  const TempDir directory;
  for (const int traces : {0, 1, 1000}) {
    TrcImage image;
    for (int i = 0; i < traces; ++i) image.Trace("some text");
    const TrcRun run = Save(image.WriteTo(directory.File("in.trc")), "/dev/full");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "trc: /dev/full: Error writing to file. No space left on device\n");
  }
}

}  // namespace

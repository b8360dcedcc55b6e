// The file of an export.
#include "listview/export/export_file.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace {

TEST(ExportFile, HandsOverWhatItHoldsAtTheClose) {
  const TempDir directory;
  const std::string path = directory.File("web.csv", "something longer that was here before");
  ExportFile file;
  ASSERT_TRUE(file.Open(path));
  file.Buffer() += "a";
  EXPECT_TRUE(file.EndLine());
  EXPECT_EQ(ReadAll(path), "");
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(ReadAll(path), "a\n");
}

TEST(ExportFile, HandsOverLargePiecesOnTheWay) {
  const TempDir directory;
  const std::string path = directory.File("web.csv");
  const std::string line(100000, 'x');
  std::string all;
  ExportFile file;
  ASSERT_TRUE(file.Open(path));
  for (int i = 0; i < 10; ++i) {
    file.Buffer() += line;
    all += line + "\n";
    EXPECT_TRUE(file.EndLine());
    EXPECT_LE(file.Buffer().size(), 262144u);
  }
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(ReadAll(path), all);
}

TEST(ExportFile, AFolderThatIsNotThereCannotBeWritten) {
  ExportFile file;
  EXPECT_FALSE(file.Open("/nowhere/web.csv"));
}

TEST(ExportFile, AFileThatIsOpenElsewhereIsLeftAsItIs) {
  const TempDir directory;
  const std::string path = directory.File("web.trc", "traces");
  const OpenFile reader = OpenForReading(path);
  ExportFile file;
  EXPECT_FALSE(file.Open(path));
  EXPECT_EQ(ReadAll(path), "traces");
}

TEST(ExportFile, AFullDiskShowsAtTheClose) {
  ExportFile file;
  ASSERT_TRUE(file.Open("/dev/full"));
  file.Buffer() += "a";
  EXPECT_TRUE(file.EndLine());
  EXPECT_FALSE(file.Close());
}

TEST(ExportFile, AFullDiskEndsALongExport) {
  ExportFile file;
  ASSERT_TRUE(file.Open("/dev/full"));
  file.Buffer().assign(1 << 20, 'x');
  EXPECT_FALSE(file.EndLine());
  EXPECT_FALSE(file.Close());
}

}  // namespace

#include "base/rename_file.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/temp_dir.h"

namespace {

class RenameTest : public testing::TestWithParam<bool (*)(const std::string&, const std::string&)> {
 protected:
  bool Rename(const std::string& from, const std::string& to) { return GetParam()(from, to); }
  TempDir m_temp;
};

TEST_P(RenameTest, TheFileHasTheNewNameOnly) {
  const std::string from = m_temp.File("a", "text"), to = m_temp.File("b");
  EXPECT_TRUE(Rename(from, to));
  EXPECT_EQ(ReadAll(to), "text");
  EXPECT_FALSE(std::filesystem::exists(from));
}

TEST_P(RenameTest, AFileInTheWayStaysAndSoDoesTheOther) {
  const std::string from = m_temp.File("a", "text"), to = m_temp.File("b", "other");
  EXPECT_FALSE(Rename(from, to));
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(ReadAll(from), "text");
  EXPECT_EQ(ReadAll(to), "other");
}

TEST_P(RenameTest, ALinkToNowhereIsInTheWayToo) {
  const std::string from = m_temp.File("a", "text"), to = m_temp.File("b");
  std::filesystem::create_symlink(m_temp.File("nowhere"), to);
  EXPECT_FALSE(Rename(from, to));
  EXPECT_EQ(ReadAll(from), "text");
}

TEST_P(RenameTest, AMissingFileIsToldAsSuch) {
  EXPECT_FALSE(Rename(m_temp.File("a"), m_temp.File("b")));
  EXPECT_EQ(errno, ENOENT);
}

INSTANTIATE_TEST_SUITE_P(Ways, RenameTest, testing::Values(&RenameWithoutReplacing, &RenameByLink));

}  // namespace

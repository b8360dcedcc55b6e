#include "base/make_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/temp_dir.h"

namespace {

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
}

class MakeFolderTest : public testing::Test {
 protected:
  MakeFolderTest() : m_before(umask(0)) {}
  ~MakeFolderTest() override { umask(m_before); }

  TempDir m_temp;
  const mode_t m_before;
  std::string m_why;
};

TEST_F(MakeFolderTest, MakesTheFolderForThisUserAloneAndThoseAboveForAll) {
  ASSERT_TRUE(MakeFolder(m_temp.File("a/b/c"), &m_why)) << m_why;
  EXPECT_EQ(ModeOf(m_temp.File("a")), 0755u);
  EXPECT_EQ(ModeOf(m_temp.File("a/b")), 0755u);
  EXPECT_EQ(ModeOf(m_temp.File("a/b/c")), 0700u);
}

TEST_F(MakeFolderTest, AFolderThatExistsStaysAsItIs) {
  ASSERT_EQ(mkdir(m_temp.File("a").c_str(), 0750), 0);
  EXPECT_TRUE(MakeFolder(m_temp.File("a"), &m_why)) << m_why;
  EXPECT_EQ(ModeOf(m_temp.File("a")), 0750u);
}

TEST_F(MakeFolderTest, SaysWhyItCannot) {
  const std::string path = m_temp.File("file", "text") + "/a";
  EXPECT_FALSE(MakeFolder(path, &m_why));
  EXPECT_EQ(m_why, path + ": Not a directory");
}

}  // namespace

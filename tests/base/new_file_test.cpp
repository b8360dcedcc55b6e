// A file stands under its name only when it is whole.
#include "base/new_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <set>

#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

class NewFileTest : public testing::Test {
 protected:
  std::set<std::string> Folder() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(m_temp.Path()))
      names.insert(entry.path().filename().string());
    return names;
  }
  static void Write(const NewFile& file, const std::string& text) {
    std::ofstream(file.WriteTo(), std::ios::trunc) << text;
  }

  TempDir m_temp;
  const std::string m_path = m_temp.File("out", "old");
  std::string m_why;
};

TEST_F(NewFileTest, FinishedItTakesThePlace) {
  NewFile file;
  ASSERT_TRUE(file.Begin(m_path, &m_why)) << m_why;
  Write(file, "new");
  EXPECT_EQ(ReadAll(m_path), "old");
  ASSERT_TRUE(file.Finish(&m_why)) << m_why;
  EXPECT_EQ(ReadAll(m_path), "new");
  EXPECT_EQ(Folder(), std::set<std::string>{"out"});
}

TEST_F(NewFileTest, UnfinishedItGoesAndWhatStoodThereStays) {
  {
    NewFile file;
    ASSERT_TRUE(file.Begin(m_path, &m_why)) << m_why;
    Write(file, "new");
  }
  EXPECT_EQ(ReadAll(m_path), "old");
  EXPECT_EQ(Folder(), std::set<std::string>{"out"});
}

TEST_F(NewFileTest, TwoAtOnceInOneFolderHaveFilesOfTheirOwn) {
  NewFile one, two;
  ASSERT_TRUE(one.Begin(m_temp.File("one"), &m_why)) << m_why;
  ASSERT_TRUE(two.Begin(m_temp.File("two"), &m_why)) << m_why;
  Write(one, "1");
  Write(two, "2");
  EXPECT_TRUE(two.Finish(&m_why)) << m_why;
  EXPECT_TRUE(one.Finish(&m_why)) << m_why;
  EXPECT_EQ(ReadAll(m_temp.File("one")), "1");
  EXPECT_EQ(ReadAll(m_temp.File("two")), "2");
}

TEST_F(NewFileTest, WhatAKilledProcessOfThatNumberLeftIsNotWrittenTo) {
  const std::string left = ".trc-" + std::to_string(getpid()) + ".part";
  const std::string other = m_temp.File("other", "somebody else's");
  fs::create_symlink("other", m_temp.File(left));
  NewFile file;
  ASSERT_TRUE(file.Begin(m_path, &m_why)) << m_why;
  Write(file, "new");
  EXPECT_EQ(ReadAll(other), "somebody else's");
  EXPECT_TRUE(file.Finish(&m_why)) << m_why;
  EXPECT_EQ(ReadAll(m_path), "new");
}

}  // namespace

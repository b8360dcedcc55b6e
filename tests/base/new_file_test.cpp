// A file gets its name only when it is complete.
#include "base/new_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "support/file_limit.h"
#include "support/folder_names.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

class NewFileTest : public testing::Test {
 protected:
  std::set<std::string> Folder() const { return NamesIn(m_temp.Path()); }
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
  std::string left;
  {
    NewFile killed;
    ASSERT_TRUE(killed.Begin(m_path, &m_why)) << m_why;
    left = killed.WriteTo();
  }
  ASSERT_FALSE(fs::exists(left)) << "the name is free again, and the next would take it";
  const std::string other = m_temp.File("other", "somebody else's");
  fs::create_symlink("other", left);
  NewFile file;
  ASSERT_TRUE(file.Begin(m_path, &m_why)) << m_why;
  EXPECT_NE(file.WriteTo(), left);
  Write(file, "new");
  EXPECT_EQ(ReadAll(other), "somebody else's");
  EXPECT_TRUE(file.Finish(&m_why)) << m_why;
  EXPECT_EQ(ReadAll(m_path), "new");
}

TEST_F(NewFileTest, AFileOfTwoNamesHasTheNewBytesUnderBothOnceTheyAreWhole) {
  const std::string other = m_temp.File("other");
  fs::create_hard_link(m_path, other);
  for (const std::string text : {"a longer new one", "", "b"}) {
    const std::string before = ReadAll(other);
    NewFile file;
    ASSERT_TRUE(file.Begin(m_path, &m_why)) << m_why;
    Write(file, text);
    EXPECT_EQ(ReadAll(other), before);
    ASSERT_TRUE(file.Finish(&m_why)) << m_why;
    EXPECT_EQ(ReadAll(m_path), text);
    EXPECT_EQ(ReadAll(other), text);
    EXPECT_TRUE(fs::equivalent(m_path, other));
    EXPECT_EQ(Folder(), (std::set<std::string>{"other", "out"}));
  }
}

TEST_F(NewFileTest, UnfinishedAFileOfTwoNamesStaysAsItWas) {
  fs::create_hard_link(m_path, m_temp.File("other"));
  {
    NewFile file;
    ASSERT_TRUE(file.Begin(m_path, &m_why)) << m_why;
    Write(file, "new");
  }
  EXPECT_EQ(ReadAll(m_path), "old");
  EXPECT_EQ(Folder(), (std::set<std::string>{"other", "out"}));
}

TEST_F(NewFileTest, WhereTheDiskHasNoRoomForTheCopyTheFileStaysAsItWas) {
  fs::create_hard_link(m_path, m_temp.File("other"));
  {
    NewFile file;
    ASSERT_TRUE(file.Begin(m_path, &m_why)) << m_why;
    Write(file, "a longer new one");
    const FileLimit full(4);
    EXPECT_FALSE(file.Finish(&m_why));
  }
  EXPECT_EQ(m_why, "File too large");
  EXPECT_EQ(ReadAll(m_path), "old");
  EXPECT_EQ(Folder(), (std::set<std::string>{"other", "out"}));
}

// A file that two users may write, replaced by the one whom it does not belong to.
class SharedFileTest : public NewFileTest {
 protected:
  static constexpr uid_t kOwner = 65533, kSaver = 65534;
  enum Status { kGood, kNoUser, kNotBegun, kOldGone, kNotFinished };

  SharedFileTest() {
    Give(m_path, kOwner);
    fs::permissions(m_path, fs::perms(0666));
  }
  ~SharedFileTest() override { fs::permissions(m_temp.Path(), fs::perms(0700)); }

  static void Give(const std::string& path, uid_t owner) {
    if (geteuid() == 0) {
      EXPECT_EQ(chown(path.c_str(), owner, owner), 0);
    }
  }
  // Runs in a process of its own, which gives up the rights of an administrator.
  Status Save(const std::function<void()>& beforeTheEnd = [] {}) {
    if (geteuid() == 0 && setuid(kSaver) != 0) return kNoUser;
    NewFile file;
    if (!file.Begin(m_path, &m_why)) return kNotBegun;
    Write(file, "new");
    if (ReadAll(m_path) != "old") return kOldGone;
    beforeTheEnd();
    return file.Finish(&m_why) ? kGood : kNotFinished;
  }
  void ExpectNewBytesOnly() const {
    EXPECT_EQ(ReadAll(m_path), "new");
    struct stat status;
    ASSERT_EQ(stat(m_path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0666u);
    EXPECT_EQ(status.st_uid, geteuid() == 0 ? kOwner : geteuid());
  }
};

TEST_F(SharedFileTest, KeepsItsOwner) {
  fs::permissions(m_temp.Path(), fs::perms(0777));
  EXPECT_EXIT(_exit(Save()), testing::ExitedWithCode(kGood), "");
  ExpectNewBytesOnly();
  EXPECT_EQ(Folder(), std::set<std::string>{"out"});
}

TEST_F(SharedFileTest, IsWrittenInAStickyFolder) {
  fs::permissions(m_temp.Path(), fs::perms(01777));
  EXPECT_EXIT(_exit(Save()), testing::ExitedWithCode(kGood), "");
  ExpectNewBytesOnly();
  EXPECT_EQ(Folder(), std::set<std::string>{"out"});
}

TEST_F(SharedFileTest, IsWrittenInAFolderThatTakesNoNewNames) {
  fs::permissions(m_temp.Path(), fs::perms(0555));
  EXPECT_EXIT(_exit(Save()), testing::ExitedWithCode(kGood), "");
  ExpectNewBytesOnly();
}

TEST_F(SharedFileTest, UnfinishedInAFolderThatTakesNoNewNamesItStaysAsItWas) {
  fs::permissions(m_temp.Path(), fs::perms(0555));
  std::string written;
  EXPECT_EXIT(
      {
        if (geteuid() == 0 && setuid(kSaver) != 0) _exit(kNoUser);
        {
          NewFile file;
          if (!file.Begin(m_path, &m_why)) _exit(kNotBegun);
          Write(file, "new");
          written = file.WriteTo();
        }
        _exit(fs::exists(written) ? kNotFinished : kGood);
      },
      testing::ExitedWithCode(kGood), "");
  EXPECT_EQ(ReadAll(m_path), "old");
}

// The file is its saver's here, so that only the rename itself tells.
TEST_F(SharedFileTest, IsWrittenWhereTheRenameIsRefused) {
  fs::permissions(m_temp.Path(), fs::perms(0777));
  Give(m_path, kSaver);
  Give(m_temp.Path(), kSaver);
  const auto close = [&] { fs::permissions(m_temp.Path(), fs::perms(0555)); };
  EXPECT_EXIT(_exit(Save(close)), testing::ExitedWithCode(kGood), "");
  EXPECT_EQ(ReadAll(m_path), "new");
}

}  // namespace

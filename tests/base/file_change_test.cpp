// What a mapped file tells of other programs' doings with its file.
#include "base/file_change.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <numeric>

#include "base/mapped_file.h"
#include "support/temp_dir.h"

namespace {

using Kind = FileChange::Kind;

const auto kPageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

class FileChangeTest : public testing::Test {
 protected:
  // Maps a file that was last written long ago: the clock of a file system ticks slowly.
  std::shared_ptr<const MappedFile> Map(std::size_t bytes) {
    m_dir.File("a", std::string(bytes, 'x'));
    const timespec longAgo[2] = {{1000, 0}, {1000, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, m_path.c_str(), longAgo, 0), 0);
    return MappedFile::Open(m_path);
  }
  void Append(const std::string& bytes) const {
    std::ofstream(m_path, std::ios::binary | std::ios::app) << bytes;
  }
  void WriteAt(std::streamoff at, const std::string& bytes) const {
    std::fstream file(m_path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(at) << bytes;
  }

  TempDir m_dir;
  const std::string m_path = m_dir.File("a");
};

TEST_F(FileChangeTest, AFileThatNobodyTouchesIsUnchanged) {
  const auto file = Map(3 * kPageBytes + 7);
  EXPECT_EQ(file->Change(), FileChange());
  EXPECT_EQ(FileChangeText(file->Change()), "");
}

TEST_F(FileChangeTest, WhatIsAppendedIsNoChange) {
  for (const std::size_t bytes : {std::size_t{5}, kPageBytes, 2 * kPageBytes + 9}) {
    const auto file = Map(bytes);
    Append("and more");
    EXPECT_EQ(file->Change(), FileChange()) << bytes;
  }
}

TEST_F(FileChangeTest, AnotherNameOrNoneIsNoChange) {
  const auto file = Map(kPageBytes + 7);
  ASSERT_EQ(rename(m_path.c_str(), m_dir.File("b").c_str()), 0);
  m_dir.File("a", "another file");
  EXPECT_EQ(file->Change(), FileChange());
  ASSERT_EQ(unlink(m_dir.File("b").c_str()), 0);
  EXPECT_EQ(file->Change(), FileChange());
}

TEST_F(FileChangeTest, ACutFileIsShorterByWhatIsMissing) {
  const auto file = Map(3 * kPageBytes);
  ASSERT_EQ(truncate(m_path.c_str(), static_cast<off_t>(3 * kPageBytes - 1)), 0);
  EXPECT_EQ(file->Change(), (FileChange{Kind::Shorter, 1}));
  EXPECT_EQ(FileChangeText(file->Change()), "the file has become shorter, 1 byte is missing");
  ASSERT_EQ(truncate(m_path.c_str(), 0), 0);
  EXPECT_EQ(file->Change(), (FileChange{Kind::Shorter, 3 * kPageBytes}));
  EXPECT_EQ(FileChangeText({Kind::Shorter, 12288}),
            "the file has become shorter, 12,288 bytes are missing");
}

TEST_F(FileChangeTest, APageThatWasReadWhileItWasGoneCountsWhateverComesBack) {
  auto file = Map(3 * kPageBytes);
  ASSERT_EQ(truncate(m_path.c_str(), 0), 0);
  const Bytes all = file->View();
  EXPECT_EQ(std::accumulate(all.begin(), all.end(), 0), 0);
  Append(std::string(4 * kPageBytes, 'x'));
  EXPECT_EQ(file->Change(), FileChange{Kind::Unreadable});
  EXPECT_EQ(FileChangeText(file->Change()), "a part of the file can no longer be read");
  file.reset();
  EXPECT_EQ(Map(kPageBytes)->Change(), FileChange()) << "the next one starts afresh";
}

TEST_F(FileChangeTest, AFileOfTheSameLengthThatWasWrittenToHasChanged) {
  const auto file = Map(3 * kPageBytes);
  WriteAt(10, "y");
  EXPECT_EQ(file->Change(), FileChange{Kind::Written});
  EXPECT_EQ(FileChangeText(file->Change()), "another program has written to the file");
}

TEST_F(FileChangeTest, ALongerFileWithAnotherEndOfWhatWasMappedHasChanged) {
  const auto file = Map(kPageBytes + 7);
  m_dir.File("a", std::string(3 * kPageBytes, 'y'));
  EXPECT_EQ(file->Change(), FileChange{Kind::Written});
}

}  // namespace

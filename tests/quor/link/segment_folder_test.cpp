// The files by which a service finds segments: who may make them, and what is never opened.
#include "quor/link/segment_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <filesystem>

#include "support/remove_segments.h"
#include "support/system_lacks.h"
#include "support/temp_dir.h"

namespace {

class SegmentFolderTest : public testing::Test {
 protected:
  ~SegmentFolderTest() override { RemoveSegments(m_place.Path()); }
  std::string SocketPath() const { return m_place.File("quord.sock"); }
  std::string In(const std::string& name) const { return m_place.File("segments/" + name); }

  TempDir m_place;
  SegmentFolder m_folder;
};

TEST_F(SegmentFolderTest, AFileIsFoundWhenItIsShownAndGoneWhenItIsRemoved) {
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  const int file = m_folder.NewFile(77, 5);
  ASSERT_GE(file, 0);
  SegmentFolder other;  // of the service, say
  ASSERT_TRUE(other.Open(SocketPath()));
  EXPECT_TRUE(other.Names().empty());
  ASSERT_TRUE(m_folder.Show());
  const std::vector<std::string> names = other.Names();
  ASSERT_EQ(names.size(), 1u);
  EXPECT_EQ(names[0], std::to_string(getpid()) + "-4d-5");
  const int found = other.OpenFile(names[0]);
  struct stat made {
  }, seen{};
  ASSERT_EQ(fstat(file, &made), 0);
  ASSERT_EQ(fstat(found, &seen), 0);
  EXPECT_EQ(seen.st_ino, made.st_ino);
  EXPECT_EQ(seen.st_mode & 0777, 0600u);
  EXPECT_FALSE(other.Remove(names[0], made.st_dev, made.st_ino + 1));
  EXPECT_TRUE(other.Remove(names[0], made.st_dev, made.st_ino));
  EXPECT_TRUE(other.Names().empty());
  close(file);
  close(found);
}

TEST_F(SegmentFolderTest, AFolderThatCannotBeListedForWantOfADescriptorIsNoEmptyOne) {
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  close(m_folder.NewFile(77, 5));
  ASSERT_TRUE(m_folder.Show());
  bool isWhole = false;
  EXPECT_EQ(m_folder.Names(&isWhole).size(), 1u);
  EXPECT_TRUE(isWhole);
  const SoftLimit none(RLIMIT_NOFILE, 0);
  EXPECT_TRUE(m_folder.Names(&isWhole).empty());
  EXPECT_FALSE(isWhole);
}

TEST_F(SegmentFolderTest, WhateverTheMaskOfTheApplicationTakesAwayTheServiceMayReadAndWrite) {
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  const mode_t before = umask(0777);
  const int file = m_folder.NewFile(1, 2);
  umask(before);
  struct stat made {};
  ASSERT_EQ(fstat(file, &made), 0);
  EXPECT_EQ(made.st_mode & 0777, 0600u);
  close(file);
}

TEST_F(SegmentFolderTest, LinksPipesAndFilesThatOthersMayReadAreNotOpened) {
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  const std::string elsewhere = m_place.File("elsewhere", "text");
  chmod(elsewhere.c_str(), 0600);
  std::filesystem::create_symlink(elsewhere, In("link"));
  ASSERT_EQ(mkfifo(In("pipe").c_str(), 0600), 0);
  close(open(In("open").c_str(), O_CREAT | O_WRONLY, 0600));
  chmod(In("open").c_str(), 0644);
  std::filesystem::create_directory(In("folder"));
  for (const char* const name : {"link", "pipe", "open", "folder"}) {
    EXPECT_EQ(m_folder.OpenFile(name), -1) << name;
    m_folder.RemoveUnowned(name);
    EXPECT_TRUE(std::filesystem::is_symlink(In(name)) || std::filesystem::exists(In(name)));
  }
}

TEST_F(SegmentFolderTest, AFolderThatOthersMayEnterIsNotUsed) {
  chmod(m_place.Path().c_str(), 0755);
  EXPECT_FALSE(m_folder.Open(SocketPath()));
  chmod(m_place.Path().c_str(), 0700);
  ASSERT_TRUE(m_folder.Open(SocketPath()));
}

TEST_F(SegmentFolderTest, OneThatOthersMayEnterOrThatIsNoFolderIsPutRight) {
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  chmod(In("").c_str(), 0777);
  SegmentFolder again;
  ASSERT_TRUE(again.Open(SocketPath()));
  EXPECT_TRUE(again.IsSame(m_folder));
  struct stat status {};
  ASSERT_EQ(stat(In("").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  const std::string segments = m_place.File("segments");
  const std::string target = std::filesystem::canonical(segments);
  std::filesystem::remove_all(segments);
  std::filesystem::remove_all(target);
  m_place.File("segments", "a file");
  EXPECT_TRUE(again.Open(SocketPath()));
  EXPECT_FALSE(again.IsSame(m_folder));
}

// Nobody's rights are changed but those of a folder that was made for segments.
TEST_F(SegmentFolderTest, ALinkToAnotherFolderIsReplacedAndThatFolderStaysAsItIs) {
  const std::string other = m_place.File("other");
  std::filesystem::create_directory(other);
  chmod(other.c_str(), 0755);
  std::filesystem::create_symlink(other, m_place.File("segments"));
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  EXPECT_FALSE(std::filesystem::equivalent(m_place.File("segments"), other)) << "it is replaced";
  const int file = m_folder.NewFile(1, 2);
  EXPECT_GE(file, 0);
  EXPECT_TRUE(m_folder.Show());
  EXPECT_TRUE(std::filesystem::is_empty(other));
  struct stat status {};
  ASSERT_EQ(stat(other.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0755u);
  close(file);
}

// Their pages would be written to the disk over and over.
TEST_F(SegmentFolderTest, AFolderThatLiesOnADiskIsReplacedByOneInMemory) {
  const std::string segments = m_place.File("segments");
  std::filesystem::create_directory(segments);
  chmod(segments.c_str(), 0700);
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  struct statfs system {};
  ASSERT_EQ(statfs(segments.c_str(), &system), 0);
  EXPECT_EQ(system.f_type, TMPFS_MAGIC);
}

TEST_F(SegmentFolderTest, ALinkWhoseFolderHasGoneIsMadeAnew) {
  std::filesystem::create_symlink("/dev/shm/quor-gone-with-a-start", m_place.File("segments"));
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  const int file = m_folder.NewFile(1, 2);
  EXPECT_GE(file, 0);
  close(file);
}

TEST_F(SegmentFolderTest, WhatNobodyOwnsIsRemovedAndWhatSomebodyOwnsStays) {
  ASSERT_TRUE(m_folder.Open(SocketPath()));
  for (const char* const name : {"owned", "left"}) close(open(In(name).c_str(), O_CREAT, 0600));
  const int owner = open(In("owned").c_str(), O_RDWR);
  ASSERT_EQ(flock(owner, LOCK_EX), 0);
  m_folder.RemoveUnowned("owned");
  m_folder.RemoveUnowned("left");
  EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"owned"});
  close(owner);
}

}  // namespace

#include "base/file_gate.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <functional>

#include "support/temp_dir.h"

namespace {

class FileGate : public testing::Test {
 protected:
  TempDir m_dir;
  std::string m_why;
};

// Runs `body` in a process of its own and gives its answer.
bool InAnotherProcess(const std::function<bool()>& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body() ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Another process that has a file open while this lives.
class Holder {
 public:
  explicit Holder(const std::function<OpenFile()>& openIt) {
    std::array<int, 2> ready, go;
    EXPECT_EQ(pipe(ready.data()), 0);
    EXPECT_EQ(pipe(go.data()), 0);
    m_child = fork();
    if (m_child == 0) {
      close(go[1]);
      const OpenFile file = openIt();
      char byte = file ? 'y' : 'n';
      if (write(ready[1], &byte, 1) != 1) _exit(1);
      const ssize_t ended = read(go[0], &byte, 1);
      _exit(ended == 0 ? 0 : 1);
    }
    char answer = 0;
    EXPECT_EQ(read(ready[0], &answer, 1), 1);
    EXPECT_EQ(answer, 'y');
    close(ready[0]);
    close(ready[1]);
    close(go[0]);
    m_go = go[1];
  }
  ~Holder() {
    close(m_go);
    int status = 0;
    waitpid(m_child, &status, 0);
  }

 private:
  pid_t m_child;
  int m_go;
};

TEST_F(FileGate, AFileIsReadByManyAtOnce) {
  const std::string path = m_dir.File("a", "text");
  const OpenFile first = OpenForReading(path), second = OpenForReading(path);
  EXPECT_TRUE(first);
  EXPECT_TRUE(second);
}

TEST_F(FileGate, AFileOpenForReadingIsNotMadeAnewAndKeepsItsContent) {
  const std::string path = m_dir.File("a", "text");
  const OpenFile reader = OpenForReading(path);
  EXPECT_FALSE(CreateForWriting(path, &m_why));
  EXPECT_EQ(m_why, "In use by this program");
  EXPECT_EQ(ReadAll(path), "text");
}

TEST_F(FileGate, AFileBeingWrittenIsOpenNowhereElse) {
  const std::string path = m_dir.File("a");
  const OpenFile writer = CreateForWriting(path);
  ASSERT_TRUE(writer);
  EXPECT_FALSE(OpenForReading(path, &m_why));
  EXPECT_EQ(m_why, "In use by this program");
  EXPECT_FALSE(CreateForWriting(path));
}

TEST_F(FileGate, HardAndSymbolicLinksAreTheSameFile) {
  const std::string path = m_dir.File("a", "text");
  ASSERT_EQ(link(path.c_str(), m_dir.File("hard").c_str()), 0);
  ASSERT_EQ(symlink(path.c_str(), m_dir.File("soft").c_str()), 0);
  const OpenFile reader = OpenForReading(path);
  EXPECT_FALSE(CreateForWriting(m_dir.File("hard")));
  EXPECT_FALSE(CreateForWriting(m_dir.File("soft")));
  EXPECT_EQ(ReadAll(path), "text");
}

TEST_F(FileGate, ClosingGivesTheFileFree) {
  const std::string path = m_dir.File("a", "text");
  OpenFile first = OpenForReading(path);
  { const OpenFile second = OpenForReading(path); }
  EXPECT_FALSE(CreateForWriting(path));
  EXPECT_TRUE(first.Close());
  EXPECT_TRUE(first.Close());
  EXPECT_FALSE(first);
  EXPECT_TRUE(CreateForWriting(path));
  EXPECT_TRUE(OpenForReading(path));
}

TEST_F(FileGate, AMovedFileStaysOpenUntilItsNewOwnerEnds) {
  const std::string path = m_dir.File("a", "text");
  OpenFile first = OpenForReading(path);
  OpenFile second = std::move(first);
  first = OpenFile();
  EXPECT_TRUE(second);
  EXPECT_FALSE(CreateForWriting(path));
  second = OpenFile();
  EXPECT_TRUE(CreateForWriting(path));
}

TEST_F(FileGate, AnExistingFileIsMadeEmptyAndANewOneIsMade) {
  const std::string path = m_dir.File("a", "old text");
  EXPECT_TRUE(CreateForWriting(path));
  EXPECT_EQ(ReadAll(path), "");
  EXPECT_TRUE(CreateForWriting(m_dir.File("new")));
  EXPECT_TRUE(OpenForReading(m_dir.File("new")));
}

TEST_F(FileGate, AnotherProcessThatReadsTheFileKeepsItFromBeingMadeAnew) {
  const std::string path = m_dir.File("a", "text");
  {
    const Holder reader([&] { return OpenForReading(path); });
    EXPECT_TRUE(OpenForReading(path));
    EXPECT_FALSE(CreateForWriting(path, &m_why));
    EXPECT_EQ(m_why, "In use by another program");
    EXPECT_EQ(ReadAll(path), "text");
  }
  EXPECT_TRUE(CreateForWriting(path));
}

TEST_F(FileGate, AnotherProcessThatWritesTheFileKeepsItFromBeingRead) {
  const std::string path = m_dir.File("a", "text");
  const Holder writer([&] { return CreateForWriting(path); });
  EXPECT_FALSE(OpenForReading(path, &m_why));
  EXPECT_EQ(m_why, "In use by another program");
}

TEST_F(FileGate, AFileReplacedByARenameIsAnotherFile) {
  const std::string path = m_dir.File("a", "old");
  const OpenFile reader = OpenForReading(path);
  ASSERT_EQ(rename(m_dir.File("b", "new").c_str(), path.c_str()), 0);
  EXPECT_TRUE(CreateForWriting(path));
  char byte = 0;
  EXPECT_EQ(pread(reader.Descriptor(), &byte, 1, 0), 1);
  EXPECT_EQ(byte, 'o');
}

TEST_F(FileGate, AMissingFileIsNotRead) {
  EXPECT_FALSE(OpenForReading(m_dir.File("none"), &m_why));
  EXPECT_EQ(m_why, "No such file or directory");
}

TEST_F(FileGate, APathThroughAFileOrALoopOfLinksIsNoFile) {
  m_dir.File("a", "text");
  EXPECT_FALSE(OpenForReading(m_dir.File("a/b"), &m_why));
  EXPECT_EQ(m_why, "Not a directory");
  EXPECT_FALSE(CreateForWriting(m_dir.File("a/b")));
  ASSERT_EQ(symlink("loop", m_dir.File("loop").c_str()), 0);
  EXPECT_FALSE(OpenForReading(m_dir.File("loop"), &m_why));
  EXPECT_EQ(m_why, "Too many levels of symbolic links");
  EXPECT_FALSE(CreateForWriting(m_dir.File("loop")));
}

TEST_F(FileGate, ADirectoryIsRefused) {
  EXPECT_FALSE(OpenForReading(m_dir.Path(), &m_why));
  EXPECT_EQ(m_why, "Is a directory");
  m_why.clear();
  EXPECT_FALSE(CreateForWriting(m_dir.Path(), &m_why));
  EXPECT_EQ(m_why, "Is a directory");
}

TEST_F(FileGate, AFifoIsRefusedWithoutWaiting) {
  const std::string path = m_dir.File("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_FALSE(OpenForReading(path, &m_why));
  EXPECT_EQ(m_why, "Not a regular file");
  EXPECT_FALSE(CreateForWriting(path));
  const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_FALSE(CreateForWriting(path, &m_why));
  EXPECT_EQ(m_why, "Not a regular file");
  close(reader);
}

TEST_F(FileGate, WithoutPermissionNothingIsOpened) {
  const std::string path = m_dir.File("a", "text");
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  EXPECT_TRUE(InAnotherProcess([&] {
    // The superuser may open everything, so it steps down first.
    if (geteuid() == 0 && setuid(65534) != 0) return false;
    std::string readWhy, writeWhy;
    return !OpenForReading(path, &readWhy) && !CreateForWriting(path, &writeWhy) &&
           readWhy == "Permission denied" && writeWhy == "Permission denied";
  }));
}

TEST_F(FileGate, ADeviceMayBeWrittenByManyButNotRead) {
  const OpenFile first = CreateForWriting("/dev/full"), second = CreateForWriting("/dev/full");
  EXPECT_TRUE(first);
  EXPECT_TRUE(second);
  EXPECT_FALSE(OpenForReading("/dev/zero", &m_why));
  EXPECT_EQ(m_why, "Not a regular file");
}

TEST_F(FileGate, AFilesDescriptorWaitsInWritesAndIsNotInherited) {
  const OpenFile file = CreateForWriting(m_dir.File("a"));
  ASSERT_TRUE(file);
  EXPECT_EQ(fcntl(file.Descriptor(), F_GETFL) & O_NONBLOCK, 0);
  EXPECT_EQ(fcntl(file.Descriptor(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_F(FileGate, AReasonIsNotNeeded) {
  EXPECT_FALSE(OpenForReading(m_dir.Path()));
  EXPECT_FALSE(OpenForReading(m_dir.File("none")));
}

TEST_F(FileGate, AFileThatIsHeldForReplacingKeepsItsBytesAndIsNobodyElses) {
  const std::string path = m_dir.File("a", "bytes");
  {
    const OpenFile held = HoldForReplacing(path);
    ASSERT_TRUE(held);
    EXPECT_FALSE(OpenForReading(path));
    EXPECT_FALSE(CreateForWriting(path));
    EXPECT_FALSE(HoldForReplacing(path));
  }
  EXPECT_EQ(ReadAll(path), "bytes");
  const OpenFile reader = OpenForReading(path);
  std::string why;
  EXPECT_FALSE(HoldForReplacing(path, &why));
  EXPECT_EQ(why, "In use by this program");
  EXPECT_FALSE(HoldForReplacing(m_dir.File("none"), &why));
  EXPECT_EQ(why, "No such file or directory");
  EXPECT_FALSE(std::filesystem::exists(m_dir.File("none")));
}

}  // namespace

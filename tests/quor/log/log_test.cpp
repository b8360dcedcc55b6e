// What the service says, and what happens when nobody reads it or it goes on for long.
#include "quor/log/log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/temp_dir.h"

namespace {

// Standard error is the test's own again at the end.
class LogTest : public ::testing::Test {
 protected:
  LogTest() {
    unsetenv("JOURNAL_STREAM");
    // Takes away the log file of the test before: a file that cannot be made leaves the log none.
    EXPECT_FALSE(LogToFile(m_folder.File("none/log")));
  }
  ~LogTest() override {
    dup2(m_before, STDERR_FILENO);
    close(m_before);
  }
  static off_t Size(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_size : -1;
  }
  TempDir m_folder;
  const std::string m_path = m_folder.File("log");
  const int m_before = dup(STDERR_FILENO);
};

TEST_F(LogTest, TheJournalsFormIsForAStandardErrorThatIsTheJournals) {
  const int file = open(m_path.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  dup2(file, STDERR_FILENO);
  struct stat status {};
  ASSERT_EQ(fstat(file, &status), 0);
  close(file);
  const std::string here = std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
  for (const std::string& stream : {here, here + "1", std::string("1:2"), std::string()}) {
    setenv("JOURNAL_STREAM", stream.c_str(), 1);
    Log(LogLevel::Warning, "to " + stream);
  }
  unsetenv("JOURNAL_STREAM");
  const std::string words = ReadAll(m_path);
  EXPECT_EQ(words.rfind("<4>to " + here + "\n", 0), 0u) << words;
  EXPECT_EQ(std::count(words.begin(), words.end(), '<'), 1) << words;
  EXPECT_NE(words.find("Z quord warning: to 1:2\n"), words.npos) << words;
}

TEST_F(LogTest, APipeThatNobodyReadsHoldsNobodyUpAndTheLostLinesAreCounted) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  dup2(ends[1], STDERR_FILENO);
  close(ends[1]);
  const std::string line(1000, 'x');
  constexpr int kLines = 1000;
  for (int i = 0; i < kLines; ++i) Log(LogLevel::Info, line);
  std::string read;
  const auto drain = [&] {
    char bytes[65536];
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    for (ssize_t got = 0; (got = ::read(ends[0], bytes, sizeof bytes)) > 0;)
      read.append(bytes, static_cast<std::size_t>(got));
  };
  drain();
  const auto lines = std::count(read.begin(), read.end(), '\n');
  EXPECT_GT(lines, 10);
  EXPECT_LT(lines, kLines);
  Log(LogLevel::Info, "again");
  drain();
  EXPECT_NE(read.find("warning: " + std::to_string(kLines - lines) +
                      " lines could not be written here\n"),
            read.npos);
  EXPECT_EQ(read.substr(read.size() - 6), "again\n");
  close(ends[0]);
}

TEST_F(LogTest, AFileThatHasGrownLargeIsBegunAnewAndTheOneBeforeIsKept) {
  ASSERT_TRUE(LogToFile(m_path));
  const std::string line(1900, 'x');
  for (int i = 0; i < 5000; ++i) Log(LogLevel::Info, std::to_string(i) + " " + line);
  for (const std::string& path : {m_path, m_path + ".1"}) {
    EXPECT_GT(Size(path), 0) << path;
    EXPECT_LT(Size(path), kLogFileBytesMax + 4096) << path;
  }
  EXPECT_NE(ReadAll(m_path).find("quord info: 4999 x"), std::string::npos);
  struct stat status {};
  ASSERT_EQ(stat(m_path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(LogTest, AFileThatIsLargeAlreadyIsPutAsideAtTheStart) {
  m_folder.File("log", std::string(kLogFileBytesMax + 1, 'o'));
  ASSERT_TRUE(LogToFile(m_path));
  // Put aside immediately, so that what others write to standard error goes to the new file too.
  EXPECT_EQ(Size(m_path + ".1"), kLogFileBytesMax + 1);
  Log(LogLevel::Info, "new");
  EXPECT_LT(Size(m_path), 100);
  EXPECT_FALSE(LogToFile(m_folder.File("none/log")));
}

TEST_F(LogTest, ControlBytesOfAPeerAreShownAsQuestionMarksAndALongLineIsCut) {
  ASSERT_TRUE(LogToFile(m_path));
  Log(LogLevel::Warning, "a\nb\x1B[2J" + std::string(100000, 'x'));
  Log(LogLevel::Debug, "not asked for");
  const std::string words = ReadAll(m_path);
  EXPECT_NE(words.find("warning: a?b?[2Jxxx"), words.npos);
  EXPECT_LT(words.size(), 3000u);
  EXPECT_EQ(std::count(words.begin(), words.end(), '\n'), 1);
}

}  // namespace

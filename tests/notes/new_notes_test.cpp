// A notes file is replaced in one step, whatever ends the writer.
#include "notes/new_notes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/as_account.h"
#include "support/file_limit.h"
#include "support/folder_names.h"
#include "support/temp_dir.h"

namespace {

using testing::HasSubstr;

class NewNotes : public testing::Test {
 protected:
  static mode_t RightsOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }
  // Writes a byte at a time in a process that is killed before its step; false: it had no such one.
  bool KilledAt(int step, const std::string& text) const {
    const pid_t child = fork();
    if (child == 0) {
      NotesSteps steps{.pieceBytes = 1, .before = {}};
      steps.before = [left = step]() mutable {
        if (left-- == 0) kill(getpid(), SIGKILL);
      };
      std::string why;
      _exit(ReplaceNotes(m_path, m_trace, text, &why, steps) ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    if (WIFSIGNALED(status)) return true;
    EXPECT_EQ(WEXITSTATUS(status), 0);
    return false;
  }

  TempDir m_dir;
  const std::string m_trace = m_dir.File("a.trc", "trace"), m_path = m_dir.File("a.trc.notes");
  std::string m_why;
};

TEST_F(NewNotes, AProcessThatIsKilledAtAnyByteLeavesTheOldFileOrTheNewOne) {
  const std::string old = "old notes", fresh = "the new notes, which are longer";
  int news = 0, steps = 0;
  for (;; ++steps) {
    m_dir.File("a.trc.notes", old);
    if (!KilledAt(steps, fresh)) break;
    const std::string left = ReadAll(m_path);
    EXPECT_TRUE(left == old || left == fresh) << "step " << steps << ": " << left;
    news += left == fresh;
  }
  EXPECT_EQ(ReadAll(m_path), fresh);
  EXPECT_GT(steps, static_cast<int>(fresh.size())) << "each byte is a step";
  EXPECT_EQ(news, 1) << "the rename is the last but one";
}

TEST_F(NewNotes, WhereThereWasNoneAKillLeavesNoneOrAll) {
  for (int step = 0;; ++step) {
    unlink(m_path.c_str());
    if (!KilledAt(step, "abc")) break;
    const std::string left = ReadIfThere(m_path);
    EXPECT_TRUE(left.empty() || left == "abc") << left;
  }
}

TEST_F(NewNotes, HasTheRightsOfTheTraceFileWithoutThoseToExecute) {
  for (const mode_t rights : {0600, 0644, 0664, 0755, 0440}) {
    ASSERT_EQ(chmod(m_trace.c_str(), rights), 0);
    ASSERT_TRUE(ReplaceNotes(m_path, m_trace, "x", &m_why)) << m_why;
    EXPECT_EQ(RightsOf(m_path), rights & 0666);
  }
}

TEST_F(NewNotes, IsWrittenUnderARelativePathToo) {
  ASSERT_EQ(chdir(m_dir.Path().c_str()), 0);
  EXPECT_TRUE(ReplaceNotes("a.trc.notes", "a.trc", "x", &m_why)) << m_why;
  EXPECT_EQ(ReadAll(m_path), "x");
  ASSERT_EQ(chdir("/"), 0);
}

TEST_F(NewNotes, AFullDiskLeavesTheOldFileAndNoPart) {
  m_dir.File("a.trc.notes", "old");
  const FileLimit limit(4096);
  EXPECT_FALSE(ReplaceNotes(m_path, m_trace, std::string(5000, 'x'), &m_why));
  EXPECT_THAT(m_why, HasSubstr("a.trc.notes: File too large"));
  EXPECT_EQ(ReadAll(m_path), "old");
  EXPECT_EQ(NamesIn(m_dir.Path()).size(), 2u);
}

TEST_F(NewNotes, AFolderThatMayNotBeWrittenIsSaid) {
  ASSERT_EQ(chmod(m_dir.Path().c_str(), 0755), 0);
  const auto body = [this] {
    std::string why;
    if (getuid() != 0) chmod(m_dir.Path().c_str(), 0555);
    const bool written = ReplaceNotes(m_path, m_trace, "x", &why);
    if (getuid() != 0) chmod(m_dir.Path().c_str(), 0755);
    return !written && why == m_path + ": Permission denied" ? 0 : 1;
  };
  constexpr uid_t kNobody = 65534;
  EXPECT_EQ(getuid() == 0 ? RunAsAccount(kNobody, body) : body(), 0);
  EXPECT_EQ(NamesIn(m_dir.Path()), std::set<std::string>{"a.trc"});
}

TEST_F(NewNotes, AFailureNamesThePathAndLeavesNoPart) {
  EXPECT_FALSE(ReplaceNotes(m_path, m_dir.File("gone.trc"), "x", &m_why));
  EXPECT_THAT(m_why, HasSubstr("gone.trc: No such file"));
  EXPECT_FALSE(ReplaceNotes(m_dir.File("none/a.notes"), m_trace, "x", &m_why));
  EXPECT_THAT(m_why, HasSubstr("none/a.notes: No such file"));
  ASSERT_EQ(mkdir(m_path.c_str(), 0700), 0);
  EXPECT_FALSE(ReplaceNotes(m_path, m_trace, "x", &m_why));
  EXPECT_THAT(m_why, HasSubstr("Is a directory"));
  EXPECT_EQ(NamesIn(m_dir.Path()), (std::set<std::string>{"a.trc", "a.trc.notes"}));
}

}  // namespace

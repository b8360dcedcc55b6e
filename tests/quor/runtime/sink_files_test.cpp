// Where a file sink's files lie and whose they are.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "fake_service.h"
#include "quor/quor.hpp"
#include "quor/runtime/sink/sink_files.h"
#include "support/temp_dir.h"

namespace {

QUOR_POINT(limit_point, "Work", "Step");
QUOR_POINT(other_point, "A component of a rather long name", "and a category of a long name too");

class SinkFilesTest : public testing::Test {
 protected:
  SinkFilesTest() {
    mkdir(m_shared.c_str(), 0700);
    chmod(m_shared.c_str(), 0777);
    m_folder.File("victim.trc", "precious");
  }
  static bool Begins(const std::string& path) {
    SinkFiles files(path, SinkOptions());
    errno = 0;
    return files.Begin();
  }
  static unsigned ModeOf(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777u : 0;
  }
  bool VictimIsWhole() const {
    return ReadAll(m_folder.File("victim.trc")) == "precious" &&
           !std::filesystem::exists(m_folder.File("victim.1.trc"));
  }
  TempDir m_folder;
  const std::string m_shared = m_folder.File("shared");
};

TEST_F(SinkFilesTest, AreTheirOwnersAloneWhateverTheMask) {
  const mode_t before = umask(0);
  EXPECT_TRUE(Begins(m_folder.File("a.trc")));
  umask(before);
  EXPECT_EQ(ModeOf(m_folder.File("a.trc")), 0600u);
}

TEST_F(SinkFilesTest, AFileThatWasPreparedEmptyKeepsItsMode) {
  const std::string path = m_folder.File("a.trc", "");
  chmod(path.c_str(), 0640);
  EXPECT_TRUE(Begins(path));
  EXPECT_EQ(ModeOf(path), 0640u);
}

TEST_F(SinkFilesTest, NoLinkIsFollowedInAFolderThatOthersMayWrite) {
  const std::string link = m_shared + "/a.trc";
  ASSERT_EQ(symlink(m_folder.File("victim.trc").c_str(), link.c_str()), 0);
  EXPECT_FALSE(Begins(link));
  EXPECT_EQ(errno, ELOOP);
  // Nor a link to a file that does not exist yet.
  unlink(link.c_str());
  ASSERT_EQ(symlink(m_folder.File("fresh.trc").c_str(), link.c_str()), 0);
  EXPECT_FALSE(Begins(link));
  EXPECT_FALSE(std::filesystem::exists(m_folder.File("fresh.trc")));
  EXPECT_TRUE(VictimIsWhole());
  // Nor is a second name of a file written to.
  unlink(link.c_str());
  ASSERT_EQ(::link(m_folder.File("victim.trc").c_str(), link.c_str()), 0);
  EXPECT_FALSE(Begins(link));
  EXPECT_EQ(errno, EACCES);
  EXPECT_TRUE(VictimIsWhole());
  // Nor is a file that another user has put there, who could read what is written.
  unlink(link.c_str());
  close(open(link.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666));
  const bool foreign = chown(link.c_str(), 65534, 65534) == 0;  // root may
  EXPECT_EQ(Begins(link), !foreign);
}

TEST_F(SinkFilesTest, ALinkInAFolderOfOnesOwnIsFollowed) {
  mkdir(m_folder.File("own").c_str(), 0700);
  const std::string link = m_folder.File("own/a.trc");
  ASSERT_EQ(symlink(m_folder.File("far.trc").c_str(), link.c_str()), 0);
  EXPECT_TRUE(Begins(link));
  EXPECT_TRUE(std::filesystem::exists(m_folder.File("far.trc")));
}

// The sizes of a file and of the one before it, by an application that fills the first up to a
// trace which would make it a byte too long.
void FillToTheLimit(quor_point& last, bool named) {
  FakeService service;
  const std::string path = service.Folder() + "/a.trc";
  constexpr std::uint64_t kLimit = 1 << 20;
  constexpr std::size_t kRecordBytes = 1 + 44;
  TracedChild app([&](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    const auto left = [&path] { return kLimit - std::filesystem::file_size(path); };
    const std::string filling(1000, 'x');
    quor_trace(&limit_point, QUOR_INFO, nullptr, 0, filling.data(), filling.size());
    while (left() > 3000)
      quor_trace(&limit_point, QUOR_INFO, nullptr, 0, filling.data(), filling.size());
    const std::string text(left() - kRecordBytes + (named ? 0 : 1), 'y');
    quor_trace(&last, QUOR_INFO, nullptr, 0, text.data(), text.size());
    return 0;
  });
  auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->SendSink(SinkKind::File, path, "flush=1;maxsize=1;");
  ASSERT_TRUE(WaitFor([&] { return seen->Pump(), seen->m_answered; }));
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_LE(std::filesystem::file_size(service.Folder() + "/a.1.trc"), kLimit);
  EXPECT_LT(std::filesystem::file_size(path), 5000u);
}

TEST(FileSinkLimit, CountsTheWholeRecordOfATrace) {
  FillToTheLimit(limit_point, false);
}

TEST(FileSinkLimit, CountsTheNamesThatATraceNeeds) {
  FillToTheLimit(other_point, true);
}

}  // namespace

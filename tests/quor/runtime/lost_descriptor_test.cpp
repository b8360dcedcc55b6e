// A file sink whose descriptor the application has closed, as every daemon closes all.
#include <sys/stat.h>
#include <sys/syscall.h>

#include "file_traces.h"
#include "quor/quor.hpp"
#include "support/temp_dir.h"

namespace {

QUOR_POINT(daemon_point, "Work", "Step");

void TraceFrom(int first, int end) {
  for (int i = first; i < end; ++i) QUOR_TRACE_INFO(daemon_point, "{}", i);
}

// Closes all that is not the test's and opens files of its own under those numbers. By the system's
// calls: that the library looks at a descriptor which another thread closes is a race for a thread
// sanitizer, and is what is tested.
void CloseAllAndOpenOwn(TracedChild& self, const std::string& own) {
  for (int number = 3; number < 200; ++number)
    if (number != self.ReportEnd() && number != self.GoEnd()) syscall(SYS_close, number);
  for (int i = 0; i < 40; ++i)
    EXPECT_GE(syscall(SYS_openat, AT_FDCWD, own.c_str(), O_RDWR | O_CREAT, 0600), 0);
}

class LostDescriptor : public testing::TestWithParam<const char*> {
 protected:
  void ExpectOnlyOneFile() {
    EXPECT_FALSE(std::filesystem::exists(m_service.Folder() + "/a.1.trc"));
    EXPECT_EQ(ReadAll(m_own), "");
  }
  FakeService m_service;
  const std::string m_path = m_service.Folder() + "/a.trc", m_own = m_service.Folder() + "/own";
};

TEST_P(LostDescriptor, TheFileIsOpenedAgainAndGoesOnAtItsEnd) {
  TracedChild app([this](TracedChild& self) {
    quor_application("daemon");
    self.AwaitGo();
    TraceFrom(0, 1000);
    EXPECT_EQ(quor_flush(10000), 1);
    for (const int first : {1000, 2000}) {
      CloseAllAndOpenOwn(self, m_own);
      TraceFrom(first, first + 1000);
      EXPECT_EQ(quor_flush(10000), 1);
    }
    EXPECT_EQ(Counts().lost, 0u);
    return 0;
  });
  const auto seen = AcceptWithFile(m_service, m_path, GetParam());
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  const FileTraces file = ReadTrc(m_path);
  EXPECT_TRUE(file.whole);
  ASSERT_EQ(file.texts.size(), 3000u);
  for (std::size_t i = 0; i < 3000; ++i) {
    ASSERT_EQ(file.texts[i], std::to_string(i));
    ASSERT_EQ(file.numbers[i], i + 1);
  }
  ExpectOnlyOneFile();
}

// Another file under its name is not continued: it is kept under a number like any that is found.
TEST_P(LostDescriptor, AnotherFileUnderItsNameIsNotWrittenTo) {
  TracedChild app([this](TracedChild& self) {
    quor_application("daemon");
    self.AwaitGo();
    TraceFrom(0, 100);
    EXPECT_EQ(quor_flush(10000), 1);
    CloseAllAndOpenOwn(self, m_own);
    EXPECT_EQ(std::rename(m_path.c_str(), (m_path + ".moved").c_str()), 0);
    std::ofstream(m_path) << "precious";
    TraceFrom(100, 200);
    quor_flush(10000);
    // It looks again every second.
    EXPECT_TRUE(WaitFor([this] {
      QUOR_TRACE_INFO(daemon_point, "later");
      return std::filesystem::exists(m_service.Folder() + "/a.1.trc");
    }));
    EXPECT_EQ(quor_flush(10000), 1);
    const quor_counts counts = Counts();
    self.Report(counts.traced);
    self.Report(counts.lost);
    return 0;
  });
  const auto seen = AcceptWithFile(m_service, m_path, GetParam());
  app.Go();
  const std::uint64_t traced = app.Reported(), lost = app.Reported();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_EQ(ReadAll(m_service.Folder() + "/a.1.trc"), "precious");
  EXPECT_EQ(ReadAll(m_own), "");
  const FileTraces before = ReadTrc(m_path + ".moved"), after = ReadTrc(m_path);
  EXPECT_TRUE(before.whole);
  EXPECT_TRUE(after.whole);
  EXPECT_EQ(before.texts.size(), 100u);
  EXPECT_GE(lost, 100u);
  // One trace of the second file tells the loss.
  ASSERT_FALSE(after.texts.empty());
  EXPECT_EQ(after.texts[0],
            "Quor/Loss: " + std::to_string(lost) + " traces lost: the file could not be written");
  EXPECT_EQ(before.texts.size() + after.texts.size() - 1 + lost, traced);
}

INSTANTIATE_TEST_SUITE_P(Sinks, LostDescriptor, testing::Values("flush=1;", "flush=0;"));

}  // namespace

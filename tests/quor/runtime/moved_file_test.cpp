// A file sink whose file somebody removes, replaces, moves or cuts while it is written.
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>

#include "file_traces.h"
#include "quor/quor.hpp"

namespace {

QUOR_POINT(moved_point, "Work", "Step");

class MovedFile : public testing::TestWithParam<const char*> {
 protected:
  // Traces 0 to 99, then `change`, then 100 to 199, and what `more` traces.
  void Run(
      const std::function<void()>& change, const std::function<void()>& more = [] {}) {
    TracedChild app([&](TracedChild& self) {
      quor_application("orders");
      self.AwaitGo();
      TraceFrom(0);
      change();
      TraceFrom(100);
      more();
      const quor_counts counts = Counts();
      self.Report(counts.traced);
      self.Report(counts.lost);
      return 0;
    });
    const auto seen = AcceptWithFile(m_service, m_path, GetParam());
    ASSERT_NE(seen, nullptr);
    app.Go();
    m_traced = app.Reported();
    m_lost = app.Reported();
    EXPECT_EQ(app.Wait(), 0);
    EXPECT_TRUE(ReadTrc(m_path).whole);
    struct stat status {};
    EXPECT_EQ(stat(m_path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0600u);
  }
  static void TraceFrom(int first) {
    for (int i = first; i < first + 100; ++i) QUOR_TRACE_INFO(moved_point, "{}", i);
    EXPECT_EQ(quor_flush(10000), 1);
  }
  void ExpectSecondHalf() {
    EXPECT_EQ(m_lost, 0u);
    const FileTraces file = ReadTrc(m_path);
    ASSERT_EQ(file.texts.size(), 100u);
    EXPECT_EQ(file.texts.front(), "100");
    EXPECT_EQ(file.numbers.back(), 200u);
  }
  FakeService m_service;
  const std::string m_folder = m_service.Folder() + "/f", m_path = m_folder + "/a.trc";
  const bool m_made = std::filesystem::create_directory(m_folder);
  std::uint64_t m_traced = 0, m_lost = 0;
};

TEST_P(MovedFile, ThatIsRemovedIsBegunAnew) {
  Run([this] { std::filesystem::remove(m_path); });
  ExpectSecondHalf();
}

TEST_P(MovedFile, ThatIsReplacedIsBegunAnewAndTheOtherOneIsKept) {
  Run([this] {
    std::ofstream(m_folder + "/other") << "precious";
    std::filesystem::rename(m_folder + "/other", m_path);
  });
  ExpectSecondHalf();
  std::string kept;
  std::ifstream(m_folder + "/a.1.trc") >> kept;
  EXPECT_EQ(kept, "precious");
}

TEST_P(MovedFile, ThatIsEmptiedIsReadableAgain) {
  Run([this] { std::filesystem::resize_file(m_path, 0); });
  ExpectSecondHalf();
}

TEST_P(MovedFile, ThatIsCutShortIsKeptUnderANumber) {
  Run([this] { std::filesystem::resize_file(m_path, 300); });
  ExpectSecondHalf();
  EXPECT_EQ(std::filesystem::file_size(m_folder + "/a.1.trc"), 300u);
}

TEST_P(MovedFile, ThatIsMovedAwayIsBegunAnewWithinASecondAndNothingIsLost) {
  const std::string moved = m_folder + "/moved.trc";
  Run([&] { std::filesystem::rename(m_path, moved); },
      [this] {
        EXPECT_TRUE(WaitFor([this] {
          TraceFrom(0);
          return std::filesystem::exists(m_path);
        }));
      });
  EXPECT_EQ(m_lost, 0u);
  EXPECT_TRUE(ReadTrc(moved).whole);
  EXPECT_EQ(ReadTrc(moved).texts.size() + ReadTrc(m_path).texts.size(), m_traced);
}

TEST_P(MovedFile, WhoseFolderHasGoneIsWaitedForAndTheLossIsReported) {
  Run([this] { std::filesystem::remove_all(m_folder); },
      [this] {
        EXPECT_GE(Counts().lost, 100u);
        std::filesystem::create_directory(m_folder);
        EXPECT_TRUE(WaitFor([] {
          const std::uint64_t before = Counts().lost;
          QUOR_TRACE_INFO(moved_point, "again");
          quor_flush(10000);
          return Counts().lost == before;
        }));
      });
  const FileTraces file = ReadTrc(m_path);
  ASSERT_FALSE(file.texts.empty());
  EXPECT_EQ(file.texts[0],
            "Quor/Loss: " + std::to_string(m_lost) + " traces lost: the file could not be written");
  EXPECT_EQ(100 + m_lost + file.texts.size() - 1, m_traced);
}

// A process that no longer sees the name still has the file.
TEST_P(MovedFile, ThatCannotBeBegunAnewIsWrittenOn) {
  const std::string away = m_service.Folder() + "/away";
  Run([&] { std::filesystem::rename(m_folder, away); },
      [&] {
        for (const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1300);
             std::chrono::steady_clock::now() < end; poll(nullptr, 0, 20))
          TraceFrom(0);
        std::filesystem::rename(away, m_folder);
      });
  EXPECT_EQ(m_lost, 0u);
  EXPECT_EQ(ReadTrc(m_path).texts.size(), m_traced);
}

INSTANTIATE_TEST_SUITE_P(Sinks, MovedFile, testing::Values("flush=1;", "flush=0;"));

}  // namespace

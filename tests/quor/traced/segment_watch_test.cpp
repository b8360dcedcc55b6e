// Files that come faster than they can be looked at.
#include "quor/segments/segment_watch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <set>

#include "support/temp_dir.h"
#include "support/wait_for.h"

namespace {

class SegmentWatchTest : public testing::Test, public SegmentWatch::Finder {
 protected:
  void SetUp() override { ASSERT_TRUE(m_watch.Open(m_place.File("quord.sock"), nullptr)); }
  // A complete file of that name.
  void Show(const std::string& name) const {
    const std::string path = m_place.File("segments/" + name), hidden = path + ".new";
    close(open(hidden.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    ASSERT_EQ(rename(hidden.c_str(), path.c_str()), 0);
  }
  void ShowMany(int count) const {
    for (int i = 0; i < count; ++i) Show("file" + std::to_string(i));
  }
  // How many were reported when others had their first turn.
  int ReportedAtTurn() {
    int reported = -1;
    m_onFirst = [&] { asio::post(m_io, [&] { reported = m_reports; }); };
    EXPECT_TRUE(WaitFor([&] { return m_io.poll_one(), reported >= 0; }));
    return reported;
  }
  bool AreReported(std::size_t files) {
    return WaitFor([&] { return m_io.poll(), m_names.size() == files; });
  }

  asio::io_context m_io;
  const TempDir m_place;
  SegmentWatch m_watch{m_io, *this};
  std::set<std::string> m_names;
  int m_reports = 0;
  useconds_t m_lookUs = 500;  // at a file

 private:
  void OnFile(const std::string& name) override {
    if (m_onFirst) std::exchange(m_onFirst, nullptr)();
    usleep(m_lookUs);
    ++m_reports;
    m_names.insert(name);
  }
  void OnPlaceChanged() override {}

  std::function<void()> m_onFirst;
};

TEST_F(SegmentWatchTest, ManyNewFilesLeaveOthersTheirTurnAndAllAreReported) {
  ShowMany(400);
  const int atTurn = ReportedAtTurn();
  EXPECT_GE(atTurn, 1);
  EXPECT_LT(atTurn, 100);
  EXPECT_TRUE(AreReported(400));
  EXPECT_EQ(m_reports, 400);
}

TEST_F(SegmentWatchTest, AllAreReportedInTurnsAsWell) {
  ShowMany(400);
  EXPECT_TRUE(AreReported(400));
  m_names.clear();
  m_reports = 0;
  m_watch.ReportAllSoon();
  EXPECT_LT(ReportedAtTurn(), 100);
  EXPECT_TRUE(AreReported(400));
}

TEST_F(SegmentWatchTest, AfterAnOverflowOfTheKernelsQueueNoFileIsMissed) {
  m_lookUs = 0;
  std::size_t most = 0;
  FILE* const limit = fopen("/proc/sys/fs/inotify/max_queued_events", "re");
  ASSERT_TRUE(limit && fscanf(limit, "%zu", &most) == 1);
  fclose(limit);
  for (std::size_t i = 0; i <= most; i += 2) {
    Show("one");
    Show("two");
  }
  Show("late");  // its event finds no room
  EXPECT_TRUE(WaitFor([&] { return m_io.poll_one(), m_names.contains("late"); }));
}

TEST_F(SegmentWatchTest, WhoWaitsForOneFileGetsItAtOnce) {
  Show("mine");
  m_watch.Read();
  EXPECT_TRUE(m_names.contains("mine"));
}

}  // namespace

// The folder in which applications leave their traces goes away or is replaced under a service.
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <quor/quor.hpp>

#include "quord_client.h"

namespace {

namespace fs = std::filesystem;

QUOR_POINT(connect_point, "Net", "Connect");

constexpr int kShortLives = 20;

class WithService {
 protected:
  ~WithService() {
    for (const std::string& folder : m_leftovers) fs::remove_all(folder);
    fs::path moved = quord.Folder().File("moved");
    if (fs::is_symlink(moved)) fs::remove_all(fs::read_symlink(moved));
  }
  std::string Segments() const { return quord.Folder().File("segments"); }

  std::vector<std::string> m_leftovers;
  QuordProcess quord;
  QuordClient monitor;
};

class BusyApplication : public WithService, public ::testing::Test {};

class SegmentsGone : public WithService, public ::testing::TestWithParam<const char*> {
 protected:
  // Where a link leads, or the folder itself.
  void Damage(const std::string& how) {
    const std::string segments = Segments(), target = fs::canonical(segments);
    const std::string beside = target + "-beside";
    if (how == "removed") {
      fs::remove_all(target);
    } else if (how == "moved") {
      fs::rename(segments, quord.Folder().File("moved"));
    } else if (how == "target moved") {
      fs::rename(target, beside);
    } else if (how == "a file") {
      fs::remove_all(target);
      fs::remove(segments);
      quord.Folder().File("segments", "text");
    } else if (how == "replaced") {
      fs::create_directory(beside);
      chmod(beside.c_str(), 0700);
      fs::remove_all(target);
      fs::remove(segments);
      fs::create_symlink(beside, segments);
    } else {
      ASSERT_EQ(how, "open to others");
      ASSERT_EQ(chmod(target.c_str(), 0777), 0);
    }
    m_leftovers = {target, beside};
  }
  bool Sums(std::uint64_t traces) {
    return WaitFor([&] { return monitor.Pump(), monitor.Sum() >= traces; }) &&
           monitor.Sum() == traces;
  }
};

TEST_P(SegmentsGone, WhatShortLivesTraceThenIsDeliveredAndWhoRunsGoesOn) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild longLife([](TracedChild& self) {
    for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    self.Report(1);
    self.AwaitGo();
    for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    self.AwaitGo();
    return 0;
  });
  ASSERT_EQ(longLife.Reported(), 1u);
  ASSERT_TRUE(Sums(100));
  Damage(GetParam());
  for (int i = 0; i < kShortLives; ++i) {
    TracedChild shortLife([](TracedChild&) {
      QUOR_TRACE_INFO(connect_point, "short");
      return kill(getpid(), SIGKILL);
    });
    EXPECT_EQ(shortLife.Wait(), 1000 + SIGKILL);
  }
  EXPECT_TRUE(Sums(100 + kShortLives)) << monitor.Sum();
  longLife.Go();
  EXPECT_TRUE(Sums(200 + kShortLives)) << monitor.Sum();
  longLife.Go();
  EXPECT_EQ(longLife.Wait(), 0);
  struct stat status {};
  EXPECT_TRUE(WaitFor([&] {
    return stat(Segments().c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           (status.st_mode & 0777) == 0700;
  }));
}

// If the socket's folder is on a disk, the folder of the segments is elsewhere, and nobody else
// would remove it.
TEST_F(BusyApplication, HoldsTheFolderWhenTheServiceEndsAndAnEmptyOneGoesWithIt) {
  quord.Start();
  const std::string empty = fs::canonical(Segments());
  const bool elsewhere = fs::is_symlink(Segments());
  EXPECT_EQ(quord.Stop(), 0);
  EXPECT_EQ(fs::exists(empty), !elsewhere);
  EXPECT_EQ(fs::is_symlink(Segments()), false);

  quord.Start();
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(connect_point, "one");
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  ASSERT_EQ(app.Reported(), 1u);
  const std::string held = fs::canonical(Segments());
  EXPECT_EQ(quord.Stop(), 0);
  EXPECT_TRUE(fs::exists(held));
  EXPECT_EQ(fs::canonical(Segments()).string(), held);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

// Nothing wakes it: the killed service was just polling, and the next cannot find the file.
TEST_F(BusyApplication, ComesToTheNextServiceThatWatchesAnotherFolder) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild busy([](TracedChild&) {
    for (;;) {
      QUOR_TRACE_INFO(connect_point, "busy");
      usleep(300);
    }
    return 0;
  });
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.delivered > 1000; }));
  const std::string segments = fs::canonical(Segments());
  quord.Kill();
  fs::rename(segments, segments + "-beside");
  m_leftovers = {segments, segments + "-beside"};
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  const std::uint64_t before = monitor.delivered;
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.delivered > before + 100; }));
}

TEST_F(BusyApplication, NeedsNobodysLockForItsFirstTraceAndTheFolderIsSeenWhenItIsThereAgain) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  const int holder = open(quord.Folder().Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(holder, LOCK_EX), 0);
  const std::string segments = fs::canonical(Segments());
  m_leftovers = {segments};
  fs::remove_all(segments);
  if (fs::is_symlink(Segments())) fs::remove(Segments());
  TracedChild first([](TracedChild& self) {
    QUOR_TRACE_INFO(connect_point, "first");
    self.Report(static_cast<std::uint64_t>(quor_flush(20000)));
    return 0;
  });
  EXPECT_EQ(first.Reported(), 1u);
  EXPECT_EQ(first.Wait(), 0);
  EXPECT_TRUE(monitor.Sees("first"));
  EXPECT_FALSE(fs::exists(Segments()));
  close(holder);
  TracedChild next([](TracedChild&) {
    QUOR_TRACE_INFO(connect_point, "next");
    return kill(getpid(), SIGKILL);
  });
  EXPECT_EQ(next.Wait(), 1000 + SIGKILL);
  EXPECT_TRUE(monitor.Sees("next"));
}

INSTANTIATE_TEST_SUITE_P(Each, SegmentsGone,
                         testing::Values("removed", "moved", "target moved", "a file", "replaced",
                                         "open to others"));

}  // namespace

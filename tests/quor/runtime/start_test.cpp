// A process whose first traces find no memory to go to: they are counted, and when there is some
// the later ones are delivered and the count is reported.
#include <sys/prctl.h>
#include <sys/resource.h>

#include <atomic>
#include <filesystem>
#include <thread>
#include <vector>

#include "fake_service.h"
#include "quor/quor.hpp"
#include "support/system_lacks.h"
#include "support/temp_dir.h"

namespace {

QUOR_POINT(start_point, "Start", "Step");

void TraceTimes(int times) {
  for (int i = 0; i < times; ++i) QUOR_TRACE_INFO(start_point, "early");
}

// Traces until one is not lost; it is tried again after a pause.
void TraceUntilDelivered() {
  EXPECT_TRUE(WaitFor([] {
    const std::uint64_t before = Counts().lost;
    QUOR_TRACE_INFO(start_point, "late");
    return Counts().lost == before;
  }));
}

void ReportCounts(TracedChild& self) {
  const quor_counts counts = Counts();
  self.Report(counts.traced);
  self.Report(counts.lost);
}

// Each trace of the child was seen or is known as lost.
void ExpectAllReported(TracedChild& app, SeenApp& seen, std::uint64_t atLeast) {
  const std::uint64_t traced = app.Reported(), lost = app.Reported();
  EXPECT_GE(lost, atLeast);
  EXPECT_LT(lost, traced);
  EXPECT_TRUE(WaitFor([&] { return seen.Has("last"); }));
  EXPECT_EQ(seen.m_drops, lost);
  EXPECT_EQ(seen.m_traces.size(), traced - lost);
}

struct Lack {
  const char* name;
  __rlimit_resource_t what;
  rlim_t most;
};

class FailedStart : public testing::TestWithParam<Lack> {
 protected:
  FakeService m_service;
};

TEST_P(FailedStart, IsTriedAgainAndTellsWhatWasLost) {
  TracedChild app([](TracedChild& self) {
    {
      const SoftLimit limit(GetParam().what, GetParam().most);
      TraceTimes(10);
      EXPECT_EQ(Counts().lost, 10u);
    }
    TraceUntilDelivered();
    QUOR_TRACE_INFO(start_point, "last");
    ReportCounts(self);
    self.AwaitGo();
    return 0;
  });
  const auto seen = m_service.Accept();
  ASSERT_NE(seen, nullptr);
  ExpectAllReported(app, *seen, 10);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST_P(FailedStart, OfAForksChildIsTriedAgainToo) {
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(start_point, "parent");
    self.AwaitGo();
    const pid_t child = fork();
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);  // where the test fails it is not to stay behind
      {
        const SoftLimit limit(GetParam().what, GetParam().most);
        TraceTimes(10);
      }
      TraceUntilDelivered();
      QUOR_TRACE_INFO(start_point, "last");
      ReportCounts(self);
      self.AwaitGo();
      _exit(0);
    }
    EXPECT_EQ(WaitForExit(child), 0);
    EXPECT_EQ(Counts().lost, 0u);
    return 0;
  });
  const auto parent = m_service.Accept();
  ASSERT_NE(parent, nullptr);
  ASSERT_TRUE(WaitFor([&] { return parent->Has("parent"); }));
  app.Go();
  const auto child = m_service.Accept();
  ASSERT_NE(child, nullptr);
  ExpectAllReported(app, *child, 10);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST_P(FailedStart, IsTriedAtTheEndOfTheProcessSoThatTheLossIsReported) {
  TracedChild app([](TracedChild&) {
    {
      const SoftLimit limit(GetParam().what, GetParam().most);
      TraceTimes(10);
    }
    exit(0);
    return 1;
  });
  EXPECT_EQ(app.Wait(), 0);
  const auto seen = m_service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->Finish();
  EXPECT_EQ(seen->m_drops, 10u);
  EXPECT_TRUE(seen->m_traces.empty());
}

// Many threads meet the moment in which there is a ring at last.
TEST_P(FailedStart, WithManyThreadsLosesNoCount) {
  TracedChild app([](TracedChild& self) {
    std::vector<std::thread> threads;
    std::atomic<bool> limited{false};
    // Before the limit: a sanitizer that looks at a new thread needs descriptors.
    for (int t = 0; t < 4; ++t)
      threads.emplace_back([&limited] {
        while (!limited) std::this_thread::yield();
        TraceUntilDelivered();
        TraceTimes(100);
      });
    {
      const SoftLimit limit(GetParam().what, GetParam().most);
      limited = true;
      EXPECT_TRUE(WaitFor([] { return Counts().lost >= 100; }));
    }
    for (std::thread& thread : threads) thread.join();
    QUOR_TRACE_INFO(start_point, "last");
    ReportCounts(self);
    self.AwaitGo();
    return 0;
  });
  const auto seen = m_service.Accept();
  ASSERT_NE(seen, nullptr);
  ExpectAllReported(app, *seen, 100);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST_P(FailedStart, KeepsTheNameOfAThreadUntilThereIsARing) {
  TracedChild app([](TracedChild& self) {
    {
      const SoftLimit limit(GetParam().what, GetParam().most);
      quor_thread_name("forgotten");
      quor_thread_name("worker");
      TraceTimes(1);
      EXPECT_EQ(Counts().lost, 1u);
    }
    TraceUntilDelivered();
    std::thread([] { QUOR_TRACE_INFO(start_point, "another"); }).join();
    QUOR_TRACE_INFO(start_point, "last");
    self.AwaitGo();
    return 0;
  });
  const auto seen = m_service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("last"); }));
  for (const SeenTrace& trace : seen->m_traces)
    EXPECT_EQ(trace.tid == "worker", trace.text != "another") << trace.text << " " << trace.tid;
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Lacks, FailedStart,
                         testing::Values(Lack{"Descriptors", RLIMIT_NOFILE, 0},
                                         Lack{"FileSize", RLIMIT_FSIZE, 1 << 20}),
                         [](const auto& lack) { return std::string(lack.param.name); });

// Memory alone would keep traces that no service ever gets: the link needs a descriptor too.
TEST(StartWithLittle, WithASingleDescriptorCountsItsTracesAsLost) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    const int free = dup(0);
    close(free);
    {
      const SoftLimit limit(RLIMIT_NOFILE, static_cast<rlim_t>(free) + 1);
      TraceTimes(10);
      EXPECT_EQ(Counts().lost, 10u);
    }
    TraceUntilDelivered();
    QUOR_TRACE_INFO(start_point, "last");
    ReportCounts(self);
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ExpectAllReported(app, *seen, 10);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

bool HasLinkThread() {
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task"))
    if (ReadIfThere(task.path() / "comm") == "quor\n") return true;
  return false;
}

void TraceFormatted() {
  quor_tracef(&start_point, QUOR_INFO, nullptr, 0, "%s", "formatted");
}

struct LaterCall {
  const char* name;
  void (*call)();
};

class RefusedThread : public testing::TestWithParam<LaterCall> {};

TEST_P(RefusedThread, IsStartedByALaterCallAndTheLinkComes) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    {
      const NoThreads none;
      QUOR_TRACE_INFO(start_point, "early");
      EXPECT_FALSE(HasLinkThread());
    }
    EXPECT_TRUE(WaitFor([] { return GetParam().call(), HasLinkThread(); }));
    QUOR_TRACE_INFO(start_point, "last");
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  EXPECT_TRUE(WaitFor([&] { return seen->Has("last"); }));
  EXPECT_TRUE(seen->Has("early"));
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, RefusedThread,
    testing::Values(LaterCall{"Application", [] { quor_application("orders"); }},
                    LaterCall{"Register", [] { quor_register(&start_point); }},
                    LaterCall{"ThreadName", [] { quor_thread_name("worker"); }},
                    LaterCall{"Flush", [] { quor_flush(0); }},
                    LaterCall{"Formatted", TraceFormatted}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace

// Traces of real processes, as the service at the other end of the link sees them.
#include <pthread.h>
#include <sys/prctl.h>

#include <cstring>
#include <set>
#include <thread>

#include "fake_service.h"
#include "quor/quor.hpp"

#if defined(__SANITIZE_THREAD__)
// A child of a process with threads starts a thread of its own here: that is what is tested.
extern "C" const char* __tsan_default_options() {
  return "die_after_fork=0";
}
#endif

namespace {

QUOR_POINT(connect_point, "Net", "Connect");
QUOR_POINT(query_point, "Database", "Query");

TEST(Live, ATraceArrivesWithAllThatItKnowsOfItself) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    QUOR_TRACE_AT(connect_point, QUOR_WARN, "connected to {} in {} ms", std::string("db"), 12);
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("connected to db in 12 ms"); }));
  const SeenTrace& trace = seen->m_traces.front();
  EXPECT_EQ(seen->m_hello.app, "orders");
  EXPECT_EQ(seen->m_hello.pid, static_cast<std::uint32_t>(app.Pid()));
  EXPECT_EQ(trace.app, "orders");
  EXPECT_EQ(trace.component, "Net");
  EXPECT_EQ(trace.category, "Connect");
  EXPECT_EQ(trace.pid, std::to_string(app.Pid()));
  EXPECT_EQ(trace.tid, std::to_string(app.Pid()));  // the main thread's kernel id is the process's
  EXPECT_EQ(trace.attributes, kAttributeWarn);
  EXPECT_EQ(trace.count, 0u);
  EXPECT_EQ(trace.file, "");
  EXPECT_EQ(trace.line, 0u);
  char host[256] = {};
  gethostname(host, sizeof host - 1);
  EXPECT_EQ(trace.machine, std::string(host).substr(0, std::string(host).find('.')));
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Live, DateAndTimeAreUtcAndTheTicCountIsPicosecondsOfTheMonotonicClock) {
  FakeService service;
  timespec before{}, after{};
  const auto wall = std::chrono::system_clock::now();
  clock_gettime(CLOCK_MONOTONIC, &before);
  TracedChild app([](TracedChild& self) {
    for (int i = 0; i < 300; ++i) {
      QUOR_TRACE_INFO(connect_point, "tick");
      poll(nullptr, 0, i % 10 == 0 ? 1 : 0);  // beyond the first lines of the clock
    }
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  app.Reported();
  clock_gettime(CLOCK_MONOTONIC, &after);
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_traces.size() == 300;
  }));
  const auto ps = [](const timespec& time) {
    return (static_cast<std::uint64_t>(time.tv_sec) * 1000000000u +
            static_cast<std::uint64_t>(time.tv_nsec)) *
           1000u;
  };
  std::uint64_t last = ps(before);
  for (const SeenTrace& trace : seen->m_traces) {
    EXPECT_GE(trace.ticPs + 2'000'000,
              last);  // the line and the kernel's clock agree to less than 2 us
    EXPECT_LE(trace.ticPs, ps(after) + 2'000'000);
    last = trace.ticPs;
  }
  const time_t seconds = std::chrono::system_clock::to_time_t(wall);
  tm utc{};
  gmtime_r(&seconds, &utc);
  const UnpackedDate date = UnpackDate(seen->m_traces.front().date);
  const UnpackedTime time = UnpackTime(seen->m_traces.front().time);
  tm traced{};
  traced.tm_year = static_cast<int>(date.year) - 1900;
  traced.tm_mon = static_cast<int>(date.month) - 1;
  traced.tm_mday = static_cast<int>(date.day);
  traced.tm_hour = static_cast<int>(time.hour);
  traced.tm_min = static_cast<int>(time.minute);
  traced.tm_sec = static_cast<int>(time.second);
  EXPECT_NEAR(static_cast<double>(timegm(&traced)), static_cast<double>(seconds), 5);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Live, DeclaredPointsAreInTheTraceMapBeforeTheFirstTrace) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->Pump();
  const std::vector<std::string> names = seen->PointNames();
  EXPECT_NE(std::find(names.begin(), names.end(), "Net/Connect"), names.end());
  EXPECT_NE(std::find(names.begin(), names.end(), "Database/Query"), names.end());
  EXPECT_TRUE(seen->m_traces.empty());
}

TEST(Live, WithoutANameTheApplicationIsItsExecutableAndALaterNameIsReportedAnew) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(connect_point, "early");
    self.AwaitGo();
    quor_application("late");
    QUOR_TRACE_INFO(connect_point, "named");
    self.AwaitGo();
    return 0;
  });
  auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(seen->m_hello.app, "quor_runtime_tests");
  ASSERT_TRUE(WaitFor([&] { return seen->Has("early"); }));
  seen->m_paused = true;
  app.Go();
  ASSERT_TRUE(WaitFor([&] {
    seen->Pump();
    return seen->m_ended;
  }));
  auto again = service.Accept();
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(again->m_hello.app, "late");
  EXPECT_EQ(again->m_hello.startedNs, seen->m_hello.startedNs);
  ASSERT_TRUE(WaitFor([&] { return again->Has("named"); }));
  EXPECT_EQ(again->m_traces.back().app, "late");
}

TEST(Live, SettingsSwitchedLiveTakeEffectWithinAHundredMilliseconds) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(connect_point, "first");
    for (std::uint64_t step = 0;; ++step) {
      self.AwaitGo();
      QUOR_TRACE_INFO(connect_point, "info");
      QUOR_TRACE_AT(connect_point, QUOR_INFO | QUOR_VERBOSE, "verbose");
      self.Report(step);
    }
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor([&] { return seen->Has("first"); }));
  std::uint64_t step = 0;
  // What the application traces in its next step.
  const auto traced = [&] {
    seen->Pump();
    seen->m_traces.clear();
    app.Go();
    EXPECT_EQ(app.Reported(), step++);
    seen->Pump();
    std::string texts;
    for (const SeenTrace& trace : seen->m_traces) texts += trace.text + " ";
    return texts;
  };
  EXPECT_EQ(traced(), "info ");  // Support until the service says otherwise
  const auto start = std::chrono::steady_clock::now();
  seen->SetAll(QUOR_INFO | QUOR_VERBOSE);
  EXPECT_TRUE(WaitFor([&] { return traced() == "info verbose "; }));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
  seen->SetAll(0);
  EXPECT_TRUE(WaitFor([&] { return traced().empty(); }));
  EXPECT_EQ(traced(), "") << "once off, it stays off";
}

TEST(Live, EverythingWhoseCallReturnedIsInTheRingWhenTheApplicationIsKilledInABurst) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(connect_point, "first");
    self.AwaitGo();
    for (std::uint64_t i = 0;; ++i) {
      QUOR_TRACE_INFO(connect_point, "burst {}", i);
      self.Report(i);
    }
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  app.Go();
  std::uint64_t returned = 0;
  for (int i = 0; i < 2000; ++i) returned = app.Reported();
  EXPECT_EQ(app.Kill(), 1000 + SIGKILL);
  seen->Finish();
  EXPECT_EQ(seen->m_drops, 0u);
  ASSERT_GE(seen->m_traces.size(), returned + 2);
  for (std::uint64_t i = 0; i <= returned; ++i)
    ASSERT_EQ(seen->m_traces[i + 1].text, "burst " + std::to_string(i));
}

TEST(Live, AFullRingDropsTheNewestAndCountsThemExactlyWhereItHappened) {
  FakeService service;
  setenv("QUOR_RING_MIB", "1", 1);
  TracedChild app([](TracedChild& self) {
    QUOR_TRACE_INFO(connect_point, "first");
    self.AwaitGo();
    for (int i = 0; i < 50000; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    const quor_counts counts = Counts();
    self.Report(counts.traced);
    self.Report(counts.lost);
    self.AwaitGo();
    QUOR_TRACE_INFO(connect_point, "behind the gap");
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  app.Go();
  const std::uint64_t traced = app.Reported(), lost = app.Reported();
  EXPECT_EQ(traced, 50001u);
  EXPECT_GT(lost, 0u);
  seen->Pump();
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return seen->Has("behind the gap"); }));
  EXPECT_EQ(seen->m_drops, lost);
  EXPECT_EQ(seen->m_traces.size() - 1 + seen->m_drops, traced);
  // The oldest are there, in order, up to the gap.
  for (std::size_t i = 1; i + 1 < seen->m_traces.size(); ++i)
    ASSERT_EQ(seen->m_traces[i].text, std::to_string(i - 1));
}

TEST(Live, EightThreadsHammeringLoseNothingThatIsNotCounted) {
  FakeService service;
  setenv("QUOR_RING_MIB", "32", 1);
  constexpr int kThreads = 8, kEach = 20000;
  TracedChild app([](TracedChild& self) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
      threads.emplace_back([t] {
        for (int i = 0; i < kEach; ++i) QUOR_TRACE_INFO(query_point, "{} {}", t, i);
      });
    for (std::thread& thread : threads) thread.join();
    const quor_counts counts = Counts();
    self.Report(counts.traced);
    self.Report(counts.lost);
    return quor_flush(20000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor(
      [&] {
        seen->Pump();
        return seen->m_ended;
      },
      60000));
  seen->Finish();
  const std::uint64_t traced = app.Reported(), lost = app.Reported();
  EXPECT_EQ(traced, static_cast<std::uint64_t>(kThreads) * kEach);
  EXPECT_EQ(seen->m_drops, lost);
  EXPECT_EQ(seen->m_traces.size() + seen->m_drops, traced);
  std::map<std::string, int> last;
  std::set<std::string> tids;
  for (const SeenTrace& trace : seen->m_traces) {
    int thread = 0, number = 0;
    ASSERT_EQ(std::sscanf(trace.text.c_str(), "%d %d", &thread, &number), 2);
    const auto before = last.find(trace.tid);
    ASSERT_TRUE(before == last.end() || before->second < number);
    last[trace.tid] = number;
    tids.insert(trace.tid);
  }
  EXPECT_EQ(tids.size(), static_cast<std::size_t>(kThreads));
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Live, AForkedChildIsAnApplicationOfItsOwnAndTheParentIsUntouched) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    quor_thread_name("main");
    QUOR_TRACE_INFO(connect_point, "parent before");
    const pid_t child = fork();
    if (child == 0) {
      QUOR_TRACE_INFO(query_point, "child");
      const quor_counts counts = Counts();
      self.AwaitGo();
      _exit(counts.traced == 1 ? 0 : 1);
    }
    QUOR_TRACE_INFO(connect_point, "parent after");
    self.Report(static_cast<std::uint64_t>(child));
    int status = 0;
    waitpid(child, &status, 0);
    QUOR_TRACE_INFO(connect_point, "parent at the end");
    quor_flush(10000);
    return WEXITSTATUS(status);
  });
  const pid_t childPid = static_cast<pid_t>(app.Reported());
  std::unique_ptr<SeenApp> parent, child;
  for (int i = 0; i < 2; ++i) {
    auto one = service.Accept();
    ASSERT_NE(one, nullptr);
    (one->m_hello.pid == static_cast<std::uint32_t>(childPid) ? child : parent) = std::move(one);
  }
  ASSERT_TRUE(parent && child);
  ASSERT_TRUE(WaitFor([&] { return child->Has("child"); }));
  EXPECT_EQ(child->m_traces.size(), 1u);
  EXPECT_EQ(child->m_traces[0].pid, std::to_string(childPid));
  EXPECT_EQ(child->m_traces[0].tid, "main");  // a name given by the application stays
  EXPECT_EQ(child->m_traces[0].app, "orders");
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return parent->Has("parent at the end"); }));
  EXPECT_EQ(parent->m_traces.size(), 3u);
  EXPECT_EQ(parent->m_traces[1].text, "parent after");
  EXPECT_EQ(parent->m_traces[1].pid, std::to_string(app.Pid()));
  ASSERT_TRUE(WaitFor([&] {
    child->Pump();
    return child->m_ended;
  }));
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Live, AStormOfSignalHandlersThatTraceLosesNothing) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    static std::atomic<int> handled{0};
    static constexpr char kText[] = "in the handler";
    quor_application("storm");
    struct sigaction action {};
    action.sa_handler = [](int) {
      quor_trace(&query_point, QUOR_ERROR, nullptr, 0, kText, sizeof kText - 1);
      handled.fetch_add(1);
    };
    sigaction(SIGALRM, &action, nullptr);
    const itimerval often{{0, 100}, {0, 100}};
    setitimer(ITIMER_REAL, &often, nullptr);
    std::thread other([] {
      for (int i = 0; i < 20000; ++i) QUOR_TRACE_INFO(connect_point, "thread {}", i);
    });
    int made = 20000;
    while (handled.load() < 500) {
      QUOR_TRACE_INFO(connect_point, "plain {}", made++);
      // Names are entered under a lock that the handler must not wait for.
      quor_thread_name(made % 2 == 0 ? "even" : "odd");
    }
    other.join();
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    self.Report(static_cast<std::uint64_t>(made + handled.load()));
    self.Report(Counts().traced);
    return quor_flush(20000) == 1 ? 0 : 1;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  ASSERT_TRUE(WaitFor(
      [&] {
        seen->Pump();
        return seen->m_ended;
      },
      60000));
  seen->Finish();
  const std::uint64_t made = app.Reported(), traced = app.Reported();
  EXPECT_EQ(made, traced);
  EXPECT_EQ(seen->m_traces.size() + seen->m_drops, traced);
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Live, APointThatIsOffDoesNotEvaluateItsArguments) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    int evaluated = 0;
    const auto touch = [&] { return ++evaluated; };
    // Even at its first use, before it is registered.
    QUOR_TRACE_AT(connect_point, QUOR_INFO | QUOR_DEVELOPER, "{}", touch());
    QUOR_BLOCK_AT(connect_point, QUOR_INFO | QUOR_DEVELOPER, "{}", touch());
    self.AwaitGo();
    while (quor_on(&connect_point, QUOR_INFO)) poll(nullptr, 0, 1);
    QUOR_TRACE_INFO(connect_point, "{}", touch());
    return evaluated;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->SetAll(0);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST(Live, LocationAndStackAreRecordedOnDemand) {
  FakeService service;
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    while (!quor_on(&connect_point, QUOR_VERBOSE)) poll(nullptr, 0, 1);
    QUOR_TRACE_AT(connect_point, QUOR_INFO, "where {}", 1);
    self.AwaitGo();
    return 0;
  });
  const auto seen = service.Accept();
  ASSERT_NE(seen, nullptr);
  seen->SetAll(QUOR_INFO | QUOR_VERBOSE | QUOR_LOCATION | QUOR_STACK);
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return seen->Has("where 1"); }));
  const SeenTrace& trace = seen->m_traces.back();
  EXPECT_EQ(trace.file, __FILE__);
  EXPECT_GT(trace.line, 100u);
  // Newest first, one a line, none of the library's own; the test's frames come from this program.
  EXPECT_EQ(trace.stack.find(std::filesystem::canonical("/proc/self/exe").string() + "+0x"), 0u)
      << trace.stack;
  EXPECT_EQ(trace.stack.find("libquor"), std::string::npos) << trace.stack;
  EXPECT_NE(trace.stack.find("]\nquor_runtime_tests+0x"), std::string::npos) << trace.stack;
  EXPECT_NE(trace.stack.find("/libc.so.6+0x"), std::string::npos) << trace.stack;
}

}  // namespace

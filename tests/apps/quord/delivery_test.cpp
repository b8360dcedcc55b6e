// Traces of real processes through a real service to real monitors: everything that was sent is
// delivered or counted.
#include <poll.h>

#include <chrono>
#include <quor/quor.hpp>

#include "quord_client.h"

namespace {

QUOR_POINT(connect_point, "Net", "Connect");
QUOR_POINT(query_point, "Db", "Query");

quor_counts Counts() {
  quor_counts counts{};
  quor_get_counts(&counts);
  return counts;
}

class Delivery : public ::testing::Test {
 protected:
  QuordProcess quord;
};

TEST_F(Delivery, ATraceGoesFromTheTracePointToTheMonitorWithItsNames) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild&) {
    quor_application("orders");
    QUOR_TRACE_INFO(connect_point, "hello {}", 1);
    QUOR_TRACE_INFO(query_point, "select");
    return quor_flush(10000) == 1 ? 0 : 1;
  });
  ASSERT_TRUE(monitor.Sees("select"));
  EXPECT_EQ(app.Wait(), 0);
  ASSERT_EQ(monitor.traces.size(), 2u);
  const SeenTrace& first = monitor.traces[0];
  EXPECT_EQ(first.app, "orders");
  EXPECT_EQ(first.component + "/" + first.category, "Net/Connect");
  EXPECT_EQ(first.text, "hello 1");
  EXPECT_EQ(first.number + 1, monitor.traces[1].number);
  EXPECT_EQ(monitor.delivered, 2u);
  EXPECT_EQ(monitor.lost, 0u);
}

TEST_F(Delivery, AnApplicationKilledInABurstDeliversEveryTraceWhoseCallReturned) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild& self) {
    quor_application("burst");
    QUOR_TRACE_INFO(connect_point, "first");
    self.AwaitGo();
    for (std::uint64_t i = 0;; ++i) {
      QUOR_TRACE_INFO(connect_point, "burst {}", i);
      self.Report(i);
    }
    return 0;
  });
  ASSERT_TRUE(monitor.Sees("first"));
  app.Go();
  std::uint64_t returned = 0;
  for (int i = 0; i < 3000; ++i) returned = app.Reported();
  app.Kill();
  ASSERT_TRUE(quord.Says("application burst (") && quord.Says("has ended"));
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.traces.size() >= returned + 2; }));
  EXPECT_LE(monitor.lost, 1u) << "the one that was just being written";
  for (std::uint64_t i = 0; i <= returned; ++i)
    ASSERT_EQ(monitor.traces[i + 1].text, "burst " + std::to_string(i));
}

TEST_F(Delivery, AnApplicationThatEndsBeforeTheServiceLooksIsDeliveredAsAWhole) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  kill(quord.Pid(), SIGSTOP);
  TracedChild app([](TracedChild&) {
    quor_application("short");
    for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    std::exit(0);  // waits until the hello is sent: then the kernel keeps the segment for us
    return 1;
  });
  const int status = app.Wait();
  kill(quord.Pid(), SIGCONT);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Count("short") == 100; }))
      << monitor.Count("short");
}

TEST_F(Delivery, ATraceAfterAPauseDoesNotWaitForABatchToFill) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  constexpr int kTimes = 20;
  TracedChild app([](TracedChild& self) {
    quor_application("seldom");
    for (int i = 0; i < kTimes; ++i) {
      self.AwaitGo();
      QUOR_TRACE_INFO(connect_point, "number {}", i);
    }
    return 0;
  });
  // A batch that waits to fill takes 20 ms. Only some need to be faster: the machine may be busy.
  int fast = 0;
  for (int i = 0; i < kTimes; ++i) {
    poll(nullptr, 0, 30);  // the pause
    const auto start = std::chrono::steady_clock::now();
    app.Go();
    ASSERT_TRUE(monitor.Sees("number " + std::to_string(i)));
    fast += std::chrono::steady_clock::now() - start < std::chrono::milliseconds(15);
  }
  EXPECT_GE(fast, 5);
  EXPECT_EQ(app.Wait(), 0);
}

TEST_F(Delivery, AFullRingIsALossThatIsCountedExactlyWhereItHappened) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  setenv("QUOR_RING_MIB", "1", 1);
  TracedChild app([](TracedChild& self) {
    quor_application("full");
    QUOR_TRACE_INFO(connect_point, "first");
    self.AwaitGo();
    for (int i = 0; i < 50000; ++i) QUOR_TRACE_INFO(connect_point, "number {}", i);
    self.Report(Counts().traced);
    self.Report(Counts().lost);
    self.AwaitGo();
    QUOR_TRACE_INFO(connect_point, "last");
    self.AwaitGo();
    return 0;
  });
  unsetenv("QUOR_RING_MIB");
  ASSERT_TRUE(monitor.Sees("first"));
  kill(quord.Pid(), SIGSTOP);
  app.Go();
  const std::uint64_t traced = app.Reported(), lost = app.Reported();
  EXPECT_GT(lost, 0u);
  kill(quord.Pid(), SIGCONT);
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.delivered + monitor.lost == traced; }));
  app.Go();
  ASSERT_TRUE(monitor.Sees("last"));
  EXPECT_EQ(monitor.lost, lost);
  EXPECT_EQ(monitor.delivered, traced + 1 - lost);
  ASSERT_FALSE(monitor.losses.empty());
  std::uint64_t reported = 0;
  for (const std::string& words : monitor.losses) {
    EXPECT_NE(words.find(" traces lost: the ring of the application was full"), words.npos);
    reported += std::stoull(words);
  }
  EXPECT_EQ(reported, lost);
}

TEST_F(Delivery, FiftyApplicationsAtOnceAndEightMonitorsGetEverything) {
  quord.Start();
  constexpr int kApps = 50, kEach = 400;
  std::vector<std::unique_ptr<QuordClient>> monitors;
  for (int i = 0; i < 8; ++i) {
    monitors.push_back(std::make_unique<QuordClient>());
    ASSERT_TRUE(monitors.back()->Monitor(quord.SocketPath()));
  }
  setenv("QUOR_RING_MIB", "1", 1);
  std::vector<std::unique_ptr<TracedChild>> apps;
  for (int a = 0; a < kApps; ++a)
    apps.push_back(std::make_unique<TracedChild>([a](TracedChild&) {
      quor_application(("app " + std::to_string(a)).c_str());
      for (int i = 0; i < kEach; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
      return quor_flush(20000) == 1 ? 0 : 1;
    }));
  unsetenv("QUOR_RING_MIB");
  ASSERT_TRUE(WaitFor([&] {
    bool all = true;
    for (const auto& monitor : monitors) {
      monitor->Pump();
      all = all && monitor->delivered + monitor->lost >= kApps * kEach;
    }
    return all;
  }));
  for (const auto& app : apps) EXPECT_EQ(app->Wait(), 0);
  for (const auto& monitor : monitors) {
    EXPECT_EQ(monitor->delivered, std::uint64_t{kApps * kEach});
    EXPECT_EQ(monitor->lost, 0u);
    std::map<std::string, int> next;
    std::uint32_t number = monitor->traces.front().number;
    for (const SeenTrace& trace : monitor->traces) {
      ASSERT_EQ(trace.text, std::to_string(next[trace.app]++)) << trace.app;
      ASSERT_EQ(trace.number, number++);
    }
    EXPECT_EQ(next.size(), std::size_t{kApps});
  }
}

TEST_F(Delivery, AServiceKilledAndRestartedUnderLoadIsACountedGap) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild& self) {
    quor_application("steady");
    for (std::uint64_t i = 0; i <= 60000; ++i) {
      QUOR_TRACE_INFO(connect_point, "{}", i);
      if (i % 100 == 0) poll(nullptr, 0, 1);
      if (i == 20000) self.Report(i);
    }
    self.AwaitGo();
    QUOR_TRACE_INFO(connect_point, "last");
    self.Report(Counts().traced);
    quor_flush(20000);
    self.AwaitGo();
    return 0;
  });
  monitor.keepTraces = false;
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.delivered > 10000; }));
  app.Reported();
  quord.Kill();
  monitor.Pump();
  EXPECT_TRUE(monitor.ended);
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  monitor.keepTraces = true;
  app.Go();
  ASSERT_TRUE(monitor.Sees("last"));
  const std::uint64_t traced = app.Reported();
  // What the ring held was kept; what the dead service had taken and not handed out is the gap.
  ASSERT_EQ(monitor.serials.size(), 1u);
  EXPECT_EQ(monitor.serials.begin()->second, traced);
  EXPECT_EQ(monitor.delivered + monitor.lost + monitor.gaps, traced);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST_F(Delivery, AStalledMonitorHoldsUpNobodyAndItsLossIsCounted) {
  quord.Start();
  QuordClient fast, stalled;
  ASSERT_TRUE(fast.Monitor(quord.SocketPath()));
  ASSERT_TRUE(stalled.Monitor(quord.SocketPath()));
  fast.keepTraces = stalled.keepTraces = false;
  constexpr std::uint64_t kTraces = 120000, kAtATime = 1000;
  TracedChild app([](TracedChild& self) {
    quor_application("flood");
    const std::string text(500, 'x');
    for (std::uint64_t i = 0; i < kTraces; ++i) {
      quor_trace(&connect_point, QUOR_INFO, nullptr, 0, text.data(), text.size());
      if ((i + 1) % kAtATime == 0) self.AwaitGo();  // the pace of the monitor that reads
    }
    self.Report(Counts().lost);
    return 0;
  });
  for (std::uint64_t sent = kAtATime; sent <= kTraces; sent += kAtATime) {
    ASSERT_TRUE(WaitFor([&] { return fast.Pump(), fast.delivered + fast.lost == sent; }));
    app.Go();
  }
  EXPECT_EQ(fast.lost, 0u);
  EXPECT_EQ(app.Reported(), 0u);
  // The stalled monitor reads again: it gets the newest traces, and a report of the others.
  ASSERT_TRUE(WaitFor([&] { return stalled.Pump(), stalled.delivered + stalled.lost == kTraces; }));
  EXPECT_GT(stalled.lost, fast.lost);
  ASSERT_FALSE(stalled.losses.empty());
  bool reported = false;
  for (const std::string& words : stalled.losses)
    reported = reported || words.find(" traces lost: the monitor is too slow") != words.npos;
  EXPECT_TRUE(reported);
}

TEST_F(Delivery, PauseHoldsAndResumeBringsTheBacklog) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild& self) {
    quor_application("paused");
    QUOR_TRACE_INFO(connect_point, "before");
    self.AwaitGo();
    for (int i = 0; i < 20000; ++i) {
      QUOR_TRACE_INFO(connect_point, "{}", i);
      if (i % 1000 == 0) quor_flush(10000);
    }
    const int left = quor_flush(10000);
    self.Report(Counts().traced);
    return left == 1 ? 0 : 1;
  });
  ASSERT_TRUE(monitor.Sees("before"));
  Request request;
  request.mutable_pause();
  EXPECT_EQ(monitor.Ask(request).error(), quor::wire::ERROR_NONE);
  app.Go();
  const std::uint64_t traced = app.Reported();
  EXPECT_EQ(app.Wait(), 0);
  monitor.Pump();
  EXPECT_EQ(monitor.delivered, 1u);
  request.Clear();
  request.mutable_resume();
  EXPECT_EQ(monitor.Ask(request).error(), quor::wire::ERROR_NONE);
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.delivered + monitor.lost == traced; }));
  // The newest 10,000, in whole batches; before them one report of all that were dropped.
  EXPECT_LE(monitor.delivered, 10001u);
  EXPECT_GT(monitor.delivered, 9000u);
  ASSERT_EQ(monitor.losses.size(), 1u);
  EXPECT_EQ(monitor.losses[0],
            std::to_string(monitor.lost) + " traces lost: the monitor is paused");
  EXPECT_EQ(monitor.traces[1].text, monitor.losses[0]);
  EXPECT_EQ(monitor.traces[2].text, std::to_string(monitor.lost));
  EXPECT_EQ(monitor.traces.back().text, "19999");
}

TEST_F(Delivery, ACleanStopBringsWhatWasTracedAndRemovesTheSocket) {
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild& self) {
    quor_application("stop");
    for (int i = 0; i < 1000; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    self.Report(quor_flush(10000) == 1);
    self.AwaitGo();
    return 0;
  });
  EXPECT_EQ(app.Reported(), 1u);
  EXPECT_EQ(quord.Stop(), 0);
  monitor.Pump();
  EXPECT_TRUE(monitor.ended);
  EXPECT_EQ(monitor.delivered, 1000u);
  EXPECT_NE(access(quord.SocketPath().c_str(), F_OK), 0);
}

}  // namespace

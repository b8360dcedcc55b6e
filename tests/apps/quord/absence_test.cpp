// Applications that end while no service runs, monitors that are away, sinks that change sides:
// everything that was sent is delivered or counted.
#include <quor/quor.hpp>

#include "quord_client.h"

namespace {

QUOR_POINT(connect_point, "Net", "Connect");

class Absence : public ::testing::Test {
 protected:
  static void Trace(int from, int to) {
    for (int i = from; i < to; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
  }
  // Traces 1000, waits for an order, traces 500 more and ends as ordered.
  static int TraceTwice(TracedChild& self, bool clean) {
    quor_application("orders");
    Trace(0, 1000);
    quor_flush(20000);
    self.Report(1);
    self.AwaitGo();
    Trace(1000, 1500);
    self.Report(2);
    if (clean) return 0;
    for (;;) pause();
  }
  void ExpectEverything(std::uint64_t traced) {
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
    EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() >= traced; })) << monitor.Sum();
    EXPECT_EQ(monitor.Sum(), traced);
  }
  QuordProcess quord;
  QuordClient monitor;
};

TEST_F(Absence, WhatAnApplicationTracedAndEndedWithWhileTheServiceWasDeadIsDeliveredByTheNext) {
  for (const bool clean : {true, false}) {
    unlink(quord.Folder().File("log").c_str());  // what the round before said is no proof
    quord.Start();
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
    const std::uint64_t before = monitor.Sum();
    TracedChild app([clean](TracedChild& self) { return TraceTwice(self, clean); });
    ASSERT_EQ(app.Reported(), 1u);
    ASSERT_TRUE(monitor.Sees("999"));
    quord.Kill();
    app.Go();
    ASSERT_EQ(app.Reported(), 2u);
    if (clean) {
      EXPECT_EQ(app.Wait(), 0);
    } else {
      app.Kill();
    }
    quord.Start();
    ExpectEverything(before + 1500);
    EXPECT_TRUE(monitor.Sees("1499"));
    EXPECT_EQ(monitor.Count("orders"), before + 1500);
    EXPECT_TRUE(quord.Says("1 applications of an earlier service"));
    quord.Stop();
  }
}

TEST_F(Absence, ItIsTheSameOverACleanStop) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild& self) { return TraceTwice(self, false); });
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_TRUE(monitor.Sees("999"));
  EXPECT_EQ(quord.Stop(), 0);
  app.Go();
  ASSERT_EQ(app.Reported(), 2u);
  app.Kill();
  quord.Start();
  ExpectEverything(1500);
  EXPECT_EQ(monitor.Count("orders"), 1500u);
}

TEST_F(Absence, AnApplicationThatLivesIsTakenOverAndGoesOn) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild& self) { return TraceTwice(self, false); });
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_TRUE(monitor.Sees("999"));
  quord.Kill();
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  app.Go();
  ASSERT_EQ(app.Reported(), 2u);
  ASSERT_TRUE(monitor.Sees("1499"));
  EXPECT_EQ(monitor.Sum(), 1500u);
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_EQ(Instances(client, "orders"), 1u);
  app.Kill();
  EXPECT_TRUE(WaitFor([&] { return Instances(client, "orders") == 0; }));
}

TEST_F(Absence, AMonitorThatWasAwayWhileAnApplicationCameToItsEndCountsWhatItMissed) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  TracedChild app([](TracedChild& self) { return TraceTwice(self, true); });
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_TRUE(monitor.Sees("999"));
  monitor.Close();
  app.Go();
  ASSERT_EQ(app.Reported(), 2u);
  EXPECT_EQ(app.Wait(), 0);
  TracedChild unknown([](TracedChild&) {
    quor_application("short");
    Trace(0, 70);
    return quor_flush(20000) == 1 ? 0 : 1;
  });
  EXPECT_EQ(unknown.Wait(), 0);
  ASSERT_TRUE(WaitFor([&] {
    const std::string log = quord.Log();
    return log.find("application short") != log.npos &&
           log.find("has ended", log.find("has ended") + 1) != log.npos;
  }));
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  EXPECT_EQ(monitor.gaps, 570u);
  EXPECT_EQ(monitor.delivered, 1000u);
}

TEST_F(Absence, MoreApplicationsThanTheServiceRemembersMayEndMeanwhile) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  std::uint64_t traced = 0;
  const auto run = [&traced, this](int apps) {
    for (int i = 0; i < apps; i += 8) {
      monitor.Beat();
      std::vector<std::unique_ptr<TracedChild>> some;
      for (int j = 0; j < 8; ++j)
        some.push_back(std::make_unique<TracedChild>([](TracedChild&) {
          quor_application("short");
          Trace(0, 7);
          return quor_flush(20000) == 1 ? 0 : 1;
        }));
      for (const auto& app : some) EXPECT_EQ(app->Wait(), 0);
      traced += 8 * 7;
    }
  };
  TracedChild steady([](TracedChild& self) { return TraceTwice(self, true); });
  ASSERT_EQ(steady.Reported(), 1u);
  traced += 1500;
  // So many that the service forgets some while the monitor is connected, and others while it is
  // away.
  run(280);
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() == traced - 500; }))
      << monitor.Sum();
  monitor.Close();
  steady.Go();
  EXPECT_EQ(steady.Reported(), 2u);
  EXPECT_EQ(steady.Wait(), 0);
  run(280);
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() >= traced; })) << monitor.Sum();
  EXPECT_EQ(monitor.Sum(), traced);
  EXPECT_EQ(monitor.gaps, 280u * 7 + 500);
}

TEST_F(Absence, OfThoseThatCameAndWentDuringALongPauseTheSumIsReported) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  Request pause, resume;
  pause.mutable_pause();
  resume.mutable_resume();
  ASSERT_EQ(monitor.Ask(pause).error(), quor::wire::ERROR_NONE);
  constexpr int kApps = 450, kTraces = 100;
  for (int i = 0; i < kApps; ++i) {
    const pid_t pid = fork();
    if (pid == 0) {
      quor_application("short");
      Trace(0, kTraces);
      _exit(0);
    }
    ASSERT_EQ(WaitForExit(pid), 0);
    monitor.Beat();
  }
  const std::string ended = "has ended";
  EXPECT_TRUE(WaitFor([&] {
    monitor.Beat();
    const std::string log = quord.Log();
    int count = 0;
    for (std::size_t at = 0; (at = log.find(ended, at)) != log.npos; ++at) ++count;
    return count == kApps;
  }));
  ASSERT_EQ(monitor.Ask(resume).error(), quor::wire::ERROR_NONE);
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() >= kApps * kTraces; }))
      << monitor.Sum();
  EXPECT_EQ(monitor.Sum(), std::uint64_t{kApps * kTraces});
  // Fewer reports than applications that lost something.
  EXPECT_GT(monitor.lost, 300u * kTraces);
  EXPECT_LT(monitor.losses.size(), 300u);
  monitor.Close();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  EXPECT_EQ(monitor.gaps, 0u);
}

// It is counted however long ago the application ended.
TEST_F(Absence, WhatAServiceThatIsKilledHadNotGivenItsMonitorOfAnEndedApplicationIsCounted) {
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  Request pause;
  pause.mutable_pause();
  ASSERT_EQ(monitor.Ask(pause).error(), quor::wire::ERROR_NONE);
  TracedChild app([](TracedChild&) {
    quor_application("short");
    Trace(0, 100);
    return 0;
  });
  EXPECT_EQ(app.Wait(), 0);
  ASSERT_TRUE(quord.Says("has ended"));
  // Longer than the file is kept for a monitor that reads, or that was away for a moment.
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(13500);
  EXPECT_TRUE(WaitFor([&] {
    monitor.Beat();
    monitor.Pump();
    return std::chrono::steady_clock::now() > until;
  }));
  EXPECT_FALSE(monitor.ended);
  quord.Kill();
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  EXPECT_EQ(monitor.delivered, 0u);
  EXPECT_EQ(monitor.gaps, 100u);
}

TEST_F(Absence, WhatWentToAnotherMachineMeanwhileIsNotMissedHere) {
  quord.Start();
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    for (int round = 0;; ++round) {
      Trace(round * 100, round * 100 + 100);
      quor_flush(20000);
      self.Report(static_cast<std::uint64_t>(round));
      self.AwaitGo();
    }
    return 0;
  });
  ASSERT_EQ(app.Reported(), 0u);
  ASSERT_TRUE(monitor.Sees("99"));
  // No service is at that address. What matters is that these traces are not this machine's.
  ASSERT_EQ(client.Ask(SinkRequest("orders", 1, "127.0.0.1:1")).error(), quor::wire::ERROR_NONE);
  app.Go();
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_EQ(client.Ask(SinkRequest("orders", 1, "localhost")).error(), quor::wire::ERROR_NONE);
  app.Go();
  ASSERT_EQ(app.Reported(), 2u);
  ASSERT_TRUE(monitor.Sees("299"));
  EXPECT_EQ(monitor.delivered, 200u);
  EXPECT_EQ(monitor.lost, 0u);
  EXPECT_FALSE(monitor.ended);
  // The same for a monitor that comes back, and after a restart of the service.
  for (const bool restart : {false, true}) {
    monitor.Close();
    if (restart) {
      quord.Kill();
      quord.Start();
    }
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
    EXPECT_EQ(monitor.gaps, 0u) << restart;
  }
  app.Go();
  ASSERT_EQ(app.Reported(), 3u);
  ASSERT_TRUE(monitor.Sees("399"));
  EXPECT_EQ(monitor.delivered, 300u);
}

}  // namespace

// Two machines with a network between them: one hands its traces on to the other, over TLS, and the
// cable is pulled and put back.
#include <quor/quor.hpp>

#include "quord_client.h"
#include "two_machines.h"

namespace {

QUOR_POINT(connect_point, "Net", "Connect");

class Machines : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(machines.AreMade()) << machines.Why();
    ASSERT_EQ(far.Run({"keys", "init", "--host", "10.77.0.2"}), 0) << far.Log();
    ASSERT_EQ(far.Run({"keys", "issue", "near", "--role", "forward", "--out",
                       near.KeysFolder() + "/forward"}),
              0);
    far.Start({"--listen", "10.77.0.2:7447"}, machines.Wrapper(1));
    near.Start({}, machines.Wrapper(0));
    ASSERT_TRUE(monitor.Monitor(far.SocketPath()));
    QuordClient client(near.SocketPath());
    ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
    ASSERT_EQ(client.Ask(OpenAppRequest("orders")).error(), quor::wire::ERROR_NONE);
    ASSERT_EQ(client.Ask(SinkRequest("orders", 1, "10.77.0.2")).error(), quor::wire::ERROR_NONE);
    setenv("QUOR_SOCKET", near.SocketPath().c_str(), 1);
  }
  // An application of the near machine: each step `each` traces of so many bytes.
  int Trace(TracedChild& self, int each, std::size_t bytes) {
    if (!machines.Enter(0)) return 1;
    quor_application("orders");
    const std::string text(bytes, 'x');
    for (int step = 0;; ++step) {
      for (int i = 0; i < each; ++i) {
        QUOR_TRACE_INFO(connect_point, "{} {} {}", step, i, text);
        // A rate that its service can follow: traces that are lost were lost on the way.
        if (i % 500 == 499) quor_flush(10000);
      }
      QUOR_TRACE_INFO(connect_point, "end of {}", step);
      quor_flush(10000);
      quor_counts counts{};
      quor_get_counts(&counts);
      self.Report(counts.traced);
      self.AwaitGo();
    }
  }

  TwoMachines machines;
  QuordProcess far, near;
  QuordClient monitor;
};

TEST_F(Machines, TracesArriveUnderTheirMachinesNameAndACableThatIsPulledForAMomentLosesNothing) {
  TracedChild app([this](TracedChild& self) { return Trace(self, 1000, 10); });
  EXPECT_EQ(app.Reported(), 1001u);
  ASSERT_TRUE(monitor.Sees("end of 0"));
  for (const SeenTrace& trace : monitor.traces) EXPECT_EQ(trace.machine, "near-host");
  EXPECT_EQ(monitor.welcome.machine(), "far-host");
  ASSERT_TRUE(machines.Cut()) << machines.Why();
  app.Go();
  EXPECT_EQ(app.Reported(), 2002u);
  ASSERT_TRUE(machines.Mend()) << machines.Why();
  ASSERT_TRUE(monitor.Sees("end of 1"));
  EXPECT_EQ(monitor.delivered, 2002u);
  EXPECT_EQ(monitor.lost, 0u);
}

TEST_F(Machines, ACableThatStaysPulledIsNoticedAndWhatDoesNotFitIsCountedExactly) {
  TracedChild app([this](TracedChild& self) { return Trace(self, 100'000, 1000); });
  monitor.keepTraces = false;
  const auto gets = [this](std::uint64_t traced) {
    return WaitFor([&] { return monitor.Beat(), monitor.Pump(), monitor.Sum() == traced; }, 60000);
  };
  ASSERT_TRUE(gets(100'001)) << monitor.Sum();
  EXPECT_EQ(app.Reported(), 100'001u);
  // These are 100 MB too: a slow machine may lose some of them already.
  const std::uint64_t lostBefore = monitor.lost;
  ASSERT_TRUE(machines.Cut()) << machines.Why();
  app.Go();
  const std::uint64_t traced = app.Reported();
  // No message comes: the silence is reported, and then that the machine cannot be reached.
  ASSERT_TRUE(WaitFor([&] {
    monitor.Beat();
    return near.Log().find("cannot forward to 10.77.0.2:7447") != std::string::npos;
  })) << near.Log();
  ASSERT_TRUE(machines.Mend()) << machines.Why();
  ASSERT_TRUE(gets(traced)) << monitor.Sum();
  // 100 MB went into a store of 64 MiB.
  EXPECT_GT(monitor.lost, lostBefore + 10'000u);
  EXPECT_GT(monitor.delivered, 10'000u);
  // After the cable is mended comes a flood, for which this monitor may be too slow; that is
  // reported too.
  std::uint64_t reported = 0, onTheWay = 0;
  for (const std::string& words : monitor.losses) {
    const std::uint64_t lost = std::stoull(words);
    reported += lost;
    if (words.find(" traces lost: the link to the other machine is broken or too slow") !=
        words.npos)
      onTheWay += lost;
    else
      EXPECT_NE(words.find(" traces lost: the monitor is too slow"), words.npos) << words;
  }
  EXPECT_EQ(reported, monitor.lost);
  EXPECT_GT(onTheWay, 10'000u);
}

}  // namespace

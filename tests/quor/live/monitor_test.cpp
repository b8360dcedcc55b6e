// The client's classes with a real service and a real application: sent = delivered + lost.
#include "live_fixture.h"

namespace {

class MonitorTest : public LiveProgramsTest {
 protected:
  ~MonitorTest() override {
    if (m_monitor) m_monitor->Disconnect();
  }
  void Connect() {
    m_monitor = TraceThread_i::ConnectToTraceService("", m_names, &m_why);
    ASSERT_TRUE(m_monitor) << m_why;
  }
  void Drain() {
    while (m_monitor->HasTraces()) {
      TraceEvent_i* const trace = m_monitor->NextTrace();
      if (trace->GetComponentName(m_names) == "Quor") {
        m_words.push_back(trace->GetText());
      } else {
        ++m_taken;
        m_nameless += trace->GetComponentName(m_names).empty();
      }
      trace->Release();
    }
  }
  std::uint64_t Sum() const { return m_taken + m_monitor->GetCounts().lost; }
  bool TakesMore(std::uint64_t traces) {
    const std::uint64_t wanted = m_taken + traces;
    return Eventually([&] {
      Drain();
      return m_taken >= wanted;
    });
  }

  NameMap m_names;
  std::string m_why;
  TraceThread_i* m_monitor = nullptr;
  std::uint64_t m_taken = 0, m_nameless = 0;
  std::vector<std::string> m_words;
};

TEST_F(MonitorTest, SentIsDeliveredPlusLostInABurstThatIsTooMuch) {
  StartService();
  Connect();
  const TrcRun emit = RunTrc({"emit", "--app", "flood", "--count", "300000", "--threads", "4"});
  const std::uint64_t traced = Reported(emit.out, "traced");
  EXPECT_EQ(traced, 300000u);
  EXPECT_TRUE(Eventually([&] {
    Drain();
    return Sum() == traced;
  })) << Sum();
  EXPECT_EQ(m_taken, m_monitor->GetCounts().delivered);
  EXPECT_EQ(m_monitor->GetCounts().lost > 0, !m_words.empty());
  EXPECT_GE(m_monitor->GetCounts().lost, Reported(emit.out, "lost"));
  EXPECT_EQ(m_nameless, 0u);
}

TEST_F(MonitorTest, AServiceKilledAndRestartedUnderLoadLeavesACountedGap) {
  StartService();
  Connect();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "5000"}});
  EXPECT_TRUE(TakesMore(2000));
  EXPECT_EQ(StopService(SIGKILL), 1000 + SIGKILL);
  StartService();
  EXPECT_TRUE(TakesMore(2000));
  emit.Interrupt();
  const TrcRun run = emit.Finish();
  const std::uint64_t traced = Reported(run.out, "traced");
  EXPECT_TRUE(Eventually([&] {
    Drain();
    return Sum() == traced;
  })) << Sum()
      << " of " << traced;
  EXPECT_EQ(m_taken, m_monitor->GetCounts().delivered);
  EXPECT_EQ(m_nameless, 0u);
  if (m_monitor->GetCounts().lost > 0) {
    ASSERT_FALSE(m_words.empty());
  }
}

TEST_F(MonitorTest, WhatAFileSinkLostIsCountedThoughTheServiceWasKilledBeforeItHeardOfIt) {
  StartService();
  Connect();
  ASSERT_EQ(RunTrc({"sink", "orders", "--file", "/nonexistent/orders.trc", "--flush"}).status, 0);
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "5000"}});
  const auto loses = [&](std::uint64_t traces) {
    const std::uint64_t wanted = m_monitor->GetCounts().lost + traces;
    return Eventually([&] {
      Drain();
      return m_monitor->GetCounts().lost >= wanted;
    });
  };
  EXPECT_TRUE(loses(12000));
  // The application reports to a stopped service, which is then killed.
  kill(m_service, SIGSTOP);
  EXPECT_TRUE(Eventually([seconds = time(nullptr)] { return time(nullptr) > seconds + 1; }));
  EXPECT_EQ(StopService(SIGKILL), 1000 + SIGKILL);
  StartService();
  EXPECT_TRUE(loses(2000));
  emit.Interrupt();
  const std::uint64_t traced = Reported(emit.Finish().out, "traced");
  EXPECT_TRUE(Eventually([&] {
    Drain();
    return Sum() == traced;
  })) << Sum()
      << " of " << traced;
  EXPECT_EQ(Log().find("serial falls"), std::string::npos);
}

TEST_F(MonitorTest, AnApplicationKilledInABurstLosesNothingThatItTraced) {
  StartService();
  Connect();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "20000"}});
  EXPECT_TRUE(TakesMore(1000));
  emit.Kill();
  // Its traces arrive, and then its end. At most the trace that was just being written is missing.
  EXPECT_TRUE(Eventually([&] {
    Drain();
    const TrcRun apps = RunTrc({"apps"});
    return apps.out.empty();
  }));
  Drain();
  EXPECT_LE(m_monitor->GetCounts().lost, 1u);
  EXPECT_EQ(m_words.size(), m_monitor->GetCounts().lost);
}

TEST_F(MonitorTest, APausedMonitorGetsNothingAndThenGoesOn) {
  StartService();
  Connect();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "2000"}});
  EXPECT_TRUE(TakesMore(100));
  m_monitor->Pause();
  // The pause is in effect when traces of the application bring nothing for a while.
  std::uint64_t before = ~0ull;
  EXPECT_TRUE(Eventually([&] {
    before = m_taken;
    EXPECT_EQ(RunTrc({"emit", "--app", "other", "--count", "50"}).status, 0);
    Drain();
    return m_taken == before;
  }));
  m_monitor->Resume();
  EXPECT_TRUE(TakesMore(200));
  emit.Interrupt();
  const std::uint64_t traced = Reported(emit.Finish().out, "traced");
  EXPECT_TRUE(Eventually([&] {
    Drain();
    return Sum() >= traced;
  }));
}

TEST_F(MonitorTest, ASecondMonitorSeesTheSameTraces) {
  StartService();
  Connect();
  NameMap names;
  TraceThread_i* const second = TraceThread_i::ConnectToTraceService("127.0.0.1", names);
  ASSERT_TRUE(second);
  EXPECT_EQ(RunTrc({"emit", "--app", "orders", "--count", "5000"}).out, "5000 traced, 0 lost\n");
  EXPECT_TRUE(TakesMore(5000));
  EXPECT_TRUE(Eventually([&] { return second->GetCounts().delivered == 5000; }));
  for (int i = 0; second->HasTraces(); ++i) {
    TraceEvent_i* const trace = second->NextTrace();
    EXPECT_EQ(trace->GetText().rfind("thread 0 trace " + std::to_string(i) + " ", 0), 0u);
    trace->Release();
  }
  second->Disconnect();
}

TEST_F(MonitorTest, SettingsThatWereSubmittedOutliveTheServiceWhileTheApplicationRuns) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "100"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  EXPECT_EQ(RunTrc({"set", "orders", "Net", "max"}).status, 0);
  StopService(SIGKILL);
  StartService();
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const QuorPtr<trace_App_i> app = trace_App_i::Create("localhost", "orders");
  ASSERT_TRUE(app);
  EXPECT_EQ(app->GetSettings(app->GetTraceId("Net", "Connect")), 799u);
  EXPECT_EQ(app->GetSettings(app->GetTraceId("Db", "Connect")), 7u);
}

}  // namespace

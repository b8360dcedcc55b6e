#include "quor/client/trace_thread.h"

#include <poll.h>

#include <thread>

#include "live_fixture.h"

namespace {

std::string Traces(int from, int to, NameId component = 7) {
  TrcImage image("");
  image.Name(7, "web");
  for (int i = from; i < to; ++i)
    image.Trace({.text = "t" + std::to_string(i),
                 .count = static_cast<std::uint32_t>(i),
                 .component = component});
  return image.Bytes();
}

TEST_F(LiveTest, TracesComeInTheirOrderWithTheirNamesInTheMapBeforeThem) {
  Connect();
  m_peer->Data(TrcImage("")
                   .Name(7, "web")
                   .Trace({.text = "one", .component = 7})
                   .Name(9, "db")
                   .Trace({.text = "two", .component = 9})
                   .Bytes());
  m_peer->Ledger({{.serial = 2, .delivered = 2}});
  EXPECT_EQ(Drain(2), "web: one\ndb: two\n");
  EXPECT_EQ(Counted(), "2 delivered, 0 lost");
}

TEST_F(LiveTest, AwaitReturnsWhenATraceHasArrivedAndSleepsWithoutOne) {
  Connect();
  const auto start = std::chrono::steady_clock::now();
  const auto passed = [&] { return std::chrono::steady_clock::now() - start; };
  while (passed() < std::chrono::milliseconds(50)) m_thread->AwaitTraces(60);
  EXPECT_FALSE(m_thread->HasTraces());
  std::thread service([this] {
    poll(nullptr, 0, 50);
    m_peer->Data(Traces(0, 3));
    m_peer->Ledger({{.serial = 3, .delivered = 3}});
  });
  int waits = 0;
  for (; !m_thread->HasTraces() && waits < 5; ++waits) m_thread->AwaitTraces(60000);
  EXPECT_GE(waits, 1);
  EXPECT_LT(passed(), std::chrono::seconds(30)) << "it slept on";
  service.join();
  EXPECT_TRUE(m_thread->HasTraces());
  m_thread->AwaitTraces(60000);  // some wait already
  EXPECT_EQ(Drain(3), "web: t0\nweb: t1\nweb: t2\n");
  EXPECT_LT(passed(), std::chrono::seconds(30));
}

TEST_F(LiveTest, AwaitWaitsForResumeWhilePaused) {
  Connect();
  m_peer->Data(Traces(0, 1));
  m_peer->Ledger({{.serial = 1, .delivered = 1}});
  ASSERT_TRUE(Eventually([&] { return m_thread->HasTraces() != 0; }));
  m_thread->Pause();
  const auto start = std::chrono::steady_clock::now();
  m_thread->AwaitTraces(50);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
  m_thread->Resume();
  m_thread->AwaitTraces(60000);
  EXPECT_EQ(Drain(1), "web: t0\n");
}

TEST_F(LiveTest, EveryFieldArrives) {
  Connect();
  TrcImage image("");
  const char* names[] = {"orders1", "orders", "Net", "Connect", "4711", "4712", "main.cpp"};
  for (int i = 0; i < 7; ++i) image.Name(static_cast<NameId>(100 + i), names[i]);
  image.Trace({.text = "up",
               .stack = "main\nstart",
               .count = 17,
               .machine = 100,
               .app = 101,
               .component = 102,
               .category = 103,
               .date = PackDate(2026, 11, 21),
               .time = PackTime(9, 41, 7, 5),
               .tic = 123456789012345,
               .pid = 104,
               .tid = 105,
               .attributes = kAttributeError | kAttributeDeveloper,
               .file = 106,
               .line = 42});
  m_peer->Data(image.Bytes());
  m_peer->Ledger({{.serial = 1, .delivered = 1}});
  ASSERT_TRUE(Eventually([&] { return m_thread->HasTraces() != 0; }));
  TraceEvent_i* const trace = m_thread->NextTrace();
  EXPECT_EQ(trace->GetSequenceNumber(), 17u);
  EXPECT_EQ(trace->GetMachineName(m_names), "orders1");
  EXPECT_EQ(trace->GetAppName(m_names), "orders");
  EXPECT_EQ(trace->GetComponentName(m_names), "Net");
  EXPECT_EQ(trace->GetCategoryName(m_names), "Connect");
  EXPECT_EQ(trace->GetPidName(m_names), "4711");
  EXPECT_EQ(trace->GetTidName(m_names), "4712");
  EXPECT_EQ(trace->GetSourceFileName(m_names), "main.cpp");
  EXPECT_EQ(trace->GetSourceLine(), 42u);
  EXPECT_EQ(trace->GetTimeString(false), "2026-11-21 09:41:07.005");
  EXPECT_EQ(trace->GetTicCount(), 123456789012345u);
  EXPECT_EQ(trace->GetAttributes(), kAttributeError | kAttributeDeveloper);
  EXPECT_EQ(trace->GetText(), "up");
  EXPECT_EQ(trace->GetStack(), "main\nstart");
  trace->Release();
}

TEST_F(LiveTest, NamesEnterTheMapInsideTheCallsOnly) {
  Connect();
  m_peer->Data(Traces(0, 1));
  m_peer->Ledger({{.serial = 1, .delivered = 1}});
  ASSERT_TRUE(Eventually([&] { return m_thread->GetCounts().delivered == 1; }));
  EXPECT_TRUE(m_names.empty());
  EXPECT_EQ(Drain(1), "web: t0\n");
  EXPECT_EQ(m_names.size(), 1u);
}

TEST_F(LiveTest, ATraceWaitsUntilItsLedgerIsHere) {
  Connect();
  m_peer->Data(Traces(0, 1));
  m_peer->Data(Traces(1, 2));
  EXPECT_FALSE(Eventually([&] { return m_thread->HasTraces() != 0; }, 50));
  EXPECT_EQ(m_thread->NextTrace(), nullptr);
  m_peer->Ledger({{.serial = 2, .delivered = 2}});
  EXPECT_EQ(Drain(2), "web: t0\nweb: t1\n");
}

TEST_F(LiveTest, ADrainEndsThoughTracesKeepComing) {
  Connect();
  m_peer->Data(Traces(0, 10));
  m_peer->Ledger({{.serial = 10, .delivered = 10}});
  ASSERT_TRUE(Eventually([&] { return m_thread->HasTraces() != 0; }));
  m_peer->Data(Traces(10, 20));
  m_peer->Ledger({{.serial = 20, .delivered = 20}});
  ASSERT_TRUE(Eventually([&] { return m_thread->GetCounts().delivered == 20; }));
  int first = 0, second = 0;
  for (; m_thread->HasTraces(); ++first) m_thread->NextTrace()->Release();
  EXPECT_EQ(first, 10);
  for (; m_thread->HasTraces(); ++second) m_thread->NextTrace()->Release();
  EXPECT_EQ(second, 10);
}

TEST_F(LiveTest, OneDrainGivesAllThatWaitsWhileItsTimeAllowsAndTheNextGoesOnThere) {
  Connect();
  constexpr int kFrames = 30, kEach = 9001;
  for (int i = 0; i < kFrames; ++i) {
    m_peer->Data(Traces(i * kEach, (i + 1) * kEach));
    const auto sent = static_cast<std::uint64_t>((i + 1) * kEach);
    m_peer->Ledger({{.serial = sent, .delivered = sent}});
  }
  ASSERT_TRUE(Eventually([&] { return m_thread->GetCounts().delivered == kFrames * kEach; }));
  std::uint32_t next = 0;
  const auto drain = [&](std::chrono::milliseconds work) {
    int count = 0;
    for (; m_thread->HasTraces(); ++count) {
      TraceEvent_i* const trace = m_thread->NextTrace();
      EXPECT_EQ(trace->GetSequenceNumber(), next++);
      trace->Release();
      const auto until = std::chrono::steady_clock::now() + work;
      while (std::chrono::steady_clock::now() < until) {
      }
      work = {};
    }
    return count;
  };
  // One trace that takes longer than a drain may: it ends soon after.
  EXPECT_LE(drain(std::chrono::milliseconds(51)), 256);
  int rest = kFrames * kEach - static_cast<int>(next), drains = 0;
  while (next < kFrames * kEach && ++drains < 1000) rest -= drain({});
  EXPECT_EQ(rest, 0);
  EXPECT_EQ(drain({}), 0);
}

TEST_F(LiveTest, APausedMonitorGivesNothingThoughItHasArrivedAndAllOfItLater) {
  Connect();
  m_peer->Data(Traces(0, 20000));
  m_peer->Ledger({{.serial = 20000, .delivered = 20000}});
  ASSERT_TRUE(Eventually([&] { return m_thread->HasTraces() != 0; }));
  for (int i = 0; i < 10; ++i) m_thread->NextTrace()->Release();
  m_thread->Pause();
  EXPECT_EQ(m_thread->HasTraces(), 0);
  EXPECT_EQ(m_thread->NextTrace(), nullptr);
  // On its way when the service got the pause.
  m_peer->Data(Traces(20000, 20010));
  m_peer->Ledger({{.serial = 20010, .delivered = 20010}});
  ASSERT_TRUE(Eventually([&] { return m_thread->GetCounts().delivered == 20010; }));
  EXPECT_EQ(m_thread->HasTraces(), 0);
  m_thread->Resume();
  std::uint32_t next = 10;
  EXPECT_TRUE(Eventually([&] {
    while (m_thread->HasTraces()) {
      TraceEvent_i* const trace = m_thread->NextTrace();
      EXPECT_EQ(trace->GetSequenceNumber(), next++);
      trace->Release();
    }
    return next == 20010;
  }));
}

TEST_F(LiveTest, NextTraceAloneTakesALookToo) {
  Connect();
  m_peer->Data(Traces(0, 1));
  m_peer->Ledger({{.serial = 1, .delivered = 1}});
  TraceEvent_i* trace = nullptr;
  ASSERT_TRUE(Eventually([&] { return (trace = m_thread->NextTrace()) != nullptr; }));
  EXPECT_EQ(trace->GetText(), "t0");
  trace->Release();
  EXPECT_EQ(m_thread->NextTrace(), nullptr);
}

TEST_F(LiveTest, ATraceOutlivesTheConnectionThatBroughtIt) {
  Connect();
  m_peer->Data(Traces(0, 3));
  m_peer->Ledger({{.serial = 3, .delivered = 3}});
  ASSERT_TRUE(Eventually([&] { return m_thread->HasTraces() != 0; }));
  TraceEvent_i* const trace = m_thread->NextTrace();
  Disconnect();
  EXPECT_EQ(trace->GetText(), "t0");
  EXPECT_EQ(trace->GetComponentName(m_names), "web");
  trace->Release();
}

TEST_F(LiveTest, PauseAndResumeReachTheServiceAlsoAfterABreak) {
  Connect();
  m_thread->Pause();
  EXPECT_TRUE(m_peer->ExpectRequest().has_pause());
  Reconnect();
  EXPECT_TRUE(m_peer->ExpectRequest().has_pause());
  m_thread->Resume();
  EXPECT_TRUE(m_peer->ExpectRequest().has_resume());
}

TEST_F(LiveTest, DisconnectEndsWithinASecondAndTheServiceSeesIt) {
  Connect();
  const auto begin = std::chrono::steady_clock::now();
  Disconnect();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  EXPECT_TRUE(m_peer->Ended());
}

TEST_F(LiveTest, DisconnectEndsWithinASecondWhileItReconnects) {
  Connect();
  m_peer.reset();
  m_peer = m_service.Accept();  // it has connected again, and waits for a welcome
  ASSERT_TRUE(m_peer);
  const auto begin = std::chrono::steady_clock::now();
  Disconnect();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  EXPECT_TRUE(m_peer->Ended());
}

TEST_F(LiveTest, NobodyListeningIsNoConnectionAndSaysWhy) {
  m_service.StopListening();
  EXPECT_FALSE(TraceThread_i::ConnectToTraceService("localhost", m_names, &m_why));
  EXPECT_EQ(m_why, "no trace service runs here; start it with quord (" + m_service.Path() +
                       ": No such file or directory)");
}

TEST_F(LiveTest, AServiceThatDoesNotAnswerIsGivenUpWithinFiveSeconds) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(TraceThread_i::ConnectToTraceService("", m_names, &m_why));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(5900));
  EXPECT_EQ(m_why, "the trace service of this machine: no welcome in time");
}

TEST_F(LiveTest, ARefusalIsReportedWithTheServicesReason) {
  auto* const thread =
      WhileServed([this] { return TraceThread_i::ConnectToTraceService("", m_names, &m_why); },
                  [this] {
                    const auto peer = m_service.Accept();
                    peer->Expect<quor::wire::Hello>(FrameType::Hello);
                    quor::wire::Refused refused;
                    refused.set_code(quor::wire::ERROR_VERSION);
                    refused.set_text("version 1 is not spoken here");
                    peer->Send(FrameType::Refused, refused);
                  });
  EXPECT_FALSE(thread);
  EXPECT_NE(m_why.find("refuses: version 1 is not spoken here"), std::string::npos) << m_why;
}

TEST_F(LiveTest, AnUnknownVersionOfTheServiceIsRefusedWithAReason) {
  auto* const thread =
      WhileServed([this] { return TraceThread_i::ConnectToTraceService("", m_names, &m_why); },
                  [this] { m_service.Accept()->Welcome(2); });
  EXPECT_FALSE(thread);
  EXPECT_NE(m_why.find("speaks version 2 of the protocol, not 1"), std::string::npos) << m_why;
}

TEST_F(LiveTest, AnAnswerThatIsNotThisProtocolIsNoConnection) {
  for (const std::string& bytes :
       {std::string("SSH-2.0-OpenSSH\r\n"), std::string(5, '\0'), std::string("\0\0\0\2\3\xFF", 6),
        std::string("\0\0\0\1\2", 5), std::string("\0\0\0\1\6", 5)}) {
    m_why.clear();
    auto* const thread =
        WhileServed([this] { return TraceThread_i::ConnectToTraceService("", m_names, &m_why); },
                    [&] {
                      const auto peer = m_service.Accept();
                      peer->SendBytes(bytes.data(), bytes.size());
                      peer->Ended();
                    });
    EXPECT_FALSE(thread);
    EXPECT_NE(m_why, "");
  }
}

TEST_F(LiveTest, TheHelloSaysVersionAndRole) {
  quor::wire::Hello hello;
  auto* const thread = WhileServed(
      [this] { return TraceThread_i::ConnectToTraceService("127.0.0.1", m_names, &m_why); },
      [&] {
        m_peer = m_service.Accept();
        hello = m_peer->Welcome();
      });
  ASSERT_TRUE(thread);
  thread->Disconnect();
  EXPECT_EQ(hello.version(), 1u);
  EXPECT_EQ(hello.role(), quor::wire::ROLE_MONITOR);
}

}  // namespace

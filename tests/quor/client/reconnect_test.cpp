// Breaks, malformed streams and floods of a live connection: what is missing is counted and shown.
#include "live_fixture.h"

namespace {

std::string Trace(const std::string& text, NameId component = 7) {
  return TrcImage("").Trace({.text = text, .component = component}).Bytes();
}
std::string Name(NameId id, const std::string& text) {
  return TrcImage("").Name(id, text).Bytes();
}

class ReconnectTest : public LiveTest {
 protected:
  void Start() {
    Connect();
    m_peer->Data(Name(7, "web") + Trace("one"));
    m_peer->Ledger({{.serial = 11, .delivered = 1}});
    EXPECT_EQ(Drain(1), "web: one\n");
  }
  // Sends more than the client's queue holds and waits until all has arrived. Returns how many were
  // sent.
  std::uint64_t SendTooMuch() {
    std::string body;
    for (int i = 0; i < 16; ++i) body += Trace(std::string(60000, 'x'));
    std::uint64_t sent = 1;
    for (int i = 0; i < 180; ++i) {
      m_peer->Data(Name(static_cast<NameId>(1000 + i), "n" + std::to_string(i)) + body);
      sent += 16;
      m_peer->Ledger({{.serial = 10 + sent, .delivered = sent}});
    }
    EXPECT_TRUE(Eventually([&] {
      const auto counts = m_thread->GetCounts();
      return counts.delivered + counts.lost == sent;
    }));
    return sent;
  }
  // Drains until the loss is reported, before or after so many others. Gives its text.
  std::string DrainUntilLoss(std::uint64_t others, std::uint64_t* taken) {
    std::string words;
    // A tick may end before all is taken, because its time is limited.
    EXPECT_TRUE(Eventually([&] {
      while (m_thread->HasTraces()) {
        TraceEvent_i* const trace = m_thread->NextTrace();
        if (trace->GetComponentName(m_names) == "Quor")
          words = trace->GetText();
        else
          ++*taken;
        trace->Release();
      }
      return *taken >= others && !words.empty();
    }));
    return words;
  }
};

TEST_F(ReconnectTest, TheGapIsShownWhereItIsAndCounted) {
  Start();
  Reconnect();
  m_peer->Ledger({{.serial = 111}});
  m_peer->Data(Name(7, "web") + Trace("two"));
  m_peer->Ledger({{.serial = 112, .delivered = 1}});
  EXPECT_EQ(Drain(2), "Quor: 100 traces lost: the connection was broken\nweb: two\n");
  EXPECT_EQ(Counted(), "2 delivered, 100 lost");
}

TEST_F(ReconnectTest, AConnectionThatBrokeIsDownUntilItHasMendedItself) {
  Start();
  EXPECT_TRUE(m_thread->IsUp());
  m_peer.reset();
  ASSERT_TRUE(Eventually([&] { return !m_thread->IsUp(); }));
  Reconnect();
  EXPECT_TRUE(Eventually([&] { return m_thread->IsUp(); }));
}

TEST_F(ReconnectTest, TheTraceOfAGapLooksAsProgramsExpectIt) {
  Start();
  Reconnect();
  m_peer->Ledger({{.serial = 12}});
  ASSERT_TRUE(Eventually([&] { return m_thread->HasTraces() != 0; }));
  TraceEvent_i* const trace = m_thread->NextTrace();
  EXPECT_EQ(trace->GetComponentName(m_names), "Quor");
  EXPECT_EQ(trace->GetCategoryName(m_names), "Loss");
  EXPECT_EQ(trace->GetMachineName(m_names), "fake");
  EXPECT_EQ(trace->GetAttributes(), kAttributeWarn);
  EXPECT_EQ(trace->GetText(), "1 traces lost: the connection was broken");
  EXPECT_EQ(trace->GetSequenceNumber(), kNoSequenceNumber);
  EXPECT_EQ(trace->GetTicCount(), 0u);
  trace->Release();
}

TEST_F(ReconnectTest, WithoutAGapNothingIsReported) {
  Start();
  Reconnect();
  m_peer->Ledger({{.serial = 11}});
  m_peer->Data(Name(7, "web") + Trace("two"));
  m_peer->Ledger({{.serial = 12, .delivered = 1}});
  EXPECT_EQ(DrainUpTo("two"), "web: two\n");
  EXPECT_EQ(Counted(), "2 delivered, 0 lost");
}

TEST_F(ReconnectTest, DataWhoseLedgerNeverCameIsPartOfTheGapAndNotShownTwice) {
  Start();
  m_peer->Data(Trace("half"));
  Reconnect();
  m_peer->Ledger({{.serial = 12}});
  m_peer->Data(Name(7, "web") + Trace("two"));
  m_peer->Ledger({{.serial = 13, .delivered = 1}});
  EXPECT_EQ(DrainUpTo("two"), "Quor: 1 traces lost: the connection was broken\nweb: two\n");
  EXPECT_EQ(Counted(), "2 delivered, 1 lost");
}

TEST_F(ReconnectTest, ASourceThatBeganDuringTheBreakIsCountedFromItsFirst) {
  Start();
  Reconnect();
  m_peer->Ledger({{.serial = 11}, {.id = 'b', .serial = 5}});
  EXPECT_EQ(Drain(1), "Quor: 5 traces lost: the connection was broken\n");
  EXPECT_EQ(Counted(), "1 delivered, 5 lost");
}

TEST_F(ReconnectTest, ASourceThatTheServiceHadForgottenMayBeginAnewWithoutABreak) {
  Start();
  m_peer->Data(Trace("two"));
  m_peer->Ledger({{.serial = 14, .delivered = 2, .lost = 2}});
  m_peer->Data(Trace("three"));
  m_peer->Ledger({{.serial = 15, .delivered = 1}});
  EXPECT_EQ(Drain(2), "web: two\nweb: three\n");
  EXPECT_EQ(Counted(), "3 delivered, 2 lost");
  // The traces that it produced meanwhile, and that nobody saw, are missing.
  m_peer->Ledger({{.serial = 20}});
  EXPECT_EQ(Drain(1), "Quor: 5 traces lost: the connection was broken\n");
  EXPECT_EQ(Counted(), "3 delivered, 7 lost");
}

TEST_F(ReconnectTest, ASourceThatComesBackLaterIsCountedThen) {
  Start();
  Reconnect();
  m_peer->Ledger({});
  m_peer->Data(Name(7, "web") + Trace("again"));
  // The application has found the new service: 11 traces were known, and the next 9 were missed.
  m_peer->Ledger({{.serial = 21, .delivered = 1}});
  EXPECT_EQ(Drain(2), "Quor: 9 traces lost: the connection was broken\nweb: again\n");
}

TEST_F(ReconnectTest, MoreThanCanHaveBeenTracedMeanwhileIsNoGapAndTheOthersAreCounted) {
  Start();
  Reconnect();
  m_peer->Ledger({{.id = 'x', .serial = std::uint64_t{1} << 55},
                  {.serial = 14},
                  {.id = 'y', .serial = std::uint64_t{1} << 55},
                  {.id = 'b', .serial = 5}},
                 std::uint64_t{1} << 55);
  EXPECT_EQ(Drain(1), "Quor: 8 traces lost: the connection was broken\n");
  m_peer->Ledger({{.id = 'x', .serial = (std::uint64_t{1} << 55) + 2, .lost = 2}});
  ASSERT_TRUE(Eventually([&] { return Counted() == "1 delivered, 10 lost"; })) << Counted();
}

TEST_F(ReconnectTest, OfSourcesThatTheServiceHasForgottenTheSumTellsTheGap) {
  Start();  // source a has serial 11, which the client knows
  m_peer->Ledger({{.id = 'b', .serial = 4, .lost = 4}});
  m_peer->Ledger({}, {}, {{.id = 'b', .serial = 4}});
  Reconnect();
  // a went on to 15 and ended, as did one of 7 and one of 2 that are not known here.
  m_peer->Ledger({}, 4 + 15 + 7 + 2);
  EXPECT_EQ(Drain(1), "Quor: 13 traces lost: the connection was broken\n");
  EXPECT_EQ(Counted(), "1 delivered, 17 lost");
  // None of these is counted again.
  Reconnect();
  m_peer->Ledger({}, 28);
  m_peer->Ledger({{.id = 'c', .serial = 3, .lost = 3}});
  ASSERT_TRUE(Eventually([&] { return Counted() == "1 delivered, 20 lost"; })) << Counted();
}

TEST_F(ReconnectTest, ASumOfForgottenSourcesThatFallsEndsTheConnection) {
  Start();
  m_peer->Ledger({{.id = 'b', .serial = 4, .lost = 4}});
  m_peer->Ledger({}, {}, {{.id = 'b', .serial = 4}});
  Reconnect();
  m_peer->Ledger({}, 3);
  m_peer->Ledger({{.id = 'c', .serial = 2, .lost = 2}});
  EXPECT_TRUE(m_peer->Ended());
  EXPECT_EQ(Counted(), "1 delivered, 4 lost") << "nothing behind it is believed";
}

TEST_F(ReconnectTest, ASourceThatWasForgottenAndComesBackIsCountedAnew) {
  Start();
  m_peer->Ledger({{.id = 'b', .serial = 4, .lost = 4}});
  m_peer->Ledger({}, {}, {{.id = 'b', .serial = 4}});
  m_peer->Ledger({{.id = 'b', .serial = 9, .lost = 5}});
  ASSERT_TRUE(Eventually([&] { return Counted() == "1 delivered, 9 lost"; })) << Counted();
}

TEST_F(ReconnectTest, AnotherRunOfTheServiceCountsWhatItForgetsAnew) {
  Start();
  m_peer->Ledger({{.id = 'b', .serial = 4, .lost = 4}});
  m_peer->Ledger({}, {}, {{.id = 'b', .serial = 4}});
  Reconnect("another run");
  // Nothing of what it has forgotten can be known from the first.
  m_peer->Ledger({{.serial = 12}}, 3);
  EXPECT_EQ(Drain(1), "Quor: 4 traces lost: the connection was broken\n");
  EXPECT_EQ(Counted(), "1 delivered, 8 lost");
}

TEST_F(ReconnectTest, WhatWasForgottenBeforeTheFirstConnectionIsNoLoss) {
  Connect();
  m_peer->Ledger({}, 1000);
  m_peer->Ledger({{.id = 'b', .serial = 2, .lost = 2}});
  ASSERT_TRUE(Eventually([&] { return Counted() == "0 delivered, 2 lost"; })) << Counted();
}

TEST_F(ReconnectTest, WhatWasBeforeTheFirstConnectionIsNoLoss) {
  Connect();
  m_peer->Ledger({{.serial = 1000}});
  m_peer->Data(Name(7, "web") + Trace("one"));
  m_peer->Ledger({{.serial = 1001, .delivered = 1}});
  EXPECT_EQ(DrainUpTo("one"), "web: one\n");
  EXPECT_EQ(Counted(), "1 delivered, 0 lost");
}

TEST_F(ReconnectTest, LossesThatTheServiceCountsAreAddedUpOverConnections) {
  Start();
  m_peer->Data(Trace("two"));
  m_peer->Ledger({{.serial = 19, .delivered = 2, .lost = 7}});
  EXPECT_EQ(Drain(1), "web: two\n");
  Reconnect();
  m_peer->Ledger({{.serial = 22, .lost = 3}});
  ASSERT_TRUE(Eventually([&] { return Counted() == "2 delivered, 10 lost"; })) << Counted();
}

TEST_F(ReconnectTest, IdsOfTheDocumentStayWhatTheyAreWhenTheServiceNumbersAnew) {
  Start();
  const NameId web = m_names.begin()->first;
  Reconnect();
  m_peer->Data(Name(7, "db") + Name(3, "web") + Trace("of db", 7) + Trace("of web", 3));
  m_peer->Ledger({{.serial = 13, .delivered = 2}});
  EXPECT_EQ(Drain(2), "db: of db\nweb: of web\n");
  EXPECT_EQ(m_names.at(web).name, "web");
  EXPECT_EQ(m_names.size(), 2u);
}

TEST_F(ReconnectTest, AnIdOfTheOldConnectionMeansNothingOnTheNewOne) {
  Start();
  Reconnect();
  m_peer->Data(Trace("of nobody", 7));
  m_peer->Ledger({{.serial = 12, .delivered = 1}});
  EXPECT_EQ(Drain(1), ": of nobody\n");
}

TEST_F(ReconnectTest, ReplayedFramesShowNothingTwice) {
  Start();
  // The same ledger again, and one that goes back: the first changes nothing, the second ends it.
  m_peer->Ledger({{.serial = 11, .delivered = 1}});
  m_peer->Data(Trace("two"));
  m_peer->Ledger({{.serial = 12, .delivered = 2}});
  EXPECT_EQ(Drain(1), "web: two\n");
  EXPECT_EQ(Counted(), "2 delivered, 0 lost");
  m_peer->Ledger({{.serial = 11, .delivered = 1}});
  EXPECT_TRUE(m_peer->Ended());
}

class MalformedTest : public ReconnectTest, public testing::WithParamInterface<std::string> {};

TEST_P(MalformedTest, EndsThatConnectionAndTheNextOneWorks) {
  Start();
  m_peer->SendBytes(GetParam().data(), GetParam().size());
  EXPECT_TRUE(m_peer->Ended());
  Reconnect();
  m_peer->Ledger({{.serial = 11}});
  m_peer->Data(Name(7, "web") + Trace("two"));
  m_peer->Ledger({{.serial = 12, .delivered = 1}});
  EXPECT_EQ(DrainUpTo("two"), "web: two\n");
}

std::string Framed(FrameType type, const std::string& body) {
  const auto frame = EncodeFrame(type, body);
  return {frame.begin(), frame.end()};
}
std::string LedgerOf(std::size_t instanceBytes, std::uint64_t serial, std::uint64_t delivered,
                     std::uint64_t lost) {
  quor::wire::Ledger ledger;
  auto& source = *ledger.add_sources();
  source.set_instance(std::string(instanceBytes, 'a'));
  source.set_serial(serial);
  source.set_delivered(delivered);
  source.set_lost(lost);
  return Framed(FrameType::Ledger, ledger.SerializeAsString());
}

INSTANTIATE_TEST_SUITE_P(
    Frames, MalformedTest,
    testing::Values(std::string("\0\0\0\0\1", 5), std::string("\0\0\0\1\x63", 5),
                    std::string("\xFF\xFF\xFF\xFF\4", 5), std::string("\0\x20\0\0\6", 5),
                    Framed(FrameType::Data, "\x0C"), Framed(FrameType::Data, "\x0B short"),
                    Framed(FrameType::Data, std::string("\x0A\0\7\xFF\xFFweb", 8)),
                    Framed(FrameType::Ledger, "\xFF\xFF"), Framed(FrameType::Response, "\xFF"),
                    Framed(FrameType::Hello, ""), Framed(FrameType::Welcome, ""),
                    Framed(FrameType::Request, ""), LedgerOf(15, 20, 1, 0), LedgerOf(0, 20, 1, 0),
                    LedgerOf(16, 12, 13, 0), LedgerOf(16, 12, 2, 11), LedgerOf(16, ~0ull, 1, 0),
                    LedgerOf(16, 11, 0, 1), LedgerOf(16, 20, ~0ull, ~0ull)));

TEST_F(ReconnectTest, DataWithoutEndAndWithoutALedgerIsCutOff) {
  Start();
  const std::string body = Trace(std::string(60000, 'x'));
  for (int i = 0; i < 200; ++i) m_peer->Data(body);
  EXPECT_TRUE(m_peer->Ended());
}

TEST_F(ReconnectTest, FramesWithoutTracesAndWithoutALedgerAreCutOffToo) {
  Start();
  for (int i = 0; i < 200000; ++i) m_peer->Data("");
  EXPECT_TRUE(m_peer->Ended());
}

TEST_F(ReconnectTest, AMonitorThatDoesNotKeepUpLosesTheNewestCountsThemAndKeepsTheNames) {
  Start();
  const std::uint64_t sent = SendTooMuch();
  const auto counts = m_thread->GetCounts();
  EXPECT_GT(counts.lost, 0u);
  std::uint64_t taken = 1;
  const std::string words = DrainUntilLoss(counts.delivered, &taken);
  EXPECT_EQ(taken, counts.delivered);
  EXPECT_EQ(words, std::to_string(counts.lost) + " traces lost: the monitor did not keep up");
  m_peer->Data(Trace("after", 1179));
  m_peer->Ledger({{.serial = 11 + sent, .delivered = sent + 1}});
  EXPECT_EQ(Drain(1), "n179: after\n");
  EXPECT_EQ(m_thread->GetCounts().delivered + m_thread->GetCounts().lost, sent + 1);
}

TEST_F(ReconnectTest, WhatWasDroppedLastIsReportedThoughNothingComesAfterIt) {
  Start();
  const std::uint64_t sent = SendTooMuch();
  std::uint64_t taken = 1;
  const std::string words = DrainUntilLoss(0, &taken);
  const auto counts = m_thread->GetCounts();
  EXPECT_EQ(words, std::to_string(counts.lost) + " traces lost: the monitor did not keep up");
  EXPECT_EQ(counts.delivered + counts.lost, sent);
}

TEST_F(ReconnectTest, MoreNamesThanIdsShareOneWhoseNameSaysSo) {
  Start();
  std::uint64_t sent = 1;
  for (int round = 0; round < 2; ++round) {
    if (round > 0) Reconnect();
    std::string body;
    for (int i = 0; i < 40000; ++i)
      body += Name(static_cast<NameId>(i + 1), (round ? "b" : "a") + std::to_string(i));
    m_peer->Data(body + Trace("first", 1) + Trace("last", 40000));
    m_peer->Ledger({{.serial = 10 + sent + 2, .delivered = round ? 2u : sent + 2}});
    sent += 2;
    EXPECT_EQ(DrainUpTo("last"),
              round ? "b0: first\n(more names than a monitor can tell apart): last\n"
                    : "a0: first\na39999: last\n");
  }
  EXPECT_EQ(m_names.size(), 65535u);
  EXPECT_FALSE(m_names.contains(0));
}

}  // namespace

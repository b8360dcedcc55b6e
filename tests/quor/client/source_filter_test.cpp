// A filter text at the source, from the side of the monitor.
#include "live_fixture.h"

namespace {

using Kind = SourceFilterState::Kind;

class SourceFilterTest : public LiveTest {
 protected:
  std::string Traces(int from, int to) {
    TrcImage image("");
    image.Name(7, "web");
    for (int i = from; i < to; ++i) image.Trace({.text = "t" + std::to_string(i), .component = 7});
    return image.Bytes();
  }
  // The request that hands the text over, unanswered.
  quor::wire::Request ExpectText(const std::string& text) {
    const auto request = m_peer->ExpectRequest();
    EXPECT_TRUE(request.has_set_filter());
    EXPECT_EQ(request.set_filter().text(), text);
    return request;
  }
  bool Becomes(Kind kind) {
    return Eventually([&] { return m_thread->GetSourceFilter().kind == kind; });
  }
  void Filter(const std::string& text) {
    m_thread->FilterAtSource(text);
    m_peer->Answer(ExpectText(text));
    EXPECT_TRUE(Becomes(text.empty() ? Kind::None : Kind::InForce));
  }
};

TEST_F(SourceFilterTest, TheTextGoesToTheServiceBeforeEachSubscribe) {
  m_thread = WhileServed(
      [this] { return TraceThread_i::ConnectToTraceService("", m_names, &m_why, "pid == 1"); },
      [this] {
        m_peer = m_service.Accept();
        m_peer->Welcome();
        m_peer->Answer(ExpectText("pid == 1"));
        m_peer->Answer(m_peer->ExpectRequest());
      });
  ASSERT_TRUE(m_thread) << m_why;
  EXPECT_TRUE(Becomes(Kind::InForce));
  m_peer->Ledger({{.serial = 0}});
  m_peer.reset();
  m_peer = m_service.Accept();
  ASSERT_TRUE(m_peer);
  EXPECT_TRUE(Becomes(Kind::Asked));
  m_peer->Welcome();
  m_peer->Answer(ExpectText("pid == 1"));
  EXPECT_TRUE(m_peer->ExpectRequest().has_subscribe());
  EXPECT_TRUE(Becomes(Kind::InForce));
}

TEST_F(SourceFilterTest, WhatIsWithheldIsNeitherDeliveredNorLost) {
  Connect();
  Filter("text contains t");
  m_peer->Data(Traces(0, 2));
  m_peer->Ledger({{.serial = 10, .delivered = 2, .withheld = 8}});
  EXPECT_EQ(Drain(2), "web: t0\nweb: t1\n");
  m_peer->Ledger({{.serial = 1000, .delivered = 2, .lost = 3, .withheld = 995}});
  EXPECT_TRUE(Eventually([&] { return m_thread->GetCounts().withheld == 995; }));
  EXPECT_EQ(Counted(), "2 delivered, 995 withheld, 3 lost");
}

TEST_F(SourceFilterTest, AGapBetweenTwoStreamsIsOfLostTracesOnly) {
  Connect();
  Filter("pid == 1");
  m_peer->Data(Traces(0, 2));
  m_peer->Ledger({{.serial = 100, .delivered = 2, .withheld = 98}});
  EXPECT_EQ(Drain(2), "web: t0\nweb: t1\n");
  m_peer.reset();
  m_peer = m_service.Accept();
  ASSERT_TRUE(m_peer);
  m_peer->Welcome();
  m_peer->Answer(ExpectText("pid == 1"));
  m_peer->Answer(m_peer->ExpectRequest());
  // Seven were traced between the streams, and fifty withheld since.
  m_peer->Ledger({{.serial = 157, .withheld = 50}});
  EXPECT_EQ(Drain(1), "Quor: 7 traces lost: the connection was broken\n");
  EXPECT_EQ(Counted(), "2 delivered, 148 withheld, 7 lost");
}

TEST_F(SourceFilterTest, ARefusedTextIsToldWithItsPlaceAndTheStreamGoesOn) {
  Connect();
  m_thread->FilterAtSource("delta > 1s");
  quor::wire::Response response;
  response.set_error(quor::wire::ERROR_BAD_REQUEST);
  response.set_text("not here");
  response.set_place(3);
  response.set_length(5);
  m_peer->Answer(ExpectText("delta > 1s"), response);
  EXPECT_TRUE(Becomes(Kind::Refused));
  const SourceFilterState state = m_thread->GetSourceFilter();
  EXPECT_EQ(state.why, "not here");
  EXPECT_EQ(state.place, 3u);
  EXPECT_EQ(state.length, 5u);
  m_peer->Data(Traces(0, 1));
  m_peer->Ledger({{.serial = 1, .delivered = 1}});
  EXPECT_EQ(Drain(1), "web: t0\n");
  Filter("");
  EXPECT_TRUE(Becomes(Kind::None));
}

TEST_F(SourceFilterTest, AServiceThatKnowsNoFiltersIsNotAsked) {
  m_thread = WhileServed(
      [this] { return TraceThread_i::ConnectToTraceService("", m_names, &m_why, "pid == 1"); },
      [this] {
        m_peer = m_service.Accept();
        m_peer->filters = false;
        m_peer->Subscribed();
      });
  ASSERT_TRUE(m_thread) << m_why;
  EXPECT_TRUE(Becomes(Kind::Unknown));
  m_peer->Data(Traces(0, 1));
  m_peer->Ledger({{.serial = 1, .delivered = 1}});
  EXPECT_EQ(Drain(1), "web: t0\n");
  m_thread->FilterAtSource("pid == 2");
  EXPECT_TRUE(Becomes(Kind::Unknown));
  m_thread->Pause();
  EXPECT_TRUE(m_peer->ExpectRequest().has_pause()) << "nothing was asked before";
}

TEST_F(SourceFilterTest, OnlyTheAnswerToTheLastTextCounts) {
  Connect();
  m_thread->FilterAtSource("pid == 1");
  const auto first = ExpectText("pid == 1");
  m_thread->FilterAtSource("pid == 2");
  const auto second = ExpectText("pid == 2");
  quor::wire::Response response;
  response.set_error(quor::wire::ERROR_LIMIT);
  m_peer->Answer(first, response);
  m_peer->Data(Traces(0, 1));
  m_peer->Ledger({{.serial = 1, .delivered = 1}});
  EXPECT_EQ(Drain(1), "web: t0\n");
  EXPECT_EQ(m_thread->GetSourceFilter().kind, Kind::Asked);
  m_peer->Answer(second);
  EXPECT_TRUE(Becomes(Kind::InForce));
}

// Each of these ends the connection, and counts nothing.
TEST_F(SourceFilterTest, NumbersThatCannotBeAreRefused) {
  const std::vector<std::vector<FakePeer::Source>> lies = {
      {{.serial = 10, .delivered = 4, .lost = 3, .withheld = 4}},
      {{.serial = 10, .withheld = ~std::uint64_t{0}}},
      {{.serial = 10, .delivered = 6, .withheld = ~std::uint64_t{0} - 3}},
      {{.serial = 9, .withheld = 9}, {.serial = 10, .withheld = 8}},  // it falls
      {{.serial = 9, .withheld = 9}, {.serial = 8, .withheld = 8}},
      {{.serial = (std::uint64_t{1} << 56) + 1, .withheld = 1}},
  };
  for (const auto& lines : lies) {
    Connect();
    Filter("pid == 1");
    const std::uint64_t good = lines.size() - 1;
    for (const FakePeer::Source& line : lines) m_peer->Ledger({line});
    EXPECT_TRUE(m_peer->Ended()) << lines.back().serial << " " << lines.back().withheld;
    EXPECT_EQ(m_thread->GetCounts().withheld, good * 9);
    EXPECT_EQ(m_thread->GetCounts().lost, 0u);
    Disconnect();
  }
}

TEST_F(SourceFilterTest, AServiceThatWithholdsUnaskedIsRefused) {
  Connect();
  m_peer->Ledger({{.serial = 10, .withheld = 1}});
  EXPECT_TRUE(m_peer->Ended());
  EXPECT_EQ(Counted(), "0 delivered, 0 lost");
}

}  // namespace

// Bodies on their way to a service that confirms, goes away and comes again.
#include "quor/otlp/feed/otlp_feed.h"

#include <gmock/gmock.h>

#include "quor/otlp/feed/played_service.h"
#include "quor/otlp/otlp_messages.h"
#include "support/http_peer.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Kind = OtlpVerdict::Kind;

std::string LogsOf(const std::string& app, const std::vector<std::string>& texts) {
  LogMessage logs;
  AddText(logs.resource, "service.name", app);
  AddText(logs.resource, "host.name", "web1");
  AddValue(logs.resource, "process.pid").set_int_value(7);
  for (const std::string& text : texts) logs.Add(text);
  return logs.message.SerializeAsString();
}

class OtlpFeedTest : public testing::Test {
 protected:
  struct Answer {
    bool came = false;
    OtlpVerdict verdict;
  };
  std::shared_ptr<Answer> Send(const std::string& body, OtlpSignal signal = OtlpSignal::Logs) {
    auto answer = std::make_shared<Answer>();
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(body.data());
    m_feed.Take(signal, {bytes, body.size()}, "here", [answer](const OtlpVerdict& verdict) {
      EXPECT_FALSE(answer->came) << "answered twice";
      *answer = {true, verdict};
    });
    return answer;
  }
  Kind KindOf(const std::string& body, OtlpSignal signal = OtlpSignal::Logs) {
    const auto answer = Send(body, signal);
    EXPECT_TRUE(RunUntil(m_io, [&] { return answer->came; }));
    return answer->verdict.kind;
  }
  bool Connect() {
    m_forwarder->Start();
    return RunUntil(m_io, [&] { return m_forwarder->IsReached(); });
  }
  void TearDown() override {
    EXPECT_EQ(m_service.trouble, "");
    m_forwarder->Stop();
  }

  asio::io_context m_io;
  PlayedService m_service{m_io};
  const std::shared_ptr<Forwarder> m_forwarder =
      std::make_shared<Forwarder>(m_io, m_service.Way(), "here");
  OtlpFeed m_feed{m_io, m_forwarder};
};

TEST_F(OtlpFeedTest, ABodyIsTakenWhenTheServiceHasConfirmedIt) {
  ASSERT_TRUE(Connect());
  m_service.holds = true;
  const auto first = Send(LogsOf("orders", {"a", "b"}));
  const auto second = Send(LogsOf("billing", {"c"}));
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_service.texts.size() == 3; }));
  EXPECT_FALSE(first->came);
  EXPECT_FALSE(second->came);
  m_service.Confirm();
  ASSERT_TRUE(RunUntil(m_io, [&] { return second->came; }));
  EXPECT_TRUE(first->came);
  EXPECT_EQ(first->verdict.kind, Kind::Taken);
  EXPECT_THAT(m_service.texts, ElementsAre("orders/7: a", "orders/7: b", "billing/7: c"));
}

TEST_F(OtlpFeedTest, ABodyWithoutRecordsIsTakenAtOnce) {
  ASSERT_TRUE(Connect());
  EXPECT_TRUE(Send({})->came);
}

TEST_F(OtlpFeedTest, WhatIsNoMessageIsMalformedAndNothingOfItComes) {
  ASSERT_TRUE(Connect());
  const std::string body = LogsOf("orders", {"a", "b"});
  EXPECT_EQ(KindOf(body.substr(0, body.size() - 1)), Kind::Malformed);
  EXPECT_EQ(KindOf(LogsOf("orders", {"c"})), Kind::Taken);
  EXPECT_THAT(m_service.texts, ElementsAre("orders/7: c"));
}

TEST_F(OtlpFeedTest, WithoutAServiceEachBodyIsFullAndSaysWhy) {
  m_service.isAway = true;
  m_forwarder->Start();
  ASSERT_TRUE(RunUntil(m_io, [&] { return !m_forwarder->Trouble().empty(); }));
  const auto answer = Send(LogsOf("orders", {"a"}));
  ASSERT_TRUE(answer->came);
  EXPECT_EQ(answer->verdict.kind, Kind::Full);
  EXPECT_THAT(answer->verdict.why, HasSubstr("it is away"));
  EXPECT_GE(answer->verdict.retryAfter, 1u);
  EXPECT_LE(answer->verdict.retryAfter, 5u);
}

TEST_F(OtlpFeedTest, AServiceThatRefusesToTakeTracesIsNotReached) {
  m_service.refuses = "only administrators may";
  m_forwarder->Start();
  ASSERT_TRUE(RunUntil(m_io, [&] { return !m_forwarder->Trouble().empty(); }));
  const auto answer = Send(LogsOf("orders", {"a"}));
  ASSERT_TRUE(answer->came);
  EXPECT_THAT(answer->verdict.why, HasSubstr("it refuses: only administrators may"));
  m_service.refuses.clear();
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_forwarder->IsReached(); }));
  EXPECT_EQ(KindOf(LogsOf("orders", {"b"})), Kind::Taken);
}

TEST_F(OtlpFeedTest, WhatWasNotConfirmedComesOnceToAServiceThatWasStartedAnew) {
  ASSERT_TRUE(Connect());
  EXPECT_EQ(KindOf(LogsOf("orders", {"a"})), Kind::Taken);
  m_service.texts.clear();
  m_service.holds = true;
  const auto waiting = Send(LogsOf("orders", {"b"}));
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_service.texts.size() == 1; }));
  m_service.ForgetAll();
  m_service.holds = false;
  m_service.texts.clear();
  ASSERT_TRUE(RunUntil(m_io, [&] { return waiting->came; }));
  EXPECT_EQ(waiting->verdict.kind, Kind::Taken);
  EXPECT_THAT(m_service.texts, ElementsAre("orders/7: b"));
}

TEST_F(OtlpFeedTest, WhileTooMuchIsNotConfirmedABodyIsFull) {
  ASSERT_TRUE(Connect());
  m_service.holds = true;
  const std::string large(60'000, 'x');
  std::vector<std::shared_ptr<Answer>> answers;
  for (unsigned i = 0; i < 20 && (answers.empty() || !answers.back()->came); ++i)
    answers.push_back(Send(LogsOf("orders", std::vector<std::string>(32, large))));
  ASSERT_TRUE(answers.back()->came) << "there is no bound";
  EXPECT_EQ(answers.back()->verdict.kind, Kind::Full);
  EXPECT_GT(answers.size(), 5u) << "two bodies of 2 MB are not yet too much";
  m_service.Confirm();
  ASSERT_TRUE(RunUntil(m_io, [&] { return answers[answers.size() - 2]->came; }));
  EXPECT_EQ(m_forwarder->StoredBytes(), 0u);
  EXPECT_EQ(KindOf(LogsOf("orders", {"again"})), Kind::Taken);
  EXPECT_EQ(m_service.texts.size(), 32 * (answers.size() - 1) + 1);
}

// A thousand names that no other body has.
std::string NamesOf(unsigned body) {
  LogMessage logs;
  AddText(logs.resource, "service.name", "app" + std::to_string(body));
  for (unsigned i = 0; i < 1000; ++i)
    logs.Add("x").set_event_name("event " + std::to_string(body) + "." + std::to_string(i));
  return logs.message.SerializeAsString();
}

TEST_F(OtlpFeedTest, NamesAreRenewedBeforeAnyIsShared) {
  ASSERT_TRUE(Connect());
  for (unsigned i = 0; i < 90; ++i) ASSERT_EQ(KindOf(NamesOf(i)), Kind::Taken);
  EXPECT_GT(m_service.streams, 1u);
  EXPECT_EQ(m_service.texts.size(), 90'000u);
  for (const std::string& text : m_service.texts)
    ASSERT_EQ(text.find("names are in use"), text.npos);
}

TEST_F(OtlpFeedTest, ABodyWaitsUntilNamesAreRenewed) {
  ASSERT_TRUE(Connect());
  m_service.holds = true;
  std::shared_ptr<Answer> answer;
  unsigned bodies = 0;
  while (!answer || !answer->came) {
    ASSERT_LT(bodies, 65u) << "more names than there are ids";
    answer = Send(NamesOf(bodies++));
  }
  EXPECT_EQ(answer->verdict.kind, Kind::Full);
  EXPECT_EQ(answer->verdict.why, "its names are renewed");
  m_service.Confirm();
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_service.streams > 1; }));
  EXPECT_EQ(KindOf(NamesOf(bodies)), Kind::Taken);
}

TEST_F(OtlpFeedTest, SpansThatWaitForOthersComeAtTheEnd) {
  ASSERT_TRUE(Connect());
  SpanMessage spans;
  AddText(spans.resource, "service.name", "orders");
  spans.Add("child", 1, 2, "root");
  EXPECT_EQ(KindOf(spans.message.SerializeAsString(), OtlpSignal::Traces), Kind::Taken);
  EXPECT_EQ(m_feed.HeldSpans(), 1u);
  EXPECT_EQ(m_service.texts.size(), 0u);
  bool ended = false;
  m_feed.Finish(std::chrono::seconds(20), [&] { ended = true; });
  ASSERT_TRUE(RunUntil(m_io, [&] { return ended; }));
  EXPECT_EQ(m_service.texts.size(), 2u);
  EXPECT_EQ(Send(LogsOf("orders", {"late"}))->verdict.kind, Kind::Full);
}

TEST_F(OtlpFeedTest, WhatDoesNotFitIntoTheStoreIsToldAsLost) {
  constexpr unsigned kSpans = 3000;
  const auto forwarder =
      std::make_shared<Forwarder>(m_io, m_service.Way(), "here", std::size_t{64} << 10);
  OtlpFeed feed(m_io, forwarder);
  forwarder->Start();
  ASSERT_TRUE(RunUntil(m_io, [&] { return forwarder->IsReached(); }));
  SpanMessage spans;
  AddText(spans.resource, "service.name", "orders");
  for (unsigned i = 0; i < kSpans; ++i)
    spans.Add("span " + std::to_string(i), i, i + 1, "a parent elsewhere");
  const std::string body = spans.message.SerializeAsString();
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(body.data());
  bool taken = false;
  feed.Take(OtlpSignal::Traces, {bytes, body.size()}, "here",
            [&](const OtlpVerdict& verdict) { taken = verdict.kind == Kind::Taken; });
  EXPECT_TRUE(taken);
  m_service.isAway = true;
  m_service.Break();
  ASSERT_TRUE(RunUntil(m_io, [&] { return !forwarder->IsReached(); }));
  bool ended = false;
  feed.Finish(std::chrono::seconds(20), [&] { ended = true; });
  EXPECT_LE(forwarder->StoredBytes(), std::size_t{192} << 10);
  m_service.isAway = false;
  ASSERT_TRUE(RunUntil(m_io, [&] { return ended; }));
  std::uint64_t lost = 0, came = 0;
  for (const std::string& text : m_service.texts) {
    const std::size_t at = text.find(" traces lost");
    const std::size_t number = text.find(": ") + 2;
    if (at == text.npos)
      ++came;
    else
      lost += std::stoul(text.substr(number, at - number));
  }
  EXPECT_GT(lost, 0u);
  EXPECT_GT(came, 0u);
  EXPECT_EQ(lost + came, 2 * kSpans);
  forwarder->Stop();
}

TEST_F(OtlpFeedTest, TheEndDoesNotWaitForeverForAServiceThatIsSilent) {
  ASSERT_TRUE(Connect());
  m_service.holds = true;
  Send(LogsOf("orders", {"a"}));
  unsigned ended = 0;
  m_feed.Finish(std::chrono::milliseconds(50), [&] { ++ended; });
  ASSERT_TRUE(RunUntil(m_io, [&] { return ended > 0; }));
  m_service.Confirm();
  m_io.restart();
  m_io.run_for(std::chrono::milliseconds(20));
  EXPECT_EQ(ended, 1u);
}

}  // namespace

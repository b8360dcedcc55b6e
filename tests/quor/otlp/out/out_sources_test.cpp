// Traces as logs and spans: which message a trace becomes, and what it says.
#include "quor/otlp/out/out_sources.h"

#include <gmock/gmock.h>

#include "quor/otlp/out/out_ids.h"
#include "sent_messages.h"

namespace {

using ::testing::SizeIs;

const std::string kInstance(16, 'i');

class OutSourcesTest : public testing::Test {
 protected:
  // A frame of these traces, with losses that reports tell or that nothing tells.
  void Send(std::vector<OutTrace> traces, std::uint64_t lost = 0) {
    OutFrame frame;
    frame.instance = kInstance;
    for (const OutTrace& trace : traces) frame.delivered += trace.serial != OutSources::kOutReport;
    frame.lost = lost;
    frame.serial = m_serial += frame.delivered + lost;
    frame.traces = traces;
    m_sources.Take(frame, m_sent);
  }
  std::uint64_t m_serial = 0;
  OutSources m_sources{"web1"};
  SentMessages m_sent;
};

TEST_F(OutSourcesTest, ATraceBecomesALogWithAllThatItSays) {
  OutTrace trace = TraceAtNs("17", "paid", 5 * kNsPerMillisecond);
  trace.stack = "0x1 main";
  Send({trace});
  ASSERT_THAT(m_sent.all, SizeIs(1));
  const LogRecord& log = m_sent.LogAt(0);
  EXPECT_EQ(log.body().string_value(), "paid");
  EXPECT_EQ(log.time_unix_nano(), MidnightNs() + 5 * kNsPerMillisecond);
  EXPECT_EQ(log.severity_number(), 9u);
  EXPECT_EQ(log.severity_text(), "INFO");
  EXPECT_EQ(log.event_name(), "Order");
  EXPECT_EQ(IntOf(log, "thread.id"), 17);
  EXPECT_EQ(TextOf(log, "code.file.path"), "shop.cpp");
  EXPECT_EQ(IntOf(log, "code.line.number"), 42);
  EXPECT_EQ(IntOf(log, "quor.tic_ps"), 5'077'000'000);
  EXPECT_EQ(IntOf(log, "quor.serial"), 1);
  EXPECT_EQ(TextOf(log, "exception.stacktrace"), "0x1 main");
  EXPECT_EQ(Find(log, "quor.attributes"), nullptr);
  EXPECT_EQ(log.trace_id(), "");
  EXPECT_EQ(m_sent.all[0].component, "Shop");
}

TEST_F(OutSourcesTest, SeveritiesHaveTheNumbersOfTheStandard) {
  const std::pair<int, std::uint32_t> cases[] = {
      {kAttributeError, 17},
      {kAttributeWarn, 13},
      {kAttributeInfo, 9},
      {kAttributeInfo | kAttributeDeveloper, 5},
      {kAttributeInfo | kAttributeVerbose, 1},
      {kAttributeError | kAttributeDeveloper, 17},
      {0, 0},
  };
  for (const auto& [attributes, number] : cases) {
    OutTrace trace = TraceAtNs("1", "x", 0);
    trace.attributes = attributes;
    Send({trace});
    EXPECT_EQ(m_sent.all.back().log.severity_number(), number) << attributes;
  }
  // Only what the number does not say stands in an attribute.
  EXPECT_EQ(TextOf(m_sent.LogAt(5), "quor.attributes"), "Error, Developer");
  EXPECT_EQ(TextOf(m_sent.LogAt(3), "quor.attributes"), "none");
}

TEST_F(OutSourcesTest, ABlockBecomesOneSpanWithItsExactDuration) {
  Send({TraceAtNs("1", "Begin: order", 1'900'000), TraceAtNs("1", "Begin: pay", 1'950'123),
        TraceAtNs("1", "card", 2'000'000), TraceAtNs("1", "End: pay", 2'000'001),
        TraceAtNs("1", "End: order", 2'100'007)});
  ASSERT_THAT(m_sent.all, SizeIs(3));
  const LogRecord& card = m_sent.LogAt(0);
  const Span &pay = m_sent.SpanAt(1), &order = m_sent.SpanAt(2);
  EXPECT_EQ(order.name(), "order");
  EXPECT_EQ(order.kind(), 1u);
  EXPECT_EQ(order.parent_span_id(), "");
  EXPECT_EQ(order.trace_id(), OutTraceId(kInstance, "1", 1));
  EXPECT_EQ(order.span_id(), OutSpanId(kInstance, 1));
  EXPECT_EQ(order.start_time_unix_nano(), MidnightNs() + kNsPerMillisecond);
  EXPECT_EQ(order.end_time_unix_nano() - order.start_time_unix_nano(), 200'007u);
  EXPECT_EQ(IntOf(order, "quor.serial"), 1);
  EXPECT_EQ(IntOf(order, "quor.end_serial"), 5);
  EXPECT_EQ(pay.parent_span_id(), order.span_id());
  EXPECT_EQ(pay.trace_id(), order.trace_id());
  EXPECT_EQ(pay.end_time_unix_nano() - pay.start_time_unix_nano(), 49'878u);
  EXPECT_EQ(pay.start_time_unix_nano() - order.start_time_unix_nano(), 50'123u);
  EXPECT_EQ(card.trace_id(), pay.trace_id());
  EXPECT_EQ(card.span_id(), pay.span_id());
  EXPECT_EQ(m_sent.all[1].weight.traces, 2u);
  EXPECT_EQ(m_sources.Open().blocks, 0u);
  EXPECT_EQ(m_sources.Open().bytes, 0u);
}

TEST_F(OutSourcesTest, AnErrorMarksTheBlockThatItStandsIn) {
  OutTrace error = TraceAtNs("1", "no money", 0);
  error.attributes = kAttributeError;
  OutTrace end = TraceAtNs("1", "End: ship: no van", 0);
  end.attributes = kAttributeError;
  Send({TraceAtNs("1", "Begin: order", 0), TraceAtNs("1", "Begin: pay", 0), error,
        TraceAtNs("1", "End: pay", 0), TraceAtNs("1", "Begin: ship", 0), end,
        TraceAtNs("1", "End: order", 0)});
  EXPECT_EQ(m_sent.SpanAt(1).status().code(), 2u);
  EXPECT_EQ(m_sent.SpanAt(2).status().code(), 2u);
  EXPECT_EQ(m_sent.SpanAt(2).status().message(), "no van");
  EXPECT_EQ(m_sent.SpanAt(3).status().code(), 0u);
}

TEST_F(OutSourcesTest, AnEndWithoutABeginIsALog) {
  Send({TraceAtNs("1", "End: what", 0), TraceAtNs("2", "Begin: other", 0),
        TraceAtNs("1", "End: what", 0), TraceAtNs("2", "End: another", 0)});
  ASSERT_THAT(m_sent.all, SizeIs(3));
  EXPECT_EQ(m_sent.LogAt(0).body().string_value(), "End: what");
  EXPECT_EQ(m_sent.LogAt(1).span_id(), "");
  EXPECT_EQ(TextOf(m_sent.SpanAt(2), "quor.end"), "another");
}

TEST_F(OutSourcesTest, ALossEndsAllOpenBlocksOfItsSource) {
  Send({TraceAtNs("1", "Begin: order", 0), TraceAtNs("2", "Begin: idle", 0),
        LossReport("3 traces lost: the ring was full"), TraceAtNs("1", "End: order", 9)},
       3);
  ASSERT_THAT(m_sent.all, SizeIs(4));
  EXPECT_TRUE(Find(m_sent.SpanAt(0), "quor.unfinished")->bool_value());
  EXPECT_EQ(m_sent.all[0].weight.traces, 1u);
  EXPECT_EQ(m_sent.SpanAt(1).name(), "idle");
  EXPECT_EQ(IntOf(m_sent.LogAt(2), "quor.lost"), 3);
  EXPECT_EQ(IntOf(m_sent.LogAt(2), "quor.serial"), -1);
  EXPECT_EQ(m_sent.LogAt(2).severity_number(), 13u);
  EXPECT_EQ(m_sent.all[2].weight.lost, 3u);
  EXPECT_EQ(IntOf(m_sent.LogAt(3), "quor.serial"), 6);
}

TEST_F(OutSourcesTest, ALossThatNothingReportsIsToldInFrontOfItsFrame) {
  Send({TraceAtNs("1", "Begin: order", 0)});
  Send({TraceAtNs("1", "End: order", 0), LossReport("2 traces lost: x")}, 7);
  ASSERT_THAT(m_sent.all, SizeIs(4));
  EXPECT_EQ(IntOf(m_sent.SpanAt(0), "quor.serial"), 1);
  EXPECT_EQ(m_sent.LogAt(1).body().string_value(),
            "5 traces lost: the service could not keep them");
  EXPECT_EQ(IntOf(m_sent.LogAt(1), "quor.lost"), 5);
  EXPECT_EQ(IntOf(m_sent.LogAt(2), "quor.serial"), 7);
  EXPECT_EQ(IntOf(m_sent.LogAt(3), "quor.lost"), 2);
}

// The service counts such a loss with another frame.
TEST_F(OutSourcesTest, AReportNeverTellsMoreThanWasCounted) {
  Send({LossReport("18446744073709551615 traces lost: x"), LossReport("9 traces lost: x")}, 4);
  EXPECT_EQ(IntOf(m_sent.LogAt(0), "quor.lost"), 4);
  EXPECT_EQ(IntOf(m_sent.LogAt(1), "quor.lost"), -1);
}

TEST_F(OutSourcesTest, TextsThatAreNotUtf8AreMadeSo) {
  OutTrace trace = TraceAtNs("\xff", "a\xc3", 0);
  trace.component = trace.category = trace.file = trace.stack = "\x80";
  Send({trace, TraceAtNs("\xff", "Begin: \xed\xa0\x80", 0), TraceAtNs("\xff", "End: \xfe", 0)});
  const std::string mark = "\xef\xbf\xbd";
  const LogRecord& log = m_sent.LogAt(0);
  EXPECT_EQ(log.body().string_value(), "a" + mark);
  EXPECT_EQ(log.event_name(), mark);
  EXPECT_EQ(TextOf(log, "thread.name"), mark);
  EXPECT_EQ(TextOf(log, "code.file.path"), mark);
  EXPECT_EQ(TextOf(log, "exception.stacktrace"), mark);
  EXPECT_EQ(m_sent.SpanAt(1).name().find('\xed'), std::string::npos);
  EXPECT_EQ(TextOf(m_sent.SpanAt(1), "quor.end"), mark);
}

TEST_F(OutSourcesTest, BeginsBeyondTheDepthOfAThreadAreLogsAndSoAreTheirEnds) {
  const std::size_t deep = kOpenBlocksOfThread + 10;
  for (std::size_t i = 0; i < deep; ++i) Send({TraceAtNs("1", "Begin: x", 0)});
  EXPECT_THAT(m_sent.all, SizeIs(10));
  EXPECT_EQ(m_sources.Open().refused, 10u);
  for (std::size_t i = 0; i < deep; ++i) Send({TraceAtNs("1", "End: x", 0)});
  ASSERT_THAT(m_sent.all, SizeIs(20 + kOpenBlocksOfThread));
  for (std::size_t i = 0; i < 20; ++i)
    EXPECT_EQ(m_sent.LogAt(i).span_id(), OutSpanId(kInstance, kOpenBlocksOfThread));
  EXPECT_EQ(IntOf(m_sent.SpanAt(20), "quor.serial"), static_cast<int>(kOpenBlocksOfThread));
  EXPECT_EQ(m_sent.SpanAt(19 + kOpenBlocksOfThread).parent_span_id(), "");
  EXPECT_EQ(m_sources.Open().blocks, 0u);
}

TEST_F(OutSourcesTest, OpenBlocksTakeBoundedMemory) {
  const std::string text = "Begin: " + std::string(60'000, 'x');
  for (int i = 0; i < 400; ++i) Send({TraceAtNs(std::to_string(i), text, 0)});
  EXPECT_LE(m_sources.Open().bytes, kOpenBlockBytes);
  EXPECT_GT(m_sources.Open().refused, 100u);
  EXPECT_EQ(m_sent.all.size(), m_sources.Open().refused);
  m_sources.End(m_sent);
  EXPECT_THAT(m_sent.all, SizeIs(400));
  EXPECT_EQ(m_sources.Open().bytes, 0u);
}

TEST_F(OutSourcesTest, ATraceWithoutATimeHasNone) {
  OutTrace trace = TraceAtNs("1", "when", 0);
  trace.date = PackDate(0, 0, 0);
  Send({trace});
  EXPECT_EQ(m_sent.LogAt(0).time_unix_nano(), 0u);
}

TEST_F(OutSourcesTest, TracesOfAMillisecondKeepTheirDistances) {
  // The first one came late in its millisecond, which the second one shows.
  Send({TraceAtNs("1", "a", 1'900'000), TraceAtNs("1", "b", 2'000'000),
        TraceAtNs("1", "c", 2'000'500), TraceAtNs("1", "d", 2'999'999)});
  EXPECT_EQ(m_sent.LogAt(1).time_unix_nano(), MidnightNs() + 2'000'000);
  EXPECT_EQ(m_sent.LogAt(2).time_unix_nano(), MidnightNs() + 2'000'500);
  EXPECT_EQ(m_sent.LogAt(3).time_unix_nano(), MidnightNs() + 2'999'999);
}

TEST_F(OutSourcesTest, AStateThatContradictsItselfIsRefused) {
  Send({TraceAtNs("1", "Begin: x", 0)});
  quor::otlp::out::State state;
  m_sources.Save(state);
  *state.add_sources() = state.sources(0);
  OutSources other("web1");
  EXPECT_FALSE(other.Load(state));
  EXPECT_EQ(other.Open().blocks, 0u);
}

}  // namespace

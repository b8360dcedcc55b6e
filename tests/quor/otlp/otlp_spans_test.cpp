#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <random>

#include "quor/otlp/otlp_messages.h"
#include "records/record_layout.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class Spans : public testing::Test {
 protected:
  void Take(const SpanMessage& spans, int second = 0) {
    mapper.Take(spans.message, ArrivalAt(second));
  }
  void Tick(int second) { mapper.Tick(std::chrono::seconds(second)); }

  TakenRecords taken;
  OtlpMapper mapper{taken};
};

// Without the ids, which every begin has.
std::vector<std::string> ShortLines(const TakenRecords& taken) {
  std::vector<std::string> lines = taken.Lines();
  for (std::string& line : lines) line.resize(std::min(line.find(" trace="), line.size()));
  return lines;
}

}  // namespace

TEST_F(Spans, HaveARecordForTheirBeginAndOneForTheirEnd) {
  SpanMessage spans;
  spans.scope.set_name("http");
  auto& span = spans.Add("GET /users", 1, 2);
  span.set_kind(2);
  AddText(span, "method", "GET");
  AddText(span, "code.file.path", "server.js");
  AddText(span, "code.line.number", "7");
  span.set_dropped_attributes_count(2);
  Take(spans);
  ASSERT_EQ(taken.all.size(), 2u);
  EXPECT_FALSE(taken.anyIsNull);
  const auto& begin = taken.all[0];
  EXPECT_EQ(begin.text, "Begin: GET /users method=GET (+2) trace=74726163 span=47455420");
  EXPECT_EQ(begin.when, "2026-11-24 00:00:01.000");
  EXPECT_EQ(begin.thread, "lane 1");
  EXPECT_EQ(begin.component, "http");
  EXPECT_EQ(begin.category, "Server");
  EXPECT_EQ(begin.file, "server.js");
  EXPECT_EQ(begin.line, 7u);
  EXPECT_EQ(begin.attributes, kAttributeInfo);
  const auto& end = taken.all[1];
  EXPECT_EQ(end.text, "End: GET /users");
  EXPECT_EQ(end.when, "2026-11-24 00:00:02.000");
  EXPECT_EQ(end.file, "");
  EXPECT_EQ(end.line, 0u);
  EXPECT_EQ(end.attributes, kAttributeInfo);
  EXPECT_EQ(end.tic - begin.tic, 1'000'000'000'000u);
}

TEST_F(Spans, HaveTheCategoryOfTheirKind) {
  const char* const kKinds[] = {"Span",     "Internal", "Server", "Client",
                                "Producer", "Consumer", "Span"};
  for (std::uint32_t kind = 0; kind < std::size(kKinds); ++kind) {
    SpanMessage spans;
    spans.Add("x", 1, 2).set_kind(kind);
    Take(spans);
    EXPECT_EQ(taken.all.back().category, kKinds[kind]);
  }
}

TEST_F(Spans, ThatAreEmptyBecomeRecordsToo) {
  SpanMessage spans;
  spans.scopeSpans.add_spans();
  Take(spans);
  ASSERT_EQ(taken.all.size(), 2u);
  EXPECT_EQ(taken.all[0].text, "Begin:  (no start time)");
  EXPECT_EQ(taken.all[1].text, "End:  (no end time)");
  EXPECT_EQ(taken.all[0].when, "2026-11-24 12:00:00.000");
  EXPECT_EQ(taken.all[0].component, "Otlp");
  EXPECT_EQ(taken.all[0].category, "Span");
}

TEST_F(Spans, EndAsErrorsWithTheirStatus) {
  SpanMessage spans;
  auto& span = spans.Add("a", 1, 2);
  span.mutable_status()->set_code(2);
  span.mutable_status()->set_message("timed out");
  spans.Add("b", 3, 4).mutable_status()->set_code(2);
  spans.Add("c", 5, 6).mutable_status()->set_message("unset");
  Take(spans);
  EXPECT_EQ(taken.all[1].text, "End: a status=\"timed out\"");
  EXPECT_EQ(taken.all[1].attributes, kAttributeError);
  EXPECT_EQ(taken.all[3].text, "End: b status=ERROR");
  EXPECT_EQ(taken.all[5].text, "End: c");
  EXPECT_EQ(taken.all[5].attributes, kAttributeInfo);
}

TEST_F(Spans, EndWithLinksAndWhatWasDropped) {
  SpanMessage spans;
  auto& span = spans.Add("a", 1, 2);
  auto& link = *span.add_links();
  link.set_trace_id("abcdefgh");
  link.set_span_id("ABCDEFGH");
  span.set_dropped_events_count(3);
  span.set_dropped_links_count(1);
  Take(spans);
  EXPECT_EQ(taken.all[1].text, "End: a link=61626364 to=41424344 (+3 events) (+1 links)");
}

TEST_F(Spans, HaveTheirEventsBetweenBeginAndEnd) {
  SpanMessage spans;
  auto& span = spans.Add("a", 1, 9);
  auto& late = *span.add_events();
  late.set_name("exception");
  late.set_time_unix_nano(kMidnight + 8 * kSecondNs);
  AddText(late, "exception.stacktrace", "at f");
  AddText(late, "exception.type", "E");
  late.set_dropped_attributes_count(1);
  auto& early = *span.add_events();
  early.set_name("ready");
  early.set_time_unix_nano(kMidnight + 2 * kSecondNs);
  span.add_events();
  Take(spans);
  EXPECT_THAT(ShortLines(taken), ElementsAre("lane 1: Begin: a", "lane 1: Event: ready",
                                             "lane 1: Event: exception exception.type=E (+1)",
                                             "lane 1: Event: ", "lane 1: End: a"));
  EXPECT_EQ(taken.all[1].attributes, kAttributeInfo);
  EXPECT_EQ(taken.all[2].attributes, kAttributeError);
  EXPECT_EQ(taken.all[2].stack, "at f");
  EXPECT_EQ(taken.all[3].when, "2026-11-24 12:00:00.000");
  EXPECT_EQ(mapper.Counts().events, 3u);
}

TEST_F(Spans, ThatComeChildrenFirstAreHeldUntilTheirRootComes) {
  SpanMessage children, root;
  children.Add("query", 2, 3, "handler");
  children.Add("handler", 1, 4, "request");
  Take(children, 0);
  EXPECT_THAT(taken.all, IsEmpty());
  EXPECT_EQ(mapper.HeldSpans(), 2u);
  root.Add("request", 0, 5);
  Take(root, 1);
  EXPECT_THAT(ShortLines(taken), ElementsAre("lane 1: Begin: request", "lane 1: Begin: handler",
                                             "lane 1: Begin: query", "lane 1: End: query",
                                             "lane 1: End: handler", "lane 1: End: request"));
  EXPECT_EQ(mapper.HeldSpans(), 0u);
}

TEST_F(Spans, OfARootInAnotherProcessAreGivenWhenTheirOwnRootComes) {
  SpanMessage spans;
  spans.Add("query", 2, 3, "handler");
  spans.Add("handler", 1, 4, "elsewhere").set_flags(0x301);
  Take(spans);
  EXPECT_EQ(taken.all.size(), 4u);
  SpanMessage local;
  local.Add("other", 5, 6, "elsewhere").set_flags(0x101);
  Take(local);
  EXPECT_EQ(taken.all.size(), 4u);
}

TEST_F(Spans, WhoseRootNeverComesAreGivenAfterFiveSecondsOfSilence) {
  SpanMessage spans;
  spans.Add("query", 2, 3, "lost");
  Take(spans, 0);
  Take(spans, 4);
  Tick(8);
  EXPECT_THAT(taken.all, IsEmpty());
  Tick(9);
  EXPECT_EQ(taken.all.size(), 4u);
}

TEST_F(Spans, AreNotHeldForLongWhileOthersOfTheirTraceKeepComing) {
  SpanMessage spans;
  spans.Add("query", 2, 3, "lost");
  for (int second = 0; second < 60; second += 4) Take(spans, second);
  EXPECT_THAT(taken.all, IsEmpty());
  Tick(60);
  EXPECT_EQ(taken.all.size(), 30u);
}

TEST_F(Spans, OfTwoTracesWaitForTheirOwnRoots) {
  SpanMessage spans;
  spans.Add("a", 1, 2, "root", "one");
  spans.Add("b", 3, 4, "", "two");
  Take(spans);
  EXPECT_THAT(ShortLines(taken), ElementsAre("lane 1: Begin: b", "lane 1: End: b"));
}

TEST_F(Spans, DoNotNestInASiblingThatIsAroundThem) {
  SpanMessage spans;
  spans.Add("long", 1, 8, "request");
  spans.Add("short", 2, 3, "request");
  spans.Add("request", 0, 9);
  Take(spans);
  EXPECT_THAT(ShortLines(taken),
              ElementsAre("lane 1: Begin: request", "lane 1: Begin: long", "lane 2: Begin: short",
                          "lane 2: End: short", "lane 1: End: long", "lane 1: End: request"));
}

TEST_F(Spans, ThatComeLateHaveALaneWhereTimeDoesNotRunBackwards) {
  SpanMessage root, late;
  root.Add("request", 0, 5);
  Take(root);
  late.Add("child", 1, 2, "request");
  Take(late, 1);
  Tick(6);
  EXPECT_THAT(ShortLines(taken), ElementsAre("lane 1: Begin: request", "lane 1: End: request",
                                             "lane 2: Begin: child", "lane 2: End: child"));
}

TEST_F(Spans, ThatEndBeforeTheyBeginSaySo) {
  SpanMessage spans;
  spans.Add("a", 5, 3);
  Take(spans);
  EXPECT_EQ(taken.all[1].text, "End: a (ended before it began)");
  EXPECT_EQ(taken.all[1].when, "2026-11-24 00:00:05.000");
  EXPECT_EQ(taken.all[1].tic, taken.all[0].tic);
}

TEST_F(Spans, BeyondTheirMemoryAreGivenAtOnce) {
  OtlpRules rules;
  rules.heldBytes = 100'000;
  OtlpMapper small(taken, rules);
  SpanMessage spans;
  for (int i = 0; i < 100; ++i)
    AddText(spans.Add("s" + std::to_string(i), 1, 2, "lost"), "k", std::string(3000, 'x'));
  small.Take(spans.message, ArrivalAt());
  EXPECT_GE(taken.all.size(), 100u);
  EXPECT_LT(small.HeldSpans(), 40u);
  EXPECT_EQ(taken.all.size() + 2 * small.HeldSpans(), 200u);
}

TEST_F(Spans, OfAllProcessesBeyondTheirMemoryAreGivenOfTheLargestFirst) {
  OtlpRules rules;
  rules.heldBytesAll = 20'000;
  OtlpMapper small(taken, rules);
  for (const std::string pid : {"1", "2", "3"}) {
    SpanMessage spans;
    AddText(spans.resource, "process.pid", pid);
    const std::size_t length = pid == "2" ? 12'000 : 4'000;
    AddText(spans.Add("x", 1, 2, "lost"), "k", std::string(length, 'x'));
    small.Take(spans.message, ArrivalAt());
  }
  ASSERT_EQ(taken.all.size(), 2u);
  EXPECT_EQ(taken.all[0].source.process, "2");
  EXPECT_EQ(small.HeldSpans(), 2u);
}

TEST_F(Spans, OfAProcessThatEndsAreGiven) {
  OtlpRules rules;
  rules.silence = rules.longest = std::chrono::hours(1);
  OtlpMapper mapper2(taken, rules);
  SpanMessage spans;
  spans.Add("a", 1, 2, "lost");
  mapper2.Take(spans.message, ArrivalAt());
  mapper2.Tick(std::chrono::minutes(10));
  EXPECT_EQ(taken.all.size(), 2u);
  EXPECT_EQ(taken.ended.size(), 1u);
}

TEST_F(Spans, AreAllGivenByAFlush) {
  SpanMessage spans;
  spans.Add("a", 1, 2, "lost");
  spans.Add("a", 1, 2, "a");
  Take(spans);
  mapper.Flush();
  EXPECT_EQ(taken.all.size(), 4u);
  EXPECT_EQ(mapper.HeldSpans(), 0u);
}

// Random messages: every span has its two records, and on each lane they nest.
TEST_F(Spans, NestWhateverComesInWhateverOrder) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    TakenRecords records;
    OtlpMapper any(records);
    std::size_t sent = 0;
    for (int message = 0, second = 0; message < 8; ++message) {
      SpanMessage spans;
      for (auto left = random() % 12; left > 0; --left, ++sent) {
        const auto id = [&] { return "s" + std::to_string(random() % 30); };
        const std::uint64_t from = random() % 50;
        const std::string parent = random() % 5 == 0 ? std::string() : id();
        spans.Add(id(), from, from + random() % 20, parent, random() % 2 ? "t" : "u");
      }
      any.Take(spans.message, ArrivalAt(second += static_cast<int>(random() % 4)));
      any.Tick(std::chrono::seconds(second));
    }
    any.Flush();
    ASSERT_EQ(records.all.size(), 2 * sent);
    std::map<std::string, std::vector<std::string>> open;
    for (const auto& record : records.all) {
      const std::string name = record.text.substr(0, record.text.find(" trace="));
      if (name.starts_with("Begin: ")) {
        open[record.thread].push_back(name.substr(7));
      } else {
        ASSERT_FALSE(open[record.thread].empty());
        ASSERT_EQ("End: " + open[record.thread].back(), name);
        open[record.thread].pop_back();
      }
    }
    for (const auto& [lane, names] : open) ASSERT_THAT(names, IsEmpty()) << lane;
  }
}

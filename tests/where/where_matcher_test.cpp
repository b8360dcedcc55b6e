// A compiled filter text against the slow rules over decoded traces.
#include "where/where_matcher.h"

#include <gtest/gtest.h>

#include "records/trc_walk.h"
#include "support/file_image.h"
#include "support/make_event.h"
#include "support/zone_guard.h"
#include "where/plain_where.h"
#include "where/random_where.h"
#include "where/text/where_writer.h"

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
// 2026-11-22T23:59:59
constexpr std::int64_t kEnd = (20'779 * 86'400LL + 86'399) * kSecond;

NameMap SomeNames(RandomWhere& random) {
  NameMap names;
  for (NameId id = 0; id < 10; ++id)
    if (random.Below(5)) names[id].name = random.AnyName();
  return names;
}

// Random traces in one order, with the plain rule's verdicts and those of the matcher.
class Rows {
 public:
  Rows(RandomWhere& random, const NameMap& names, std::size_t count) {
    for (; m_traces.size() < count;) {
      m_traces.push_back(random.Trace(names));
      random.Mark(m_traces.back());
      m_events.push_back(MakeEvent(m_traces.back().fields));
    }
  }
  void Name(const NameMap& names) {
    for (PlainTrace& trace : m_traces) RandomWhere::Name(trace, names);
  }
  void ExpectSame(const PlainWhere& plain, const WhereExpr& expr, WhereMatcher& matcher) const {
    matcher.SetMarks(std::make_shared<Marks>(*this));
    WherePrevious previous;
    for (std::size_t i = 0; i < m_traces.size(); ++i) {
      const std::uint8_t* const record = m_events[i]->Record();
      const bool expected = plain.Holds(expr, m_traces[i], i > 0 ? &m_traces[i - 1] : nullptr);
      ASSERT_EQ(matcher.Matches(record, previous), expected)
          << "trace " << i << ": " << m_traces[i].fields.text;
      ASSERT_EQ(matcher.Matches(record, previous), expected) << "the second time";
      previous = WherePrevious(RawTrace(record));
    }
  }

 private:
  struct Marks final : WhereMarks {
    explicit Marks(const Rows& rows) : m_rows(rows) {}
    WhereMark Of(const std::uint8_t* record) const override {
      for (std::size_t i = 0; i < m_rows.m_events.size(); ++i)
        if (m_rows.m_events[i]->Record() == record)
          return {static_cast<std::uint8_t>(m_rows.m_traces[i].mark), m_rows.m_traces[i].note};
      return {};
    }
    const Rows& m_rows;
  };

  std::vector<PlainTrace> m_traces;
  std::vector<EventPtr> m_events;
};

WhereProgramPtr Compiled(const WhereExpr& expr) {
  WhereError error;
  WhereProgramPtr program = WhereProgram::Compile(expr, error);
  EXPECT_TRUE(program) << WhereText(expr) << ": " << error.reason;
  return program;
}

TEST(WhereMatcher, ThousandsOfRandomTextsHoldForTheTracesThatThePlainRulesName) {
  const ZoneGuard zone("XYZ-5:30");
  RandomWhere random(20261123);
  for (int round = 0; round < 4000; ++round) {
    const NameMap names = SomeNames(random);
    const WhereExpr expr = random.Tree(static_cast<int>(random.Below(5)));
    SCOPED_TRACE(WhereText(expr));
    const WhereProgramPtr program = Compiled(expr);
    ASSERT_TRUE(program);
    const bool utc = random.Below(2) != 0;
    const std::optional<std::int64_t> end =
        random.Below(4) ? std::optional<std::int64_t>(kEnd) : std::nullopt;
    WhereMatcher matcher(program, names, {utc, end});
    const PlainWhere plain(utc ? 0 : 19'800, end);
    Rows(random, names, 40).ExpectSame(plain, expr, matcher);
    if (testing::Test::HasFatalFailure()) return;
    ASSERT_EQ(matcher.LimitsReached(), 0u);
  }
}

TEST(WhereMatcher, ATextThatIsReadAgainHoldsForTheSameTraces) {
  const ZoneGuard zone("UTC0");
  RandomWhere random(7);
  const NameMap names = SomeNames(random);
  const Rows rows(random, names, 60);
  for (int round = 0; round < 1500; ++round) {
    const WhereExpr expr = random.Tree(3);
    SCOPED_TRACE(WhereText(expr));
    WhereError error;
    const WhereProgramPtr program = WhereProgram::Compile(WhereText(expr), error);
    ASSERT_TRUE(program) << error.reason;
    WhereMatcher matcher(program, names, {true, kEnd});
    rows.ExpectSame(PlainWhere(0, kEnd), expr, matcher);
    if (testing::Test::HasFatalFailure()) return;
  }
}

TEST(WhereMatcher, NamesThatComeLaterCountFromThenOn) {
  RandomWhere random(11);
  for (int round = 0; round < 500; ++round) {
    NameMap names;
    const WhereExpr expr = random.Tree(3);
    SCOPED_TRACE(WhereText(expr));
    const WhereProgramPtr program = Compiled(expr);
    ASSERT_TRUE(program);
    WhereMatcher matcher(program, names, {true, kEnd});
    Rows rows(random, names, 20);
    for (int come = 0; come < 4; ++come) {
      rows.Name(names);
      rows.ExpectSame(PlainWhere(0, kEnd), expr, matcher);
      if (testing::Test::HasFatalFailure()) return;
      for (NameId id = 0; id < 10; ++id)
        if (names[id].name.empty() && random.Below(3) == 0) names[id].name = random.AnyName();
      matcher.NamesMayHaveChanged();
    }
  }
}

TEST(WhereMatcher, ARelativeTimeFollowsTheClock) {
  const NameMap names;
  WhereError error;
  const WhereProgramPtr program = WhereProgram::Compile("time > end - 5m", error);
  ASSERT_TRUE(program) << error.reason;
  EXPECT_TRUE(program->UsesEnd());
  const EventPtr event =
      MakeEvent({.date = PackDate(2026, 11, 22), .time = PackTime(23, 55, 0, 0)});
  WhereMatcher matcher(program, names, {true, kEnd});
  EXPECT_TRUE(matcher.Matches(event->Record()));
  matcher.SetClock({true, kEnd + 60 * kSecond});
  EXPECT_FALSE(matcher.Matches(event->Record()));
  matcher.SetClock({true, std::nullopt});
  EXPECT_FALSE(matcher.Matches(event->Record()));
}

TEST(WhereMatcher, AManyTestedTextHoldsAsSaid) {
  std::string text = "line in {";
  for (int i = 0; i < 3000; ++i) text += std::to_string(i * 3) + ", ";
  text += "1000000} or text in {";
  for (int i = 0; i < 1000; ++i) text += "\"t" + std::to_string(i) + "\", ";
  text += "end}";
  WhereError error;
  const WhereProgramPtr program = WhereProgram::Compile(text, error);
  ASSERT_TRUE(program) << error.reason;
  const NameMap names;
  WhereMatcher matcher(program, names);
  for (unsigned line = 0; line < 10'000; ++line) {
    const EventPtr event = MakeEvent({.text = "none", .line = line});
    ASSERT_EQ(matcher.Matches(event->Record()), line % 3 == 0 && line < 9000) << line;
  }
  EXPECT_TRUE(matcher.Matches(MakeEvent({.text = "t999", .line = 1})->Record()));
  EXPECT_FALSE(matcher.Matches(MakeEvent({.text = "t1000", .line = 1})->Record()));
}

// Counts the traces that pass, and reads each text like the program's other parts do.
struct WalkedTraces {
  void OnName(NameId id, std::string_view name) { names[id].name = name; }
  void OnTrace(const std::uint8_t* record) {
    const std::string text(RawTrace(record).Text());
    EXPECT_EQ(contains.Matches(record), text.find("order") != text.npos);
    EXPECT_EQ(matches.Matches(record), text.find("order") != text.npos);
    EXPECT_EQ(stack.Matches(record), !RawTrace(record).Stack().empty());
    ++traces;
  }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t) { return true; }

  static WhereProgramPtr Program(const char* text) {
    WhereError error;
    return WhereProgram::Compile(text, error);
  }
  NameMap names;
  WhereMatcher contains{Program("text contains order"), names};
  WhereMatcher matches{Program("text matches order"), names};
  WhereMatcher stack{Program("stack"), names};
  int traces = 0;
};

TEST(WhereMatcher, ARecordThatTheEndOfTheFileCutsIsReadUpToThere) {
  TrcImage image;
  image.Name(3, "Sql").Trace("order 1");
  const std::size_t whole = image.Bytes().size();
  image.Trace({.text = "the order that is cut", .stack = "main"});
  const std::string bytes(image.Bytes());
  for (std::size_t size = whole; size <= bytes.size(); ++size) {
    const GuardedBytes file(bytes.substr(0, size));
    WalkedTraces walked;
    WalkTrc(file.View(), walked);
    EXPECT_EQ(walked.traces, size == whole ? 1 : 2);
  }
}

TEST(WhereMatcher, IdsAndNumbersAreOneStepWithATableForEachField) {
  WhereError error;
  const auto code = [&](const char* text) {
    const WhereProgramPtr program = WhereProgram::Compile(text, error);
    EXPECT_TRUE(program) << error.reason;
    return std::pair(program->Code().steps.size(), program->Code().tables.size());
  };
  using Sizes = std::pair<std::size_t, std::size_t>;
  EXPECT_EQ(code("severity >= warn and not verbose and component in {a, b} and component != c"),
            Sizes(1, 2));
  EXPECT_EQ(code("pid == 7 or account == alice or component matches \"x\""), Sizes(1, 2));
  EXPECT_EQ(code("not (severity == info or developer)"), Sizes(1, 1));
  EXPECT_EQ(code("(severity == info and count > 7) or (component == a and tic < 5)"), Sizes(1, 2));
  EXPECT_EQ(code("text contains \"x\" and component == a"), Sizes(2, 1));
  EXPECT_EQ(code("count == 1 or line == 2 or tic == 3 or count == 4 or line == 5 or tic == 6 or "
                 "count == 7 or line == 8 or component == a"),
            Sizes(2, 1));
}

}  // namespace

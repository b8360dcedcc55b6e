// Which rule holds for a trace: against the plain rules, and what is kept for how long.
#include "where/colours/colour_judge.h"

#include <gtest/gtest.h>

#include "base/thread_time.h"
#include "support/make_event.h"
#include "where/random_where.h"
#include "where/text/where_writer.h"

namespace {

using Clock = ColourJudge::Clock;
constexpr std::int64_t kSecond = 1'000'000'000;
// 2026-11-22T23:59:59
constexpr std::int64_t kEnd = (20'779 * 86'400LL + 86'399) * kSecond;

ColourProgramPtr Compiled(const std::vector<std::string>& texts) {
  ColourRules rules;
  for (const std::string& text : texts)
    rules.push_back({"rule " + std::to_string(rules.size()), text, {}, {0xff, 0xff, 0xff}});
  const ColourProgramPtr program = ColourProgram::Compile(rules);
  for (std::size_t i = 0; i < texts.size(); ++i)
    EXPECT_FALSE(program->ErrorOf(i)) << texts[i] << ": " << program->ErrorOf(i)->reason;
  return program;
}

std::optional<WherePrevious> NoneBefore() {
  return WherePrevious();
}

// The number of the rule that holds; -1: none, -2: not known yet.
int AskBehind(ColourJudge& judge, const EventPtr& event, const ColourJudge::Before& before) {
  const ColourJudge::Verdict verdict = judge.Of(*event, before);
  if (!verdict.known) return -2;
  return verdict.rule ? static_cast<int>(verdict.rule - judge.Program().Rules().data()) : -1;
}
int Ask(ColourJudge& judge, const EventPtr& event) {
  return AskBehind(judge, event, NoneBefore);
}

// Random rules and traces, asked in any order, with little time, while the end moves.
class RandomPages {
 public:
  explicit RandomPages(unsigned seed) : m_random(seed) {
    for (NameId id = 0; id < 10; ++id) m_names[id].name = m_random.AnyName();
    std::vector<std::string> texts;
    for (std::size_t i = 1 + m_random.Below(6); i > 0; --i) {
      m_exprs.push_back(TreeWithoutMarks());
      texts.push_back(WhereText(m_exprs.back()));
    }
    m_judge = std::make_unique<ColourJudge>(Compiled(texts), m_names);
    for (int i = 0; i < 30; ++i) {
      m_traces.push_back(m_random.Trace(m_names));
      m_events.push_back(MakeEvent(m_traces.back().fields));
    }
  }
  void Check() {
    for (int page = 0; page < 40; ++page) {
      if (m_random.Below(4) == 0) m_end += static_cast<std::int64_t>(m_random.Below(3)) * kSecond;
      const bool hurried = m_random.Below(2) != 0;
      m_judge->BeginPage({true, m_end}, hurried ? Clock::time_point() : Clock::time_point::max());
      bool late = false;
      for (int row = 0; row < 8 && !testing::Test::HasFailure(); ++row) late |= CheckRow(hurried);
      EXPECT_EQ(m_judge->IsLate(), late);
    }
  }

 private:
  // Rules do not know marks.
  WhereExpr TreeWithoutMarks() {
    for (;;) {
      WhereExpr expr = m_random.Tree(static_cast<int>(m_random.Below(3)));
      WhereError error;
      const WhereProgramPtr program = WhereProgram::Compile(expr, error);
      if (!program || !program->UsesMarks()) return expr;
    }
  }

  // Is the row late?
  bool CheckRow(bool hurried) {
    const std::size_t place = m_random.Below(m_traces.size());
    const PlainTrace* const before = place > 0 ? &m_traces[place - 1] : nullptr;
    const PlainWhere plain(0, m_end);
    int expected = 0;
    while (expected < static_cast<int>(m_exprs.size()) &&
           !plain.Holds(m_exprs[static_cast<std::size_t>(expected)], m_traces[place], before))
      ++expected;
    if (expected == static_cast<int>(m_exprs.size())) expected = -1;
    const int got = AskBehind(*m_judge, m_events[place], [&]() -> std::optional<WherePrevious> {
      if (!before) return WherePrevious();
      return WherePrevious(RawTrace(m_events[place - 1]->Record()));
    });
    if (got == -2) {
      EXPECT_TRUE(hurried);
      return true;
    }
    EXPECT_EQ(got, expected) << m_traces[place].fields.text;
    return false;
  }

  RandomWhere m_random;
  NameMap m_names;
  std::vector<WhereExpr> m_exprs;
  std::unique_ptr<ColourJudge> m_judge;
  std::vector<PlainTrace> m_traces;
  std::vector<EventPtr> m_events;
  std::int64_t m_end = kEnd - 20 * kSecond;
};

TEST(ColourJudge, RandomPagesHaveTheRulesThatThePlainRulesName) {
  for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomPages(seed).Check();
  }
}

TEST(ColourJudge, TheFirstRuleThatHoldsWinsAndOneThatIsOffIsPassedOver) {
  ColourRules rules = {{"a", "severity == warn", {}, {}},
                       {"b", "severity >= warn", {}, {}},
                       {"c", "severity >= info", {}, {}}};
  const EventPtr warn = MakeEvent({.attributes = kAttributeWarn});
  const NameMap names;
  ColourJudge judge(ColourProgram::Compile(rules), names);
  EXPECT_EQ(Ask(judge, warn), 0);
  rules[0].on = false;
  ColourJudge without(ColourProgram::Compile(rules), names);
  EXPECT_EQ(Ask(without, warn), 1);
  rules[1].where = "severity >= wran";
  ColourJudge wrong(ColourProgram::Compile(rules), names);
  EXPECT_EQ(Ask(wrong, warn), 2);
}

TEST(ColourJudge, ARowThatComesBackIsNotAskedAboutAnew) {
  const NameMap names;
  ColourJudge judge(Compiled({"text contains \"a\"", "text contains \"b\""}), names);
  std::vector<EventPtr> events;
  for (const char* text : {"a", "b", "c"}) events.push_back(MakeEvent({.text = text}));
  const auto askAll = [&] {
    judge.BeginPage({});
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(Ask(judge, events[static_cast<std::size_t>(i)]), i < 2 ? i : -1);
  };
  askAll();
  EXPECT_EQ(judge.Asked(), 5u);
  askAll();
  EXPECT_EQ(judge.Asked(), 5u);
  judge.Forget(events[2].get());
  askAll();
  EXPECT_EQ(judge.Asked(), 7u) << "only the one that was forgotten";
  judge.ForgetAll();
  askAll();
  EXPECT_EQ(judge.Asked(), 12u);
}

TEST(ColourJudge, ATraceAtThePlaceOfADeletedOneHasItsOwnColours) {
  const NameMap names;
  ColourJudge judge(Compiled({"text == \"first\""}), names);
  for (int i = 0; i < 100; ++i) {
    const EventPtr first = MakeEvent({.text = "first"});
    ASSERT_EQ(Ask(judge, first), 0);
    judge.Forget(first.get());
  }
  const EventPtr other = MakeEvent({.text = "other"});
  EXPECT_EQ(Ask(judge, other), -1);
}

TEST(ColourJudge, MoreTracesThanAreKeptAreAskedAboutAnewAndRight) {
  const NameMap names;
  ColourJudge judge(Compiled({"line < 1000"}), names);
  std::vector<EventPtr> events;
  for (std::uint32_t i = 0; i < 3 * ColourJudge::kKept; ++i)
    events.push_back(MakeEvent({.text = "x", .line = i}));
  for (int round = 0; round < 2; ++round)
    for (std::size_t i = 0; i < events.size(); ++i)
      ASSERT_EQ(Ask(judge, events[i]), i < 1000 ? 0 : -1);
  EXPECT_GT(judge.Asked(), events.size() + ColourJudge::kKept);
}

TEST(ColourJudge, OnlyTracesForWhichARuleLookedAtTheEndAreAskedAboutAnewWhenItMoves) {
  const NameMap names;
  ColourJudge judge(Compiled({"text == \"a\"", "time > end - 5m"}), names);
  const EventPtr a = MakeEvent({.text = "a"}), b = MakeEvent({.text = "b"});
  const std::int64_t traced = MomentOfStamp(StampOf(RawTrace(b->Record()))).value();
  const auto ask = [&](std::int64_t end) {
    judge.BeginPage({true, end});
    EXPECT_EQ(Ask(judge, a), 0);
    return Ask(judge, b);
  };
  EXPECT_EQ(ask(traced), 1);
  EXPECT_EQ(judge.Asked(), 3u);
  EXPECT_EQ(ask(traced), 1);
  EXPECT_EQ(judge.Asked(), 3u);
  EXPECT_EQ(ask(traced + 301 * kSecond), -1);
  EXPECT_EQ(judge.Asked(), 5u) << "that with \"a\" did not look at the end";
  EXPECT_EQ(ask(traced + 299 * kSecond), 1);
}

TEST(ColourJudge, TheZoneOfShownTimesChangesWhatIsMeant) {
  const NameMap names;
  ColourJudge judge(Compiled({"time >= 2026-11-21T00:00:00Z"}), names);
  const EventPtr event = MakeEvent({.text = "x"});
  judge.BeginPage({false, {}});
  EXPECT_EQ(Ask(judge, event), 0);
  judge.BeginPage({true, {}});
  EXPECT_EQ(Ask(judge, event), 0);
  EXPECT_EQ(judge.Asked(), 2u);
}

TEST(ColourJudge, ANameThatComesLaterColoursTheRowsThatHaveIt) {
  NameMap names;
  ColourJudge judge(Compiled({"component == Sql"}), names);
  const EventPtr event = MakeEvent({.text = "x", .component = 7});
  judge.BeginPage({});
  EXPECT_EQ(Ask(judge, event), -1);
  names[7].name = "Sql";
  judge.BeginPage({});
  EXPECT_EQ(Ask(judge, event), 0);
  names.clear();
  judge.BeginPage({});
  EXPECT_EQ(Ask(judge, event), -1) << "other names";
}

TEST(ColourJudge, ATraceWhoseForerunnerIsNotKnownYetIsLate) {
  const NameMap names;
  ColourJudge judge(Compiled({"delta > 1s"}), names);
  const EventPtr event = MakeEvent({.text = "x"});
  judge.BeginPage({});
  EXPECT_EQ(AskBehind(judge, event, [] { return std::nullopt; }), -2);
  EXPECT_TRUE(judge.IsLate());
  judge.BeginPage({});
  EXPECT_EQ(Ask(judge, event), -1);
  EXPECT_FALSE(judge.IsLate());
}

TEST(ColourJudge, WhatIsLeftOverOfAPageGoesOnWithTheNextOne) {
  const NameMap names;
  ColourJudge judge(Compiled({"line == 1", "line == 2", "line == 3", "line == 4"}), names);
  const EventPtr event = MakeEvent({.text = "x", .line = 4});
  for (std::uint64_t page = 1; page <= 4; ++page) {
    judge.BeginPage({}, Clock::time_point());
    const int got = Ask(judge, event);
    ASSERT_EQ(judge.Asked(), page) << "one rule a page";
    ASSERT_EQ(got, page < 4 ? -2 : 3);
    ASSERT_EQ(judge.IsLate(), page < 4);
  }
}

TEST(ColourJudge, AnExpressionThatTriesAllWaysHoldsNoPage) {
  const NameMap names;
  std::string text = "text matches \"(a|aa)+$\"";
  for (int i = 1; i < 40; ++i)
    text += " or text matches \"(a|aa)+[0-9]{" + std::to_string(i) + "}$\"";
  ColourJudge judge(Compiled({text, "severity >= info"}), names);
  const EventPtr event = MakeEvent({.text = std::string(1000, 'a') + "!"});
  const std::uint64_t begun = ThreadNanoseconds();
  EXPECT_EQ(Ask(judge, event), 1) << "a search that is given up finds nothing";
  EXPECT_LT(ThreadNanoseconds() - begun, 1'000'000'000u);
  EXPECT_GT(judge.GivenUp(), 30u);
}

}  // namespace

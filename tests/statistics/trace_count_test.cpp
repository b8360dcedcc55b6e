#include "statistics/trace_count.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "statistics/random_traces.h"
#include "statistics/stat_rows.h"

namespace {

using State = TraceCount::State;

State CountAll(TraceCount& count) {
  State state = State::More;
  while (state == State::More)
    state = count.Take(TraceCount::Clock::now() + std::chrono::milliseconds(50));
  return state;
}

std::vector<EventPtr> MakeTraces(unsigned seed, std::size_t count) {
  RandomTraces random(seed);
  std::vector<EventPtr> events;
  for (std::size_t i = 0; i < count; ++i) events.push_back(random.Make());
  return events;
}

void ExpectSame(const StatTable& table, const SlowCount& slow) {
  ASSERT_EQ(table.Size(), slow.keys.size());
  for (std::uint32_t i = 0; i < table.Size(); ++i) {
    EXPECT_EQ(table.KeyAt(i), slow.keys[i]);
    EXPECT_EQ(table.TallyAt(i), slow.tallies.at(slow.keys[i]));
  }
  EXPECT_EQ(table.Others().count, 0u);
}

TEST(TraceCount, OfRandomTracesIsThatOfASlowCountByEachField) {
  const std::vector<EventPtr> events = MakeTraces(1, 5000);
  for (const std::size_t leftOut : {0, 3}) {
    for (const StatField field : kAllStatFields) {
      const auto traces = std::make_shared<ListedTraces>(events, leftOut);
      SlowCount slow;
      for (std::size_t i = 0; i < events.size(); ++i)
        if (traces->Has(i)) slow.Add(field, *events[i]);
      for (const std::size_t threads : {1, 4}) {
        TraceCount count(traces, field, {}, {.perPiece = 97, .perLook = 10, .threads = threads});
        ASSERT_EQ(CountAll(count), State::Whole);
        ExpectSame(count.Table(), slow);
        EXPECT_EQ(count.Thousandths(), 1000);
      }
    }
  }
}

TEST(TraceCount, OfNoTracesIsWholeAtOnce) {
  const std::vector<EventPtr> none;
  TraceCount count(std::make_shared<ListedTraces>(none), StatField::Pattern);
  EXPECT_EQ(CountAll(count), State::Whole);
  EXPECT_EQ(count.Table().All().count, 0u);
  EXPECT_EQ(count.Thousandths(), 1000);
}

TEST(TraceCount, WithMorePatternsThanItTellsApartCountsTheRestTogetherAndTheSameEachTime) {
  std::vector<EventPtr> events;
  for (int i = 0; i < 3000; ++i) {
    TraceFields fields;
    const std::string letters = {static_cast<char>('g' + i % 19),
                                 static_cast<char>('g' + i / 19 % 19),
                                 static_cast<char>('g' + i / 361)};
    fields.text = letters + (i % 2 == 0 ? " a" : " 5");
    events.push_back(MakeEvent(fields));
  }
  for (int i = 0; i < 500; ++i) events.push_back(MakeEvent({.text = "ggg a"}));
  const auto traces = std::make_shared<ListedTraces>(events);
  for (const std::size_t threads : {1, 2, 5}) {
    TraceCount count(traces, StatField::Pattern, {},
                     {.perPiece = 31, .perLook = 7, .threads = threads, .bounds = {.keys = 100}});
    ASSERT_EQ(CountAll(count), State::Whole);
    EXPECT_EQ(count.Table().Size(), 100u);
    EXPECT_EQ(count.Table().Others().count, 2900u);
    EXPECT_EQ(count.Table().All().count, 3500u);
    EXPECT_EQ(ShownPattern(count.Table().KeyAt(99)),
              ShownPattern(SlowKey(StatField::Pattern, *events[99])));
    const std::vector<StatRow> rows = StatRowsOf(StatField::Pattern, count.Table(), {});
    EXPECT_TRUE(rows.back().isOthers);
    EXPECT_EQ(rows.back().tally.count, 2900u);
    EXPECT_EQ(rows.front().tally.count, 501u);
  }
}

class BrokenTraces final : public CountedTraces {
 public:
  std::size_t Size() const override { return 1000; }
  std::unique_ptr<Reader> MakeReader() const override { throw std::runtime_error("no memory"); }
};

TEST(TraceCount, ThatCannotReadTheTracesSaysSo) {
  TraceCount count(std::make_shared<BrokenTraces>(), StatField::Component);
  EXPECT_EQ(CountAll(count), State::Failed);
}

TEST(TraceCount, ThatIsGivenUpLeavesNoThreadThatUsesIt) {
  const std::vector<EventPtr> events = MakeTraces(2, 20000);
  for (int i = 0; i < 20; ++i) {
    TraceCount count(std::make_shared<ListedTraces>(events), StatField::Pattern, {},
                     {.perPiece = 100, .perLook = 10});
    count.Take(TraceCount::Clock::now());
  }
}

}  // namespace

#include "statistics/stat_rows.h"

#include <gtest/gtest.h>

#include "statistics/random_traces.h"
#include "where/text/where_parser.h"
#include "where/where_matcher.h"

namespace {

EventPtr TraceAt(NameId component, unsigned second, const std::string& text = "") {
  TraceFields fields;
  fields.component = component;
  fields.date = PackDate(2026, 11, 21);
  fields.time = PackTime(9, 41, second, 0);
  fields.text = text;
  return MakeEvent(fields);
}

StatTable TableOf(StatField field, const std::vector<EventPtr>& events) {
  StatCounter counter(field);
  for (const EventPtr& event : events) counter.Add(*event);
  StatTable table;
  table.Join(counter.Take());
  return table;
}

std::vector<std::string> ValuesOf(const std::vector<StatRow>& rows) {
  std::vector<std::string> values;
  for (const StatRow& row : rows) values.push_back(row.value);
  return values;
}
using Values = std::vector<std::string>;

const NameMap kNames = {{1, {"Net"}}, {2, {"Sql"}}, {3, {"Sql"}}, {4, {""}}};

std::vector<EventPtr> SomeTraces() {
  std::vector<EventPtr> events;
  events.push_back(TraceAt(2, 10));
  events.push_back(TraceAt(1, 5));
  events.push_back(TraceAt(3, 6));
  events.push_back(TraceAt(2, 8));
  events.push_back(TraceAt(4, 8));
  return events;
}

TEST(StatRows, HaveCountShareRateAndTimesAndTwoIdsOfOneNameAreOneValue) {
  const auto rows =
      StatRowsOf(StatField::Component, TableOf(StatField::Component, SomeTraces()), kNames);
  ASSERT_EQ(ValuesOf(rows), (Values{"Sql", "Net", ""}));
  EXPECT_EQ(rows[0].tally.count, 3u);
  EXPECT_DOUBLE_EQ(rows[0].share, 0.6);
  ASSERT_TRUE(rows[0].rate);
  EXPECT_DOUBLE_EQ(*rows[0].rate, 0.5) << "two more within four seconds";
  EXPECT_EQ(rows[0].tally.first & 0xFFFFFFFF, PackTime(9, 41, 6, 0))
      << "the earliest, not the one that came first";
  EXPECT_EQ(rows[0].tally.last & 0xFFFFFFFF, PackTime(9, 41, 10, 0));
  EXPECT_FALSE(rows[1].rate) << "of one trace";
}

TEST(StatRows, AreSortedByAnyColumnAndKeepTheirOrderWhereEqual) {
  auto rows = StatRowsOf(StatField::Component, TableOf(StatField::Component, SomeTraces()), kNames);
  SortStatRows(rows, StatColumn::Value, false);
  EXPECT_EQ(ValuesOf(rows), (Values{"", "Net", "Sql"}));
  SortStatRows(rows, StatColumn::Count, true);
  EXPECT_EQ(ValuesOf(rows), (Values{"Sql", "", "Net"}));
  SortStatRows(rows, StatColumn::First, false);
  EXPECT_EQ(ValuesOf(rows), (Values{"Net", "Sql", ""}));
  SortStatRows(rows, StatColumn::Last, false);
  EXPECT_EQ(ValuesOf(rows), (Values{"Net", "", "Sql"}));
  SortStatRows(rows, StatColumn::Rate, false);
  EXPECT_EQ(ValuesOf(rows), (Values{"Sql", "Net", ""})) << "those without a rate at the end";
}

TEST(StatRows, TheOthersStayAtTheEnd) {
  std::vector<StatRow> rows(3);
  rows[0].value = "(others)";
  rows[0].isOthers = true;
  rows[0].tally.count = 100;
  rows[1].tally.count = 1;
  rows[2].tally.count = 2;
  SortStatRows(rows, StatColumn::Count, true);
  EXPECT_EQ(rows[0].tally.count, 2u);
  EXPECT_TRUE(rows[2].isOthers);
  SortStatRows(rows, StatColumn::Count, false);
  EXPECT_TRUE(rows[2].isOthers);
}

TEST(StatRows, TimesOfNoCalendarHaveNoRate) {
  Tally tally;
  tally.Add(0);
  tally.Add(1);
  EXPECT_FALSE(RatePerSecond(tally));
}

// Of each value the traces that were counted, and no others.
TEST(StatRows, TheFilterTextOfAValueLetsExactlyItsTracesThrough) {
  RandomTraces random(5);
  std::vector<EventPtr> events;
  for (int i = 0; i < 600; ++i) events.push_back(random.Make());
  NameMap names;
  for (NameId id = 1; id < 60; ++id) names[id].name = "n" + std::to_string(id / 2);
  for (const StatField field : kAllStatFields) {
    for (const StatRow& row : StatRowsOf(field, TableOf(field, events), names)) {
      const auto text = OnlyThisValue(field, row.key, names);
      ASSERT_TRUE(text) << row.value;
      WhereError error;
      WhereMatcher matcher(WhereProgram::Compile(*text, error), names);
      std::uint64_t hits = 0;
      for (const EventPtr& event : events) {
        const bool has =
            IdentityOf(field, SlowKey(field, *event), names) == IdentityOf(field, row.key, names);
        const bool passes = matcher.Matches(event->Record());
        ASSERT_EQ(passes, has) << *text;
        hits += passes ? 1 : 0;
      }
      EXPECT_EQ(hits, row.tally.count) << *text;
    }
  }
}

TEST(StatRows, ATraceWithSeveralSeveritiesHasTheFirst) {
  const auto only = [](int attributes) {
    TraceFields fields;
    fields.attributes = attributes;
    std::vector<EventPtr> events;
    events.push_back(MakeEvent(fields));
    return StatRowsOf(StatField::Severity, TableOf(StatField::Severity, events), {}).at(0).value;
  };
  EXPECT_EQ(only(1), "info");
  EXPECT_EQ(only(6), "warn");
  EXPECT_EQ(only(4 | 16), "error");
  EXPECT_EQ(only(8), "(none)");
}

TEST(StatField, HasAWordInAnyCapitals) {
  for (const StatField field : kAllStatFields) EXPECT_EQ(StatFieldOfWord(WordOf(field)), field);
  EXPECT_EQ(StatFieldOfWord("Pattern"), StatField::Pattern);
  EXPECT_FALSE(StatFieldOfWord("pat"));
}

}  // namespace

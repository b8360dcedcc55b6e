#include "statistics/live_counts.h"

#include <gtest/gtest.h>

#include "statistics/random_traces.h"
#include "statistics/stat_rows.h"

namespace {

// The traces that a monitor has, each with whether the filter shows it.
using Held = std::deque<std::pair<EventPtr, bool>>;

void ExpectCounts(StatField field, const Held& held, const StatTable& table) {
  SlowCount slow;
  for (const auto& [event, isShown] : held)
    if (isShown) slow.Add(field, *event);
  std::map<std::string, Tally> counted;
  for (std::uint32_t i = 0; i < table.Size(); ++i)
    if (table.TallyAt(i).count > 0) counted[std::string(table.KeyAt(i))] = table.TallyAt(i);
  ASSERT_EQ(counted, slow.tallies);
  std::uint64_t all = 0;
  for (const auto& [key, tally] : counted) all += tally.count;
  ASSERT_EQ(table.All().count, all);
}

TEST(LiveCounts, AreThoseOfASlowCountUnderTracesThatComeAndLeaveAndAreHidden) {
  for (const StatField field : kAllStatFields) {
    RandomTraces random(static_cast<unsigned>(field) + 7);
    LiveCounts counts(field);
    Held held;
    for (int step = 0; step < 200; ++step) {
      for (unsigned i = random.Below(40); i > 0; --i) {
        held.emplace_back(random.Make(), random.Below(3) > 0);
        counts.Add(*held.back().first, held.back().second);
      }
      // Now and then all of them leave, as by a clear.
      const std::size_t leave =
          step % 50 == 49 ? held.size() : random.Below(30) % (held.size() + 1);
      counts.Remove(leave);
      held.erase(held.begin(), held.begin() + static_cast<std::ptrdiff_t>(leave));
      ASSERT_EQ(counts.Noted(), held.size());
      ExpectCounts(field, held, counts.Table());
    }
  }
}

EventPtr WithText(const std::string& text) {
  return MakeEvent({.text = text});
}

TEST(LiveCounts, KeysWhoseTracesHaveLeftMakeRoomForNewOnes) {
  LiveCounts counts(StatField::Pattern, {.keys = 3});
  for (const char* const text : {"a", "b", "c", "d", "d"}) counts.Add(*WithText(text), true);
  EXPECT_EQ(counts.Table().Others().count, 2u) << "d";
  counts.Remove(2);
  EXPECT_EQ(counts.Table().Others().count, 2u) << "came when there was no room";
  counts.Add(*WithText("e"), true);
  counts.Add(*WithText("f"), true);
  const StatTable& table = counts.Table();
  EXPECT_EQ(table.Others().count, 2u);
  EXPECT_EQ(table.All().count, 5u);
  std::vector<std::string> values;
  for (const StatRow& row : StatRowsOf(StatField::Pattern, table, {})) values.push_back(row.value);
  EXPECT_EQ(values, (std::vector<std::string>{"c", "e", "f", "(others)"}));
}

TEST(LiveCounts, TracesWithoutARecordCountAsWell) {
  class Plain final : public TraceEvent_i {
   public:
    void Release() override {}
    std::uint32_t GetSequenceNumber() const override { return 1; }
    std::uint32_t GetDate() const override { return 2; }
    std::uint32_t GetTime() const override { return 3; }
    std::string GetText() const override { return "took 5 ms"; }
    NameId GetComponentId() const override { return 0; }
    NameId GetCategoryId() const override { return 0; }
    NameId GetMachineId() const override { return 0; }
    NameId GetAppId() const override { return 0; }
    NameId GetSourceFileId() const override { return 0; }
    NameId GetPidId() const override { return 0; }
    NameId GetTidId() const override { return 0; }
    int GetAttributes() const override { return 0; }
    std::uint64_t GetTicCount() const override { return 0; }
    std::uint32_t GetSourceLine() const override { return 0; }
    std::string GetStack() const override { return {}; }
  };
  LiveCounts counts(StatField::Pattern);
  counts.Add(Plain(), true);
  EXPECT_EQ(ShownPattern(counts.Table().KeyAt(0)), "took # ms");
  EXPECT_EQ(counts.Table().TallyAt(0).first, std::uint64_t{2} << 32 | 3);
}

}  // namespace

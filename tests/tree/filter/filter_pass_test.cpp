// A pass over many traces gives what a look into the maps for every trace gives, and leaves the
// same filter.
#include "tree/filter/filter_pass.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "support/make_event.h"
#include "support/trc_image.h"

namespace {

// The tests as they are specified, with a look into the maps for every trace.
int MatchesSlowly(CTraceFilter& filter, const RawTrace& trace) {
  if (filter.allTraces) return 1;
  const int bits = trace.Attributes();
  if (!filter.allSeverities) {
    const int severity = bits & 1 ? 0 : bits & 2 ? 1 : bits & 4 ? 2 : -1;
    if (severity == -1 || filter.severities[static_cast<std::size_t>(severity)] != 1) return 0;
  }
  if (!filter.allAttributes && filter.attributes[bits & 8 ? 1 : 0] != 1) return 0;
  if (!filter.allAttributes && filter.attributes[bits & 16 ? 3 : 2] != 1) return 0;
  const auto marked = [](std::map<NameId, int>& marks, NameId id) {
    return marks.insert({id, 1}).first->second == 1;
  };
  if (!filter.allComponents && !marked(filter.components, trace.ComponentId())) return 0;
  if (!filter.allCategories && !marked(filter.categories, trace.CategoryId())) return 0;
  if (!filter.allApplications && !marked(filter.applications, trace.AppId())) return 0;
  if (filter.allThreads) return 1;
  const MachineFilterEntry& machine = filter.threads[trace.MachineId()];
  if (machine.allProcesses) return 1;
  const auto process = machine.processes.find(trace.PidId());
  if (process == machine.processes.end()) return 0;
  if (process->second.allThreadsOfProcess) return 1;
  const auto thread = process->second.threadMarks.find(trace.TidId());
  return thread != process->second.threadMarks.end() && thread->second == 1;
}

void ClearWholeMarks(CTraceFilter& filter) {
  filter.allTraces = filter.allComponents = filter.allCategories = filter.allApplications = 0;
  filter.allThreads = filter.allSeverities = filter.allAttributes = 0;
}

TEST(FilterPass, RandomTracesAndRandomChangesGiveWhatTheMapsSay) {
  std::mt19937 random(20261121);
  const auto below = [&](int limit) { return static_cast<int>(random() % limit); };
  // Ids far apart and close together, so that they meet in the slots of the table.
  const auto id = [&] { return static_cast<NameId>(below(4) * 256 + below(5)); };
  for (int round = 0; round < 20; ++round) {
    CTraceFilter passed, single, slow;
    for (CTraceFilter* filter : {&passed, &single, &slow}) ClearWholeMarks(*filter);
    std::optional<FilterPass> pass;
    for (int step = 0; step < 2000; ++step) {
      const TraceFields fields{.machine = id(),
                               .app = id(),
                               .component = id(),
                               .category = id(),
                               .pid = id(),
                               .tid = id(),
                               .attributes = static_cast<std::uint16_t>(1 + below(31))};
      const EventPtr event = MakeEvent(fields);
      if (!pass) pass.emplace(passed);
      const int expected = MatchesSlowly(slow, RawTrace(event->Record()));
      ASSERT_EQ(pass->Matches(*event), expected != 0);
      ASSERT_EQ(single.Matches(*event), expected);
      if (below(8)) continue;
      const int mark = below(3), what = below(6);
      for (CTraceFilter* filter : {&passed, &single, &slow}) {
        MachineFilterEntry& machine = filter->threads[fields.machine];
        if (what == 0) filter->components[fields.component] = mark;
        if (what == 1) filter->categories[fields.category] = mark;
        if (what == 2) filter->applications[fields.app] = mark;
        if (what == 3) machine.allProcesses = mark;
        if (what == 4) machine.processes[fields.pid].allThreadsOfProcess = mark;
        if (what == 5) machine.processes[fields.pid].threadMarks[fields.tid] = mark;
      }
      pass.reset();
    }
    for (const CTraceFilter* filter : {&passed, &single}) {
      ASSERT_EQ(filter->components, slow.components);
      ASSERT_EQ(filter->categories, slow.categories);
      ASSERT_EQ(filter->applications, slow.applications);
      ASSERT_EQ(filter->threads.size(), slow.threads.size());
    }
  }
}

TEST(FilterPass, WithAllTracesShownNothingIsLookedAtOrAdded) {
  CTraceFilter filter;
  filter.allSeverities = 0;
  filter.severities = {0, 0, 0};
  FilterPass pass(filter);
  EXPECT_TRUE(pass.Matches(*MakeEvent({.component = 3, .attributes = 0})));
  EXPECT_TRUE(filter.components.empty());
}

TEST(FilterPass, AHiddenComponentHidesATraceWhoseOtherIdsAreUnknownAndAddsNone) {
  CTraceFilter filter;
  ClearWholeMarks(filter);
  filter.allSeverities = filter.allAttributes = 1;
  filter.components[3] = 0;
  FilterPass pass(filter);
  EXPECT_FALSE(pass.Matches(*MakeEvent({.machine = 1, .app = 2, .component = 3, .category = 4})));
  EXPECT_TRUE(filter.categories.empty());
  EXPECT_TRUE(filter.applications.empty());
  EXPECT_TRUE(filter.threads.empty());
}

TEST(FilterPass, ANewMachineEntersAndPassesAndItsNextTraceToo) {
  CTraceFilter filter;
  ClearWholeMarks(filter);
  filter.allSeverities = filter.allAttributes = 1;
  FilterPass pass(filter);
  EXPECT_TRUE(pass.Matches(*MakeEvent({.machine = 9, .pid = 1, .tid = 2})));
  EXPECT_TRUE(pass.Matches(*MakeEvent({.machine = 9, .pid = 1, .tid = 2})));
  EXPECT_EQ(filter.threads.count(9), 1u);
  EXPECT_TRUE(filter.threads[9].processes.empty());
}

}  // namespace

// Times of blocks, threads and processes, and the labels that show them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tree/proc/model/proc_model_harness.h"

namespace {

class ProcModelTimes : public testing::Test, protected ProcModelHarness {};

TEST_F(ProcModelTimes, ABlockWithOnlyItsBeginHasTheSpanOfZero) {
  Add({.text = "Begin: a", .tic = 5000});
  EXPECT_EQ(Block({0, 0, 0, 0, 0}).duration, 0);
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "a - 0 ps");
}

TEST_F(ProcModelTimes, TheDurationIsTakenAsPicosecondsAndFormattedByTheTimer) {
  Add({.text = "Begin: a", .tic = 1});
  Add({.text = "End: a", .tic = 1234568});
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "a - 1.23 us");
}

TEST_F(ProcModelTimes, ALeafCarriesItsTimeUpToTheProcessAndNotToTheApplication) {
  Add({.text = "Begin: a", .tic = 1000});
  Add({.text = "Begin: b", .tic = 2000});
  Add({.text = "in b", .tic = 4000});
  EXPECT_EQ(Block({0, 0, 0, 0, 0, 1}).duration, 2000);
  EXPECT_EQ(Block({0, 0, 0, 0, 0}).duration, 3000);
  EXPECT_EQ(Block({0, 0, 0, 0}).duration, 3000);
  EXPECT_EQ(Block({0, 0, 0}).duration, 3000);
  for (const CExecutionBlock* node : {&Block({0, 0}), &Block({0}), &Block({})}) {
    EXPECT_FALSE(node->hasTimes);
    EXPECT_EQ(node->duration, 0);
  }
}

TEST_F(ProcModelTimes, TheMachinesAndApplicationsLabelsDoNotChange) {
  Add("a");
  m_items.Expand(Node({0}));
  const int labelled = m_items.m_labelled;
  Add({.text = "b", .tic = 5000});
  EXPECT_EQ(m_items.m_labelled, labelled);
  EXPECT_EQ(m_items.TextOf(Node({0})), "desk");
  EXPECT_EQ(m_items.TextOf(Node({0, 0})), "shop");
}

TEST_F(ProcModelTimes, ANewThreadHasItsFirstLeafAsFirstAndTheProcessKeepsItsOlderOne) {
  Add({.text = "a", .tic = 1000});
  Add({.text = "b", .tic = 4000, .tid = 5});
  EXPECT_EQ(Block({0, 0, 0, 1}).firstTrace, 4000u);
  EXPECT_EQ(Block({0, 0, 0, 1}).duration, 0);
  EXPECT_EQ(Block({0, 0, 0}).firstTrace, 1000u);
  EXPECT_EQ(Block({0, 0, 0}).duration, 3000);
}

TEST_F(ProcModelTimes, ALeafWithASmallerTicLeavesTheTimesOfItsNodeAndAllAboveUnchanged) {
  Add({.text = "Begin: a", .tic = 5000});
  Add({.text = "late", .tic = 9000});
  Add({.text = "backwards", .tic = 2000});
  for (const CExecutionBlock* node :
       {&Block({0, 0, 0, 0, 0}), &Block({0, 0, 0, 0}), &Block({0, 0, 0})}) {
    EXPECT_EQ(node->firstTrace, 5000u);
    EXPECT_EQ(node->lastTrace, 9000u);
    EXPECT_EQ(node->duration, 4000);
  }
}

TEST_F(ProcModelTimes, ALeafThatIsLateForAnOuterNodeStillCountsInItsOwnBlock) {
  Add({.text = "far ahead", .tic = 9000});
  Add({.text = "Begin: a", .tic = 1000});
  Add({.text = "in a", .tic = 3000});
  EXPECT_EQ(Block({0, 0, 0, 0, 1}).duration, 2000);
  EXPECT_EQ(Block({0, 0, 0, 0}).duration, 0);
}

TEST_F(ProcModelTimes, AnEqualTicCountsAsTheLatest) {
  Add({.text = "a", .tic = 1000});
  Add({.text = "b", .tic = 1000});
  EXPECT_EQ(Thread().duration, 0);
  EXPECT_EQ(Thread().lastTrace, 1000u);
}

TEST_F(ProcModelTimes, ABlocksTimeReachesTheBlockAroundItThatIsStillOpen) {
  Add({.text = "Begin: a", .tic = 1000});
  Add({.text = "Begin: b", .tic = 2000});
  Add({.text = "Begin: c", .tic = 3000});
  Add({.text = "End: c", .tic = 8000});
  EXPECT_EQ(Block({0, 0, 0, 0, 0, 1}).duration, 6000);
  EXPECT_EQ(Block({0, 0, 0, 0, 0}).duration, 7000);
}

TEST_F(ProcModelTimes, TicsOfTheUpperHalfAreUnsigned) {
  const std::uint64_t huge = 0xFFFFFFFFFFFFF000;
  Add({.text = "a", .tic = 5});
  Add({.text = "b", .tic = huge});
  EXPECT_EQ(Thread().lastTrace, huge);
  EXPECT_EQ(Thread().duration, static_cast<std::int64_t>(huge - 5));
  EXPECT_EQ(Label({0, 0, 0, 0}), "TID one - -4.1e+03 ps");
}

TEST_F(ProcModelTimes, NoDurationIsComputedBeforeTheEndOfARebuild) {
  Add({.text = "Begin: a", .tic = 1000}, false);
  Add({.text = "End: a", .tic = 3000}, false);
  Add({.text = "b", .tic = 4000}, false);
  EXPECT_EQ(InThread(), "a - 0 ps\n  Begin: a\n  End: a\nb\n");
  EXPECT_EQ(Label({0, 0, 0, 0}), "TID one - 0 ps");
  m_model.UpdateDurations();
  EXPECT_EQ(InThread(), "a - 2 ns\n  Begin: a\n  End: a\nb\n");
  EXPECT_EQ(Label({0, 0, 0, 0}), "TID one - 3 ns");
  EXPECT_EQ(Label({0, 0, 0}), "PID 100 - 3 ns");
}

TEST_F(ProcModelTimes, UpdateDurationsTimesBlocksThatAreStillOpen) {
  Add({.text = "Begin: a", .tic = 1000}, false);
  Add({.text = "Begin: b", .tic = 2000}, false);
  Add({.text = "in b", .tic = 6000}, false);
  m_model.UpdateDurations();
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "a - 5 ns");
  EXPECT_EQ(Label({0, 0, 0, 0, 0, 1}), "b - 4 ns");
}

TEST_F(ProcModelTimes, UpdateDurationsSetsTheTextsOfTheItems) {
  Add({.text = "a", .tic = 1000}, false);
  m_items.Expand(Node({0}));
  m_items.Expand(Node({0, 0}));
  Add({.text = "b", .tic = 3000}, false);
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0})), "PID 100 - 0 ps");
  m_model.UpdateDurations();
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0})), "PID 100 - 2 ns");
}

TEST_F(ProcModelTimes, ALiveTraceSetsTheTextsOfTheItemsAboveIt) {
  Add({.text = "Begin: a", .tic = 1000});
  Add({.text = "Begin: b", .tic = 1000});
  for (const CTraceEvent* node :
       {&Node({0}), &Node({0, 0}), &Node({0, 0, 0}), &Node({0, 0, 0, 0}), &Node({0, 0, 0, 0, 0})})
    m_items.Expand(*node);
  Add({.text = "End: b", .tic = 4000});
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0})), "PID 100 - 3 ns");
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0, 0})), "TID one - 3 ns");
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0, 0, 0})), "a - 3 ns");
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0, 0, 0, 1})), "b - 3 ns");
}

TEST_F(ProcModelTimes, ABatchSetsEachTextOnce) {
  Add({.text = "a", .tic = 1000});
  m_items.Expand(Node({0}));
  m_items.Expand(Node({0, 0}));
  const int labelled = m_items.m_labelled;
  {
    const ProcModel::Batch batch(m_model);
    for (std::uint64_t tic = 2000; tic <= 9000; tic += 1000) Add({.text = "b", .tic = tic});
    EXPECT_EQ(m_items.m_labelled, labelled);
  }
  EXPECT_EQ(m_items.m_labelled, labelled + 1);
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0})), "PID 100 - 8 ns");
}

TEST_F(ProcModelTimes, ABatchFiltersByTheFilterAsItStands) {
  HideCategory9();
  {
    const ProcModel::Batch batch(m_model);
    Add({.text = "hidden", .category = 9});
    Add({.text = "a category not met before", .category = 10});
  }
  EXPECT_EQ(InThread(), "a category not met before\n");
  EXPECT_EQ(m_filter.categories.count(10), 1u);
}

TEST_F(ProcModelTimes, TheLabelOfABlockComesFromItsFirstChildNotFromItsLater) {
  Add("Begin: a");
  Add("Begin: b");
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "a - 0 ps");
}

}  // namespace

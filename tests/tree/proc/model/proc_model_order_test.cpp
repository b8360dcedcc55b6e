// Sequence numbers that do not rise: loss reports have none, and numbers begin again.
#include <gtest/gtest.h>

#include <chrono>

#include "tree/proc/model/proc_model_harness.h"

namespace {

class ProcModelOrder : public testing::Test, protected ProcModelHarness {
 protected:
  void AddLoss() {
    Add({.text = "5 traces lost: slow monitor", .count = kNoSequenceNumber, .tid = 5});
  }
  // Of a thread that has everything in blocks, and of each four traces one is hidden.
  void AddRequests(int count) {
    for (int i = 0; i < count; ++i) {
      Add("Begin: request");
      Add({.text = "hidden", .category = 9});
      Add("in it");
      Add("End: request");
    }
  }
  // Asks for a trace, which is when a thread's order is looked at.
  bool IsInOrder() {
    const TraceEvent_i& event = *m_document.m_traces.back();
    EXPECT_EQ(m_model.FindNode(event), FindNodeByWalk(Block({}), event));
    return m_model.IsInOrder(Thread());
  }
};

// A generous bound: walks through all blocks would take minutes.
TEST_F(ProcModelOrder, AReportOfLossesMakesTheTrimsOfHiddenTracesNoSlower) {
  HideCategory9();
  {
    const ProcModel::Batch batch(m_model);
    AddRequests(30000);
    AddLoss();
  }
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 100; ++i) Trim(100);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(ProcModelOrder, AReportOfLossesLeavesTheThreadsOfTheApplicationInOrder) {
  AddRequests(3);
  AddLoss();
  m_model.AddTrace(Trace({.text = "goes on", .count = 100}), true);
  EXPECT_TRUE(IsInOrder());
  AddLoss();
  AddLoss();
  EXPECT_FALSE(m_model.IsInOrder(dynamic_cast<CProcessThread&>(Node({0, 0, 0, 1}))));
  EXPECT_TRUE(IsInOrder());
}

TEST_F(ProcModelOrder, NumbersThatBeginAnewCostAThreadItsOrderUntilItsOlderTracesHaveGone) {
  Add({.text = "Begin: before", .count = 1000});
  Add({.text = "End: before", .count = 1001});
  Add({.text = "Begin: after", .count = 1});
  Add({.text = "End: after", .count = 2});
  EXPECT_FALSE(IsInOrder());
  Trim(1);
  EXPECT_FALSE(IsInOrder());
  Trim(1);
  EXPECT_TRUE(IsInOrder());
  EXPECT_EQ(InThread(), "after - 0 ps\n  Begin: after\n  End: after\n");
  Add({.text = "on", .count = 3});
  EXPECT_TRUE(IsInOrder());
}

TEST_F(ProcModelOrder, ABlockThatStaysOpenFromBeforeKeepsTheThreadOutOfOrderUntilItGoes) {
  Add({.text = "Begin: before", .count = 1000});
  Add({.text = "in it", .count = 1});
  Trim(1);
  EXPECT_FALSE(IsInOrder());
  Add("End: before");
  Trim(1);
  EXPECT_FALSE(IsInOrder());
  Add("behind");
  Trim(1);
  EXPECT_TRUE(IsInOrder());
  EXPECT_EQ(InThread(), "behind\n");
}

TEST_F(ProcModelOrder, ATraceBelowTheNumberOfABlockThatIsStillOpenBreaksTheOrderAgain) {
  Add({.text = "Begin: before", .count = 1000});
  Add({.text = "gone soon", .count = 1});
  Trim(2);
  m_document.AddTrace(MakeEvent({.count = 2}).release());
  EXPECT_TRUE(IsInOrder()) << "only the block is left";
  Add({.text = "in it", .count = 3});
  EXPECT_FALSE(IsInOrder());
}

TEST_F(ProcModelOrder, TheNearestToATraceFromBeforeIsThatOfThePlainWalk) {
  HideCategory9();
  Add({.text = "old", .count = 0xFFFFFFF0});
  TraceEvent_i* const hidden = Add({.text = "hidden", .count = 0xFFFFFFF8, .category = 9});
  Add({.text = "new", .count = 3});
  EXPECT_FALSE(m_model.FindNode(*hidden)) << "no trace has a greater number";
  Add({.text = "of another thread", .count = 0xFFFFFFFE, .tid = 5});
  const NodePosition place = m_model.FindNode(*hidden);
  ASSERT_TRUE(place);
  EXPECT_EQ(m_model.NodeLabel(*place.Node()), "of another thread");
  EXPECT_EQ(FindNodeByWalk(Block({}), *hidden), place);
}

// The example of two_runs.h.
TEST_F(ProcModelOrder, TheNearestInTwoRunsIsSoughtDownTheFirstOneAndUpTheSecond) {
  HideCategory9();
  Add({.text = "a", .count = 3});
  Add({.text = "Begin: B", .count = 5});
  Add({.text = "b", .count = 7});
  Add({.text = "c", .count = 1});
  Add({.text = "End: B", .count = 2});
  Add({.text = "d", .count = 4});
  const auto nearestTo = [this](std::uint32_t number) {
    const TraceEvent_i& hidden = *Add({.text = "hidden", .count = number, .category = 9});
    const NodePosition place = m_model.FindNode(hidden);
    EXPECT_EQ(FindNodeByWalk(Block({}), hidden), place) << number;
    return place ? m_model.NodeLabel(*place.Node()) : "none";
  };
  EXPECT_EQ(nearestTo(6), "b") << "the first leaf above it ends the search in the block";
  EXPECT_EQ(nearestTo(3), "d") << "and that in the thread counts for more";
  EXPECT_EQ(nearestTo(7), "none");
}

TEST_F(ProcModelOrder, WhatASearchFoundInTwoRunsIsForgottenWhenTheyAreOne) {
  HideCategory9();
  Add({.text = "Begin: P", .count = 100});
  Add({.text = "of the first run", .count = 900});
  Add({.text = "hidden", .count = 128, .category = 9});
  const TraceEvent_i& hidden = *Add({.text = "hidden", .count = 130, .category = 9});
  Add({.text = "in P", .count = 140});
  Add({.text = "End: P", .count = 141});
  Add({.text = "after P", .count = 400});
  Add({.text = "nearest to 128", .count = 149, .tid = 5});
  Add({.text = "nearest to 130", .count = 151, .tid = 5});
  Trim(3);  // searches for the hidden one right after the last trace of the first run was removed
  const NodePosition place = m_model.FindNode(hidden);
  ASSERT_TRUE(place);
  EXPECT_EQ(m_model.NodeLabel(*place.Node()), "nearest to 130") << "P is farther";
  EXPECT_EQ(FindNodeByWalk(Block({}), hidden), place);
  EXPECT_TRUE(m_model.IsInOrder(Thread()));
}

TEST_F(ProcModelOrder, ABlockInTheStorageOfOneFromBeforeIsOfTheSecondRun) {
  HideCategory9();
  Add({.text = "other", .count = 10, .tid = 5});
  Add({.text = "Begin: P", .count = 500});
  Add({.text = "Begin: X", .count = 501});
  const void* const storage = &Node({0, 0, 0, 1, 0, 1});
  Add({.text = "End: X", .count = 30});
  Add({.text = "in P", .count = 31});
  Trim(4);
  Add({.text = "hidden", .count = 39, .category = 9});
  Add({.text = "Begin: Y", .count = 40});
  ASSERT_EQ(&Node({0, 0, 0, 1, 0, 1}), storage);
  Add({.text = "in Y", .count = 70});
  Trim(2);  // the hidden trace takes the first leaf of Y out
  Add({.text = "End: Y", .count = 71});
  Add({.text = "after Y", .count = 80});
  Add({.text = "End: P", .count = 81});
  Add({.text = "after P", .count = 82});
  Add({.text = "Begin: Z", .count = 40, .tid = 5});
  Add({.text = "End: Z", .count = 41, .tid = 5});
  Add({.text = "after Z", .count = 90, .tid = 5});
  Trim(1);  // takes Y out, which the trace has made, and not Z, which is as near
  EXPECT_EQ(Tree(Block({0, 0, 0})),
            "TID two - 0 ps\n"
            "  Z - 0 ps\n"
            "    Begin: Z\n"
            "    End: Z\n"
            "  after Z\n"
            "TID one - 0 ps\n"
            "   - 0 ps\n"
            "    after Y\n"
            "    End: P\n"
            "  after P\n");
}

TEST_F(ProcModelOrder, ALeafOutOfOrderIsFoundWhereNothingHasAGreaterNumber) {
  Add({.text = "a", .count = 7});
  TraceEvent_i* const last = Add({.text = "b", .count = 7});
  HideCategory9();
  TraceEvent_i* const hidden = Add({.text = "hidden", .count = 7, .category = 9});
  EXPECT_FALSE(m_model.FindNode(*hidden));
  const NodePosition place = m_model.FindNode(*last);
  ASSERT_TRUE(place);
  EXPECT_EQ(place.Node()->event, last);
}

}  // namespace

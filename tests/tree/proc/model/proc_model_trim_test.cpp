// Traces that the document trims.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tree/proc/model/proc_model_harness.h"

namespace {

class ProcModelTrim : public testing::Test, protected ProcModelHarness {
 protected:
  void ExpandToThread() {
    for (const CTraceEvent* node :
         {&Node({0}), &Node({0, 0}), &Node({0, 0, 0}), &Node({0, 0, 0, 0})})
      m_items.Expand(*node);
  }
};

TEST_F(ProcModelTrim, ATrimmedTraceTakesItsLeafOutOfTheTreeAndTheControl) {
  Add("a");
  Add("b");
  Add("c");
  ExpandToThread();
  Trim(2);
  EXPECT_EQ(InThread(), "c\n");
  EXPECT_THAT(m_items.Texts(),
              testing::ElementsAre("desk", "shop", "PID 100 - 0 ps", "TID one - 0 ps", "c"));
}

TEST_F(ProcModelTrim, TheTraceCountIsNotReduced) {
  Add("a");
  Add("b");
  Trim(1);
  EXPECT_EQ(m_model.TraceCount(), 2);
}

TEST_F(ProcModelTrim, DurationsKeepTheirValuesWhenTheFirstAndTheLastLeafHaveGone) {
  Add({.text = "a", .tic = 1000});
  Add({.text = "latest", .tic = 9000});
  Add({.text = "backwards", .tic = 2000});
  Trim(2);
  EXPECT_EQ(Label({0, 0, 0, 0}), "TID one - 8 ns");
  m_model.UpdateDurations();
  EXPECT_EQ(Label({0, 0, 0, 0}), "TID one - 8 ns");
  Add({.text = "on", .tic = 12000});
  EXPECT_EQ(Label({0, 0, 0, 0}), "TID one - 11 ns");
}

TEST_F(ProcModelTrim, LevelNodesStayWithTheirLabelsAndWithoutTheirTrace) {
  Add("a");
  Trim(1);
  EXPECT_EQ(Tree(),
            "desk\n"
            "  shop\n"
            "    PID 100 - 0 ps\n"
            "      TID one - 0 ps\n");
  for (const CTraceEvent* node : {&Node({0}), &Node({0, 0}), &Node({0, 0, 0}), &Node({0, 0, 0, 0})})
    EXPECT_EQ(node->event, nullptr);
  Add("they are found again");
  EXPECT_EQ(InThread(), "they are found again\n");
  EXPECT_EQ(m_model.Root().children.size(), 1u);
}

TEST_F(ProcModelTrim, ABlockWhoseBeginWasTrimmedTakesItsLabelFromTheChildThatIsNowFirst) {
  Add("Begin: a");
  Add("a statement");
  Add("Begin: inner");
  Add("End: inner");
  Add("End: a");
  Trim(1);
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "ment - 0 ps");
  EXPECT_EQ(Node({0, 0, 0, 0, 0}).event, nullptr);
  Trim(1);
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "inner - 0 ps") << "a block is first: its Begin's text";
  Trim(1);
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "inner - 0 ps") << "and stays when that trace has gone";
  EXPECT_EQ(Label({0, 0, 0, 0, 0, 0}), "ner - 0 ps") << "behind the seventh character of its End";
}

TEST_F(ProcModelTrim, ALabelIsCutAfterSevenCharactersNotBytes) {
  Add("Begin: a");
  Add("gr\xC3\xB6\xE2\x82\xAC"  // of two bytes and of three
      "er als zuvor");
  Add("End: a");
  Trim(1);
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "als zuvor - 0 ps");
}

TEST_F(ProcModelTrim, AFirstChildOfFewerThanSevenCharactersGivesAnEmptyLabel) {
  Add("Begin: a");
  Add("short");
  Trim(1);
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), " - 0 ps");
}

TEST_F(ProcModelTrim, TheItemOfABlockShowsItsNewLabel) {
  Add("Begin: a");
  Add("a statement");
  ExpandToThread();
  Trim(1);
  EXPECT_EQ(m_items.TextOf(Node({0, 0, 0, 0, 0})), "ment - 0 ps");
}

TEST_F(ProcModelTrim, AnOpenBlockEmptiedOfChildrenKeepsItsLastLabelAndTakesTheNextTraces) {
  Add({.text = "Begin: a", .tic = 1000});
  Trim(1);
  EXPECT_EQ(InThread(), "a - 0 ps\n");
  Add({.text = "in a again", .tic = 3000});
  EXPECT_EQ(InThread(), "ain - 2 ns\n  in a again\n");
  Add({.text = "End: a", .tic = 4000});
  Add("behind");
  EXPECT_EQ(InThread(), "ain - 3 ns\n  in a again\n  End: a\nbehind\n");
}

TEST_F(ProcModelTrim, AClosedBlockGoesWithTheLastTraceInIt) {
  Add("Begin: a");
  Add("Begin: b");
  Add("End: b");
  Add("End: a");
  Add("behind");
  ExpandToThread();
  m_items.Expand(Node({0, 0, 0, 0, 0}));
  const int before = CExecutionBlock::s_live;
  Trim(3);
  EXPECT_EQ(InThread(), " - 0 ps\n  End: a\nbehind\n");
  EXPECT_EQ(CExecutionBlock::s_live, before - 1);
  Trim(1);
  EXPECT_EQ(InThread(), "behind\n");
  EXPECT_EQ(CExecutionBlock::s_live, before - 2);
  EXPECT_THAT(m_items.Texts(),
              testing::ElementsAre("desk", "shop", "PID 100 - 0 ps", "TID one - 0 ps", "behind"));
}

TEST_F(ProcModelTrim, AMonitorOfManyDaysHoldsNoMoreNodesThanTraces) {
  const int before = CExecutionBlock::s_live;
  for (int i = 0; i < 20000; ++i) {
    Add("Begin: a");
    Add("End: a");
    if (m_document.m_traces.size() >= 1000) Trim(100);
  }
  EXPECT_LT(CExecutionBlock::s_live - before, 600);
}

TEST_F(ProcModelTrim, AHiddenTraceThatIsTrimmedTakesTheNearestShownLeafOut) {
  HideCategory9();
  Add({.text = "hidden", .category = 9});
  Add("nearest");
  Add("farther");
  Trim(1);
  EXPECT_EQ(InThread(), "farther\n");
}

TEST_F(ProcModelTrim, ALeafTakenOutKeepsItsItemItsTextAndItsTraceUntilThatTraceGoes) {
  HideCategory9();
  Add({.text = "hidden", .category = 9});
  TraceEvent_i* const taken = Add("nearest");
  Add("farther");
  Add("farthest");
  ExpandToThread();
  const CTraceEvent& node = Node({0, 0, 0, 0, 0});
  Trim(1);
  EXPECT_EQ(InThread(), "farther\nfarthest\n");
  EXPECT_EQ(m_items.TextOf(node), "nearest");
  EXPECT_EQ(node.event, taken);
  Trim(1);
  EXPECT_EQ(InThread(), "farthest\n") << "its own trace is not found and takes the nearest again";
  EXPECT_THAT(m_items.Texts(), testing::ElementsAre("desk", "shop", "PID 100 - 0 ps",
                                                    "TID one - 0 ps", "farther", "farthest"));
}

TEST_F(ProcModelTrim, AHiddenTraceAfterAllShownOnesTakesNothing) {
  HideCategory9();
  Add("shown");
  TraceEvent_i* const hidden = Add({.text = "hidden", .category = 9});
  m_model.RemoveTrace(hidden);
  EXPECT_EQ(InThread(), "shown\n");
}

TEST_F(ProcModelTrim, AHiddenTraceMayTakeABlockOutWhoseLeavesGoOnLiving) {
  HideCategory9();
  Add("Begin: a");
  Add("in a");
  Add({.text = "hidden", .category = 9});
  Add({.text = "Begin: hidden", .category = 9});
  Add({.text = "hidden", .category = 9});
  Add("End: a");
  Add({.text = "b", .count = 40});
  Add("c");
  ExpandToThread();
  m_items.Expand(Node({0, 0, 0, 0, 0}));
  const CExecutionBlock& block = Block({0, 0, 0, 0, 0});
  Trim(3);
  EXPECT_EQ(InThread(), "b\nc\n")
      << "the block stands before the first greater number, and is nearer";
  EXPECT_EQ(Tree(block), "End: a\n");
  EXPECT_EQ(m_items.TextOf(block), " - 0 ps");
  EXPECT_EQ(m_items.m_items.size(), 4u + 4u);
  Trim(3);
  EXPECT_EQ(InThread(), "") << "the two hidden ones have taken b and c";
  EXPECT_EQ(m_items.m_items.size(), 4u + 2u) << "the block has gone with its last trace";
}

TEST_F(ProcModelTrim, AnOpenBlockEmptiedByAHiddenTraceGoesOnTakingTheTracesOfItsThread) {
  HideCategory9();
  Add("Begin: a");
  Add("Begin: b");
  Add("End: b");
  Add({.text = "hidden", .category = 9});
  Add({.text = "in a", .count = 90});
  ExpandToThread();
  m_items.Expand(Node({0, 0, 0, 0, 0}));
  Trim(2);
  EXPECT_EQ(InThread(), "b - 0 ps\n   - 0 ps\n    End: b\n  in a\n");
  Trim(2);
  EXPECT_EQ(InThread(), " - 0 ps\n");
  Add("in a too");
  Add("End: a");
  Add("behind");
  EXPECT_EQ(InThread(), "o - 0 ps\n  in a too\n  End: a\nbehind\n");
}

TEST_F(ProcModelTrim, TracesOfADrainThatWereNeverFiledCountAsHidden) {
  Add("a");
  Add("b");
  Trace({.text = "trimmed before the views heard of it"});
  Trim(3);
  EXPECT_EQ(InThread(), "");
  Add("c");
  EXPECT_EQ(InThread(), "c\n");
}

TEST_F(ProcModelTrim, ATraceFromTheMiddleIsTakenOutToo) {
  Add("a");
  TraceEvent_i* const middle = Add("Begin: b");
  TraceEvent_i* const last = Add("End: b");
  Add("c");
  m_model.RemoveTrace(middle);
  EXPECT_EQ(InThread(), "a\n - 0 ps\n  End: b\nc\n");
  m_model.RemoveTrace(last);
  EXPECT_EQ(InThread(), "a\nc\n");
  Trim(4);
  EXPECT_EQ(InThread(), "");
}

TEST_F(ProcModelTrim, AnEmptyTreeLosesNothing) {
  TraceEvent_i* const event = Trace({.text = "not filed"});
  m_model.RemoveTrace(event);
  EXPECT_EQ(Tree(), "");
}

TEST_F(ProcModelTrim, ANameThatCameLateIsShownWithTheNextTrim) {
  Add({.text = "a", .machine = 500});
  Add({.text = "b", .machine = 500});
  EXPECT_THAT(m_items.Texts(), testing::ElementsAre(""));
  m_document.m_names[500].name = "late";
  Trim(1);
  EXPECT_THAT(m_items.Texts(), testing::ElementsAre("late"));
}

TEST_F(ProcModelTrim, LabelsOfNodesThatNoTrimTouchesAreNotSetAgain) {
  for (int i = 0; i < 50; ++i) Add("a");
  ExpandToThread();
  Trim(1);
  const int labelled = m_items.m_labelled;
  Trim(20);
  EXPECT_EQ(m_items.m_labelled, labelled);
}

}  // namespace

#include "tree/proc/model/proc_model.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tree/proc/model/proc_model_harness.h"

namespace {

class ProcModelTree : public testing::Test, protected ProcModelHarness {};

TEST_F(ProcModelTree, LevelsAreMachineApplicationProcessThreadAndBlocksWithTheirLabels) {
  Add({.text = "Begin: Open connection", .tic = 1000});
  Add({.text = "sent", .tic = 2500});
  Add({.text = "End: Open connection", .tic = 3000});
  Add({.text = "idle", .tic = 6000});
  EXPECT_EQ(Tree(),
            "desk\n"
            "  shop\n"
            "    PID 100 - 5 ns\n"
            "      TID one - 5 ns\n"
            "        Open connection - 2 ns\n"
            "          Begin: Open connection\n"
            "          sent\n"
            "          End: Open connection\n"
            "        idle\n");
  EXPECT_EQ(m_model.TraceCount(), 4);
}

TEST_F(ProcModelTree, EveryNodeIsOfItsLevelsClassAndKnowsItsParent) {
  Add("Begin: a");
  EXPECT_TRUE(dynamic_cast<CMachine*>(&Node({0})));
  EXPECT_TRUE(dynamic_cast<CApplication*>(&Node({0, 0})));
  EXPECT_EQ(typeid(Node({0, 0, 0})), typeid(CProcess));
  EXPECT_EQ(typeid(Node({0, 0, 0, 0})), typeid(CProcessThread));
  EXPECT_EQ(typeid(Node({0, 0, 0, 0, 0})), typeid(CExecutionBlock));
  EXPECT_EQ(typeid(Node({0, 0, 0, 0, 0, 0})), typeid(CTraceEvent));
  EXPECT_EQ(Node({0}).parent, nullptr);
  EXPECT_EQ(Node({0, 0}).parent, &Node({0}));
  EXPECT_EQ(Node({0, 0, 0, 0, 0, 0}).parent, &Node({0, 0, 0, 0, 0}));
  auto& process = dynamic_cast<CProcess&>(Node({0, 0, 0}));
  EXPECT_EQ(process.currentBlock, &process);
  auto& application = dynamic_cast<CApplication&>(Node({0, 0}));
  EXPECT_EQ(application.currentBlock, &application);
}

TEST_F(ProcModelTree, ALevelNodeHasTheTraceThatMadeIt) {
  TraceEvent_i* const first = Add("up");
  Add("and on");
  for (const CTraceEvent* node : {&Node({0}), &Node({0, 0}), &Node({0, 0, 0}), &Node({0, 0, 0, 0})})
    EXPECT_EQ(node->event, first);
  EXPECT_EQ(m_model.Root().event, nullptr);
}

TEST_F(ProcModelTree, TheTextEndColonBlankAloneClosesTheOpenBlock) {
  Add("Begin: a");
  Add("End: ");
  Add("after");
  EXPECT_EQ(InThread(),
            "a - 0 ps\n"
            "  Begin: a\n"
            "  End: \n"
            "after\n");
}

TEST_F(ProcModelTree, AMarkWithoutTheBlankIsAPlainTrace) {
  Add("Begin:a");
  Add("Begin: a");
  Add("End:");
  Add("End:a");
  Add("end: a");
  Add("Begin:");
  EXPECT_EQ(InThread(),
            "Begin:a\n"
            "a - 0 ps\n"
            "  Begin: a\n"
            "  End:\n"
            "  End:a\n"
            "  end: a\n"
            "  Begin:\n");
}

TEST_F(ProcModelTree, ABeginWithoutANameOpensABlockWithoutAName) {
  Add("Begin: ");
  EXPECT_EQ(InThread(),
            " - 0 ps\n"
            "  Begin: \n");
}

TEST_F(ProcModelTree, TwoBeginsAndTwoEndsNestTheSecondBlockInTheFirst) {
  Add("Begin: a");
  Add("Begin: b");
  Add("End: b");
  Add("End: a");
  EXPECT_EQ(InThread(),
            "a - 0 ps\n"
            "  Begin: a\n"
            "  b - 0 ps\n"
            "    Begin: b\n"
            "    End: b\n"
            "  End: a\n");
}

TEST_F(ProcModelTree, AnEndClosesTheInnermostBlockWhateverItsName) {
  Add("Begin: a");
  Add("Begin: b");
  Add("End: a");
  Add("in a");
  EXPECT_EQ(InThread(),
            "a - 0 ps\n"
            "  Begin: a\n"
            "  b - 0 ps\n"
            "    Begin: b\n"
            "    End: a\n"
            "  in a\n");
}

TEST_F(ProcModelTree, AnEndOnAThreadWithNoOpenBlockIsAPlainLeafAndClosesNothing) {
  Add("End: a");
  EXPECT_EQ(InThread(), "End: a\n");
  EXPECT_EQ(Thread().currentBlock, &Thread());
  Add("on");
  EXPECT_EQ(InThread(), "End: a\non\n");
}

TEST_F(ProcModelTree, ABlockThatIsNeverClosedTakesTheLaterTracesOfItsThread) {
  Add("Begin: a");
  Add({.text = "of the other", .tid = 5});
  Add("one");
  Add("two");
  EXPECT_EQ(InThread(),
            "a - 0 ps\n"
            "  Begin: a\n"
            "  one\n"
            "  two\n");
  EXPECT_EQ(Tree(Block({0, 0, 0, 1})), "of the other\n");
}

TEST_F(ProcModelTree, ASecondThreadOfTheProcessIsFoundAgain) {
  Add("a");
  Add({.text = "b", .tid = 5});
  Add("c");
  Add({.text = "d", .tid = 5});
  EXPECT_EQ(Tree(),
            "desk\n"
            "  shop\n"
            "    PID 100 - 0 ps\n"
            "      TID one - 0 ps\n"
            "        a\n"
            "        c\n"
            "      TID two - 0 ps\n"
            "        b\n"
            "        d\n");
}

TEST_F(ProcModelTree, TwoMachinesAlternatingKeepTheirOwnPaths) {
  for (const char* text : {"a", "b"}) {
    Add(text);
    Add({.text = text, .machine = 6});
    Add({.text = text, .machine = 6, .app = 7, .pid = 8});
  }
  EXPECT_EQ(Tree(),
            "desk\n"
            "  shop\n"
            "    PID 100 - 0 ps\n"
            "      TID one - 0 ps\n"
            "        a\n"
            "        b\n"
            "lab\n"
            "  shop\n"
            "    PID 100 - 0 ps\n"
            "      TID one - 0 ps\n"
            "        a\n"
            "        b\n"
            "  till\n"
            "    PID 200 - 0 ps\n"
            "      TID one - 0 ps\n"
            "        a\n"
            "        b\n");
}

TEST_F(ProcModelTree, ManyThreadsInTurnAllHaveTheirTraces) {
  constexpr NameId kThreads = 3000;
  for (int round = 0; round < 2; ++round)
    for (NameId id = 0; id < kThreads; ++id)
      Add({.text = "up",
           .pid = static_cast<NameId>(100 + id % 50),
           .tid = static_cast<NameId>(1000 + id)});
  const CExecutionBlock& application = Block({0, 0});
  ASSERT_EQ(application.children.size(), 50u);
  std::size_t threads = 0;
  for (std::size_t i = 0; i < 50; ++i) {
    const CExecutionBlock& process = *application.children.BlockAt(i);
    for (std::size_t t = 0; t < process.children.size(); ++t, ++threads)
      EXPECT_EQ(process.children.BlockAt(t)->children.size(), 2u);
  }
  EXPECT_EQ(threads, kThreads);
}

TEST_F(ProcModelTree, ATraceThatTheFilterHidesIsNeitherFiledNorCounted) {
  HideCategory9();
  Add({.text = "hidden", .category = 9});
  EXPECT_EQ(m_item, 0u);
  EXPECT_EQ(m_model.TraceCount(), 0);
  EXPECT_EQ(Tree(), "");
  Add("shown");
  EXPECT_EQ(m_model.TraceCount(), 1);
}

TEST_F(ProcModelTree, TheCountOfAStreamOfBillionsWraps) {
  Add("a");
  const_cast<CRoot&>(m_model.Root()).traceCount = std::numeric_limits<int>::max();
  Add("b");
  EXPECT_EQ(m_model.TraceCount(), std::numeric_limits<int>::min());
  EXPECT_EQ(InThread(), "a\nb\n");
}

TEST_F(ProcModelTree, WithTheBeginHiddenItsEndClosesTheOuterBlockOrIsPlain) {
  HideCategory9();
  Add({.text = "Begin: hidden", .category = 9});
  Add("End: hidden");
  Add("Begin: outer");
  Add({.text = "Begin: inner", .category = 9});
  Add("End: inner");
  Add("End: outer");
  EXPECT_EQ(InThread(),
            "End: hidden\n"
            "outer - 0 ps\n"
            "  Begin: outer\n"
            "  End: inner\n"
            "End: outer\n");
}

TEST_F(ProcModelTree, AHundredThousandNestedBeginsAreFiledTimedSearchedAndClearedWithoutAStack) {
  constexpr int kDepth = 100000;
  for (int i = 0; i < kDepth; ++i)
    Trace({.text = "Begin: deeper", .tic = 1000u * static_cast<unsigned>(i)});
  m_model.AddAll();
  EXPECT_EQ(Label({0, 0, 0, 0}), "TID one - 100 us");
  EXPECT_EQ(Label({0, 0, 0, 0, 0}), "deeper - 100 us");
  Add({.text = "the deepest", .tic = 1000u * kDepth});
  EXPECT_EQ(Block({0, 0, 0, 0, 0}).duration, 1000 * kDepth);
  const NodePosition place = m_model.FindNode(*m_document.m_traces[kDepth]);
  ASSERT_TRUE(place);
  EXPECT_EQ(place.Node()->event, m_document.m_traces[kDepth]);
  EXPECT_EQ(FindNodeByWalk(const_cast<CRoot&>(m_model.Root()), *m_document.m_traces[kDepth]),
            place);
  Trim(1000);
  m_model.Clear();
  EXPECT_EQ(Tree(), "");
}

TEST_F(ProcModelTree, ClearDestroysAllNodesAndTheCount) {
  const int before = CExecutionBlock::s_live;
  Add("Begin: a");
  Add("Begin: b");
  EXPECT_EQ(CExecutionBlock::s_live, before + 6);
  m_items.DeleteAll();
  m_model.Clear();
  EXPECT_EQ(CExecutionBlock::s_live, before);
  EXPECT_EQ(m_model.TraceCount(), 0);
  Add("anew");
  EXPECT_EQ(InThread(), "anew\n");
}

TEST_F(ProcModelTree, ARebuildFilesTheDocumentAnew) {
  Add("Begin: a");
  Add({.text = "End: a", .tic = 7000});
  const std::string before = Tree();
  Rebuild();
  EXPECT_EQ(Tree(), before);
  EXPECT_EQ(m_model.TraceCount(), 2);
}

TEST_F(ProcModelTree, ARebuildReadsNoTraceThatHasGone) {
  Add("Begin: a");
  Add("in it");
  m_document.m_traces.Clear();
  Rebuild();
  EXPECT_EQ(Tree(), "");
}

TEST_F(ProcModelTree, ANameThatTheDocumentLacksIsEmpty) {
  Add({.text = "up", .machine = 900, .app = 901, .pid = 902, .tid = 903});
  EXPECT_EQ(Tree(), "\n  \n    PID  - 0 ps\n      TID  - 0 ps\n        up\n");
}

TEST_F(ProcModelTree, ATextEndsAtItsFirstNul) {
  using namespace std::string_literals;
  Add({.text = "Begin: a\0b"s});
  Add({.text = "Begin\0: a"s});
  EXPECT_EQ(InThread(),
            "a - 0 ps\n"
            "  Begin: a\n"
            "  Begin\n");
}

// Items.

TEST_F(ProcModelTree, AMachineHasItsItemAtOnceAndNothingElseHasOne) {
  Add("a");
  Add({.text = "b", .machine = 6});
  EXPECT_EQ(m_item, 0u);
  EXPECT_THAT(m_items.Texts(), testing::ElementsAre("desk", "lab"));
}

TEST_F(ProcModelTree, TheFirstMachineAloneTurnsRedrawingOn) {
  Trace({.text = "a"});
  Trace({.text = "b", .machine = 6});
  m_model.AddAll();
  EXPECT_EQ(m_items.m_firstMachines, 1);
  Rebuild();
  EXPECT_EQ(m_items.m_firstMachines, 2);
}

TEST_F(ProcModelTree, AMachineWhoseItemIsRefusedTurnsNothingOn) {
  m_items.m_refuse = true;
  Add("a");
  EXPECT_EQ(m_items.m_firstMachines, 0);
  EXPECT_EQ(Node({0}).treeItem, 0u);
}

TEST_F(ProcModelTree, ALiveTraceUnderAClosedNodeMakesNoItem) {
  Add("a");
  m_items.Expand(Node({0}));
  m_items.Expand(Node({0, 0}));
  m_items.Expand(Node({0, 0, 0}));
  Add("b");
  EXPECT_EQ(m_item, 0u);
  EXPECT_EQ(m_items.m_items.size(), 4u);
}

TEST_F(ProcModelTree, ALiveTraceUnderAnOpenNodeGivesItsItem) {
  Add("a");
  for (const CTraceEvent* node : {&Node({0}), &Node({0, 0}), &Node({0, 0, 0}), &Node({0, 0, 0, 0})})
    m_items.Expand(*node);
  Add("b");
  ASSERT_NE(m_item, 0u);
  EXPECT_EQ(m_items.m_items.at(m_item).text, "b");
  EXPECT_EQ(m_items.m_items.at(m_item).parent, Thread().treeItem);
}

TEST_F(ProcModelTree, ABeginUnderAnOpenNodeGivesTheItemOfTheBlockAndItsLeafHasNone) {
  Add("a");
  for (const CTraceEvent* node : {&Node({0}), &Node({0, 0}), &Node({0, 0, 0}), &Node({0, 0, 0, 0})})
    m_items.Expand(*node);
  Add("Begin: b");
  EXPECT_EQ(m_item, Node({0, 0, 0, 0, 1}).treeItem);
  EXPECT_EQ(m_items.m_items.at(m_item).text, "b - 0 ps");
  EXPECT_EQ(Node({0, 0, 0, 0, 1, 0}).treeItem, 0u);
  Add("inside, and the block is closed on the screen");
  EXPECT_EQ(m_item, 0u);
  Add("End: b");
  EXPECT_EQ(m_item, 0u);
}

TEST_F(ProcModelTree, NewLevelNodesUnderOpenItemsGetTheirItems) {
  Add("a");
  for (const CTraceEvent* node : {&Node({0}), &Node({0, 0}), &Node({0, 0, 0})})
    m_items.Expand(*node);
  Add({.text = "b", .tid = 5});
  Add({.text = "c", .pid = 8});
  Add({.text = "d", .app = 7});
  EXPECT_THAT(m_items.Texts(),
              testing::ElementsAre("desk", "shop", "PID 100 - 0 ps", "TID one - 0 ps",
                                   "TID two - 0 ps", "PID 200 - 0 ps", "till"));
}

TEST_F(ProcModelTree, WithoutItemsTheTreeIsTheSame) {
  Add("Begin: a");
  Add({.text = "End: a", .tic = 9000});
  ProcModel bare(m_document, m_filter);
  bare.AddAll();
  EXPECT_EQ(Tree(bare.Root()), Tree());
}

}  // namespace

// The tree view's items: made when their parent is opened or something below is wanted.
#include "proc_view_fixture.h"

namespace {

using ProcViewItems = ProcViewTest;

TEST_F(ProcViewItems, ARebuildMakesItemsOfTheMachinesOnly) {
  AddMany(20);
  Add({.text = "far", .machine = 6});
  Open();
  EXPECT_EQ(m_tree->Picture(), "+desk\n+lab\n");
  EXPECT_EQ(m_tree->Count(), 2U);
}

TEST_F(ProcViewItems, OpeningAnItemFillsItAndEveryNodeButATraceShowsItsButton) {
  Add("Begin: work");
  Add("inside");
  Open();
  ExpandToThread();
  EXPECT_EQ(m_tree->Picture(),
            "-desk\n"
            "  -shop\n"
            "    -PID 100 - 0 ps\n"
            "      -TID one - 0 ps\n"
            "        +work - 0 ps\n");
  Expand("work - 0 ps");
  EXPECT_EQ(m_tree->Count(), 7U);
  EXPECT_EQ(m_tree->ItemState(m_tree->Find("Begin: work")), 0U);
}

TEST_F(ProcViewItems, AFillRunsUnderTheWaitCursor) {
  AddMany(1);
  Open();
  Expand("desk");
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n");
}

TEST_F(ProcViewItems, ExpandingANodeASecondTimeAddsNoItems) {
  AddMany(3);
  Open();
  ExpandToThread();
  const std::size_t items = m_tree->Count();
  m_tree->Expand(m_tree->Find("desk"), false);
  Expand("desk");
  m_tree->Expand(m_tree->Find(kThread), false);
  Expand(kThread);
  EXPECT_EQ(m_tree->Count(), items);
}

TEST_F(ProcViewItems, AnInsertionThatFailsEndsTheFillSilently) {
  AddMany(5);
  Open();
  for (const char* text : {"desk", "shop", kProcess}) Expand(text);
  m_tree->insertionsLeft = 2;
  Expand(kThread);
  EXPECT_EQ(m_tree->Picture(),
            "-desk\n  -shop\n    -PID 100 - 0 ps\n      -TID one - 0 ps\n         1\n         2\n");
  EXPECT_EQ(m_host.Reported().find("box"), std::string::npos);
}

TEST_F(ProcViewItems, AFillEndsAtTheInsertionThatFailsAlsoWhereLaterOnesWouldDo) {
  AddMany(5);
  Open();
  for (const char* text : {"desk", "shop", kProcess}) Expand(text);
  m_tree->failingInsertion = 3;
  Expand(kThread);
  const std::string above = "-desk\n  -shop\n    -PID 100 - 0 ps\n      -TID one - 0 ps\n";
  EXPECT_EQ(m_tree->Picture(), above + "         1\n         2\n");
  m_tree->Expand(m_tree->Find(kThread), false);
  Expand(kThread);  // what lacks comes in its place
  EXPECT_EQ(m_tree->Picture(),
            above + "         1\n         2\n         3\n         4\n         5\n");
}

TEST_F(ProcViewItems, AFillForATraceThatIsFollowedEndsThereTooAndThenSelectsNothing) {
  AddMany(5);
  Open();
  for (const char* text : {"desk", "shop", kProcess}) Expand(text);
  Select("desk");
  m_tree->failingInsertion = 3;
  FollowTo(m_document.m_traces[4]);
  EXPECT_EQ(Selected(), "desk");
  EXPECT_EQ(m_tree->Count(), 6U);
  FollowTo(m_document.m_traces[1]);
  EXPECT_EQ(Selected(), "2");
}

TEST_F(ProcViewItems, ALiveTraceUnderACollapsedNodeMakesNoItemAndExpandingShowsItLater) {
  AddMany(1);
  Open();
  const std::size_t items = m_tree->Count();
  Drain("late");
  EXPECT_EQ(m_tree->Count(), items);
  EXPECT_EQ(m_tree->calls, std::vector<std::string>{});
  ExpandToThread();
  EXPECT_TRUE(m_tree->Find("late"));
}

TEST_F(ProcViewItems, WhatCameWhileAnOpenedNodeWasClosedAgainShowsAtTheNextOpeningInItsPlace) {
  AddMany(2);
  Open();
  ExpandToThread();
  m_tree->Expand(m_tree->Find(kThread), false);
  Drain("3");
  Expand(kThread);
  Drain("4");
  EXPECT_EQ(m_tree->Picture(),
            "-desk\n  -shop\n    -PID 100 - 0 ps\n      -TID one - 0 ps\n"
            "         1\n         2\n         3\n         4\n");
}

TEST_F(ProcViewItems, NextTreeItemGoesThroughTheWholeTreeAndFillsItAsItGoes) {
  Add("Begin: work");
  Add("End: ");
  Add("after");
  Open();
  std::string walked;
  for (TreeItem item = m_tree->Walk(0, TreeStep::FirstChild); item;
       item = m_view->NextTreeItem(item))
    walked += m_tree->TextOf(item) + "\n";
  const std::string all =
      "desk\nshop\nPID 100 - 0 ps\nTID one - 0 ps\nwork - 0 ps\nBegin: work\nEnd: "
      "\nafter\n";
  EXPECT_EQ(walked, all);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");  // nothing is opened for the eye
}

TEST_F(ProcViewItems, PrevTreeItemGoesBackTheSameWayAndFillsToo) {
  Add("Begin: work");
  Add("End: ");
  Add({.text = "far", .machine = 6});
  Open();
  std::string walked;
  for (TreeItem item = m_tree->Find("lab"); item; item = m_view->PrevTreeItem(item))
    walked += m_tree->TextOf(item) + "\n";
  EXPECT_EQ(walked,
            "lab\nEnd: \nBegin: work\nwork - 0 ps\nTID one - 0 ps\nPID 100 - 0 ps\nshop\n"
            "desk\n");
}

TEST_F(ProcViewItems, LastTreeItemGoesThroughItemsThatExistOnly) {
  AddMany(2);
  Add({.text = "far", .machine = 6});
  Open();
  EXPECT_EQ(m_tree->TextOf(m_view->LastTreeItem()), "lab");
  EXPECT_EQ(m_tree->Count(), 2U);
  Expand("lab");
  EXPECT_EQ(m_tree->TextOf(m_view->LastTreeItem()), "shop");
}

TEST_F(ProcViewItems, AHundredThousandNestedBeginsAreReachedWithoutTheStack) {
  for (int i = 0; i < 100000; ++i) Add("Begin: deeper");
  Open();
  TreeItem item = m_tree->Walk(0, TreeStep::FirstChild);
  int items = 1;
  while (items < 3000 && (item = m_view->NextTreeItem(item))) ++items;
  EXPECT_EQ(items, 3000);
}

}  // namespace

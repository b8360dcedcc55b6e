// How the tree view follows its document.
#include "proc_view_fixture.h"

namespace {

using ProcViewHints = ProcViewTest;
using Lines = std::vector<std::string>;

TEST_F(ProcViewHints, ADocumentStillLoadingAtTheFirstInitialUpdateStaysEmptyAndHint1002FillsIt) {
  AddMany(2);
  m_document.m_loading = true;
  Open();
  EXPECT_EQ(m_tree->Picture(), "");
  m_document.m_loading = false;
  m_view->SendMessage(WM_TRACE_UPDATE, kHintReady, 0);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");
}

TEST_F(ProcViewHints, HintsBelow1002AndAbove1006And1003ChangeNothing) {
  AddMany(2);
  Open();
  for (const unsigned hint : {0U, 1000U, 1001U, 1003U, 1007U})
    m_view->OnUpdate(nullptr, hint, nullptr);
  EXPECT_TRUE(m_tree->calls.empty());
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(ProcViewHints, ARebuildSwitchesRedrawingOnAgainAtTheFirstMachine) {
  AddMany(2);
  Add({.text = "far", .machine = 6});
  Open();
  m_view->OnUpdate(nullptr, kHintReady, nullptr);
  EXPECT_EQ(m_tree->calls, (Lines{"redraw off", "clear", "redraw on", "redraw on"}));
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n");
}

TEST_F(ProcViewHints, ARebuildKeepsTheSelectionOnItsTrace) {
  AddMany(4);
  Open();
  ExpandToThread();
  Select("3");
  m_view->SetFilter(m_view->m_filter, true);
  EXPECT_EQ(Selected(), "3");
}

TEST_F(ProcViewHints, ARebuildThatHidesTheSelectedTraceSelectsTheNearest) {
  AddMany(2);
  Add({.text = "hidden", .category = 9});
  AddMany(1);
  Open();
  ExpandToThread();
  Select("hidden");
  CTraceFilter filter;
  HideNine(filter);
  m_view->SetFilter(filter, true);
  EXPECT_EQ(Selected(), "4");
}

TEST_F(ProcViewHints, AClearReadsNoTraceOfTheOldSelection) {
  AddMany(4);
  Open();
  ExpandToThread();
  Select("3");
  m_view->m_currentEvent = m_document.m_traces[2];
  Clear();
  EXPECT_EQ(m_tree->Picture(), "");
  EXPECT_EQ(m_view->m_currentEvent, nullptr);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
  AddMany(1);
  m_view->OnUpdate(nullptr, kHintReady, nullptr);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");
  EXPECT_EQ(m_tree->SelectedItem(), 0U);
}

TEST_F(ProcViewHints, AddedTracesTellTheRowCountOnceForEachAlsoForHiddenOnes) {
  HideNine(m_view->m_filter);
  Open();
  m_view->OnActivateView(true, m_view.get(), nullptr);
  m_main.Reported();
  Drain({{.text = "a"}, {.text = "hidden", .category = 9}, {.text = "b"}});
  EXPECT_EQ(m_main.Reported(), (Lines{"rows 1", "rows 1", "rows 2"}));
}

TEST_F(ProcViewHints, OnlyTheActiveViewTellsThePanes) {
  Open();
  m_main.Reported();
  Drain("a");
  Trim(1);
  Clear();
  EXPECT_TRUE(m_main.Reported().empty());
  m_view->OnActivateView(true, m_view.get(), nullptr);
  EXPECT_EQ(m_main.Reported(), (Lines{"rows 0", "filtered 0"}));
  m_view->m_filter.allTraces = 0;
  m_view->OnUpdate(nullptr, kHintReady, nullptr);
  EXPECT_EQ(m_main.Reported(), (Lines{"rows 0", "filtered 1"}));
  m_view->OnActivateView(false, nullptr, m_view.get());
  EXPECT_EQ(m_main.Reported(), (Lines{"rows cleared", "filtered cleared"}));
}

TEST_F(ProcViewHints, ATrimTellsTheCountThatItDidNotReduce) {
  AddMany(5);
  Open();
  m_view->OnActivateView(true, m_view.get(), nullptr);
  m_main.Reported();
  Trim(2);
  EXPECT_EQ(m_main.Reported(), Lines{"rows 5"});
}

TEST_F(ProcViewHints, ATrimTakesTheLeavesAndTheirItemsAndSelectsTheNearestToTheOldest) {
  AddMany(6);
  Open();
  ExpandToThread();
  Select("5");
  Trim(2);
  EXPECT_EQ(m_tree->Picture(),
            "-desk\n  -shop\n    -PID 100 - 0 ps\n      -TID one - 0 ps\n"
            "         3*\n         4\n         5\n         6\n");
  EXPECT_EQ(m_tree->calls.front(), "redraw off");
  EXPECT_EQ(Lines(m_tree->calls.end() - 2, m_tree->calls.end()), (Lines{"select 3", "visible 3"}));
}

TEST_F(ProcViewHints, ATrimOpensWhatTheNearestTraceLiesIn) {
  AddMany(6);
  Open();
  Trim(2);
  EXPECT_EQ(Selected(), "3");
  EXPECT_EQ(m_tree->Count(), 8U);
}

TEST_F(ProcViewHints, ATrimOfAllLeavesTheLevelsAndTheirTexts) {
  AddMany(3);
  Open();
  ExpandToThread();
  Trim(3);
  EXPECT_EQ(m_tree->Picture(), "-desk\n  -shop\n    -PID 100 - 0 ps\n      -TID one - 0 ps\n");
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
  Drain("again");
  EXPECT_TRUE(m_tree->Find("again"));
}

TEST_F(ProcViewHints,
       AHiddenTraceThatIsTrimmedTakesTheNearestOutButItsItemStaysUntilItsOwnTraceGoes) {
  HideNine(m_view->m_filter);
  Add({.text = "hidden", .category = 9});
  AddMany(3);
  Open();
  ExpandToThread();
  Trim(1);
  EXPECT_TRUE(m_tree->Find("2"));
  EXPECT_EQ(m_tree->TextOf(m_tree->Find("2")), "2");
  Trim(1);
  EXPECT_FALSE(m_tree->Find("2"));
  EXPECT_TRUE(m_tree->Find("3"));
}

TEST_F(ProcViewHints, TheTraceToSelectIsForgottenWhenItIsTrimmed) {
  AddMany(3);
  Open();
  m_view->m_currentEvent = m_document.m_traces[1];
  Trim(1);
  EXPECT_NE(m_view->m_currentEvent, nullptr);
  Trim(1);
  EXPECT_EQ(m_view->m_currentEvent, nullptr);
  m_view->OnInitialUpdate();
  EXPECT_EQ(Selected(), "3");
}

TEST_F(ProcViewHints, Hint1006ForATraceInUnopenedPartsCreatesTheItemsAndTheSelectionOpensThem) {
  Add("Begin: work");
  TraceEvent_i* const inside = Add("inside");
  Open();
  FollowTo(inside);
  EXPECT_EQ(m_tree->Picture(),
            "-desk\n"
            "  -shop\n"
            "    -PID 100 - 0 ps\n"
            "      -TID one - 0 ps\n"
            "        -work - 0 ps\n"
            "           Begin: work\n"
            "           inside*\n");
  EXPECT_EQ(m_tree->calls, (Lines{"select inside", "visible inside"}));
  EXPECT_EQ(m_host.Reported().substr(0, 15), "wait cursor on\n");
}

TEST_F(ProcViewHints, Hint1006ForATraceThatTheFilterHidesSelectsTheNearestLeafBySequenceNumber) {
  HideNine(m_view->m_filter);
  AddMany(2);
  TraceEvent_i* const hidden = Add({.text = "hidden", .count = 50, .category = 9});
  Add({.text = "behind", .count = 52});
  Open();
  FollowTo(hidden);
  EXPECT_EQ(Selected(), "behind");
}

TEST_F(ProcViewHints, Hint1006OnAnEmptyTreeSelectsNothing) {
  HideNine(m_view->m_filter);
  TraceEvent_i* const hidden = Add({.text = "hidden", .category = 9});
  Open();
  FollowTo(hidden);
  EXPECT_EQ(m_tree->SelectedItem(), 0U);
  EXPECT_TRUE(m_tree->calls.empty());
}

TEST_F(ProcViewHints, ALiveTraceUnderAnExpandedNodeScrollsOnlyWhenThePreviousItemIsOnTheScreen) {
  AddMany(20);
  Open();
  ExpandToThread();
  m_tree->EnsureVisible(m_tree->Find("20"));
  m_tree->calls.clear();
  Drain("21");
  EXPECT_EQ(m_tree->calls.back(), "visible 21");
  EXPECT_TRUE(m_tree->IsOnScreen(m_tree->Find("21")));
  m_tree->ScrollTo(0);
  m_tree->calls.clear();
  Drain("22");
  EXPECT_EQ(m_tree->Top(), 0);
  for (const std::string& call : m_tree->calls) EXPECT_NE(call, "visible 22");
}

TEST_F(ProcViewHints, TheTreeStaysPutWhenTheItemAboveIsAnotherNodesChild) {
  AddMany(1);
  Add({.text = "other", .tid = 5});
  Open();
  for (const char* text : {"desk", "shop", kProcess, "TID one - 0 ps", "TID two - 0 ps"})
    Expand(text);
  Add("Begin: deep");
  m_view->OnUpdate(nullptr, kHintReady, nullptr);
  ExpandToThread();
  Expand("deep - 0 ps");
  // The row above the next trace lies in the block: it is neither the thread nor a child of it.
  Drain("End: ");
  m_tree->calls.clear();
  Drain("plain");
  EXPECT_TRUE(m_tree->Find("plain"));
  for (const std::string& call : m_tree->calls) EXPECT_NE(call, "visible plain");
}

TEST_F(ProcViewHints, TheRememberedTraceIsSelectedAtEachReturnUntilTheFrameChangesIt) {
  AddMany(5);
  Open();
  m_view->m_currentEvent = m_document.m_traces[3];
  m_view->OnInitialUpdate();
  EXPECT_EQ(Selected(), "4");
  Select("1");
  m_view->OnInitialUpdate();
  EXPECT_EQ(Selected(), "4");
  m_view->m_currentEvent = nullptr;
  Select("1");
  m_view->OnInitialUpdate();
  EXPECT_EQ(Selected(), "1");
}

TEST_F(ProcViewHints, SetFilterCopiesClearsTheMarkAndRebuildsWhenAsked) {
  AddMany(1);
  Open();
  CTraceFilter filter;
  filter.allTraces = 0;
  filter.allComponents = 0;
  filter.components[0] = 0;
  m_view->m_filterChanged = true;
  m_view->SetFilter(filter, false);
  EXPECT_FALSE(m_view->m_filterChanged);
  EXPECT_EQ(m_view->m_filter.allTraces, 0);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");
  m_view->SetFilter(filter, true);
  EXPECT_EQ(m_tree->Picture(), "");
}

}  // namespace

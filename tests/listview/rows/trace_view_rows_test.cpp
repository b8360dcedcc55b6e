// Rows, hints and scrolling of the list view.
#include <gtest/gtest.h>

#include "listview/rows/trace_view_fixture.h"

namespace {

using Strings = std::vector<std::string>;

TEST_F(TraceViewTest, AnEmptyDocumentShowsNoRows) {
  Open();
  EXPECT_EQ(m_list->ItemCount(), 0);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
}

TEST_F(TraceViewTest, TheFirstUpdateShowsWhatTheDocumentHolds) {
  AddNumbers({3, 4, 5});
  EXPECT_EQ(m_list->ItemCount(), 0) << "nothing before it";
  Open();
  EXPECT_EQ(Rows(), "3 4 5");
}

TEST_F(TraceViewTest, ADocumentThatStillLoadsIsShownWhenItSaysThatItIsReady) {
  m_document.m_loading = true;
  Open();
  AddNumbers({1, 2});
  EXPECT_EQ(m_list->ItemCount(), 0);
  m_document.m_loading = false;
  m_view->PostMessage(WM_TRACE_UPDATE, kHintReady);
  m_host.RunPosted();
  EXPECT_EQ(Rows(), "1 2");
}

TEST_F(TraceViewTest, HintsBeforeTheFirstUpdateFindNoRowsToChange) {
  AddMany(5);
  m_document.UpdateAllViews(nullptr, kHintReady);
  DrainMany(2);
  Trim(1);
  m_document.UpdateAllViews(nullptr, kHintOptions);
  EXPECT_EQ(m_list->ItemCount(), 0);
  Open();
  EXPECT_EQ(Rows(), "2 3 4 5 6 7");
}

TEST_F(TraceViewTest, AHintTwiceShowsTheSameRows) {
  AddNumbers({1, 2});
  Open();
  m_document.UpdateAllViews(nullptr, kHintReady);
  m_document.UpdateAllViews(nullptr, kHintReady);
  EXPECT_EQ(Rows(), "1 2");
}

TEST_F(TraceViewTest, Hint1003AndEveryCodeOutside1001To1006DoNothing) {
  AddMany(3);
  Open();
  Focus(1);
  m_list->calls.clear();
  CTraceHint hint(m_document.m_traces[0]);
  for (const unsigned code : {0u, 1000u, 1003u, 1007u, 1128u, 0x80000000u | 1004u})
    m_document.UpdateAllViews(nullptr, code, &hint);
  EXPECT_EQ(m_list->calls, Strings{});
  EXPECT_EQ(States(), "1 focused selected");
}

TEST_F(TraceViewTest, HintsWithoutTheirTracesDoNothing) {
  AddMany(3);
  Open();
  m_list->calls.clear();
  CTraceHint none;
  for (const unsigned code : {1004u, 1005u, 1006u}) m_document.UpdateAllViews(nullptr, code);
  m_document.UpdateAllViews(nullptr, kHintFollow, &none);
  EXPECT_EQ(m_list->calls, Strings{});
}

TEST_F(TraceViewTest, ABatchRaisesTheItemCountOnce) {
  AddMany(3);
  Open();
  m_list->calls.clear();
  m_list->pageRows = 100;
  DrainMany(4);
  EXPECT_EQ(m_list->calls, (Strings{"count 7", "visible 6"}));
  EXPECT_EQ(Rows(), "1 2 3 4 5 6 7");
}

TEST_F(TraceViewTest, WithTheLastRowInViewABatchScrollsToItsEnd) {
  AddMany(50);
  Open();
  ASSERT_EQ(m_list->TopIndex(), 40);
  DrainMany(5);
  EXPECT_EQ(m_list->TopIndex(), 45);
}

TEST_F(TraceViewTest, ScrolledUpByARowABatchDoesNotMoveTheView) {
  AddMany(50);
  Open();
  m_list->ScrollTo(39);
  DrainMany(5);
  EXPECT_EQ(m_list->TopIndex(), 39);
  EXPECT_EQ(m_list->ItemCount(), 55);
}

TEST_F(TraceViewTest, ABatchInWhichNothingPassesTouchesNeitherListNorPane) {
  AddMany(3);
  Open();
  HideNine();
  m_view->OnActivateView(true, m_view.get(), nullptr);
  m_list->calls.clear();
  m_main.Reported();
  Drain({{.component = 9}, {.component = 9}});
  EXPECT_EQ(m_list->calls, Strings{});
  EXPECT_EQ(m_main.Reported(), Strings{});
}

TEST_F(TraceViewTest, OnlyThePassingTracesOfABatchBecomeRows) {
  AddMany(3);
  Open();
  HideNine();
  Drain({{.component = 9}, {.component = 1}, {.component = 9}, {.component = 2}});
  EXPECT_EQ(Rows(), "1 2 3 5 7");
}

TEST_F(TraceViewTest, AFilterHidesAndShowsRows) {
  Add({.component = 1});
  Add({.component = 9});
  Add({.component = 1});
  Open();
  EXPECT_EQ(Rows(), "1 2 3");
  m_view->m_filterChanged = true;
  HideNine();
  EXPECT_FALSE(m_view->m_filterChanged);
  EXPECT_EQ(Rows(), "1 3");
  m_view->SetFilter(CTraceFilter(), true);
  EXPECT_EQ(Rows(), "1 2 3");
}

TEST_F(TraceViewTest, SetFilterWithoutARebuildLeavesTheRows) {
  Add({.component = 9});
  Open();
  CTraceFilter filter;
  filter.allTraces = filter.allComponents = 0;
  filter.components[9] = 0;
  m_view->SetFilter(filter, false);
  EXPECT_EQ(Rows(), "1");
  m_document.UpdateAllViews(nullptr, kHintReady);
  EXPECT_EQ(Rows(), "");
}

TEST_F(TraceViewTest, ARebuildAlwaysEndsAtTheLastRow) {
  AddMany(50);
  Open();
  m_list->ScrollTo(0);
  m_view->SetFilter(CTraceFilter(), true);
  EXPECT_EQ(m_list->TopIndex(), 40);
}

TEST_F(TraceViewTest, ARebuildKeepsTheFocusOnItsTraceAndMovesThereAfterwards) {
  for (int i = 0; i < 50; ++i) Add({.component = static_cast<NameId>(i % 2 ? 9 : 1)});
  Open();
  Focus(20);
  m_host.ClearTranscript();
  m_list->calls.clear();
  HideNine();
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[20]);
  EXPECT_EQ(States(), "10 focused selected");
  EXPECT_EQ(m_list->TopIndex(), 15) << "at the last rows until the posted message is handled";
  m_host.RunPosted();
  EXPECT_EQ(m_list->TopIndex(), 10);
}

TEST_F(TraceViewTest, ARebuildReplacesTheRememberedTraceByThatOfTheFocusedRowOrNull) {
  AddMany(5);
  Open();
  m_view->m_currentEvent = m_document.m_traces[1];
  Focus(3);
  m_view->SetFilter(CTraceFilter(), true);
  EXPECT_EQ(m_view->m_currentEvent, m_document.m_traces[3]);
  m_list->SetItemState(-1, 0, kRowFocused | kRowSelected);
  m_view->SetFilter(CTraceFilter(), true);
  EXPECT_EQ(m_view->m_currentEvent, nullptr);
  EXPECT_EQ(States(), "");
}

TEST_F(TraceViewTest, ARebuildRunsUnderTheWaitCursorWithRedrawingOff) {
  AddMany(2);
  Open();
  m_host.ClearTranscript();
  m_list->calls.clear();
  m_view->SetFilter(CTraceFilter(), true);
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n");
  EXPECT_EQ(m_list->calls, (Strings{"redraw off", "count 0", "count 2", "visible 1", "redraw on"}));
}

TEST_F(TraceViewTest, ClearingTheDocumentForgetsRowsAndFocusWithoutReadingThem) {
  AddMany(5);
  Open();
  HideNine();
  Focus(3);
  m_view->m_currentEvent = m_document.m_traces[2];
  m_document.DeleteContents();
  EXPECT_EQ(m_list->ItemCount(), 0);
  EXPECT_EQ(m_view->m_currentEvent, nullptr);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
  DrainMany(9);
  EXPECT_EQ(m_list->ItemCount(), 9);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr) << "no row has the focus";
}

TEST_F(TraceViewTest, ClearingAnUnfilteredDocumentForgetsItsRowsAlike) {
  AddMany(5);
  Open();
  Focus(3);
  m_document.DeleteContents();
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
  DrainMany(2);
  EXPECT_EQ(Rows(), "6 7");
}

TEST_F(TraceViewTest, CellsAskedForWhileTheDocumentIsBeingClearedAreEmpty) {
  AddMany(5);
  Open();
  m_document.m_traces.Clear();
  EXPECT_EQ(m_view->RowListText(2, Column::Count), "");
  EXPECT_EQ(m_view->RowListIcon(2), -1);
  m_document.UpdateAllViews(nullptr, kHintReady);
  EXPECT_EQ(m_list->ItemCount(), 0);
}

TEST_F(TraceViewTest, ATrimTakesItsRowsOutInOneCallWithRedrawingOff) {
  AddMany(300);
  Open();
  m_list->calls.clear();
  Trim(100);
  EXPECT_EQ(m_list->calls, (Strings{"redraw off", "delete 0 100", "redraw on"}));
  EXPECT_EQ(m_list->ItemCount(), 200);
  EXPECT_EQ(m_view->RowListText(0, Column::Count), "101");
}

TEST_F(TraceViewTest, ATrimOfHiddenTracesLeavesTheRows) {
  for (int i = 0; i < 6; ++i) Add({.component = static_cast<NameId>(i < 3 ? 9 : 1)});
  Open();
  HideNine();
  m_list->calls.clear();
  Trim(2);
  EXPECT_EQ(m_list->calls, (Strings{"redraw off", "redraw on"}));
  EXPECT_EQ(Rows(), "4 5 6");
  Trim(2);
  EXPECT_EQ(Rows(), "5 6");
}

TEST_F(TraceViewTest, ATrimKeepsWhatIsSeenInPlace) {
  AddMany(300);
  Open();
  m_list->ScrollTo(150);
  Trim(100);
  EXPECT_EQ(m_list->TopIndex(), 50);
}

TEST_F(TraceViewTest, AfterATrimTheCurrentTraceIsStillThatOfTheFocusedRow) {
  AddMany(10);
  Open();
  Focus(6);
  TraceEvent_i* const focused = m_document.m_traces[6];
  Trim(4);
  EXPECT_EQ(m_view->CurrentEvent(), focused);
  Trim(3);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr) << "its trace has gone";
  EXPECT_EQ(Rows(), "8 9 10");
}

TEST_F(TraceViewTest, TheRememberedTraceIsForgottenWhenItIsTrimmed) {
  AddMany(10);
  Open();
  m_view->m_currentEvent = m_document.m_traces[2];
  Trim(2);
  EXPECT_EQ(m_view->m_currentEvent, m_document.m_traces[0]);
  Trim(1);
  EXPECT_EQ(m_view->m_currentEvent, nullptr);
  Open();
  EXPECT_EQ(States(), "");
}

TEST_F(TraceViewTest, TracesThatAreTrimmedBeforeTheirBatchIsReportedNeverBecomeRows) {
  AddMany(4);
  Open();
  // One drain: six traces arrive, the limit takes six away, the batch tells of what is left.
  CTraceHint batch;
  for (int i = 0; i < 6; ++i) batch.m_events.push_back(Add({}));
  Trim(6);
  batch.m_events.erase(batch.m_events.begin(), batch.m_events.begin() + 2);
  batch.m_events.push_back(Add({}));
  m_document.UpdateAllViews(nullptr, kHintAdded, &batch);
  EXPECT_EQ(Rows(), "7 8 9 10 11");
  EXPECT_EQ(m_view->Rows().StorageBytes(), 0u);
  DrainMany(2);
  Trim(3);
  EXPECT_EQ(Rows(), "10 11 12 13");
}

TEST_F(TraceViewTest, AHintThatDoesNotTakeTheOldestTracesStillTakesItsRows) {
  AddMany(6);
  Open();
  CTraceHint hint;
  for (const std::size_t position : {1u, 2u, 4u})
    hint.m_events.push_back(m_document.m_traces[position]);
  m_list->calls.clear();
  m_document.UpdateAllViews(nullptr, kHintTrimmed, &hint);
  EXPECT_EQ(m_list->calls, (Strings{"redraw off", "delete 1 2", "delete 2 1", "redraw on"}));
  EXPECT_EQ(Rows(), "1 4 6");
}

TEST_F(TraceViewTest, TheActiveViewTellsItsRowCountAndWhetherItFilters) {
  AddMany(5);
  Open();
  EXPECT_EQ(m_main.Reported(), Strings{}) << "not active yet";
  m_view->OnActivateView(true, m_view.get(), nullptr);
  EXPECT_EQ(m_main.Reported(), (Strings{"rows 5", "filtered 0"}));
  DrainMany(2);
  EXPECT_EQ(m_main.Reported(), Strings{"rows 7"});
  Trim(3);
  EXPECT_EQ(m_main.Reported(), Strings{"rows 4"});
  HideNine();
  EXPECT_EQ(m_main.Reported(), (Strings{"rows 4", "filtered 1"}));
  m_view->OnActivateView(false, nullptr, m_view.get());
  EXPECT_EQ(m_main.Reported(), (Strings{"rows cleared", "filtered cleared"}));
  DrainMany(2);
  Trim(1);
  m_view->SetFilter(CTraceFilter(), true);
  EXPECT_EQ(m_main.Reported(), Strings{});
}

TEST_F(TraceViewTest, AnActivatedViewTakesTheKeyboard) {
  Open();
  m_view->OnActivateView(true, m_view.get(), nullptr);
  EXPECT_TRUE(m_list->hasKeyboard);
}

TEST_F(TraceViewTest, WithoutAMainWindowTheViewWorksOn) {
  m_host.SetMainWindow(nullptr);
  AddMany(2);
  Open();
  m_view->OnActivateView(true, m_view.get(), nullptr);
  DrainMany(2);
  EXPECT_EQ(m_list->ItemCount(), 4);
  EXPECT_EQ(m_main.Reported(), Strings{});
}

TEST_F(TraceViewTest, CellsFollowTheColumnsIdentityAndTheRowAbove) {
  m_document.m_names[5] = {"4711", 0};
  Add({.tic = 100, .pid = 5});
  Add({.component = 9, .tic = 150, .pid = 5});
  Add({.tic = 175, .pid = 5});
  Add({.tic = 180, .pid = 6});
  Open();
  EXPECT_EQ(m_view->RowListText(0, Column::TicDiff), "n/a");
  EXPECT_EQ(m_view->RowListText(2, Column::TicDiff), "25");
  EXPECT_EQ(m_view->RowListText(3, Column::TicDiff), "n/a");
  EXPECT_EQ(m_view->RowListText(1, Column::Pid), "4711");
  HideNine();
  EXPECT_EQ(m_view->RowListText(1, Column::TicDiff), "75") << "the row between is hidden";
  m_list->SetColumnOrder({14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0});
  EXPECT_EQ(m_view->RowListText(1, Column::TicDiff), "75");
}

TEST_F(TraceViewTest, ACellIsCutAtTheLengthOfTheControlsBufferBetweenCharacters) {
  Add({.text = std::string(300, 'x')});
  Add({.text = std::string(258, 'x') + "\xC3\xA4" + "yz"});
  Open();
  EXPECT_EQ(m_view->RowListText(0, Column::Trace), std::string(259, 'x'));
  EXPECT_EQ(m_view->RowListText(1, Column::Trace), std::string(258, 'x'));
}

TEST_F(TraceViewTest, ARowThatDoesNotExistHasNoTextAndNoIcon) {
  Add({.attributes = 4});
  Open();
  EXPECT_EQ(m_view->RowListIcon(0), 2);
  for (const int row : {-1, 1, 1000000}) {
    EXPECT_EQ(m_view->RowListText(row, Column::Count), "");
    EXPECT_EQ(m_view->RowListIcon(row), -1);
  }
}

TEST_F(TraceViewTest, TheRowsOfAnUnfilteredDocumentCostNothing) {
  AddMany(1000);
  Open();
  DrainMany(500);
  Trim(300);
  EXPECT_EQ(m_list->ItemCount(), 1200);
  EXPECT_EQ(m_view->Rows().StorageBytes(), 0u);
}

}  // namespace

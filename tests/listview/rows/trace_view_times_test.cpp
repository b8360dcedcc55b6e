// The columns of times in the list view, and the trace that "Since" counts from.
#include <gtest/gtest.h>

#include "listview/columns/time_columns.h"
#include "listview/rows/trace_view_fixture.h"

namespace {

constexpr std::uint64_t kUsPs = 1'000'000;

class Times : public TraceViewTest {
 protected:
  // Traces of component 9 or 0 that are so many microseconds after one another.
  void AddAt(const std::vector<unsigned>& microseconds, NameId component = 0) {
    for (const unsigned us : microseconds)
      Add({.component = component,
           .time = PackTime(9, 41, 7, us / 1000),
           .tic = (us + 5'000'000) * kUsPs,
           .pid = 1});
  }
  void Show(Column column, bool shown = true) {
    ShowTimeColumn(column, shown);
    m_document.UpdateAllViews(nullptr, kHintOptions);
  }
  std::string Cells(Column column) {
    std::string cells;
    for (int row = 0; row < m_list->ItemCount(); ++row)
      cells += (row ? " | " : "") + m_view->RowListText(row, column);
    return cells;
  }
};

TEST_F(Times, AListHasNoSuchColumnUntilOneIsShown) {
  Open();
  EXPECT_EQ(m_list->columns.size(), 15U);
  Show(Column::Since);
  ASSERT_EQ(m_list->columns.size(), 18U);
  EXPECT_EQ(m_list->columns[16].header, "Since");
  EXPECT_EQ(m_list->ColumnWidth(Column::Since), 16 * 7 + 16);
  EXPECT_EQ(m_list->ColumnWidth(Column::Delta), 0);
  Show(Column::Since, false);
  EXPECT_EQ(m_list->ColumnWidth(Column::Since), 0);
  const std::unique_ptr<CTraceView> second = MakeView();
  second->OnInitialUpdate();
  EXPECT_EQ(static_cast<FakeRowList&>(second->List()).columns.size(), 15U);
}

TEST_F(Times, AMixedOrderComesBackAndTheFifteenKeepTheirs) {
  Show(Column::Delta);
  Open();
  const ListOrder mixed = {17, 0, 1, 2, 3, 4, 5, 6, 7, 8, 15, 9, 10, 11, 14, 12, 16, 13};
  m_view->OnColumnsReordered();
  m_list->SetColumnOrder(mixed);
  m_host.RunPosted();
  EXPECT_EQ(ListOrderOf(ReadColumnOrder()),
            (ListOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 12, 13}));
  const std::unique_ptr<CTraceView> second = MakeView();
  second->OnInitialUpdate();
  EXPECT_EQ(second->List().Header().GetColumnOrder(), mixed);
}

TEST_F(Times, TheFlagsOfTheFifteenStay) {
  Show(Column::WallTime);
  Open();
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
}

TEST_F(Times, AWidthIsDraggedFittedAndKept) {
  AddAt({0, 1500});
  Show(Column::Delta);
  Open();
  EXPECT_TRUE(m_view->OnColumnResizing(Column::Delta, 15));
  EXPECT_FALSE(m_view->OnColumnResizing(Column::Delta, 90));
  EXPECT_TRUE(m_view->OnColumnResizing(Column::Since, 90)) << "it is hidden";
  m_view->OnColumnResized(Column::Delta, 90);
  EXPECT_EQ(StoredColumnWidth(Column::Delta), 90);
  ASSERT_TRUE(m_view->OnCommand(ID_VIEW_FITCOLUMNS));
  EXPECT_EQ(m_list->ColumnWidth(Column::Delta), 11 * 7) << "0.001500000";
}

TEST_F(Times, DeltaIsToTheRowAboveWhateverTheFilterHides) {
  AddAt({0, 1500});
  AddAt({1700}, 9);
  AddAt({2000});
  Show(Column::Delta);
  Open();
  EXPECT_EQ(Cells(Column::Delta), "n/a | 0.001500000 | 0.000200000 | 0.000300000");
  HideNine();
  EXPECT_EQ(Cells(Column::Delta), "n/a | 0.001500000 | 0.000500000");
  Trim(1);
  EXPECT_EQ(Cells(Column::Delta), "n/a | 0.000500000");
}

TEST_F(Times, SinceCountsFromTheFocusedRowAndAgainTakesItOff) {
  AddAt({0, 1500, 2000});
  Show(Column::Since);
  Open();
  Focus(1);
  ASSERT_TRUE(m_view->OnCommand(ID_VIEW_TIMEREFERENCE));
  EXPECT_EQ(Cells(Column::Since), "-0.001500000 | reference | 0.000500000");
  EXPECT_GT(m_list->repaints, 0);
  Focus(2);
  m_view->OnCommand(ID_VIEW_TIMEREFERENCE);
  EXPECT_EQ(Cells(Column::Since), "-0.002000000 | -0.000500000 | reference");
  m_view->OnCommand(ID_VIEW_TIMEREFERENCE);
  EXPECT_EQ(Cells(Column::Since), " |  | ");
}

TEST_F(Times, SinceStaysWhenTheFilterHidesItsReferenceAndSaysThatATrimHasTakenIt) {
  AddAt({0}, 9);
  AddAt({1500, 2000});
  Show(Column::Since);
  Open();
  Focus(0);
  m_view->OnCommand(ID_VIEW_TIMEREFERENCE);
  HideNine();
  EXPECT_EQ(Cells(Column::Since), "0.001500000 | 0.002000000");
  Trim(1);
  EXPECT_EQ(Cells(Column::Since), "reference gone | reference gone");
}

TEST_F(Times, TheCommandOfTheReferenceNeedsAFocusedRowAndIsCheckedOnTheReference) {
  AddAt({0, 1500});
  Show(Column::Since);
  Open();
  m_list->SetItemState(-1, 0, kRowFocused | kRowSelected);
  CCmdUI ui(ID_VIEW_TIMEREFERENCE, true, false);
  m_view->OnUpdateCommand(ui);
  EXPECT_FALSE(ui.IsEnabled());
  Focus(1);
  m_view->OnCommand(ID_VIEW_TIMEREFERENCE);
  CCmdUI on(ID_VIEW_TIMEREFERENCE, false, false), off(ID_VIEW_TIMEREFERENCE, false, false);
  m_view->OnUpdateCommand(on);
  Focus(0);
  m_view->OnUpdateCommand(off);
  EXPECT_TRUE(on.IsEnabled() && off.IsEnabled());
  EXPECT_TRUE(on.IsChecked());
  EXPECT_FALSE(off.IsChecked());
}

TEST_F(Times, WallTimeOfFilteredRowsIsThatOfAllRows) {
  AddAt({0, 1500});
  AddAt({1700}, 9);
  AddAt({2000});
  Show(Column::WallTime);
  Open();
  HideNine();
  EXPECT_EQ(Cells(Column::WallTime),
            "2026-11-21T09:41:07.000000Z | 2026-11-21T09:41:07.001500Z | "
            "2026-11-21T09:41:07.002000Z");
}

TEST_F(Times, AClearedListCountsFromNothing) {
  AddAt({0, 1500});
  Show(Column::Since);
  Open();
  Focus(0);
  m_view->OnCommand(ID_VIEW_TIMEREFERENCE);
  m_document.DeleteContents();
  Drain({{.tic = 7}});
  EXPECT_EQ(Cells(Column::Since), "reference gone");
}

}  // namespace

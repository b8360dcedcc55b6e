// The list view's columns: their creation, the user's drags, and changed options.
#include <gtest/gtest.h>

#include "listview/rows/trace_view_fixture.h"
#include "support/zone_guard.h"

namespace {

using Strings = std::vector<std::string>;

class Columns : public TraceViewTest {
 protected:
  // The headers of the columns with a width, by index.
  static Strings Shown(const FakeRowList& list) {
    Strings shown;
    for (const ColumnInfo& column : kColumns)
      if (list.ColumnWidth(column.column) != 0) shown.push_back(column.header);
    return shown;
  }
  static void StoreWidth(const char* header, unsigned widthPx) {
    NtRegPut(HKEY_CURRENT_USER, kRegColumns, header, widthPx);
  }
  static unsigned StoredWidth(const char* header) {
    return NtRegGet(HKEY_CURRENT_USER, kRegColumns, header, 0u);
  }
  void Options() { m_document.UpdateAllViews(nullptr, kHintOptions); }
};

TEST_F(Columns, WithAnEmptyStoreFiveColumnsShow) {
  Open();
  EXPECT_EQ(Shown(*m_list), (Strings{"Sev", "Application", "Component", "Category", "Trace"}));
  EXPECT_EQ(m_list->columns.size(), 15u);
}

TEST_F(Columns, AreInsertedInIndexOrderWithHeaderAndAlignment) {
  Open();
  std::string inserted;
  int index = 0;
  for (const ListColumnInfo& column : m_list->columns)
    inserted += std::to_string(index++) + " " + column.header + " " +
                "LRC"[static_cast<int>(column.align)] + (column.showsIcon ? "i" : "") + "\n";
  EXPECT_EQ(inserted,
            "0 Sev Ci\n1 Count R\n2 Tic Count R\n3 Tic Diff R\n4 Time L\n5 Machine L\n"
            "6 Application L\n7 Component L\n8 Category L\n9 Attributes L\n10 PID L\n"
            "11 TID L\n12 Trace L\n13 Source L\n14 Stack L\n");
}

TEST_F(Columns, AComputedWidthIsCharactersTimesAveragePlusSixteenAndAtLeastTheHeader) {
  g_activeColumns.fill(1);
  Open();
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 80 * 7 + 16);
  EXPECT_EQ(m_list->ColumnWidth(Column::Sev), 4 * 7 + 16);
  EXPECT_EQ(m_list->ColumnWidth(Column::Application), 9 * 7 + 16);
}

TEST_F(Columns, AHeaderWiderThanTheComputedWidthSetsIt) {
  // "Application" has 11 characters in a column of 9.
  m_list->headerCharWidthPx = 20;
  Open();
  EXPECT_EQ(m_list->ColumnWidth(Column::Application), 11 * 20);
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 80 * 7 + 16);
}

TEST_F(Columns, FitColumnsMakesEachShownColumnAsWideAsWhatIsOnViewAndStoresIt) {
  AddMany(3);
  Add({.text = "a text of some length", .component = 5});
  AddMany(30);
  Open();
  m_list->EnsureVisible(0);
  ASSERT_TRUE(m_view->OnCommand(ID_VIEW_FITCOLUMNS));
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 21 * 7);
  EXPECT_EQ(m_list->ColumnWidth(Column::Component), 9 * 7) << "its name is wider than its cells";
  EXPECT_EQ(m_list->ColumnWidth(Column::Count), 0) << "a hidden column stays hidden";
  EXPECT_EQ(StoredWidth("Trace"), 147U);
  EXPECT_EQ(StoredWidth("Count"), 0U);
  m_list->ScrollTo(10);
  m_view->OnCommand(ID_VIEW_FITCOLUMNS);
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 35) << "the long text is out of view";
}

TEST_F(Columns, AComputedWidthIsNotStored) {
  Open();
  for (const ColumnInfo& column : kColumns) EXPECT_EQ(StoredWidth(column.header), 0u);
}

TEST_F(Columns, AStoredWidthIsUsedAsItStandsAlsoBelowSixteen) {
  StoreWidth("Sev", 9);
  StoreWidth("Trace", 333);
  Open();
  EXPECT_EQ(m_list->ColumnWidth(Column::Sev), 9);
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 333);
}

TEST_F(Columns, AStoredWidthThatNoScreenHasIsNoWidth) {
  StoreWidth("Trace", 0xFFFFFFF0);
  Open();
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 80 * 7 + 16);
}

TEST_F(Columns, AFlagThatIsNotOneHides) {
  g_activeColumns[static_cast<std::size_t>(Column::Trace)] = 2;
  Open();
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 0);
}

TEST_F(Columns, TheOrderOfTheFirstRunReachesTheControlAsItStandsAndLosesNoColumn) {
  Open();
  EXPECT_EQ(m_list->given, (ListOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 14}));
  EXPECT_EQ(m_list->GetColumnOrder(),
            (ListOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 12}));
}

TEST_F(Columns, ASecondViewOfTheFirstRunHasTheDefaultOrder) {
  Open();
  const std::unique_ptr<CTraceView> second = MakeView();
  second->OnInitialUpdate();
  EXPECT_EQ(second->List().Header().GetColumnOrder(), ListOrderOf(kDefaultColumnOrder));
}

TEST_F(Columns, AHiddenColumnCannotBeDraggedOpen) {
  Open();
  EXPECT_TRUE(m_view->OnColumnResizing(Column::Stack, 50));
  EXPECT_TRUE(m_view->OnColumnResizing(Column::Stack, 1));
  EXPECT_FALSE(m_view->OnColumnResizing(Column::Stack, 0));
}

TEST_F(Columns, AShownColumnCannotBeDraggedBelowSixteenPixels) {
  Open();
  EXPECT_TRUE(m_view->OnColumnResizing(Column::Trace, 15));
  EXPECT_TRUE(m_view->OnColumnResizing(Column::Trace, 0));
  EXPECT_FALSE(m_view->OnColumnResizing(Column::Trace, 16));
  EXPECT_FALSE(m_view->OnColumnResizing(Column::Trace, 5000));
}

TEST_F(Columns, TheEndOfADragStoresTheWidthUnderTheHeadersNameAtOnce) {
  Open();
  m_view->OnColumnResized(Column::Trace, 200);
  EXPECT_EQ(StoredWidth("Trace"), 200u);
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 200);
}

TEST_F(Columns, TheControlGetsTheLowSixteenBitsOfAWidth) {
  Open();
  m_view->OnColumnResized(Column::Trace, 0x10000 + 77);
  EXPECT_EQ(StoredWidth("Trace"), 0x10000u + 77u);
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 77);
}

TEST_F(Columns, OtherOpenViewsDoNotFollowADragANewOneTakesTheStoredWidth) {
  const std::unique_ptr<CTraceView> second = MakeView();
  Open();
  second->OnInitialUpdate();
  m_view->OnColumnResized(Column::Trace, 200);
  EXPECT_EQ(second->List().Header().ColumnWidth(Column::Trace), 80 * 7 + 16);
  const std::unique_ptr<CTraceView> third = MakeView();
  third->OnInitialUpdate();
  EXPECT_EQ(third->List().Header().ColumnWidth(Column::Trace), 200);
}

TEST_F(Columns, AChangedOrderIsStoredWhenThePostedMessageComes) {
  Open();
  const ColumnOrder dragged = {1, 0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 12, 13};
  m_view->OnColumnsReordered();
  m_list->SetColumnOrder(ListOrderOf(dragged));  // final only after the notification
  m_list->calls.clear();
  m_host.RunPosted();
  EXPECT_EQ(ReadColumnOrder(), dragged);
  EXPECT_EQ(m_list->calls, (Strings{"redraw off", "redraw on"})) << "repainted";
}

TEST_F(Columns, ChangedOptionsHideAndShowColumnsWithRedrawingOff) {
  Open();
  g_activeColumns[static_cast<std::size_t>(Column::Sev)] = 0;
  g_activeColumns[static_cast<std::size_t>(Column::Time)] = 1;
  m_list->calls.clear();
  Options();
  EXPECT_EQ(Shown(*m_list), (Strings{"Time", "Application", "Component", "Category", "Trace"}));
  EXPECT_EQ(m_list->ColumnWidth(Column::Time), 18 * 7 + 16);
  EXPECT_EQ(m_list->calls, (Strings{"redraw off", "redraw on"}));
}

TEST_F(Columns, AColumnNarrowedHiddenAndShownComesBackAtItsOlderWidth) {
  Open();
  m_view->OnColumnResized(Column::Trace, 50);
  g_activeColumns[static_cast<std::size_t>(Column::Trace)] = 0;
  Options();
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 0);
  g_activeColumns[static_cast<std::size_t>(Column::Trace)] = 1;
  Options();
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 80 * 7 + 16);
  EXPECT_EQ(StoredWidth("Trace"), 50u);
}

TEST_F(Columns, AShownColumnKeepsTheWidthOfADragWhenOptionsChange) {
  Open();
  m_view->OnColumnResized(Column::Trace, 50);
  Options();
  EXPECT_EQ(m_list->ColumnWidth(Column::Trace), 50);
}

TEST_F(Columns, AHiddenColumnKeepsItsPlaceInTheOrder) {
  Open();
  const ListOrder order = m_list->GetColumnOrder();
  g_activeColumns[static_cast<std::size_t>(Column::Sev)] = 0;
  Options();
  EXPECT_EQ(m_list->GetColumnOrder(), order);
}

TEST_F(Columns, TimesFollowTheChoiceOfUtc) {
  const ZoneGuard zone("EST5");
  Add({});
  Open();
  EXPECT_EQ(m_view->RowListText(0, Column::Time), "2026-11-21 09:41:07.123");
  g_useUtc = false;
  EXPECT_EQ(m_view->RowListText(0, Column::Time), "2026-11-21 04:41:07.123");
}

}  // namespace

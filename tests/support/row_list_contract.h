// What every row list does, whoever made it: run by the fake and by the control on the screen.
//
// To run it, write a rig and instantiate the suite:
//
//   struct MyRig {
//     explicit MyRig(RowListOwner& owner);   // makes an empty list, at least 300 pixels wide
//     RowList& List();
//     void ShowRows(int rows);               // sizes the list so that CountPerPage() is `rows`
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, RowListContract, MyRig);
//
// The rig's constructor makes what the list needs (an application object); the owner outlives it.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "listview/rows/row_list.h"

// Writes down what the list tells: "5: 0>3".
class RecordingRowListOwner final : public RowListOwner {
 public:
  std::string RowListText(int row, Column column) override {
    return std::to_string(row) + "," + std::to_string(static_cast<int>(column));
  }
  int RowListIcon(int) override { return -1; }
  void OnRowStateChanged(int row, unsigned oldState, unsigned newState) override {
    told.push_back(std::to_string(row) + ": " + std::to_string(oldState) + ">" +
                   std::to_string(newState));
    if (list && list->GetItemState(row) != newState) told.push_back("told too early");
  }
  void OnRowClicked(int row) override { clicked.push_back(row); }
  void OnRowDoubleClicked(int row) override { doubleClicked.push_back(row); }
  void OnRowListContextMenu(int, int) override { ++contextMenus; }
  bool OnColumnResizing(Column, int) override {
    ++resizings;
    return refuseResizing;
  }
  void OnColumnResized(Column, int) override { ++resized; }
  void OnColumnsReordered() override { ++reordered; }

  // What was told since the last call.
  std::vector<std::string> Told() { return std::exchange(told, {}); }

  RowList* list = nullptr;
  std::vector<std::string> told;
  std::vector<int> clicked, doubleClicked;
  int contextMenus = 0, resizings = 0, resized = 0, reordered = 0;
  bool refuseResizing = false;
};

template <class Rig>
class RowListContract : public testing::Test {
 protected:
  using Strings = std::vector<std::string>;
  static constexpr unsigned kBoth = kRowFocused | kRowSelected;

  RowListContract() : m_rig(m_owner) { m_owner.list = &List(); }
  ~RowListContract() override { m_owner.list = nullptr; }

  RowList& List() { return m_rig.List(); }
  ListHeader& Header() { return List().Header(); }
  void Fill(int rows, int page) {
    List().SetItemCount(rows);
    m_rig.ShowRows(page);
    m_owner.Told();
  }
  // The states of the first rows, a digit each.
  std::string States(int rows) {
    std::string states;
    for (int row = 0; row < rows; ++row) states += std::to_string(List().GetItemState(row));
    return states;
  }
  void InsertColumns(int widthPx) {
    for (const ColumnInfo& column : kColumns) Header().InsertColumn(column, widthPx);
  }

  RecordingRowListOwner m_owner;
  Rig m_rig;
};
TYPED_TEST_SUITE_P(RowListContract);

TYPED_TEST_P(RowListContract, ANewListHasNoRowsNoFocusAndNoSelection) {
  EXPECT_EQ(this->List().ItemCount(), 0);
  EXPECT_EQ(this->List().TopIndex(), 0);
  EXPECT_EQ(this->List().SelectedCount(), 0);
  EXPECT_EQ(this->List().NextItem(-1, this->kBoth), -1);
}

TYPED_TEST_P(RowListContract, RowsComeWithoutFocusSelectionOrAWord) {
  this->List().SetItemCount(5);
  EXPECT_EQ(this->List().ItemCount(), 5);
  EXPECT_EQ(this->States(5), "00000");
  EXPECT_EQ(this->m_owner.Told().size(), 0u);
}

TYPED_TEST_P(RowListContract, FocusAndSelectionAreApart) {
  this->Fill(5, 3);
  this->List().SetItemState(1, kRowSelected, kRowSelected);
  this->List().SetItemState(2, kRowSelected, kRowSelected);
  this->List().SetItemState(4, kRowFocused, kRowFocused);
  EXPECT_EQ(this->States(5), "02201");
  EXPECT_EQ(this->List().SelectedCount(), 2);
  this->List().SetItemState(4, 0, kRowFocused);
  EXPECT_EQ(this->States(5), "02200");
}

TYPED_TEST_P(RowListContract, AChangeIsToldBeforeTheCallReturnsAndOnlyOnce) {
  this->Fill(5, 3);
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  EXPECT_EQ(this->m_owner.Told(), (std::vector<std::string>{"3: 0>3"}));
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  EXPECT_EQ(this->m_owner.Told().size(), 0u) << "nothing changed";
  this->List().SetItemState(3, 0, kRowSelected);
  EXPECT_EQ(this->m_owner.Told(), (std::vector<std::string>{"3: 3>1"}));
}

TYPED_TEST_P(RowListContract, TheRowThatLosesTheFocusIsToldBeforeTheOneThatGainsIt) {
  this->Fill(5, 3);
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  this->m_owner.Told();
  this->List().SetItemState(1, kRowFocused, kRowFocused);
  EXPECT_EQ(this->m_owner.Told(), (std::vector<std::string>{"3: 3>2", "1: 0>1"}));
  EXPECT_EQ(this->States(5), "01020") << "the selection stays where it was";
}

TYPED_TEST_P(RowListContract, ClearingAllRowsTellsTheLossOfTheFocus) {
  this->Fill(6, 3);
  this->List().SetItemState(1, kRowSelected, kRowSelected);
  this->List().SetItemState(4, this->kBoth, this->kBoth);
  this->m_owner.Told();
  this->List().SetItemState(-1, 0, this->kBoth);
  EXPECT_EQ(this->m_owner.Told(), (std::vector<std::string>{"4: 3>0"}));
  EXPECT_EQ(this->States(6), "000000");
  EXPECT_EQ(this->List().SelectedCount(), 0);
  EXPECT_EQ(this->List().NextItem(-1, this->kBoth), -1);
}

TYPED_TEST_P(RowListContract, AllRowsCanBeSelectedButNotFocused) {
  this->Fill(6, 3);
  this->List().SetItemState(2, kRowFocused, kRowFocused);
  this->List().SetItemState(-1, this->kBoth, this->kBoth);
  EXPECT_EQ(this->States(6), "223222");
  EXPECT_EQ(this->List().SelectedCount(), 6);
}

TYPED_TEST_P(RowListContract, AChangeOfTheItemCountTellsNothingAndRowsBehindItLoseTheirState) {
  this->Fill(6, 3);
  this->List().SetItemState(1, kRowSelected, kRowSelected);
  this->List().SetItemState(4, this->kBoth, this->kBoth);
  this->m_owner.Told();
  this->List().SetItemCount(3);
  this->List().SetItemCount(6);
  EXPECT_EQ(this->States(6), "020000");
  EXPECT_EQ(this->List().SelectedCount(), 1);
  this->List().SetItemCount(0);
  this->List().SetItemCount(6);
  EXPECT_EQ(this->States(6), "000000");
  EXPECT_EQ(this->m_owner.Told().size(), 0u);
}

TYPED_TEST_P(RowListContract, DeletedRowsTakeTheirStateAlongAndThoseBehindMoveUpWithTheirs) {
  this->Fill(8, 4);
  this->List().SetItemState(0, kRowSelected, kRowSelected);
  this->List().SetItemState(3, kRowSelected, kRowSelected);
  this->List().SetItemState(5, this->kBoth, this->kBoth);
  this->m_owner.Told();
  this->List().DeleteRows(2, 2);
  EXPECT_EQ(this->List().ItemCount(), 6);
  EXPECT_EQ(this->States(6), "200300");
  this->List().DeleteRows(0, 1);
  EXPECT_EQ(this->States(5), "00300");
  EXPECT_EQ(this->List().NextItem(-1, kRowFocused), 2);
  this->List().DeleteRows(2, 1);
  EXPECT_EQ(this->States(4), "0000");
  EXPECT_EQ(this->List().NextItem(-1, kRowFocused), -1) << "the focus went with its row";
  EXPECT_EQ(this->List().SelectedCount(), 0);
  EXPECT_EQ(this->m_owner.Told().size(), 0u) << "a deletion tells nothing";
}

TYPED_TEST_P(RowListContract, DeletingMoreRowsThanThereAreDeletesTheRest) {
  this->Fill(5, 3);
  this->List().DeleteRows(3, 9);
  EXPECT_EQ(this->List().ItemCount(), 3);
  this->List().DeleteRows(3, 1);
  this->List().DeleteRows(-1, 1);
  this->List().DeleteRows(0, 0);
  EXPECT_EQ(this->List().ItemCount(), 3);
}

TYPED_TEST_P(RowListContract, NextItemFindsTheFirstRowBehindWithAnyOfTheStates) {
  this->Fill(8, 4);
  this->List().SetItemState(2, kRowSelected, kRowSelected);
  this->List().SetItemState(3, kRowSelected, kRowSelected);
  this->List().SetItemState(6, kRowFocused, kRowFocused);
  EXPECT_EQ(this->List().NextItem(-1, kRowSelected), 2);
  EXPECT_EQ(this->List().NextItem(2, kRowSelected), 3);
  EXPECT_EQ(this->List().NextItem(3, kRowSelected), -1);
  EXPECT_EQ(this->List().NextItem(3, this->kBoth), 6);
  EXPECT_EQ(this->List().NextItem(-1, kRowFocused), 6);
  EXPECT_EQ(this->List().NextItem(6, kRowFocused), -1);
}

TYPED_TEST_P(RowListContract, ARowThatDoesNotExistIsIgnored) {
  this->Fill(3, 3);
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  this->List().SetItemState(-2, this->kBoth, this->kBoth);
  this->List().EnsureVisible(3);
  this->List().EnsureVisible(-1);
  EXPECT_EQ(this->States(3), "000");
  EXPECT_EQ(this->List().GetItemState(3), 0u);
  EXPECT_EQ(this->List().GetItemState(-1), 0u);
  EXPECT_EQ(this->List().TopIndex(), 0);
  EXPECT_EQ(this->m_owner.Told().size(), 0u);
}

TYPED_TEST_P(RowListContract, EnsureVisibleScrollsAsLittleAsNeeded) {
  this->Fill(100, 10);
  ASSERT_EQ(this->List().CountPerPage(), 10);
  this->List().EnsureVisible(9);
  EXPECT_EQ(this->List().TopIndex(), 0) << "it was visible";
  this->List().EnsureVisible(10);
  EXPECT_EQ(this->List().TopIndex(), 1) << "now the last one";
  this->List().EnsureVisible(99);
  EXPECT_EQ(this->List().TopIndex(), 90);
  this->List().EnsureVisible(91);
  EXPECT_EQ(this->List().TopIndex(), 90);
  this->List().EnsureVisible(40);
  EXPECT_EQ(this->List().TopIndex(), 40) << "now the first one";
}

TYPED_TEST_P(RowListContract, NewRowsDoNotScroll) {
  this->Fill(100, 10);
  this->List().EnsureVisible(99);
  this->List().SetItemCount(200);
  EXPECT_EQ(this->List().TopIndex(), 90);
}

TYPED_TEST_P(RowListContract, WithFewerRowsTheTopStaysAmongThem) {
  this->Fill(100, 10);
  this->List().EnsureVisible(99);
  this->List().SetItemCount(50);
  EXPECT_EQ(this->List().TopIndex(), 40);
  this->List().SetItemCount(0);
  EXPECT_EQ(this->List().TopIndex(), 0);
}

TYPED_TEST_P(RowListContract, DeletingRowsAtTheFrontKeepsWhatIsSeenInPlace) {
  this->Fill(100, 10);
  this->List().EnsureVisible(59);
  ASSERT_EQ(this->List().TopIndex(), 50);
  this->List().DeleteRows(0, 20);
  EXPECT_EQ(this->List().TopIndex(), 30);
  this->List().DeleteRows(0, 35);
  EXPECT_EQ(this->List().TopIndex(), 0) << "what was seen is gone";
}

TYPED_TEST_P(RowListContract, DeletingRowsBehindWhatIsSeenKeepsIt) {
  this->Fill(100, 10);
  this->List().EnsureVisible(59);
  this->List().DeleteRows(70, 20);
  EXPECT_EQ(this->List().TopIndex(), 50);
}

TYPED_TEST_P(RowListContract, StatesChangeAlsoWhileRedrawingIsOff) {
  this->Fill(5, 3);
  this->List().SetRedraw(false);
  this->List().SetItemState(2, this->kBoth, this->kBoth);
  EXPECT_EQ(this->m_owner.Told(), (std::vector<std::string>{"2: 0>3"}));
  this->List().EnsureVisible(4);
  this->List().SetRedraw(true);
  EXPECT_EQ(this->List().TopIndex(), 2);
  EXPECT_EQ(this->States(5), "00300");
}

TYPED_TEST_P(RowListContract, ColumnsKeepTheWidthThatCodeGivesThemAlsoBelowTheMinimumOfADrag) {
  this->InsertColumns(50);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Time), 50);
  this->Header().SetColumnWidth(Column::Time, 120);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Time), 120);
  this->Header().SetColumnWidth(Column::Time, 5);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Time), 5);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Sev), 50) << "the others stay";
  EXPECT_EQ(this->m_owner.resizings + this->m_owner.resized, 0) << "only a drag asks and tells";
}

TYPED_TEST_P(RowListContract, AHiddenColumnHasWidthZeroAndComesBackInItsPlace) {
  this->InsertColumns(50);
  const ColumnOrder order = {14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
  this->Header().SetColumnOrder(order);
  this->Header().SetColumnWidth(Column::Pid, 0);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Pid), 0);
  EXPECT_EQ(this->Header().GetColumnOrder(), order);
  this->Header().SetColumnWidth(Column::Pid, 44);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Pid), 44);
  EXPECT_EQ(this->Header().GetColumnOrder(), order);
}

TYPED_TEST_P(RowListContract, AColumnInsertedWithWidthZeroIsHidden) {
  for (const ColumnInfo& column : kColumns)
    this->Header().InsertColumn(column, column.column == Column::Tid ? 0 : 30);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Tid), 0);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Trace), 30);
  this->Header().SetColumnWidth(Column::Tid, 61);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Tid), 61);
}

TYPED_TEST_P(RowListContract, AnOrderWithRepeatsLosesNoColumn) {
  this->InsertColumns(50);
  this->Header().SetColumnOrder({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 14});
  EXPECT_EQ(this->Header().GetColumnOrder(),
            (ColumnOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 12}));
  EXPECT_EQ(this->m_owner.reordered, 0) << "only a drag tells";
}

TYPED_TEST_P(RowListContract, TextsHaveAWidth) {
  EXPECT_GT(this->Header().AverageCharWidth(), 0);
  EXPECT_EQ(this->Header().StringWidth(""), 0);
  EXPECT_GT(this->Header().StringWidth("Application"), this->Header().StringWidth("App"));
}

REGISTER_TYPED_TEST_SUITE_P(
    RowListContract, ANewListHasNoRowsNoFocusAndNoSelection, RowsComeWithoutFocusSelectionOrAWord,
    FocusAndSelectionAreApart, AChangeIsToldBeforeTheCallReturnsAndOnlyOnce,
    TheRowThatLosesTheFocusIsToldBeforeTheOneThatGainsIt, ClearingAllRowsTellsTheLossOfTheFocus,
    AllRowsCanBeSelectedButNotFocused,
    AChangeOfTheItemCountTellsNothingAndRowsBehindItLoseTheirState,
    DeletedRowsTakeTheirStateAlongAndThoseBehindMoveUpWithTheirs,
    DeletingMoreRowsThanThereAreDeletesTheRest, NextItemFindsTheFirstRowBehindWithAnyOfTheStates,
    ARowThatDoesNotExistIsIgnored, EnsureVisibleScrollsAsLittleAsNeeded, NewRowsDoNotScroll,
    WithFewerRowsTheTopStaysAmongThem, DeletingRowsAtTheFrontKeepsWhatIsSeenInPlace,
    DeletingRowsBehindWhatIsSeenKeepsIt, StatesChangeAlsoWhileRedrawingIsOff,
    ColumnsKeepTheWidthThatCodeGivesThemAlsoBelowTheMinimumOfADrag,
    AHiddenColumnHasWidthZeroAndComesBackInItsPlace, AColumnInsertedWithWidthZeroIsHidden,
    AnOrderWithRepeatsLosesNoColumn, TextsHaveAWidth);

// The part of the row list contract about columns, their widths and their order.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/row_list_fixture.h"

template <class Harness>
class RowColumnContract : public RowListFixture<Harness> {};
TYPED_TEST_SUITE_P(RowColumnContract);

TYPED_TEST_P(RowColumnContract, ColumnsKeepTheWidthThatCodeGivesThemAlsoBelowTheMinimumOfADrag) {
  this->InsertColumns(50);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Time), 50);
  this->Header().SetColumnWidth(Column::Time, 120);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Time), 120);
  this->Header().SetColumnWidth(Column::Time, 5);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Time), 5);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Sev), 50) << "the others stay";
  EXPECT_EQ(this->m_owner.resizings + this->m_owner.resized, 0) << "only a drag asks and tells";
}

TYPED_TEST_P(RowColumnContract, AHiddenColumnHasWidthZeroAndComesBackInItsPlace) {
  this->InsertColumns(50);
  const ListOrder order = {14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
  this->Header().SetColumnOrder(order);
  this->Header().SetColumnWidth(Column::Pid, 0);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Pid), 0);
  EXPECT_EQ(this->Header().GetColumnOrder(), order);
  this->Header().SetColumnWidth(Column::Pid, 44);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Pid), 44);
  EXPECT_EQ(this->Header().GetColumnOrder(), order);
}

TYPED_TEST_P(RowColumnContract, AColumnInsertedWithWidthZeroIsHidden) {
  for (const ColumnInfo& column : kColumns)
    this->Header().InsertColumn(ListColumnOf(column), column.column == Column::Tid ? 0 : 30);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Tid), 0);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Trace), 30);
  this->Header().SetColumnWidth(Column::Tid, 61);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Tid), 61);
}

TYPED_TEST_P(RowColumnContract, AColumnThatIsInsertedLaterStandsLastAndKeepsTheOthersAsTheyAre) {
  this->InsertColumns(50);
  const ListOrder order = {14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
  this->Header().SetColumnOrder(order);
  this->List().SetItemCount(7);
  this->Header().SetColumnWidth(Column::Pid, 0);
  this->Header().InsertColumn({"Later", ColumnAlign::Right}, 70);
  ListOrder longer = order;
  longer.push_back(15);
  EXPECT_EQ(this->Header().GetColumnOrder(), longer);
  EXPECT_EQ(this->Header().ColumnWidth(15), 70);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Pid), 0);
  EXPECT_EQ(this->Header().ColumnWidth(Column::Time), 50);
  EXPECT_EQ(this->List().ItemCount(), 7);
  std::swap(longer[15], longer[0]);
  this->Header().SetColumnOrder(longer);
  EXPECT_EQ(this->Header().GetColumnOrder(), longer);
  EXPECT_EQ(this->m_owner.resizings + this->m_owner.resized + this->m_owner.reordered, 0);
}

TYPED_TEST_P(RowColumnContract, AnOrderWithRepeatsLosesNoColumn) {
  this->InsertColumns(50);
  this->Header().SetColumnOrder({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 14});
  EXPECT_EQ(this->Header().GetColumnOrder(),
            (ListOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 12}));
  EXPECT_EQ(this->m_owner.reordered, 0) << "only a drag tells";
}

TYPED_TEST_P(RowColumnContract, TextsHaveAWidth) {
  EXPECT_GT(this->Header().AverageCharWidth(), 0);
  EXPECT_EQ(this->Header().StringWidth(""), 0);
  EXPECT_GT(this->Header().StringWidth("Application"), this->Header().StringWidth("App"));
}

TYPED_TEST_P(RowColumnContract, AColumnFitsItsNameAndWhatIsOnView) {
  this->InsertColumns(50);
  this->Fill(100, 10);
  const int name = this->Header().FitWidth(Column::Application);
  EXPECT_GE(name, this->Header().StringWidth("Application"));
  const std::string text(100, 'm');
  const int whole = this->Header().StringWidth(text);
  this->m_owner.longTexts[50] = text;
  EXPECT_EQ(this->Header().FitWidth(Column::Application), name) << "that row is not on view";
  this->m_owner.longTexts[5] = text;
  EXPECT_GE(this->Header().FitWidth(Column::Application), whole);
  EXPECT_LT(this->Header().FitWidth(Column::Application), whole + name);
}

TYPED_TEST_P(RowColumnContract, ItsMenuIsAskedForAtAColumnOrByTheKeyboardAtNone) {
  this->InsertColumns(50);
  this->m_harness.RightClickHeader(Column::Time);
  this->Header().AskForMenu();
  this->Header().SetColumnWidth(Column::Sev, 0);
  this->m_harness.RightClickHeader(Column::Count);
  EXPECT_EQ(this->m_owner.headerMenus, (std::vector<int>{static_cast<int>(Column::Time), -1,
                                                         static_cast<int>(Column::Count)}));
  EXPECT_EQ(this->m_owner.contextMenus, 0) << "it is not that of the rows";
}

REGISTER_TYPED_TEST_SUITE_P(RowColumnContract, ItsMenuIsAskedForAtAColumnOrByTheKeyboardAtNone,
                            ColumnsKeepTheWidthThatCodeGivesThemAlsoBelowTheMinimumOfADrag,
                            AHiddenColumnHasWidthZeroAndComesBackInItsPlace,
                            AColumnInsertedWithWidthZeroIsHidden,
                            AColumnThatIsInsertedLaterStandsLastAndKeepsTheOthersAsTheyAre,
                            AnOrderWithRepeatsLosesNoColumn, TextsHaveAWidth,
                            AColumnFitsItsNameAndWhatIsOnView);

// The contract of the report list: run for the fake and for the control on the screen.
//
// To run it, write an adapter ("harness") and instantiate the suite:
//
//   struct MyHarness {
//     explicit MyHarness(ReportListOwner& owner);      // 300 pixels of room, with the focus
//     ReportList& List();
//     void SetPage(int rows);                      // sizes it so that so many rows are seen
//     void ScrollTo(int row);                      // to the top, if there are rows enough below
//     int Top() const;                             // the first row that is seen
//     void SetRoom(int roomPx);                    // without the vertical scroll bar
//     void DragHeading(int column, int widthPx);
//     std::string Sort() const;                    // "Name down": the heading that shows it
//     void Click(int row, bool control = false, int column = 0);  // on a row that is seen
//     bool LooksSelected(int row, int column) const;
//     bool LooksRight(int row, int column) const;    // the text stands at the cell's right
//     bool LooksWhole(int row, int column) const;    // the cell's text and the heading, not cut
//     void DoubleClick(int row);                   // -1: below the rows
//     void ClickHeading(int column);
//     void PressHeadingKey(int column);
//     void PressSelectAll();
//     void Type(char letter);
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, ReportListContract, MyHarness);
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "controls/report/report_list.h"
#include "support/report_list_contract_fixture.h"

TYPED_TEST_SUITE_P(ReportListContract);

TYPED_TEST_P(ReportListContract, BeginsWithoutASelection) {
  EXPECT_EQ(this->List().ItemCount(), 4);
  EXPECT_FALSE(this->List().HasSelection());
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ReportListContract, ClicksSelectOneRowOrSeveralAndAreReported) {
  this->m_harness.Click(1);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{1}));
  EXPECT_GT(this->m_owner.selections, 0);
  EXPECT_EQ(this->m_owner.seen, 1u);
  this->m_harness.Click(3, true);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{1, 3}));
  EXPECT_EQ(this->m_owner.seen, 2u);
  this->m_harness.Click(1, true);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{3}));
  this->m_harness.Click(0);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0}));
}

TYPED_TEST_P(ReportListContract, AClickInAnyColumnSelectsTheWholeRow) {
  for (const int column : {1, 0}) {
    this->m_harness.Click(0);
    this->m_harness.Click(2, false, column);
    EXPECT_EQ(this->List().SelectedRows(), (std::vector{2})) << column;
    for (const int cell : {0, 1}) {
      EXPECT_TRUE(this->m_harness.LooksSelected(2, cell)) << column << cell;
      EXPECT_FALSE(this->m_harness.LooksSelected(0, cell)) << column << cell;
    }
  }
  this->m_harness.Click(2, true, 1);
  EXPECT_FALSE(this->List().HasSelection());
}

TYPED_TEST_P(ReportListContract, CtrlASelectsAllRows) {
  this->m_harness.Click(1);
  this->m_harness.PressSelectAll();
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0, 1, 2, 3}));
  EXPECT_EQ(this->m_owner.seen, 4u);
}

TYPED_TEST_P(ReportListContract, NewRowsAreNotSelectedAndThatIsReported) {
  this->m_harness.PressSelectAll();
  this->m_owner.selections = 0;
  this->List().SetItemCount(3);
  EXPECT_FALSE(this->List().HasSelection());
  EXPECT_GT(this->m_owner.selections, 0);
  EXPECT_EQ(this->m_owner.seen, 0u);
}

TYPED_TEST_P(ReportListContract, AClickOnAHeadingAndItsKeyAreReported) {
  this->m_harness.ClickHeading(1);
  EXPECT_EQ(this->m_owner.Reported(), "heading 1");
  this->m_harness.PressHeadingKey(0);
  EXPECT_EQ(this->m_owner.Reported(), "heading 0");
  this->m_harness.PressHeadingKey(2);
  EXPECT_EQ(this->m_owner.Reported(), "") << "there is no such column";
}

TYPED_TEST_P(ReportListContract, ADoubleClickOnARowIsReportedAndBesideTheRowsNot) {
  this->m_harness.DoubleClick(2);
  EXPECT_EQ(this->m_owner.Reported(), "double");
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{2}));
  this->m_harness.DoubleClick(-1);
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ReportListContract, TypingALetterSelectsTheNextRowThatBeginsWithIt) {
  this->m_harness.Click(0);
  this->m_harness.Type('D');
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{1}));
}

TYPED_TEST_P(ReportListContract, TheColumnsFollowTheRoomUntilAHeadingIsDragged) {
  this->m_harness.SetRoom(401);
  EXPECT_EQ(this->List().ColumnWidth(0), 200);
  EXPECT_EQ(this->List().ColumnWidth(1), 201);
  this->m_harness.SetRoom(300);
  EXPECT_EQ(this->List().ColumnWidth(1), 150);
  this->m_harness.DragHeading(0, 120);
  EXPECT_EQ(this->List().ColumnWidth(0), 120);
  this->m_harness.SetRoom(401);
  EXPECT_EQ(this->List().ColumnWidth(0), 120);
  EXPECT_EQ(this->List().ColumnWidth(1), 150);
}

TYPED_TEST_P(ReportListContract, DraggingAHeadingsEdgeIsNoClickOnIt) {
  this->m_harness.DragHeading(0, 120);
  EXPECT_EQ(this->List().ColumnWidth(0), 120);
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ReportListContract, OneHeadingShowsByWhichColumnTheRowsAreSorted) {
  this->List().ShowSort(1, true);
  EXPECT_EQ(this->m_harness.Sort(), "State down");
  this->List().ShowSort(0, false);
  EXPECT_EQ(this->m_harness.Sort(), "Name up");
}

TYPED_TEST_P(ReportListContract, AColumnThatDoesNotExistIsIgnored) {
  this->List().ShowSort(1, true);
  for (const int column : {-1, 2}) {
    this->List().ShowSort(column, false);
    EXPECT_EQ(this->m_harness.Sort(), "State down") << column;
    EXPECT_EQ(this->List().ColumnWidth(column), 0) << column;
  }
}

TYPED_TEST_P(ReportListContract, NumbersStandAtTheRight) {
  this->m_harness.SetRoom(600);
  EXPECT_FALSE(this->m_harness.LooksRight(0, 0));
  EXPECT_TRUE(this->m_harness.LooksRight(0, 1));
}

TYPED_TEST_P(ReportListContract, AColumnOfTheWidthForItsTextsShowsThemWhole) {
  this->List().ShowSort(0, true);
  const auto widthFor = [this](const char* heading, const char* cell) {
    return std::max(this->List().WidthFor(heading), this->List().WidthFor(cell));
  };
  this->m_owner.widths = {widthFor("Name", "disk.0"), widthFor("State", "disk.1")};
  this->m_harness.SetRoom(301);
  EXPECT_TRUE(this->m_harness.LooksWhole(1, 0));
  EXPECT_TRUE(this->m_harness.LooksWhole(1, 1));
  for (int& width : this->m_owner.widths) width /= 2;
  this->m_harness.SetRoom(300);
  EXPECT_FALSE(this->m_harness.LooksWhole(1, 0));
}

TYPED_TEST_P(ReportListContract, NewRowsBeginAtTheTop) {
  this->m_harness.SetPage(2);
  this->m_harness.ScrollTo(1);
  EXPECT_EQ(this->m_harness.Top(), 1);
  this->List().SetItemCount(4);
  EXPECT_EQ(this->m_harness.Top(), 0);
}

REGISTER_TYPED_TEST_SUITE_P(
    ReportListContract, BeginsWithoutASelection, ClicksSelectOneRowOrSeveralAndAreReported,
    AClickInAnyColumnSelectsTheWholeRow, CtrlASelectsAllRows,
    NewRowsAreNotSelectedAndThatIsReported, AClickOnAHeadingAndItsKeyAreReported,
    ADoubleClickOnARowIsReportedAndBesideTheRowsNot, TypingALetterSelectsTheNextRowThatBeginsWithIt,
    TheColumnsFollowTheRoomUntilAHeadingIsDragged, DraggingAHeadingsEdgeIsNoClickOnIt,
    OneHeadingShowsByWhichColumnTheRowsAreSorted, AColumnThatDoesNotExistIsIgnored,
    NumbersStandAtTheRight, AColumnOfTheWidthForItsTextsShowsThemWhole, NewRowsBeginAtTheTop);

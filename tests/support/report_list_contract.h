// The contract of the report list: run for the fake and for the control on the screen.
//
// To run it, write an adapter ("rig") and instantiate the suite:
//
//   struct MyRig {
//     explicit MyRig(ReportListOwner& owner);      // 300 pixels of room, with the focus
//     ReportList& List();
//     void SetPage(int rows);                      // sizes it so that CountPerPage() is `rows`
//     void SetRoom(int roomPx);                    // without the vertical scroll bar
//     void DragHeading(int column, int widthPx);
//     void Click(int row, bool control = false);   // on a row that is seen
//     void DoubleClick(int row);                   // -1: below the rows
//     void ClickHeading(int column);
//     void PressHeadingKey(int column);
//     void PressSelectAll();
//     void Type(char letter);
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, ReportListContract, MyRig);
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "controls/report/report_list.h"

class RecordingReportOwner final : public ReportListOwner {
 public:
  std::string ReportText(int row, int column) override {
    return names.at(static_cast<std::size_t>(row)) + "." + std::to_string(column);
  }
  std::vector<ReportMark> ReportMarks(int, int) override { return {}; }
  std::vector<int> ReportWidths(int roomPx) override { return {roomPx / 2, roomPx - roomPx / 2}; }
  void OnReportSelection() override {
    ++selections;
    if (list) seen = list->SelectedRows().size();
  }
  void OnReportHeading(int column) override { Note("heading " + std::to_string(column)); }
  void OnReportDoubleClick() override { Note("double"); }
  std::string Told() { return std::exchange(m_told, ""); }

  std::vector<std::string> names = {"net", "disk", "mail", "data"};
  ReportList* list = nullptr;
  int selections = 0;
  std::size_t seen = 0;  // what was selected when it was told last

 private:
  void Note(const std::string& word) { m_told += (m_told.empty() ? "" : ", ") + word; }
  std::string m_told;
};

template <class Rig>
class ReportListContract : public testing::Test {
 protected:
  using Rows = std::vector<int>;
  ReportListContract() : m_rig(m_owner) {
    m_owner.list = &List();
    List().InsertColumn("Name");
    List().InsertColumn("State");
    List().SetItemCount(4);
    m_rig.SetPage(6);
    m_owner.selections = 0;
  }
  ~ReportListContract() override { m_owner.list = nullptr; }
  ReportList& List() { return m_rig.List(); }

  RecordingReportOwner m_owner;
  Rig m_rig;
};

TYPED_TEST_SUITE_P(ReportListContract);

TYPED_TEST_P(ReportListContract, BeginsWithoutASelection) {
  EXPECT_EQ(this->List().ItemCount(), 4);
  EXPECT_FALSE(this->List().HasSelection());
  EXPECT_EQ(this->m_owner.Told(), "");
}

TYPED_TEST_P(ReportListContract, ClicksSelectOneRowOrSeveralAndAreReported) {
  this->m_rig.Click(1);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{1}));
  EXPECT_GT(this->m_owner.selections, 0);
  EXPECT_EQ(this->m_owner.seen, 1u);
  this->m_rig.Click(3, true);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{1, 3}));
  EXPECT_EQ(this->m_owner.seen, 2u);
  this->m_rig.Click(1, true);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{3}));
  this->m_rig.Click(0);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0}));
}

TYPED_TEST_P(ReportListContract, CallsSelectAndAreReported) {
  this->List().SetSelected(2, true);
  this->List().SetSelected(0, true);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0, 2}));
  EXPECT_EQ(this->m_owner.seen, 2u);
  this->List().SetSelected(2, false);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0}));
  this->List().SetSelected(4, true);
  this->List().SetSelected(-1, true);
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0})) << "there are no such rows";
  this->List().SelectAll();
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0, 1, 2, 3}));
  EXPECT_EQ(this->m_owner.seen, 4u);
}

TYPED_TEST_P(ReportListContract, CtrlASelectsAllRows) {
  this->m_rig.Click(1);
  this->m_rig.PressSelectAll();
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{0, 1, 2, 3}));
  EXPECT_EQ(this->m_owner.seen, 4u);
}

TYPED_TEST_P(ReportListContract, NewRowsAreNotSelectedAndThatIsReported) {
  this->List().SelectAll();
  this->m_owner.selections = 0;
  this->List().SetItemCount(3);
  EXPECT_FALSE(this->List().HasSelection());
  EXPECT_GT(this->m_owner.selections, 0);
  EXPECT_EQ(this->m_owner.seen, 0u);
}

TYPED_TEST_P(ReportListContract, AClickOnAHeadingAndItsKeyAreReported) {
  this->m_rig.ClickHeading(1);
  EXPECT_EQ(this->m_owner.Told(), "heading 1");
  this->m_rig.PressHeadingKey(0);
  EXPECT_EQ(this->m_owner.Told(), "heading 0");
  this->m_rig.PressHeadingKey(2);
  EXPECT_EQ(this->m_owner.Told(), "") << "there is no such column";
}

TYPED_TEST_P(ReportListContract, ADoubleClickOnARowIsReportedAndBesideTheRowsNot) {
  this->m_rig.DoubleClick(2);
  EXPECT_EQ(this->m_owner.Told(), "double");
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{2}));
  this->m_rig.DoubleClick(-1);
  EXPECT_EQ(this->m_owner.Told(), "");
}

TYPED_TEST_P(ReportListContract, TypingALetterSelectsTheNextRowThatBeginsWithIt) {
  this->m_rig.Click(0);
  this->m_rig.Type('D');
  EXPECT_EQ(this->List().SelectedRows(), (std::vector{1}));
}

TYPED_TEST_P(ReportListContract, TheColumnsFollowTheRoomUntilAHeadingIsDragged) {
  this->m_rig.SetRoom(401);
  EXPECT_EQ(this->List().ColumnWidth(0), 200);
  EXPECT_EQ(this->List().ColumnWidth(1), 201);
  this->m_rig.SetRoom(300);
  EXPECT_EQ(this->List().ColumnWidth(1), 150);
  this->m_rig.DragHeading(0, 120);
  EXPECT_EQ(this->List().ColumnWidth(0), 120);
  this->m_rig.SetRoom(401);
  EXPECT_EQ(this->List().ColumnWidth(0), 120);
  EXPECT_EQ(this->List().ColumnWidth(1), 150);
}

TYPED_TEST_P(ReportListContract, ARowIsScrolledIntoViewAndNewRowsBeginAtTheTop) {
  this->m_rig.SetPage(2);
  EXPECT_EQ(this->List().CountPerPage(), 2);
  this->List().EnsureVisible(3);
  EXPECT_EQ(this->List().TopIndex(), 2);
  this->List().EnsureVisible(3);
  EXPECT_EQ(this->List().TopIndex(), 2);
  this->List().SetItemCount(4);
  EXPECT_EQ(this->List().TopIndex(), 0);
}

REGISTER_TYPED_TEST_SUITE_P(ReportListContract, BeginsWithoutASelection,
                            ClicksSelectOneRowOrSeveralAndAreReported, CallsSelectAndAreReported,
                            CtrlASelectsAllRows, NewRowsAreNotSelectedAndThatIsReported,
                            AClickOnAHeadingAndItsKeyAreReported,
                            ADoubleClickOnARowIsReportedAndBesideTheRowsNot,
                            TypingALetterSelectsTheNextRowThatBeginsWithIt,
                            TheColumnsFollowTheRoomUntilAHeadingIsDragged,
                            ARowIsScrolledIntoViewAndNewRowsBeginAtTheTop);

// The part of the tree control contract about the marks of items.
//
// A harness of this part has also:
//
//   RowSight See(TreeItem item);    // what is painted of the row of an item on view
//   void Paint();                   // all that is on the screen, as a window system asks for it
//   void SetLetters(int percent);   // of the usual size
#pragma once

#include <set>
#include <string>
#include <utility>

#include "support/row_sight.h"
#include "support/tree_control_fixture.h"

template <class Harness>
class TreeLookContract : public TreeControlFixture<Harness> {
 protected:
  static constexpr RowColours kGreen{0xffffff, 0x218221};

  static RowMark Mark(int number, const std::string& note = "") { return {kGreen, number, note}; }
  template <class Check>
  void InEachSize(Check check) {
    for (const int percent : {100, 200}) {
      this->m_harness.SetLetters(percent);
      for (const int page : {1, 4, 30}) {
        this->m_harness.ShowRows(page);
        SCOPED_TRACE(std::to_string(page) + " rows of " + std::to_string(percent) + " %");
        check(page);
      }
    }
  }
  // The data of the items that were asked for their marks since the last call.
  std::set<TreeItemData> Asked() { return std::exchange(this->m_owner.marksAsked, {}); }
};
TYPED_TEST_SUITE_P(TreeLookContract);

TYPED_TEST_P(TreeLookContract, AMarkIsSeenAtBothEndsOfItsRowAlsoOfASelectedOne) {
  this->AddSmall();
  this->InEachSize([this](int) {
    this->m_owner.marks.clear();
    this->Tree().EnsureVisible(this->m_2);
    EXPECT_FALSE(this->m_harness.See(this->m_2).box);
    EXPECT_EQ(this->m_harness.See(this->m_2).stripe, RowSight::kNone);
    this->m_owner.marks[2] = this->Mark(7, "look");
    for (const TreeItem selected : {TreeItem{0}, this->m_2}) {
      this->Tree().SelectItem(selected);
      EXPECT_TRUE(this->m_harness.See(this->m_2).box);
      EXPECT_EQ(this->m_harness.See(this->m_2).stripe, this->kGreen.ground);
    }
    this->Tree().SelectItem(0);
    this->m_owner.marks[2] = this->Mark(0, "look");
    EXPECT_TRUE(this->m_harness.See(this->m_2).box) << "a note alone";
    EXPECT_EQ(this->m_harness.See(this->m_2).stripe, RowSight::kNone);
  });
}

TYPED_TEST_P(TreeLookContract, MarksAreAskedForTheRowsOnViewOnly) {
  for (TreeItemData data = 1; data <= 100; ++data) this->Add(0, data);
  this->Add(this->Tree().Walk(0, TreeStep::FirstChild), 1000);
  this->InEachSize([this](int page) {
    TreeItem item = 0;
    for (int i = 0; i < 50; ++i)
      item = this->Tree().Walk(item, item ? TreeStep::NextSibling : TreeStep::FirstChild);
    this->Tree().EnsureVisible(this->Tree().Walk(0, TreeStep::FirstChild));
    this->Tree().EnsureVisible(item);
    this->m_harness.Paint();
    this->Asked();
    this->Tree().Repaint();
    this->m_harness.Paint();
    std::set<TreeItemData> asked = this->Asked();
    asked.erase(51);  // a part of it may be seen
    std::set<TreeItemData> onView;
    for (int row = 51 - page; row <= 50; ++row) onView.insert(static_cast<TreeItemData>(row));
    EXPECT_EQ(asked, onView) << "and not 1000, which is below a closed item";
  });
}

TYPED_TEST_P(TreeLookContract, AMarkGoesWithItsItem) {
  this->AddSmall();
  this->m_harness.ShowRows(10);
  this->Tree().Expand(this->m_1, true);
  this->m_owner.marks[12] = this->Mark(3);
  EXPECT_TRUE(this->m_harness.See(this->m_12).box);
  this->Tree().DeleteItem(this->m_11);
  EXPECT_TRUE(this->m_harness.See(this->m_12).box) << "it has moved up";
  EXPECT_FALSE(this->m_harness.See(this->m_2).box);
  this->Tree().Expand(this->m_1, false);
  EXPECT_FALSE(this->m_harness.See(this->m_1).box);
  EXPECT_FALSE(this->m_harness.See(this->m_2).box) << "it stands where the marked one was";
  this->Asked();
  this->Tree().DeleteItem(0);
  this->m_harness.Paint();
  EXPECT_TRUE(this->Asked().empty()) << "there is no item to ask for";
}

TYPED_TEST_P(TreeLookContract, NoMarkIsAskedWhileItDoesNotPaint) {
  this->AddSmall();
  this->m_harness.Paint();
  this->Asked();
  this->Tree().SetRedraw(false);
  this->Tree().Repaint();
  this->m_harness.Paint();
  EXPECT_TRUE(this->Asked().empty());
  this->Tree().SetRedraw(true);
  this->m_harness.Paint();
  EXPECT_EQ(this->Asked(), (std::set<TreeItemData>{1, 2}));
}

REGISTER_TYPED_TEST_SUITE_P(TreeLookContract, AMarkIsSeenAtBothEndsOfItsRowAlsoOfASelectedOne,
                            MarksAreAskedForTheRowsOnViewOnly, AMarkGoesWithItsItem,
                            NoMarkIsAskedWhileItDoesNotPaint);

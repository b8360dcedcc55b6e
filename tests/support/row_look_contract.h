// The part of the row list contract about what a row shows of its owner's colours and marks, and
// the key that takes them away.
//
// A harness of this part has also:
//
//   RowSight See(int row);          // what is painted of a visible row
//   void Paint();                   // all that is on the screen, as a window system asks for it
//   bool PressDelete(bool shift);   // in the list; false: the key is left to the window
//   void SetLetters(int percent);   // of the usual size
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/row_list_fixture.h"
#include "support/row_sight.h"

template <class Harness>
class RowLookContract : public RowListFixture<Harness> {
 protected:
  static constexpr RowColours kOrange{0x102030, 0xff8800};
  static constexpr RowColours kGreen{0xffffff, 0x218221};
  static constexpr std::uint32_t kNoStripe = RowSight::kNone;

  static RowMark Mark(int number, const std::string& note = "") { return {kGreen, number, note}; }
  // Letters of both sizes, in a list of one row, of a few, and of many.
  template <class Check>
  void InEachSize(Check check) {
    for (const int percent : {100, 200}) {
      this->m_harness.SetLetters(percent);
      for (const int page : {1, 4, 30}) {
        this->m_harness.ShowRows(page);
        SCOPED_TRACE(std::to_string(page) + " rows of " + std::to_string(percent) + " %");
        ASSERT_EQ(this->List().CountPerPage(), page);
        check(page);
      }
    }
  }
  std::set<int> Asked(std::set<int>& rows) { return std::exchange(rows, {}); }
};
TYPED_TEST_SUITE_P(RowLookContract);

TYPED_TEST_P(RowLookContract, ColoursAndMarksAreAskedForTheRowsOnViewOnlyAndWhileItPaints) {
  this->Fill(200, 4);
  this->InEachSize([this](int page) {
    this->List().EnsureVisible(0);
    this->List().EnsureVisible(100);
    this->m_harness.Paint();
    this->Asked(this->m_owner.coloursAsked);
    this->Asked(this->m_owner.marksAsked);
    this->List().Repaint();
    this->m_harness.Paint();
    const int top = this->List().TopIndex();
    std::set<int> onView;
    for (int row = top; row < top + page; ++row) onView.insert(row);
    for (std::set<int> asked :
         {this->Asked(this->m_owner.coloursAsked), this->Asked(this->m_owner.marksAsked)}) {
      asked.erase(top + page);  // a part of one more row may be seen
      EXPECT_EQ(asked, onView);
    }
    EXPECT_EQ(this->m_owner.painting, 0);
  });
  EXPECT_GE(this->m_owner.paints, 6);
  EXPECT_EQ(this->m_owner.Reported(), std::vector<std::string>()) << "asked outside a paint";
}

TYPED_TEST_P(RowLookContract, ColoursOfARowStandInPlaceOfItsTintButNotOfItsSelection) {
  this->Fill(40, 4);
  this->InEachSize([this](int) {
    this->List().SetItemState(-1, 0, this->kBoth);
    this->m_owner.colours.clear();
    this->m_owner.tints.clear();
    const int row = this->List().TopIndex();
    const std::uint32_t plain = this->m_harness.See(row).ground;
    EXPECT_NE(plain, this->kOrange.ground);
    this->m_owner.tints[row] = RowTint::Error;
    EXPECT_NE(this->m_harness.See(row).ground, plain);
    this->m_owner.colours[row] = this->kOrange;
    EXPECT_EQ(this->m_harness.See(row).ground, this->kOrange.ground);
    this->List().SetItemState(row, kRowSelected, kRowSelected);
    this->Asked(this->m_owner.coloursAsked);
    const std::uint32_t selected = this->m_harness.See(row).ground;
    EXPECT_NE(selected, this->kOrange.ground);
    EXPECT_NE(selected, plain);
    EXPECT_EQ(this->Asked(this->m_owner.coloursAsked).count(row), 0u) << "for nothing";
  });
}

TYPED_TEST_P(RowLookContract, AMarkIsSeenAtBothEndsOfItsRowAlsoOfASelectedOne) {
  this->Fill(40, 4);
  this->InEachSize([this](int) {
    const int row = this->List().TopIndex();
    this->m_owner.marks.clear();
    EXPECT_FALSE(this->m_harness.See(row).box);
    EXPECT_EQ(this->m_harness.See(row).stripe, this->kNoStripe);
    this->m_owner.marks[row] = this->Mark(4, "look");
    for (const unsigned state : {0U, 0U | kRowSelected}) {
      this->List().SetItemState(row, state, kRowSelected);
      EXPECT_TRUE(this->m_harness.See(row).box) << state;
      EXPECT_EQ(this->m_harness.See(row).stripe, this->kGreen.ground) << state;
    }
    this->List().SetItemState(row, 0, kRowSelected);
    this->m_owner.marks[row] = this->Mark(0, "look");
    EXPECT_TRUE(this->m_harness.See(row).box) << "a note alone";
    EXPECT_EQ(this->m_harness.See(row).stripe, this->kNoStripe);
  });
}

TYPED_TEST_P(RowLookContract, AMarkIsThatOfTheRowNumberAtTheTime) {
  this->Fill(40, 4);
  this->m_owner.marks[2] = this->Mark(4);
  EXPECT_TRUE(this->m_harness.See(2).box);
  this->m_owner.marks = {{1, this->Mark(4)}};
  this->List().DeleteRows(0, 1);
  EXPECT_TRUE(this->m_harness.See(1).box) << "the owner has counted anew";
  EXPECT_FALSE(this->m_harness.See(2).box);
  this->m_owner.marks.clear();
  this->List().Repaint();
  EXPECT_FALSE(this->m_harness.See(1).box);
}

TYPED_TEST_P(RowLookContract, NothingIsAskedWhileNobodySeesIt) {
  this->Fill(40, 4);
  this->m_harness.Paint();
  const int before = this->m_owner.paints;
  this->List().SetRedraw(false);
  this->List().Repaint();
  this->m_harness.Paint();
  EXPECT_EQ(this->m_owner.paints, before);
  this->List().SetRedraw(true);
  this->m_harness.Paint();
  EXPECT_GT(this->m_owner.paints, before) << "switched on it paints all";
  const int shown = this->m_owner.paints;
  this->m_harness.Hide();
  this->List().Repaint();
  this->List().SetItemState(1, kRowSelected, kRowSelected);
  this->m_harness.Paint();
  EXPECT_EQ(this->m_owner.paints, shown);
}

TYPED_TEST_P(RowLookContract, DeleteIsTheOwnersOrElseLeftToTheWindow) {
  EXPECT_TRUE(this->m_harness.PressDelete(false)) << "it may have nothing to do, without rows";
  this->Fill(5, 3);
  EXPECT_TRUE(this->m_harness.PressDelete(false));
  EXPECT_EQ(this->m_owner.deletes, 2);
  this->m_owner.takesDelete = false;
  EXPECT_FALSE(this->m_harness.PressDelete(false));
  EXPECT_EQ(this->m_owner.deletes, 3);
  EXPECT_FALSE(this->m_harness.PressDelete(true)) << "another key";
  EXPECT_EQ(this->m_owner.deletes, 3);
  EXPECT_EQ(this->States(5), "00000");
}

TYPED_TEST_P(RowLookContract, TheOwnerMayTakeTheRowsAwayAtTheKey) {
  this->Fill(8, 3);
  this->List().SetItemState(6, this->kBoth, this->kBoth);
  this->m_owner.onDelete = [this] { this->List().DeleteRows(6, 1); };
  EXPECT_TRUE(this->m_harness.PressDelete(false));
  EXPECT_EQ(this->List().ItemCount(), 7);
  EXPECT_EQ(this->States(7), "0000000");
  this->m_owner.onDelete = [this] { this->List().SetItemCount(0); };
  EXPECT_TRUE(this->m_harness.PressDelete(false));
  this->m_harness.Paint();
  EXPECT_EQ(this->List().ItemCount(), 0);
  EXPECT_EQ(this->List().NextItem(-1, this->kBoth), -1);
}

REGISTER_TYPED_TEST_SUITE_P(RowLookContract,
                            ColoursAndMarksAreAskedForTheRowsOnViewOnlyAndWhileItPaints,
                            ColoursOfARowStandInPlaceOfItsTintButNotOfItsSelection,
                            AMarkIsSeenAtBothEndsOfItsRowAlsoOfASelectedOne,
                            AMarkIsThatOfTheRowNumberAtTheTime, NothingIsAskedWhileNobodySeesIt,
                            DeleteIsTheOwnersOrElseLeftToTheWindow,
                            TheOwnerMayTakeTheRowsAwayAtTheKey);

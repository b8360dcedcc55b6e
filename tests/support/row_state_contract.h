// The part of the row list contract about rows, focus and selection.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/row_list_fixture.h"

template <class Harness>
class RowStateContract : public RowListFixture<Harness> {};
TYPED_TEST_SUITE_P(RowStateContract);

TYPED_TEST_P(RowStateContract, ANewListHasNoRowsNoFocusAndNoSelection) {
  EXPECT_EQ(this->List().ItemCount(), 0);
  EXPECT_EQ(this->List().TopIndex(), 0);
  EXPECT_EQ(this->List().SelectedCount(), 0);
  EXPECT_EQ(this->List().NextItem(-1, this->kBoth), -1);
}

TYPED_TEST_P(RowStateContract, RowsComeWithoutFocusSelectionOrAReport) {
  this->List().SetItemCount(5);
  EXPECT_EQ(this->List().ItemCount(), 5);
  EXPECT_EQ(this->States(5), "00000");
  EXPECT_EQ(this->m_owner.Reported().size(), 0u);
}

TYPED_TEST_P(RowStateContract, FocusAndSelectionAreApart) {
  this->Fill(5, 3);
  this->List().SetItemState(1, kRowSelected, kRowSelected);
  this->List().SetItemState(2, kRowSelected, kRowSelected);
  this->List().SetItemState(4, kRowFocused, kRowFocused);
  EXPECT_EQ(this->States(5), "02201");
  EXPECT_EQ(this->List().SelectedCount(), 2);
  this->List().SetItemState(4, 0, kRowFocused);
  EXPECT_EQ(this->States(5), "02200");
}

TYPED_TEST_P(RowStateContract, AChangeIsReportedBeforeTheCallReturnsAndOnlyOnce) {
  this->Fill(5, 3);
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  EXPECT_EQ(this->m_owner.Reported(), (std::vector<std::string>{"3: 0>3"}));
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  EXPECT_EQ(this->m_owner.Reported().size(), 0u) << "nothing changed";
  this->List().SetItemState(3, 0, kRowSelected);
  EXPECT_EQ(this->m_owner.Reported(), (std::vector<std::string>{"3: 3>1"}));
}

TYPED_TEST_P(RowStateContract, TheRowThatLosesTheFocusIsReportedBeforeTheOneThatGainsIt) {
  this->Fill(5, 3);
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  this->m_owner.Reported();
  this->List().SetItemState(1, kRowFocused, kRowFocused);
  EXPECT_EQ(this->m_owner.Reported(), (std::vector<std::string>{"3: 3>2", "1: 0>1"}));
  EXPECT_EQ(this->States(5), "01020") << "the selection stays where it was";
}

TYPED_TEST_P(RowStateContract, ClearingAllRowsTellsTheLossOfTheFocus) {
  this->Fill(6, 3);
  this->List().SetItemState(1, kRowSelected, kRowSelected);
  this->List().SetItemState(4, this->kBoth, this->kBoth);
  this->m_owner.Reported();
  this->List().SetItemState(-1, 0, this->kBoth);
  EXPECT_EQ(this->m_owner.Reported(), (std::vector<std::string>{"4: 3>0"}));
  EXPECT_EQ(this->States(6), "000000");
  EXPECT_EQ(this->List().SelectedCount(), 0);
  EXPECT_EQ(this->List().NextItem(-1, this->kBoth), -1);
}

TYPED_TEST_P(RowStateContract, AllRowsCanBeSelectedButNotFocused) {
  this->Fill(6, 3);
  this->List().SetItemState(2, kRowFocused, kRowFocused);
  this->List().SetItemState(-1, this->kBoth, this->kBoth);
  EXPECT_EQ(this->States(6), "223222");
  EXPECT_EQ(this->List().SelectedCount(), 6);
}

TYPED_TEST_P(RowStateContract, AChangeOfTheItemCountTellsNothingAndRowsAfterItLoseTheirState) {
  this->Fill(6, 3);
  this->List().SetItemState(1, kRowSelected, kRowSelected);
  this->List().SetItemState(4, this->kBoth, this->kBoth);
  this->m_owner.Reported();
  this->List().SetItemCount(3);
  this->List().SetItemCount(6);
  EXPECT_EQ(this->States(6), "020000");
  EXPECT_EQ(this->List().SelectedCount(), 1);
  this->List().SetItemCount(0);
  this->List().SetItemCount(6);
  EXPECT_EQ(this->States(6), "000000");
  EXPECT_EQ(this->m_owner.Reported().size(), 0u);
}

TYPED_TEST_P(RowStateContract, DeletedRowsTakeTheirStateAlongAndThoseAfterThemMoveUpWithTheirs) {
  this->Fill(8, 4);
  this->List().SetItemState(0, kRowSelected, kRowSelected);
  this->List().SetItemState(3, kRowSelected, kRowSelected);
  this->List().SetItemState(5, this->kBoth, this->kBoth);
  this->m_owner.Reported();
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
  EXPECT_EQ(this->m_owner.Reported().size(), 0u) << "a deletion tells nothing";
}

TYPED_TEST_P(RowStateContract, DeletingMoreRowsThanThereAreDeletesTheRest) {
  this->Fill(5, 3);
  this->List().DeleteRows(3, 9);
  EXPECT_EQ(this->List().ItemCount(), 3);
  this->List().DeleteRows(3, 1);
  this->List().DeleteRows(-1, 1);
  this->List().DeleteRows(0, 0);
  EXPECT_EQ(this->List().ItemCount(), 3);
}

TYPED_TEST_P(RowStateContract, NextItemFindsTheNextRowWithAnyOfTheStates) {
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

TYPED_TEST_P(RowStateContract, ARowThatDoesNotExistIsIgnored) {
  this->Fill(3, 3);
  this->List().SetItemState(3, this->kBoth, this->kBoth);
  this->List().SetItemState(-2, this->kBoth, this->kBoth);
  this->List().EnsureVisible(3);
  this->List().EnsureVisible(-1);
  EXPECT_EQ(this->States(3), "000");
  EXPECT_EQ(this->List().GetItemState(3), 0u);
  EXPECT_EQ(this->List().GetItemState(-1), 0u);
  EXPECT_EQ(this->List().TopIndex(), 0);
  EXPECT_EQ(this->m_owner.Reported().size(), 0u);
}

TYPED_TEST_P(RowStateContract, StatesChangeAlsoWhileRedrawingIsOff) {
  this->Fill(5, 3);
  this->List().SetRedraw(false);
  this->List().SetItemState(2, this->kBoth, this->kBoth);
  EXPECT_EQ(this->m_owner.Reported(), (std::vector<std::string>{"2: 0>3"}));
  this->List().EnsureVisible(4);
  this->List().SetRedraw(true);
  EXPECT_EQ(this->List().TopIndex(), 2);
  EXPECT_EQ(this->States(5), "00300");
}

TYPED_TEST_P(RowStateContract, TheSelectionIsTakenAndGivenAsAWhole) {
  this->Fill(8, 3);
  for (const int row : {2, 4, 5}) this->List().SetItemState(row, kRowSelected, kRowSelected);
  this->List().SetItemState(4, kRowFocused, kRowFocused);
  this->List().DeleteRows(0, 1);
  const RowRanges selected = this->List().Selection();
  EXPECT_EQ(selected.Count(), 3);
  for (const int row : {1, 3, 4}) EXPECT_TRUE(selected.Contains(row)) << row;
  this->List().SetItemState(-1, 0, kRowSelected);
  this->List().SetItemState(6, kRowSelected, kRowSelected);
  this->m_owner.Reported();
  this->List().Select(selected);
  EXPECT_EQ(this->States(7), "0203200");
  EXPECT_EQ(this->m_owner.Reported().size(), 1U) << "the row with the focus";
  this->List().SetItemCount(4);
  this->List().Select(selected);
  EXPECT_EQ(this->List().SelectedCount(), 2) << "rows that do not exist are left out";
  this->List().Select(RowRanges());
  EXPECT_EQ(this->States(4), "0001");
}

REGISTER_TYPED_TEST_SUITE_P(RowStateContract, ANewListHasNoRowsNoFocusAndNoSelection,
                            RowsComeWithoutFocusSelectionOrAReport, FocusAndSelectionAreApart,
                            AChangeIsReportedBeforeTheCallReturnsAndOnlyOnce,
                            TheRowThatLosesTheFocusIsReportedBeforeTheOneThatGainsIt,
                            ClearingAllRowsTellsTheLossOfTheFocus,
                            AllRowsCanBeSelectedButNotFocused,
                            AChangeOfTheItemCountTellsNothingAndRowsAfterItLoseTheirState,
                            DeletedRowsTakeTheirStateAlongAndThoseAfterThemMoveUpWithTheirs,
                            DeletingMoreRowsThanThereAreDeletesTheRest,
                            NextItemFindsTheNextRowWithAnyOfTheStates,
                            ARowThatDoesNotExistIsIgnored, StatesChangeAlsoWhileRedrawingIsOff,
                            TheSelectionIsTakenAndGivenAsAWhole);

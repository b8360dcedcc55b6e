// The part of the row list contract about visible rows.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/row_list_fixture.h"

template <class Harness>
class RowScrollContract : public RowListFixture<Harness> {};
TYPED_TEST_SUITE_P(RowScrollContract);

TYPED_TEST_P(RowScrollContract, EnsureVisibleScrollsAsLittleAsNeeded) {
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

TYPED_TEST_P(RowScrollContract, NewRowsDoNotScroll) {
  this->Fill(100, 10);
  this->List().EnsureVisible(99);
  this->List().SetItemCount(200);
  EXPECT_EQ(this->List().TopIndex(), 90);
}

TYPED_TEST_P(RowScrollContract, WithFewerRowsTheTopStaysAmongThem) {
  this->Fill(100, 10);
  this->List().EnsureVisible(99);
  this->List().SetItemCount(50);
  EXPECT_EQ(this->List().TopIndex(), 40);
  this->List().SetItemCount(0);
  EXPECT_EQ(this->List().TopIndex(), 0);
}

TYPED_TEST_P(RowScrollContract, DeletingRowsAtTheFrontKeepsWhatIsSeenInPlace) {
  this->Fill(100, 10);
  this->List().EnsureVisible(59);
  ASSERT_EQ(this->List().TopIndex(), 50);
  this->List().DeleteRows(0, 20);
  EXPECT_EQ(this->List().TopIndex(), 30);
  this->List().DeleteRows(0, 35);
  EXPECT_EQ(this->List().TopIndex(), 0) << "what was seen is gone";
}

TYPED_TEST_P(RowScrollContract, DeletingRowsAfterWhatIsSeenKeepsIt) {
  this->Fill(100, 10);
  this->List().EnsureVisible(59);
  this->List().DeleteRows(70, 20);
  EXPECT_EQ(this->List().TopIndex(), 50);
}

TYPED_TEST_P(RowScrollContract, EveryChangeOfItsSizeLeavesAListAtItsEnd) {
  this->Fill(100, 10);
  this->List().EnsureVisible(99);
  for (const int page : {25, 3, 60, 1, 100, 7}) {
    this->m_harness.ShowRows(page);
    EXPECT_EQ(this->List().TopIndex(), 100 - page) << page;
  }
}

TYPED_TEST_P(RowScrollContract, WhereAllRowsWereOnViewASmallerListShowsTheLastOnes) {
  this->Fill(12, 20);
  ASSERT_EQ(this->List().TopIndex(), 0);
  this->m_harness.ShowRows(5);
  EXPECT_EQ(this->List().TopIndex(), 7);
}

TYPED_TEST_P(RowScrollContract, AListThatIsNotAtItsEndKeepsItsFirstRowInEverySize) {
  this->Fill(100, 10);
  this->List().EnsureVisible(50);
  for (const int page : {25, 3, 10}) {
    this->m_harness.ShowRows(page);
    EXPECT_EQ(this->List().TopIndex(), 41) << page;
  }
}

TYPED_TEST_P(RowScrollContract, ASizeThatComesAfterAHiddenTimeLeavesItAtItsEnd) {
  this->Fill(100, 20);
  this->List().EnsureVisible(99);
  this->m_harness.Hide();
  this->List().SetItemCount(150);
  this->List().EnsureVisible(149);
  EXPECT_EQ(this->List().TopIndex(), 130) << "hidden it scrolls all the same";
  this->m_harness.ShowAgain(8);
  EXPECT_EQ(this->List().TopIndex(), 142);
}

TYPED_TEST_P(RowScrollContract, AHiddenTimeLeavesAListThatIsNotAtItsEndWhereItIs) {
  this->Fill(100, 20);
  this->List().EnsureVisible(50);
  this->m_harness.Hide();
  this->List().SetItemCount(150);
  this->m_harness.ShowAgain(8);
  EXPECT_EQ(this->List().TopIndex(), 31);
}

TYPED_TEST_P(RowScrollContract, AListWithoutRoomForARowHasAPageOfOneAndKeepsItsEnd) {
  this->Fill(100, 10);
  this->List().EnsureVisible(99);
  this->m_harness.ShowRows(0);
  EXPECT_EQ(this->List().CountPerPage(), 1);
  EXPECT_EQ(this->List().TopIndex(), 99);
  this->m_harness.ShowRows(10);
  EXPECT_EQ(this->List().TopIndex(), 90);
}

TYPED_TEST_P(RowScrollContract, ItsOwnerHearsOfAnotherTopRowAndOfAPageOfAnotherSize) {
  this->Fill(100, 10);
  const auto told = [this] { return std::exchange(this->m_owner.scrolled, 0); };
  told();
  this->List().EnsureVisible(9);
  EXPECT_EQ(told(), 0) << "it was visible";
  this->List().EnsureVisible(40);
  EXPECT_EQ(told(), 1);
  this->List().DeleteRows(0, 5);
  EXPECT_EQ(told(), 1);
  this->List().SetItemCount(20);
  EXPECT_EQ(told(), 1);
  this->List().SetItemCount(30);
  EXPECT_EQ(told(), 0);
  this->m_harness.ShowRows(7);
  EXPECT_GE(told(), 1);
}

REGISTER_TYPED_TEST_SUITE_P(RowScrollContract, EnsureVisibleScrollsAsLittleAsNeeded,
                            ItsOwnerHearsOfAnotherTopRowAndOfAPageOfAnotherSize, NewRowsDoNotScroll,
                            WithFewerRowsTheTopStaysAmongThem,
                            DeletingRowsAtTheFrontKeepsWhatIsSeenInPlace,
                            DeletingRowsAfterWhatIsSeenKeepsIt,
                            EveryChangeOfItsSizeLeavesAListAtItsEnd,
                            WhereAllRowsWereOnViewASmallerListShowsTheLastOnes,
                            AListThatIsNotAtItsEndKeepsItsFirstRowInEverySize,
                            ASizeThatComesAfterAHiddenTimeLeavesItAtItsEnd,
                            AHiddenTimeLeavesAListThatIsNotAtItsEndWhereItIs,
                            AListWithoutRoomForARowHasAPageOfOneAndKeepsItsEnd);

#include "listview/rows/trace_view_iterator.h"

#include <gtest/gtest.h>

#include "listview/rows/trace_view_fixture.h"

namespace {

class Iterator : public TraceViewTest {
 protected:
  void SetUp() override {
    AddMany(30);
    Open();
    m_list->ScrollTo(0);
  }
  CTraceViewIterator At(int row) { return {*m_view, m_view->Rows(), row}; }
  TraceEvent_i* Trace(std::size_t position) { return m_document.m_traces[position]; }
};

TEST_F(Iterator, BeginsAtItsRow) {
  const CTraceViewIterator iterator = At(4);
  EXPECT_EQ(iterator.current, Trace(4));
}

TEST_F(Iterator, NextAndPrevMoveTheSelectionShowTheRowAndLeaveTheFocus) {
  Focus(9);
  CTraceViewIterator iterator = At(9);
  iterator.Next();
  EXPECT_EQ(iterator.current, Trace(10));
  EXPECT_EQ(States(), "9 focused 10 selected");
  EXPECT_EQ(m_list->TopIndex(), 1);
  iterator.Prev();
  iterator.Prev();
  EXPECT_EQ(iterator.current, Trace(8));
  EXPECT_EQ(States(), "8 selected 9 focused");
}

TEST_F(Iterator, KnowsWhetherThereIsAnotherRow) {
  EXPECT_FALSE(At(0).HasPrev());
  EXPECT_TRUE(At(0).HasNext());
  EXPECT_TRUE(At(1).HasPrev());
  EXPECT_TRUE(At(28).HasNext());
  EXPECT_FALSE(At(29).HasNext());
}

TEST_F(Iterator, WalksOnlyTheRowsThatTheFilterShows) {
  Add({.component = 9});
  Add({.component = 1});
  HideNine();
  CTraceViewIterator iterator = At(29);
  iterator.Next();
  EXPECT_EQ(iterator.current, Trace(31));
}

TEST_F(Iterator, TellsTheOtherViewsWhenTheDocumentSynchronises) {
  FollowProbe other(m_document);
  CTraceViewIterator iterator = At(4);
  iterator.Next();
  EXPECT_TRUE(other.followed.empty());
  m_document.m_synchronize = true;
  iterator.Next();
  iterator.Prev();
  EXPECT_EQ(other.followed, (std::vector<TraceEvent_i*>{Trace(6), Trace(5)}));
}

TEST_F(Iterator, KeepsItsIndexWhileRowsAreTrimmed) {
  CTraceViewIterator iterator = At(4);
  Trim(10);
  iterator.Next();
  EXPECT_EQ(iterator.current, Trace(5));
}

TEST_F(Iterator, StaysAmongTheRowsWhenTooManyWereTrimmed) {
  CTraceViewIterator iterator = At(25);
  Trim(20);
  EXPECT_FALSE(iterator.HasNext());
  iterator.Next();
  EXPECT_EQ(iterator.current, Trace(9));
  EXPECT_EQ(States(), "9 selected");
  Trim(8);
  iterator.Prev();
  EXPECT_EQ(iterator.current, Trace(1)) << "one before its index, brought back among the rows";
  iterator.Prev();
  iterator.Prev();
  EXPECT_EQ(iterator.current, Trace(0));
}

TEST_F(Iterator, DoesNotMoveWhenAllRowsHaveGone) {
  CTraceViewIterator iterator = At(3);
  Trim(30);
  EXPECT_FALSE(iterator.HasNext());
  iterator.Next();
  EXPECT_EQ(iterator.current, nullptr);
  iterator.Prev();
  EXPECT_EQ(iterator.current, nullptr);
  DrainMany(10);
  iterator.Next();
  EXPECT_EQ(iterator.current, Trace(4)) << "its index stayed";
}

TEST_F(Iterator, SurvivesAClear) {
  CTraceViewIterator iterator = At(3);
  m_document.DeleteContents();
  iterator.Next();
  EXPECT_EQ(iterator.current, nullptr);
}

TEST_F(Iterator, OfARowThatDoesNotExistHasNoTrace) {
  EXPECT_EQ(At(30).current, nullptr);
  EXPECT_EQ(At(-1).current, nullptr);
}

}  // namespace

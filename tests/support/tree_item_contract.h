// The part of the tree control contract about inserting and deleting items.
#pragma once

#include <cstddef>
#include <vector>

#include "support/tree_control_fixture.h"

template <class Harness>
class TreeItemContract : public TreeControlFixture<Harness> {};
TYPED_TEST_SUITE_P(TreeItemContract);

TYPED_TEST_P(TreeItemContract, AnEmptyTreeHasNothingAndTakesAnyCall) {
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::FirstChild), 0U);
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::LastChild), 0U);
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::NextSibling), 0U);
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::PreviousVisible), 0U);
  EXPECT_EQ(this->Tree().SelectedItem(), 0U);
  EXPECT_EQ(this->Tree().ItemState(0), 0U);
  EXPECT_EQ(this->Tree().ItemData(0), 0U);
  this->Tree().Expand(0, true);
  this->Tree().EnsureVisible(0);
  this->Tree().SelectItem(0);
  this->Tree().DeleteItem(0);
  this->Tree().ItemTextChanged(0);
  EXPECT_FALSE(this->Tree().IsOnScreen(0));
  EXPECT_TRUE(this->m_owner.reported.empty());
}

TYPED_TEST_P(TreeItemContract, ItemsStandInTheOrderOfTheirInsertionBelowTheirParent) {
  this->AddSmall();
  EXPECT_EQ(this->At(0, TreeStep::FirstChild), 1U);
  EXPECT_EQ(this->At(0, TreeStep::LastChild), 2U);
  EXPECT_EQ(this->At(this->m_1, TreeStep::FirstChild), 11U);
  EXPECT_EQ(this->At(this->m_1, TreeStep::LastChild), 12U);
  EXPECT_EQ(this->At(this->m_11, TreeStep::NextSibling), 12U);
  EXPECT_EQ(this->At(this->m_12, TreeStep::NextSibling), 0U);
  EXPECT_EQ(this->At(this->m_12, TreeStep::PreviousSibling), 11U);
  EXPECT_EQ(this->At(this->m_11, TreeStep::PreviousSibling), 0U);
  EXPECT_EQ(this->At(this->m_111, TreeStep::Parent), 11U);
  EXPECT_EQ(this->At(this->m_2, TreeStep::Parent), 0U);
  EXPECT_EQ(this->At(this->m_111, TreeStep::FirstChild), 0U);
}

TYPED_TEST_P(TreeItemContract, AnItemGetsItsButtonByTheMarkOrByAChild) {
  const TreeItem marked = this->Tree().InsertItem(0, 7, true);
  const TreeItem plain = this->Tree().InsertItem(0, 8, false);
  EXPECT_EQ(this->Tree().ItemState(marked), kTreeHasChildren);
  EXPECT_EQ(this->Tree().ItemState(plain), 0U);
  this->Add(plain, 81);
  EXPECT_EQ(this->Tree().ItemState(plain), kTreeHasChildren);
}

TYPED_TEST_P(TreeItemContract, ADeletedItemGoesWithAllBelowIt) {
  this->AddSmall();
  this->Tree().Expand(this->m_1, true);
  this->Tree().Expand(this->m_11, true);
  this->Tree().DeleteItem(this->m_11);
  EXPECT_EQ(this->Rows(), "1 12 2");
  this->Tree().DeleteItem(this->m_1);
  EXPECT_EQ(this->Rows(), "2");
  this->Tree().DeleteItem(0);
  EXPECT_EQ(this->Rows(), "");
}

TYPED_TEST_P(TreeItemContract, AnInsertionBelowAnOpenItemIsSeenAtOnce) {
  this->AddSmall();
  this->Tree().Expand(this->m_1, true);
  this->Add(this->m_1, 13);
  this->Add(this->m_11, 112);
  EXPECT_EQ(this->Rows(), "1 11 12 13 2");
}

TYPED_TEST_P(TreeItemContract, HundredsOfItemsWalkInOrderAfterSomeHaveGone) {
  const TreeItem top = this->Add(0, 1000);
  std::vector<TreeItem> items;
  for (TreeItemData data = 1; data <= 900; ++data) items.push_back(this->Add(top, data));
  this->Tree().Expand(top, true);
  std::vector<TreeItemData> wanted;
  for (TreeItemData data = 1; data <= 900; ++data) {
    if (data <= 450 || data % 7 == 0 || (data > 600 && data < 800))
      this->Tree().DeleteItem(items[data - 1]);
    else
      wanted.push_back(data);
  }
  std::vector<TreeItemData> forward, backward;
  for (TreeItem item = this->Tree().Walk(top, TreeStep::FirstChild); item;
       item = this->Tree().Walk(item, TreeStep::NextSibling))
    forward.push_back(this->Tree().ItemData(item));
  EXPECT_EQ(forward, wanted);
  for (TreeItem item = this->Tree().Walk(top, TreeStep::LastChild); item;
       item = this->Tree().Walk(item, TreeStep::PreviousSibling))
    backward.insert(backward.begin(), this->Tree().ItemData(item));
  EXPECT_EQ(backward, wanted);
  EXPECT_EQ(this->At(items[898 - 1], TreeStep::PreviousVisible), 897U);
  EXPECT_EQ(this->At(items[800 - 1], TreeStep::PreviousVisible), 600U);
}

TYPED_TEST_P(TreeItemContract, EachChangeOfTheSelectionIsReportedOnceWhoeverMadeIt) {
  this->AddSmall();
  std::vector<TreeItem>& reported = this->m_owner.selections;
  this->Tree().SelectItem(this->m_12);
  this->Tree().SelectItem(this->m_12);
  EXPECT_EQ(reported, (std::vector<TreeItem>{this->m_12}));
  this->Tree().SelectItem(this->m_111);
  this->Tree().Expand(this->m_1, false);
  EXPECT_EQ(reported, (std::vector<TreeItem>{this->m_12, this->m_111, this->m_1}));
  this->Tree().DeleteItem(this->m_1);
  EXPECT_EQ(reported.back(), this->m_2);
  this->Tree().DeleteItem(0);
  this->Tree().DeleteItem(0);
  EXPECT_EQ(reported, (std::vector<TreeItem>{this->m_12, this->m_111, this->m_1, this->m_2, 0}));
}

REGISTER_TYPED_TEST_SUITE_P(TreeItemContract, AnEmptyTreeHasNothingAndTakesAnyCall,
                            ItemsStandInTheOrderOfTheirInsertionBelowTheirParent,
                            AnItemGetsItsButtonByTheMarkOrByAChild, ADeletedItemGoesWithAllBelowIt,
                            AnInsertionBelowAnOpenItemIsSeenAtOnce,
                            HundredsOfItemsWalkInOrderAfterSomeHaveGone,
                            EachChangeOfTheSelectionIsReportedOnceWhoeverMadeIt);

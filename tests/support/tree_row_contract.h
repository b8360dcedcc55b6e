// The part of the tree control contract about opening, selecting and scrolling.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/tree_control_fixture.h"

template <class Harness>
class TreeRowContract : public TreeControlFixture<Harness> {};
TYPED_TEST_SUITE_P(TreeRowContract);

TYPED_TEST_P(TreeRowContract, TheOwnerIsAskedBeforeAnItemOpensEachTime) {
  const TreeItem item = this->Tree().InsertItem(0, 7, true);
  this->m_owner.fill = [&](TreeItem opened) {
    EXPECT_EQ(this->Tree().ItemState(opened) & kTreeExpanded, 0U);
    if (!this->Tree().Walk(opened, TreeStep::FirstChild)) this->Add(opened, 71);
  };
  this->Tree().Expand(item, true);
  EXPECT_EQ(this->Rows(), "7 71");
  EXPECT_EQ(this->Tree().ItemState(item), kTreeHasChildren | kTreeExpanded);
  this->Tree().Expand(item, true);  // is open already
  this->Tree().Expand(item, false);
  EXPECT_EQ(this->Rows(), "7");
  EXPECT_EQ(this->Tree().ItemState(item), kTreeHasChildren);
  this->Tree().Expand(item, true);
  EXPECT_EQ(this->m_owner.reported, (std::vector<std::string>{"expanding 7", "expanding 7"}));
}

TYPED_TEST_P(TreeRowContract, AnItemThatIsGivenNoChildrenStaysClosed) {
  const TreeItem item = this->Tree().InsertItem(0, 7, true);
  this->Tree().Expand(item, true);
  EXPECT_EQ(this->m_owner.reported, std::vector<std::string>{"expanding 7"});
  EXPECT_EQ(this->Tree().ItemState(item), kTreeHasChildren);
}

TYPED_TEST_P(TreeRowContract, WhatTheOwnerDoesNotLetOpenStaysClosedAndNothingBelowItIsSelected) {
  this->AddSmall();
  this->Tree().SelectItem(this->m_2);
  this->m_owner.closed = 11;
  this->Tree().Expand(this->m_1, true);
  this->Tree().Expand(this->m_11, true);
  EXPECT_EQ(this->Rows(), "1 11 12 2");
  this->Tree().SelectItem(this->m_111);
  this->Tree().EnsureVisible(this->m_111);
  EXPECT_EQ(this->Rows(), "1 11 12 2");
  EXPECT_EQ(this->Selected(), 2U);
}

TYPED_TEST_P(TreeRowContract, ALeafIsNotOpened) {
  const TreeItem item = this->Add(0, 7);
  this->Tree().Expand(item, true);
  EXPECT_TRUE(this->m_owner.reported.empty());
  EXPECT_EQ(this->Tree().ItemState(item), 0U);
}

TYPED_TEST_P(TreeRowContract, WhatIsBelowAClosedItemIsInNoRow) {
  this->AddSmall();
  EXPECT_EQ(this->Rows(), "1 2");
  this->Tree().Expand(this->m_11, true);
  EXPECT_EQ(this->Rows(), "1 2");
  EXPECT_EQ(this->At(this->m_111, TreeStep::PreviousVisible), 0U);
  this->Tree().Expand(this->m_1, true);
  EXPECT_EQ(this->Rows(), "1 11 111 12 2");
  EXPECT_EQ(this->At(this->m_12, TreeStep::PreviousVisible), 111U);
  EXPECT_EQ(this->At(this->m_1, TreeStep::PreviousVisible), 0U);
}

TYPED_TEST_P(TreeRowContract, SelectingOpensAllAbove) {
  this->AddSmall();
  this->Tree().SelectItem(this->m_111);
  EXPECT_EQ(this->Selected(), 111U);
  EXPECT_EQ(this->Rows(), "1 11 111 12 2");
  EXPECT_EQ(this->m_owner.reported, (std::vector<std::string>{"expanding 1", "expanding 11"}));
  this->Tree().SelectItem(0);
  EXPECT_EQ(this->Tree().SelectedItem(), 0U);
}

TYPED_TEST_P(TreeRowContract, AClosedItemTakesTheSelectionFromBelowIt) {
  this->AddSmall();
  this->Tree().SelectItem(this->m_111);
  this->Tree().Expand(this->m_1, false);
  EXPECT_EQ(this->Selected(), 1U);
  this->Tree().SelectItem(this->m_2);
  this->Tree().Expand(this->m_1, true);
  this->Tree().Expand(this->m_1, false);
  EXPECT_EQ(this->Selected(), 2U);
}

TYPED_TEST_P(TreeRowContract, TheSelectionOfADeletedItemGoesOnThenBackThenUp) {
  this->AddSmall();
  this->Tree().SelectItem(this->m_111);
  this->Tree().DeleteItem(this->m_11);
  EXPECT_EQ(this->Selected(), 12U);
  const TreeItem last = this->Add(this->m_1, 13);
  this->Tree().SelectItem(last);
  this->Tree().DeleteItem(last);
  EXPECT_EQ(this->Selected(), 12U);
  this->Tree().DeleteItem(this->m_12);
  EXPECT_EQ(this->Selected(), 1U);
  this->Tree().DeleteItem(0);
  EXPECT_EQ(this->Tree().SelectedItem(), 0U);
}

TYPED_TEST_P(TreeRowContract, EnsureVisibleScrollsAsLittleAsNeeded) {
  this->m_harness.ShowRows(5);
  std::vector<TreeItem> items;
  for (TreeItemData data = 1; data <= 30; ++data) items.push_back(this->Add(0, data));
  EXPECT_TRUE(this->Tree().IsOnScreen(items[0]));
  EXPECT_TRUE(this->Tree().IsOnScreen(items[4]));
  EXPECT_FALSE(this->Tree().IsOnScreen(items[9]));
  this->Tree().EnsureVisible(items[9]);
  EXPECT_FALSE(this->Tree().IsOnScreen(items[4]));
  EXPECT_TRUE(this->Tree().IsOnScreen(items[5]));
  EXPECT_TRUE(this->Tree().IsOnScreen(items[9]));
  this->Tree().EnsureVisible(items[6]);
  EXPECT_TRUE(this->Tree().IsOnScreen(items[9]));
  this->Tree().EnsureVisible(items[2]);
  EXPECT_TRUE(this->Tree().IsOnScreen(items[2]));
  EXPECT_FALSE(this->Tree().IsOnScreen(items[1]));
}

TYPED_TEST_P(TreeRowContract, WhatIsSeenStaysWhenItemsBeforeItGo) {
  this->m_harness.ShowRows(5);
  std::vector<TreeItem> items;
  for (TreeItemData data = 1; data <= 300; ++data) items.push_back(this->Add(0, data));
  this->Tree().EnsureVisible(items[204]);
  for (std::size_t i = 0; i < 200; ++i) this->Tree().DeleteItem(items[i]);
  EXPECT_TRUE(this->Tree().IsOnScreen(items[200]));
  EXPECT_TRUE(this->Tree().IsOnScreen(items[204]));
  EXPECT_FALSE(this->Tree().IsOnScreen(items[206]));
  EXPECT_EQ(this->At(0, TreeStep::FirstChild), 201U);
}

TYPED_TEST_P(TreeRowContract, AnItemTakesARowAndThoseSeenBelowIt) {
  this->AddSmall();
  EXPECT_EQ(this->Tree().RowsOf(this->m_1), 1);
  this->Tree().Expand(this->m_1, true);
  EXPECT_EQ(this->Tree().RowsOf(this->m_1), 3);
  this->Tree().Expand(this->m_11, true);
  EXPECT_EQ(this->Tree().RowsOf(this->m_1), 4);
  EXPECT_EQ(this->Tree().RowsOf(this->m_11), 2);
  EXPECT_EQ(this->Tree().RowsOf(this->m_2), 1);
}

REGISTER_TYPED_TEST_SUITE_P(TreeRowContract, TheOwnerIsAskedBeforeAnItemOpensEachTime,
                            AnItemThatIsGivenNoChildrenStaysClosed,
                            WhatTheOwnerDoesNotLetOpenStaysClosedAndNothingBelowItIsSelected,
                            ALeafIsNotOpened, WhatIsBelowAClosedItemIsInNoRow,
                            SelectingOpensAllAbove, AClosedItemTakesTheSelectionFromBelowIt,
                            TheSelectionOfADeletedItemGoesOnThenBackThenUp,
                            EnsureVisibleScrollsAsLittleAsNeeded,
                            WhatIsSeenStaysWhenItemsBeforeItGo, AnItemTakesARowAndThoseSeenBelowIt);

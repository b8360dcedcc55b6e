// What every tree control does, whoever made it: run by the fake and by the control on the screen.
//
//   struct MyRig {
//     explicit MyRig(TreeControlOwner& owner);  // makes an empty tree
//     TreeControl& Tree();
//     void ShowRows(int rows);                  // sizes it so that so many rows show whole
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, TreeControlContract, MyRig);
//
// The rig's constructor makes what the tree needs (an application object); the owner outlives it.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tree/proc/tree_control.h"

class RecordingTreeOwner final : public TreeControlOwner {
 public:
  std::string TreeItemText(TreeItemData data) override { return "item " + std::to_string(data); }
  void OnTreeItemExpanding(TreeItem item) override {
    told.push_back("expanding " + std::to_string(tree->ItemData(item)));
    if (fill) fill(item);
  }
  void OnTreeClicked(TreeItem item) override { Tell("clicked", item); }
  void OnTreeDoubleClicked() override { told.push_back("double clicked"); }
  void OnTreeRightPressed(TreeItem item) override { Tell("right pressed", item); }
  void OnTreeContextMenu(int, int) override { told.push_back("context menu"); }

  TreeControl* tree = nullptr;
  std::function<void(TreeItem)> fill;  // what the owner does at each expansion
  std::vector<std::string> told;

 private:
  void Tell(const char* what, TreeItem item) {
    told.push_back(std::string(what) + " " + std::to_string(tree->ItemData(item)));
  }
};

template <class Rig>
class TreeControlContract : public testing::Test {
 protected:
  TreeControlContract() { m_owner.tree = &Tree(); }

  TreeControl& Tree() { return m_rig.Tree(); }
  TreeItem Add(TreeItem parent, TreeItemData data) {
    return Tree().InsertItem(parent, data, false);
  }
  // 1 with the children 11 and 12, 11 with 111, and 2.
  void AddSmall() {
    m_1 = Add(0, 1);
    m_2 = Add(0, 2);
    m_11 = Add(m_1, 11);
    m_12 = Add(m_1, 12);
    m_111 = Add(m_11, 111);
  }
  // The words of the rows, from the bottom up by the port's own walk, put in order: "1 11 2".
  std::string Rows() {
    TreeItem last = 0;
    while (const TreeItem below = Tree().Walk(last, TreeStep::LastChild)) {
      last = below;
      if (!(Tree().ItemState(last) & kTreeExpanded)) break;
    }
    std::string rows;
    for (; last; last = Tree().Walk(last, TreeStep::PreviousVisible))
      rows = std::to_string(Tree().ItemData(last)) + (rows.empty() ? "" : " ") + rows;
    return rows;
  }
  TreeItemData Selected() { return Tree().ItemData(Tree().SelectedItem()); }
  TreeItemData At(TreeItem from, TreeStep step) { return Tree().ItemData(Tree().Walk(from, step)); }

  RecordingTreeOwner m_owner;
  Rig m_rig{m_owner};
  TreeItem m_1 = 0, m_2 = 0, m_11 = 0, m_12 = 0, m_111 = 0;
};

TYPED_TEST_SUITE_P(TreeControlContract);

TYPED_TEST_P(TreeControlContract, AnEmptyTreeHasNothingAndTakesAnyCall) {
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::FirstChild), 0U);
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::LastChild), 0U);
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::NextSibling), 0U);
  EXPECT_EQ(this->Tree().Walk(0, TreeStep::PreviousVisible), 0U);
  EXPECT_EQ(this->Tree().SelectedItem(), 0U);
  EXPECT_EQ(this->Tree().ItemState(0), 0U);
  EXPECT_EQ(this->Tree().ItemData(0), 0U);
  this->Tree().SetExpandedOnce(0);
  this->Tree().Expand(0, true);
  this->Tree().EnsureVisible(0);
  this->Tree().SelectItem(0);
  this->Tree().DeleteItem(0);
  this->Tree().ItemTextChanged(0);
  EXPECT_FALSE(this->Tree().IsOnScreen(0));
  EXPECT_TRUE(this->m_owner.told.empty());
}

TYPED_TEST_P(TreeControlContract, ItemsStandInTheOrderOfTheirInsertionBelowTheirParent) {
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

TYPED_TEST_P(TreeControlContract, AnItemGetsItsButtonByTheMarkOrByAChild) {
  const TreeItem marked = this->Tree().InsertItem(0, 7, true);
  const TreeItem plain = this->Tree().InsertItem(0, 8, false);
  EXPECT_EQ(this->Tree().ItemState(marked), kTreeHasChildren);
  EXPECT_EQ(this->Tree().ItemState(plain), 0U);
  this->Add(plain, 81);
  EXPECT_EQ(this->Tree().ItemState(plain), kTreeHasChildren);
}

TYPED_TEST_P(TreeControlContract, TheOwnerIsAskedBeforeAnItemOpensEachTime) {
  const TreeItem item = this->Tree().InsertItem(0, 7, true);
  this->m_owner.fill = [&](TreeItem opened) {
    EXPECT_EQ(this->Tree().ItemState(opened) & kTreeExpanded, 0U);
    if (!this->Tree().Walk(opened, TreeStep::FirstChild)) this->Add(opened, 71);
  };
  this->Tree().Expand(item, true);
  EXPECT_EQ(this->Rows(), "7 71");
  EXPECT_EQ(this->Tree().ItemState(item), kTreeHasChildren | kTreeExpanded | kTreeExpandedOnce);
  this->Tree().Expand(item, true);  // is open already
  this->Tree().Expand(item, false);
  EXPECT_EQ(this->Rows(), "7");
  EXPECT_EQ(this->Tree().ItemState(item), kTreeHasChildren | kTreeExpandedOnce);
  this->Tree().Expand(item, true);
  EXPECT_EQ(this->m_owner.told, (std::vector<std::string>{"expanding 7", "expanding 7"}));
}

TYPED_TEST_P(TreeControlContract, AnItemThatIsGivenNoChildrenStaysClosed) {
  const TreeItem item = this->Tree().InsertItem(0, 7, true);
  this->Tree().Expand(item, true);
  EXPECT_EQ(this->m_owner.told, std::vector<std::string>{"expanding 7"});
  EXPECT_EQ(this->Tree().ItemState(item), kTreeHasChildren);
}

TYPED_TEST_P(TreeControlContract, ALeafIsNotOpened) {
  const TreeItem item = this->Add(0, 7);
  this->Tree().Expand(item, true);
  EXPECT_TRUE(this->m_owner.told.empty());
  EXPECT_EQ(this->Tree().ItemState(item), 0U);
}

TYPED_TEST_P(TreeControlContract, WhatIsBelowAClosedItemIsInNoRow) {
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

TYPED_TEST_P(TreeControlContract, SelectingOpensAllAbove) {
  this->AddSmall();
  this->Tree().SelectItem(this->m_111);
  EXPECT_EQ(this->Selected(), 111U);
  EXPECT_EQ(this->Rows(), "1 11 111 12 2");
  EXPECT_EQ(this->m_owner.told, (std::vector<std::string>{"expanding 1", "expanding 11"}));
  this->Tree().SelectItem(0);
  EXPECT_EQ(this->Tree().SelectedItem(), 0U);
}

TYPED_TEST_P(TreeControlContract, AClosedItemTakesTheSelectionFromBelowIt) {
  this->AddSmall();
  this->Tree().SelectItem(this->m_111);
  this->Tree().Expand(this->m_1, false);
  EXPECT_EQ(this->Selected(), 1U);
  this->Tree().SelectItem(this->m_2);
  this->Tree().Expand(this->m_1, true);
  this->Tree().Expand(this->m_1, false);
  EXPECT_EQ(this->Selected(), 2U);
}

TYPED_TEST_P(TreeControlContract, ADeletedItemGoesWithAllBelowIt) {
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

TYPED_TEST_P(TreeControlContract, TheSelectionOfADeletedItemGoesOnThenBackThenUp) {
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

TYPED_TEST_P(TreeControlContract, AnInsertionBelowAnOpenItemIsSeenAtOnce) {
  this->AddSmall();
  this->Tree().Expand(this->m_1, true);
  this->Add(this->m_1, 13);
  this->Add(this->m_11, 112);
  EXPECT_EQ(this->Rows(), "1 11 12 13 2");
}

TYPED_TEST_P(TreeControlContract, EnsureVisibleScrollsAsLittleAsNeeded) {
  this->m_rig.ShowRows(5);
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

TYPED_TEST_P(TreeControlContract, WhatIsSeenStaysWhenItemsBeforeItGo) {
  this->m_rig.ShowRows(5);
  std::vector<TreeItem> items;
  for (TreeItemData data = 1; data <= 300; ++data) items.push_back(this->Add(0, data));
  this->Tree().EnsureVisible(items[204]);
  for (std::size_t i = 0; i < 200; ++i) this->Tree().DeleteItem(items[i]);
  EXPECT_TRUE(this->Tree().IsOnScreen(items[200]));
  EXPECT_TRUE(this->Tree().IsOnScreen(items[204]));
  EXPECT_FALSE(this->Tree().IsOnScreen(items[206]));
  EXPECT_EQ(this->At(0, TreeStep::FirstChild), 201U);
}

TYPED_TEST_P(TreeControlContract, HundredsOfItemsWalkInOrderAfterSomeHaveGone) {
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

REGISTER_TYPED_TEST_SUITE_P(
    TreeControlContract, AnEmptyTreeHasNothingAndTakesAnyCall,
    ItemsStandInTheOrderOfTheirInsertionBelowTheirParent, AnItemGetsItsButtonByTheMarkOrByAChild,
    TheOwnerIsAskedBeforeAnItemOpensEachTime, AnItemThatIsGivenNoChildrenStaysClosed,
    ALeafIsNotOpened, WhatIsBelowAClosedItemIsInNoRow, SelectingOpensAllAbove,
    AClosedItemTakesTheSelectionFromBelowIt, ADeletedItemGoesWithAllBelowIt,
    TheSelectionOfADeletedItemGoesOnThenBackThenUp, AnInsertionBelowAnOpenItemIsSeenAtOnce,
    EnsureVisibleScrollsAsLittleAsNeeded, WhatIsSeenStaysWhenItemsBeforeItGo,
    HundredsOfItemsWalkInOrderAfterSomeHaveGone);

// The base of the tests of the tree control contract: a tree made by a harness, with a few items,
// and an owner that records the calls.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "controls/tree/tree_control.h"

class RecordingTreeOwner final : public TreeControlOwner {
 public:
  std::string TreeItemText(TreeItemData data) override {
    const auto text = texts.find(data);
    return text == texts.end() ? "item " + std::to_string(data) : text->second;
  }
  std::vector<HitRange> TreeTextHits(const std::string& text) override {
    const auto hit = hits.find(text);
    return hit == hits.end() ? std::vector<HitRange>() : hit->second;
  }
  std::optional<RowMark> TreeItemMark(TreeItemData data) override {
    marksAsked.insert(data);
    if (!marks.count(data)) return std::nullopt;
    return marks.at(data);
  }
  void OnTreeSelectionChanged() override { selections.push_back(tree->SelectedItem()); }
  bool OnTreeItemExpanding(TreeItem item) override {
    reported.push_back("expanding " + std::to_string(tree->ItemData(item)));
    if (fill) fill(item);
    return tree->ItemData(item) != closed;
  }
  void OnTreeClicked(TreeItem item) override { Report("clicked", item); }
  void OnTreeDoubleClicked() override { reported.push_back("double clicked"); }
  void OnTreeRightPressed(TreeItem item) override { Report("right pressed", item); }
  void OnTreeContextMenu(int, int) override { reported.push_back("context menu"); }

  TreeControl* tree = nullptr;
  std::function<void(TreeItem)> fill;                 // called at each expansion
  std::map<TreeItemData, std::string> texts;          // other texts than "item 7"
  std::map<std::string, std::vector<HitRange>> hits;  // by text
  std::map<TreeItemData, RowMark> marks;
  std::set<TreeItemData> marksAsked;
  std::vector<TreeItem> selections;  // at each change
  TreeItemData closed = 0;           // the item that may not be opened
  std::vector<std::string> reported;

 private:
  void Report(const char* what, TreeItem item) {
    reported.push_back(std::string(what) + " " + std::to_string(tree->ItemData(item)));
  }
};

template <class Harness>
class TreeControlFixture : public testing::Test {
 protected:
  TreeControlFixture() { m_owner.tree = &Tree(); }

  TreeControl& Tree() { return m_harness.Tree(); }
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
  // The texts of the rows, collected from the bottom up by the control's own walk, then reversed:
  // "1 11 2".
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
  Harness m_harness{m_owner};
  TreeItem m_1 = 0, m_2 = 0, m_11 = 0, m_12 = 0, m_111 = 0;
};

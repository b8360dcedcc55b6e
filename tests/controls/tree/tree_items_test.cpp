// The items of a tree control against a plain copy of the tree, and what they cost.
#include "controls/tree/tree_items.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "support/fake_tree_control.h"
#include "support/tree_control_contract.h"

namespace {

std::vector<TreeItemData> RowsOf(const TreeItems& items) {
  std::vector<TreeItemData> rows;
  for (std::int64_t row = 0; row < items.Rows(); ++row)
    rows.push_back(items.ItemData(items.At(row)));
  return rows;
}

std::vector<TreeItemData> RowsOf(const FakeTreeControl& tree) {
  TreeItem last = 0;
  while (const TreeItem below = tree.Walk(last, TreeStep::LastChild)) {
    last = below;
    if (!(tree.ItemState(last) & kTreeExpanded)) break;
  }
  std::vector<TreeItemData> rows;
  for (; last; last = tree.Walk(last, TreeStep::PreviousVisible))
    rows.insert(rows.begin(), tree.ItemData(last));
  return rows;
}

struct Pair {
  TreeItem item, plain;
};

TEST(TreeItems, AnyOrderOfInsertionsDeletionsAndOpeningsGivesTheRowsOfAPlainTree) {
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    RecordingTreeOwner owner;
    FakeTreeControl plain(owner);
    owner.tree = &plain;
    TreeItems items;
    std::vector<Pair> all;
    for (TreeItemData step = 1; step <= 400; ++step) {
      const Pair any = all.empty() || random() % 6 == 0 ? Pair{0, 0} : all[random() % all.size()];
      const unsigned what = random() % 10;
      if (what < 7 || !any.item) {
        all.push_back(
            {items.InsertItem(any.item, step, false), plain.InsertItem(any.plain, step, false)});
      } else if (what == 7) {
        std::erase_if(all, [&](const Pair& each) {
          return each.item == any.item || items.IsBelow(each.item, any.item);
        });
        items.DeleteItem(any.item);
        plain.DeleteItem(any.plain);
      } else if (items.HasItemsBelow(any.item)) {
        const bool open = !(items.ItemState(any.item) & kTreeExpanded);
        items.SetExpanded(any.item, open);
        plain.Expand(any.plain, open);
      }
      const std::vector<TreeItemData> rows = RowsOf(plain);
      ASSERT_EQ(RowsOf(items), rows) << "seed " << seed << " step " << step;
      for (std::size_t row = 0; row < rows.size(); row += 5)
        ASSERT_EQ(items.RowOf(items.At(static_cast<std::int64_t>(row))), row);
    }
  }
}

TEST(TreeItems, ManySiblingsKeepTheirRowsWhileTheFrontGoesAndTheBackComes) {
  TreeItems items;
  const TreeItem top = items.InsertItem(0, 1, true);
  std::vector<TreeItem> all;
  for (TreeItemData data = 0; data < 300000; ++data)
    all.push_back(items.InsertItem(top, data, false));
  items.SetExpanded(top, true);
  for (std::size_t gone = 0; gone < 270000; ++gone) {
    items.DeleteItem(all[gone]);
    if (gone % 3 == 0) all.push_back(items.InsertItem(top, all.size(), false));
  }
  ASSERT_EQ(items.Rows(), static_cast<std::int64_t>(all.size()) - 270000 + 1);
  for (std::int64_t row = 1; row < items.Rows(); row += 997) {
    const TreeItem item = items.At(row);
    EXPECT_EQ(items.ItemData(item), static_cast<TreeItemData>(row - 1 + 270000));
    EXPECT_EQ(items.RowOf(item), row);
  }
}

TEST(TreeItems, AHundredThousandNestedItemsNeedNoStack) {
  TreeItems items;
  TreeItem deepest = 0;
  for (TreeItemData depth = 0; depth < 100000; ++depth) {
    deepest = items.InsertItem(deepest, depth + 1, false);
  }
  EXPECT_EQ(items.Depth(deepest), 99999);
  EXPECT_EQ(items.RowOf(deepest), -1);
  for (TreeItem item = items.Walk(deepest, TreeStep::Parent); item;
       item = items.Walk(item, TreeStep::Parent))
    items.SetExpanded(item, true);
  EXPECT_EQ(items.RowOf(deepest), 99999);
  EXPECT_EQ(items.At(99999), deepest);
  items.DeleteItem(items.At(1));
  EXPECT_EQ(items.Rows(), 1);
}

}  // namespace

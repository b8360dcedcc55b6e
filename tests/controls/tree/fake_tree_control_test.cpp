// The fake is a tree control: it passes the contract that the control on the screen passes.
#include "support/fake_tree_control.h"

#include "support/tree_control_contract.h"

namespace {

class FakeHarness {
 public:
  explicit FakeHarness(TreeControlOwner& owner) : m_owner(owner), m_tree(owner) {}
  TreeControl& Tree() { return m_tree; }
  void ShowRows(int rows) { m_tree.pageRows = rows; }
  // As a tree on the screen asks when it paints.
  RowSight See(TreeItem item) {
    RowSight sight;
    if (!m_tree.redraw || !m_tree.IsOnScreen(item)) return sight;
    const auto mark = m_owner.TreeItemMark(m_tree.ItemData(item));
    if (mark && mark->number != 0) sight.stripe = mark->colours.ground;
    sight.box = mark.has_value();
    return sight;
  }
  void Paint() {
    TreeItem last = 0;
    while (const TreeItem below = m_tree.Walk(last, TreeStep::LastChild)) {
      last = below;
      if (!(m_tree.ItemState(last) & kTreeExpanded)) break;
    }
    for (; last; last = m_tree.Walk(last, TreeStep::PreviousVisible)) See(last);
  }
  void SetLetters(int) {}  // a page is given in rows

 private:
  TreeControlOwner& m_owner;
  FakeTreeControl m_tree;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TreeItemContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TreeRowContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TreeLookContract, FakeHarness);

}  // namespace

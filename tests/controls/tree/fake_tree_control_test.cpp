// The fake is a tree control: it passes the contract that the control on the screen passes.
#include "support/fake_tree_control.h"

#include "support/tree_control_contract.h"

namespace {

class FakeHarness {
 public:
  explicit FakeHarness(TreeControlOwner& owner) : m_tree(owner) {}
  TreeControl& Tree() { return m_tree; }
  void ShowRows(int rows) { m_tree.pageRows = rows; }

 private:
  FakeTreeControl m_tree;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TreeItemContract, FakeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TreeRowContract, FakeHarness);

}  // namespace

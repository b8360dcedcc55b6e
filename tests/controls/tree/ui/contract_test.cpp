// The control on the screen does what every tree control does.
#include "controls/tree/ui/tree_widget.h"
#include "support/qt_test_main.h"
#include "support/tree_control_contract.h"

namespace {

struct QtTreeHarness {
  explicit QtTreeHarness(TreeControlOwner& owner) : tree(owner, "Procedure tree") {
    tree.resize(400, 300);
    tree.show();
  }
  TreeControl& Tree() { return tree; }
  void ShowRows(int rows) {
    const int around = tree.height() - tree.viewport()->height();
    tree.resize(tree.width(), around + rows * tree.RowHeight());
  }
  QtTreeControl tree;
};

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, TreeItemContract, QtTreeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, TreeRowContract, QtTreeHarness);

}  // namespace

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
  // What is painted, read where neither lines nor labels are.
  RowSight See(TreeItem item) {
    const QImage image = tree.viewport()->grab().toImage();
    const QRect bounds =
        tree.RowRect(tree.Items().RowOf(item)).intersected(tree.viewport()->rect());
    const auto at = [&](int x) { return image.pixel(x, bounds.center().y()) & 0xffffff; };
    RowSight sight;
    sight.ground = at(bounds.right() - 100);
    if (at(1) != sight.ground) sight.stripe = at(1);
    sight.box = at(bounds.right() - 4) != sight.ground;
    return sight;
  }
  void Paint() { QApplication::processEvents(); }
  void SetLetters(int percent) {
    QFont letters = QApplication::font();
    letters.setPointSizeF(letters.pointSizeF() * percent / 100);
    tree.setFont(letters);
  }
  QtTreeControl tree;
};

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, TreeItemContract, QtTreeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, TreeRowContract, QtTreeHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, TreeLookContract, QtTreeHarness);

}  // namespace

#include <QContextMenuEvent>
#include <QKeyEvent>

#include "controls/list/ui/row_list_widget.h"
#include "listview/rows/ui/severity_icons.h"
#include "support/qt_test_main.h"
#include "support/row_list_contract.h"

namespace {

struct QtRowListHarness {
  explicit QtRowListHarness(RowListOwner& owner)
      : list(owner, std::make_unique<SeverityIcons>(), "Traces") {
    list.resize(400, 200);
    list.show();
  }
  RowList& List() { return list; }
  void ShowRows(int rows) {
    const int around = list.height() - list.viewport()->height();
    list.resize(list.width(), around + rows * list.RowHeight());
  }
  void Hide() { list.hide(); }
  void RightClickHeader(ListColumn column) {
    auto& header = dynamic_cast<RowHeader&>(list.Header());
    const QPoint at(header.ColumnLeft(column) + 5, header.height() / 2);
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, header.viewport()->mapToGlobal(at));
    QApplication::sendEvent(header.viewport(), &event);
  }
  void ShowAgain(int rows) {
    ShowRows(rows);
    list.show();
  }
  // What is painted, read where a row without columns has nothing written.
  RowSight See(int row) {
    const QImage image = list.viewport()->grab().toImage();
    const QRect bounds = list.RowRect(row).intersected(list.viewport()->rect());
    const auto at = [&](int x) { return image.pixel(x, bounds.center().y()) & 0xffffff; };
    RowSight sight;
    sight.ground = at(bounds.center().x());
    if (at(1) != sight.ground) sight.stripe = at(1);
    // Its first part has neither number nor sign.
    sight.box = at(bounds.right() - 4) != sight.ground;
    return sight;
  }
  void Paint() { QApplication::processEvents(); }
  bool PressDelete(bool shift) {
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Delete, shift ? Qt::ShiftModifier : Qt::NoModifier);
    QApplication::sendEvent(&list, &key);
    return key.isAccepted();
  }
  void SetLetters(int percent) {
    QFont letters = QApplication::font();
    letters.setPointSizeF(letters.pointSizeF() * percent / 100);
    list.setFont(letters);
  }
  QtRowList list;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, RowStateContract, QtRowListHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, RowScrollContract, QtRowListHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, RowColumnContract, QtRowListHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, RowLookContract, QtRowListHarness);

#include <QContextMenuEvent>

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
  QtRowList list;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, RowStateContract, QtRowListHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, RowScrollContract, QtRowListHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, RowColumnContract, QtRowListHarness);

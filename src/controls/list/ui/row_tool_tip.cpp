#include "controls/list/ui/row_tool_tip.h"

#include <QHelpEvent>
#include <QToolTip>

#include "controls/list/ui/row_list_widget.h"
#include "controls/text/ui/row_text.h"
#include "docview/ui/plain_tool_tip.h"

void ShowRowToolTip(QtRowList& list, const RowPainter& painter, const QHelpEvent& event) {
  const int row = list.RowAt(event.pos().y());
  const std::optional<ListColumn> column = list.ColumnAt(event.pos().x());
  if (row == -1 || !column || list.Columns().ShowsIcon(*column)) {
    QToolTip::hideText();
    return;
  }
  const QRect cell = list.CellRect(row, *column);
  const bool cut = painter.CellWidth(row, *column) > cell.width();
  const bool beyond = !list.viewport()->rect().contains(cell.adjusted(0, 0, 0, -cell.height() / 2));
  const QString line = list.CellText(row, *column);
  if (line.isEmpty() || (!cut && !beyond && !line.contains(kLineEndMark))) {
    QToolTip::hideText();
    return;
  }
  const QString text = CellString(list.Owner().RowListText(row, *column));
  QToolTip::showText(event.globalPos(), PlainToolTip(text), list.viewport(), cell);
}

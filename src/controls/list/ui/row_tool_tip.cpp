#include "controls/list/ui/row_tool_tip.h"

#include <QHelpEvent>
#include <QToolTip>

#include "controls/list/ui/row_list_widget.h"
#include "controls/text/ui/row_text.h"
#include "docview/ui/plain_tool_tip.h"

namespace {

// Empty for a cell that shows all of its text.
QString CutTextOf(const QtRowList& list, const RowPainter& painter, int row, ListColumn column) {
  if (list.Columns().ShowsIcon(column)) return {};
  const QRect cell = list.CellRect(row, column);
  const bool cut = painter.CellWidth(row, column) > cell.width();
  const bool beyond = !list.viewport()->rect().contains(cell.adjusted(0, 0, 0, -cell.height() / 2));
  const QString line = list.CellText(row, column);
  if (line.isEmpty() || (!cut && !beyond && !line.contains(kLineEndMark))) return {};
  return CellString(list.Owner().RowListText(row, column));
}

QString NoteOf(const QtRowList& list, int row) {
  const std::optional<RowMark> mark = list.Owner().RowListMark(row);
  return mark ? QString::fromStdString(mark->note) : QString();
}

}  // namespace

void ShowRowToolTip(QtRowList& list, const RowPainter& painter, const QHelpEvent& event) {
  const int row = list.RowAt(event.pos().y());
  const std::optional<ListColumn> column = list.ColumnAt(event.pos().x());
  QStringList parts;
  if (row != -1 && column) parts = {CutTextOf(list, painter, row, *column), NoteOf(list, row)};
  parts.removeAll(QString());
  if (parts.isEmpty()) return QToolTip::hideText();
  QToolTip::showText(event.globalPos(), PlainToolTip(parts.join("\n\n")), list.viewport(),
                     list.CellRect(row, *column));
}

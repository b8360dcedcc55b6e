#include "controls/tree/ui/tree_tool_tip.h"

#include <QHelpEvent>
#include <QToolTip>

#include "controls/tree/ui/tree_widget.h"
#include "docview/ui/plain_tool_tip.h"

void ShowTreeToolTip(QtTreeControl& tree, const QHelpEvent& event) {
  const TreeItem item = tree.ItemAt(event.pos().y());
  const std::optional<RowMark> mark =
      item ? tree.Owner().TreeItemMark(tree.ItemData(item)) : std::nullopt;
  if (!mark || mark->note.empty()) return QToolTip::hideText();
  QToolTip::showText(event.globalPos(), PlainToolTip(QString::fromStdString(mark->note)),
                     tree.viewport(), tree.RowRect(tree.Items().RowOf(item)));
}

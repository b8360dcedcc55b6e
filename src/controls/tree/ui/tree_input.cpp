#include "controls/tree/ui/tree_input.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <utility>

#include "controls/tree/ui/tree_widget.h"

void TreeInput::KeyPress(QKeyEvent& event) {
  const TreeItem selected = m_tree.SelectedItem();
  if (event.modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) {
    event.ignore();
    return;
  }
  if (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) {
    if (selected) m_tree.Owner().OnTreeDoubleClicked();
    return;
  }
  if (OpenOrMove(event.key(), selected)) return;
  const std::int64_t row = TargetOf(event.key(), selected);
  if (row == -1)
    event.ignore();
  else
    MoveTo(m_tree.Items().At(row));
}

bool TreeInput::OpenOrMove(int key, TreeItem selected) {
  const bool open = m_tree.ItemState(selected) & kTreeExpanded;
  switch (key) {
    case Qt::Key_Right:
      if (open)
        MoveTo(m_tree.Walk(selected, TreeStep::FirstChild));
      else
        m_tree.Expand(selected, true);
      return true;
    case Qt::Key_Left:
      if (open)
        m_tree.Expand(selected, false);
      else
        MoveTo(m_tree.Walk(selected, TreeStep::Parent));
      return true;
    case Qt::Key_Plus:
    case Qt::Key_Minus:
      m_tree.Expand(selected, key == Qt::Key_Plus);
      return true;
    default:
      return false;
  }
}

std::int64_t TreeInput::TargetOf(int key, TreeItem selected) const {
  const std::int64_t last = m_tree.Items().Rows() - 1;
  if (last < 0) return -1;
  // Without a selected item the first of these keys selects the first visible one.
  const std::int64_t from = selected ? m_tree.Items().RowOf(selected) : m_tree.TopRow();
  const std::int64_t step = selected ? 1 : 0, page = selected ? m_tree.RowsPerPage() - 1 : 0;
  switch (key) {
    case Qt::Key_Up:
      return std::max<std::int64_t>(from - step, 0);
    case Qt::Key_Down:
      return std::min(from + step, last);
    case Qt::Key_PageUp:
      return std::max<std::int64_t>(from - std::max(page, step), 0);
    case Qt::Key_PageDown:
      return std::min(from + std::max(page, step), last);
    case Qt::Key_Home:
      return 0;
    case Qt::Key_End:
      return last;
    default:
      return -1;
  }
}

void TreeInput::MoveTo(TreeItem item) {
  if (!item) return;
  m_tree.SelectItem(item);
  m_tree.EnsureVisible(item);
}

void TreeInput::MousePress(QMouseEvent& event) {
  const QPoint point = event.position().toPoint();
  const TreeItem item = m_tree.ItemAt(point.y());
  const TreePart part = m_tree.Painter().PartAt(point);
  if (event.button() == Qt::RightButton)
    m_tree.Owner().OnTreeRightPressed(part == TreePart::Label ? item : 0);
  if (event.button() != Qt::LeftButton) return;
  m_down = part != TreePart::Button;
  m_pressed = part == TreePart::Label ? item : 0;
  if (part == TreePart::Button) m_tree.Expand(item, !(m_tree.ItemState(item) & kTreeExpanded));
  if (m_pressed) m_tree.SelectItem(m_pressed);
}

void TreeInput::MouseRelease(QMouseEvent& event) {
  if (event.button() != Qt::LeftButton) return;
  const TreeItem pressed = std::exchange(m_pressed, 0);
  if (std::exchange(m_down, false)) m_tree.Owner().OnTreeClicked(pressed);
}

void TreeInput::OnDelete(TreeItem item) {
  if (m_pressed && (m_pressed == item || m_tree.Items().IsBelow(m_pressed, item))) m_pressed = 0;
}

void TreeInput::DoubleClick(QMouseEvent& event) {
  if (event.button() != Qt::LeftButton) return;
  if (m_tree.Painter().PartAt(event.position().toPoint()) == TreePart::Button) {
    MousePress(event);
    return;
  }
  // The release that follows is not a click.
  m_down = false;
  m_tree.Owner().OnTreeDoubleClicked();
}

void TreeInput::ContextMenu(QContextMenuEvent& event) {
  QPoint position = event.globalPos();
  if (event.reason() == QContextMenuEvent::Keyboard) {
    QPoint point(4, 4);
    if (const TreeItem selected = m_tree.SelectedItem()) {
      m_tree.EnsureVisible(selected);
      const QRect label = m_tree.Painter().LabelRect(selected, m_tree.Items().RowOf(selected));
      point = QPoint(std::max(label.left(), 0), label.bottom());
    }
    position = m_tree.viewport()->mapToGlobal(point);
  }
  m_tree.Owner().OnTreeContextMenu(position.x(), position.y());
}

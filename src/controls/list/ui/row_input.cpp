#include "controls/list/ui/row_input.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "controls/list/ui/row_list_widget.h"

namespace {
constexpr int kAutoScrollMs = 40;
}  // namespace

RowInput::RowInput(QtRowList& list) : m_list(list) {
  m_autoScroll.setInterval(kAutoScrollMs);
  QObject::connect(&m_autoScroll, &QTimer::timeout, &m_autoScroll, [this] { AutoScroll(); });
}

void RowInput::KeyPress(QKeyEvent& event) {
  QScrollBar* across = m_list.horizontalScrollBar();
  switch (event.key()) {
    case Qt::Key_Left:
      across->triggerAction(QAbstractSlider::SliderSingleStepSub);
      return;
    case Qt::Key_Right:
      across->triggerAction(QAbstractSlider::SliderSingleStepAdd);
      return;
    case Qt::Key_Space:
      Space(event.modifiers());
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (event.modifiers() & ~Qt::KeypadModifier) break;
      if (const int row = m_list.States().Focus(); row != -1)
        m_list.Owner().OnRowDoubleClicked(row);
      return;
    case Qt::Key_Delete:
      if (event.modifiers() == Qt::NoModifier && m_list.Owner().OnRowListDelete()) return;
      break;
    default:
      break;
  }
  const int row =
      event.modifiers() & (Qt::AltModifier | Qt::MetaModifier) ? -1 : TargetOf(event.key());
  if (row == -1)
    event.ignore();
  else
    MoveTo(row, event.modifiers());
}

int RowInput::TargetOf(int key) const {
  const int last = m_list.ItemCount() - 1;
  if (last < 0) return -1;
  const int focus = m_list.States().Focus();
  // Without a focus the first of these keys focuses the first visible row.
  const bool none = focus == -1;
  switch (key) {
    case Qt::Key_Up:
      return none ? m_list.TopIndex() : std::max(focus - 1, 0);
    case Qt::Key_Down:
      return none ? m_list.TopIndex() : std::min(focus + 1, last);
    case Qt::Key_PageUp:
      return PageUp(none ? m_list.TopIndex() : focus);
    case Qt::Key_PageDown:
      return PageDown(none ? m_list.TopIndex() : focus);
    case Qt::Key_Home:
      return 0;
    case Qt::Key_End:
      return last;
    default:
      return -1;
  }
}

int RowInput::PageDown(int from) const {
  const int page = m_list.CountPerPage();
  const int lastOnView = m_list.TopIndex() + page - 1;
  const bool onView = from >= m_list.TopIndex() && from < lastOnView;
  // First to the end of the visible page, from there one page further.
  return std::min(onView ? lastOnView : from + std::max(page - 1, 1), m_list.ItemCount() - 1);
}

int RowInput::PageUp(int from) const {
  const int page = m_list.CountPerPage();
  const int firstOnView = m_list.TopIndex();
  const bool onView = from > firstOnView && from < firstOnView + page;
  return std::max(onView ? firstOnView : from - std::max(page - 1, 1), 0);
}

void RowInput::MoveTo(int row, Qt::KeyboardModifiers modifiers) {
  if (modifiers & Qt::ShiftModifier)
    m_list.States().Extend(row, modifiers & Qt::ControlModifier);
  else if (modifiers & Qt::ControlModifier)
    m_list.States().MoveFocus(row);
  else
    m_list.States().Pick(row);
  m_list.EnsureVisible(row);
}

void RowInput::Space(Qt::KeyboardModifiers modifiers) {
  if (const int row = m_list.States().Focus(); row != -1) Select(row, modifiers);
}

void RowInput::Select(int row, Qt::KeyboardModifiers modifiers) {
  if (modifiers & Qt::ShiftModifier)
    m_list.States().Extend(row, modifiers & Qt::ControlModifier);
  else if (modifiers & Qt::ControlModifier)
    m_list.States().Toggle(row);
  else
    m_list.States().Pick(row);
}

void RowInput::MousePress(QMouseEvent& event) {
  const int row = m_list.RowAt(event.position().toPoint().y());
  if (event.button() == Qt::RightButton) SelectForMenu(row);
  if (event.button() != Qt::LeftButton) return;
  m_pressed = row == -1 ? -1 : m_list.States().Base() + row;
  m_drag = Drag::Pressed;
  m_adding = event.modifiers() & Qt::ControlModifier;
  if (row != -1)
    Select(row, event.modifiers());
  else if (!(event.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)))
    m_list.States().ClearSelection();
}

void RowInput::MouseMove(QMouseEvent& event) {
  if (m_drag == Drag::None || m_pressed == -1) return;
  if (!(event.buttons() & Qt::LeftButton)) {
    m_drag = Drag::None;
    m_autoScroll.stop();
    return;
  }
  DragTo(event.position().toPoint());
}

void RowInput::DragTo(const QPoint& point) {
  m_mouse = point;
  const int height = m_list.viewport()->height();
  const bool outside = point.y() < 0 || point.y() >= height;
  if (outside != m_autoScroll.isActive()) outside ? m_autoScroll.start() : m_autoScroll.stop();
  if (m_list.ItemCount() == 0) return;
  const int y = std::clamp(point.y(), 0, m_list.CountPerPage() * m_list.RowHeight() - 1);
  const int row = std::min(m_list.TopIndex() + y / m_list.RowHeight(), m_list.ItemCount() - 1);
  if (m_drag == Drag::Pressed && row == PressedRow()) return;
  m_drag = Drag::Selecting;
  if (row != m_list.States().Focus()) m_list.States().Extend(row, m_adding);
}

void RowInput::AutoScroll() {
  const int below = m_mouse.y() - m_list.viewport()->height();
  // Faster at a greater distance.
  const int rows = 1 + (below >= 0 ? below : -m_mouse.y()) / (2 * m_list.RowHeight());
  m_list.ScrollTo(m_list.TopIndex() + (below >= 0 ? rows : -rows));
  DragTo(m_mouse);
}

void RowInput::MouseRelease(QMouseEvent& event) {
  if (event.button() != Qt::LeftButton) return;
  m_autoScroll.stop();
  const bool clicked = std::exchange(m_drag, Drag::None) == Drag::Pressed;
  if (clicked) m_list.Owner().OnRowClicked(PressedRow());
}

int RowInput::PressedRow() const {
  const std::int64_t row = m_pressed - m_list.States().Base();
  return m_pressed != -1 && row >= 0 && row < m_list.ItemCount() ? static_cast<int>(row) : -1;
}

void RowInput::DoubleClick(QMouseEvent& event) {
  if (event.button() != Qt::LeftButton) return;
  // The release that follows is not a click.
  m_drag = Drag::None;
  m_list.Owner().OnRowDoubleClicked(m_list.RowAt(event.position().toPoint().y()));
}

void RowInput::SelectForMenu(int row) {
  if (row == -1)
    m_list.States().ClearSelection();
  else if (m_list.GetItemState(row) & kRowSelected)
    m_list.States().MoveFocus(row);
  else
    m_list.States().Pick(row);
}

void RowInput::ContextMenu(QContextMenuEvent& event) {
  QPoint position = event.globalPos();
  if (event.reason() == QContextMenuEvent::Keyboard) {
    const int row = m_list.States().Focus();
    QPoint point(RowHeader::kCellMarginPx, RowHeader::kCellMarginPx);
    if (row != -1) {
      m_list.EnsureVisible(row);
      point.setY(m_list.RowRect(row).bottom());
    }
    position = m_list.viewport()->mapToGlobal(point);
  }
  m_list.Owner().OnRowListContextMenu(position.x(), position.y());
}

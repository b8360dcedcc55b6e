#include "controls/tree/ui/tree_widget.h"

#include <QHelpEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <algorithm>
#include <utility>
#include <vector>

#include "controls/text/ui/line_painter.h"
#include "controls/tree/ui/tree_accessible.h"
#include "controls/tree/ui/tree_tool_tip.h"

QtTreeControl::QtTreeControl(TreeControlOwner& owner, const QString& name, QWidget* parent)
    : QAbstractScrollArea(parent), m_owner(owner), m_painter(*this), m_input(*this) {
  InstallTreeAccessible();
  setObjectName("tree");
  setAccessibleName(name);
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  m_rowHeight = TreePainter::RowHeight(fontMetrics());
}

QtTreeControl::~QtTreeControl() = default;

TreeItem QtTreeControl::InsertItem(TreeItem above, TreeItemData word, bool hasChildren) {
  const TreeItem item = m_items.InsertItem(above, word, hasChildren);
  if (above && !(m_items.ItemState(above) & kTreeExpanded)) return item;
  const std::int64_t row = m_items.RowOf(item);
  if (row == -1) return item;
  // The visible rows stay in place.
  if (row < m_top) ++m_top;
  RepaintFrom(row);
  RowsChanged();
  return item;
}

void QtTreeControl::DeleteItem(TreeItem item) {
  m_input.OnDelete(item);
  if (!item) {
    MoveSelection(0);
    m_items.DeleteItem(0);
    m_top = 0;
    m_leftPx = m_widthPx = 0;
    viewport()->update();
  } else {
    if (m_selected == item || (m_selected && m_items.IsBelow(m_selected, item)))
      MoveSelection(SelectionAfterDelete(item));
    const std::int64_t row = m_items.RowOf(item);
    const std::int64_t rows = m_items.RowsOf(item);
    m_items.DeleteItem(item);
    if (row == -1) return;
    if (row < m_top) m_top -= std::min(rows, m_top - row);
    RepaintFrom(row);
  }
  RowsChanged();
}

TreeItem QtTreeControl::SelectionAfterDelete(TreeItem item) const {
  for (const TreeStep step : {TreeStep::NextSibling, TreeStep::PreviousSibling})
    if (const TreeItem heir = Walk(item, step)) return heir;
  return Walk(item, TreeStep::Parent);
}

void QtTreeControl::ItemTextChanged(TreeItem item) {
  if (!item) return;
  const std::int64_t row = m_items.RowOf(item);
  if (row >= m_top && row < m_top + RowsOnView()) viewport()->update(RowRect(row));
}

void QtTreeControl::Expand(TreeItem item, bool open) {
  const unsigned state = ItemState(item);
  if (open == ((state & kTreeExpanded) != 0) || !(state & kTreeHasChildren)) return;
  if (open) {
    if (!m_owner.OnTreeItemExpanding(item) || !m_items.HasItemsBelow(item)) return;
  } else if (m_selected && m_items.IsBelow(m_selected, item)) {
    MoveSelection(item);
  }
  if (!open) m_widthPx = 0;
  m_items.SetExpanded(item, open);
  viewport()->update();
  RowsChanged();
}

// The owner is asked from the top down, but the items are opened from the lower end: see TreeItems.
// False when one stays closed.
bool QtTreeControl::OpenAbove(TreeItem item) {
  std::vector<TreeItem> closed;
  for (item = Walk(item, TreeStep::Parent); item; item = Walk(item, TreeStep::Parent))
    if (!(ItemState(item) & kTreeExpanded)) closed.push_back(item);
  if (closed.empty()) return true;
  for (std::size_t i = closed.size(); i-- > 0;)
    if (!m_owner.OnTreeItemExpanding(closed[i])) return false;
  for (const TreeItem each : closed) m_items.SetExpanded(each, true);
  viewport()->update();
  RowsChanged();
  return true;
}

void QtTreeControl::SelectItem(TreeItem item) {
  if (!item || OpenAbove(item)) MoveSelection(item);
}

void QtTreeControl::MoveSelection(TreeItem item) {
  if (item == m_selected) return;
  const TreeItem before = std::exchange(m_selected, item);
  ItemTextChanged(before);
  ItemTextChanged(item);
  NotifyTreeSelection(*this);
  m_owner.OnTreeSelectionChanged();
}

void QtTreeControl::EnsureVisible(TreeItem item) {
  if (!item || !OpenAbove(item)) return;
  const std::int64_t row = m_items.RowOf(item);
  const std::int64_t page = RowsPerPage();
  if (row < m_top)
    ScrollTo(row);
  else if (row >= m_top + page)
    ScrollTo(row - page + 1);
  // Show at least the beginning of the label.
  const int labelPx = m_painter.LabelX(m_items.Depth(item));
  const int roomPx = viewport()->width();
  if (labelPx < m_leftPx || labelPx > m_leftPx + roomPx * 3 / 4)
    ScrollAcrossTo(std::max(labelPx - roomPx / 4, 0));
}

void QtTreeControl::ShowHit(TreeItem item) {
  const std::int64_t row = item ? m_items.RowOf(item) : -1;
  if (row == -1) return;
  const QRect hit = m_painter.HitRect(item, row);
  ScrollAcrossTo(std::max(m_leftPx + ScrollToHit(hit, viewport()->width(), fontMetrics()), 0));
}

bool QtTreeControl::IsOnScreen(TreeItem item) const {
  const std::int64_t row = item ? m_items.RowOf(item) : -1;
  return row >= m_top && row < m_top + RowsOnView();
}

void QtTreeControl::SetRedraw(bool on) {
  viewport()->setUpdatesEnabled(on);
  if (on) viewport()->update();
}

std::int64_t QtTreeControl::RowsPerPage() const {
  return std::max(viewport()->height() / m_rowHeight, 1);
}

std::int64_t QtTreeControl::RowsOnView() const {
  const std::int64_t partly = (viewport()->height() + m_rowHeight - 1) / m_rowHeight;
  return std::clamp<std::int64_t>(m_items.Rows() - m_top, 0, partly);
}

TreeItem QtTreeControl::ItemAt(int yPx) const {
  return yPx < 0 ? 0 : m_items.At(m_top + yPx / m_rowHeight);
}

QRect QtTreeControl::RowRect(std::int64_t row) const {
  return QRect(0, static_cast<int>(row - m_top) * m_rowHeight, viewport()->width(), m_rowHeight);
}

void QtTreeControl::ScrollTo(std::int64_t top) {
  top = std::clamp<std::int64_t>(top, 0, std::max<std::int64_t>(m_items.Rows() - RowsPerPage(), 0));
  if (top == m_top) return;
  m_top = top;
  viewport()->update();
  RowsChanged();
}

void QtTreeControl::ScrollAcrossTo(int leftPx) {
  if (leftPx == m_leftPx) return;
  m_leftPx = leftPx;
  viewport()->update();
  RowsChanged();
}

void QtTreeControl::RepaintFrom(std::int64_t row) {
  if (row < m_top + RowsOnView() + 1)
    viewport()->update(
        row < m_top ? viewport()->rect()
                    : viewport()->rect().adjusted(0, RowRect(row).top() - m_rowHeight, 0, 0));
}

// A tick may change thousands of rows; the scroll bars are updated once, after it.
void QtTreeControl::RowsChanged() {
  const std::int64_t last = std::max<std::int64_t>(m_items.Rows() - RowsPerPage(), 0);
  if (m_top > last) {
    m_top = last;
    viewport()->update();
  }
  if (std::exchange(m_barsWait, true)) return;
  QMetaObject::invokeMethod(this, &QtTreeControl::UpdateScrollBars, Qt::QueuedConnection);
}

void QtTreeControl::UpdateScrollBars() {
  m_barsWait = false;
  const QScopedValueRollback setting(m_setting, true);
  const std::int64_t page = RowsPerPage();
  QScrollBar* const down = verticalScrollBar();
  down->setRange(0, static_cast<int>(std::max<std::int64_t>(m_items.Rows() - page, 0)));
  down->setPageStep(static_cast<int>(page));
  down->setValue(static_cast<int>(m_top));
  QScrollBar* const across = horizontalScrollBar();
  // Wide rows that are scrolled away still count, so that the scroll bar does not flicker.
  m_widthPx = std::max(m_widthPx, m_painter.WidthOnView());
  across->setRange(0, std::max(m_widthPx - viewport()->width(), m_leftPx));
  across->setPageStep(viewport()->width());
  across->setSingleStep(fontMetrics().averageCharWidth() * 3);
  across->setValue(m_leftPx);
}

void QtTreeControl::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  m_painter.Paint(painter, event->rect());
}

// A lower window, or a new horizontal scroll bar, must not hide the selected item or the end. The
// event has no earlier size if the window was hidden.
void QtTreeControl::resizeEvent(QResizeEvent*) {
  const std::int64_t page = RowsPerPage();
  const std::int64_t end = m_top + std::exchange(m_pageRows, page);
  const std::int64_t selected = m_selected ? m_items.RowOf(m_selected) : -1;
  if (m_top > 0 && end >= m_items.Rows()) ScrollTo(m_items.Rows() - page);
  if (selected >= m_top && selected < end && selected >= m_top + page)
    ScrollTo(selected - page + 1);
  RowsChanged();
}

void QtTreeControl::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange) return;
  m_rowHeight = TreePainter::RowHeight(fontMetrics());
  RowsChanged();
  viewport()->update();
}

void QtTreeControl::scrollContentsBy(int, int) {
  if (m_setting) return;
  ScrollTo(verticalScrollBar()->value());
  ScrollAcrossTo(horizontalScrollBar()->value());
}

void QtTreeControl::keyPressEvent(QKeyEvent* event) {
  m_input.KeyPress(*event);
}
void QtTreeControl::mousePressEvent(QMouseEvent* event) {
  m_input.MousePress(*event);
}
void QtTreeControl::mouseReleaseEvent(QMouseEvent* event) {
  m_input.MouseRelease(*event);
}
void QtTreeControl::mouseDoubleClickEvent(QMouseEvent* event) {
  m_input.DoubleClick(*event);
}
bool QtTreeControl::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QAbstractScrollArea::viewportEvent(event);
  ShowTreeToolTip(*this, *static_cast<QHelpEvent*>(event));
  return true;
}
void QtTreeControl::contextMenuEvent(QContextMenuEvent* event) {
  m_input.ContextMenu(*event);
}
void QtTreeControl::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  ItemTextChanged(m_selected);
  NotifyTreeSelection(*this);
}
void QtTreeControl::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  ItemTextChanged(m_selected);
}

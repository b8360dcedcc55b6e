#include "controls/list/ui/row_list_widget.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "controls/list/ui/row_accessible.h"
#include "controls/list/ui/row_tool_tip.h"
#include "controls/text/ui/line_painter.h"
#include "controls/text/ui/row_text.h"

namespace {
constexpr QPoint kToEndMargin(12, 10);
}  // namespace

QtRowList::QtRowList(RowListOwner& owner, std::unique_ptr<RowIcons> icons, const QString& name,
                     QWidget* parent)
    : QAbstractScrollArea(parent),
      m_owner(owner),
      m_icons(std::move(icons)),
      m_states(
          [this](int row, unsigned oldState, unsigned newState) {
            m_owner.OnRowStateChanged(row, oldState, newState);
            NotifyAccessible(*this, row, oldState, newState);
          },
          [this](int first, int last) { RepaintRows(first, last); }),
      m_header(this, owner, [this](ListColumn column) { return FitWidth(column); }),
      m_painter(*this),
      m_input(*this),
      m_toEnd(this) {
  InstallRowListAccessible();
  setObjectName("rows");
  setAccessibleName(name);
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  // Halves the cost of a text; scripts that need shaping are shaped nevertheless.
  QFont plain;
  plain.setStyleStrategy(QFont::PreferNoShaping);
  setFont(plain);
  m_rowHeight = RowPainter::RowHeight(fontMetrics());
  connect(&m_header, &QHeaderView::geometriesChanged, this, &QtRowList::LayOut);
  connect(&m_header, &QHeaderView::sectionCountChanged, this, &QtRowList::LayOut);
  const auto columnsChanged = [this] {
    UpdateScrollBars();
    viewport()->update();
  };
  connect(&m_header, &QHeaderView::sectionResized, this, columnsChanged);
  connect(&m_header, &QHeaderView::sectionMoved, this, columnsChanged);
  connect(&m_toEnd, &QAbstractButton::clicked, this, [this] { EnsureVisible(ItemCount() - 1); });
  LayOut();
}

QtRowList::~QtRowList() {
  // The header reports its sections while it is destroyed.
  m_header.disconnect(this);
}

void QtRowList::SetItemCount(int rows) {
  const int before = ItemCount();
  m_states.SetCount(rows);
  UpdateScrollBars();
  const int first = std::min(before, ItemCount()), last = std::max(before, ItemCount()) - 1;
  // The text of an empty list disappears, the mark of the end moves.
  if (before == 0 || ItemCount() == 0)
    viewport()->update();
  else
    RepaintRows(first - (m_endMark ? 1 : 0), last + (m_endMark ? 1 : 0));
}

void QtRowList::DeleteRows(int first, int count) {
  if (first < 0 || first >= ItemCount() || count <= 0) return;
  count = std::min(count, ItemCount() - first);
  const int top = TopIndex();
  const int above = std::clamp(top - first, 0, count);
  m_states.Delete(first, count);
  {
    const QScopedValueRollback hold(m_holdPicture, true);
    ScrollTo(top - above);
    UpdateScrollBars();
  }
  const bool sameRows = first == 0 && count <= top && TopIndex() == top - above;
  // A row that has become the first may show another text in cells that depend on the row above.
  if (sameRows)
    RepaintRows(0, 0);
  else
    viewport()->update();
}

void QtRowList::SetItemState(int row, unsigned state, unsigned mask) {
  if (row == -1)
    m_states.SetAll(state, mask);
  else
    m_states.Set(row, state, mask);
}

int QtRowList::TopIndex() const {
  return verticalScrollBar()->value();
}

void QtRowList::EnsureVisible(int row) {
  if (!m_states.Exists(row)) return;
  if (row < TopIndex())
    ScrollTo(row);
  else if (row >= TopIndex() + m_pageRows)
    ScrollTo(row - m_pageRows + 1);
}

void QtRowList::ShowHit(int row, ListColumn column) {
  if (!m_states.Exists(row)) return;
  const QRect hit = m_painter.HitRect(row, column);
  horizontalScrollBar()->setValue(horizontalScrollBar()->value() +
                                  ScrollToHit(hit, viewport()->width(), fontMetrics()));
}

void QtRowList::SetRedraw(bool on) {
  viewport()->setUpdatesEnabled(on);
  if (on) viewport()->update();
}

void QtRowList::ShowEndMark(bool on) {
  m_endMark = on;
  UpdateToEnd();
  viewport()->update();
}

void QtRowList::UpdateToEnd() {
  const bool away = m_endMark && !IsAtEnd();
  if (away) {
    m_toEnd.SetRowsBelow(ItemCount() - TopIndex() - m_pageRows);
    m_toEnd.resize(m_toEnd.sizeHint());
    const QPoint corner = viewport()->geometry().bottomRight();
    m_toEnd.move(corner - QPoint(m_toEnd.width(), m_toEnd.height()) - kToEndMargin);
  }
  m_toEnd.setVisible(away);
}

void QtRowList::ScrollTo(int topRow) {
  verticalScrollBar()->setValue(topRow);
}

QString QtRowList::CellText(int row, ListColumn column) const {
  return CellLine(m_owner.RowListText(row, column));
}

int QtRowList::IconOf(int row) const {
  const int icon = m_owner.RowListIcon(row);
  return icon >= 0 && icon < m_icons->Count() ? icon : -1;
}

int QtRowList::RowAt(int yPx) const {
  if (yPx < 0) return -1;
  const int row = TopIndex() + yPx / m_rowHeight;
  return m_states.Exists(row) ? row : -1;
}

std::optional<ListColumn> QtRowList::ColumnAt(int xPx) const {
  return m_header.ColumnAt(xPx);
}

QRect QtRowList::RowRect(int row) const {
  return QRect(0, (row - TopIndex()) * m_rowHeight, viewport()->width(), m_rowHeight);
}

QRect QtRowList::CellRect(int row, ListColumn column) const {
  const QRect bounds = RowRect(row);
  return QRect(m_header.ColumnLeft(column), bounds.top(), m_header.CellWidth(column),
               bounds.height());
}

bool QtRowList::viewportEvent(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    ShowRowToolTip(*this, m_painter, *static_cast<QHelpEvent*>(event));
    return true;
  }
  return QAbstractScrollArea::viewportEvent(event);
}

void QtRowList::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  painter.setFont(font());
  m_painter.Paint(painter, event->rect());
}

void QtRowList::resizeEvent(QResizeEvent*) {
  LayOut();
}

void QtRowList::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() != QEvent::FontChange && event->type() != QEvent::StyleChange) return;
  m_rowHeight = RowPainter::RowHeight(fontMetrics());
  LayOut();
  viewport()->update();
}

void QtRowList::scrollContentsBy(int dx, int dy) {
  if (dx != 0) m_header.setOffset(horizontalScrollBar()->value());
  if (!m_holdPicture) viewport()->update();
  UpdateToEnd();
  if (dy != 0) m_owner.OnRowListScrolled();
}

void QtRowList::keyPressEvent(QKeyEvent* event) {
  m_input.KeyPress(*event);
}
void QtRowList::mousePressEvent(QMouseEvent* event) {
  m_input.MousePress(*event);
}
void QtRowList::mouseMoveEvent(QMouseEvent* event) {
  m_input.MouseMove(*event);
}
void QtRowList::mouseReleaseEvent(QMouseEvent* event) {
  m_input.MouseRelease(*event);
}
void QtRowList::mouseDoubleClickEvent(QMouseEvent* event) {
  m_input.DoubleClick(*event);
}
void QtRowList::contextMenuEvent(QContextMenuEvent* event) {
  m_input.ContextMenu(*event);
}

void QtRowList::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  viewport()->update();
}

void QtRowList::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  viewport()->update();
}

int QtRowList::FitWidth(ListColumn column) const {
  int width = m_header.StringWidth(m_header.HeaderText(column).toStdString());
  const int last = std::min(TopIndex() + CountPerPage(), ItemCount() - 1);
  for (int row = TopIndex(); row <= last; ++row)
    width = std::max(width, m_painter.CellWidth(row, column));
  return width;
}

void QtRowList::LayOut() {
  const int height = m_header.sizeHint().height();
  if (viewportMargins().top() != height) setViewportMargins(0, height, 0, 0);
  const QRect area = viewport()->geometry();
  m_header.setGeometry(area.left(), area.top() - height, area.width(), height);
  const bool atEnd = IsAtEnd();
  const int pageRows = std::exchange(m_pageRows, std::max(viewport()->height() / m_rowHeight, 1));
  UpdateScrollBars();
  // So that the list continues to follow a stream.
  if (atEnd) ScrollTo(verticalScrollBar()->maximum());
  if (m_pageRows != pageRows) m_owner.OnRowListScrolled();
}

void QtRowList::UpdateScrollBars() {
  verticalScrollBar()->setRange(0, std::max(ItemCount() - m_pageRows, 0));
  verticalScrollBar()->setPageStep(m_pageRows);
  horizontalScrollBar()->setRange(0, std::max(m_header.length() - viewport()->width(), 0));
  horizontalScrollBar()->setPageStep(viewport()->width());
  horizontalScrollBar()->setSingleStep(std::max(fontMetrics().averageCharWidth() * 3, 1));
  UpdateToEnd();
}

void QtRowList::RepaintRows(int first, int last) {
  const int top = TopIndex();
  first = std::max(first, top);
  last = std::min(last, top + viewport()->height() / m_rowHeight);
  if (first > last) return;
  viewport()->update(RowRect(first).united(RowRect(last)));
}

#include "controls/list/ui/row_header.h"

#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyleOptionHeader>
#include <algorithm>
#include <utility>

namespace {

Qt::Alignment AlignmentOf(ColumnAlign align) {
  switch (align) {
    case ColumnAlign::Right:
      return Qt::AlignRight | Qt::AlignVCenter;
    case ColumnAlign::Centre:
      return Qt::AlignCenter;
    case ColumnAlign::Left:
      break;
  }
  return Qt::AlignLeft | Qt::AlignVCenter;
}

}  // namespace

RowHeader::RowHeader(QWidget* parent, RowListOwner& owner, std::function<int(ListColumn)> fitWidth)
    : QHeaderView(Qt::Horizontal, parent), m_owner(owner), m_fitWidth(std::move(fitWidth)) {
  setModel(&m_model);
  setObjectName("header");
  setAccessibleName("Columns");
  setFocusPolicy(Qt::NoFocus);
  setSectionsMovable(true);
  setSectionsClickable(false);
  setHighlightSections(false);
  setTextElideMode(Qt::ElideRight);
  // Not the minimum of a drag: the owner must be asked about narrower widths too.
  setMinimumSectionSize(0);
  connect(this, &QHeaderView::sectionResized, this, &RowHeader::OnSectionResized);
  connect(this, &QHeaderView::sectionMoved, this, [this] { m_moved = m_dragging; });
  connect(this, &QHeaderView::sectionHandleDoubleClicked, this,
          [this](int section) { FitColumn(section); });
}

void RowHeader::InsertColumn(const ListColumnInfo& column, int widthPx) {
  m_columns.push_back(column);
  auto* item = new QStandardItem(QString::fromStdString(column.header));
  item->setTextAlignment(AlignmentOf(column.align));
  const int section = count();
  m_model.setColumnCount(section + 1);
  m_model.setHorizontalHeaderItem(section, item);
  SetColumnWidth(section, widthPx);
}

int RowHeader::ColumnWidth(ListColumn column) const {
  return Exists(column) ? sectionSize(column.Index()) : 0;
}

void RowHeader::SetColumnWidth(ListColumn column, int widthPx) {
  if (!Exists(column) || widthPx < 0) return;
  const int section = column.Index();
  const QScopedValueRollback setting(m_setting, true);
  setSectionHidden(section, widthPx == 0);
  if (widthPx > 0) resizeSection(section, widthPx);
}

ListOrder RowHeader::GetColumnOrder() const {
  ListOrder order;
  for (int place = 0; place < count(); ++place) order.push_back(logicalIndex(place));
  return order;
}

void RowHeader::SetColumnOrder(const ListOrder& order) {
  int place = 0;
  for (const std::int32_t section : PermutationOf(order, count()))
    moveSection(visualIndex(section), place++);
}

// Some columns contain numbers and times, and a font's digits may be wider than its average.
int RowHeader::AverageCharWidth() const {
  return std::max(fontMetrics().averageCharWidth(), fontMetrics().horizontalAdvance(u'0'));
}

int RowHeader::StringWidth(const std::string& text) const {
  if (text.empty()) return 0;
  return fontMetrics().horizontalAdvance(QString::fromStdString(text)) + 2 * kCellMarginPx;
}

int RowHeader::FitWidth(ListColumn column) const {
  return Exists(column) ? std::max(m_fitWidth(column), kNarrowestFitPx) : 0;
}

void RowHeader::AskForMenu() {
  const QPoint below = mapToGlobal(rect().bottomLeft());
  m_owner.OnHeaderContextMenu(std::nullopt, below.x(), below.y());
}

void RowHeader::contextMenuEvent(QContextMenuEvent* event) {
  const int section = logicalIndexAt(event->pos());
  const QPoint at = event->globalPos();
  m_owner.OnHeaderContextMenu(section >= 0 ? std::optional<ListColumn>(section) : std::nullopt,
                              at.x(), at.y());
}

std::optional<ListColumn> RowHeader::Stretched() const {
  for (int place = count() - 1; place >= 0; --place) {
    const int section = logicalIndex(place);
    if (isSectionHidden(section)) continue;
    if (AlignOf(section) == ColumnAlign::Left) return section;
    break;
  }
  return std::nullopt;
}

int RowHeader::CellWidth(ListColumn column) const {
  const int widthPx = ColumnWidth(column);
  return column == Stretched() ? std::max(widthPx, viewport()->width() - ColumnLeft(column))
                               : widthPx;
}

std::optional<ListColumn> RowHeader::ColumnAt(int xPx) const {
  const int section = logicalIndexAt(xPx);
  if (section >= 0) return section;
  return xPx >= 0 ? Stretched() : std::nullopt;
}

std::vector<ListColumn> RowHeader::ShownColumns() const {
  std::vector<ListColumn> columns;
  for (int place = 0; place < count(); ++place)
    if (const int section = logicalIndex(place); !isSectionHidden(section))
      columns.emplace_back(section);
  return columns;
}

QString RowHeader::HeaderText(ListColumn column) const {
  return QString::fromStdString(InfoOf(column).header);
}

void RowHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int section) const {
  QHeaderView::initStyleOptionForIndex(option, section);
  option->text.clear();  // paintSection writes it
}

void RowHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
  painter->save();  // the style does not restore its clip
  QHeaderView::paintSection(painter, rect, section);
  painter->restore();
  const QRect room = rect.adjusted(kCellMarginPx, 0, -kCellMarginPx, 0);
  QString text = HeaderText(section);
  // Checked first in whole pixels, like widths: eliding counts fractions, and would cut the name in
  // a column of exactly its width.
  if (fontMetrics().horizontalAdvance(text) > room.width())
    text = fontMetrics().elidedText(text, Qt::ElideRight, room.width());
  painter->setPen(palette().color(QPalette::ButtonText));
  painter->drawText(room, AlignmentOf(AlignOf(section)) | Qt::TextSingleLine, text);
}

void RowHeader::mousePressEvent(QMouseEvent* event) {
  m_dragging = event->button() == Qt::LeftButton;
  m_resizedSection = -1;
  m_moved = false;
  QHeaderView::mousePressEvent(event);
}

void RowHeader::mouseReleaseEvent(QMouseEvent* event) {
  QHeaderView::mouseReleaseEvent(event);
  if (event->button() != Qt::LeftButton) return;
  m_dragging = false;
  if (const int section = std::exchange(m_resizedSection, -1); section != -1)
    m_owner.OnColumnResized(section, sectionSize(section));
  if (std::exchange(m_moved, false)) m_owner.OnColumnsReordered();
}

void RowHeader::OnSectionResized(int section, int oldWidth, int newWidth) {
  if (!m_dragging || m_setting) return;
  if (m_owner.OnColumnResizing(section, newWidth))
    Resize(section, oldWidth);
  else
    m_resizedSection = section;
}

void RowHeader::FitColumn(ListColumn column) {
  const int width = FitWidth(column);
  if (m_owner.OnColumnResizing(column, width)) return;
  Resize(column.Index(), width);
  m_owner.OnColumnResized(column, width);
}

void RowHeader::Resize(int section, int widthPx) {
  const QScopedValueRollback setting(m_setting, true);
  resizeSection(section, widthPx);
}

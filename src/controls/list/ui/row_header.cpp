#include "controls/list/ui/row_header.h"

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

RowHeader::RowHeader(QWidget* parent, RowListOwner& owner, std::function<int(Column)> fitWidth)
    : QHeaderView(Qt::Horizontal, parent), m_owner(owner), m_fitWidth(std::move(fitWidth)) {
  setModel(&m_model);
  setObjectName("header");
  setAccessibleName("Columns");
  setFocusPolicy(Qt::NoFocus);
  setSectionsMovable(true);
  setSectionsClickable(false);
  setHighlightSections(false);
  setTextElideMode(Qt::ElideRight);
  // Not the minimum of a drag: the owner is to be asked for narrower widths too.
  setMinimumSectionSize(0);
  connect(this, &QHeaderView::sectionResized, this, &RowHeader::OnSectionResized);
  connect(this, &QHeaderView::sectionMoved, this, [this] { m_moved = m_dragging; });
  connect(this, &QHeaderView::sectionHandleDoubleClicked, this,
          [this](int section) { FitColumn(static_cast<Column>(section)); });
}

bool RowHeader::Exists(Column column) const {
  return static_cast<int>(column) >= 0 && static_cast<int>(column) < count();
}

void RowHeader::InsertColumn(const ColumnInfo& column, int widthPx) {
  if (static_cast<int>(column.column) != count() || count() == kColumnCount) return;
  m_columns[Index(column.column)] = column;
  auto* item = new QStandardItem(QString::fromUtf8(column.header));
  item->setTextAlignment(AlignmentOf(column.align));
  const int section = count();
  m_model.setColumnCount(section + 1);
  m_model.setHorizontalHeaderItem(section, item);
  SetColumnWidth(column.column, widthPx);
}

int RowHeader::ColumnWidth(Column column) const {
  return Exists(column) ? sectionSize(static_cast<int>(column)) : 0;
}

void RowHeader::SetColumnWidth(Column column, int widthPx) {
  if (!Exists(column) || widthPx < 0) return;
  const int section = static_cast<int>(column);
  const QScopedValueRollback setting(m_setting, true);
  setSectionHidden(section, widthPx == 0);
  if (widthPx > 0) resizeSection(section, widthPx);
}

ColumnOrder RowHeader::GetColumnOrder() const {
  ColumnOrder order = {};
  for (int place = 0; place < kColumnCount; ++place)
    order[static_cast<std::size_t>(place)] = place < count() ? logicalIndex(place) : place;
  return order;
}

void RowHeader::SetColumnOrder(const ColumnOrder& order) {
  int place = 0;
  for (const std::int32_t section : PermutationOf(order))
    if (section < count()) moveSection(visualIndex(section), place++);
}

// The columns that have no words hold numbers and times, and a font's digits may be wider than its
// average.
int RowHeader::AverageCharWidth() const {
  return std::max(fontMetrics().averageCharWidth(), fontMetrics().horizontalAdvance(u'0'));
}

int RowHeader::StringWidth(const std::string& text) const {
  if (text.empty()) return 0;
  return fontMetrics().horizontalAdvance(QString::fromStdString(text)) + 2 * kCellMarginPx;
}

int RowHeader::FitWidth(Column column) const {
  return Exists(column) ? std::max(m_fitWidth(column), kNarrowestFitPx) : 0;
}

std::optional<Column> RowHeader::Stretched() const {
  for (int place = count() - 1; place >= 0; --place) {
    const int section = logicalIndex(place);
    if (isSectionHidden(section)) continue;
    const auto column = static_cast<Column>(section);
    if (AlignOf(column) == ColumnAlign::Left) return column;
    break;
  }
  return std::nullopt;
}

int RowHeader::CellWidth(Column column) const {
  const int widthPx = ColumnWidth(column);
  return column == Stretched() ? std::max(widthPx, viewport()->width() - ColumnLeft(column))
                               : widthPx;
}

std::optional<Column> RowHeader::ColumnAt(int xPx) const {
  const int section = logicalIndexAt(xPx);
  if (section >= 0) return static_cast<Column>(section);
  return xPx >= 0 ? Stretched() : std::nullopt;
}

std::vector<Column> RowHeader::ShownColumns() const {
  std::vector<Column> columns;
  for (int place = 0; place < count(); ++place)
    if (const int section = logicalIndex(place); !isSectionHidden(section))
      columns.push_back(static_cast<Column>(section));
  return columns;
}

QString RowHeader::HeaderText(Column column) const {
  return QString::fromUtf8(m_columns[Index(column)].header);
}

void RowHeader::initStyleOptionForIndex(QStyleOptionHeader* option, int section) const {
  QHeaderView::initStyleOptionForIndex(option, section);
  option->text.clear();  // paintSection writes it
}

void RowHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
  painter->save();  // the style leaves its clip behind
  QHeaderView::paintSection(painter, rect, section);
  painter->restore();
  const Column column = static_cast<Column>(section);
  const QRect room = rect.adjusted(kCellMarginPx, 0, -kCellMarginPx, 0);
  QString text = HeaderText(column);
  // Asked first in whole pixels, as widths are: cutting counts parts of them, and would cut the
  // name in a column of just its width.
  if (fontMetrics().horizontalAdvance(text) > room.width())
    text = fontMetrics().elidedText(text, Qt::ElideRight, room.width());
  painter->setPen(palette().color(QPalette::ButtonText));
  painter->drawText(room, AlignmentOf(AlignOf(column)) | Qt::TextSingleLine, text);
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
    m_owner.OnColumnResized(static_cast<Column>(section), sectionSize(section));
  if (std::exchange(m_moved, false)) m_owner.OnColumnsReordered();
}

void RowHeader::OnSectionResized(int section, int oldWidth, int newWidth) {
  if (!m_dragging || m_setting) return;
  if (m_owner.OnColumnResizing(static_cast<Column>(section), newWidth))
    Resize(section, oldWidth);
  else
    m_resizedSection = section;
}

void RowHeader::FitColumn(Column column) {
  const int width = FitWidth(column);
  if (m_owner.OnColumnResizing(column, width)) return;
  Resize(static_cast<int>(column), width);
  m_owner.OnColumnResized(column, width);
}

void RowHeader::Resize(int section, int widthPx) {
  const QScopedValueRollback setting(m_setting, true);
  resizeSection(section, widthPx);
}

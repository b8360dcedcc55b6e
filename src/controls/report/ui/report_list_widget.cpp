#include "controls/report/ui/report_list_widget.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyleOptionHeader>
#include <algorithm>

#include "controls/report/ui/report_cells.h"
#include "controls/report/ui/report_model.h"
#include "docview/ui/mixed_color.h"

namespace {

constexpr double kSoft = 0.6;

}  // namespace

QtReportList::QtReportList(ReportListOwner& owner, const QString& spokenName, QWidget* parent)
    : QTreeView(parent), m_owner(owner), m_model(new ReportModel(owner, this)) {
  setAccessibleName(spokenName);
  setModel(m_model);
  setItemDelegate(new ReportCells(this));
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setUniformRowHeights(true);
  setVerticalScrollMode(ScrollPerItem);
  setEditTriggers(NoEditTriggers);
  setSelectionMode(ExtendedSelection);
  header()->setStretchLastSection(false);
  header()->setSectionsMovable(false);
  header()->setSectionsClickable(true);
  header()->setHighlightSections(false);
  connect(header(), &QHeaderView::sectionClicked, this,
          [this](int column) { m_owner.OnReportHeading(column); });
  connect(header(), &QHeaderView::sectionResized, this,
          [this] { m_dragged = m_dragged || !m_layingOut; });
  m_made = true;
}

void QtReportList::InsertColumn(const std::string& heading, ReportAlign align) {
  m_model->AddColumn(QString::fromStdString(heading), align);
  LayOutColumns();
}

// A heading needs more room than a cell: its margins are wider, and the sort mark stands beside it.
int QtReportList::WidthFor(const std::string& text) const {
  QStyleOptionHeader heading;
  heading.initFrom(header());
  // Qt sizes headings for bold letters, in which a style may show some of them.
  QFont bold = header()->font();
  bold.setBold(true);
  heading.fontMetrics = QFontMetrics(bold);
  heading.orientation = Qt::Horizontal;
  heading.sortIndicator = QStyleOptionHeader::SortDown;
  heading.text = QString::fromStdString(text);
  return header()
      ->style()
      ->sizeFromContents(QStyle::CT_HeaderSection, &heading, {}, header())
      .width();
}

// Not before all columns are there.
void QtReportList::LayOutColumns() {
  if (m_dragged) return;
  const QScopedValueRollback<bool> own(m_layingOut, true);
  const bool hasBar = verticalScrollBar()->isVisible();
  const int bar = hasBar ? 0 : verticalScrollBar()->sizeHint().width();
  const std::vector<int> widths = m_owner.ReportWidths(std::max(0, viewport()->width() - bar));
  const int columns = std::min(m_model->columnCount(), static_cast<int>(widths.size()));
  for (int column = 0; column < columns; ++column)
    header()->resizeSection(column, widths[static_cast<std::size_t>(column)]);
}

void QtReportList::ShowSort(int column, bool descending) {
  if (column < 0 || column >= m_model->columnCount()) return;
  header()->setSortIndicatorShown(true);
  header()->setSortIndicator(column, descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void QtReportList::SetItemCount(int rows) {
  m_model->SetRows(rows);
  setAccessibleDescription(rows == 0 ? QString::fromStdString(m_owner.ReportEmptyText())
                                     : QString());
  scrollToTop();
  m_owner.OnReportSelection();
}

int QtReportList::ItemCount() const {
  return m_model->rowCount();
}

void QtReportList::Repaint() {
  m_model->RowsChanged();
}

std::vector<int> QtReportList::SelectedRows() const {
  std::vector<int> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection())
    for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row);
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

bool QtReportList::HasSelection() const {
  return selectionModel()->hasSelection();
}

void QtReportList::selectionChanged(const QItemSelection& selected,
                                    const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  if (m_made) m_owner.OnReportSelection();
}

void QtReportList::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (ItemCount() > 0) return;
  QPainter painter(viewport());
  painter.setPen(Mixed(palette().color(QPalette::Base), palette().color(QPalette::Text), kSoft));
  painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap,
                   QString::fromStdString(m_owner.ReportEmptyText()));
}

void QtReportList::resizeEvent(QResizeEvent* event) {
  QTreeView::resizeEvent(event);
  LayOutColumns();
}

void QtReportList::mouseDoubleClickEvent(QMouseEvent* event) {
  QTreeView::mouseDoubleClickEvent(event);
  if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid())
    m_owner.OnReportDoubleClick();
}

void QtReportList::keyPressEvent(QKeyEvent* event) {
  const int column = event->key() - Qt::Key_1;
  if (event->modifiers() == Qt::ControlModifier && column >= 0 && column < m_model->columnCount())
    return m_owner.OnReportHeading(column);
  QTreeView::keyPressEvent(event);
}

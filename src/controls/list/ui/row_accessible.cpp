#include "controls/list/ui/row_accessible.h"

#include <algorithm>

#include "controls/list/ui/cell_accessible.h"
#include "controls/text/ui/mark_painter.h"

namespace {

QAccessibleInterface* Describe(const QString&, QObject* object) {
  auto* list = qobject_cast<QtRowList*>(object);
  return list ? new RowListAccessible(*list) : nullptr;
}

}  // namespace

void InstallRowListAccessible() {
  QAccessible::installFactory(Describe);  // ignores a factory that it has
}

void NotifyAccessible(QtRowList& list, int row, unsigned oldState, unsigned newState) {
  if (!QAccessible::isActive()) return;
  QAccessibleInterface* table = QAccessible::queryAccessibleInterface(&list);
  QAccessibleInterface* cell = table ? table->tableInterface()->cellAt(row, 0) : nullptr;
  if (!cell) return;
  const auto tell = [cell](QAccessible::Event kind) {
    QAccessibleEvent event(cell, kind);
    QAccessible::updateAccessibility(&event);
  };
  if (newState & ~oldState & kRowFocused && list.hasFocus()) tell(QAccessible::Focus);
  if (newState & ~oldState & kRowSelected) tell(QAccessible::SelectionAdd);
  if (oldState & ~newState & kRowSelected) tell(QAccessible::SelectionRemove);
}

RowListAccessible::RowListAccessible(QtRowList& list)
    : QAccessibleWidget(&list, QAccessible::Table), m_list(list) {}

RowListAccessible::~RowListAccessible() {
  for (const auto& [cell, id] : m_cells) QAccessible::deleteAccessibleInterface(id);
}

void* RowListAccessible::interface_cast(QAccessible::InterfaceType type) {
  if (type == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
  return QAccessibleWidget::interface_cast(type);
}

int RowListAccessible::RowsOnView() const {
  const int partly = (List().viewport()->height() + List().RowHeight() - 1) / List().RowHeight();
  return std::clamp(List().ItemCount() - List().TopIndex(), 0, partly);
}

int RowListAccessible::childCount() const {
  return columnCount() * (RowsOnView() + 1) + (List().ToEnd() ? 1 : 0);
}

QAccessibleInterface* RowListAccessible::child(int index) const {
  const int columns = columnCount();
  if (index < 0 || index >= childCount()) return nullptr;
  if (index == columns * (RowsOnView() + 1))
    return QAccessible::queryAccessibleInterface(List().ToEnd());
  if (index < columns) return Get({-1, index});
  return Get({List().TopIndex() + index / columns - 1, index % columns});
}

int RowListAccessible::indexOfChild(const QAccessibleInterface* child) const {
  if (child && child->object() && child->object() == List().ToEnd()) return childCount() - 1;
  const auto* cell = dynamic_cast<const CellAccessible*>(child);
  if (!cell || cell->table() != this) return -1;
  if (cell->rowIndex() == -1) return cell->columnIndex();
  const int line = cell->rowIndex() - List().TopIndex();
  if (line < 0 || line >= RowsOnView()) return -1;
  return (line + 1) * columnCount() + cell->columnIndex();
}

QAccessibleInterface* RowListAccessible::childAt(int x, int y) const {
  QWidget* const toEnd = List().ToEnd();
  if (toEnd && toEnd->rect().contains(toEnd->mapFromGlobal(QPoint(x, y))))
    return QAccessible::queryAccessibleInterface(toEnd);
  const QPoint point = List().viewport()->mapFromGlobal(QPoint(x, y));
  const std::optional<ListColumn> column = List().ColumnAt(point.x());
  const bool inHeader = point.y() < 0 && point.y() >= -List().Columns().height();
  const int row = List().RowAt(point.y());
  if (!column || (row == -1 && !inHeader)) return nullptr;
  const std::vector<ListColumn> shown = List().Columns().ShownColumns();
  const auto place = std::find(shown.begin(), shown.end(), *column);
  return Get({inHeader ? -1 : row, static_cast<int>(place - shown.begin())});
}

QAccessibleInterface* RowListAccessible::focusChild() const {
  const int row = List().States().Focus();
  return row == -1 || !List().hasFocus() ? nullptr : cellAt(row, 0);
}

QAccessibleInterface* RowListAccessible::cellAt(int row, int column) const {
  if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount()) return nullptr;
  return Get({row, column});
}

int RowListAccessible::rowCount() const {
  return List().ItemCount();
}

int RowListAccessible::columnCount() const {
  return static_cast<int>(List().Columns().ShownColumns().size());
}

QString RowListAccessible::rowDescription(int row) const {
  if (row < 0 || row >= rowCount()) return {};
  QStringList parts;
  for (const ListColumn column : List().Columns().ShownColumns())
    if (const QString name = CellAccessible::NameOf(List(), row, column); !name.isEmpty())
      parts.append(List().Columns().HeaderText(column) + ": " + name);
  if (const std::optional<RowMark> mark = List().Owner().RowListMark(row))
    parts.append(MarkInWords(*mark));
  return parts.join(", ");
}

QString RowListAccessible::columnDescription(int column) const {
  if (column < 0 || column >= columnCount()) return {};
  return List().Columns().HeaderText(
      List().Columns().ShownColumns()[static_cast<std::size_t>(column)]);
}

int RowListAccessible::selectedCellCount() const {
  return static_cast<int>(selectedRows().size()) * columnCount();
}

QList<QAccessibleInterface*> RowListAccessible::selectedCells() const {
  QList<QAccessibleInterface*> cells;
  for (const int row : selectedRows())
    for (int column = 0; column < columnCount(); ++column) cells.append(Get({row, column}));
  return cells;
}

int RowListAccessible::selectedRowCount() const {
  return List().SelectedCount();
}

QList<int> RowListAccessible::selectedRows() const {
  QList<int> rows;
  const int end = List().TopIndex() + RowsOnView();
  for (int row = List().NextItem(List().TopIndex() - 1, kRowSelected); row != -1 && row < end;
       row = List().NextItem(row, kRowSelected))
    rows.append(row);
  return rows;
}

bool RowListAccessible::isRowSelected(int row) const {
  return (List().GetItemState(row) & kRowSelected) != 0;
}

bool RowListAccessible::selectRow(int row) {
  if (!List().States().Exists(row)) return false;
  List().SetItemState(row, kRowSelected, kRowSelected);
  return true;
}

bool RowListAccessible::unselectRow(int row) {
  if (!List().States().Exists(row)) return false;
  List().SetItemState(row, 0, kRowSelected);
  return true;
}

QAccessibleInterface* RowListAccessible::Get(Cell cell) const {
  if (const auto known = m_cells.find(cell); known != m_cells.end())
    return QAccessible::accessibleInterface(known->second);
  if (m_cells.size() >= kKeptCells) Prune();
  auto* self = const_cast<RowListAccessible*>(this);
  auto* made = new CellAccessible(List(), *self, cell.first, cell.second);
  m_cells.emplace(cell, QAccessible::registerAccessibleInterface(made));
  return made;
}

void RowListAccessible::Prune() const {
  const int top = List().TopIndex(), end = top + RowsOnView();
  for (auto entry = m_cells.begin(); entry != m_cells.end();) {
    const int row = entry->first.first;
    if (row == -1 || (row >= top && row < end)) {
      ++entry;
    } else {
      QAccessible::deleteAccessibleInterface(entry->second);
      entry = m_cells.erase(entry);
    }
  }
}

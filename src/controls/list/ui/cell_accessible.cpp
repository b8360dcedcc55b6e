#include "controls/list/ui/cell_accessible.h"

#include "controls/text/ui/row_text.h"

CellAccessible::CellAccessible(QtRowList& list, QAccessibleInterface& table, int row, int place)
    : m_list(list), m_table(table), m_row(row), m_place(place) {}

void* CellAccessible::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::TableCellInterface ? static_cast<QAccessibleTableCellInterface*>(this)
                                                 : nullptr;
}

bool CellAccessible::isValid() const {
  return m_row < m_list.ItemCount() &&
         m_place < static_cast<int>(m_list.Columns().ShownColumns().size());
}

QString CellAccessible::NameOf(const QtRowList& list, int row, ListColumn column) {
  if (list.Columns().ShowsIcon(column)) {
    const int icon = list.IconOf(row);
    return icon == -1 ? QString() : list.Icons().NameOf(icon);
  }
  return list.CellText(row, column).replace(kLineEndMark, u' ');
}

QString CellAccessible::text(QAccessible::Text kind) const {
  if (!isValid()) return {};
  const ListColumn column = m_list.Columns().ShownColumns()[static_cast<std::size_t>(m_place)];
  if (kind == QAccessible::Name || kind == QAccessible::Value)
    return m_row == -1 ? m_list.Columns().HeaderText(column) : NameOf(m_list, m_row, column);
  if (kind == QAccessible::Description && m_row != -1)
    return m_table.tableInterface()->rowDescription(m_row);
  return {};
}

QRect CellAccessible::rect() const {
  if (!isValid()) return {};
  const ListColumn column = m_list.Columns().ShownColumns()[static_cast<std::size_t>(m_place)];
  const QWidget* viewport = m_list.viewport();
  QRect cell = m_list.CellRect(m_row == -1 ? m_list.TopIndex() : m_row, column);
  if (m_row == -1) {
    cell.setTop(-m_list.Columns().height());
    cell.setBottom(-1);
  }
  return cell.translated(viewport->mapToGlobal(QPoint(0, 0)));
}

QAccessible::Role CellAccessible::role() const {
  return m_row == -1 ? QAccessible::ColumnHeader : QAccessible::Cell;
}

QAccessible::State CellAccessible::state() const {
  QAccessible::State state;
  if (!isValid()) {
    state.invalid = true;
    return state;
  }
  state.readOnly = true;
  if (m_row == -1) return state;
  const unsigned row = m_list.GetItemState(m_row);
  state.selectable = state.multiSelectable = state.focusable = true;
  state.selected = (row & kRowSelected) != 0;
  state.focused = (row & kRowFocused) != 0 && m_list.hasFocus();
  state.offscreen = !m_list.viewport()->rect().intersects(m_list.RowRect(m_row));
  return state;
}

bool CellAccessible::isSelected() const {
  return m_row != -1 && (m_list.GetItemState(m_row) & kRowSelected) != 0;
}

QList<QAccessibleInterface*> CellAccessible::columnHeaderCells() const {
  if (m_row == -1) return {};
  QAccessibleInterface* header = m_table.child(m_place);
  return header ? QList<QAccessibleInterface*>{header} : QList<QAccessibleInterface*>{};
}

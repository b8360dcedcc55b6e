#include "controls/tree/ui/tree_accessible.h"

#include "controls/text/ui/mark_painter.h"
#include "controls/text/ui/row_text.h"

namespace {

QAccessibleInterface* Describe(const QString&, QObject* object) {
  auto* tree = qobject_cast<QtTreeControl*>(object);
  return tree ? new TreeAccessible(*tree) : nullptr;
}

}  // namespace

void InstallTreeAccessible() {
  QAccessible::installFactory(Describe);  // ignores a factory that it has
}

void NotifyTreeSelection(QtTreeControl& tree) {
  if (!QAccessible::isActive() || !tree.hasFocus()) return;
  QAccessibleInterface* const described = QAccessible::queryAccessibleInterface(&tree);
  QAccessibleInterface* const row = described ? described->focusChild() : nullptr;
  if (!row) return;
  QAccessibleEvent event(row, QAccessible::Focus);
  QAccessible::updateAccessibility(&event);
}

TreeAccessible::~TreeAccessible() {
  for (const auto& [place, id] : m_rows) QAccessible::deleteAccessibleInterface(id);
}

QAccessibleInterface* TreeAccessible::child(int index) const {
  if (index < 0 || index >= childCount()) return nullptr;
  if (const auto known = m_rows.find(index); known != m_rows.end())
    return QAccessible::accessibleInterface(known->second);
  auto* const made = new TreeRowAccessible(m_tree, *const_cast<TreeAccessible*>(this), index);
  m_rows.emplace(index, QAccessible::registerAccessibleInterface(made));
  return made;
}

int TreeAccessible::indexOfChild(const QAccessibleInterface* child) const {
  const auto* row = dynamic_cast<const TreeRowAccessible*>(child);
  return row && row->parent() == this && row->Place() < childCount() ? row->Place() : -1;
}

QAccessibleInterface* TreeAccessible::childAt(int x, int y) const {
  const QPoint point = m_tree.viewport()->mapFromGlobal(QPoint(x, y));
  return m_tree.viewport()->rect().contains(point) ? child(point.y() / m_tree.RowHeight())
                                                   : nullptr;
}

QAccessibleInterface* TreeAccessible::focusChild() const {
  const TreeItem selected = m_tree.SelectedItem();
  if (!selected || !m_tree.hasFocus()) return nullptr;
  const std::int64_t place = m_tree.Items().RowOf(selected) - m_tree.TopRow();
  return place >= 0 && place < childCount() ? child(static_cast<int>(place)) : nullptr;
}

void* TreeRowAccessible::interface_cast(QAccessible::InterfaceType type) {
  return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                              : nullptr;
}

QString TreeRowAccessible::text(QAccessible::Text kind) const {
  const TreeItem item = Item();
  if (!item) return {};
  if (kind == QAccessible::Name)
    return TreePainter::LineOf(m_tree.Owner().TreeItemText(m_tree.ItemData(item)))
        .replace(kLineEndMark, u' ');
  if (kind == QAccessible::Description) {
    const QString level = QStringLiteral("level %1").arg(m_tree.Items().Depth(item) + 1);
    const std::optional<RowMark> mark = m_tree.Owner().TreeItemMark(m_tree.ItemData(item));
    return mark ? level + ", " + MarkInWords(*mark) : level;
  }
  return {};
}

QRect TreeRowAccessible::rect() const {
  return m_tree.RowRect(Row()).translated(m_tree.viewport()->mapToGlobal(QPoint(0, 0)));
}

QAccessible::State TreeRowAccessible::state() const {
  QAccessible::State state;
  const TreeItem item = Item();
  if (!item) {
    state.invalid = true;
    return state;
  }
  const unsigned bits = m_tree.ItemState(item);
  state.readOnly = state.selectable = state.focusable = true;
  state.expandable = (bits & kTreeHasChildren) != 0;
  state.expanded = (bits & kTreeExpanded) != 0;
  state.collapsed = state.expandable && !state.expanded;
  state.selected = item == m_tree.SelectedItem();
  state.focused = state.selected && m_tree.hasFocus();
  return state;
}

QStringList TreeRowAccessible::actionNames() const {
  return {setFocusAction(), toggleAction()};
}

void TreeRowAccessible::doAction(const QString& action) {
  const TreeItem item = Item();
  if (!item) return;
  if (action == setFocusAction()) m_tree.SelectItem(item);
  if (action == toggleAction()) m_tree.Expand(item, !(m_tree.ItemState(item) & kTreeExpanded));
}

// The tree for assistive technology: its children are the visible rows, each an item with its
// level, whether it is open, and whether it is selected.
//
// Threads  Interface thread.
#pragma once

#include <QAccessibleWidget>
#include <map>

#include "controls/tree/ui/tree_widget.h"

// Makes Qt describe trees by the classes below. May be called more than once.
void InstallTreeAccessible();
// Announces the selected item, if a listener is active and the tree has the keyboard focus.
void NotifyTreeSelection(QtTreeControl& tree);

class TreeAccessible final : public QAccessibleWidget {
 public:
  explicit TreeAccessible(QtTreeControl& tree)
      : QAccessibleWidget(&tree, QAccessible::Tree), m_tree(tree) {}
  ~TreeAccessible() override;

  int childCount() const override { return static_cast<int>(m_tree.RowsOnView()); }
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessibleInterface* focusChild() const override;

 private:
  QtTreeControl& m_tree;
  mutable std::map<int, QAccessible::Id> m_rows;  // those given out, by screen position
};

// The item that is currently in one row of the screen.
class TreeRowAccessible final : public QAccessibleInterface, public QAccessibleActionInterface {
 public:
  TreeRowAccessible(QtTreeControl& tree, QAccessibleInterface& parent, int place)
      : m_tree(tree), m_parent(parent), m_place(place) {}

  void* interface_cast(QAccessible::InterfaceType type) override;
  bool isValid() const override { return Item() != 0; }
  QObject* object() const override { return nullptr; }
  QAccessibleInterface* parent() const override { return &m_parent; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QString text(QAccessible::Text kind) const override;
  void setText(QAccessible::Text, const QString&) override {}
  QRect rect() const override;
  QAccessible::Role role() const override { return QAccessible::TreeItem; }
  QAccessible::State state() const override;

  // Selects; opens or closes.
  QStringList actionNames() const override;
  void doAction(const QString& action) override;
  QStringList keyBindingsForAction(const QString&) const override { return {}; }

  int Place() const { return m_place; }

 private:
  TreeItem Item() const { return m_tree.Items().At(Row()); }
  std::int64_t Row() const { return m_tree.TopRow() + m_place; }

  QtTreeControl& m_tree;
  QAccessibleInterface& m_parent;
  const int m_place;
};

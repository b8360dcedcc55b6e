// The list box on the screen.
//
// Threads  Interface thread.
#pragma once

#include <QListView>

#include "controls/listbox/list_box.h"
#include "controls/listbox/list_box_items.h"
#include "docview/ui/qt_control.h"

class ListBoxModel;

class QtListBox final : public QListView, public ListBox, public QtControl {
 public:
  QtListBox(ListBoxOwner& owner, ListBoxMode mode, const QString& spokenName,
            QWidget* parent = nullptr);

  void SetFocus() override { setFocus(); }
  void SetRedraw(bool on) override { setUpdatesEnabled(on); }
  void ResetContent() override;
  int AddString(const std::string& text, std::uintptr_t itemData) override;
  void DeleteString(int item) override;
  int Count() const override;
  std::string Text(int item) const override;
  std::uintptr_t Data(int item) const override;
  int FindStringExact(const std::string& text) const override;
  int CurSel() const override;
  void SetCurSel(int item) override;
  void SetSel(int item, bool on) override;
  void SelectOnly(std::vector<int> items) override;
  bool IsSelected(int item) const override;
  int SelectedCount() const override;
  int TopIndex() const override;
  int CountPerPage() const override;

  QWidget* Widget() override { return this; }
  int RowHeight() const;

 protected:
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  QModelIndex IndexOf(int item) const;
  void SelectForMenu(const QModelIndex& under);

  ListBoxOwner& m_owner;
  ListBoxModel* m_model;
  bool m_silent = true;  // the selection changes by a call
};

// The pane of a configuration view on the screen.
//
// The object names of its parts: "applications", "connection".
//
// Threads  Interface thread.
#pragma once

#include <QLabel>

#include "config/view/config_pane.h"
#include "controls/listbox/ui/list_box_widget.h"
#include "docview/ui/qt_control.h"

class QtConfigPane final : public QWidget, public ConfigPane, public QtControl {
 public:
  explicit QtConfigPane(ListBoxOwner& owner);

  ListBox& List() override { return *m_list; }
  void SetNote(const std::string& text) override;
  void SetFocus() override { m_list->SetFocus(); }
  QWidget* Widget() override { return this; }

 private:
  QtListBox* m_list;
  QLabel* m_note;
};

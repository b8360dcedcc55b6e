// The window of "Add Application".
//
// The object name of its list: "applications".
//
// Threads  Interface thread.
#pragma once

#include <QPushButton>

#include "config/view/add_app_dialog.h"
#include "controls/listbox/ui/list_box_widget.h"
#include "docview/ui/qt_dialog_face.h"

class AddAppFace final : public QtDialogFace, private ListBoxOwner {
 public:
  AddAppFace(CAddAppDialog& dialog, QWidget* parent);
  void UpdateData() override;

 private:
  void OnListBoxSelection() override;
  void OnListBoxDoubleClick() override { accept(); }
  bool OnListBoxKey(ListBoxKey) override { return false; }
  void OnListBoxContextMenu(int, int) override {}

  CAddAppDialog& m_add;
  QtListBox* m_list;
  QPushButton* m_ok;
};

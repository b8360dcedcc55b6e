// The windows of "Machine Query" and of its browser.
//
// The object names of the controls: "machine", "browse", "machines".
//
// Threads  Interface thread.
#pragma once

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "config/machine_browser.h"
#include "config/machine_dialog.h"
#include "docview/ui/qt_dialog_face.h"

class MachineFace final : public QtDialogFace {
 public:
  MachineFace(CMachineDlg& dialog, QWidget* parent);
  void UpdateData() override;

 protected:
  void OnAccept() override;

 private:
  void Browse();
  CMachineDlg& m_query;
  QLineEdit* m_machine;
};

class MachineBrowserFace final : public QtDialogFace {
 public:
  MachineBrowserFace(CMachineBrowser& dialog, QWidget* parent);
  void UpdateData() override;

 private:
  CMachineBrowser& m_browser;
  QListWidget* m_machines;
  QPushButton* m_ok;
};

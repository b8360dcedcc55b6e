// The window of the progress box.
//
// Threads  Interface thread.
#pragma once

#include <QLineEdit>
#include <QProgressBar>

#include "docview/ui/qt_dialog_face.h"
#include "shell/load_status.h"

class LoadStatusFace : public QtDialogFace {
 public:
  LoadStatusFace(CLoadStatus& dialog, QWidget* parent);
  void UpdateData() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void ShowPath(const QString& path);

  CLoadStatus& m_status;
  QLineEdit* m_path;
  QProgressBar* m_bar;
};

// The window of the box of long work.
//
// Threads  Interface thread.
#pragma once

#include <QProgressBar>

#include "docview/dialogs/work_box.h"
#include "docview/ui/qt_dialog_face.h"

class WorkBoxFace final : public QtDialogFace {
 public:
  WorkBoxFace(CWorkBox& dialog, QWidget* parent);
  void UpdateData() override;

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  CWorkBox& m_box;
  QProgressBar* m_bar;
};

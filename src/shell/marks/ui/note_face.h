// The window of "Note".
//
// Ctrl+Enter is OK, because Enter begins a line. Every control's object name is its id in decimal.
//
// Threads  Interface thread.
#pragma once

#include "docview/ui/qt_dialog_face.h"
#include "shell/marks/note_dialog.h"

class QLineEdit;
class QPlainTextEdit;

class NoteFace final : public QtDialogFace {
 public:
  NoteFace(CNoteDialog& dialog, QWidget* parent);

 protected:
  void OnAccept() override;

 private:
  CNoteDialog& m_note;
  QLineEdit* m_trace;
  QPlainTextEdit* m_text;
};

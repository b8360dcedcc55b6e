// The find box of a text window.
//
// The object names of the controls: "text", "match case", "whole word", "find next".
//
// Threads  Interface thread.
#pragma once

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>

#include "docview/ui/qt_dialog_face.h"
#include "listview/source/find_text_dialog.h"

class FindTextFace final : public QtDialogFace {
 public:
  FindTextFace(FindTextDialog& dialog, QWidget* parent);
  void UpdateData() override;

 private:
  void TakeData();

  FindTextDialog& m_find;
  QLineEdit* m_text;
  QCheckBox* m_matchCase;
  QCheckBox* m_wholeWord;
  QPushButton* m_findNext;
};

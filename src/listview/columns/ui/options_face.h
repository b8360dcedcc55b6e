// The window of the Options dialog.
//
// Every control's object name is its id in decimal.
#pragma once

#include <utility>
#include <vector>

#include "docview/ui/qt_dialog_face.h"
#include "listview/columns/options_dialog.h"

class QCheckBox;
class QGroupBox;
class QLineEdit;

class OptionsFace final : public QtDialogFace {
 public:
  OptionsFace(COptionsDlg& dialog, QWidget* parent);

  void UpdateData() override;

 protected:
  void OnAccept() override;

 private:
  QCheckBox* MakeBox(unsigned id, const QString& text);
  QGroupBox* MakeColumns();
  QGroupBox* MakeDisplay();
  QGroupBox* MakePerformance();

  COptionsDlg& m_dialog;
  std::vector<std::pair<const COptionsDlg::Box*, QCheckBox*>> m_boxes;
  QCheckBox* m_utc = nullptr;
  QCheckBox* m_tint = nullptr;
  QCheckBox* m_remember = nullptr;
  QLineEdit* m_limit = nullptr;
};

// The window of "Modify Trace".
//
// Object names: the controls' ids.
//
// Threads  Interface thread.
#pragma once

#include <array>
#include <utility>
#include <vector>

#include "config/traces/modify_trace_dialog.h"
#include "docview/ui/qt_dialog_face.h"

class QCheckBox;
class QGroupBox;
class QRadioButton;

class ModifyTraceFace final : public QtDialogFace {
 public:
  // Radio buttons by mode and by severity, in their order; then the check boxes.
  static constexpr unsigned kModes = 0x3111, kSeverities = 0x3114, kBoxes = 0x3117;

  ModifyTraceFace(CModifyTraceDialog& dialog, QWidget* parent);
  void UpdateData() override;

 private:
  using Member = int CModifyTraceDialog::*;
  QWidget* MakeModes();
  QGroupBox* MakeSeverities();
  void AddBox(const char* text, Member member);

  CModifyTraceDialog& m_dialog;
  std::array<QRadioButton*, 3> m_modes{}, m_severities{};
  std::vector<std::pair<QCheckBox*, Member>> m_boxes;
};

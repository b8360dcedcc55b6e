// The window of an application's property sheet: the sheet with tabs, and a line for its note.
//
// Threads  Interface thread.
#pragma once

#include "config/pages/config_sheet.h"
#include "docview/sheet/ui/sheet_face.h"

class QLabel;

class ConfigSheetFace final : public TabbedSheetFace {
 public:
  ConfigSheetFace(CConfigPropertySheet& sheet, QWidget* parent);
  void UpdateData() override;

 private:
  CConfigPropertySheet& m_config;
  QLabel* m_note = nullptr;
};

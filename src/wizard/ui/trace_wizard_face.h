// The window of the Trace Wizard: its pages, with a picture at their left where there is room.
//
// Threads  Interface thread.
#pragma once

#include "docview/sheet/ui/sheet_face.h"
#include "wizard/wizard_sheet.h"

class WizardPicture;

class TraceWizardFace final : public WizardFace {
 public:
  TraceWizardFace(CTraceWizardSheet& sheet, QWidget* parent);

  void setVisible(bool visible) override;

 private:
  WizardPicture* m_picture;
};

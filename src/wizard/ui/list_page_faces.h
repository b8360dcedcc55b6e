// The windows of the wizard's pages with lists: Machines, Applications and Traces.
//
// Object names: "machines", "applications", "traces"; the other controls' ids.
//
// Threads  Interface thread.
#pragma once

#include "docview/sheet/ui/page_face.h"
#include "wizard/application_page.h"
#include "wizard/machines_page.h"
#include "wizard/traces_page.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QtListBox;

class WizMachinesFace final : public QtPageFace {
 public:
  WizMachinesFace(CWizMachinesPage& page, QWidget* parent);
  ~WizMachinesFace() override;
  void ShowData() override;
  bool TakeData() override;

 private:
  CWizMachinesPage& m_page;
  QtListBox* m_list;
  QPushButton *m_add, *m_delete;
  QCheckBox* m_identical;
};

class WizApplicationFace final : public QtPageFace {
 public:
  WizApplicationFace(CWizApplicationPage& page, QWidget* parent);
  ~WizApplicationFace() override;
  // The page shows its items by itself.
  void ShowData() override {}
  bool TakeData() override { return true; }

 private:
  CWizApplicationPage& m_page;
};

class WizTracesFace final : public QtPageFace {
 public:
  WizTracesFace(CWizTracesPage& page, QWidget* parent);
  // The list shows its items by itself.
  void ShowData() override;
  bool TakeData() override { return true; }

 private:
  CWizTracesPage& m_page;
  QLabel* m_note;
};

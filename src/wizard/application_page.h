// The page that asks which applications of a machine are configured.
//
// Owner    Borrows its list between Attach and Detach.
// Errors   Message boxes. An application that cannot be reached is not selected any more, and the
//          page stays. So it does when the user cancels.
// Threads  Interface thread; a machine is asked for at most 5 seconds an application. Many
//          applications are long work.
#pragma once

#include "controls/listbox/list_box.h"
#include "wizard/tables/wizard_tables.h"
#include "wizard/wizard_page.h"

class CWizApplicationPage : public CWizPage, public ListBoxOwner {
 public:
  static constexpr unsigned kApplications = 0x4041, kLoad = 0x4042;  // controls

  explicit CWizApplicationPage(Host& host);

  // The face's list, in which several applications can be selected.
  void Attach(ListBox& list) { m_list = &list; }
  void Detach() { m_list = nullptr; }

  void OnSetActive() override;
  int OnWizardBack() override;
  // Takes the selection, and the traces of the selected applications into the table.
  int OnWizardNext() override;
  // Replaces the machine's applications by those of a .tcf file.
  void OnLoad();

  void OnListBoxSelection() override;
  void OnListBoxDoubleClick() override;
  bool OnListBoxKey(ListBoxKey) override { return false; }
  void OnListBoxContextMenu(int, int) override {}

  // The machine that is worked on.
  WizPlace<WizMachines> m_itMachine;
  // Null when there is none.
  WizMachine* Machine() const;

 private:
  void FillList();
  void SetButtons();
  void TakeSelection(WizApps& apps);
  void ShowSelection(WizApps& apps);

  ListBox* m_list = nullptr;
};

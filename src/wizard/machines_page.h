// The page that gathers the machines and connects with them.
//
// Owner    Borrows its list between Attach and Detach.
// Errors   Message boxes, and the reason in the status bar. A machine that cannot be reached is not
//          added.
// Threads  Interface thread; a machine is asked for at most 10 seconds.
#pragma once

#include "controls/listbox/list_box.h"
#include "wizard/tables/wizard_tables.h"
#include "wizard/wizard_page.h"

class CWizMachinesPage : public CWizPage, public ListBoxOwner {
 public:
  // Controls.
  static constexpr unsigned kMachines = 0x4031, kIdentical = 0x4032, kAdd = 0x4033,
                            kDelete = 0x4034;

  explicit CWizMachinesPage(Host& host);

  // The face's list, in which one machine can be selected.
  void Attach(ListBox& list) { m_list = &list; }
  void Detach() { m_list = nullptr; }

  void OnSetActive() override;
  int OnWizardNext() override;
  void OnAdd();
  void OnDelete();
  bool MayDelete() const { return m_mayDelete; }  // the Delete button is enabled

  void OnListBoxSelection() override;
  void OnListBoxDoubleClick() override {}
  bool OnListBoxKey(ListBoxKey key) override;
  void OnListBoxContextMenu(int, int) override {}

  int m_bIdentical;

 private:
  bool IsListed(const std::string& machine) const;
  QuorPtr<trace_Config_i> ConnectWith(const std::string& machine, std::string* why);
  // With its applications; without a connection when it cannot be reached.
  WizMachine Reach(const std::string& machine);
  std::string RestoreConnections();
  void SetMayDelete(bool on);
  void SetButtons();

  ListBox* m_list = nullptr;
  bool m_mayDelete = false;
};

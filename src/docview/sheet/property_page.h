// One page of a property sheet or of a wizard: its state and rules.
//
// Life     OnInitDialog is called when the page is shown for the first time. OnSetActive is called
//          each time the page comes to the front, also the first time. OnKillActive is asked before
//          the page is left. A page that was never shown gets neither OnOK nor OnCancel.
// Data     The members are what the controls show. The sheet copies them into the controls when the
//          page comes to the front and after Apply. A handler that changes them at another time
//          calls UpdateData(false).
// Owner    The sheet borrows its pages; the page borrows its face while the window is open.
// Errors   Operations report by their result; messages are shown where the failure happened.
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/host.h"

class CPropertySheet;

// The window of one page.
class PropertyPageFace {
 public:
  virtual ~PropertyPageFace() = default;
  // Copies the page's state into the controls.
  virtual void ShowData() = 0;
  // Copies what the controls hold into the page's members. False when a control holds what no
  // member can take; the face has said so and put the focus there.
  virtual bool TakeData() = 0;
  // Gives the focus to the control with this id. Does nothing if there is none.
  virtual void SetFocus(unsigned control) = 0;
};

class CPropertyPage {
 public:
  // The results of the three wizard operations: the id of the page to show, or one of these.
  static constexpr int kWizardInOrder = 0, kWizardStay = -1;

  // `id` is what a wizard's operations return to name this page. `caption` is the text of its tab,
  // or the title of the wizard.
  CPropertyPage(Host& host, unsigned id, std::string caption);
  virtual ~CPropertyPage() = default;
  CPropertyPage(const CPropertyPage&) = delete;
  CPropertyPage& operator=(const CPropertyPage&) = delete;

  virtual void OnInitDialog() {}
  virtual void OnSetActive() {}
  // Takes the data. False keeps the page in front; the page has told the user why.
  virtual bool OnKillActive() { return UpdateData(true); }
  // OK or Apply of the sheet. The page no longer counts as modified; one that could not apply its
  // changes calls SetModified, so that Apply can be tried again.
  virtual void OnOK() {}
  virtual void OnCancel() {}

  // The buttons of a wizard. The data have not been taken yet.
  virtual int OnWizardBack() { return kWizardInOrder; }
  virtual int OnWizardNext() { return kWizardInOrder; }
  virtual int OnWizardFinish() { return kWizardInOrder; }  // ends the wizard

  // The page has changes that were not applied: enables the Apply button.
  void SetModified(bool modified = true);
  bool IsModified() const { return m_modified; }
  // Copies the data from the controls into the members (`take`), or from the members into the
  // controls. Without a window it does nothing and returns true.
  bool UpdateData(bool take = true);
  void SetFocus(unsigned control);

  unsigned Id() const { return m_id; }
  const std::string& Caption() const { return m_caption; }
  CPropertySheet* Sheet() const { return m_sheet; }  // null until it is added to one
  Host& GetHost() const { return m_host; }

 private:
  friend class CPropertySheet;
  Host& m_host;
  const unsigned m_id;
  const std::string m_caption;
  CPropertySheet* m_sheet = nullptr;
  PropertyPageFace* m_face = nullptr;
  bool m_modified = false;
  bool m_begun = false;  // shown since the window was opened
};

// The base of the wizard's pages.
//
// Threads  Interface thread.
#pragma once

#include "docview/sheet/property_page.h"

class CTraceWizardSheet;

// What an operation of a page returns to name another page.
enum WizardPageId : int {
  kWelcomePage = 107,
  kNetworkPage = 143,
  kMachinesPage = 144,
  kApplicationPage = 145,
  kTracesPage = 146,
  kFinishPage = 148,
  kSelectPage = 149
};

class CWizPage : public CPropertyPage {
 public:
  CWizPage(Host& host, WizardPageId id, std::string caption)
      : CPropertyPage(host, static_cast<unsigned>(id), std::move(caption)) {}

 protected:
  // REQUIRES: the page was added to the sheet.
  CTraceWizardSheet& Wizard() const;
  // A box that only has to be read.
  void Say(const std::string& text, BoxIcon icon = BoxIcon::None) const {
    GetHost().MessageBox({text, icon, BoxButtons::Ok});
  }
};

// The windows of the wizard's pages without lists: Welcome, Mode, Networking and Finish.
//
// Object names: the controls' ids.
//
// Threads  Interface thread.
#pragma once

#include <vector>

#include "docview/sheet/ui/page_face.h"
#include "wizard/finish_page.h"
#include "wizard/network_page.h"
#include "wizard/select_page.h"
#include "wizard/welcome_page.h"

class QCheckBox;
class QRadioButton;

class WizWelcomeFace final : public QtPageFace {
 public:
  WizWelcomeFace(CWizWelcomePage& page, QWidget* parent);
  void ShowData() override;
  bool TakeData() override;

 private:
  CWizWelcomePage& m_page;
  QCheckBox* m_autoStart;
};

// A page that asks for one of several things.
class WizChoiceFace : public QtPageFace {
 public:
  void ShowData() override;
  bool TakeData() override;

 protected:
  // `chosen`, a member of the page, is the place of the chosen one.
  WizChoiceFace(int& chosen, QWidget* parent) : QtPageFace(parent), m_chosen(chosen) {}
  std::vector<QRadioButton*> m_choices;

 private:
  int& m_chosen;
};

class WizSelectFace final : public WizChoiceFace {
 public:
  WizSelectFace(CWizSelectPage& page, QWidget* parent);
};

class WizNetworkFace final : public WizChoiceFace {
 public:
  WizNetworkFace(CWizNetworkPage& page, QWidget* parent);
};

class WizFinishFace final : public QtPageFace {
 public:
  WizFinishFace(CWizFinishPage& page, QWidget* parent);
  void ShowData() override {}
  bool TakeData() override { return true; }
};

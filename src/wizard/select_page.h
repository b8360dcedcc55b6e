// The page that asks for the task. Two of the three are done when the user leaves it.
//
// Threads  Interface thread.
#pragma once

#include <optional>

#include "wizard/wizard_page.h"

class CMultiDocTemplate;

class CWizSelectPage : public CWizPage {
 public:
  // Controls: a radio button for each task, kTask + its number.
  static constexpr unsigned kTask = 0x4011;
  enum Task : int { kNewSetup = 0, kLoadConfiguration = 1, kLoadTraces = 2 };

  explicit CWizSelectPage(Host& host);

  void OnSetActive() override;
  int OnWizardNext() override;

  int m_nTask = kNewSetup;

 private:
  bool LoadConfiguration();
  bool LoadTraces();
  bool Open(CMultiDocTemplate& kind, const std::string& path);
  std::optional<std::string> AskFor(const CMultiDocTemplate& kind) const;
};

// "Find": the text to search for, and the options.
//
// OK compiles the pattern for the whole program and stores the settings. An invalid pattern leaves
// the dialog open and the settings as they were.
//
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/dialogs/dialog.h"

class CFindDialog : public CDialog {
 public:
  // Ids of the controls.
  static constexpr unsigned kText = 1079, kIgnoreCase = 1081, kBackward = 1126,
                            kRegularExpression = 1127, kWordSearch = 1128;
  static const char* Title() { return "Find"; }
  const char* HelpTopic() const override { return "find"; }

  // Shows the last searched text.
  explicit CFindDialog(Host& host);

  void OnInitDialog() override;
  // The edit's text has changed.
  void OnChangeText(const std::string& text);
  bool OkEnabled() const { return m_okEnabled; }
  // REQUIRES: the members hold what the controls show.
  void OnOK() override;

  std::string searchText;
  int ignoreCase;
  int backward;
  int regularExpression;
  int wordSearch;

 private:
  bool m_okEnabled = false;
};

// "Modify Trace": asks for a combination of settings.
//
// Off and Maximum are shown as fixed pictures of all controls; Custom starts from the picture that
// was shown before.
//
// Threads  Interface thread.
#pragma once

#include "docview/dialogs/dialog.h"

class CModifyTraceDialog : public CDialog {
 public:
  static constexpr char kCaption[] = "Modify Trace";
  enum Mode { kOff = 0, kCustom = 1, kMaximum = 2 };
  const char* HelpTopic() const override { return "configuration"; }

  CModifyTraceDialog(Host& host, unsigned settings);

  void OnInitDialog() override { UpdateControls(); }
  // A mode radio button. The face then shows the members.
  void OnMode(int mode);
  bool CustomEnabled() const { return m_nMode == kCustom; }
  unsigned GetDialogSettings() const;  // after OK

  // What the controls show. A control that the user operates sets its member at once.
  int m_nMode;
  int m_nSeverity = -1;  // 0 errors only, 1 warnings and errors, 2 all three; -1 none
  int m_bDeveloper = 0, m_bVerbose = 0, m_bLocation = 0, m_bStack = 0;

 private:
  void SetFromSettings(unsigned settings);
  void UpdateControls();
};

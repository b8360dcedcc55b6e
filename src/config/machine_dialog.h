// "Machine Query": asks for the name of a machine. Monitors, configurations and the wizard use it.
//
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/dialogs/dialog.h"

class CMachineDlg : public CDialog {
 public:
  static constexpr char kCaption[] = "Machine Query";
  const char* HelpTopic() const override { return m_helpTopic; }
  static constexpr char kDefaultHint[] = "(default is the local machine)";

  // Starts with the local machine, whatever was asked before.
  CMachineDlg(Host& host, std::string prompt, const char* helpTopic = "monitor");

  // The face passes the content of the edit field before it calls either of these.
  void SetMachine(std::string text) { m_strMachine = std::move(text); }
  // An empty field means the local machine.
  void OnOK() override;
  // Lets the user choose among the machines that this one knows. Without a choice the field keeps
  // its text.
  void OnBrowse();

  std::string m_strMachine;  // the text of the edit field; not empty after OK
  const std::string m_strPrompt;

 private:
  const char* const m_helpTopic;
};

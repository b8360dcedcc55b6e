// What the wizard asks of the program around it.
//
// Owner    The program outlives the wizard.
// Threads  Interface thread.
#pragma once

#include "config/document/config_doc.h"
#include "docview/doc_template.h"

class WizardProgram {
 public:
  virtual CMultiDocTemplate* ConfigTemplate() const = 0;
  virtual CMultiDocTemplate* FileTemplate() const = 0;
  // How machines are reached.
  virtual const ConfigClient& Client() const = 0;
  // Shows a monitor of this machine. One that cannot connect leaves no window and no message.
  virtual void OpenLocalMonitor() = 0;
  // Says in the status bar why a file did not open: what no message box has said.
  virtual void NoteNotOpened(const std::string& path) = 0;

 protected:
  ~WizardProgram() = default;
};

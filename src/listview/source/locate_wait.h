// "Locating source...": the box of a search that does not end. It stays until the user cancels it
// or leaves the program. It blocks no window, so monitors and other work continue.
//
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/dialogs/dialog.h"

class LocateWait : public CDialog {
 public:
  static constexpr char kCaption[] = "Tessera";
  static constexpr char kText[] = "Locating source...";
  static constexpr char kRecordedLabel[] = "Recorded path:";
  static constexpr char kLocatedLabel[] = "Chosen file:";
  // Says which file would be accepted; the recorded file's name follows.
  static constexpr char kReason[] =
      "The chosen file has another name than the recorded one, so that nothing can be learned of "
      "where these files lie. Press Cancel, and choose the file that is named ";

  // The two paths that have no file name in common.
  LocateWait(Host& host, std::string recorded, std::string located);
  ~LocateWait() override;

  void OnOK() override {}  // Enter does not end it

  // Ends the current wait, like its Cancel; false when there is none. The caller of the wait is
  // still on the stack: destroy its document later, by a posted call.
  static bool CancelStanding();

  const std::string m_recorded, m_located;
  std::string Reason() const;  // the whole sentence

 private:
  LocateWait* const m_before;
};

// "Locating source...": the box of a search that has no end. It stands until the user cancels it or
// leaves the program; it blocks no window, so that monitors go on and other work can be done.
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
  // Which file would do: the recorded one's name follows.
  static constexpr char kReason[] =
      "The chosen file has another name than the recorded one, so that nothing can be learned of "
      "where these files lie. Press Cancel, and choose the file that is named ";

  // The two paths that have no file name in common.
  LocateWait(Host& host, std::string recorded, std::string located);
  ~LocateWait() override;

  void OnOK() override {}  // Enter does not end it

  // Ends the wait that stands, as its Cancel does; false when there is none. Whoever called it is
  // still on the stack: what would destroy its document has to come later, by a post.
  static bool CancelStanding();

  const std::string m_recorded, m_located;
  std::string Reason() const;  // the whole sentence

 private:
  LocateWait* const m_before;
};

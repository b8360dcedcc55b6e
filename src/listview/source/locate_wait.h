// "Locating source...": the box of a search that has no end. It stands until the user cancels it or
// leaves the program; it blocks no window, so that monitors go on and other work can be done.
//
// Threads  Interface thread.
#pragma once

#include "docview/dialog.h"

class LocateWait : public CDialog {
 public:
  static constexpr char kCaption[] = "Tessera";
  static constexpr char kText[] = "Locating source...";

  explicit LocateWait(Host& host);
  ~LocateWait() override;

  void OnOK() override {}  // Enter does not end it

  // Ends the wait that stands, as its Cancel does; false when there is none. Whoever called it is
  // still on the stack: what would destroy its document has to come later, by a post.
  static bool CancelStanding();

 private:
  LocateWait* const m_before;
};

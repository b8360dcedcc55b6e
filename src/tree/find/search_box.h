// The box of a search that takes long: says so, and offers Cancel. The search works in pieces of a
// few milliseconds on a timer of the box.
//
// Threads  Interface thread.
#pragma once

#include <functional>

#include "docview/dialog.h"

class CSearchBox : public CDialog {
 public:
  static const char* Title() { return "Find"; }
  static const char* Message() { return "Searching..."; }

  // `work` does a piece and gives true when the search is done; then the box ends with OK.
  CSearchBox(Host& host, std::function<bool()> work);
  ~CSearchBox() override;

  void OnInitDialog() override;
  void OnOK() override {}  // only the search ends it that way

 private:
  void OnTick();
  void StopTimer();
  std::function<bool()> m_work;
  TimerId m_timer = 0;
};

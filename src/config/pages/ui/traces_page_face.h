// The window of the Traces page.
//
// Threads  Interface thread.
#pragma once

#include "config/pages/traces_page.h"
#include "docview/sheet/ui/page_face.h"

class TracesPageFace final : public QtPageFace {
 public:
  TracesPageFace(CAppTraceCfgPropertyPage& page, QWidget* parent);
  // The list shows its items by itself.
  void ShowData() override {}
  bool TakeData() override { return true; }
};

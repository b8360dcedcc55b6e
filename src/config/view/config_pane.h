// What a configuration view fills: the list of applications and, below it, a line about the
// connection.
//
// Owner    The view owns the pane, and with it the list. The list's owner outlives both.
// Threads  Interface thread.
//
// The Qt class (config/view/ui) and a fake (tests/support) pass the same contract test.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "controls/listbox/list_box.h"

class ConfigPane : public ViewControl {
 public:
  virtual ListBox& List() = 0;
  // Empty: the line takes no room.
  virtual void SetNote(const std::string& text) = 0;
};

using ConfigPaneMaker = std::function<std::unique_ptr<ConfigPane>(ListBoxOwner&)>;

// The menus, the tool bar, the accelerators and the status panes, as data. The windows are built
// from it, with one action per command id; tests and the guide read it too.
//
// Shape    A menu text has "&" before its mnemonic and, after "\t", the key that is shown. The
//          accelerator determines the key that works. A prompt is the status bar's text, then "\n",
//          then the tool tip.
// Threads  Constant data.
#pragma once

#include <string>
#include <vector>

#include "docview/commands/command_ids.h"
#include "shell/menus/resource_ids.h"

struct MenuItem {
  unsigned id = 0;  // 0: a separator; ID_FILE_MRU_FILE1: replaced by the recent files
  std::string text;
  std::vector<MenuItem> items = {};  // not empty: the item opens a menu of these;
                                     // in ID_VIEW_PROFILES behind those of the user
};

struct MenuPopup {
  std::string title;  // "&File"
  std::vector<MenuItem> items;
  bool windowList = false;  // the open windows follow the items
};

// The menu of a resource: bars 128 to 131 and 145, pop-ups 143 and 144 (one nameless entry each).
const std::vector<MenuPopup>& MenuOf(unsigned resource);

// An item of it, with what is inside.
MenuItem ItemIn(unsigned resource, unsigned id);

std::string PromptOf(unsigned id);   // first half
std::string ToolTipOf(unsigned id);  // second half

// Button ids in order, 0 for a separator.
const std::vector<unsigned>& ToolBarButtons();

struct Accelerator {
  const char* key;  // "Ctrl+A"
  unsigned id;
};
const std::vector<Accelerator>& Accelerators();

struct StatusIndicator {
  unsigned id;
  const char* text;  // determines the width of the pane
};
const std::vector<StatusIndicator>& StatusIndicators();

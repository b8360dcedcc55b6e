// Resource ids of the shell and the panes of its status bar.
#pragma once

enum ShellResource : unsigned {
  IDR_ABOUT = 100,
  IDR_MAINFRAME = 128,
  IDR_TRACEFILE = 129,
  IDR_MONITOR = 130,
  IDR_CONFIG = 131,
  IDR_CONFIG_POPUP = 143,
  IDR_TRACE_POPUP = 144,
  IDR_SOURCE = 145,
  IDD_LOADSTATUS = 152,
};

// Status bar panes, in order from the left.
enum StatusPane : unsigned {
  kPaneMessage = 0,
  kPaneZone = 59145,
  kPaneCaps = 59137,
  kPaneNum = 59138,
  kPaneScroll = 59139,
  kPaneFiltered = 59144,
  kPaneRowCount = 59143,
};

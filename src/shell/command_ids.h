// Command and resource ids of the shell. Those of trace documents stand in documents/trace_doc.h,
// the framework's in docview/command.h.
#pragma once

enum ShellCommand : unsigned {
  ID_VIEW_OPTIONS = 32800,
  ID_FILE_NEWCONFIG = 32807,
  ID_CONFIG_ADD = 32811,
  ID_CONFIG_DELETE = 32812,
  ID_FILE_NEWMONITOR = 32816,
  ID_FILE_WIZARD = 32823,
  ID_WINDOW_TABS = 32901,
};

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
  kPaneCaps = 59137,
  kPaneNum = 59138,
  kPaneScroll = 59139,
  kPaneFiltered = 59144,
  kPaneRowCount = 59143,
};

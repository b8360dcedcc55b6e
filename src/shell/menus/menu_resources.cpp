#include "shell/menus/menu_resources.h"

#include <algorithm>
#include <map>
#include <span>

#include "docview/commands/command_ids.h"
#include "shell/menus/submenus.h"

namespace {

// The menus that contain an item.
enum Menus : unsigned {
  kMain = 1,
  kFile = 2,
  kMonitor = 4,
  kConfig = 8,
  kSource = 16,
  kConfigPopup = 32,
  kTracePopup = 64,
  kTraces = kFile | kMonitor,
  kDocuments = kTraces | kConfig | kSource,
  kBars = kMain | kDocuments,
};

unsigned MenuBit(unsigned resource) {
  switch (resource) {
    case IDR_MAINFRAME:
      return kMain;
    case IDR_TRACEFILE:
      return kFile;
    case IDR_MONITOR:
      return kMonitor;
    case IDR_CONFIG:
      return kConfig;
    case IDR_SOURCE:
      return kSource;
    case IDR_CONFIG_POPUP:
      return kConfigPopup;
    case IDR_TRACE_POPUP:
      return kTracePopup;
    default:
      return 0;
  }
}

// A command's text in some of the menus; a command whose text differs between menus has several
// rows.
struct CommandText {
  unsigned id;
  unsigned menus;
  const char* text;
  const char* prompt;
};

const CommandText kTexts[] = {
    {ID_FILE_NEWMONITOR, kBars, "Trace &Monitor...\tAlt+M",
     "Open a new trace monitor window\nNew Monitor"},
    {ID_FILE_NEWCONFIG, kBars, "Trace &Configuration...\tAlt+C",
     "Create a new window for configuring traces\nNew Config"},
    {ID_FILE_OPEN, kBars, "&Open\tCtrl+O", "Open an existing file\nOpen"},
    {ID_FILE_CLOSE, kDocuments, "&Close\tCtrl+F4", "Close the active document\nClose"},
    {ID_FILE_WIZARD, kBars, "Trace &Wizard...\tCtrl+W", "Start the Wizard\nWizard"},
    {ID_FILE_SAVECOPY, kFile, "&Save As...\tCtrl+S",
     "Save a copy of the current trace list in a different file\nSave Copy"},
    {ID_FILE_SAVE, kMonitor, "&Save As\tCtrl+S", "Save the active document\nSave"},
    {ID_FILE_SAVE, kConfig, "&Save\tCtrl+S", "Save the active document\nSave"},
    {ID_FILE_SAVE, kSource, "&Save As...\tCtrl+S", "Save the active document\nSave"},
    {ID_FILE_SAVE_AS, kConfig, "Save &As...", "Save the active document with a new name\nSave As"},
    {ID_FILE_CAPTURE, kMonitor, "Capture Outpu&t...", "Save trace output to a file as it comes in"},
    {ID_FILE_EXPORT, kTraces, "&Export...", "Export traces to a text file.\nExport"},
    {ID_FILE_PRINT, kDocuments, "&Print...\tCtrl+P", "Print the active document\nPrint"},
    {ID_FILE_PRINT_PREVIEW, kDocuments, "Print Pre&view", "Display full pages\nPrint Preview"},
    {ID_FILE_PRINT_SETUP, kDocuments, "P&rint Setup...",
     "Change the printer and printing options\nPrint Setup"},
    {ID_FILE_MRU_FILE1, kBars, "Recent File", ""},
    {ID_APP_EXIT, kBars, "E&xit\tAlt+F4", "Quit the application; prompts to save documents\nExit"},
    {ID_EDIT_COPY, kTraces | kSource, "&Copy\tCtrl+C",
     "Copy the selection and put it on the Clipboard\nCopy"},
    {ID_EDIT_COPYROWSAS, kTraces, "Copy Row&s As", ""},
    {ID_EDIT_COPYTEXT, kTraces, "&Text", "Copy the selected traces as aligned text\nText"},
    {ID_EDIT_COPYTABS, kTraces, "Ta&bs", "Copy the selected traces with tabs between cells\nTabs"},
    {ID_EDIT_COPYCSV, kTraces, "&CSV", "Copy the selected traces as comma-separated text\nCSV"},
    {ID_EDIT_COPYJSON, kTraces, "&JSON", "Copy the selected traces as JSON objects\nJSON"},
    {ID_EDIT_COPYFILTER, kTraces, "&Filter Text",
     "Copy a filter text that shows the selected traces\nFilter Text"},
    {ID_EDIT_COPYROWS, kTraces, "As &Last Time\tCtrl+Shift+C",
     "Copy the selected traces in the form of the last time\nCopy Rows"},
    {ID_EDIT_COPYHEADINGS, kTraces, "With &Headings", "Copy column names too\nHeadings"},
    {ID_EDIT_LISTHITS, kTraces, "List &Hits\tCtrl+Shift+F",
     "List all hits of the last search beside the rows\nHits"},
    {ID_EDIT_FIND, kFile, "&Find\tCtrl+F", "Find the specified text\nFind"},
    {ID_EDIT_FIND, kMonitor | kSource | kTracePopup, "&Find...\tCtrl+F",
     "Find the specified text\nFind"},
    {ID_EDIT_FINDNEXT, kTraces | kTracePopup, "Find Ne&xt\tF3", "Find the next match\nNext"},
    {ID_EDIT_MARK, kTraces, "&Mark\tCtrl+D",
     "Mark the selected traces in the colour used last, or take their marks away\nMark"},
    {ID_EDIT_MARKCOLOUR, kTraces, "Mark Colo&ur", ""},
    {ID_EDIT_MARK1, kTraces, "&1 Red\tCtrl+Alt+1", ""},
    {ID_EDIT_MARK1 + 1, kTraces, "&2 Orange\tCtrl+Alt+2", ""},
    {ID_EDIT_MARK1 + 2, kTraces, "&3 Yellow\tCtrl+Alt+3", ""},
    {ID_EDIT_MARK1 + 3, kTraces, "&4 Green\tCtrl+Alt+4", ""},
    {ID_EDIT_MARK1 + 4, kTraces, "&5 Teal\tCtrl+Alt+5", ""},
    {ID_EDIT_MARK1 + 5, kTraces, "&6 Blue\tCtrl+Alt+6", ""},
    {ID_EDIT_MARK1 + 6, kTraces, "&7 Violet\tCtrl+Alt+7", ""},
    {ID_EDIT_MARK1 + 7, kTraces, "&8 Pink\tCtrl+Alt+8", ""},
    {ID_EDIT_MARK1 + 8, kTraces, "&9 Grey\tCtrl+Alt+9", ""},
    {ID_EDIT_NOTE, kTraces, "&Note...\tCtrl+Shift+D", "Write a note at the trace\nNote"},
    {ID_EDIT_NEXTMARK, kTraces, "N&ext Mark\tF2",
     "Go to the next trace with a mark or a note\nNext Mark"},
    {ID_EDIT_PREVIOUSMARK, kTraces, "Pre&vious Mark\tShift+F2",
     "Go to the trace with a mark or a note before\nPrevious Mark"},
    {ID_EDIT_CLEAR_ALL, kTraces | kConfig | kConfigPopup | kTracePopup, "C&lear",
     "Erase everything\nErase All"},
    {ID_VIEW_OPTIONS, kBars, "&Options...", "Change Option Settings\nOptions"},
    {ID_VIEW_COLOURS, kTraces, "Colour &Rules...",
     "Choose the colours of rows by filter texts\nColour Rules"},
    {ID_CONFIG_ADD, kConfig | kConfigPopup, "&Add Application\tCtrl+A",
     "Add a new application to configuration list\nAdd App"},
    {ID_CONFIG_DELETE, kConfig | kConfigPopup, "&Delete Application\tDel",
     "Remove the selected application from the configuration list\nDel App"},
    {ID_VIEW_PROPERTIES, kTraces | kConfig | kConfigPopup | kTracePopup, "&Properties...\tAlt+P",
     "Bring up properties dialog for the selected application\nProperties"},
    {ID_VIEW_TOOLBAR, kBars, "&Tool Bar", "Show or hide the tool bar\nToggle Tool Bar"},
    {ID_VIEW_STATUS_BAR, kBars, "&Status Bar", "Show or hide the status bar\nToggle Status Bar"},
    {ID_VIEW_PROC, kTraces | kTracePopup, "Proc &View\tCtrl+F6",
     "Toggle between procedure tree view and trace list view\nProcedure View"},
    {ID_VIEW_GOTOSOURCE, kTraces | kTracePopup, "&Goto Source\tCtrl+G",
     "View source file line that issued the trace\nSource"},
    {ID_VIEW_SYNCHRONIZE, kFile | kTracePopup, "Synchroni&ze\tAlt+S",
     "Synchronize current trace in all views\nSynchronize"},
    {ID_VIEW_SYNCHRONIZE, kMonitor, "Synchroni&ze\tAlt-S",
     "Synchronize current trace in all views\nSynchronize"},
    {ID_VIEW_FILTER, kTraces | kTracePopup, "Fi&lter...", ""},
    {ID_VIEW_FITCOLUMNS, kTraces, "Fit &Columns",
     "Make each column as wide as what it shows\nFit Columns"},
    {ID_VIEW_HEADERMENU, kTraces, "Column &Menu", "Show and hide columns\nColumn Menu"},
    {ID_VIEW_FILTERTEXT, kTraces, "Filter Te&xt\tCtrl+L",
     "Filter by a text in a line above the traces\nFilter Text"},
    {ID_VIEW_FILTERBACK, kTraces, "Filter &Back\tAlt+Left",
     "Go back to the filter text before\nFilter Back"},
    {ID_VIEW_FILTERFORWARD, kTraces, "Filter &Forward\tAlt+Right",
     "Go forward to the next filter text\nFilter Forward"},
    {ID_VIEW_MARKS, kTraces, "Mar&ks and Notes\tCtrl+Shift+M",
     "List the marks and notes beside the rows\nMarks"},
    {ID_VIEW_TIMECOLUMNS, kTraces, "Time Colum&ns", ""},
    {ID_VIEW_TIMEDELTA, kTraces, "&Delta",
     "Show the time from the row above, by tic counts where there are some\nDelta"},
    {ID_VIEW_TIMESINCE, kTraces, "&Since",
     "Show the time from the reference row, which Ctrl+T sets\nSince"},
    {ID_VIEW_TIMEWALL, kTraces, "&Wall Time",
     "Show date, time and zone, with microseconds where tic counts tell them\nWall Time"},
    {ID_VIEW_TIMEREFERENCE, kTraces, "Time Reference\tCtrl+T",
     "Count the column Since from this row; again: from none\nTime Reference"},
    {ID_VIEW_GOTOTIME, kTraces, "Go to T&ime...\tCtrl+Shift+T",
     "Go to the first trace at or after a time\nGo to Time"},
    {ID_VIEW_GOTOROW, kTraces, "Go to Ro&w...\tCtrl+Shift+G",
     "Go to a row by its number, or to a part of all rows\nGo to Row"},
    {ID_VIEW_DETAILS, kTraces, "&Details\tCtrl+I",
     "Show all of the trace that has the focus beside the traces\nDetails"},
    {ID_VIEW_BESIDERIGHT, kTraces, "Details at t&he Right",
     "Show details at the right of the traces, not below them\nDetails at the Right"},
    {ID_VIEW_NEXTAREA, kTraces, "Next Pane\tF6",
     "Go from the traces to what stands beside them, or back\nNext Pane"},
    {ID_VIEW_STATISTICS, kTraces, "St&atistics...",
     "Count the traces by component, by the pattern of their text, ...\nStatistics"},
    {ID_VIEW_OVERVIEW, kTraces, "Ov&erview\tCtrl+Shift+O",
     "Show the traces over time in a strip above the rows\nOverview"},
    {ID_VIEW_PROFILES, kTraces, "&Profiles", ""},
    {ID_VIEW_PROFILESTANDARD, kTraces, "S&tandard",
     "Show all traces, with the columns and colours of new windows\nStandard"},
    {ID_VIEW_PROFILESAVE, kTraces, "Save &As...", "Save the view as a profile\nSave Profile"},
    {ID_VIEW_PROFILEMANAGE, kTraces, "&Manage...",
     "Apply, rename, delete, export and import profiles\nManage Profiles"},
    {ID_VIEW_PAUSE, kMonitor, "Pa&use", "Pause display of output\nPause"},
    {ID_WINDOW_NEW, kTraces, "&New Window",
     "Open another window for the active document\nNew Window"},
    {ID_WINDOW_CASCADE, kDocuments, "&Cascade", "Arrange windows so they overlap\nCascade Windows"},
    {ID_WINDOW_TILE_HORZ, kDocuments, "&Tile", ""},
    {ID_WINDOW_ARRANGE, kDocuments, "&Arrange Icons",
     "Arrange icons at the bottom of the window\nArrange Icons"},
    {ID_WINDOW_TABS, kDocuments, "Ta&bs", "Show the open windows as tabs\nTabs"},
    {ID_HELP_INDEX, kBars, "Help Topics", "List Help topics\nHelp Topics"},
    {ID_APP_ABOUT, kBars, "&About Tessera...", ""},
};

// The order of the items; 0 is a separator.
constexpr unsigned kFileIds[] = {ID_FILE_NEWMONITOR,
                                 ID_FILE_NEWCONFIG,
                                 ID_FILE_OPEN,
                                 ID_FILE_CLOSE,
                                 0,
                                 ID_FILE_WIZARD,
                                 0,
                                 ID_FILE_SAVECOPY,
                                 ID_FILE_SAVE,
                                 ID_FILE_SAVE_AS,
                                 ID_FILE_CAPTURE,
                                 ID_FILE_EXPORT,
                                 0,
                                 ID_FILE_PRINT,
                                 ID_FILE_PRINT_PREVIEW,
                                 ID_FILE_PRINT_SETUP,
                                 0,
                                 ID_FILE_MRU_FILE1,
                                 0,
                                 ID_APP_EXIT};
constexpr unsigned kEditIds[] = {ID_EDIT_COPY,
                                 ID_EDIT_COPYROWSAS,
                                 0,
                                 ID_EDIT_FIND,
                                 ID_EDIT_FINDNEXT,
                                 ID_EDIT_LISTHITS,
                                 0,
                                 ID_EDIT_MARK,
                                 ID_EDIT_MARKCOLOUR,
                                 ID_EDIT_NOTE,
                                 ID_EDIT_NEXTMARK,
                                 ID_EDIT_PREVIOUSMARK,
                                 0,
                                 ID_EDIT_CLEAR_ALL,
                                 0,
                                 ID_VIEW_PROPERTIES};
constexpr unsigned kConfigEditIds[] = {ID_EDIT_CLEAR_ALL};
constexpr unsigned kViewIds[] = {ID_VIEW_OPTIONS,
                                 0,
                                 ID_VIEW_TOOLBAR,
                                 ID_VIEW_STATUS_BAR,
                                 0,
                                 ID_VIEW_PROC,
                                 ID_VIEW_GOTOSOURCE,
                                 ID_VIEW_SYNCHRONIZE,
                                 ID_VIEW_FILTER,
                                 ID_VIEW_FITCOLUMNS,
                                 ID_VIEW_HEADERMENU,
                                 ID_VIEW_COLOURS,
                                 ID_VIEW_PAUSE,
                                 0,
                                 ID_VIEW_FILTERTEXT,
                                 ID_VIEW_FILTERBACK,
                                 ID_VIEW_FILTERFORWARD,
                                 0,
                                 ID_VIEW_MARKS,
                                 0,
                                 ID_VIEW_TIMECOLUMNS,
                                 ID_VIEW_TIMEREFERENCE,
                                 ID_VIEW_GOTOTIME,
                                 ID_VIEW_GOTOROW,
                                 0,
                                 ID_VIEW_STATISTICS,
                                 ID_VIEW_OVERVIEW,
                                 0,
                                 ID_VIEW_DETAILS,
                                 ID_VIEW_BESIDERIGHT,
                                 ID_VIEW_NEXTAREA,
                                 0,
                                 ID_VIEW_PROFILES};
constexpr unsigned kConfigIds[] = {ID_CONFIG_ADD, ID_CONFIG_DELETE, ID_VIEW_PROPERTIES};
constexpr unsigned kWindowIds[] = {
    ID_WINDOW_NEW, ID_WINDOW_CASCADE, ID_WINDOW_TILE_HORZ, ID_WINDOW_ARRANGE, 0, ID_WINDOW_TABS};
constexpr unsigned kHelpIds[] = {ID_HELP_INDEX, 0, ID_APP_ABOUT};
constexpr unsigned kConfigPopupIds[] = {ID_CONFIG_ADD, ID_CONFIG_DELETE, ID_VIEW_PROPERTIES, 0,
                                        ID_EDIT_CLEAR_ALL};
constexpr unsigned kTracePopupIds[] = {ID_EDIT_FIND,
                                       ID_EDIT_FINDNEXT,
                                       0,
                                       ID_EDIT_CLEAR_ALL,
                                       0,
                                       ID_VIEW_PROPERTIES,
                                       0,
                                       ID_VIEW_PROC,
                                       ID_VIEW_GOTOSOURCE,
                                       ID_VIEW_SYNCHRONIZE,
                                       ID_VIEW_FILTER};

// A popup shows those of its ids that have a text in the requested menu.
struct PopupLayout {
  std::span<const unsigned> ids;
  const char* title;
  unsigned menus;
  bool windowList;
};

// No title may have S, M, C or P as its mnemonic: with Alt these keys are accelerators.
const PopupLayout kLayouts[] = {
    {kFileIds, "&File", kBars, false},         {kEditIds, "&Edit", kTraces | kSource, false},
    {kConfigEditIds, "&Edit", kConfig, false}, {kViewIds, "&View", kBars, false},
    {kConfigIds, "Co&nfig", kConfig, false},   {kWindowIds, "&Window", kDocuments, true},
    {kHelpIds, "&Help", kBars, false},         {kConfigPopupIds, "", kConfigPopup, false},
    {kTracePopupIds, "", kTracePopup, false},
};

const char* TextIn(unsigned menu, unsigned id) {
  const auto row = std::find_if(std::begin(kTexts), std::end(kTexts), [&](const CommandText& text) {
    return text.id == id && (text.menus & menu);
  });
  return row == std::end(kTexts) ? nullptr : row->text;
}

MenuPopup MakePopup(const PopupLayout& layout, unsigned menu) {
  MenuPopup popup{layout.title, {}, layout.windowList};
  bool separator = false;  // add one before the next item
  for (const unsigned id : layout.ids) {
    if (id == 0) {
      separator = !popup.items.empty();
    } else if (const char* text = TextIn(menu, id)) {
      if (separator) popup.items.push_back({});
      separator = false;
      popup.items.push_back({id, text});
      const auto inside = kSubmenus.find(id);
      if (inside == kSubmenus.end()) continue;
      for (const unsigned item : inside->second)
        popup.items.back().items.push_back(item ? MenuItem{item, TextIn(menu, item)} : MenuItem());
    }
  }
  return popup;
}

std::string PromptText(unsigned id) {
  const auto row = std::find_if(std::begin(kTexts), std::end(kTexts),
                                [id](const CommandText& text) { return text.id == id; });
  return row == std::end(kTexts) ? "" : row->prompt;
}

}  // namespace

const std::vector<MenuPopup>& MenuOf(unsigned resource) {
  static std::map<unsigned, std::vector<MenuPopup>> made;
  const unsigned menu = MenuBit(resource);
  std::vector<MenuPopup>& popups = made[menu];
  if (popups.empty())
    for (const PopupLayout& layout : kLayouts)
      if (layout.menus & menu) popups.push_back(MakePopup(layout, menu));
  return popups;
}

std::string PromptOf(unsigned id) {
  const std::string both = PromptText(id);
  return both.substr(0, both.find('\n'));
}

std::string ToolTipOf(unsigned id) {
  const std::string both = PromptText(id);
  const std::size_t end = both.find('\n');
  return end == std::string::npos ? "" : both.substr(end + 1);
}

// The buttons of the tool bar and the panes of the status bar.
#include "docview/commands/command_ids.h"
#include "shell/menus/menu_resources.h"

const std::vector<unsigned>& ToolBarButtons() {
  static const std::vector<unsigned> buttons = {
      ID_EDIT_CLEAR_ALL, ID_FILE_OPEN,        ID_FILE_SAVE,  0, ID_VIEW_OPTIONS, 0,
      ID_VIEW_PROC,      ID_VIEW_SYNCHRONIZE, ID_VIEW_PAUSE, 0, ID_EDIT_COPY,    ID_EDIT_FIND};
  return buttons;
}

const std::vector<StatusIndicator>& StatusIndicators() {
  // The texts of the zone and of the rows only determine the widths of their panes.
  static const std::vector<StatusIndicator> indicators = {
      {kPaneMessage, ""},        {kPaneZone, "UTC+00:00"}, {kPaneCaps, "CAP"},
      {kPaneNum, "NUM"},         {kPaneScroll, "SCRL"},    {kPaneFiltered, "FILTERED"},
      {kPaneRowCount, "555555"},
  };
  return indicators;
}

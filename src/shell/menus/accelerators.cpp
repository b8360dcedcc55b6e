#include <iterator>

#include "docview/commands/command_ids.h"
#include "shell/menus/menu_resources.h"

namespace {

constexpr Accelerator kKeys[] = {
    {"Ctrl+A", ID_CONFIG_ADD},          {"Ctrl+C", ID_EDIT_COPY},
    {"Ctrl+Insert", ID_EDIT_COPY},      {"Alt+C", ID_FILE_NEWCONFIG},
    {"Ctrl+F", ID_EDIT_FIND},           {"F3", ID_EDIT_FINDNEXT},
    {"Ctrl+Shift+C", ID_EDIT_COPYROWS}, {"Ctrl+Shift+F", ID_EDIT_LISTHITS},
    {"Ctrl+G", ID_VIEW_GOTOSOURCE},     {"Alt+M", ID_FILE_NEWMONITOR},
    {"Ctrl+O", ID_FILE_OPEN},           {"Ctrl+P", ID_FILE_PRINT},
    {"Alt+P", ID_VIEW_PROPERTIES},      {"Ctrl+S", ID_FILE_SAVE},
    {"Alt+S", ID_VIEW_SYNCHRONIZE},     {"Ctrl+F6", ID_VIEW_PROC},
    {"Ctrl+W", ID_FILE_WIZARD},         {"F1", ID_HELP},
    {"Ctrl+L", ID_VIEW_FILTERTEXT},     {"Ctrl+Shift+O", ID_VIEW_OVERVIEW},
    {"Alt+Left", ID_VIEW_FILTERBACK},   {"Alt+Right", ID_VIEW_FILTERFORWARD},
    {"Ctrl+T", ID_VIEW_TIMEREFERENCE},  {"Ctrl+Shift+T", ID_VIEW_GOTOTIME},
    {"Ctrl+Shift+G", ID_VIEW_GOTOROW},  {"Ctrl+I", ID_VIEW_DETAILS},
    {"F6", ID_VIEW_NEXTAREA},           {"Ctrl+D", ID_EDIT_MARK},
    {"Ctrl+Shift+D", ID_EDIT_NOTE},     {"F2", ID_EDIT_NEXTMARK},
    {"Shift+F2", ID_EDIT_PREVIOUSMARK}, {"Ctrl+Shift+M", ID_VIEW_MARKS},
    {"Ctrl+Alt+1", ID_EDIT_MARK1},      {"Ctrl+Alt+2", ID_EDIT_MARK1 + 1},
    {"Ctrl+Alt+3", ID_EDIT_MARK1 + 2},  {"Ctrl+Alt+4", ID_EDIT_MARK1 + 3},
    {"Ctrl+Alt+5", ID_EDIT_MARK1 + 4},  {"Ctrl+Alt+6", ID_EDIT_MARK1 + 5},
    {"Ctrl+Alt+7", ID_EDIT_MARK1 + 6},  {"Ctrl+Alt+8", ID_EDIT_MARK1 + 7},
    {"Ctrl+Alt+9", ID_EDIT_MARK1 + 8},
};

}  // namespace

const std::vector<Accelerator>& Accelerators() {
  static const std::vector<Accelerator> keys(std::begin(kKeys), std::end(kKeys));
  return keys;
}

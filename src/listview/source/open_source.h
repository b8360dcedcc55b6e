// Goto Source: brings the file that issued a trace to the front, with the caret on its line.
//
// Owner    The application makes the one template of source windows and owns it. File Open, a drop
//          or the recent files never use that template.
// Errors   Asks for a file that is not found; no message follows a cancel. A message box says if a
//          file cannot be shown as text.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string>

#include "docview/doc_template.h"
#include "listview/source/rich_edit.h"

class CSourceTemplate final : public CMultiDocTemplate {
 public:
  // Resource of the template, and of the menus of its windows.
  static constexpr unsigned kResource = 145;

  CSourceTemplate(Host& host, CMDIFrameWnd*& mainFrame, RichEditMaker makeEdit);
  ~CSourceTemplate();
};

// Why Goto Source is disabled for a trace.
inline constexpr char kNoSourceFile[] =
    "This trace names no source file. Applications record it while Location is on: "
    "trc set APPLICATION --all Info Warn Error Location";

// The template of this program; null when there is no application.
extern CSourceTemplate* g_sourceTemplate;

// `path` as in the trace, `line` counted from 1 (0: the caret's line). A file that is open already,
// ignoring the case of its path, is not opened again. May run a loop of its own for as long as the
// user likes (see LocateWait): the caller may be destroyed when it returns, so the handler of a
// command calls it last. While one call is still looking for its file, another one does nothing.
void OpenSourceAt(const std::string& path, std::uint32_t line);

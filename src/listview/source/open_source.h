// Goto Source: brings the file that issued a trace to the front, with the caret on its line.
//
// Owner    The application makes the one template of source windows and owns it. No path reaches
//          that template by File Open, a drop or the recent files.
// Errors   A file that is not found is asked for; a user who cancels hears nothing more. Of a file
//          that cannot be shown as text a box says so.
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

// The template of this program; null when no application stands.
extern CSourceTemplate* g_sourceTemplate;

// `path` as the trace has it, `line` counted from 1 (0: the caret's line). A file that is open
// already, whatever the case of its path, is not opened again. May run a loop of its own for as
// long as the user likes (see LocateWait): the caller may be gone when it returns, so a command's
// handler calls it last. While one call is still looking for its file, another one does nothing.
void OpenSourceAt(const std::string& path, std::uint32_t line);

// Updates the status panes of the main window for the view in front.
//
// Threads  Interface thread. Without a main window nothing happens.
#pragma once

#include "documents/trace_hint.h"
#include "docview/wnd.h"

// The number of rows; -1 clears the pane.
inline void ReportRowCount(const Host& host, std::intptr_t count) {
  if (CWnd* const main = host.MainWindow())
    main->SendMessage(WM_TRACE_ROWCOUNT, static_cast<std::uintptr_t>(count));
}

// 1 when the view hides anything, 0 when not; -1 clears the pane.
inline void ReportFiltered(const Host& host, std::intptr_t filtered) {
  if (CWnd* const main = host.MainWindow())
    main->SendMessage(WM_TRACE_FILTERED, static_cast<std::uintptr_t>(filtered));
}

// The texts of the status bar about the window in front.
//
// Shape    Short texts with commas between them, made at each call.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string>

class CMDIChildWnd;

struct FrontTexts {
  // "12 of 4,301 hits", "paused, capturing to web.trc", "damaged: 406 bytes skipped", a source's
  // path
  std::string message;
  std::string details;  // the complete text, for a tool tip; empty if there is no more
  std::string rows;     // "26,782 of 2,000,000 traces"
  std::string zone;     // "UTC+01:00": of the shown times
};

// `rows` is the number in the row count pane, -1 for none. Empty texts without a window.
FrontTexts TextsOfFront(const CMDIChildWnd* front, std::int64_t rows);

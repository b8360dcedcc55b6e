// What the status bar says of the window in front.
//
// Shape    Short words parted by commas, made anew whenever they are asked for.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string>

class CMDIChildWnd;

struct FrontWords {
  // "paused, capturing to web.trc", "damaged: 406 bytes skipped", a source's path
  std::string message;
  std::string details;  // the whole of it, for a tool tip; empty when there is no more
  std::string rows;     // "26,782 of 2,000,000 traces"
};

// `rows` is what the pane of the row count shows, -1 for nothing. Empty words without a window.
FrontWords WordsOfFront(const CMDIChildWnd* front, std::int64_t rows);

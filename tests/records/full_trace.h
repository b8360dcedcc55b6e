// A trace whose fields all differ. The highest byte of each number is set, so that a number read
// with a sign or in the wrong order is noticed.
#pragma once

#include "support/trc_image.h"

inline TraceFields FullTrace() {
  return {.text = "text",
          .stack = "stack",
          .count = 0x81828384,
          .machine = 0x8001,
          .app = 0x8002,
          .component = 0x8003,
          .category = 0x8004,
          .date = 0x91929394,
          .time = 0xA1A2A3A4,
          .tic = 0xFF01020304050607,
          .pid = 0x8005,
          .tid = 0x8006,
          .attributes = 0xF123,
          .file = 0x8007,
          .line = 0xB1B2B3B4};
}

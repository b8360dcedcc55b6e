// The messages of a load to the main window: WM_TRACE_PROGRESS and the record of its start.
//
// Owner    A start record is the receiver's. TakeLoadStart takes it out of the message.
// Threads  Interface thread: the load thread posts the calls that send them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/win32_handle.h"

// wParam of WM_TRACE_PROGRESS.
enum LoadProgress : std::uintptr_t {
  kLoadStart = 0,     // lParam: CLoadProgressStart*, which the receiver deletes
  kLoadPosition = 1,  // lParam: position in the file, bytes
  kLoadDone = 2,
};

struct CLoadProgressStart {
  std::string caption;  // "Converting..." or "Loading..."
  std::string path;
  std::uint32_t size = 0;  // bytes
  HANDLE cancelEvent;
};

// The record of a start message, from its lParam. Null if there is none.
inline std::unique_ptr<CLoadProgressStart> TakeLoadStart(std::intptr_t value) {
  return std::unique_ptr<CLoadProgressStart>(reinterpret_cast<CLoadProgressStart*>(value));
}

// Waitable objects (events and threads), and the owner of a handle to one.
//
// Owner    A HANDLE is shared: the event lives as long as anyone can signal or wait on it. So a
//          dialog that outlives its document still signals an existing event.
// Errors   BeginThread throws std::system_error when the system has no more threads to give.
// Threads  Set, IsSet and Wait from any thread. AutoWin32Handle_t itself is not synchronised.
#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

// An object that becomes signalled once and stays so (manual reset, never reset).
class WaitObject {
 public:
  void Set();
  bool IsSet() const;
  // True when signalled within `milliseconds`; 0 does not wait.
  bool Wait(unsigned milliseconds) const;

 private:
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  bool m_set = false;
};

using HANDLE = std::shared_ptr<WaitObject>;

// A new event, not signalled.
HANDLE CreateEvent();

// Runs `body` on a new thread. The handle is signalled when the body has returned. The thread is
// never killed: closing the handle leaves it running, so it must own what it uses.
HANDLE BeginThread(std::function<void()> body);

// The one owner of a handle: closes it at its end and when another one is assigned.
class AutoWin32Handle_t {
 public:
  AutoWin32Handle_t() = default;
  AutoWin32Handle_t& operator=(HANDLE handle) {
    m_handle = std::move(handle);
    return *this;
  }
  void Close() { m_handle.reset(); }
  explicit operator bool() const { return m_handle != nullptr; }
  const HANDLE& Get() const { return m_handle; }

 private:
  HANDLE m_handle;
};

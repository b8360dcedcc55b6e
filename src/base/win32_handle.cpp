#include "base/win32_handle.h"

#include <chrono>
#include <thread>
#include <utility>

void WaitObject::Set() {
  {
    const std::lock_guard lock(m_mutex);
    m_set = true;
  }
  m_changed.notify_all();
}

bool WaitObject::IsSet() const {
  const std::lock_guard lock(m_mutex);
  return m_set;
}

bool WaitObject::Wait(unsigned milliseconds) const {
  std::unique_lock lock(m_mutex);
  return m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                            [this] { return m_set; });
}

HANDLE CreateEvent() {
  return std::make_shared<WaitObject>();
}

HANDLE BeginThread(std::function<void()> body) {
  HANDLE done = CreateEvent();
  // The body's captures are destroyed before the handle says that the body has returned.
  std::thread([done, run = std::move(body)]() mutable {
    run();
    run = nullptr;
    done->Set();
  }).detach();
  return done;
}

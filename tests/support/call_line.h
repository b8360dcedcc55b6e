// Calls that wait for the interface thread, in order.
//
// Threads  Push and Wake from any thread; the Run functions on the interface thread only.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

class CallLine {
 public:
  void Push(std::function<void()> call) {
    const std::lock_guard lock(m_mutex);
    m_calls.push_back(std::move(call));
    m_pushed.notify_all();
  }
  // Makes RunUntil check its condition again.
  void Wake() { m_pushed.notify_all(); }
  std::size_t Size() const {
    const std::lock_guard lock(m_mutex);
    return m_calls.size();
  }

  // Runs the first call; false when there is none.
  bool RunOne() {
    std::function<void()> call;
    {
      const std::lock_guard lock(m_mutex);
      if (m_calls.empty()) return false;
      call = std::move(m_calls.front());
      m_calls.pop_front();
    }
    call();
    return true;
  }
  // Runs calls as they come until the condition holds; false when the deadline passes.
  bool RunUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
      if (RunOne()) continue;
      std::unique_lock lock(m_mutex);
      const auto wakeUp = std::min(deadline, std::chrono::steady_clock::now() + kLook);
      m_pushed.wait_until(lock, wakeUp, [this] { return !m_calls.empty(); });
      if (m_calls.empty() && std::chrono::steady_clock::now() >= deadline) return false;
    }
    return true;
  }
  // Waits until a call is queued, and leaves it there; false when the deadline passes.
  bool Wait(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    return m_pushed.wait_for(lock, limit, [this] { return !m_calls.empty(); });
  }

 private:
  static constexpr std::chrono::milliseconds kLook{2};  // a condition may need no call to hold

  mutable std::mutex m_mutex;
  std::condition_variable m_pushed;
  std::deque<std::function<void()>> m_calls;
};

// Work for the next turn of the loop: queued calls, and boxes that block no window.
//
// Threads  Post and Open from any thread; everything else on the interface thread.
#pragma once

#include <chrono>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

#include "support/call_line.h"

class PostedWork {
 public:
  // Runs one queued call; false when there is none.
  bool RunOnePosted() { return m_posted.RunOne(); }
  // Runs queued calls, also those that they post, until none is left.
  void RunPosted() {
    while (RunOnePosted()) {
    }
  }
  // Runs queued calls as they come until the condition holds; false when the deadline passes.
  bool RunUntil(const std::function<bool()>& condition,
                std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    return m_posted.RunUntil(condition, limit);
  }
  // Waits until a call is queued, and leaves it there.
  bool WaitForPost(std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    return m_posted.Wait(limit);
  }
  std::size_t PostedCount() const { return m_posted.Size(); }
  // Closes the boxes that block no window.
  void ClosePostedBoxes() {
    std::vector<std::function<void()>> boxes;
    {
      const std::lock_guard lock(m_boxMutex);
      boxes.swap(m_openBoxes);
    }
    for (const auto& closed : boxes) {
      if (closed) closed();
    }
  }

 protected:
  void Push(std::function<void()> call) { m_posted.Push(std::move(call)); }
  // A box is open; `closed` is called when the user closes it.
  void Open(std::function<void()> closed) {
    {
      const std::lock_guard lock(m_boxMutex);
      m_openBoxes.push_back(std::move(closed));
    }
    m_posted.Wake();
  }

 private:
  CallLine m_posted;
  std::mutex m_boxMutex;
  std::vector<std::function<void()>> m_openBoxes;
};

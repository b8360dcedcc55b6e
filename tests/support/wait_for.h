// Waits for another thread or process.
#pragma once

#include <poll.h>

#include <chrono>
#include <functional>

// Checks the condition every millisecond; false when it does not hold in time.
inline bool WaitFor(const std::function<bool()>& condition, int milliseconds = 20000) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    poll(nullptr, 0, 1);
  }
  return true;
}

// The results of numbered pieces, done by threads in any order and taken in order.
//
// Threads  Put from any; Take from one.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

template <class Result>
class OrderedResults {
 public:
  // True: this is the one that Take waits for.
  bool Put(std::size_t piece, Result result) {
    const std::lock_guard lock(m_mutex);
    m_results.emplace(piece, std::move(result));
    if (piece != m_next) return false;
    m_came.notify_one();
    return true;
  }
  // The next one in order, when it is there before this time.
  std::optional<Result> Take(std::chrono::steady_clock::time_point until = {}) {
    std::unique_lock lock(m_mutex);
    const auto came = [this] { return !m_results.empty() && m_results.begin()->first == m_next; };
    if (!m_came.wait_until(lock, until, came)) return std::nullopt;
    Result result = std::move(m_results.begin()->second);
    m_results.erase(m_results.begin());
    ++m_next;
    return result;
  }
  // How many were taken.
  std::size_t Taken() const {
    const std::lock_guard lock(m_mutex);
    return m_next;
  }

 private:
  mutable std::mutex m_mutex;
  std::condition_variable m_came;
  std::map<std::size_t, Result> m_results;
  std::size_t m_next = 0;
};

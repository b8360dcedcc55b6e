// Notes the ids of a file's traces on a separate thread, a short distance after the walk that finds
// them. The walk waits for pages and this thread does not, so two processors load a file faster.
//
// Owner    Borrows the bytes, which must outlive the follower.
// Errors   Finish throws the thread's exception (std::bad_alloc). The destructor without Finish
//          drops the traces that are not noted yet.
// Threads  Made and used by the thread that walks.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <thread>

#include "base/bytes.h"
#include "documents/trace_indexes.h"

class TraceIndexFollower {
 public:
  // Null if it would not help (a small file, one processor) or no thread can be made: the walk then
  // notes the ids itself.
  static std::unique_ptr<TraceIndexFollower> Start(Bytes file, TraceIndexes& indexes);
  // Throws std::system_error if no thread can be made.
  TraceIndexFollower(Bytes file, TraceIndexes& indexes);
  ~TraceIndexFollower();
  TraceIndexFollower(const TraceIndexFollower&) = delete;
  TraceIndexFollower& operator=(const TraceIndexFollower&) = delete;

  // The walk has reached this position, which is the end of a record. Cheap: the thread is woken
  // once per some mebibytes.
  void Reach(std::uint64_t position) {
    if (position >= m_wakeAt) Wake(position);
  }
  // The walk ends there; returns when the indexes have all traces before it.
  void Finish(std::uint64_t position);

 private:
  // The top bit of m_reached: this position is the last one.
  static constexpr std::uint64_t kLast = std::uint64_t{1} << 63;
  static constexpr std::uint64_t kBytesPerWake = 4 * 1024 * 1024;
  void Wake(std::uint64_t position);
  void Run() noexcept;

  const Bytes m_file;
  TraceIndexes& m_indexes;  // the thread's until it has ended
  std::uint64_t m_wakeAt = kBytesPerWake;
  std::atomic<std::uint64_t> m_reached;
  std::exception_ptr m_error;
  std::thread m_thread;
};

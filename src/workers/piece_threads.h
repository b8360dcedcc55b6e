// Threads that share the numbered pieces of one work.
//
// Each thread takes the next piece until none is left or the work is stopped. Pieces are taken in
// order and done in any.
//
// Owner    The work is shared by its threads and by whoever began it, so that either may be gone
//          first. Nobody has to wait for the threads: what they use belongs to the work.
// Errors   A piece that throws ends the work: HasFailed.
// Threads  Any, where nothing else is said.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>

class PieceThreads {
 public:
  explicit PieceThreads(std::size_t pieces) : m_pieces(pieces) {}
  virtual ~PieceThreads() = default;
  PieceThreads(const PieceThreads&) = delete;
  PieceThreads& operator=(const PieceThreads&) = delete;

  // At most `threads` threads begin, none for a work without pieces. How many have: fewer if the
  // system gives no more. Once for each work.
  static std::size_t Start(const std::shared_ptr<PieceThreads>& work, std::size_t threads);
  // As many as there are processors.
  static std::size_t Processors();

  // No further piece is begun. One that is under way ends as soon as it looks at IsStopped.
  void Stop() { m_stopped.store(true, std::memory_order_relaxed); }
  bool IsStopped() const { return m_stopped.load(std::memory_order_relaxed); }
  bool HasFailed() const { return m_failed.load(std::memory_order_acquire); }
  // False: after this time a thread still runs.
  bool WaitForEnd(std::chrono::milliseconds time);
  std::size_t Count() const { return m_pieces; }

 protected:
  // What one thread needs of its own.
  class Hand {
   public:
    virtual ~Hand() = default;
    virtual void Do(std::size_t piece) = 0;
  };
  // On the thread that will use it.
  virtual std::unique_ptr<Hand> MakeHand() = 0;
  // The work has failed: on the thread that has seen it.
  virtual void OnFailure() = 0;

 private:
  void Run();

  const std::size_t m_pieces;
  std::atomic<std::size_t> m_next = 0;
  std::atomic<bool> m_stopped = false, m_failed = false;
  std::mutex m_mutex;
  std::condition_variable m_ended;
  std::size_t m_running = 0;
};

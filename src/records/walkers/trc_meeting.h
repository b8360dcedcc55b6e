// Which piece of a file each walker takes next, and which of their parts follow one another.
//
// Shape    Chunk by chunk, the front is the end of what is known to be records:
//
//            taken parts ...        | front          | begins at a guess |
//            ----------------------->| - - gap - - ->|------------------>|
//
//          Where the front meets a chunk's beginning, its part is taken and the front goes on to
//          its end. Otherwise the gap up to that beginning is walked. If that walk passes it, the
//          chunk is void, and the gap reaches to its limit.
// Owner    Borrows the file and the taker.
// Threads  Work is for all walkers; the rest for the thread that made it.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <vector>

#include "records/walkers/trc_walkers.h"

class TrcMeeting {
 public:
  TrcMeeting(Bytes file, const TrcWalkers& walkers, TrcParts& parts);

  // Takes pieces until the file is done, cancelled or failed.
  void Work() noexcept;
  // REQUIRES: all walkers have returned.
  std::uint64_t Reached();

 private:
  enum class State { New, Guessing, Walking, Done };
  static constexpr std::uint64_t kNowhere = ~std::uint64_t{0};
  struct Chunk {
    State state = State::New;
    std::uint64_t limit = 0;         // where the next one begins
    std::uint64_t begin = kNowhere;  // of its part
    std::uint64_t end = 0;           // of its part, when it is done
    std::atomic<bool> isVoid = false;
    std::unique_ptr<TrcPart> part;
  };
  using Lock = std::unique_lock<std::mutex>;

  void WorkOn();
  void WalkGap(Lock& lock);
  void WalkChunk(std::size_t number, Lock& lock);
  std::uint64_t Walk(TrcPart& part, std::uint64_t from, std::uint64_t limit,
                     const std::atomic<bool>* isVoid);
  void TakeParts();
  bool IsGapOpen() const;
  bool MayBegin() const;
  std::uint64_t StartOf(std::size_t chunk) const;

  const Bytes m_file;
  TrcParts& m_parts;
  const std::size_t m_ahead;  // chunks that may be walked beyond the front
  std::mutex m_mutex;         // guards all below, but for parts that are walked
  std::condition_variable m_changed;
  std::vector<Chunk> m_chunks;
  std::size_t m_next = 0;        // the first chunk that nobody has begun
  std::size_t m_frontChunk = 0;  // where the front is
  std::uint64_t m_front;
  bool m_inGap = false;  // somebody walks there
  bool m_over = false;
  std::exception_ptr m_error;
  std::atomic<bool> m_cancelled = false;
  std::atomic<std::uint64_t> m_walked;  // bytes, by walks of chunks and gaps
};

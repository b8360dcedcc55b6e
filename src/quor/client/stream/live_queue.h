// Batches on their way from the reader to the interface thread.
//
// Shape    Bounded by bytes.
// Owner    Holds its batches until they are taken.
// Errors   Without a free descriptor Await only sleeps for a short time.
// Threads  Any; Await on the one that takes.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>

#include "quor/client/stream/live_batch.h"

class LiveQueue {
 public:
  explicit LiveQueue(std::size_t bytesMax);
  ~LiveQueue();
  LiveQueue(const LiveQueue&) = delete;
  LiveQueue& operator=(const LiveQueue&) = delete;

  // Takes over the batch, or returns false when there is no room for it.
  bool Push(LiveBatch* batch);
  void PushAlways(LiveBatch* batch);  // for names and loss reports, which must not be missing
  // Is there room for many traces again?
  bool IsHalfEmpty() const;
  // Takes the oldest batches, with not many more than `traces` traces.
  std::deque<LiveBatch*> Take(std::size_t traces);
  std::size_t Traces() const;  // in the queue
  // Waits until there are batches, until a signal was caught, or for `milliseconds`. May return
  // early.
  void Await(int milliseconds);
  // Numbered traces that were ever pushed.
  std::uint64_t Delivered() const;

 private:
  void Append(LiveBatch* batch);

  const std::size_t m_bytesMax;
  const int m_arrived;  // an eventfd: the empty queue has got a batch
  mutable std::mutex m_mutex;
  std::deque<LiveBatch*> m_batches;
  std::size_t m_bytes = 0, m_traces = 0;
  std::uint64_t m_delivered = 0;
};

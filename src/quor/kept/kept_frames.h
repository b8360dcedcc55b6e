// The frames of one stream that were sent and that its other side has not taken yet.
//
// Shape    Frames have numbers from 1, in the order of Keep. They are taken from the front.
// Owner    Shares the batches of the frames, and keeps their sources under way until they are
//          taken.
// Errors   Take changes nothing when the number cannot be.
// Threads  One.
#pragma once

#include <deque>
#include <functional>

#include "quor/hub/stream_queue.h"

class KeptFrames {
 public:
  // The stream's next frame. It is valid until it is taken or withdrawn.
  const Outgoing& Keep(Outgoing frame);
  // The other side has the first `frames` of the stream. Calls `each` for every batch that it had
  // not had before. False: so many were not sent, or it had more before.
  bool Take(std::uint64_t frames, const std::function<void(const Batch&)>& each = {});
  std::uint64_t Taken() const { return m_taken; }
  std::uint64_t Sent() const { return m_taken + m_frames.size(); }
  bool IsEmpty() const { return m_frames.empty(); }
  // What they take, without the sources.
  std::size_t Bytes() const { return m_bytes; }
  std::uint64_t Traces() const;
  const std::deque<Outgoing>& Frames() const { return m_frames; }
  // Gives the batches of the frames up, in order. They are to be sent again, with the same numbers.
  std::vector<SharedBatch> Withdraw();
  // Another stream begins, with frame 1. REQUIRES: nothing is kept.
  void BeginAnew() { m_taken = 0; }

 private:
  std::deque<Outgoing> m_frames;
  std::uint64_t m_taken = 0;
  std::size_t m_bytes = 0;
};

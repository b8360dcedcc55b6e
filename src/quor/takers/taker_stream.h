// The stream to one taker: see Take in quor.proto.
//
// Shape    What was taken from the hub waits in a bounded queue. What was sent is kept until the
//          taker has confirmed it, at most a window of bytes, and is never dropped: its place in
//          the stream is known. Without a connection the queue goes on filling.
// Owner    Borrows the hub, which outlives it, and a connection between Start and Leave.
// Errors   A number of frames that cannot be changes nothing.
// Threads  The service's one thread.
#pragma once

#include <chrono>

#include "quor/hub/hub.h"
#include "quor/kept/kept_frames.h"
#include "quor/protocol/connection.h"

class TakerStream {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::size_t kWindowBytes = 4u << 20;  // at most half of the store

  // `who`: for the log. It begins with what the hub takes from now on.
  TakerStream(Hub& hub, std::string who, std::string id, std::size_t storeBytes);

  // The first `frames` are safe. False: they were not sent over this connection, or more were safe.
  bool Take(std::uint64_t frames, std::string* why);
  // In front of Start, for a stream that goes on: `taken` is of all connections. A number below
  // that which was confirmed is no error, because a taker may have been killed. A connection that
  // stands is given up, and its `onReplaced` is called.
  bool GoOn(std::uint64_t taken, const std::string& who, std::string* why);
  // Sends the ledger and all frames that are not confirmed. REQUIRES: not connected.
  void Start(Connection& connection, std::function<void()> onReplaced);
  // The connection has ended; nothing if it is not the stream's.
  void Leave(const Connection& connection);

  void Push(SharedBatch batch) { m_queue.Push(std::move(batch)); }
  void Pump();
  // At a clean end of the service: sends as much as the connection accepts.
  void Flush();

  bool IsConnected() const { return m_connection != nullptr; }
  Clock::time_point LeftAt() const { return m_leftAt; }  // REQUIRES: not connected
  const std::string& Who() const { return m_who; }
  const std::string& Id() const { return m_id; }
  std::uint64_t Taken() const { return m_kept.Taken(); }
  std::uint64_t KeptTraces() const { return m_kept.Traces() + m_queue.WaitingTraces(); }
  std::size_t KeptBytes() const { return m_kept.Bytes() + m_queue.WaitingBytes(); }
  std::uint64_t Dropped() const { return m_queue.Dropped(); }
  bool IsIdle() const { return m_kept.IsEmpty() && m_queue.IsEmpty(); }
  // The hub's names begin anew. REQUIRES: it is idle.
  void ForgetNames() { m_queue.ForgetNames(); }

 private:
  bool Confirm(std::uint64_t frames, std::string* why);
  void PumpUpTo(std::size_t queued, std::size_t window);
  bool SendNext();

  Hub& m_hub;
  std::string m_who;
  const std::string m_id;
  const std::size_t m_window;
  StreamQueue m_queue;
  KeptFrames m_kept;
  std::uint64_t m_sent = 0;       // frames of the stream, over this connection or confirmed
  std::uint64_t m_forgotten = 0;  // the sum of the forgotten sources as of the last confirmed frame
  Connection* m_connection = nullptr;
  std::function<void()> m_onReplaced;
  Clock::time_point m_leftAt = Clock::now();
};

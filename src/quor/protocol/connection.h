// A connection that carries frames, used by clients and the service.
//
// Owner    Start returns a shared connection, which keeps itself alive while operations are in
//          progress. The handler must live until OnClosed, Close or CloseAfterWriting; after that
//          it is never called again. Sent bytes are shared and must not change.
// Errors   A malformed frame, a failed or too slow write, or a silent peer closes the connection:
//          OnClosed is called once, with a reason for the log. Time in which this process was
//          stopped does not count as silence.
// Threads  The thread that runs the stream's io_context. Send never calls back.
#pragma once

#include <asio/steady_timer.hpp>
#include <chrono>
#include <deque>
#include <initializer_list>
#include <memory>
#include <string>

#include "quor/protocol/byte_stream.h"
#include "quor/protocol/frames.h"
#include "quor/protocol/running_time.h"

namespace google::protobuf {
class MessageLite;
}

// The bytes live as long as this.
using SharedBytes = std::shared_ptr<const Bytes>;
SharedBytes ShareBytes(std::vector<std::uint8_t> bytes);

struct ConnectionLimits {
  std::size_t queueBytesMax = 32u << 20;
  std::chrono::milliseconds heartbeat{2000};       // sent when nothing else was sent
  std::chrono::milliseconds writeDeadline{10000};  // for one gather write of at most 256 KiB
  std::chrono::milliseconds silenceDeadline{10000};
};

class Connection final : public std::enable_shared_from_this<Connection> {
 public:
  class Handler {
   public:
    // Every frame except heartbeats. The body is borrowed for the call.
    virtual void OnFrame(const Frame& frame) = 0;
    // A write has ended: QueuedBytes() has become smaller.
    virtual void OnWritten() {}
    // The rest that it asked for is over.
    virtual void OnRested() {}
    virtual void OnClosed(const std::string& reason) = 0;

   protected:
    ~Handler() = default;
  };

  static std::shared_ptr<Connection> Start(std::shared_ptr<ByteStream> stream, Handler& handler,
                                           const ConnectionLimits& limits = {});

  // A control frame. False when the connection is closed or its queue is full: nothing was queued.
  bool Send(FrameType type, const google::protobuf::MessageLite& message);
  // Whole frames as EncodeFrame makes them.
  bool Send(const SharedBytes& frames);
  // One data frame, names first (may be null). REQUIRES: together within kDataFrameBytesMax - 1.
  bool SendData(const SharedBytes& names, const SharedBytes& records);

  // Includes the bytes that are being written, and the overhead of the queue.
  std::size_t QueuedBytes() const { return m_queuedBytes; }
  bool IsOpen() const { return m_handler != nullptr; }
  // From now on a longer frame is an error, see FrameReader::Limit.
  void LimitFrames(std::size_t bytes) { m_reader.Limit(bytes); }
  // Within OnFrame or OnRested: no frame is taken for so long. Then OnRested is called, and the
  // frames go on. The peer does not count as silent meanwhile.
  void Rest(std::chrono::nanoseconds time);

  void Close();
  // Sends what is queued, ends its side, and gives the peer a second to read it.
  void CloseAfterWriting();

 private:
  using Clock = RunningTime::Clock;
  Connection(std::shared_ptr<ByteStream> stream, Handler& handler, const ConnectionLimits& limits);

  bool Queue(std::initializer_list<SharedBytes> parts);  // null: none
  void Read();
  void OnRead(const std::error_code& error, std::size_t bytes);
  void TakeFrames();
  void TakeFramesLater();
  void Write();
  void OnWrote(const std::error_code& error);
  void StartTick();
  void OnTick();
  void Fail(const std::string& reason);

  std::shared_ptr<ByteStream> m_stream;
  Handler* m_handler;  // null once closed or ending
  ConnectionLimits m_limits;
  FrameReader m_reader;
  std::deque<SharedBytes> m_queue;     // not yet given to the stream
  std::vector<SharedBytes> m_writing;  // the write in progress
  std::size_t m_queuedBytes = 0;
  bool m_ending = false, m_ended = false, m_rests = false;
  asio::steady_timer m_timer, m_rest;
  RunningTime m_runningTime;
  Clock::duration m_lastRead{0}, m_writeBegan{0}, m_endBy{0};  // in lived time
  Clock::time_point m_lastWrite;  // in the steady clock, because the peer waits for a sign of life
};

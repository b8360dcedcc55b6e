#include "quor/protocol/connection.h"

#include <google/protobuf/message_lite.h>

#include <algorithm>
#include <asio/post.hpp>
#include <asio/ssl/error.hpp>

namespace {

// A TLS peer may close its socket without a close message, as a process that ends does. That is a
// normal end: the length of a frame shows whether it was cut.
std::string ErrorText(const std::error_code& error) {
  if (error == asio::error::eof || error == asio::ssl::error::stream_truncated)
    return "the peer has ended it";
  const bool tls = error.category() == asio::error::get_ssl_category();
  return (tls ? "TLS: " : "") + error.message();
}

constexpr std::size_t kReadBytes = 128u << 10;
constexpr std::size_t kWriteBytes = 256u << 10;  // the size that one gather write aims at
constexpr std::size_t kWriteParts = 64;
constexpr std::chrono::milliseconds kEndPatience{1000};
// One read holds thousands of short frames. A peer whose frames cost longer waits for the others.
constexpr std::chrono::milliseconds kTurn{2};

// The cost of a queued part. A peer that asks for short answers and reads none makes many parts.
std::size_t Cost(const SharedBytes& part) {
  constexpr std::size_t kPartBytes = 128;
  return part->size() + kPartBytes;
}

std::string Seconds(std::chrono::milliseconds time) {
  return std::to_string(time.count() / 1000) + "." + std::to_string(time.count() % 1000 / 100) +
         " s";
}

}  // namespace

SharedBytes ShareBytes(std::vector<std::uint8_t> bytes) {
  struct Owner {
    std::vector<std::uint8_t> bytes;
    Bytes view;
  };
  const auto owner = std::make_shared<Owner>(Owner{std::move(bytes), {}});
  owner->view = owner->bytes;
  return {owner, &owner->view};
}

Connection::Connection(std::shared_ptr<ByteStream> stream, Handler& handler,
                       const ConnectionLimits& limits)
    : m_stream(std::move(stream)),
      m_handler(&handler),
      m_limits(limits),
      m_timer(m_stream->Executor()),
      m_rest(m_stream->Executor()),
      m_lastWrite(Clock::now()) {}

std::shared_ptr<Connection> Connection::Start(std::shared_ptr<ByteStream> stream, Handler& handler,
                                              const ConnectionLimits& limits) {
  std::shared_ptr<Connection> connection(new Connection(std::move(stream), handler, limits));
  connection->Read();
  connection->StartTick();
  return connection;
}

bool Connection::Queue(std::initializer_list<SharedBytes> parts) {
  std::size_t cost = 0;
  for (const SharedBytes& part : parts)
    if (part) cost += Cost(part);
  if (!m_handler || m_queuedBytes + cost > m_limits.queueBytesMax) return false;
  m_queuedBytes += cost;
  for (const SharedBytes& part : parts)
    if (part) m_queue.push_back(part);
  if (m_writing.empty()) Write();
  return true;
}

bool Connection::Send(FrameType type, const google::protobuf::MessageLite& message) {
  return Send(ShareBytes(EncodeFrame(type, message.SerializeAsString())));
}

bool Connection::Send(const SharedBytes& frames) {
  return Queue({frames});
}

bool Connection::SendData(const SharedBytes& names, const SharedBytes& records) {
  const auto filled = [](const SharedBytes& part) {
    return part && !part->empty() ? part : SharedBytes();
  };
  const std::size_t body = (names ? names->size() : 0) + (records ? records->size() : 0);
  return Queue(
      {ShareBytes(EncodeFrameHeader(FrameType::Data, body)), filled(names), filled(records)});
}

void Connection::Read() {
  m_stream->ReadSome(m_reader.Room(kReadBytes),
                     [self = shared_from_this()](const std::error_code& error, std::size_t bytes) {
                       self->OnRead(error, bytes);
                     });
}

void Connection::OnRead(const std::error_code& error, std::size_t bytes) {
  if (m_ended) return;
  if (error) return Fail(ErrorText(error));
  m_lastRead = m_runningTime.Now();
  if (m_ending) return Read();  // into the same room: these bytes are ignored
  m_reader.Filled(bytes);
  TakeFrames();
}

void Connection::TakeFrames() {
  const auto until = Clock::now() + kTurn;
  while (m_handler) {
    const std::optional<Frame> frame = m_reader.Next();
    if (!frame) break;
    if (frame->type != FrameType::Heartbeat) m_handler->OnFrame(*frame);
    if (m_rests) return;
    if (Clock::now() >= until) return TakeFramesLater();
  }
  if (!m_reader.Error().empty()) return Fail("malformed: " + m_reader.Error());
  if (!m_ended) Read();
}

void Connection::TakeFramesLater() {
  asio::post(m_stream->Executor(), [self = shared_from_this()] {
    if (self->m_ended) return;
    self->m_lastRead = self->m_runningTime.Now();  // it is not silent: it waits for us
    self->TakeFrames();
  });
}

void Connection::Rest(std::chrono::nanoseconds time) {
  if (!m_handler) return;
  m_rests = true;
  m_rest.expires_after(time);
  m_rest.async_wait([self = shared_from_this()](const std::error_code& error) {
    if (error || self->m_ended) return;
    self->m_lastRead = self->m_runningTime.Now();
    self->m_rests = false;
    if (self->m_handler) self->m_handler->OnRested();
    if (!self->m_rests && !self->m_ended) self->TakeFrames();
  });
}

void Connection::Write() {
  std::vector<asio::const_buffer> buffers;
  std::size_t bytes = 0;
  while (!m_queue.empty() && bytes < kWriteBytes && buffers.size() < kWriteParts) {
    bytes += m_queue.front()->size();
    buffers.push_back(asio::buffer(m_queue.front()->data(), m_queue.front()->size()));
    m_writing.push_back(std::move(m_queue.front()));
    m_queue.pop_front();
  }
  m_writeBegan = m_runningTime.Now();
  m_stream->WriteAll(buffers, [self = shared_from_this()](const std::error_code& error,
                                                          std::size_t) { self->OnWrote(error); });
}

void Connection::OnWrote(const std::error_code& error) {
  if (m_ended) return;
  if (error) return Fail(error.message());
  for (const SharedBytes& part : m_writing) m_queuedBytes -= Cost(part);
  m_writing.clear();
  m_lastWrite = Clock::now();
  if (!m_queue.empty()) {
    Write();
  } else if (m_ending) {
    m_stream->EndSending();
  }
  if (m_handler) m_handler->OnWritten();
}

void Connection::StartTick() {
  const auto shortest =
      std::min({m_limits.heartbeat, m_limits.writeDeadline, m_limits.silenceDeadline});
  const std::chrono::milliseconds tick = std::max(shortest / 4, std::chrono::milliseconds(5));
  m_runningTime.Tick(2 * tick);
  m_timer.expires_after(tick);
  // Weak: a timer must not keep a connection whose operations have all ended.
  m_timer.async_wait([weak = weak_from_this()](const std::error_code& error) {
    if (const auto self = weak.lock(); self && !error) self->OnTick();
  });
}

void Connection::OnTick() {
  if (m_ended) return;
  const Clock::duration now = m_runningTime.Now();
  if (m_ending && now > m_endBy) return Close();
  if (!m_writing.empty() && now - m_writeBegan > m_limits.writeDeadline)
    return Fail("the peer has read nothing for " + Seconds(m_limits.writeDeadline));
  if (!m_rests && now - m_lastRead > m_limits.silenceDeadline)
    return Fail("the peer has sent nothing for " + Seconds(m_limits.silenceDeadline));
  if (m_handler && m_writing.empty() && Clock::now() - m_lastWrite >= m_limits.heartbeat) {
    static const SharedBytes beat = ShareBytes(EncodeFrame(FrameType::Heartbeat, Bytes()));
    Send(beat);
  }
  StartTick();
}

void Connection::Fail(const std::string& reason) {
  Handler* const handler = m_handler;
  Close();
  if (handler) handler->OnClosed(reason);
}

void Connection::Close() {
  if (m_ended) return;
  m_ended = true;
  m_handler = nullptr;
  m_queue.clear();  // m_writing stays: the stream may still read it
  m_timer.cancel();
  m_rest.cancel();
  m_stream->Close();
}

void Connection::CloseAfterWriting() {
  if (m_ended || m_ending) return;
  m_ending = true;
  m_handler = nullptr;
  m_endBy = m_runningTime.Now() + kEndPatience;
  if (m_writing.empty()) m_stream->EndSending();
}

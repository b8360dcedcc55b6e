// Frames: the messages in the bytes of a connection.
//
// Shape    length:u32 (big-endian, of type and body) type:u8 body. Control bodies are the protobuf
//          messages of quor.proto. A data body is .trc tagged records end to end: name records
//          before the first trace that uses them, with the ids of the sender's hub.
// Errors   A length of 0 or beyond the limit, or an unknown type, ends the connection with a
//          reason.
// Threads  One reader and one writer per connection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "records/name_ids.h"

constexpr std::uint32_t kProtocolVersion = 1;
constexpr std::size_t kFrameHeaderBytes = 5;
constexpr std::size_t kControlFrameBytesMax = 4u << 20;
constexpr std::size_t kDataFrameBytesMax = 1u << 20;
constexpr std::size_t kBatchBytes = 64u << 10;  // the size that a sender aims at

enum class FrameType : std::uint8_t {
  Hello = 1,
  Welcome = 2,
  Refused = 3,
  Request = 4,
  Response = 5,
  Data = 6,
  Ledger = 7,
  Heartbeat = 8,  // empty body, both ways
  Taken = 9,      // to a forwarder, and from a taker: how many frames of the stream have arrived
};

struct Frame {
  FrameType type;
  Bytes body;  // borrowed from the reader until its next Feed or Room
};

// Reads the protobuf message that a control frame carries. False when the body is not one.
template <class Message>
bool ParseBody(const Frame& frame, Message* message) {
  return message->ParseFromArray(frame.body.data(), static_cast<int>(frame.body.size()));
}

// Splits a stream into frames. Feed it the received bytes, in pieces of any size, and take all
// frames before feeding more: then it holds at most one frame and one piece.
class FrameReader {
 public:
  void Feed(Bytes bytes);
  // The same without a copy: write into the room, then report how much was written.
  std::span<std::uint8_t> Room(std::size_t bytes);
  void Filled(std::size_t bytes) { m_end += bytes; }
  // The next whole frame; none when more bytes are needed or after an error.
  std::optional<Frame> Next();
  // Not empty after a malformed frame: close the connection with this reason.
  const std::string& Error() const { return m_error; }
  std::size_t BufferedBytes() const { return m_end - m_begin; }
  // For a peer that is not identified yet: a longer frame is an error.
  void Limit(std::size_t bytes) { m_limit = bytes; }

 private:
  std::optional<Frame> Fail(std::string reason);

  std::vector<std::uint8_t> m_buffer;  // the bytes are [m_begin, m_end) of it
  std::size_t m_begin = 0, m_end = 0;
  std::size_t m_limit = kControlFrameBytesMax;
  std::string m_error;
};

// The bytes of one frame.
std::vector<std::uint8_t> EncodeFrame(FrameType type, Bytes body);
std::vector<std::uint8_t> EncodeFrame(FrameType type, const std::string& body);
// The header of a frame whose body is sent separately.
std::vector<std::uint8_t> EncodeFrameHeader(FrameType type, std::size_t bodyBytes);

// Checks a data body: whole tagged records and nothing else. Calls the sink for each record. False
// with a reason when a length or a tag is wrong; the sink is then not called at all.
class DataSink {
 public:
  virtual void OnName(HubNameId id, std::string_view utf8) = 0;  // cut at its first NUL
  virtual void OnTrace(const std::uint8_t* record, std::size_t bytes) = 0;

 protected:
  ~DataSink() = default;
};
bool ReadDataBody(Bytes body, DataSink& sink, std::string* why);

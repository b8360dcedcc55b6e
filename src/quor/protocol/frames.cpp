#include "quor/protocol/frames.h"

#include <algorithm>
#include <cstring>

#include "base/fail_with.h"
#include "records/name_record.h"

namespace {

constexpr std::size_t kLengthBytes = 4;

bool IsFrameType(std::uint8_t type) {
  return type >= static_cast<std::uint8_t>(FrameType::Hello) &&
         type <= static_cast<std::uint8_t>(FrameType::Taken);
}

std::size_t LongestOf(FrameType type, std::size_t limit) {
  return std::min(limit, type == FrameType::Data ? kDataFrameBytesMax : kControlFrameBytesMax);
}

// The whole length of the record after a tag; 0 if the end cuts it.
std::size_t RecordBytes(std::uint8_t tag, Bytes rest) {
  return tag == kTagName ? WholeNameBytes(rest) : WholeTraceBytes(rest);
}

bool CheckDataBody(Bytes body, std::string* why) {
  for (std::size_t at = 0; at < body.size();) {
    const std::uint8_t tag = body[at++];
    if (tag != kTagName && tag != kTagTrace)
      return FailWith(why, "a record of unknown kind " + std::to_string(tag));
    const std::size_t bytes = RecordBytes(tag, body.subspan(at));
    if (bytes == 0) return FailWith(why, "a record is cut short");
    at += bytes;
  }
  return true;
}

}  // namespace

void FrameReader::Feed(Bytes bytes) {
  if (bytes.empty() || !m_error.empty()) return;
  const std::span<std::uint8_t> room = Room(bytes.size());
  std::memcpy(room.data(), bytes.data(), bytes.size());
  Filled(bytes.size());
}

std::span<std::uint8_t> FrameReader::Room(std::size_t bytes) {
  if (m_begin == m_end) m_begin = m_end = 0;
  if (m_buffer.size() - m_end < bytes && m_begin > 0) {
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, m_end - m_begin);
    m_end -= m_begin;
    m_begin = 0;
  }
  if (m_buffer.size() - m_end < bytes) m_buffer.resize(m_end + bytes);
  return {m_buffer.data() + m_end, bytes};
}

std::optional<Frame> FrameReader::Fail(std::string reason) {
  m_error = std::move(reason);
  m_buffer.clear();
  m_begin = m_end = 0;
  return std::nullopt;
}

std::optional<Frame> FrameReader::Next() {
  // The type is checked before the body arrives, so that garbage is not collected first.
  if (!m_error.empty() || BufferedBytes() < kFrameHeaderBytes) return std::nullopt;
  const std::uint8_t* const head = m_buffer.data() + m_begin;
  const std::size_t length = LoadBe32(head);
  if (length == 0) return Fail("a frame of length 0");
  if (!IsFrameType(head[kLengthBytes]))
    return Fail("a frame of unknown type " + std::to_string(head[kLengthBytes]));
  const auto type = static_cast<FrameType>(head[kLengthBytes]);
  if (length > LongestOf(type, m_limit))
    return Fail("a frame of " + std::to_string(length) + " bytes is too long");
  if (BufferedBytes() < kLengthBytes + length) return std::nullopt;
  m_begin += kLengthBytes + length;
  return Frame{type, Bytes(head + kFrameHeaderBytes, length - 1)};
}

std::vector<std::uint8_t> EncodeFrameHeader(FrameType type, std::size_t bodyBytes) {
  std::vector<std::uint8_t> header(kFrameHeaderBytes);
  StoreBe32(header.data(), static_cast<std::uint32_t>(bodyBytes + 1));
  header[kLengthBytes] = static_cast<std::uint8_t>(type);
  return header;
}

std::vector<std::uint8_t> EncodeFrame(FrameType type, Bytes body) {
  std::vector<std::uint8_t> frame = EncodeFrameHeader(type, body.size());
  frame.insert(frame.end(), body.begin(), body.end());
  return frame;
}

std::vector<std::uint8_t> EncodeFrame(FrameType type, const std::string& body) {
  return EncodeFrame(type, Bytes(reinterpret_cast<const std::uint8_t*>(body.data()), body.size()));
}

bool ReadDataBody(Bytes body, DataSink& sink, std::string* why) {
  if (!CheckDataBody(body, why)) return false;
  for (std::size_t at = 0; at < body.size();) {
    const std::uint8_t tag = body[at++];
    const std::size_t bytes = RecordBytes(tag, body.subspan(at));
    const std::uint8_t* const record = body.data() + at;
    if (tag == kTagName) {
      const RawHubName name(record);
      sink.OnName(name.NamedId(), name.Text());
    } else {
      sink.OnTrace(record, bytes);
    }
    at += bytes;
  }
  return true;
}

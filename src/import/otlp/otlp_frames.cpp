#include "import/otlp/otlp_frames.h"

#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/wire_format_lite.h>

#include <algorithm>

using google::protobuf::internal::WireFormatLite;
using google::protobuf::io::CodedInputStream;

namespace {

constexpr std::size_t kLengthBytes = 4, kTagAndLengthMost = 11;
constexpr unsigned char kFirstTag = 0x0A;  // field 1, with a length
constexpr const char* kCut = "the input ends within a message";
constexpr int kRecordDepth = 3;  // resource, scope, record

// The kind of a record by the fields that only one of them has in this form. A metric has a text
// where a span has an id of 16 bytes.
class RecordFields {
 public:
  void See(std::uint32_t field, WireFormatLite::WireType type, std::uint32_t length) {
    const bool isFixed = type == WireFormatLite::WIRETYPE_FIXED64;
    const bool isBytes = type == WireFormatLite::WIRETYPE_LENGTH_DELIMITED;
    if (isFixed && (field == 1 || field == 11)) m_isLog = true;
    if (field == 2 && type == WireFormatLite::WIRETYPE_VARINT) m_isLog = true;
    if (isFixed && (field == 7 || field == 8)) m_isSpan = true;
    if (isBytes && field == 1 && length == 16) m_hasTrace = true;
    if (isBytes && field == 2 && length == 8) m_hasSpan = true;
  }
  OtlpKind Kind() const {
    const bool isSpan = m_isSpan || (m_hasTrace && m_hasSpan);
    if (m_isLog != isSpan) return isSpan ? OtlpKind::Spans : OtlpKind::Logs;
    return OtlpKind::Unknown;
  }

 private:
  bool m_isLog = false, m_isSpan = false, m_hasTrace = false, m_hasSpan = false;
};

OtlpKind KindOfRecord(std::string_view bytes) {
  CodedInputStream in(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                      static_cast<int>(bytes.size()));
  RecordFields fields;
  while (const std::uint32_t tag = in.ReadTag()) {
    const auto type = WireFormatLite::GetTagWireType(tag);
    std::uint32_t length = 0;
    if (type == WireFormatLite::WIRETYPE_LENGTH_DELIMITED) {
      if (!in.ReadVarint32(&length) || !in.Skip(static_cast<int>(std::min(length, 1u << 30))))
        return OtlpKind::Unknown;
    } else if (!WireFormatLite::SkipField(&in, tag)) {
      return OtlpKind::Unknown;
    }
    fields.See(static_cast<std::uint32_t>(WireFormatLite::GetTagFieldNumber(tag)), type, length);
  }
  return fields.Kind();
}

// Of the first record that has a kind. Field 1 of a request holds resources; field 2 of these, and
// of a scope, what is inside of it.
OtlpKind KindAt(std::string_view bytes, int depth) {
  if (depth == kRecordDepth) return KindOfRecord(bytes);
  CodedInputStream in(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                      static_cast<int>(bytes.size()));
  const std::uint32_t wanted = depth == 0 ? 0x0A : 0x12;
  OtlpKind kind = OtlpKind::Empty;
  while (const std::uint32_t tag = in.ReadTag()) {
    if (tag != wanted) {
      if (!WireFormatLite::SkipField(&in, tag)) break;
      continue;
    }
    std::uint32_t length = 0;
    if (!in.ReadVarint32(&length)) break;
    const auto at = static_cast<std::size_t>(in.CurrentPosition());
    if (length > bytes.size() - at || !in.Skip(static_cast<int>(length))) break;
    const OtlpKind inner = KindAt(bytes.substr(at, length), depth + 1);
    if (inner == OtlpKind::Logs || inner == OtlpKind::Spans) return inner;
    if (inner == OtlpKind::Unknown) kind = inner;
  }
  return kind;
}

}  // namespace

OtlpKind KindOfRequest(std::string_view bytes) {
  return KindAt(bytes, 0);
}

OtlpFrames::Got OtlpFrames::Fail(const std::string& what) {
  m_why = "byte " + std::to_string(m_place) + ": " + what;
  return Got::Bad;
}

bool OtlpFrames::ReadLength(std::string_view head, std::size_t& before, std::uint64_t& length) {
  const auto first = static_cast<unsigned char>(head[0]);
  if (first == kFirstTag) {
    CodedInputStream in(reinterpret_cast<const std::uint8_t*>(head.data()),
                        static_cast<int>(head.size()));
    in.ReadTag();
    const bool isRead = in.ReadVarint64(&length);
    before = static_cast<std::size_t>(in.CurrentPosition());
    if (isRead) return true;
    Fail(head.size() < kTagAndLengthMost ? kCut : "a length without end");
    return false;
  }
  if (first > kLengthFirstMax || head.size() < kLengthBytes) {
    Fail(first > kLengthFirstMax ? "no message begins so" : kCut);
    return false;
  }
  for (const char byte : head.substr(0, kLengthBytes))
    length = length << 8 | static_cast<unsigned char>(byte);
  before = kLengthBytes;
  return true;
}

std::string_view OtlpFrames::NextPart(std::size_t& before, Got& got) {
  const std::string_view head = m_reader.PeekBytes(kTagAndLengthMost);
  got = head.empty() ? Got::End : Got::Bad;
  std::uint64_t length = 0;
  if (head.empty() || !ReadLength(head, before, length)) return {};
  if (length > kPartBytesMax) {
    got = Fail("a part of more than " + std::to_string(kPartBytesMax >> 20) + " MiB");
    return {};
  }
  const std::string_view whole = m_reader.PeekBytes(before + static_cast<std::size_t>(length));
  if (whole.size() == before + length) return whole;
  got = Fail(kCut);
  return {};
}

OtlpFrames::Got OtlpFrames::Next(quor::otlp::ExportLogs& logs, quor::otlp::ExportSpans& spans) {
  for (;;) {
    std::size_t before = 0;
    Got got = Got::End;
    const std::string_view whole = NextPart(before, got);
    if (whole.empty()) return got;
    // A resource of one message is a request of its own, with the tag before it.
    const bool isPart = static_cast<unsigned char>(whole[0]) == kFirstTag;
    const std::string_view bytes = isPart ? whole : whole.substr(before);
    const OtlpKind kind = KindOfRequest(bytes);
    const auto size = static_cast<int>(bytes.size());
    const bool isLogs = kind == OtlpKind::Logs, isSpans = kind == OtlpKind::Spans;
    if (isLogs && !logs.ParseFromArray(bytes.data(), size)) return Fail("it is no protobuf");
    if (isSpans && !spans.ParseFromArray(bytes.data(), size)) return Fail("it is no protobuf");
    if (kind == OtlpKind::Unknown) ++m_others;
    m_reader.Drop(whole.size());
    m_place += whole.size();
    if (isLogs || isSpans) return isLogs ? Got::Logs : Got::Spans;
  }
}

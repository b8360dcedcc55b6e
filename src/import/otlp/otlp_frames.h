// Requests of OpenTelemetry in their protobuf form, out of a file.
//
// Shape    A file is one message, or messages with four bytes before each, the number of its bytes
//          (the first one counts most). One message is read resource by resource. A part tells by
//          its first record whether it is of logs or of spans; one that is neither, as of metrics,
//          is passed over and counted.
// Owner    Borrows the reader.
// Errors   Bad, and Why with the place: the input ends within a message, is no protobuf, or has a
//          part of more than kPartBytesMax. Nothing behind it can be found.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>

#include "import/line_reader.h"
#include "quor/otlp/otlp.pb.h"

enum class OtlpKind { Unknown, Empty, Logs, Spans };

// What the bytes of an Export request hold.
OtlpKind KindOfRequest(std::string_view bytes);

class OtlpFrames {
 public:
  static constexpr std::size_t kPartBytesMax = std::size_t{64} << 20;
  // Of a message that is no longer than kPartBytesMax, the first byte of four is not larger. No
  // other message begins so.
  static constexpr unsigned char kLengthFirstMax = kPartBytesMax >> 24;
  enum class Got { Logs, Spans, End, Bad };

  explicit OtlpFrames(LineReader& reader) : m_reader(reader) {}

  // Replaces what the message of its kind holds.
  Got Next(quor::otlp::ExportLogs& logs, quor::otlp::ExportSpans& spans);
  const std::string& Why() const { return m_why; }
  std::uint64_t Others() const { return m_others; }  // parts that are neither

 private:
  Got Fail(const std::string& what);
  bool ReadLength(std::string_view head, std::size_t& before, std::uint64_t& length);
  // The bytes of the next part, with what stands before it. Empty: End or Bad, as `got` says.
  std::string_view NextPart(std::size_t& before, Got& got);

  LineReader& m_reader;
  std::uint64_t m_place = 0;
  std::uint64_t m_others = 0;
  std::string m_why;
};

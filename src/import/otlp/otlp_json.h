// Requests of OpenTelemetry in their JSON form, as the messages that they are in protobuf.
//
// Shape    A value is one request, of logs or of spans; lines hold one each, but a value may also
//          have several lines. Names of fields have capitals inside or underscores. Ids are
//          hexadecimal, bytes base64, numbers of 64 bits texts or numbers, enumerations numbers or
//          names. A field that is not known is passed over; a value of another kind than its field
//          is left out and counted.
// Owner    Borrows the tokens.
// Errors   Bad, and Why with the place. Also of a request that would take more than
// kRequestBytesMax
//          of memory.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>

#include "import/json/json_pull.h"
#include "quor/otlp/otlp.pb.h"

class OtlpJson {
 public:
  static constexpr std::uint64_t kRequestBytesMax = std::uint64_t{256} << 20;
  enum class Got { Request, End, Bad };

  explicit OtlpJson(JsonPull& pull) : m_pull(pull) {}

  // Replaces what the messages hold.
  Got Next(quor::otlp::ExportLogs& logs, quor::otlp::ExportSpans& spans);
  const std::string& Why() const { return m_tooLong.empty() ? m_pull.Why() : m_tooLong; }
  std::uint64_t Strange() const { return m_strange; }
  std::uint64_t Metrics() const { return m_metrics; }  // resources with metrics

 private:
  static constexpr std::uint64_t kObjectBytes = 256;  // an empty one, as a message

  template <class Field>
  bool Members(JsonPart part, Field field);
  template <class Element>
  bool Elements(JsonPart part, Element element);
  bool IsTooLong();
  bool Other(JsonPart part);

  bool Text(JsonPart part, std::string& to);
  bool Id(JsonPart part, std::string& to);
  bool Base64(JsonPart part, std::string& to);
  template <class Number, class Set>
  bool Whole(JsonPart part, Set set);
  template <class Set>
  bool Double(JsonPart part, Set set);
  template <class Set>
  bool Word(JsonPart part, std::string_view prefix, Set set);

  bool Value(JsonPart part, quor::otlp::AnyValue& to);
  bool Attribute(JsonPart part, quor::otlp::KeyValue& to);
  bool Attributes(JsonPart part, google::protobuf::RepeatedPtrField<quor::otlp::KeyValue>& to);
  bool Resource(JsonPart part, quor::otlp::Resource& to);
  bool Scope(JsonPart part, quor::otlp::Scope& to);
  bool Log(JsonPart part, quor::otlp::LogRecord& to);
  bool LogIds(std::string_view key, JsonPart part, quor::otlp::LogRecord& to);
  bool Span(JsonPart part, quor::otlp::Span& to);
  bool SpanParts(std::string_view key, JsonPart part, quor::otlp::Span& to);
  bool Event(JsonPart part, quor::otlp::Span::Event& to);
  bool Link(JsonPart part, quor::otlp::Span::Link& to);
  bool Status(JsonPart part, quor::otlp::Span::Status& to);
  bool ResourceLogs(JsonPart part, quor::otlp::ResourceLogs& to);
  bool ResourceSpans(JsonPart part, quor::otlp::ResourceSpans& to);

  JsonPull& m_pull;
  std::uint64_t m_begin = 0, m_objects = 0;  // of this request
  std::uint64_t m_strange = 0, m_metrics = 0;
  std::string m_tooLong;
};

#include "import/otlp/otlp_import.h"

#include <gmock/gmock.h>

#include "../imported_file.h"
#include "import/otlp/json_values.h"
#include "import/otlp/otlp_frames.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

ImportedFile Import(const std::string& bytes) {
  return ImportBytes<OtlpImport>(bytes, {});
}

constexpr const char* kResource =
    R"("resource":{"attributes":[{"key":"service.name","value":{"stringValue":"shop"}},)"
    R"({"key":"process.pid","value":{"intValue":"7"}}]})";

// A line with one log at so many milliseconds; `more` are fields of the log.
std::string LogLine(int ms, const std::string& body, const std::string& more = "") {
  return std::string(R"({"resourceLogs":[{)") + kResource +
         R"(,"scopeLogs":[{"scope":{"name":"net"},"logRecords":[{"timeUnixNano":")" +
         std::to_string(ms) + R"(000000","body":{"stringValue":")" + body + "\"}" + more +
         "}]}]}]}\n";
}

std::string SpanLine(int begin, int end, const std::string& id, const std::string& parent) {
  return std::string(R"({"resource_spans":[{)") + kResource +
         R"(,"scope_spans":[{"scope":{"name":"net"},"spans":[{"trace_id":)"
         R"("0af7651916cd43dd8448eb211c80319c","span_id":")" +
         id + R"(","parent_span_id":")" + parent + R"(","name":"s)" + id.substr(0, 2) +
         R"(","kind":"SPAN_KIND_SERVER","start_time_unix_nano":)" + std::to_string(begin) +
         R"(000000,"end_time_unix_nano":")" + std::to_string(end) + "000000\"}]}]}]}\n";
}

TEST(OtlpImport, ALineOfJsonIsALog) {
  const ImportedFile file = Import(LogLine(
      5, "up",
      R"(,"severityNumber":"SEVERITY_NUMBER_WARN2","attributes":[{"key":"n","value":{"intValue":9}},)"
      R"({"key":"b","value":{"bytesValue":"AQI="}},{"key":"l","value":{"arrayValue":{"values":)"
      R"([{"boolValue":true},{"doubleValue":"NaN"},{}]}}}],"spanId":"00f067aa0ba902b7")"));
  EXPECT_THAT(
      file.walked.traces,
      ElementsAre(R"(5 net/Log shop 7 0 up n=9 b="AQI=" l=[true,"NaN",null] span=00f067aa)"));
  EXPECT_THAT(file.texts, IsEmpty());
  EXPECT_TRUE(file.isWhole);
}

TEST(OtlpImport, SpansOfSeveralLinesNest) {
  const ImportedFile file = Import(SpanLine(2, 3, "0100000000000000", "0200000000000000") +
                                   SpanLine(1, 4, "0200000000000000", ""));
  EXPECT_THAT(
      file.walked.traces,
      ElementsAre("1 net/Server shop 7 lane 1 Begin: s02 trace=0af76519 span=02000000",
                  "2 net/Server shop 7 lane 1 Begin: s01 trace=0af76519 span=01000000",
                  "3 net/Server shop 7 lane 1 End: s01", "4 net/Server shop 7 lane 1 End: s02"));
}

TEST(OtlpImport, ALineThatIsTornCostsNoOther) {
  const ImportedFile file =
      Import(LogLine(1, "a") + LogLine(2, "b").substr(0, 90) + "\n" + LogLine(3, "c"));
  EXPECT_THAT(file.walked.traces, ElementsAre("1 net/Log shop 7 0 a", "3 net/Log shop 7 0 c"));
  EXPECT_THAT(file.texts, ElementsAre(HasSubstr("1 request was left out: in, line 2, byte ")));
  EXPECT_FALSE(file.isWhole);
}

TEST(OtlpImport, JsonThatIsCutAtAnyByteKeepsWhatIsWhole) {
  const std::string first = LogLine(1, "a"), both = first + LogLine(2, "b");
  for (std::size_t bytes = 1; bytes < both.size() - 1; ++bytes) {
    const ImportedFile file = Import(both.substr(0, bytes));
    EXPECT_THAT(file.walked.traces, SizeIs(bytes < first.size() - 1 ? 0 : 1)) << bytes;
    EXPECT_EQ(file.isWhole, bytes == first.size() - 1 || bytes == first.size()) << bytes;
  }
}

TEST(OtlpImport, ValuesOfAnotherKindAndMetricsAreCounted) {
  const ImportedFile file = Import(LogLine(1, "a", R"(,"flags":"x","spanId":"xyz","traceId":7)") +
                                   R"({"resourceMetrics":[{"a":1},{}]})");
  EXPECT_THAT(file.walked.traces, ElementsAre("1 net/Log shop 7 0 a"));
  EXPECT_THAT(file.texts,
              ElementsAre("3 values are of another kind than their fields, and were left out",
                          "2 parts hold neither logs nor spans, and are not carried over"));
}

quor::otlp::ExportLogs Logs(const std::vector<std::string>& bodies) {
  quor::otlp::ExportLogs logs;
  for (const std::string& body : bodies) {
    auto& resource = *logs.add_resource_logs();
    auto& attribute = *resource.mutable_resource()->add_attributes();
    attribute.set_key("service.name");
    attribute.mutable_value()->set_string_value("shop");
    auto& log = *resource.add_scope_logs()->add_log_records();
    log.set_time_unix_nano(5'000'000);
    log.mutable_body()->set_string_value(body);
  }
  return logs;
}

quor::otlp::ExportSpans Spans() {
  quor::otlp::ExportSpans spans;
  auto& span = *spans.add_resource_spans()->add_scope_spans()->add_spans();
  span.set_trace_id(std::string(16, 'a'));
  span.set_span_id(std::string(8, 'b'));
  span.set_name("work");
  span.set_start_time_unix_nano(1'000'000);
  span.set_end_time_unix_nano(2'000'000);
  return spans;
}

std::string Framed(const std::string& bytes) {
  std::string framed;
  for (int shift = 24; shift >= 0; shift -= 8)
    framed.push_back(static_cast<char>(bytes.size() >> shift & 0xFF));
  return framed + bytes;
}

std::vector<std::string> TextsOf(const ImportedFile& file) {
  std::vector<std::string> texts;
  for (const std::string& trace : file.walked.traces)
    texts.push_back(trace.substr(trace.rfind(' ') + 1));
  return texts;
}

TEST(OtlpImport, OneMessageAndMessagesWithTheirLengthsAreRead) {
  const std::string logs = Logs({"a", "b"}).SerializeAsString();
  EXPECT_THAT(TextsOf(Import(logs)), ElementsAre("a", "b"));
  EXPECT_THAT(TextsOf(Import(Framed(logs) + Framed("") + Framed(Logs({"c"}).SerializeAsString()))),
              ElementsAre("a", "b", "c"));
  const ImportedFile spans = Import(Framed(Spans().SerializeAsString()) + Framed(logs));
  EXPECT_THAT(spans.walked.traces, SizeIs(4));
  EXPECT_THAT(spans.walked.traces[0], HasSubstr("lane 1 Begin: work trace=61616161"));
  EXPECT_THAT(spans.walked.traces[1], HasSubstr("lane 1 End: work"));
}

TEST(OtlpImport, ProtobufThatIsCutAtAnyByteKeepsWhatIsWhole) {
  for (const bool isFramed : {false, true}) {
    const std::string first = Logs({"a"}).SerializeAsString();
    const std::string part = isFramed ? Framed(first) : first, both = part + part;
    for (std::size_t bytes = 0; bytes < both.size(); ++bytes) {
      const ImportedFile file = Import(both.substr(0, bytes));
      EXPECT_THAT(file.walked.traces, SizeIs(bytes < part.size() ? 0 : 1)) << bytes;
      EXPECT_EQ(file.isWhole, bytes == 0 || bytes == part.size()) << bytes;
    }
  }
}

TEST(OtlpImport, AMessageThatBeginsLikeABlankLineAndABraceIsProtobuf) {
  std::string body;
  std::string bytes = Logs({body}).SerializeAsString();
  while (bytes[1] != '{') bytes = Logs({body += 'x'}).SerializeAsString();
  ASSERT_TRUE(bytes.starts_with("\n{\n"));
  EXPECT_THAT(TextsOf(Import(bytes)), ElementsAre(body));
  EXPECT_THAT(TextsOf(Import("\n \n" + LogLine(1, "a"))), ElementsAre("a"));
}

TEST(OtlpImport, WhatIsNoMessageIsToldWithItsPlace) {
  EXPECT_THAT(Import("PK\x03\x04").texts, ElementsAre(HasSubstr("in, byte 0: no message begins")));
  EXPECT_THAT(Import("\x04\xFF\xFF\xFF").texts, ElementsAre(HasSubstr("more than 64 MiB")));
  const std::string whole = Framed(Logs({"a"}).SerializeAsString());
  EXPECT_THAT(Import(whole + "\xFF").texts,
              ElementsAre(HasSubstr("byte " + std::to_string(whole.size()) + ": no message")));
}

TEST(KindOfRequest, TellsLogsSpansAndMetricsApart) {
  EXPECT_EQ(KindOfRequest(Logs({"a"}).SerializeAsString()), OtlpKind::Logs);
  EXPECT_EQ(KindOfRequest(Spans().SerializeAsString()), OtlpKind::Spans);
  EXPECT_EQ(KindOfRequest(""), OtlpKind::Empty);
  // A metric is a name, a description and a unit.
  EXPECT_EQ(KindOfRequest(std::string("\x0A\x0A\x12\x08\x12\x06\x0A\x01n\x12\x01"
                                      "d",
                                      12)),
            OtlpKind::Unknown);
}

TEST(JsonValues, AreReadInTheirForms) {
  std::string bytes;
  EXPECT_TRUE(ReadBase64("aGk_-w==", bytes) && bytes == "hi?\xFB") << bytes;
  EXPECT_FALSE(ReadBase64("a", bytes) || ReadBase64("a b=", bytes));
  EXPECT_TRUE(ReadHexBytes("0aF1", bytes) && bytes == "\x0A\xF1");
  EXPECT_FALSE(ReadHexBytes("0", bytes) || ReadHexBytes("0g", bytes));
  std::uint64_t number = 0;
  std::int64_t with = 0;
  EXPECT_TRUE(ReadUnsigned("18446744073709551615", number) && number == UINT64_MAX);
  EXPECT_TRUE(ReadSigned("-9223372036854775808", with) && with == INT64_MIN);
  EXPECT_TRUE(ReadUnsigned("7.0", number) && number == 7);
  for (const char* bad : {"", "-1", "1.5", "1e30", "18446744073709551616", "x", "NaN"})
    EXPECT_FALSE(ReadUnsigned(bad, number)) << bad;
  std::uint32_t word = 0;
  EXPECT_TRUE(ReadEnum("SEVERITY_NUMBER_FATAL4", "SEVERITY_NUMBER_", word) && word == 24);
  EXPECT_TRUE(ReadEnum("SEVERITY_NUMBER_UNSPECIFIED", "SEVERITY_NUMBER_", word) && word == 0);
  EXPECT_TRUE(ReadEnum("STATUS_CODE_ERROR", "STATUS_CODE_", word) && word == 2);
  EXPECT_FALSE(ReadEnum("SPAN_KIND_", "SPAN_KIND_", word));
}

}  // namespace

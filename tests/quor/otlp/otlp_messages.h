// Messages as an application sends them, and the records that they become as lines of text.
#pragma once

#include <string>
#include <vector>

#include "quor/otlp/otlp_mapper.h"
#include "records/raw_trace.h"

inline void SetText(quor::otlp::KeyValue& to, const std::string& key, const std::string& text) {
  to.set_key(key);
  to.mutable_value()->set_string_value(text);
}
template <class Message>
void AddText(Message& to, const std::string& key, const std::string& text) {
  SetText(*to.add_attributes(), key, text);
}
template <class Message>
quor::otlp::AnyValue& AddValue(Message& to, const std::string& key) {
  auto* const attribute = to.add_attributes();
  attribute->set_key(key);
  return *attribute->mutable_value();
}

constexpr std::uint64_t kSecondNs = 1'000'000'000;
// 2026-11-24 00:00:00.
constexpr std::uint64_t kMidnight = 1'795'478'400 * kSecondNs;

inline std::string Clock(std::uint32_t date, std::uint32_t time) {
  const auto [year, month, day] = UnpackDate(date);
  const auto [hour, minute, second, ms] = UnpackTime(time);
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u", year, month, day, hour,
                minute, second, ms);
  return text;
}

// Remembers the records that it is given.
class TakenRecords final : public OtlpTaker {
 public:
  struct Taken {
    OtlpSource source;
    std::uint64_t unixNs = 0;
    std::string when;
    std::uint64_t tic = 0;
    std::uint16_t attributes = 0;
    std::string component, category, thread, file;
    std::uint32_t line = 0;
    std::string text, stack;
  };

  void OnRecord(const OtlpSource& source, const OtlpRecord& record) override {
    // All of it is copied at once: it is borrowed.
    all.push_back({source, record.unixNs, Clock(record.date, record.time), record.tic,
                   record.attributes, std::string(record.component), std::string(record.category),
                   std::string(record.thread), std::string(record.file), record.line,
                   std::string(record.text), std::string(record.stack)});
    anyIsNull = anyIsNull || !record.component.data() || !record.category.data() ||
                !record.thread.data() || !record.file.data() || !record.text.data() ||
                !record.stack.data();
  }
  void OnEnd(const OtlpSource& source) override { ended.push_back(source); }

  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const Taken& taken : all) texts.push_back(taken.text);
    return texts;
  }
  // "lane 1: Begin: x".
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    for (const Taken& taken : all) lines.push_back(taken.thread + ": " + taken.text);
    return lines;
  }

  std::vector<Taken> all;
  std::vector<OtlpSource> ended;
  bool anyIsNull = false;
};

// One message of logs from one process.
struct LogMessage {
  quor::otlp::ExportLogs message;
  quor::otlp::ResourceLogs& resourceLogs = *message.add_resource_logs();
  quor::otlp::Resource& resource = *resourceLogs.mutable_resource();
  quor::otlp::ScopeLogs& scopeLogs = *resourceLogs.add_scope_logs();
  quor::otlp::Scope& scope = *scopeLogs.mutable_scope();

  quor::otlp::LogRecord& Add(const std::string& body = {}) {
    quor::otlp::LogRecord& log = *scopeLogs.add_log_records();
    if (!body.empty()) log.mutable_body()->set_string_value(body);
    return log;
  }
};

// One message of spans from one process. Spans have times in seconds after midnight.
struct SpanMessage {
  quor::otlp::ExportSpans message;
  quor::otlp::ResourceSpans& resourceSpans = *message.add_resource_spans();
  quor::otlp::Resource& resource = *resourceSpans.mutable_resource();
  quor::otlp::ScopeSpans& scopeSpans = *resourceSpans.add_scope_spans();
  quor::otlp::Scope& scope = *scopeSpans.mutable_scope();

  // `parent`: the name of another one; empty: a root. A name is the id as well.
  quor::otlp::Span& Add(const std::string& name, std::uint64_t from, std::uint64_t to,
                        const std::string& parent = {}, const std::string& trace = "trace") {
    quor::otlp::Span& span = *scopeSpans.add_spans();
    span.set_name(name);
    span.set_trace_id(trace);
    span.set_span_id(name);
    span.set_parent_span_id(parent);
    span.set_start_time_unix_nano(kMidnight + from * kSecondNs);
    span.set_end_time_unix_nano(kMidnight + to * kSecondNs);
    return span;
  }
};

// An arrival at noon, `seconds` after the mapper began.
inline OtlpArrival ArrivalAt(int seconds = 0) {
  return {"10.0.0.7", kMidnight + 12 * 3600 * kSecondNs, std::chrono::seconds(seconds)};
}

inline TakenRecords TakenOf(const quor::otlp::ExportLogs& logs) {
  TakenRecords taken;
  OtlpMapper(taken).Take(logs, ArrivalAt());
  return taken;
}

// Logs and spans in JSON.
#include "import/otlp/otlp_json.h"
#include "import/otlp/otlp_json_tokens.h"

bool OtlpJson::Log(JsonPart part, quor::otlp::LogRecord& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "timeUnixNano")
      return Whole<std::uint64_t>(value, [&](auto time) { to.set_time_unix_nano(time); });
    if (key == "observedTimeUnixNano")
      return Whole<std::uint64_t>(value, [&](auto time) { to.set_observed_time_unix_nano(time); });
    if (key == "severityNumber")
      return Word(value, "SEVERITY_NUMBER_", [&](auto number) { to.set_severity_number(number); });
    if (key == "severityText") return Text(value, *to.mutable_severity_text());
    if (key == "body") return Value(value, *to.mutable_body());
    if (key == "attributes") return Attributes(value, *to.mutable_attributes());
    return LogIds(key, value, to);
  });
}

bool OtlpJson::LogIds(std::string_view key, JsonPart part, quor::otlp::LogRecord& to) {
  if (key == "traceId") return Id(part, *to.mutable_trace_id());
  if (key == "spanId") return Id(part, *to.mutable_span_id());
  if (key == "eventName") return Text(part, *to.mutable_event_name());
  if (key == "flags") return Whole<std::uint32_t>(part, [&](auto flags) { to.set_flags(flags); });
  if (key != "droppedAttributesCount") return m_pull.Skip(part);
  return Whole<std::uint32_t>(part, [&](auto count) { to.set_dropped_attributes_count(count); });
}

bool OtlpJson::Span(JsonPart part, quor::otlp::Span& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "traceId") return Id(value, *to.mutable_trace_id());
    if (key == "spanId") return Id(value, *to.mutable_span_id());
    if (key == "parentSpanId") return Id(value, *to.mutable_parent_span_id());
    if (key == "name") return Text(value, *to.mutable_name());
    if (key == "startTimeUnixNano")
      return Whole<std::uint64_t>(value, [&](auto time) { to.set_start_time_unix_nano(time); });
    if (key == "endTimeUnixNano")
      return Whole<std::uint64_t>(value, [&](auto time) { to.set_end_time_unix_nano(time); });
    if (key == "kind") return Word(value, "SPAN_KIND_", [&](auto kind) { to.set_kind(kind); });
    if (key == "attributes") return Attributes(value, *to.mutable_attributes());
    return SpanParts(key, value, to);
  });
}

bool OtlpJson::SpanParts(std::string_view key, JsonPart part, quor::otlp::Span& to) {
  if (key == "status") return Status(part, *to.mutable_status());
  if (key == "events")
    return Elements(part, [&](JsonPart one) { return Event(one, *to.add_events()); });
  if (key == "links")
    return Elements(part, [&](JsonPart one) { return Link(one, *to.add_links()); });
  if (key == "flags") return Whole<std::uint32_t>(part, [&](auto flags) { to.set_flags(flags); });
  if (key == "droppedAttributesCount")
    return Whole<std::uint32_t>(part, [&](auto count) { to.set_dropped_attributes_count(count); });
  if (key == "droppedEventsCount")
    return Whole<std::uint32_t>(part, [&](auto count) { to.set_dropped_events_count(count); });
  if (key == "droppedLinksCount")
    return Whole<std::uint32_t>(part, [&](auto count) { to.set_dropped_links_count(count); });
  return m_pull.Skip(part);
}

bool OtlpJson::Event(JsonPart part, quor::otlp::Span::Event& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "timeUnixNano")
      return Whole<std::uint64_t>(value, [&](auto time) { to.set_time_unix_nano(time); });
    if (key == "name") return Text(value, *to.mutable_name());
    if (key == "attributes") return Attributes(value, *to.mutable_attributes());
    if (key != "droppedAttributesCount") return m_pull.Skip(value);
    return Whole<std::uint32_t>(value, [&](auto count) { to.set_dropped_attributes_count(count); });
  });
}

bool OtlpJson::Link(JsonPart part, quor::otlp::Span::Link& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "traceId") return Id(value, *to.mutable_trace_id());
    return key == "spanId" ? Id(value, *to.mutable_span_id()) : m_pull.Skip(value);
  });
}

bool OtlpJson::Status(JsonPart part, quor::otlp::Span::Status& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "message") return Text(value, *to.mutable_message());
    if (key != "code") return m_pull.Skip(value);
    return Word(value, "STATUS_CODE_", [&](auto code) { to.set_code(code); });
  });
}

bool OtlpJson::ResourceLogs(JsonPart part, quor::otlp::ResourceLogs& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "resource") return Resource(value, *to.mutable_resource());
    if (key != "scopeLogs") return m_pull.Skip(value);
    return Elements(value, [&](JsonPart one) {
      quor::otlp::ScopeLogs& scope = *to.add_scope_logs();
      return Members(one, [&](std::string_view inner, JsonPart values) {
        if (inner == "scope") return Scope(values, *scope.mutable_scope());
        if (inner != "logRecords") return m_pull.Skip(values);
        return Elements(values, [&](JsonPart log) { return Log(log, *scope.add_log_records()); });
      });
    });
  });
}

bool OtlpJson::ResourceSpans(JsonPart part, quor::otlp::ResourceSpans& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "resource") return Resource(value, *to.mutable_resource());
    if (key != "scopeSpans") return m_pull.Skip(value);
    return Elements(value, [&](JsonPart one) {
      quor::otlp::ScopeSpans& scope = *to.add_scope_spans();
      return Members(one, [&](std::string_view inner, JsonPart values) {
        if (inner == "scope") return Scope(values, *scope.mutable_scope());
        if (inner != "spans") return m_pull.Skip(values);
        return Elements(values, [&](JsonPart span) { return Span(span, *scope.add_spans()); });
      });
    });
  });
}

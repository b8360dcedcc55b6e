#include "quor/otlp/out/out_json.h"

#include "base/json_text.h"

namespace {

using quor::otlp::AnyValue;

// The members of one object. A name comes before each value.
class JsonObject {
 public:
  explicit JsonObject(std::string& json) : m_json(json) { m_json += '{'; }
  ~JsonObject() { m_json += '}'; }
  JsonObject(const JsonObject&) = delete;
  JsonObject& operator=(const JsonObject&) = delete;

  std::string& Name(const char* name) {
    m_json += m_isFirst ? "\"" : ",\"";
    m_isFirst = false;
    return m_json.append(name).append("\":");
  }
  void Text(const char* name, const std::string& text) {
    if (!text.empty()) AppendJsonText(Name(name), text);
  }
  void Hex(const char* name, const std::string& id) {
    if (id.empty()) return;
    Name(name) += '"';
    AppendHex(m_json, id);
    m_json += '"';
  }
  void Number(const char* name, std::uint32_t number) {
    if (number != 0) AppendNumber(Name(name), number);
  }
  void Nano(const char* name, std::uint64_t time) {
    Name(name) += '"';
    AppendNumber(m_json, time);
    m_json += '"';
  }

 private:
  std::string& m_json;
  bool m_isFirst = true;
};

template <class Items, class Append>
void AppendArray(std::string& json, const Items& items, Append append) {
  json += '[';
  bool isFirst = true;
  for (const auto& item : items) {
    if (!std::exchange(isFirst, false)) json += ',';
    append(json, item);
  }
  json += ']';
}

// The values that are sent: texts and whole numbers.
void AppendValue(std::string& json, const AnyValue& value) {
  JsonObject object(json);
  if (value.has_int_value()) {
    object.Name("intValue") += '"';
    AppendNumber(json, value.int_value());
    json += '"';
  } else {
    AppendJsonText(object.Name("stringValue"), value.string_value());
  }
}

template <class Attributes>
void AppendAttributes(JsonObject& object, const Attributes& attributes) {
  if (attributes.empty()) return;
  AppendArray(object.Name("attributes"), attributes,
              [](std::string& json, const quor::otlp::KeyValue& pair) {
                JsonObject of(json);
                AppendJsonText(of.Name("key"), pair.key());
                AppendValue(of.Name("value"), pair.value());
              });
}

void Append(std::string& json, const quor::otlp::LogRecord& log) {
  JsonObject object(json);
  object.Nano("timeUnixNano", log.time_unix_nano());
  if (log.observed_time_unix_nano() != 0)
    object.Nano("observedTimeUnixNano", log.observed_time_unix_nano());
  object.Number("severityNumber", log.severity_number());
  object.Text("severityText", log.severity_text());
  if (log.has_body()) AppendValue(object.Name("body"), log.body());
  AppendAttributes(object, log.attributes());
  object.Number("flags", log.flags());
  object.Hex("traceId", log.trace_id());
  object.Hex("spanId", log.span_id());
  object.Text("eventName", log.event_name());
}

void Append(std::string& json, const quor::otlp::Span& span) {
  JsonObject object(json);
  object.Hex("traceId", span.trace_id());
  object.Hex("spanId", span.span_id());
  object.Hex("parentSpanId", span.parent_span_id());
  object.Number("flags", span.flags());
  object.Text("name", span.name());
  object.Number("kind", span.kind());
  object.Nano("startTimeUnixNano", span.start_time_unix_nano());
  object.Nano("endTimeUnixNano", span.end_time_unix_nano());
  AppendAttributes(object, span.attributes());
  if (!span.has_status()) return;
  JsonObject status(object.Name("status"));
  status.Text("message", span.status().message());
  status.Number("code", span.status().code());
}

template <class OfScope, class Messages>
void AppendScope(std::string& json, const OfScope& scope, const char* name,
                 const Messages& messages) {
  JsonObject object(json);
  {
    JsonObject of(object.Name("scope"));
    of.Text("name", scope.scope().name());
  }
  AppendArray(object.Name(name), messages,
              [](std::string& to, const auto& message) { Append(to, message); });
}

template <class OfResource>
void AppendResource(JsonObject& object, const OfResource& of) {
  JsonObject resource(object.Name("resource"));
  AppendAttributes(resource, of.resource().attributes());
}

}  // namespace

void AppendOtlpJson(std::string& json, const quor::otlp::ExportLogs& logs) {
  JsonObject all(json);
  AppendArray(all.Name("resourceLogs"), logs.resource_logs(),
              [](std::string& to, const quor::otlp::ResourceLogs& of) {
                JsonObject object(to);
                AppendResource(object, of);
                AppendArray(object.Name("scopeLogs"), of.scope_logs(),
                            [](std::string& inner, const quor::otlp::ScopeLogs& scope) {
                              AppendScope(inner, scope, "logRecords", scope.log_records());
                            });
              });
}

void AppendOtlpJson(std::string& json, const quor::otlp::ExportSpans& spans) {
  JsonObject all(json);
  AppendArray(all.Name("resourceSpans"), spans.resource_spans(),
              [](std::string& to, const quor::otlp::ResourceSpans& of) {
                JsonObject object(to);
                AppendResource(object, of);
                AppendArray(object.Name("scopeSpans"), of.scope_spans(),
                            [](std::string& inner, const quor::otlp::ScopeSpans& scope) {
                              AppendScope(inner, scope, "spans", scope.spans());
                            });
              });
}

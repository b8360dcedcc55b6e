#include "import/otlp/otlp_json.h"

#include "import/otlp/otlp_json_tokens.h"

using quor::otlp::AnyValue;
using quor::otlp::KeyValue;

OtlpJson::Got OtlpJson::Next(quor::otlp::ExportLogs& logs, quor::otlp::ExportSpans& spans) {
  logs.Clear();
  spans.Clear();
  m_tooLong.clear();
  m_objects = 0;
  m_begin = m_pull.Place();
  const JsonPart part = m_pull.Next();
  if (part == JsonPart::End) return Got::End;
  if (part == JsonPart::Bad) return Got::Bad;
  const bool isRead = Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "resourceLogs")
      return Elements(value,
                      [&](JsonPart one) { return ResourceLogs(one, *logs.add_resource_logs()); });
    if (key == "resourceSpans")
      return Elements(
          value, [&](JsonPart one) { return ResourceSpans(one, *spans.add_resource_spans()); });
    if (key != "resourceMetrics") return m_pull.Skip(value);
    return Elements(value, [&](JsonPart one) {
      ++m_metrics;
      return m_pull.Skip(one);
    });
  });
  return isRead ? Got::Request : Got::Bad;
}

bool OtlpJson::IsTooLong() {
  if (m_pull.Place() - m_begin + m_objects * kObjectBytes <= kRequestBytesMax) return false;
  m_tooLong = "line " + std::to_string(m_pull.Line()) + ", byte " + std::to_string(m_pull.Place()) +
              ": a request of more than " + std::to_string(kRequestBytesMax >> 20) + " MiB";
  return true;
}

// A value of another kind than its field.
bool OtlpJson::Other(JsonPart part) {
  ++m_strange;
  return m_pull.Skip(part);
}

bool OtlpJson::Text(JsonPart part, std::string& to) {
  if (part != JsonPart::String) return Other(part);
  to = m_pull.Text();
  return true;
}

bool OtlpJson::Id(JsonPart part, std::string& to) {
  if (part == JsonPart::String && ReadHexBytes(m_pull.Text(), to)) return true;
  to.clear();
  return Other(part);
}

bool OtlpJson::Base64(JsonPart part, std::string& to) {
  if (part == JsonPart::String && ReadBase64(m_pull.Text(), to)) return true;
  to.clear();
  return Other(part);
}

bool OtlpJson::Value(JsonPart part, AnyValue& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "stringValue") return Text(value, *to.mutable_string_value());
    if (key == "bytesValue") return Base64(value, *to.mutable_bytes_value());
    if (key == "doubleValue")
      return Double(value, [&](double number) { to.set_double_value(number); });
    if (key == "boolValue") {
      if (value != JsonPart::True && value != JsonPart::False) return Other(value);
      to.set_bool_value(value == JsonPart::True);
      return true;
    }
    if (key == "intValue") {
      std::int64_t number = 0;
      const bool isNumber = value == JsonPart::String || value == JsonPart::Number;
      if (!isNumber || !ReadSigned(m_pull.Text(), number)) return Other(value);
      to.set_int_value(number);
      return true;
    }
    const bool isArray = key == "arrayValue";
    if (!isArray && key != "kvlistValue") return m_pull.Skip(value);
    if (!isArray) to.mutable_kvlist_value();
    if (isArray) to.mutable_array_value();
    return Members(value, [&](std::string_view inner, JsonPart values) {
      if (inner != "values") return m_pull.Skip(values);
      if (!isArray) return Attributes(values, *to.mutable_kvlist_value()->mutable_values());
      return Elements(values, [&](JsonPart one) {
        return Value(one, *to.mutable_array_value()->add_values());
      });
    });
  });
}

bool OtlpJson::Attribute(JsonPart part, KeyValue& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "key") return Text(value, *to.mutable_key());
    return key == "value" ? Value(value, *to.mutable_value()) : m_pull.Skip(value);
  });
}

bool OtlpJson::Attributes(JsonPart part, google::protobuf::RepeatedPtrField<KeyValue>& to) {
  return Elements(part, [&](JsonPart one) { return Attribute(one, *to.Add()); });
}

bool OtlpJson::Resource(JsonPart part, quor::otlp::Resource& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "attributes") return Attributes(value, *to.mutable_attributes());
    if (key != "droppedAttributesCount") return m_pull.Skip(value);
    return Whole<std::uint32_t>(
        value, [&](std::uint32_t count) { to.set_dropped_attributes_count(count); });
  });
}

bool OtlpJson::Scope(JsonPart part, quor::otlp::Scope& to) {
  return Members(part, [&](std::string_view key, JsonPart value) {
    if (key == "name") return Text(value, *to.mutable_name());
    if (key == "version") return Text(value, *to.mutable_version());
    return key == "attributes" ? Attributes(value, *to.mutable_attributes()) : m_pull.Skip(value);
  });
}

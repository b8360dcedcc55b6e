// The parts of OtlpJson that its messages have in common.
#pragma once

#include "import/otlp/json_values.h"
#include "import/otlp/otlp_json.h"

// `field(key, part)` reads each value whole.
template <class Field>
bool OtlpJson::Members(JsonPart part, Field field) {
  if (part != JsonPart::BeginObject) return Other(part);
  ++m_objects;
  for (;;) {
    const JsonPart key = m_pull.Next();
    if (key == JsonPart::EndObject) return true;
    if (key == JsonPart::Bad || IsTooLong()) return false;
    const std::string name = WithCapitals(m_pull.Text());
    const JsonPart value = m_pull.Next();
    if (value == JsonPart::Null) continue;
    if (value == JsonPart::Bad || !field(std::string_view(name), value)) return false;
  }
}

template <class Element>
bool OtlpJson::Elements(JsonPart part, Element element) {
  if (part != JsonPart::BeginArray) return Other(part);
  for (;;) {
    const JsonPart next = m_pull.Next();
    if (next == JsonPart::EndArray) return true;
    if (next == JsonPart::Bad || IsTooLong() || !element(next)) return false;
  }
}

template <class Number, class Set>
bool OtlpJson::Whole(JsonPart part, Set set) {
  if (part != JsonPart::String && part != JsonPart::Number) return Other(part);
  std::uint64_t number = 0;
  if (!ReadUnsigned(m_pull.Text(), number) || number > static_cast<Number>(-1)) return Other(part);
  set(static_cast<Number>(number));
  return true;
}

template <class Set>
bool OtlpJson::Double(JsonPart part, Set set) {
  double number = 0;
  if (part != JsonPart::String && part != JsonPart::Number) return Other(part);
  if (!ReadDouble(m_pull.Text(), number)) return Other(part);
  set(number);
  return true;
}

// A number of an enumeration, or its word.
template <class Set>
bool OtlpJson::Word(JsonPart part, std::string_view prefix, Set set) {
  std::uint32_t number = 0;
  if (part != JsonPart::String || !ReadEnum(m_pull.Text(), prefix, number))
    return Whole<std::uint32_t>(part, set);
  set(number);
  return true;
}

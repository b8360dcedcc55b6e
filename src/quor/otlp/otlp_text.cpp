#include "quor/otlp/otlp_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

using quor::otlp::AnyValue;

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";
constexpr std::size_t kIdBytesShown = 4;

void AppendJsonString(std::string& to, std::string_view text) {
  to.push_back('"');
  for (const char byte : text) {
    const auto code = static_cast<unsigned char>(byte);
    if (byte == '"' || byte == '\\')
      to.append(1, '\\').push_back(byte);
    else if (byte == '\n')
      to += "\\n";
    else if (byte == '\t')
      to += "\\t";
    else if (code < 0x20)
      to.append("\\u00").append(1, kHexDigits[code >> 4]).push_back(kHexDigits[code & 15]);
    else
      to.push_back(byte);
  }
  to.push_back('"');
}

void AppendBase64(std::string& to, std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const auto byte = [bytes](std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0u;
  };
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const unsigned three = byte(at) << 16 | byte(at + 1) << 8 | byte(at + 2);
    to.push_back(kDigits[three >> 18]);
    to.push_back(kDigits[three >> 12 & 63]);
    to.push_back(at + 1 < bytes.size() ? kDigits[three >> 6 & 63] : '=');
    to.push_back(at + 2 < bytes.size() ? kDigits[three & 63] : '=');
  }
}

template <class Number>
void AppendNumber(std::string& to, Number number) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  to.append(digits, static_cast<std::size_t>(end - digits));
}

void AppendDouble(std::string& to, double number) {
  if (std::isnan(number))
    to += "\"NaN\"";
  else if (std::isinf(number))
    to += number < 0 ? "\"-Infinity\"" : "\"Infinity\"";
  else
    AppendNumber(to, number);
}

void AppendList(std::string& to, const quor::otlp::ArrayValue& list) {
  to.push_back('[');
  for (int at = 0; at < list.values_size(); ++at) {
    if (at > 0) to.push_back(',');
    AppendJson(to, list.values(at));
  }
  to.push_back(']');
}

void AppendObject(std::string& to, const quor::otlp::KeyValueList& list) {
  to.push_back('{');
  for (int at = 0; at < list.values_size(); ++at) {
    if (at > 0) to.push_back(',');
    AppendJsonString(to, list.values(at).key());
    to.push_back(':');
    AppendJson(to, list.values(at).value());
  }
  to.push_back('}');
}

// Could it be taken for more than one word, or for the beginning of another one?
bool IsOneWord(std::string_view text) {
  return !text.empty() && std::none_of(text.begin(), text.end(), [](char byte) {
    return static_cast<unsigned char>(byte) <= ' ' || byte == '"' || byte == '=' || byte == '\\';
  });
}

void AppendWord(std::string& to, std::string_view text) {
  if (IsOneWord(text))
    to += text;
  else
    AppendJsonString(to, text);
}

}  // namespace

void AppendPlain(std::string& to, const AnyValue& value) {
  if (value.value_case() == AnyValue::kStringValue)
    to += value.string_value();
  else if (value.value_case() != AnyValue::VALUE_NOT_SET)
    AppendJson(to, value);
}

void AppendJson(std::string& to, const AnyValue& value) {
  switch (value.value_case()) {
    case AnyValue::kStringValue:
      return AppendJsonString(to, value.string_value());
    case AnyValue::kBoolValue:
      to += value.bool_value() ? "true" : "false";
      return;
    case AnyValue::kIntValue:
      return AppendNumber(to, value.int_value());
    case AnyValue::kDoubleValue:
      return AppendDouble(to, value.double_value());
    case AnyValue::kArrayValue:
      return AppendList(to, value.array_value());
    case AnyValue::kKvlistValue:
      return AppendObject(to, value.kvlist_value());
    case AnyValue::kBytesValue:
      to.push_back('"');
      AppendBase64(to, value.bytes_value());
      to.push_back('"');
      return;
    case AnyValue::VALUE_NOT_SET:
      to += "null";
  }
}

void AppendAttribute(std::string& to, std::string_view key, const AnyValue& value) {
  if (value.value_case() == AnyValue::kStringValue)
    return AppendAttribute(to, key, value.string_value());
  to.push_back(' ');
  AppendWord(to, key);
  to.push_back('=');
  AppendJson(to, value);
}

void AppendAttribute(std::string& to, std::string_view key, std::string_view value) {
  to.push_back(' ');
  AppendWord(to, key);
  to.push_back('=');
  AppendWord(to, value);
}

void AppendId(std::string& to, std::string_view key, std::string_view id) {
  if (id.find_first_not_of('\0') == std::string_view::npos) return;
  to.append(1, ' ').append(key).push_back('=');
  for (const char byte : id.substr(0, kIdBytesShown)) {
    const auto code = static_cast<unsigned char>(byte);
    to.append(1, kHexDigits[code >> 4]).push_back(kHexDigits[code & 15]);
  }
}

void AppendDropped(std::string& to, std::uint64_t count, std::string_view what) {
  if (count == 0) return;
  to += " (+";
  AppendNumber(to, count);
  if (!what.empty()) to.append(1, ' ').append(what);
  to.push_back(')');
}

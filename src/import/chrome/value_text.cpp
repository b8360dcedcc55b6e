#include "import/chrome/value_text.h"

#include <algorithm>

#include "base/json_text.h"

namespace {

bool IsWord(std::string_view text) {
  return !text.empty() && std::none_of(text.begin(), text.end(), [](char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code <= ' ' || byte == '"' || byte == '=';
  });
}

void AppendScalar(JsonPull& pull, JsonPart part, std::string& to) {
  switch (part) {
    case JsonPart::Key:
    case JsonPart::String:
      AppendJsonText(to, pull.Text());
      break;
    case JsonPart::Number:
      to += pull.Text();
      break;
    case JsonPart::True:
      to += "true";
      break;
    case JsonPart::False:
      to += "false";
      break;
    default:
      to += "null";
  }
}

}  // namespace

bool AppendValue(JsonPull& pull, JsonPart part, std::string& to) {
  bool isFirst = true;
  // Depth counts what is open after a token, so a scalar leaves it where it was.
  const bool isScalar = part != JsonPart::BeginObject && part != JsonPart::BeginArray;
  const std::size_t depth = pull.Depth() - (isScalar ? 0 : 1);
  for (;; part = pull.Next()) {
    const bool isEnd = part == JsonPart::EndObject || part == JsonPart::EndArray;
    if (part == JsonPart::Bad || part == JsonPart::End) return false;
    if (!isFirst && !isEnd) to += ',';
    isFirst = false;
    if (part == JsonPart::BeginObject || part == JsonPart::BeginArray) {
      to += part == JsonPart::BeginObject ? '{' : '[';
      isFirst = true;
    } else if (isEnd) {
      to += part == JsonPart::EndObject ? '}' : ']';
    } else {
      AppendScalar(pull, part, to);
      if (part == JsonPart::Key) to += ':';
      isFirst = part == JsonPart::Key;
    }
    Bound(to);
    if (pull.Depth() == depth && part != JsonPart::Key) return true;
  }
}

bool AppendWord(JsonPull& pull, JsonPart part, std::string& to) {
  if (part != JsonPart::String || !IsWord(pull.Text())) return AppendValue(pull, part, to);
  to += pull.Text();
  Bound(to);
  return true;
}

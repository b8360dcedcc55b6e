#include "base/json_text.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "base/text.h"

namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

// How a byte is handled: unchanged, escaped, or by checking the whole text's UTF-8.
enum ByteKind : std::uint8_t { kPlain = 0, kEscape = 1, kHigh = 2 };

constexpr std::array<std::uint8_t, 256> MakeKinds() {
  std::array<std::uint8_t, 256> kinds = {};
  for (unsigned byte = 0; byte < 0x20; ++byte) kinds[byte] = kEscape;
  kinds['"'] = kinds['\\'] = kinds[0x7F] = kEscape;
  for (unsigned byte = 0x80; byte < 0x100; ++byte) kinds[byte] = kHigh;
  return kinds;
}
constexpr std::array<std::uint8_t, 256> kKinds = MakeKinds();

std::uint8_t KindsIn(std::string_view bytes) {
  std::uint8_t kinds = 0;
  for (const char byte : bytes) kinds |= kKinds[static_cast<std::uint8_t>(byte)];
  return kinds;
}

void AppendEscape(std::string& json, char byte) {
  constexpr std::string_view kShort = "\"\\\b\f\n\r\t";
  constexpr std::string_view kLetters = "\"\\bfnrt";
  const std::size_t place = kShort.find(byte);
  json.push_back('\\');
  if (place != std::string_view::npos) {
    json.push_back(kLetters[place]);
    return;
  }
  json.append("u00");
  AppendHex(json, {&byte, 1});
}

void AppendEscaped(std::string& json, std::string_view bytes) {
  std::size_t plain = 0;  // the beginning of the run of plain bytes
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (kKinds[static_cast<std::uint8_t>(bytes[i])] != kEscape) continue;
    json.append(bytes.substr(plain, i - plain));
    AppendEscape(json, bytes[i]);
    plain = i + 1;
  }
  json.append(bytes.substr(plain));
}

}  // namespace

void AppendJsonText(std::string& json, std::string_view bytes) {
  const std::uint8_t kinds = KindsIn(bytes);
  if ((kinds & kHigh) != 0 && !IsUtf8(bytes)) {
    json.append("{\"hex\":\"");
    AppendHex(json, bytes);
    json.append("\"}");
    return;
  }
  json.push_back('"');
  if ((kinds & kEscape) != 0) {
    AppendEscaped(json, bytes);
  } else {
    json.append(bytes);
  }
  json.push_back('"');
}

void AppendHex(std::string& to, std::string_view bytes) {
  for (const char byte : bytes) {
    const auto value = static_cast<std::uint8_t>(byte);
    to.push_back(kHexDigits[value >> 4]);
    to.push_back(kHexDigits[value & 15]);
  }
}

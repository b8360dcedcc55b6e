#include "terminal/harmless_text.h"

#include <algorithm>
#include <cstdint>

#include "base/text.h"

namespace {

constexpr std::uint8_t kC1Lead = 0xC2;  // of U+0080 to U+00BF

bool IsControl(std::uint8_t byte) {
  return (byte < 0x20 && byte != '\n') || byte == 0x7F;
}

void AppendEscaped(std::string& to, std::uint8_t byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  to.append("\\x").append(1, kDigits[byte >> 4]).append(1, kDigits[byte & 15]);
}

}  // namespace

std::string HarmlessText(std::string_view text) {
  std::string harmless;
  const std::string wellFormed = ReplaceMalformed(text);
  for (std::size_t at = 0; at < wellFormed.size(); ++at) {
    const auto byte = static_cast<std::uint8_t>(wellFormed[at]);
    const auto next =
        static_cast<std::uint8_t>(at + 1 < wellFormed.size() ? wellFormed[at + 1] : 0);
    if (byte == kC1Lead && next < 0xA0) {
      AppendEscaped(harmless, next);
      ++at;
    } else if (IsControl(byte)) {
      AppendEscaped(harmless, byte);
    } else {
      harmless.push_back(static_cast<char>(byte));
    }
  }
  return harmless;
}

#include "text/visible_text.h"

#include <clocale>
#include <cstdint>
#include <cwchar>

#include "base/json_text.h"
#include "base/text.h"

namespace {

bool IsPlain(std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<std::uint8_t>(c);
    if (byte < 0x20 || byte >= 0x7F) return false;
  }
  return true;
}

// Removes the first character of a well-formed text and returns it.
char32_t TakeCharacter(std::string_view& text) {
  const auto first = static_cast<std::uint8_t>(text.front());
  const std::size_t bytes = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  char32_t character = bytes == 1 ? first : first & (0x7Fu >> bytes);
  for (std::size_t i = 1; i < bytes && i < text.size(); ++i) {
    character = (character << 6) | (static_cast<std::uint8_t>(text[i]) & 0x3Fu);
  }
  text.remove_prefix(bytes < text.size() ? bytes : text.size());
  return character;
}

// A terminal would interpret these, or end the line.
bool IsControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029;
}

void AppendControl(std::string& to, char32_t character) {
  switch (character) {
    case '\n':
      to.append("\\n");
      return;
    case '\r':
      to.append("\\r");
      return;
    case '\t':
      to.append("\\t");
      return;
    default:
      break;
  }
  const char bytes[] = {static_cast<char>(character >> 8), static_cast<char>(character & 0xFF)};
  to.append(character < 0x100 ? "\\x" : "\\u");
  AppendHex(to, {character < 0x100 ? bytes + 1 : bytes, character < 0x100 ? 1u : 2u});
}

bool UseUtf8Widths() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (locale == nullptr) return false;  // every character then counts as one column
  uselocale(locale);
  return true;
}

}  // namespace

std::string VisibleText(std::string_view text) {
  if (IsPlain(text)) return std::string(text);
  const std::string wellFormed = ReplaceMalformed(text);
  std::string visible;
  visible.reserve(wellFormed.size());
  std::string_view rest = wellFormed;
  while (!rest.empty()) {
    const char* const start = rest.data();
    const char32_t character = TakeCharacter(rest);
    if (IsControl(character)) {
      AppendControl(visible, character);
    } else {
      visible.append(start, rest.data());
    }
  }
  return visible;
}

std::size_t ScreenWidth(std::string_view visible) {
  if (IsPlain(visible)) return visible.size();
  static thread_local const bool widths = UseUtf8Widths();
  std::size_t columns = 0;
  while (!visible.empty()) {
    const char32_t character = TakeCharacter(visible);
    const int width = widths ? wcwidth(static_cast<wchar_t>(character)) : 1;
    columns += width < 0 ? 1u : static_cast<unsigned>(width);
  }
  return columns;
}

#include "settings/settings_text.h"

#include <charconv>

#include "base/text.h"

namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kBytesMark = "hex:";

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

void AppendHex(std::string& to, char byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  const auto value = static_cast<unsigned char>(byte);
  to += kDigits[value >> 4];
  to += kDigits[value & 15];
}

std::optional<char> ReadHex(std::string_view text) {
  unsigned value = 0;
  if (text.size() < 2) return {};
  const auto [end, error] = std::from_chars(text.data(), text.data() + 2, value, 16);
  if (error != std::errc() || end != text.data() + 2) return {};
  return static_cast<char>(value);
}

// Escapes blanks at either end, which would be trimmed, and characters with a meaning of their own.
std::string Escaped(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    const bool control = static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F;
    const bool outer = at == 0 || at + 1 == text.size();
    const bool sign = byte == '%' || byte == '=' || byte == ']' || byte == '"';
    const bool leading = at == 0 && (byte == '[' || byte == '#' || byte == ';');
    if (control || sign || leading || (outer && byte == ' ')) {
      AppendHex(result += '%', byte);
    } else {
      result += byte;
    }
  }
  return result;
}

// A "%" without two digits after it is an ordinary character.
std::string Unescaped(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = text[at] == '%' ? ReadHex(text.substr(at + 1)) : std::nullopt;
    result += byte.value_or(text[at]);
    if (byte) at += 2;
  }
  return result;
}

struct Found {
  std::string_view value;
  bool hasValue = false;
  std::size_t lineBegin = 0, lineEnd = 0;  // of the value's line, without its end
  bool hasSection = false;
  std::size_t sectionEnd = 0;  // after the last non-empty line of the section
};

Found Search(std::string_view file, std::string_view key, std::string_view name) {
  Found found;
  bool inSection = false;
  for (std::size_t begin = 0; begin < file.size();) {
    const std::size_t end = std::min(file.find('\n', begin), file.size());
    const std::string_view line = Trimmed(file.substr(begin, end - begin));
    const std::size_t equals = line.find('=');
    if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
      inSection = CompareIgnoringCase(Unescaped(line.substr(1, line.size() - 2)), key) == 0;
      found.hasSection |= inSection;
    } else if (inSection && equals != line.npos && line.front() != '#' && line.front() != ';' &&
               CompareIgnoringCase(Unescaped(Trimmed(line.substr(0, equals))), name) == 0) {
      found.value = Trimmed(line.substr(equals + 1));
      found.hasValue = true;
      found.lineBegin = begin;
      found.lineEnd = end;
    }
    if (inSection && !line.empty()) found.sectionEnd = end;
    begin = end + 1;
  }
  return found;
}

}  // namespace

std::optional<std::string_view> FindSetting(std::string_view file, std::string_view key,
                                            std::string_view name) {
  const Found found = Search(file, key, name);
  return found.hasValue ? std::optional(found.value) : std::nullopt;
}

std::string WithSetting(std::string_view file, std::string_view key, std::string_view name,
                        std::string_view value) {
  const Found found = Search(file, key, name);
  std::string line = Escaped(name);
  line += '=';
  line += value;
  std::string result(file);
  if (found.hasValue) {
    return result.replace(found.lineBegin, found.lineEnd - found.lineBegin, line);
  }
  if (found.hasSection) return result.insert(found.sectionEnd, "\n" + line);
  if (!result.empty() && result.back() != '\n') result += '\n';
  if (!result.empty()) result += '\n';
  return result + "[" + Escaped(key) + "]\n" + line + "\n";
}

std::string NumberSetting(std::uint32_t number) {
  return std::to_string(number);
}

std::string TextSetting(std::string_view text) {
  return '"' + Escaped(text) + '"';
}

std::string BytesSetting(std::string_view bytes) {
  std::string result(kBytesMark);
  for (const char byte : bytes) AppendHex(result, byte);
  return result;
}

std::optional<std::uint32_t> ReadNumberSetting(std::string_view value) {
  std::uint32_t number = 0;
  const char* const last = value.data() + value.size();
  const auto [end, error] = std::from_chars(value.data(), last, number);
  if (error != std::errc() || end != last) return {};
  return number;
}

std::optional<std::string> ReadTextSetting(std::string_view value) {
  if (value.size() < 2 || value.front() != '"' || value.back() != '"') return {};
  return Unescaped(value.substr(1, value.size() - 2));
}

std::optional<std::string> ReadBytesSetting(std::string_view value) {
  if (!value.starts_with(kBytesMark)) return {};
  value.remove_prefix(kBytesMark.size());
  if (value.size() % 2 != 0) return {};
  std::string bytes;
  for (; !value.empty(); value.remove_prefix(2)) {
    const auto byte = ReadHex(value);
    if (!byte) return {};
    bytes += *byte;
  }
  return bytes;
}

#include "base/text.h"

#include <algorithm>

namespace {

unsigned char ByteAt(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

struct Sequence {
  std::size_t bytes;  // at least 1
  bool wellFormed;
};

// The sequence at the front of `text`. A malformed sequence ends before the first byte that cannot
// belong to it, so that one bad byte does not swallow the good text after it.
Sequence FirstSequence(std::string_view text) {
  const unsigned char lead = ByteAt(text, 0);
  if (lead < 0x80) return {1, true};
  if (lead < 0xC2 || lead > 0xF4) return {1, false};
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  // The second byte alone excludes overlong forms, surrogates and everything beyond U+10FFFF.
  unsigned char lowest = 0x80, highest = 0xBF;
  if (lead == 0xE0) lowest = 0xA0;
  if (lead == 0xED) highest = 0x9F;
  if (lead == 0xF0) lowest = 0x90;
  if (lead == 0xF4) highest = 0x8F;
  for (std::size_t at = 1; at < length; ++at) {
    if (at == text.size()) return {at, false};
    const unsigned char byte = ByteAt(text, at);
    if (byte < lowest || byte > highest) return {at, false};
    lowest = 0x80;
    highest = 0xBF;
  }
  return {length, true};
}

unsigned char Lower(unsigned char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

}  // namespace

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const Sequence first = FirstSequence(text);
    if (!first.wellFormed) return false;
    text.remove_prefix(first.bytes);
  }
  return true;
}

std::string ReplaceMalformed(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const Sequence first = FirstSequence(text);
    if (first.wellFormed) {
      result += text.substr(0, first.bytes);
    } else {
      result += "\xEF\xBF\xBD";
    }
    text.remove_prefix(first.bytes);
  }
  return result;
}

std::string_view CutUtf8(std::string_view text, std::size_t bytes) {
  if (text.size() <= bytes) return text;
  // A sequence that the cut would divide begins at most three bytes before the cut.
  for (std::size_t back = 1; back <= 3 && back <= bytes; ++back) {
    const std::size_t begin = bytes - back;
    const Sequence sequence = FirstSequence(text.substr(begin));
    if (sequence.wellFormed && sequence.bytes > back) return text.substr(0, begin);
    if ((ByteAt(text, begin) & 0xC0) != 0x80) break;
  }
  return text.substr(0, bytes);
}

std::string ToLowerAscii(std::string_view text) {
  std::string small(text);
  for (char& byte : small) byte = static_cast<char>(Lower(static_cast<unsigned char>(byte)));
  return small;
}

int CompareIgnoringCase(std::string_view a, std::string_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t at = 0; at < common; ++at) {
    const int difference = Lower(ByteAt(a, at)) - Lower(ByteAt(b, at));
    if (difference != 0) return difference;
  }
  return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

std::string GroupDigits(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
  return digits;
}

#include "where/well_formed.h"

#include <cstdint>
#include <cstring>

namespace {

// The bytes of the character that is no ASCII; 0: malformed.
std::size_t CharacterAt(const unsigned char* at, std::size_t left) {
  const unsigned first = at[0];
  const std::size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || bytes > left) return 0;
  for (std::size_t i = 1; i < bytes; ++i)
    if ((at[i] & 0xC0) != 0x80) return 0;
  // Too long a form, a half of a pair, and beyond the last character.
  const bool wrong = (first == 0xE0 && at[1] < 0xA0) || (first == 0xED && at[1] > 0x9F) ||
                     (first == 0xF0 && at[1] < 0x90) || (first == 0xF4 && at[1] > 0x8F);
  return wrong ? 0 : bytes;
}

}  // namespace

bool IsAscii(std::string_view text) {
  std::uint64_t bits = 0, word = 0;
  const char* at = text.data();
  std::size_t left = text.size();
  for (; left >= sizeof word; left -= sizeof word, at += sizeof word) {
    std::memcpy(&word, at, sizeof word);
    bits |= word;
  }
  for (; left > 0; --left, ++at) bits |= static_cast<unsigned char>(*at);
  return (bits & 0x8080808080808080U) == 0;
}

bool IsWellFormed(std::string_view text) {
  const auto* at = reinterpret_cast<const unsigned char*>(text.data());
  std::size_t left = text.size();
  while (left > 0) {
    std::uint64_t word = 0;
    std::size_t bytes = 1;
    if (left >= sizeof word) std::memcpy(&word, at, sizeof word);
    if (left >= sizeof word && (word & 0x8080808080808080U) == 0)
      bytes = sizeof word;
    else if (*at >= 0x80)
      bytes = CharacterAt(at, left);
    if (bytes == 0) return false;
    at += bytes;
    left -= bytes;
  }
  return true;
}

// The bytes of a pattern: what stands for a part that was left out.
#pragma once

#include <array>
#include <cstdint>

struct PatternByte {
  static constexpr char kNumber = 1, kQuoted = 2, kQuotedOpen = 3, kApostrophed = 4,
                        kApostrophedOpen = 5;
  // The texts go on: behind a word or a sign, within a word.
  static constexpr char kCut = 6, kCutInWord = 7;
  // The next byte is one of these, of a text, with kEscapedBit.
  static constexpr char kEscape = 8;
  static constexpr char kEscapedBit = 0x40;
};

// What a byte of a text can be.
struct ByteKind {
  static constexpr std::uint8_t kWord = 1, kDigit = 2, kHexLetter = 4, kHex = 8, kSpecial = 16;

  static std::uint8_t Of(char c);
};

constexpr std::array<std::uint8_t, 256> MakeByteKinds() {
  using Kind = ByteKind;
  std::array<std::uint8_t, 256> kinds = {};
  for (unsigned c = 0; c < kinds.size(); ++c) {
    const unsigned small = c | 0x20U;
    const bool letter = small >= 'a' && small <= 'z' && c < 0x80;
    if (c >= '0' && c <= '9') kinds[c] = Kind::kWord | Kind::kDigit | Kind::kHex;
    if (letter || c == '_' || c >= 0x80) kinds[c] = Kind::kWord;
    if (letter && small <= 'f') kinds[c] = Kind::kWord | Kind::kHexLetter | Kind::kHex;
  }
  for (unsigned c = 1; c <= unsigned{PatternByte::kEscape}; ++c) kinds[c] = Kind::kSpecial;
  for (const unsigned char c : {'+', '-', '"', '\''}) kinds[c] = Kind::kSpecial;
  return kinds;
}

inline std::uint8_t ByteKind::Of(char c) {
  static constexpr std::array<std::uint8_t, 256> kKinds = MakeByteKinds();
  return kKinds[static_cast<unsigned char>(c)];
}

// The pattern of a text: what is left of it without numbers and quoted parts. Texts that one trace
// point has made mostly have one pattern.
//
// Shape    Read from left to right, once. Left out are
//            numbers   -5  1,234.5  1e-9  10.0.0.1: digits, groups of digits with a "." or ","
//                      between them, an exponent, and a sign that stands behind no word
//            hex       0x1F; a word of at most 64 hexadecimal digits that has both a digit and a
//                      letter, such as 3fa9; a UUID
//            digits    anywhere in a word: worker12, 5ms, 2026-11-23T09:41
//            quotes    "..." and '...' with what they hold. A backslash takes the next byte along.
//                      A quote that nothing closes goes to the end. An apostrophe behind a word
//                      ("don't") opens none.
//          A word consists of letters, digits, "_" and all bytes beyond ASCII, which stay as they
//          are. A pattern ends after some kPatternBytes, at the end of a word where one is near;
//          it says that the texts go on.
//          Inside, what was left out is one byte for each place, and bytes of texts that look so
//          are marked. So two texts have equal patterns exactly if only such parts differ.
// Errors   None: any bytes have a pattern.
// Threads  Pure. Nothing is allocated per text.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

constexpr std::size_t kPatternBytes = 1024;

class TextPattern {
 public:
  // Valid until the next call.
  std::string_view Of(std::string_view text) {
    return {m_bytes.data(), Make(text, m_bytes.data())};
  }

 private:
  // One word, or one mark, may begin at the limit.
  static constexpr std::size_t kWordBytes = 256;
  static std::size_t Make(std::string_view text, char* to);
  friend class PatternMaker;

  std::array<char, kPatternBytes + kWordBytes + 16> m_bytes;
};

// For the user: "took # ms for "..."".
std::string ShownPattern(std::string_view pattern);

// The filter text that lets exactly the texts with this pattern through: `text matches "..."`.
// Nothing: the pattern has bytes that are no UTF-8, or is too long for a filter text.
std::optional<std::string> OnlyThisPattern(std::string_view pattern);

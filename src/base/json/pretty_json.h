// A text with the JSON in it on lines of its own, two spaces deeper for each level.
//
// Shape    Tokens are moved and never read as values: strings, numbers and names stand as they do
//          in the text, byte by byte, doubled names and huge numbers too. Only white space between
//          tokens is left out or put in. What stands before and behind the JSON stays as it is, on
//          lines of its own.
//          JSON is an object or an array that is well-formed as a whole. One that is not, or that
//          is deeper than kDeepest, stays as it is. An array amid other text without any string in
//          it, such as "[4711]", is taken for a part of that text.
// Cost     Linear in the text, and memory for its tokens. A result above kLargest is not made.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The bytes [from, from + length) of the text are those at `to` of the pretty one.
struct MovedBytes {
  std::size_t from, to, length;
};

struct PrettyJson {
  static constexpr int kDeepest = 64;
  static constexpr std::size_t kLargest = 4 << 20;

  std::string text;
  std::vector<MovedBytes> moved;  // in order, all but white space

  // Where the byte at `from` stands; for one that was left out: where the next one stands, or the
  // end.
  std::size_t PlaceOf(std::size_t from) const;
  // Where a range ends whose last byte was before `from`.
  std::size_t EndOf(std::size_t from) const;
};

// Nothing: there is no JSON in it.
std::optional<PrettyJson> PrettyJsonOf(std::string_view text);

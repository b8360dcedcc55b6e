// The compiled form of a pattern.
//
// Shape    A flat sequence of opcodes, one byte each, followed by their operands. It is read from
//          its first byte and ends with RX_END. The low two bits of an opcode that can repeat are
//          its RegexRepeat. The matcher skips any other byte.
//          A set is a bitmap: byte value c is bit (c & 7) of map byte (c >> 3).
#pragma once

#include <cstddef>

enum RegexRepeat : unsigned char {
  RX_ONCE = 0,
  RX_STAR = 1,
  RX_PLUS = 2,
  RX_RANGE = 3,  // two bytes after the operands: minimum, maximum; 255: without limit
};

enum RegexOpcode : unsigned char {
  RX_GROUP_OPEN = 4,  // group 0..8: stores the beginning of the group
  RX_CHAR = 8,        // a byte: one exact byte
  RX_CHAR_STAR,
  RX_CHAR_PLUS,
  RX_CHAR_RANGE,
  RX_ANY = 12,  // one byte other than zero, CR, LF
  RX_ANY_STAR,
  RX_ANY_PLUS,
  RX_ANY_RANGE,
  RX_SET = 16,  // 16 bytes of bitmap: one byte below 128 whose bit is set
  RX_SET_STAR,
  RX_SET_PLUS,
  RX_SET_RANGE,
  RX_WIDE_SET = 20,  // 32 bytes of bitmap: one byte whose bit is set
  RX_WIDE_SET_STAR,
  RX_WIDE_SET_PLUS,
  RX_WIDE_SET_RANGE,
  RX_END_OF_LINE = 24,  // consumes nothing: at the text's end or before zero, LF, CR
  RX_END = 28,          // the match is complete
  RX_GROUP_CLOSE = 32,  // group: stores the end of the group
  RX_BACKREF = 36,      // group 0..8: the bytes that the group captured
  RX_BACKREF_STAR,
  RX_BACKREF_PLUS,
  RX_NEG_SET = 40,  // 16 bytes of bitmap: a byte from 128 on, or one whose bit is clear
  RX_NEG_SET_STAR,
  RX_NEG_SET_PLUS,
  RX_NEG_SET_RANGE,
};

constexpr int kRegexGroups = 9;
constexpr std::size_t kRegexProgramBytes = 1024;
constexpr std::size_t kRegexSlackBytes = 64;
constexpr std::size_t kRegexSetBytes = 16, kRegexWideSetBytes = 32;
// The maximum of a range without limit; then so many repetitions after the minimum are matched.
constexpr int kRegexUnlimited = 255;
constexpr int kRegexMostUnlimited = 20010;

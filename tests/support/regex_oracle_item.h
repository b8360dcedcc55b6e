// What one item of the compiled program matches, for the simple matcher of regex_oracle.h.
#pragma once

#include <cstddef>
#include <optional>

#include "tree/regex/regex_state.h"

constexpr std::size_t kOracleCodeEnd = sizeof RegexState.program;

// The byte of the program, -1 beyond its end.
inline int OracleCode(std::size_t code) {
  return code < kOracleCodeEnd ? RegexState.program[code] : -1;
}

struct OracleItem {
  int kind;  // the opcode without its repetition
  std::size_t operand;
  bool starred;

  // How many operand bytes follow the opcode; none for another opcode.
  static std::optional<std::size_t> OperandsOf(int kind) {
    switch (kind) {
      case RX_CHAR:
        return 1;
      case RX_ANY:
        return 0;
      case RX_SET:
      case RX_NEG_SET:
        return 16;
      case RX_WIDE_SET:
        return 32;
      default:
        return std::nullopt;
    }
  }

  // Zero is a position outside the text.
  bool Takes(unsigned char c) const {
    const bool lineEnd = (c == '\r' || c == '\n') && !RegexState.acrossLines;
    switch (kind) {
      case RX_CHAR:
        return c == RegexState.program[operand];
      case RX_ANY:
        return c != 0 && !lineEnd;
      case RX_WIDE_SET:
        return Bit(c);
      default:
        if (starred && lineEnd) c = 0;
        return (c < 128 && Bit(c)) == (kind == RX_SET);
    }
  }

 private:
  bool Bit(unsigned char c) const { return (RegexState.program[operand + c / 8] >> (c % 8)) & 1; }
};

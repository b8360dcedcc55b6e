// Fast searches for a byte, or for two bytes at a fixed distance, sixteen places at a time.
//
// Owner    Borrows the text; reads nothing outside of it.
// Threads  Touches only its arguments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "tree/regex/regex_nodes.h"

// Some sets of bytes as one formula: ((c | fold) - low) <= span. With fold 0x20 it does not see the
// case of letters.
struct ByteTest {
  std::uint8_t fold = 0;
  std::uint8_t low = 0;
  std::uint8_t span = 0;

  bool Takes(unsigned char c) const { return static_cast<std::uint8_t>((c | fold) - low) <= span; }
};

// The formula of exactly these bytes, if they have one and are not all.
std::optional<ByteTest> TestOf(const ByteTable& table);

// Two bytes that stand so far behind a place.
struct PairTest {
  ByteTest first, second;
  std::size_t firstAt = 0, secondAt = 0;  // may be the same twice
};

constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// The first place in [from, limit) where both tests hold, else kNowhere.
// REQUIRES: place + firstAt and place + secondAt lie in the text for every place below limit.
std::size_t FindPair(std::string_view text, std::size_t from, std::size_t limit,
                     const PairTest& pair);

// How often a byte occurs in texts, as a guess in parts of 256.
unsigned Commonness(unsigned char c);

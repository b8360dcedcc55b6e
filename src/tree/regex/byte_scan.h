// Fast searches for a byte, or for two bytes at a fixed distance, sixteen places at a time.
//
// Owner    Borrows the text; reads nothing outside of it.
// Threads  Touches only its arguments.
#pragma once

#include <cstddef>
#include <cstdint>
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

// A formula of these bytes; of some others too if there is no other.
// REQUIRES: the table takes a byte.
ByteTest TestOf(const ByteTable& table);

// Sixteen bytes side by side.
using Lanes = std::uint8_t __attribute__((vector_size(16)));

// A test, ready for sixteen places.
struct WideTest {
  WideTest() = default;
  explicit WideTest(const ByteTest& narrow)
      : test(narrow),
        fold(Lanes{} + narrow.fold),
        low(Lanes{} + narrow.low),
        span(Lanes{} + narrow.span) {}
  ByteTest test;
  Lanes fold = {}, low = {}, span = {};
};

// Two bytes that stand so far behind a place.
struct PairTest {
  WideTest first, second;
  std::size_t firstAt = 0, secondAt = 0;  // may be the same twice
};

constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// The first place in [from, limit) where both tests hold, else kNowhere.
// REQUIRES: place + firstAt and place + secondAt lie in the text for every place below limit.
std::size_t FindPair(std::string_view text, std::size_t from, std::size_t limit,
                     const PairTest& pair);

// How often a byte of the test occurs in texts, as a guess in parts of kAlways.
constexpr unsigned kAlways = 256;
unsigned Commonness(const ByteTest& test);

// Fast searches for a byte, or for two bytes at a fixed distance, sixteen positions at a time.
//
// Owner    Borrows the text; reads nothing outside of it.
// Threads  Touches only its arguments.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tree/regex/plan/regex_nodes.h"

// Some sets of bytes as one formula: ((c | fold) - low) <= span. With fold 0x20 it ignores the case
// of letters.
struct ByteTest {
  std::uint8_t fold = 0;
  std::uint8_t low = 0;
  std::uint8_t span = 0;

  bool Takes(unsigned char c) const { return static_cast<std::uint8_t>((c | fold) - low) <= span; }
};

// A formula for these bytes; it also accepts some others if there is no exact one.
// REQUIRES: the table has a byte.
ByteTest TestOf(const ByteTable& table);

// Sixteen bytes in a vector.
using Lanes = std::uint8_t __attribute__((vector_size(16)));

// A test for sixteen positions.
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

// Tests of two bytes at given distances after a position.
struct PairTest {
  WideTest first, second;
  std::size_t firstAt = 0, secondAt = 0;  // may be equal
};

constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// The first position in [from, limit) where both tests hold, else kNowhere.
// REQUIRES: position + firstAt and position + secondAt are in the text for every position below
// limit.
std::size_t FindPair(std::string_view text, std::size_t from, std::size_t limit,
                     const PairTest& pair);

// An estimate of how often a byte of the test occurs in texts, in parts of kAlways.
constexpr unsigned kAlways = 256;
unsigned Commonness(const ByteTest& test);

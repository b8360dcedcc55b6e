#include "tree/regex/byte_scan.h"

#include <bit>
#include <cstring>

#include "tree/regex/ascii.h"

namespace {

constexpr std::size_t kLanes = 16;
using Lanes = std::uint8_t __attribute__((vector_size(kLanes)));
constexpr Lanes kLaneNumbers = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
using Words = std::uint64_t __attribute__((vector_size(kLanes)));

Lanes Spread(std::uint8_t byte) {
  return Lanes{} + byte;
}

// A test, ready for sixteen places.
struct WideTest {
  explicit WideTest(const ByteTest& test)
      : fold(Spread(test.fold)), low(Spread(test.low)), span(Spread(test.span)) {}
  // All bits of a lane are set where the test holds.
  auto Take(const char* at) const {
    Lanes bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return ((bytes | fold) - low) <= span;
  }
  Lanes fold, low, span;
};

// The first lane that is not zero, else kLanes.
template <class Mask>
std::size_t FirstLane(Mask mask) {
  Words words;
  std::memcpy(&words, &mask, sizeof words);
  static_assert(std::endian::native == std::endian::little);
  if (words[0]) return static_cast<std::size_t>(std::countr_zero(words[0])) / 8;
  if (words[1]) return 8 + static_cast<std::size_t>(std::countr_zero(words[1])) / 8;
  return kLanes;
}

bool Holds(std::string_view text, std::size_t place, const PairTest& pair) {
  return pair.first.Takes(static_cast<unsigned char>(text[place + pair.firstAt])) &&
         pair.second.Takes(static_cast<unsigned char>(text[place + pair.secondAt]));
}

std::size_t FindSlowly(std::string_view text, std::size_t from, std::size_t limit,
                       const PairTest& pair) {
  for (; from < limit; ++from)
    if (Holds(text, from, pair)) return from;
  return kNowhere;
}

}  // namespace

std::optional<ByteTest> TestOf(const ByteTable& table) {
  for (const std::uint8_t fold : {std::uint8_t{0}, kAsciiCaseBit}) {
    std::size_t low = 0, high = table.size();
    while (low < table.size() && !(table[low] && (low & fold) == fold)) ++low;
    while (high > low && !(table[high - 1] && ((high - 1) & fold) == fold)) --high;
    if (low == high || high - low == table.size()) continue;
    const ByteTest test{fold, static_cast<std::uint8_t>(low),
                        static_cast<std::uint8_t>(high - low - 1)};
    bool same = true;
    for (std::size_t c = 0; c < table.size(); ++c)
      same &= test.Takes(static_cast<unsigned char>(c)) == table[c];
    if (same) return test;
  }
  return std::nullopt;
}

std::size_t FindPair(std::string_view text, std::size_t from, std::size_t limit,
                     const PairTest& pair) {
  if (limit < kLanes) return FindSlowly(text, from, limit, pair);
  const WideTest first(pair.first), second(pair.second);
  const char* const begin = text.data();
  while (from < limit) {
    // The last block may reach back over places that are done with.
    const std::size_t block = from + kLanes <= limit ? from : limit - kLanes;
    auto mask =
        first.Take(begin + block + pair.firstAt) & second.Take(begin + block + pair.secondAt);
    if (block < from) mask &= kLaneNumbers >= Spread(static_cast<std::uint8_t>(from - block));
    const std::size_t lane = FirstLane(mask);
    if (lane < kLanes) return block + lane;
    from = block + kLanes;
  }
  return kNowhere;
}

// By the letters of words and numbers in running text; what is not named is rare.
unsigned Commonness(unsigned char c) {
  constexpr std::string_view kOften = " etaoinsr", kMiddling = "lcdhpumfgb0123456789",
                             kSometimes = "ywvkxjqz.:/-=_,()[]\"";
  const char letter = static_cast<char>(c);
  if (kOften.find(letter) != kOften.npos) return 14;
  if (kMiddling.find(letter) != kMiddling.npos) return 6;
  return kSometimes.find(letter) != kSometimes.npos ? 3 : 1;
}

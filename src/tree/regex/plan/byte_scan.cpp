#include "tree/regex/plan/byte_scan.h"

#include <algorithm>
#include <bit>
#include <cstring>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "tree/regex/program/ascii.h"

namespace {

constexpr std::size_t kLanes = 16;
constexpr std::size_t kLongText = 1024;  // longer than most texts of traces
constexpr Lanes kLaneNumbers = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
using Words = std::uint64_t __attribute__((vector_size(kLanes)));

// Sets all bits of a lane where the test holds.
auto Take(const WideTest& test, const char* at) {
  Lanes bytes;
  std::memcpy(&bytes, at, sizeof bytes);
  return ((bytes | test.fold) - test.low) <= test.span;
}

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
  return pair.first.test.Takes(static_cast<unsigned char>(text[place + pair.firstAt])) &&
         pair.second.test.Takes(static_cast<unsigned char>(text[place + pair.secondAt]));
}

constexpr std::size_t kWide = 64;

bool IsSingle(const ByteTest& test) {
  return test.fold == 0 && test.span == 0;
}

#if defined(__x86_64__)
// One of the tests, for 32 positions.
class Avx2Test {
 public:
  [[gnu::target("avx2")]] explicit Avx2Test(const ByteTest& test)
      : m_fold(_mm256_set1_epi8(static_cast<char>(test.fold))),
        m_low(_mm256_set1_epi8(static_cast<char>(test.low))),
        m_span(_mm256_set1_epi8(static_cast<char>(test.span))) {}
  [[gnu::target("avx2"), gnu::always_inline]] __m256i Take(const char* at) const {
    const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
    const __m256i above = _mm256_sub_epi8(_mm256_or_si256(bytes, m_fold), m_low);
    return _mm256_cmpeq_epi8(_mm256_min_epu8(above, m_span), above);
  }

 private:
  const __m256i m_fold, m_low, m_span;
};

// The same for a single byte.
class Avx2Byte {
 public:
  [[gnu::target("avx2")]] explicit Avx2Byte(const ByteTest& test)
      : m_byte(_mm256_set1_epi8(static_cast<char>(test.low))) {}
  [[gnu::target("avx2"), gnu::always_inline]] __m256i Take(const char* at) const {
    return _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)), m_byte);
  }

 private:
  const __m256i m_byte;
};

// The first block of kWide positions in [from, limit) that has one where both tests hold, else the
// beginning of the rest, which is shorter.
template <class Test>
[[gnu::target("avx2")]] std::size_t FindBlockByAvx2(const char* begin, std::size_t from,
                                                    std::size_t limit, const PairTest& pair) {
  const Test first(pair.first.test), second(pair.second.test);
  for (; from + kWide <= limit; from += kWide) {
    const char* const one = begin + from + pair.firstAt;
    const char* const two = begin + from + pair.secondAt;
    const __m256i low = _mm256_and_si256(first.Take(one), second.Take(two));
    const __m256i high =
        _mm256_and_si256(first.Take(one + kWide / 2), second.Take(two + kWide / 2));
    const __m256i any = _mm256_or_si256(low, high);
    if (!_mm256_testz_si256(any, any)) return from;
  }
  return from;
}
#endif

// As far as no block has such a position; `from` where the processor has no wide tests.
std::size_t FindBlock(const char* begin, std::size_t from, std::size_t limit,
                      const PairTest& pair) {
#if defined(__x86_64__)
  static const bool kHasAvx2 = __builtin_cpu_supports("avx2") != 0;
  const bool single = IsSingle(pair.first.test) && IsSingle(pair.second.test);
  if (kHasAvx2 && single) return FindBlockByAvx2<Avx2Byte>(begin, from, limit, pair);
  if (kHasAvx2) return FindBlockByAvx2<Avx2Test>(begin, from, limit, pair);
#endif
  static_cast<void>(begin), static_cast<void>(limit), static_cast<void>(pair);
  return from;
}

bool IsOneByte(const PairTest& pair) {
  return pair.firstAt == pair.secondAt && IsSingle(pair.first.test);
}

std::size_t FindByte(std::string_view text, std::size_t from, std::size_t limit,
                     const PairTest& pair) {
  if (from >= limit) return kNowhere;
  const char* const begin = text.data() + pair.firstAt;
  const void* const found = std::memchr(begin + from, pair.first.test.low, limit - from);
  return found ? static_cast<std::size_t>(static_cast<const char*>(found) - begin) : kNowhere;
}

std::size_t FindSlowly(std::string_view text, std::size_t from, std::size_t limit,
                       const PairTest& pair) {
  for (; from < limit; ++from)
    if (Holds(text, from, pair)) return from;
  return kNowhere;
}

// By the frequency of letters and digits in running text; all other characters are rare.
unsigned CommonnessOf(char c) {
  constexpr std::string_view kOften = " etaoinsr", kMiddling = "lcdhpumfgb0123456789",
                             kSometimes = "ywvkxjqz.:/-=_,()[]\"";
  if (kOften.find(c) != kOften.npos) return 14;
  if (kMiddling.find(c) != kMiddling.npos) return 6;
  return kSometimes.find(c) != kSometimes.npos ? 3 : 1;
}

}  // namespace

ByteTest TestOf(const ByteTable& table) {
  std::size_t low = 0, high = table.size() - 1;
  while (!table[low]) ++low;
  while (!table[high]) --high;
  const ByteTest plain{0, static_cast<std::uint8_t>(low), static_cast<std::uint8_t>(high - low)};
  // Letters of both cases: from the first small one to the last.
  std::size_t first = table.size(), last = 0;
  for (std::size_t c = low; c <= high; ++c) {
    if (!table[c]) continue;
    first = std::min(first, c | kAsciiCaseBit);
    last = std::max(last, c | kAsciiCaseBit);
  }
  const ByteTest folded{kAsciiCaseBit, static_cast<std::uint8_t>(first),
                        static_cast<std::uint8_t>(last - first)};
  return Commonness(folded) < Commonness(plain) ? folded : plain;
}

std::size_t FindPair(std::string_view text, std::size_t from, std::size_t limit,
                     const PairTest& pair) {
  if (IsOneByte(pair)) return FindByte(text, from, limit, pair);
  if (limit < kLanes) return FindSlowly(text, from, limit, pair);
  const char* const begin = text.data();
  for (std::size_t looked = from; from < limit;) {
    // Over a long text first in blocks; in such a block then for the position.
    if (from >= looked && limit - from >= kLongText) {
      from = FindBlock(begin, from, limit, pair);
      looked = from + kWide;
    }
    // The last block may begin before `from`, at positions that are already done.
    const std::size_t block = from + kLanes <= limit ? from : limit - kLanes;
    auto mask = Take(pair.first, begin + block + pair.firstAt) &
                Take(pair.second, begin + block + pair.secondAt);
    if (block < from) mask &= kLaneNumbers >= Lanes{} + static_cast<std::uint8_t>(from - block);
    const std::size_t lane = FirstLane(mask);
    if (lane < kLanes) return block + lane;
    from = block + kLanes;
  }
  return kNowhere;
}

unsigned Commonness(const ByteTest& test) {
  unsigned sum = 0;
  for (std::size_t c = 1; c < kAlways; ++c)
    if (test.Takes(static_cast<unsigned char>(c))) sum += CommonnessOf(static_cast<char>(c));
  return std::min(sum, kAlways);
}

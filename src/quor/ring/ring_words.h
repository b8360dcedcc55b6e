// How a position in the ring and the state of a record are packed into one word: see segment.h.
//
// Threads  Pure.
#pragma once

#include <cstdint>

// A position in the ring and the number of traces before it in one word, so that both change
// atomically: the low 40 bits count units, the high 24 bits count traces, each modulo its width.
namespace ring_mark {
constexpr std::uint64_t kUnitMask = (std::uint64_t{1} << 40) - 1;
constexpr std::uint32_t kCountMask = (1u << 24) - 1;
constexpr std::uint64_t Units(std::uint64_t mark) {
  return mark & kUnitMask;
}
constexpr std::uint32_t Count(std::uint64_t mark) {
  return static_cast<std::uint32_t>(mark >> 40);
}
constexpr std::uint64_t Make(std::uint64_t units, std::uint64_t count) {
  return (units & kUnitMask) | (count << 40);
}
// The 64-bit count whose low 24 bits are `low` and which is nearest to `about`.
constexpr std::uint64_t Widen(std::uint64_t about, std::uint32_t low) {
  const std::uint64_t width = std::uint64_t{1} << 24;
  const std::uint64_t wide = (about & ~(width - 1)) | low;
  if (wide > about && wide - about > width / 2 && wide >= width) return wide - width;
  return wide < about && about - wide > width / 2 ? wide + width : wide;
}
constexpr std::uint64_t Distance(std::uint64_t from, std::uint64_t to) {
  return (to - from) & kUnitMask;
}
}  // namespace ring_mark

// The word of a committed record: 40 bits of position, one bit for padding, 23 bits of size in
// units. A padding record fills the end of the lap; it may be one unit long, which is the word
// alone.
namespace ring_word {
constexpr std::uint64_t kPadding = 1u << 23;
constexpr std::uint64_t Make(std::uint64_t units, std::uint64_t size, bool padding) {
  return (units << 24) | (padding ? kPadding : 0) | size;
}
constexpr std::uint64_t Position(std::uint64_t word) {
  return word >> 24;
}
constexpr std::uint32_t Size(std::uint64_t word) {
  return static_cast<std::uint32_t>(word & (kPadding - 1));
}
}  // namespace ring_word

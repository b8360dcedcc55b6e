// Unaligned numbers in a block of bytes.
//
// Shape    Traces, their files and the wire hold big-endian numbers at any address.
// Errors   None: the caller has checked the length, or a guard follows the bytes.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

using Bytes = std::span<const std::uint8_t>;

inline std::uint16_t LoadBe16(const void* from) {
  std::uint16_t value;
  std::memcpy(&value, from, sizeof value);
  return __builtin_bswap16(value);
}

inline std::uint32_t LoadBe32(const void* from) {
  std::uint32_t value;
  std::memcpy(&value, from, sizeof value);
  return __builtin_bswap32(value);
}

inline std::uint64_t LoadBe64(const void* from) {
  std::uint64_t value;
  std::memcpy(&value, from, sizeof value);
  return __builtin_bswap64(value);
}

inline void StoreBe16(void* to, std::uint16_t value) {
  value = __builtin_bswap16(value);
  std::memcpy(to, &value, sizeof value);
}

inline void StoreBe32(void* to, std::uint32_t value) {
  value = __builtin_bswap32(value);
  std::memcpy(to, &value, sizeof value);
}

inline void StoreBe64(void* to, std::uint64_t value) {
  value = __builtin_bswap64(value);
  std::memcpy(to, &value, sizeof value);
}

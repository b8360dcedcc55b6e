// Unaligned little-endian numbers in a block of bytes. Only the older trace file format has them.
//
// Errors   None: the caller has checked the length, or a guard follows the bytes.
// Threads  Pure.
#pragma once

#include <cstdint>

inline std::uint16_t LoadLe16(const std::uint8_t* from) {
  return static_cast<std::uint16_t>(from[0] | from[1] << 8);
}

inline std::uint32_t LoadLe32(const std::uint8_t* from) {
  return LoadLe16(from) | static_cast<std::uint32_t>(LoadLe16(from + 2)) << 16;
}

inline std::uint64_t LoadLe64(const std::uint8_t* from) {
  return LoadLe32(from) | static_cast<std::uint64_t>(LoadLe32(from + 4)) << 32;
}

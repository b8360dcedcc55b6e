// Where a text may be cut. What traced applications link holds nothing of `base` but headers, so it
// has a smaller rule of its own than CutUtf8.
//
// Threads  Pure.
#pragma once

#include <cstddef>

// How many of at most `bytes` bytes of a text are kept so that no UTF-8 sequence is cut apart.
inline std::size_t CutLength(const char* text, std::size_t length, std::size_t bytes) {
  if (length <= bytes) return length;
  std::size_t cut = bytes;
  // At most three continuation bytes belong to one character; anything else is not UTF-8.
  for (int i = 0; i < 3 && cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80; ++i)
    --cut;
  return (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80 ? bytes : cut;
}

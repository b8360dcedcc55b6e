// The index of a virtual operation in its class's table, from this platform's representation of a
// pointer to it: its offset in bytes plus one. From 0; a destructor takes two entries.
#pragma once

#include <cstddef>
#include <cstring>

template <class Member>
std::size_t PlaceInTable(Member member) {
  std::size_t words[2];
  static_assert(sizeof words == sizeof member);
  std::memcpy(words, &member, sizeof words);
#if defined(__aarch64__)
  return words[0] / sizeof(void*);  // here the mark of a virtual operation is in the second word
#else
  return (words[0] - 1) / sizeof(void*);
#endif
}

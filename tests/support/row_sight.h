// What can be seen of one row of a list or a tree: its ground, and the mark at its ends.
#pragma once

#include <cstdint>

struct RowSight {
  static constexpr std::uint32_t kNone = 0xffffffff;

  std::uint32_t ground = kNone;  // 0xRRGGBB, where nothing is written
  std::uint32_t stripe = kNone;  // the colour at its beginning, if that is none of the list's own
  bool box = false;              // at its end
};

// The colours of marks: one set for light and dark grounds.
//
// Shape    0xRRGGBB. The ink is readable on each ground: 4.5:1 or more. Each ground stands out from
//          white and from the dark base: 3:1 or more.
// Threads  Constant data.
#pragma once

#include <array>
#include <cstdint>

#include "where/where_marks.h"

constexpr std::uint32_t kMarkInk = 0xffffff;
// By the number of the mark. The first one is that of a note without a mark.
constexpr std::array<std::uint32_t, kMarkColours + 1> kMarkGrounds = {
    0x6b7280, 0xdc1f1f, 0xaf590e, 0x83700f, 0x218221,
    0x167e7a, 0x1e70cf, 0x8556d5, 0xcb2b91, 0x707070};
// What they are called, by their number.
constexpr std::array<const char*, kMarkColours + 1> kMarkNames = {
    "None", "Red", "Orange", "Yellow", "Green", "Teal", "Blue", "Violet", "Pink", "Grey"};

#include "overview/slice_width.h"

#include <algorithm>
#include <array>

std::int64_t WiderSlice(std::int64_t width) {
  constexpr std::int64_t kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute;
  constexpr std::array<std::int64_t, 19> kRound = {
      1,         2,           10,           20,           100,
      200,       kSecond,     2 * kSecond,  10 * kSecond, 30 * kSecond,
      kMinute,   2 * kMinute, 10 * kMinute, 30 * kMinute, kHour,
      2 * kHour, 6 * kHour,   12 * kHour,   24 * kHour};
  const auto wider = std::upper_bound(kRound.begin(), kRound.end(), width);
  return wider == kRound.end() ? 2 * width : *wider;
}

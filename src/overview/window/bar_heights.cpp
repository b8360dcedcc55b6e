#include "overview/window/bar_heights.h"

#include <algorithm>

std::array<int, SliceCounts::kSeverities> HeightsOf(const SliceCounts& counts,
                                                    std::uint64_t highest, int roomPx) {
  constexpr int kLeast[] = {1, 1, 2, 3};
  std::array<int, SliceCounts::kSeverities> heights = {};
  const std::uint64_t traces = counts.Traces();
  if (traces == 0 || highest == 0) return heights;
  const auto scaled = [&](std::uint64_t part) {
    return static_cast<int>(static_cast<double>(part) * roomPx / static_cast<double>(highest) +
                            0.5);
  };
  int sum = 0, least = 0;
  for (std::size_t i = 0; i < kBarOrder.size(); ++i) {
    const std::uint32_t part = counts.severities[kBarOrder[i]];
    if (part == 0) continue;
    heights[i] = std::max(scaled(part), kLeast[i]);
    sum += heights[i];
    least += kLeast[i];
  }
  const int room = std::max(roomPx, 1);
  const int wanted = std::clamp(std::max(scaled(traces), least), 1, room);
  // The largest part bears the difference.
  for (; sum != wanted; sum += sum < wanted ? 1 : -1)
    *std::max_element(heights.begin(), heights.end()) += sum < wanted ? 1 : -1;
  return heights;
}

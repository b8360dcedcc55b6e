#include "statistics/tally.h"

std::optional<double> RatePerSecond(const Tally& tally) {
  if (tally.count < 2) return std::nullopt;
  const auto first = MomentOfStamp(tally.first), last = MomentOfStamp(tally.last);
  if (!first || !last || *last <= *first) return std::nullopt;
  constexpr double kNanoseconds = 1e9;
  const double seconds = (static_cast<double>(*last) - static_cast<double>(*first)) / kNanoseconds;
  return static_cast<double>(tally.count - 1) / seconds;
}

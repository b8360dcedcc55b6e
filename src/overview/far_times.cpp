#include "overview/far_times.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::uint64_t kTracesPerFar = 256, kFewestTraces = 16;
constexpr std::size_t kTimes = 16;
constexpr std::int64_t kShortestGap = 3'600'000;

std::uint64_t MostFar(std::uint64_t traces) {
  return traces < kFewestTraces ? 0 : std::max<std::uint64_t>(traces / kTracesPerFar, 1);
}

// One end of the part that is kept, seen from outside: `at(i)` is the slice i from there.
template <class At>
class Edge {
 public:
  Edge(std::size_t size, std::uint64_t most, At at) : m_at(std::move(at)) {
    while (m_place < size && m_outside + m_at(m_place).Traces() <= most)
      m_outside += m_at(m_place++).Traces();
  }
  std::size_t Place() const { return m_place; }
  std::uint64_t Outside() const { return m_outside; }
  // The empty slices beside it.
  std::size_t Gap() const {
    std::size_t from = m_place;
    while (from > 0 && m_at(from - 1).Traces() == 0) --from;
    return m_place - from;
  }
  // Keeps the next ones that have traces. REQUIRES: Outside() > 0.
  void MoveOut() {
    m_place -= Gap() + 1;
    m_outside -= m_at(m_place).Traces();
  }

 private:
  const At m_at;
  std::size_t m_place = 0;  // the first slice that is kept
  std::uint64_t m_outside = 0;
};

bool IsFar(std::size_t gap, std::size_t kept, std::int64_t width) {
  return gap >= kTimes * kept && static_cast<std::int64_t>(gap) * width >= kShortestGap;
}

// The fewest slices that must be kept. Nothing: all.
std::optional<TimeLimits> Core(const TimeSlices& slices, std::uint64_t most) {
  const std::size_t size = slices.Size();
  Edge left(size, most, [&](std::size_t i) { return slices[i]; });
  Edge right(size, most, [&](std::size_t i) { return slices[size - 1 - i]; });
  if (left.Place() + right.Place() >= size) return std::nullopt;
  while (left.Outside() + right.Outside() > 0) {
    const std::size_t kept = size - left.Place() - right.Place();
    const bool isTooMuch = left.Outside() + right.Outside() > most;
    const auto mustMove = [&](const auto& edge, const auto& other) {
      if (edge.Outside() == 0) return false;
      return !IsFar(edge.Gap(), kept, slices.Width()) ||
             (isTooMuch && edge.Outside() <= std::max<std::uint64_t>(other.Outside(), 1));
    };
    if (mustMove(left, right)) {
      left.MoveOut();
    } else if (mustMove(right, left)) {
      right.MoveOut();
    } else {
      const auto timeOf = [&](std::size_t slice) {
        return slices.From() + static_cast<std::int64_t>(slice) * slices.Width();
      };
      return TimeLimits{timeOf(left.Place()), timeOf(size - right.Place())};
    }
  }
  return std::nullopt;
}

}  // namespace

bool CouldBeNarrower(const TimeSlices& slices) {
  const std::size_t size = slices.Size();
  return size > 0 && size * kTimes <= TimeSlices::kSlices && slices.Width() > 1;
}

std::optional<TimeLimits> BetterLimits(const TimeSlices& slices) {
  const std::size_t size = slices.Size();
  const std::uint64_t far = slices.Before() + slices.Behind();
  const std::uint64_t traces = slices.All().Traces() + far, most = MostFar(traces);
  if (far > most) return TimeLimits();
  if (size == 0) return std::nullopt;
  if (const auto core = Core(slices, most - far)) return core;
  if (!CouldBeNarrower(slices)) return std::nullopt;
  return TimeLimits{slices.From(), slices.To()};
}

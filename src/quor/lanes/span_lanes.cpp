#include "quor/lanes/span_lanes.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr std::uint32_t kNoLane = UINT32_MAX;

std::uint64_t EndOf(const LaneSpan& span) {
  return std::max(span.start, span.end);
}

// How many ancestors each span has. In a circle of parents somebody is the first.
std::vector<std::size_t> Depths(const std::vector<LaneSpan>& spans) {
  constexpr std::size_t kUnknown = SIZE_MAX, kUnderWay = SIZE_MAX - 1;
  std::vector<std::size_t> depths(spans.size(), kUnknown), way;
  for (std::size_t first = 0; first < spans.size(); ++first) {
    std::size_t at = first;
    while (at < spans.size() && depths[at] == kUnknown) {
      depths[at] = kUnderWay;
      way.push_back(at);
      at = spans[at].parent;
    }
    const bool isKnown = at < spans.size() && depths[at] != kUnderWay;
    std::size_t depth = isKnown ? depths[at] + 1 : 0;
    for (; !way.empty(); way.pop_back()) depths[way.back()] = depth++;
  }
  return depths;
}

// What happens at a time: a span begins, or one of its moments comes.
struct Item {
  std::uint64_t time;
  std::size_t span;
  std::size_t moment;  // kBegin: none
};
constexpr std::size_t kBegin = SIZE_MAX;

struct TimedStep {
  std::uint64_t time;
  LaneStep step;
};

struct Lane {
  std::vector<std::size_t> open;  // the innermost is the last
  std::uint64_t end = 0;          // of what has ended
};

class Sweep {
 public:
  Sweep(const std::vector<LaneSpan>& spans, std::vector<std::uint64_t>& ends, std::size_t lanesMax)
      : m_spans(spans),
        m_laneOf(spans.size(), kNoLane),
        m_moments(spans.size()),
        m_given(spans.size()),
        m_ends(ends),
        m_lanesMax(lanesMax) {
    for (const std::uint64_t end : ends) m_lanes.push_back({{}, end});
  }

  std::vector<LaneStep> Run() {
    for (const Item& item : Items()) {
      if (item.moment == kBegin)
        Begin(item.span, item.time);
      else
        PassMoment(item);
    }
    for (std::uint32_t lane = 0; lane < m_lanes.size(); ++lane) {
      while (!m_lanes[lane].open.empty()) CloseTop(lane);
      m_ends[lane] = m_lanes[lane].end;
    }
    // Steps of one lane are in the order of their times already.
    std::stable_sort(m_steps.begin(), m_steps.end(),
                     [](const TimedStep& a, const TimedStep& b) { return a.time < b.time; });
    std::vector<LaneStep> steps;
    steps.reserve(m_steps.size());
    for (const TimedStep& timed : m_steps) steps.push_back(timed.step);
    for (const std::size_t span : m_without) GiveWhole(span, steps);
    return steps;
  }

 private:
  std::vector<Item> Items() {
    std::vector<Item> items;
    for (std::size_t place = 0; place < m_spans.size(); ++place) {
      const LaneSpan& span = m_spans[place];
      items.push_back({span.start, place, kBegin});
      std::vector<std::size_t>& order = m_moments[place];
      order.resize(span.moments.size());
      std::iota(order.begin(), order.end(), std::size_t{0});
      std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return TimeOf(place, a) < TimeOf(place, b);
      });
      for (std::size_t at = 0; at < order.size(); ++at)
        items.push_back({TimeOf(place, order[at]), place, at});
    }
    const std::vector<std::size_t> depths = Depths(m_spans);
    // The outer of two spans that begin together comes first.
    std::stable_sort(items.begin(), items.end(), [&](const Item& a, const Item& b) {
      if (a.time != b.time) return a.time < b.time;
      if (a.moment == kBegin && b.moment == kBegin) {
        const std::uint64_t endA = EndOf(m_spans[a.span]), endB = EndOf(m_spans[b.span]);
        return endA != endB ? endA > endB : depths[a.span] < depths[b.span];
      }
      return a.moment == kBegin && b.moment != kBegin;
    });
    return items;
  }

  std::uint64_t TimeOf(std::size_t span, std::size_t moment) const {
    return std::clamp(m_spans[span].moments[moment], m_spans[span].start, EndOf(m_spans[span]));
  }

  void Begin(std::size_t place, std::uint64_t time) {
    const std::uint32_t lane = FindLane(place, time);
    m_laneOf[place] = lane;
    if (lane == kNoLane) {
      m_without.push_back(place);
      return;
    }
    m_lanes[lane].open.push_back(place);
    Give(time, {LaneStep::Begin, lane, place, 0});
  }

  std::uint32_t FindLane(std::size_t place, std::uint64_t time) {
    const LaneSpan& span = m_spans[place];
    if (span.parent < m_spans.size()) {
      const std::uint32_t lane = m_laneOf[span.parent];
      if (lane != kNoLane && IsInnermost(span.parent, lane, time) &&
          EndOf(span) <= EndOf(m_spans[span.parent]))
        return lane;
    }
    for (std::uint32_t lane = 0; lane < m_lanes.size(); ++lane) {
      if (span.parent == LaneSpan::kAnyParent && Holds(lane, span)) return lane;
      CloseUntil(lane, time);
      if (m_lanes[lane].open.empty() && m_lanes[lane].end <= time) return lane;
    }
    if (m_lanes.size() < m_lanesMax) {
      m_lanes.emplace_back();
      m_ends.push_back(0);
      return static_cast<std::uint32_t>(m_lanes.size() - 1);
    }
    return LeastLate();
  }

  // Closes what ended before. A parent that ends at the same moment stays for its child.
  bool IsInnermost(std::size_t place, std::uint32_t lane, std::uint64_t time) {
    std::vector<std::size_t>& open = m_lanes[lane].open;
    while (!open.empty() && open.back() != place && EndOf(m_spans[open.back()]) <= time)
      CloseTop(lane);
    return !open.empty() && open.back() == place;
  }

  // Is the innermost span of the lane around this one?
  bool Holds(std::uint32_t lane, const LaneSpan& span) {
    CloseUntil(lane, span.start);
    const std::vector<std::size_t>& open = m_lanes[lane].open;
    return !open.empty() && EndOf(span) <= EndOf(m_spans[open.back()]);
  }

  void CloseUntil(std::uint32_t lane, std::uint64_t time) {
    std::vector<std::size_t>& open = m_lanes[lane].open;
    while (!open.empty() && EndOf(m_spans[open.back()]) <= time) CloseTop(lane);
  }

  // Where time has to run backwards it does so by as little as can be.
  std::uint32_t LeastLate() const {
    std::uint32_t best = kNoLane;
    for (std::uint32_t lane = 0; lane < m_lanes.size(); ++lane)
      if (m_lanes[lane].open.empty() && (best == kNoLane || m_lanes[lane].end < m_lanes[best].end))
        best = lane;
    return best;
  }

  void CloseTop(std::uint32_t lane) {
    const std::size_t place = m_lanes[lane].open.back();
    m_lanes[lane].open.pop_back();
    while (m_given[place] < m_moments[place].size()) GiveMoment(place);
    const std::uint64_t end = EndOf(m_spans[place]);
    m_lanes[lane].end = end;
    Give(end, {LaneStep::End, lane, place, 0});
  }

  void PassMoment(const Item& item) {
    const std::uint32_t lane = m_laneOf[item.span];
    // It may have been given when its span was closed.
    if (lane == kNoLane || m_given[item.span] > item.moment) return;
    IsInnermost(item.span, lane, item.time);
    GiveMoment(item.span);
  }

  void GiveMoment(std::size_t place) {
    const std::size_t moment = m_moments[place][m_given[place]++];
    Give(TimeOf(place, moment), {LaneStep::Moment, m_laneOf[place], place, moment});
  }

  void Give(std::uint64_t time, LaneStep step) { m_steps.push_back({time, step}); }

  void GiveWhole(std::size_t place, std::vector<LaneStep>& steps) const {
    const auto lane = static_cast<std::uint32_t>(m_lanesMax);
    steps.push_back({LaneStep::Begin, lane, place, 0});
    for (const std::size_t moment : m_moments[place])
      steps.push_back({LaneStep::Moment, lane, place, moment});
    steps.push_back({LaneStep::End, lane, place, 0});
  }

  const std::vector<LaneSpan>& m_spans;
  std::vector<std::uint32_t> m_laneOf;
  std::vector<std::vector<std::size_t>> m_moments;  // by span, in the order of their times
  std::vector<std::size_t> m_given;                 // of these, by span
  std::vector<std::uint64_t>& m_ends;
  std::size_t m_lanesMax;
  std::vector<Lane> m_lanes;
  std::vector<TimedStep> m_steps;
  std::vector<std::size_t> m_without;  // spans that found no lane
};

}  // namespace

std::vector<LaneStep> SpanLanes::Place(const std::vector<LaneSpan>& spans) {
  return Sweep(spans, m_ends, m_lanesMax).Run();
}

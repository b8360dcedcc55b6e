#include "import/chrome/chrome_tracks.h"

#include <algorithm>

namespace {

// Lanes count without a sign.
std::uint64_t LaneTime(std::int64_t ns) {
  return static_cast<std::uint64_t>(ns) ^ std::uint64_t{1} << 63;
}

std::int64_t EndOf(const ChromeEvent& event) {
  return event.timeNs + std::max<std::int64_t>(event.durationNs, 0);
}

bool IsAsync(char phase) {
  return phase == 'b' || phase == 'e' || phase == 'n';
}

}  // namespace

void ChromeTrack::Pair() {
  // A file need not be in the order of time.
  std::stable_sort(m_events.begin(), m_events.end(),
                   [](const ChromeEvent& a, const ChromeEvent& b) { return a.timeNs < b.timeNs; });
  m_brackets.clear();
  m_stays.assign(m_events.size(), false);
  Open open;
  for (std::size_t place = 0; place < m_events.size(); ++place) PairOne(place, open);
  for (const auto& [id, brackets] : open)
    for (const std::size_t bracket : brackets) m_brackets[bracket].isOpen = true;
}

void ChromeTrack::PairOne(std::size_t place, Open& open) {
  const ChromeEvent& event = m_events[place];
  const bool isAsync = IsAsync(event.phase);
  std::vector<std::size_t>& around = open[isAsync ? event.id : ""];
  const std::size_t parent = !isAsync         ? LaneSpan::kAnyParent
                             : around.empty() ? LaneSpan::kNoParent
                                              : around.back();
  const bool isEnd = event.phase == 'E' || event.phase == 'e';
  if (isEnd && !around.empty()) {
    m_brackets[around.back()].end = place;
    around.pop_back();
    return;
  }
  if (event.phase == 'B' || event.phase == 'b') around.push_back(m_brackets.size());
  m_brackets.push_back({.begin = place, .parent = parent});
}

// What began and has not ended waits for its end.
void ChromeTrack::LeaveOpen() {
  std::vector<std::size_t> places(m_brackets.size(), LaneSpan::kNoParent);
  std::vector<Bracket> kept;
  for (std::size_t at = 0; at < m_brackets.size(); ++at) {
    Bracket& bracket = m_brackets[at];
    if (bracket.isOpen) {
      m_stays[bracket.begin] = true;
      continue;
    }
    if (bracket.parent < places.size()) bracket.parent = places[bracket.parent];
    places[at] = kept.size();
    kept.push_back(bracket);
  }
  m_brackets = std::move(kept);
}

std::vector<LaneSpan> ChromeTrack::Spans() const {
  std::int64_t latest = INT64_MIN;
  for (const ChromeEvent& event : m_events) latest = std::max(latest, EndOf(event));
  std::vector<LaneSpan> spans;
  spans.reserve(m_brackets.size());
  for (const Bracket& bracket : m_brackets) {
    const ChromeEvent& begin = m_events[bracket.begin];
    std::int64_t end = EndOf(begin);
    if (bracket.end != kNone) end = m_events[bracket.end].timeNs;
    if (bracket.isOpen) end = latest;
    spans.push_back({LaneTime(begin.timeNs), LaneTime(end), bracket.parent, {}});
  }
  return spans;
}

std::vector<ChromeStep> ChromeTrack::Take(bool isLast) {
  Pair();
  if (!isLast) LeaveOpen();
  const std::vector<LaneSpan> spans = Spans();
  std::vector<ChromeStep> steps;
  std::int64_t before = INT64_MIN;
  for (const LaneStep& step : m_lanes.Place(spans)) {
    const Bracket& bracket = m_brackets[step.span];
    const ChromeEvent& begin = m_events[bracket.begin];
    const bool isSpan = begin.phase == 'X' || begin.phase == 'B' || begin.phase == 'b';
    const bool isEnd = step.kind == LaneStep::End;
    if (isEnd && (!isSpan || bracket.isOpen)) continue;
    ChromeStep& taken = steps.emplace_back();
    taken.kind = !isSpan ? ChromeStep::Single : isEnd ? ChromeStep::End : ChromeStep::Begin;
    taken.lane = step.lane;
    taken.event = &begin;
    if (isEnd && bracket.end != kNone) taken.end = &m_events[bracket.end];
    const std::int64_t end = taken.end ? taken.end->timeNs : EndOf(begin);
    before = std::max(before, isEnd ? end : begin.timeNs);
    taken.timeNs = before;
  }
  return steps;
}

void ChromeTrack::Forget() {
  std::vector<ChromeEvent> staying;
  for (std::size_t at = 0; at < m_stays.size(); ++at)
    if (m_stays[at]) staying.push_back(std::move(m_events[at]));
  m_events = std::move(staying);
  m_stays.clear();
}

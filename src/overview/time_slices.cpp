#include "overview/time_slices.h"

#include <algorithm>
#include <numeric>

#include "overview/slice_width.h"

std::uint64_t SliceCounts::Traces() const {
  return std::accumulate(severities.begin(), severities.end(), std::uint64_t{0});
}

SliceCounts& SliceCounts::operator+=(const SliceCounts& other) {
  for (std::size_t i = 0; i < kSeverities; ++i) severities[i] += other.severities[i];
  losses += other.losses;
  return *this;
}

SliceCounts* TimeSlices::Seek(std::int64_t time) {
  if (!m_limits.Has(time) || time == TraceTimes::kNone) return Outside(time, 1);
  Include(time);
  const std::int64_t index = FloorDivided(time, m_width);
  m_seen = PlaceOf(index);
  m_seenFrom = index * m_width;
  m_seenWidth = static_cast<std::uint64_t>(m_width);
  // A slice at an end may have times beyond the limits.
  if (!m_limits.Has(m_seenFrom) || !m_limits.Has(m_seenFrom + m_width - 1)) m_seenWidth = 0;
  return &m_slots[m_seen];
}

SliceCounts* TimeSlices::Outside(std::int64_t time, std::int64_t step) {
  const auto traces = static_cast<std::uint64_t>(step);  // -1 takes one away
  if (time == TraceTimes::kNone)
    AddWithoutTime(traces);
  else if (time < m_limits.from)
    AddBefore(traces, time);
  else
    AddBehind(traces, time);
  return nullptr;
}

void TimeSlices::AddBefore(std::uint64_t traces, std::int64_t last) {
  m_before += traces;
  m_nearBefore = std::max(m_nearBefore, last);
}

void TimeSlices::AddBehind(std::uint64_t traces, std::int64_t first) {
  m_behind += traces;
  m_nearBehind = std::min(m_nearBehind, first);
}

void TimeSlices::Remove(const SlicedTrace& trace) {
  if (trace.time == TraceTimes::kNone || !m_limits.Has(trace.time)) {
    Outside(trace.time, -1);
    return;
  }
  SliceCounts* const slice = SliceOf(trace.time);
  --slice->severities[trace.severity];
  slice->losses -= trace.isLoss;
}

// Slices that have become empty are given up before any are joined.
void TimeSlices::Include(std::int64_t time) {
  const auto fits = [&] {
    const std::int64_t index = FloorDivided(time, m_width);
    const std::int64_t first = m_last < m_first ? index : std::min(m_first, index);
    const std::int64_t last = m_last < m_first ? index : std::max(m_last, index);
    if (last - first >= static_cast<std::int64_t>(kSlices)) return false;
    m_first = first;
    m_last = last;
    return true;
  };
  if (fits()) return;
  DropEmptyEnds();
  while (!fits()) Widen();
}

void TimeSlices::Widen() {
  const std::int64_t wider = WiderSlice(m_width), factor = wider / m_width;
  std::vector<SliceCounts> slots(kSlices);
  for (std::int64_t index = m_first; index <= m_last; ++index) {
    slots[PlaceOf(FloorDivided(index, factor))] += Slot(index);
  }
  m_slots.swap(slots);
  if (m_first <= m_last) {
    m_first = FloorDivided(m_first, factor);
    m_last = FloorDivided(m_last, factor);
  }
  m_width = wider;
  m_seenWidth = 0;
}

void TimeSlices::DropEmptyEnds() const {
  m_seenWidth = 0;  // it may be one of them
  while (m_first <= m_last && Slot(m_first) == SliceCounts()) ++m_first;
  while (m_first <= m_last && Slot(m_last) == SliceCounts()) --m_last;
}

void TimeSlices::Join(const TimeSlices& other) {
  while (m_width < other.m_width) Widen();
  other.DropEmptyEnds();
  for (std::int64_t index = other.m_first; index <= other.m_last; ++index) {
    const SliceCounts& slice = other.Slot(index);
    if (slice == SliceCounts()) continue;
    Include(index * other.m_width);
    Slot(FloorDivided(index * other.m_width, m_width)) += slice;
  }
  AddBefore(other.m_before, other.m_nearBefore);
  AddBehind(other.m_behind, other.m_nearBehind);
  AddWithoutTime(other.m_withoutTime);
}

void TimeSlices::Empty() {
  for (std::int64_t index = m_first; index <= m_last; ++index) Slot(index) = {};
  m_first = 0;
  m_last = -1;
  m_seenWidth = 0;
  m_before = m_behind = m_withoutTime = 0;
  m_nearBefore = TraceTimes::kNone;
  m_nearBehind = std::numeric_limits<std::int64_t>::max();
}

void TimeSlices::WidenTo(std::size_t slices) {
  constexpr std::int64_t kWidest = std::int64_t{1} << 44;  // more than there are times
  while (Size() > slices && m_width < kWidest) Widen();
}

std::size_t TimeSlices::Size() const {
  DropEmptyEnds();
  return static_cast<std::size_t>(m_last - m_first + 1);
}

SliceCounts TimeSlices::All() const {
  SliceCounts all;
  for (const SliceCounts& slice : m_slots) all += slice;
  return all;
}

SliceCounts TimeSlices::Between(const TimeLimits& times) const {
  SliceCounts counts;
  if (Size() == 0 || times.from >= To() || times.to <= From()) return counts;
  const std::int64_t first = FloorDivided(std::max(times.from, From()), m_width);
  const std::int64_t last = FloorDivided(std::min(times.to, To()) - 1, m_width);
  for (std::int64_t index = first; index <= last; ++index) counts += Slot(index);
  return counts;
}

void TimeSlices::RelaxLimits() {
  if (m_before == 0) m_nearBefore = TraceTimes::kNone;
  if (m_behind == 0) m_nearBehind = std::numeric_limits<std::int64_t>::max();
  m_limits = {m_before == 0 ? TraceTimes::kNone : m_nearBefore + 1, m_nearBehind};
  m_seenWidth = 0;
}

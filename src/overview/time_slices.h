// The traces of each slice of time, by severity: a fixed number of slices, whatever the span is.
//
// Shape    Slices are as narrow as they can be: when a time does not fit, neighbours are joined to
//          the next width (slice_width.h). So the result depends on the traces alone and not on
//          their order, and joining parts gives the same as one count of all. Each count is exact
//          at any time, also after removals. Times outside of the limits are counted as before or
//          behind. An empty value has no slices.
// Cost     40 KiB. Add and Remove look at one slice; widening passes over all of them.
// Errors   std::bad_alloc, by the constructor and by widening.
// Threads  Values: one at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "overview/trace_times.h"

// What one slice has. The severities are those of statistics: 0 info, 1 warn, 2 error, 3 none.
struct SliceCounts {
  static constexpr std::size_t kSeverities = 4;
  std::array<std::uint32_t, kSeverities> severities = {};
  std::uint32_t losses = 0;  // of these, the reports of lost traces

  std::uint64_t Traces() const;
  SliceCounts& operator+=(const SliceCounts& other);
  bool operator==(const SliceCounts&) const = default;
};

// Milliseconds; `to` is outside.
struct TimeLimits {
  std::int64_t from = TraceTimes::kNone, to = std::numeric_limits<std::int64_t>::max();

  bool Has(std::int64_t time) const { return time >= from && time < to; }
  bool operator==(const TimeLimits&) const = default;
};

// One trace as it is counted.
struct SlicedTrace {
  std::int64_t time;  // or TraceTimes::kNone
  std::uint32_t severity;
  bool isLoss;
};

class TimeSlices {
 public:
  static constexpr std::size_t kSlices = 2048;

  explicit TimeSlices(const TimeLimits& limits = {}) : m_limits(limits), m_slots(kSlices) {}

  void Add(const SlicedTrace& trace) {
    if (SliceCounts* const slice = SliceOf(trace.time)) {
      ++slice->severities[trace.severity];
      if (trace.isLoss) ++slice->losses;
    }
  }
  // REQUIRES: it was added, and neither the limits nor what it is have changed since.
  void Remove(const SlicedTrace& trace);
  // REQUIRES: the other has the same limits.
  void Join(const TimeSlices& other);
  // Traces that nobody has to look at one by one.
  void AddBefore(std::uint64_t traces, std::int64_t last);
  void AddBehind(std::uint64_t traces, std::int64_t first);
  void AddWithoutTime(std::uint64_t traces) { m_withoutTime += traces; }
  // No traces any more; the width stays, which saves time for those to come.
  void Empty();
  // Joins neighbours until there are at most so many, but two where 1970 lies between them.
  void WidenTo(std::size_t slices);

  // ---- without the empty ones at both ends
  std::size_t Size() const;
  std::int64_t Width() const { return m_width; }
  // Of the first slice, and of the end of the last. REQUIRES: Size() > 0.
  std::int64_t From() const { return m_first * m_width; }
  std::int64_t To() const { return (m_last + 1) * m_width; }
  const SliceCounts& operator[](std::size_t slice) const {
    return Slot(m_first + static_cast<std::int64_t>(slice));
  }
  SliceCounts All() const;
  SliceCounts Between(const TimeLimits& times) const;  // of all that have a part of it

  const TimeLimits& Limits() const { return m_limits; }
  std::uint64_t Before() const { return m_before; }
  std::uint64_t Behind() const { return m_behind; }
  std::uint64_t WithoutTime() const { return m_withoutTime; }
  // From now on the limits are as wide as the times outside of them allow.
  void RelaxLimits();

 private:
  // Null: the trace is in no slice, and counted where it is.
  SliceCounts* SliceOf(std::int64_t time) {
    const auto inSlice = static_cast<std::uint64_t>(time) - static_cast<std::uint64_t>(m_seenFrom);
    return inSlice < m_seenWidth ? &m_slots[m_seen] : Seek(time);
  }
  SliceCounts* Seek(std::int64_t time);
  SliceCounts* Outside(std::int64_t time, std::int64_t step);
  void Include(std::int64_t time);
  void Widen();
  void DropEmptyEnds() const;
  static std::size_t PlaceOf(std::int64_t index) {
    return static_cast<std::uint64_t>(index) % kSlices;
  }
  SliceCounts& Slot(std::int64_t index) { return m_slots[PlaceOf(index)]; }
  const SliceCounts& Slot(std::int64_t index) const { return m_slots[PlaceOf(index)]; }

  TimeLimits m_limits;
  std::vector<SliceCounts> m_slots;  // by index modulo their number
  std::int64_t m_width = 1;
  // Indexes since 1970, m_last < m_first: none. All other slots are empty.
  mutable std::int64_t m_first = 0, m_last = -1;
  // The slot that was looked at last; the width 0: none, or it may not be used unseen.
  std::size_t m_seen = 0;
  std::int64_t m_seenFrom = 0;
  mutable std::uint64_t m_seenWidth = 0;
  std::uint64_t m_before = 0, m_behind = 0, m_withoutTime = 0;
  // The nearest times outside of the limits, or nearer ones.
  std::int64_t m_nearBefore = TraceTimes::kNone,
               m_nearBehind = std::numeric_limits<std::int64_t>::max();
};

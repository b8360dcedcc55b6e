// Reads what the overview counts of a trace: its time, its severity, and whether it reports lost
// traces.
//
// Threads  One at a time. LossNames: any.
#pragma once

#include <algorithm>
#include <array>
#include <vector>

#include "overview/time_slices.h"
#include "records/trace_event.h"
#include "statistics/stat_key.h"

// The ids of the names that a report of lost traces has: component "Quor", category "Loss".
class LossNames {
 public:
  LossNames() = default;
  explicit LossNames(const NameMap& names);

  bool Has(NameId component, NameId category) const {
    return !m_categories.empty() && Contains(m_components, component) &&
           Contains(m_categories, category);
  }
  bool operator==(const LossNames&) const = default;

 private:
  static bool Contains(const std::vector<NameId>& ids, NameId id);
  std::vector<NameId> m_components, m_categories;  // sorted
};

class SlicedReader {
 public:
  explicit SlicedReader(LossNames losses) : m_losses(std::move(losses)) {}

  SlicedTrace Read(const TraceEvent_i& event) {
    const std::uint8_t* const record = event.Record();
    return record ? ReadRecord(RawTrace(record)) : ReadOther(event);
  }
  // Calls visit(const SlicedTrace&) for each in order. Records are asked for some traces ahead, so
  // that the walk does not wait for each.
  template <class Visit>
  void ReadEach(const std::vector<const TraceEvent_i*>& events, Visit&& visit) {
    constexpr std::size_t kAhead = 32;
    std::array<const std::uint8_t*, kAhead> ahead;
    const std::size_t size = events.size();
    for (std::size_t i = 0; i < std::min(kAhead, size); ++i) ahead[i] = Fetch(*events[i]);
    for (std::size_t i = 0; i < size; ++i) {
      const std::uint8_t* const record = ahead[i % kAhead];
      if (i + kAhead < size) ahead[i % kAhead] = Fetch(*events[i + kAhead]);
      visit(record ? ReadRecord(RawTrace(record)) : ReadOther(*events[i]));
    }
  }
  const LossNames& Losses() const { return m_losses; }

 private:
  static const std::uint8_t* Fetch(const TraceEvent_i& event) {
    const std::uint8_t* const record = event.Record();
    if (record) {
      __builtin_prefetch(record + TraceAt::kComponent);
      __builtin_prefetch(record + TraceAt::kAttributes);
    }
    return record;
  }
  SlicedTrace ReadRecord(const RawTrace& trace) {
    return {m_times.Of(trace.Date(), trace.Time()), StatKey::SeverityOf(trace.Attributes()),
            m_losses.Has(trace.ComponentId(), trace.CategoryId())};
  }
  SlicedTrace ReadOther(const TraceEvent_i& event) {
    return {m_times.Of(event.GetDate(), event.GetTime()),
            StatKey::SeverityOf(event.GetAttributes()),
            m_losses.Has(event.GetComponentId(), event.GetCategoryId())};
  }

  LossNames m_losses;
  TraceTimes m_times;
};

// Reads what the overview counts of a trace: its time, its severity, and whether it reports lost
// traces.
//
// Threads  One at a time. LossNames: any.
#pragma once

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
    if (!record) return ReadOther(event);
    const RawTrace trace(record);
    return {m_times.Of(trace.Date(), trace.Time()), StatKey::SeverityOf(trace.Attributes()),
            m_losses.Has(trace.ComponentId(), trace.CategoryId())};
  }
  const LossNames& Losses() const { return m_losses; }

 private:
  SlicedTrace ReadOther(const TraceEvent_i& event) {
    return {m_times.Of(event.GetDate(), event.GetTime()),
            StatKey::SeverityOf(event.GetAttributes()),
            m_losses.Has(event.GetComponentId(), event.GetCategoryId())};
  }

  LossNames m_losses;
  TraceTimes m_times;
};

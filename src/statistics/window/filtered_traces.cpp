#include "statistics/window/filtered_traces.h"

#include <utility>

class FilteredTraces::Walk final : public Reader {
 public:
  explicit Walk(const FilteredTraces& all)
      : m_traces(all.m_lent->traces),
        m_filter(all.m_filter),
        m_pass(m_filter, all.m_names, all.m_clock),
        m_all(m_filter.ShowsAll()) {}
  void Take(std::size_t from, std::size_t end, Events& events) override {
    if (m_pass.NeedsBefore()) m_pass.BeginBehind(from > 0 ? m_traces[from - 1] : nullptr);
    m_traces.ForEachIn(from, end, [&](const TraceEvent_i* event) {
      if (m_all || m_pass.Matches(*event)) events.push_back(event);
    });
  }

 private:
  const TraceList_t::Reader& m_traces;
  CTraceFilter m_filter;
  FilterPass m_pass;
  const bool m_all;
};

FilteredTraces::FilteredTraces(std::shared_ptr<const LentTraces> lent, const CTraceFilter& filter,
                               const CTraceDoc& document)
    : m_lent(std::move(lent)),
      m_filter(filter),
      m_names(document.m_names),
      m_clock(FilterPass::ClockOf(document)) {}

std::unique_ptr<CountedTraces::Reader> FilteredTraces::MakeReader() const {
  return std::make_unique<Walk>(*this);
}

#include "tree/filter/filter_pass.h"

namespace {

constexpr std::uint8_t kIsShown = 1;

template <class Table>
void FillTable(Table& table, bool all, const std::map<NameId, int>& marks, std::uint8_t unknown) {
  table.fill(all ? kIsShown : unknown);
  if (all) return;
  for (const auto& [id, mark] : marks) table[id] = mark == 1;
}

template <class Table>
void LearnId(Table& table, bool all, const std::map<NameId, int>& marks, NameId id) {
  if (all) return;
  if (const auto mark = marks.find(id); mark != marks.end()) table[id] = mark->second == 1;
}

}  // namespace

FilterPass::FilterPass(CTraceFilter& filter)
    : m_filter(filter), m_all(filter.allTraces != 0), m_attributes{} {
  if (m_all) return;
  m_tables = std::make_unique<Tables>();
  FillTable(m_tables->components, filter.allComponents, filter.components, kUnknown);
  FillTable(m_tables->categories, filter.allCategories, filter.categories, kUnknown);
  FillTable(m_tables->applications, filter.allApplications, filter.applications, kUnknown);
  for (int bits = 0; bits < 32; ++bits) {
    m_attributes[static_cast<std::size_t>(bits)] =
        filter.SeverityPasses(bits) && filter.AttributesPass(bits) ? kShown : kHidden;
  }
}

bool FilterPass::MatchesUnknown(const RawTrace& trace) {
  const bool passes = m_filter.Matches(trace) != 0;
  LearnId(m_tables->components, m_filter.allComponents, m_filter.components, trace.ComponentId());
  LearnId(m_tables->categories, m_filter.allCategories, m_filter.categories, trace.CategoryId());
  LearnId(m_tables->applications, m_filter.allApplications, m_filter.applications, trace.AppId());
  if (!m_filter.allThreads) LearnThread(trace);
  return passes;
}

// A machine that no test has reached yet stays unknown, because only Matches may add it.
void FilterPass::LearnThread(const RawTrace& trace) {
  if (!m_filter.threads.contains(trace.MachineId())) return;
  const bool passes = m_filter.ThreadPasses(trace.MachineId(), trace.PidId(), trace.TidId());
  const std::uint64_t key = KeyOf(trace);
  m_threads[SlotOf(key)] = key | std::uint64_t{passes} << 49;
}

#include "filter/live_filter.h"

#include <algorithm>
#include <utility>

namespace {

bool Has(const std::vector<std::string>& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

}  // namespace

LiveFilter::LiveFilter(const FilterPaths& paths, const NameMap& names)
    : m_paths(paths),
      m_names(names),
      m_components(paths.Touch(CFilterDialog::kComponents)),
      m_categories(paths.Touch(CFilterDialog::kCategories)),
      m_applications(paths.Touch(CFilterDialog::kApplications)),
      m_allThreads(paths.Touch(CFilterDialog::kThreads)) {}

// Returns how many new ids, and threads of a machine's process, may be subject to the steps.
std::size_t LiveFilter::Note(const TraceEvent_i& trace) {
  TraceIndexes& seen = m_seen.m_indexes;
  seen.Note(trace);
  if (m_allThreads)
    m_threads.insert(std::uint64_t{trace.GetMachineId()} << 32 |
                     std::uint64_t{trace.GetPidId()} << 16 | trace.GetTidId());
  return (m_components ? seen.components.Ids().size() : 0) +
         (m_categories ? seen.categories.Ids().size() : 0) +
         (m_applications ? seen.applications.Ids().size() : 0) + m_threads.size();
}

bool LiveFilter::Passes(const TraceEvent_i& trace) {
  if (m_paths.Empty()) return true;
  const std::size_t ids = Note(trace);
  if (m_ids != ids) {
    m_ids = ids;
    MakeFilter();
  }
  return m_filter.Matches(trace) != 0;
}

void LiveFilter::MakeFilter() {
  m_filter = CTraceFilter();
  m_filter.MergeDocumentNames(m_seen);
  std::vector<std::string> accounts;
  std::vector<std::string> missing = m_paths.Take(m_host, m_filter, m_names, &accounts);
  if (m_made)
    std::erase_if(missing, [this](const std::string& path) { return !Has(m_missing, path); });
  m_missing = std::move(missing);
  m_accountCame = m_accountCame || Has(accounts, m_paths.Account());
  m_made = true;
}

void LiveFilter::ForgetIds() {
  m_seen.m_indexes = TraceIndexes();
  m_threads.clear();
  m_ids.reset();
}

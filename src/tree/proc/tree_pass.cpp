#include "tree/proc/tree_pass.h"

#include <unordered_set>
#include <utility>

#include "tree/filter/filter_pass.h"

namespace {

constexpr std::size_t kLatePerLook = 512;
// The rest is for the durations.
constexpr int kThousandthsForFiling = 950;

}  // namespace

TreePass::TreePass(CTraceDoc& document, CTraceFilter& filter, const TraceScanSetup& setup,
                   std::shared_ptr<PostedStep::Line> line)
    : m_document(document),
      m_filter(filter),
      m_model(std::make_unique<ProcModel>(document, filter)),
      m_scan(std::make_unique<TraceScan>(document, filter, setup, std::move(line))) {}

TreePass::State TreePass::Step(Clock::time_point until, bool wait) {
  if (m_scan) {
    const State state = m_scan->Take(
        until, [this](TraceEvent_i* event) { m_model->File(event, false); }, wait);
    if (state != State::Whole) return state;
    m_scan.reset();
  }
  do {
    if (!FileLate() && !m_model->UpdateDurations(m_timed++)) return State::Whole;
  } while (Clock::now() < until);
  return State::More;
}

// False: none was left.
bool TreePass::FileLate() {
  if (m_late.empty()) return false;
  for (std::size_t filed = 0; filed < kLatePerLook && !m_late.empty(); ++filed) {
    m_model->File(m_late.front(), false);
    m_late.pop_front();
  }
  return true;
}

void TreePass::Add(const CTraceHint& newest) {
  // The durations of some nodes are set already: from now on each trace sets them.
  if (m_timed > 0) {
    const ProcModel::Batch batch(*m_model);
    for (TraceEvent_i* const event : newest.m_events) m_model->AddTrace(event, true);
    return;
  }
  FilterPass pass(m_filter, m_document);
  for (TraceEvent_i* const event : newest.m_events)
    if (pass.Matches(*event)) m_late.push_back(event);
}

void TreePass::Remove(const CTraceHint& oldest) {
  if (m_scan) m_scan->OnTrim(oldest);
  if (!m_late.empty()) {
    const std::unordered_set<const TraceEvent_i*> gone(oldest.m_events.begin(),
                                                       oldest.m_events.end());
    std::erase_if(m_late, [&gone](const TraceEvent_i* event) { return gone.contains(event); });
  }
  m_model->RemoveTraces(oldest.m_events, ProcModel::Hidden::TakesNothing);
}

int TreePass::Thousandths() const {
  return m_scan ? m_scan->Thousandths() * kThousandthsForFiling / 1000 : kThousandthsForFiling;
}

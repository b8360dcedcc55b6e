#include "tree/filter/filter_pass.h"

#include <utility>

#include "documents/trace_doc.h"
#include "records/record_fields.h"

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

// The document's trace before this one. A tick has the newest traces, so the search begins there.
const TraceEvent_i* Before(const TraceEvent_i& event, const TraceList_t& traces) {
  if (traces.empty() || traces.front() == &event) return nullptr;
  for (std::size_t place = traces.size(); --place > 0;)
    if (traces[place] == &event) return traces[place - 1];
  return nullptr;
}

}  // namespace

struct FilterPass::Text {
  Text(const WhereProgramPtr& program, const NameMap& names, const WhereClock& clock,
       const TraceList_t* list)
      : matcher(program, names, clock), traces(list) {}

  const std::uint8_t* RecordOf(const TraceEvent_i& event) {
    if (const std::uint8_t* const own = event.Record()) return own;
    record = ::RecordOf(event);
    return record.data();
  }
  WherePrevious Of(const TraceEvent_i* before) {
    return before ? WherePrevious(RawTrace(RecordOf(*before))) : WherePrevious();
  }

  WhereMatcher matcher;
  const TraceList_t* const traces;  // null: BeginBehind tells the trace before
  bool begun = false;
  WherePrevious previous;            // kept for a text that needs it
  std::vector<std::uint8_t> record;  // of an event that has none
};

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

FilterPass::FilterPass(CTraceFilter& filter, const CTraceDoc& document, bool utc)
    : FilterPass(filter, document.m_names, ClockOf(document, utc), &document.m_traces) {}

FilterPass::FilterPass(CTraceFilter& filter, const NameMap& names, const WhereClock& clock)
    : FilterPass(filter, names, clock, nullptr) {}

FilterPass::FilterPass(CTraceFilter& filter, const NameMap& names, const WhereClock& clock,
                       const TraceList_t* list)
    : FilterPass(filter) {
  if (!filter.where) return;
  m_text = std::make_unique<Text>(filter.where, names, clock, list);
  m_text->matcher.SetMarks(filter.noted);
  if (!filter.where->UsesDelta()) m_plainText = &m_text->matcher;
}

FilterPass::~FilterPass() = default;

WhereClock FilterPass::ClockOf(const CTraceDoc& document, bool utc) {
  WhereClock clock{utc};
  if (document.m_traces.empty()) return clock;
  const TraceEvent_i& newest = *document.m_traces.back();
  clock.end = MomentOfStamp(std::uint64_t{newest.GetDate()} << 32 | newest.GetTime());
  return clock;
}

bool FilterPass::MatchesText(const TraceEvent_i& event) {
  Text& text = *m_text;
  WherePrevious previous;
  if (text.matcher.Program().UsesDelta()) {
    if (!std::exchange(text.begun, true) && text.traces)
      text.previous = text.Of(Before(event, *text.traces));
    previous = std::exchange(text.previous, WherePrevious(RawTrace(text.RecordOf(event))));
  }
  return (m_all || MatchesMarks(event)) && text.matcher.Matches(text.RecordOf(event), previous);
}

bool FilterPass::NeedsBefore() const {
  return m_text && m_text->matcher.Program().UsesDelta();
}

bool FilterPass::MatchesBehind(const TraceEvent_i& event, const TraceEvent_i* before) {
  BeginBehind(before);
  return Matches(event);
}

void FilterPass::BeginBehind(const TraceEvent_i* before) {
  if (!NeedsBefore()) return;
  m_text->begun = true;
  m_text->previous = m_text->Of(before);
}

std::uint64_t FilterPass::GivenUp() const {
  return m_text ? m_text->matcher.LimitsReached() : 0;
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

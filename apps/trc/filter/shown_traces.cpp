#include "filter/shown_traces.h"

#include <algorithm>
#include <functional>

#include "filter/where_option.h"
#include "terminal/output.h"

bool ShownTraces::Filter(const TraceOptions& options) {
  const auto fail = [](const std::string& why) {
    PrintError(why);
    return false;
  };
  if (options.sinceRow && *options.sinceRow >= All())
    return fail("--since-row: there are " + std::to_string(All()) + " traces, from 0");
  if (std::string why; !options.filter.Empty())
    if (!options.filter.Apply(m_document, m_filter, &why)) return fail(why);
  m_filter.where = options.where;
  if (!m_filter.ShowsAll())
    m_pass = std::make_unique<FilterPass>(m_filter, m_document, options.utc);
  if (const std::string why = MissingName(options.choice, m_document.m_indexes, m_document.m_names);
      !why.empty())
    return fail(why);
  if (!options.choice.Empty()) m_choice.emplace(options.choice, m_document.m_names);
  m_all = !m_pass && !m_choice && !m_test;
  return true;
}

ShownTraces::~ShownTraces() {
  const std::string givenUp = WhereGivenUpText(m_pass ? m_pass->GivenUp() : 0);
  if (!givenUp.empty()) PrintError(givenUp);
}

// Nothing is asked twice: a search that was given up counts once.
bool ShownTraces::PassesAt(std::size_t place) {
  if (place < m_knownFrom) return TestAt(place);
  return std::binary_search(m_known.begin(), m_known.end(), place, std::greater<std::size_t>());
}

bool ShownTraces::TestAt(std::size_t place) {
  const TraceList_t& traces = m_document.m_traces;
  const TraceEvent_i& trace = *traces[place];
  if (m_pass && m_pass->NeedsBefore()) {
    if (!m_pass->MatchesBehind(trace, place > 0 ? traces[place - 1] : nullptr)) return false;
  } else if (m_pass && !m_pass->Matches(trace)) {
    return false;
  }
  return (!m_choice || m_choice->Passes(trace)) && (!m_test || m_test(trace));
}

void ShownTraces::Keep(Test test) {
  m_all = false;
  m_test = std::move(test);
}

std::size_t ShownTraces::Limit(const TraceOptions& options) {
  m_count = options.count;
  m_context = options.context;
  std::uint64_t from = options.from;
  if (options.tail != TraceOptions::kAll) from = PlaceOfTail(from, options.tail);
  const std::size_t first = FirstRowFrom(from);
  if (m_candidates && m_next < All()) m_nextCandidate = m_candidates(m_next, false);
  if (m_all && m_count < All() - first) m_end = first + static_cast<std::size_t>(m_count);
  return first;
}

// The traces that pass before a place, the last one first.
class ShownTraces::Backward {
 public:
  Backward(ShownTraces& traces, std::size_t before) : m_traces(traces), m_place(before) {
    if (traces.m_candidates && before > 0) m_next = traces.m_candidates(before - 1, true);
  }
  // None below `least`: All(). So also when the look function ends the search.
  std::size_t Next(std::size_t least) {
    while (m_place > least) {
      if (m_next) {
        const std::optional<std::size_t> next = m_next();
        if (!next && !Look()) break;
        if (!next) continue;
        m_place = *next;  // All(): there is none
        if (m_place < least || m_place >= m_traces.All()) break;
      } else {
        --m_place;
      }
      if (m_place % kTracesPerSearchLook == 0 && !Look()) break;
      if (m_traces.PassesAt(m_place)) return m_place;
    }
    m_place = 0;
    return m_traces.All();
  }

 private:
  bool Look() const { return !m_traces.m_look || m_traces.m_look(m_place); }

  ShownTraces& m_traces;
  std::size_t m_place;
  NextCandidate m_next;  // empty: each trace is tested
};

// Where the last ones begin.
std::size_t ShownTraces::PlaceOfTail(std::uint64_t from, std::uint64_t tail) {
  const auto least = static_cast<std::size_t>(std::min<std::uint64_t>(from, All()));
  if (m_all)
    return std::max(least, All() - static_cast<std::size_t>(std::min<std::uint64_t>(tail, All())));
  Backward search(*this, All());
  std::size_t first = All();
  for (; tail > 0; --tail) {
    const std::size_t place = search.Next(least);
    m_knownFrom = place == All() ? least : place;
    if (place == All()) break;
    m_known.push_back(static_cast<std::uint32_t>(place));
    first = place;
  }
  return first;
}

bool ShownTraces::SearchOn() {
  if (m_next >= All() || IsFull()) return false;
  if (m_nextCandidate && m_chosen < m_count) return JumpOn();
  const std::size_t behindLook = m_next % kTracesPerSearchLook;
  if (behindLook == 0 && m_look && !m_look(m_next)) return false;
  const std::size_t end = std::min(m_next - behindLook + kTracesPerSearchLook, All());
  const std::size_t rows = m_places.size();
  // Only up to the next row, because the caller waits.
  while (m_next < end && m_places.size() == rows && !IsFull()) Step(m_next++);
  return true;
}

// Goes on to the next candidate. What it passes over is shown where it stands beside a chosen one.
bool ShownTraces::JumpOn() {
  const std::optional<std::size_t> next = m_nextCandidate();
  if ((!next || m_jumps++ % kTracesPerSearchLook == 0) && m_look && !m_look(m_next)) return false;
  if (!next) return true;
  for (; m_next < std::min(*next, m_besideEnd); ++m_next) Add(m_next, true);
  m_next = *next;
  if (m_next < All()) Step(m_next++);
  return true;
}

void ShownTraces::Step(std::size_t place) {
  if (m_chosen >= m_count || !PassesAt(place)) {
    if (place < m_besideEnd) Add(place, true);
    return;
  }
  std::size_t before = m_places.empty() ? 0 : m_places.back() + std::size_t{1};
  if (place > m_context) before = std::max<std::size_t>(before, place - m_context);
  if (m_context > 0)
    for (; before < place; ++before) Add(before, true);
  Add(place, false);
  ++m_chosen;
  m_besideEnd = place + 1 + static_cast<std::size_t>(m_context);
}

void ShownTraces::Add(std::size_t place, bool beside) {
  m_places.push_back(static_cast<std::uint32_t>(place));
  if (m_context > 0) m_beside.push_back(beside);
}

std::size_t ShownTraces::Count() {
  if (m_all) return m_end;
  while (SearchOn()) {
  }
  return static_cast<std::size_t>(m_chosen);
}

std::size_t ShownTraces::FirstRowFrom(std::uint64_t place) {
  const auto from = static_cast<std::size_t>(std::min<std::uint64_t>(place, All()));
  if (m_all) return from;
  m_next = from;
  if (m_context > 0) return 0;  // what stands beside comes first
  if (const std::size_t before = Backward(*this, from).Next(0); before < All()) Add(before, false);
  return m_places.size();
}

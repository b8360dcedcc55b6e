#include "where/colours/colour_judge.h"

#include <algorithm>

#include "base/thread_time.h"
#include "records/record_fields.h"

ColourJudge::ColourJudge(ColourProgramPtr program, const NameMap& names)
    : m_program(std::move(program)), m_names(names), m_namesKnown(names.size()), m_kept(kKept) {
  for (std::size_t rule = 0; rule < m_program->Rules().size(); ++rule)
    if (m_program->ProgramOf(rule)) m_lines.push_back({rule});
}

void ColourJudge::BeginPage(const WhereClock& clock, Clock::time_point until) {
  m_until = until;
  m_begun = m_late = false;
  if (m_names.size() < m_namesKnown) ForgetAll();
  if (m_names.size() > m_namesKnown) {
    m_namesKnown = m_names.size();
    std::fill(m_kept.begin(), m_kept.end(), Kept{});
    for (Line& line : m_lines)
      if (line.matcher) line.matcher->NamesMayHaveChanged();
  }
  SetClock(clock);
}

void ColourJudge::SetClock(const WhereClock& clock) {
  const bool zone = clock.utc != m_clock.utc;
  const bool end = clock.end != m_clock.end;
  if (!zone && !end) return;
  m_clock = clock;
  for (Line& line : m_lines)
    if (line.matcher && (zone || line.matcher->Program().UsesEnd())) line.matcher->SetClock(clock);
  if (zone) std::fill(m_kept.begin(), m_kept.end(), Kept{});
  if (++m_end == 0) m_end = 1;
}

ColourJudge::Kept* ColourJudge::SetOf(const TraceEvent_i* trace) {
  constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15;
  static_assert(kSets == 1024);
  const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(trace));
  return m_kept.data() + static_cast<std::size_t>(bits * kGolden >> 54) * kWays;
}

ColourJudge::Kept& ColourJudge::KeptOf(const TraceEvent_i* trace) {
  Kept* const set = SetOf(trace);
  Kept* unused = nullptr;
  for (Kept* kept = set; kept != set + kWays; ++kept) {
    if (kept->trace == trace) {
      if (kept->end != 0 && kept->end != m_end) *kept = Kept{.trace = trace};
      return *kept;
    }
    if (!kept->trace) unused = kept;
  }
  if (!unused) unused = set + m_turn++ % kWays;
  *unused = Kept{.trace = trace};
  return *unused;
}

void ColourJudge::Forget(const TraceEvent_i* trace) {
  Kept* const set = SetOf(trace);
  for (Kept* kept = set; kept != set + kWays; ++kept)
    if (kept->trace == trace) *kept = Kept{};
}

void ColourJudge::ForgetAll() {
  m_namesKnown = m_names.size();
  std::fill(m_kept.begin(), m_kept.end(), Kept{});
  for (Line& line : m_lines) line.matcher = nullptr;
}

WhereMatcher& ColourJudge::MatcherOf(Line& line) {
  if (line.matcher) return *line.matcher;
  line.matcher = std::make_unique<WhereMatcher>(m_program->ProgramOf(line.rule), m_names, m_clock);
  if (m_program->Searches(line.rule)) line.matcher->Bound(kBounds);
  return *line.matcher;
}

// The first rule of a page is always asked.
bool ColourJudge::IsOver() {
  if (m_begun && m_until != Clock::time_point::max() && Clock::now() >= m_until) return true;
  m_begun = true;
  return false;
}

std::optional<bool> ColourJudge::Holds(Line& line, Kept& kept, const std::uint8_t* record,
                                       const Before& before) {
  WhereMatcher& matcher = MatcherOf(line);
  WherePrevious previous;
  if (matcher.Program().UsesDelta()) {
    const std::optional<WherePrevious> found = before();
    if (!found) return std::nullopt;
    previous = *found;
  }
  if (matcher.Program().UsesEnd()) kept.end = m_end;
  if (m_program->Searches(line.rule))
    matcher.EndSearchesAt(ThreadNanoseconds() +
                          static_cast<std::uint64_t>(std::chrono::nanoseconds(kRuleTime).count()));
  ++m_asked;
  return matcher.Matches(record, previous);
}

ColourJudge::Verdict ColourJudge::VerdictOf(const Kept& kept) const {
  if (!kept.known || kept.next == m_lines.size()) return {kept.known};
  return {true, &m_program->Rules()[m_lines[kept.next].rule]};
}

ColourJudge::Verdict ColourJudge::Of(const TraceEvent_i& trace, const Before& before) {
  Kept& kept = KeptOf(&trace);
  if (kept.known) return VerdictOf(kept);
  const std::uint8_t* record = trace.Record();
  if (!record) {
    m_record = RecordOf(trace);
    record = m_record.data();
  }
  for (; kept.next < m_lines.size(); ++kept.next) {
    const std::optional<bool> holds =
        IsOver() ? std::nullopt : Holds(m_lines[kept.next], kept, record, before);
    if (!holds) {
      m_late = true;
      return {};
    }
    if (*holds) break;
  }
  kept.known = true;
  return VerdictOf(kept);
}

std::uint64_t ColourJudge::GivenUp() const {
  std::uint64_t searches = 0;
  for (const Line& line : m_lines) searches += line.matcher ? line.matcher->LimitsReached() : 0;
  return searches;
}

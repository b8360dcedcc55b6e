#include "live/live_source.h"

#include <algorithm>
#include <chrono>

#include "filter/moment.h"
#include "live/silence.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "text/visible_text.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPause{1000}, kNone{0};  // without traces

Clock::time_point EndOf(const LiveLimits& limits) {
  // A time too far in the future counts as none.
  constexpr std::int64_t kYear = 365 * 24 * 3600, kSecondMs = 1000;
  std::int64_t left = kYear * kSecondMs;
  if (limits.seconds && *limits.seconds < kYear)
    left = static_cast<std::int64_t>(*limits.seconds) * kSecondMs;
  if (const std::uint64_t until = limits.traces.choice.until; until != TraceChoice::kNever)
    left = std::min(left, MillisecondsOf(until) - NowMs());
  return Clock::now() + std::chrono::milliseconds(left);
}

}  // namespace

std::string RepeatedText(const TraceThread_i::Counts& counts) {
  if (counts.twice + counts.late == 0) return {};
  return std::to_string(counts.twice) + " came twice, " + std::to_string(counts.late) +
         " came late";
}

LiveSource::~LiveSource() {
  if (m_connection) m_connection->Disconnect();
}

bool LiveSource::Connect(const std::string& machine, const LiveLimits& limits) {
  std::string why;
  m_connection = TraceThread_i::ConnectToTraceService(machine, m_names, &why, limits.atSource);
  if (m_connection && !limits.traces.filter.Account().empty()) why = WhyNoAccounts(machine);
  if (!why.empty()) PrintError(why);
  return m_connection != nullptr && why.empty();
}

// All traces come then, and are filtered here.
void LiveSource::TellOfSource() {
  const SourceFilterState state = m_connection->GetSourceFilter();
  const bool isRefused = state.kind == SourceFilterState::Kind::Refused;
  if (m_toldOfSource || (!isRefused && state.kind != SourceFilterState::Kind::Unknown)) return;
  m_toldOfSource = true;
  PrintError(
      "--at-source: all traces come: " +
      (isRefused ? VisibleText(state.why) : "the service is of a version that cannot filter them"));
}

// All that have arrived. False: `take` ends it.
bool LiveSource::PassOn(LiveChoice& choice, const TraceTaker& take) {
  while (!choice.IsFull() && m_connection->HasTraces()) {
    TraceEvent_i* const trace = m_connection->NextTrace();
    if (trace->GetSequenceNumber() != kNoSequenceNumber) ++m_handled;
    if (!choice.Add(trace, take)) return false;
  }
  return true;
}

void LiveSource::Run(const LiveLimits& limits, const TraceTaker& take,
                     const std::function<bool()>& pause) {
  const Clock::time_point until = EndOf(limits);
  LiveChoice choice(limits.traces, m_names);
  bool last = false, isTaken = true;
  while (!last && !choice.IsFull()) {
    last = Interrupted() || Clock::now() >= until;
    isTaken = PassOn(choice, take);
    if (isTaken) TellOfSource();
    if (!isTaken || !pause() || last) break;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
    m_connection->AwaitTraces(static_cast<int>(std::clamp(left, kNone, kPause).count()));
  }
  m_isFull = choice.IsFull();
  // A reader who went away does not ask.
  if (!isTaken && !Interrupted()) return;
  for (const std::string& missing : choice.Missing()) PrintError(missing);
}

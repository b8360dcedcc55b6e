#include "live/live_source.h"

#include <algorithm>

#include "filter/live_filter.h"
#include "live/silence.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "text/visible_text.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPause{1000}, kNone{0};  // without traces

}  // namespace

LiveSource::~LiveSource() {
  if (m_connection) m_connection->Disconnect();
}

bool LiveSource::Connect(const std::string& machine, const LiveLimits& limits) {
  std::string why;
  m_connection = TraceThread_i::ConnectToTraceService(machine, m_names, &why);
  if (m_connection && !limits.filter.Account().empty()) why = WhyNoAccounts(machine);
  if (!why.empty()) PrintError(why);
  return m_connection != nullptr && why.empty();
}

void LiveSource::Run(const LiveLimits& limits, const std::function<bool(TraceEvent_i*)>& take,
                     const std::function<bool()>& pause) {
  // A time too far in the future counts as none.
  constexpr std::uint64_t kYear = 365 * 24 * 3600;
  const bool timed = limits.seconds.has_value() && *limits.seconds < kYear;
  const Clock::time_point until =
      Clock::now() + std::chrono::seconds(timed ? *limits.seconds : kYear);
  std::uint64_t taken = 0;
  LiveFilter filter(limits.filter, m_names);
  while (taken < limits.count) {
    const bool last = Interrupted() || (timed && Clock::now() >= until);
    while (taken < limits.count && m_connection->HasTraces()) {
      TraceEvent_i* const trace = m_connection->NextTrace();
      if (!filter.Passes(*trace)) {
        ReleaseTrace(trace);
        continue;
      }
      if (!take(trace)) return;
      ++taken;
    }
    if (!pause() || last) break;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
    m_connection->AwaitTraces(static_cast<int>(std::clamp(left, kNone, kPause).count()));
  }
  for (const std::string& path : filter.Missing())
    PrintError("no name came for the path \"" + path + "\"");
  if (!limits.filter.Account().empty() && !filter.AccountCame())
    PrintError("no trace came of the account \"" + VisibleText(limits.filter.Account()) + "\"");
}

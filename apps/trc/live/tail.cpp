// trc tail: live traces, one a line.
#include <algorithm>

#include "commands/trace_lines.h"
#include "live/live_source.h"
#include "live/silence.h"
#include "quor/address/relay_address.h"
#include "terminal/exit_status.h"

namespace {

// After a second without a trace prints the reason, once. Traces of other accounts are none.
class Silence {
 public:
  Silence(const LiveSource& source, const TailOptions& options)
      : m_source(source), m_options(options) {}
  void Look(bool hasPrinted) {
    if (m_over || Clock::now() < m_until) return;
    m_over = true;
    const std::string& account = m_options.limits.traces.filter.Account();
    const TraceThread_i::Counts counts = m_source.Counts();
    if (account.empty() ? counts.delivered + counts.withheld > 0 : hasPrinted) return;
    PrintError("no traces come: " + (m_source.IsUp() ? WhyNothingComes(m_options.machine, account)
                                     : IsRelayAddress(m_options.machine)
                                         ? "quor-bridge has ended and is started again"
                                         : "no trace service runs there any more"));
  }

 private:
  using Clock = std::chrono::steady_clock;
  const LiveSource& m_source;
  const TailOptions& m_options;
  const Clock::time_point m_until = Clock::now() + std::chrono::seconds(1);
  bool m_over = false;
};

// What became of the traces, on standard error. `unprinted` were chosen, and could not be written.
// Gives the exit status.
int Tell(const TailOptions& options, const LiveSource& source, std::uint64_t unprinted) {
  const TraceThread_i::Counts counts = source.Counts();
  unprinted += source.Waiting(counts);
  const std::string notPrinted =
      unprinted > 0 ? ", " + std::to_string(unprinted) + " not printed" : std::string();
  if (!options.limits.atSource.empty())
    PrintError(std::to_string(counts.delivered - unprinted) + " delivered, " +
               std::to_string(counts.withheld) + " withheld, " + std::to_string(counts.lost) +
               " lost" + notPrinted);
  else if (counts.lost > 0)
    PrintError(std::to_string(counts.lost) + " traces lost");
  if (const std::string repeated = RepeatedText(counts); !repeated.empty()) PrintError(repeated);
  // SIGINT is the usual end, not a failure.
  return counts.lost > 0 ? kExitNo : kExitGood;
}

}  // namespace

int RunTail(const TailOptions& options) {
  LiveSource source;
  if (!source.Connect(options.machine, options.limits)) return kExitBad;
  Output output;
  const std::unique_ptr<TraceLines> lines =
      MakeTraceLines({options.format, options.coloured, options.colours}, options.limits.traces,
                     source.Names(), output);
  Silence silence(source, options);
  TraceEvent_i* previous = nullptr;
  std::uint64_t numbered = 0;
  source.Run(
      options.limits,
      [&](const TakenTrace& taken) {
        if (taken.trace->GetSequenceNumber() != kNoSequenceNumber) ++numbered;
        const bool goesOn = lines->Add(taken, previous);
        ReleaseTrace(std::exchange(previous, taken.trace));
        return goesOn;
      },
      [&] {
        silence.Look(previous != nullptr);
        return output.Flush();
      });
  ReleaseTrace(previous);
  const int status = output.Finish();
  if (status == kExitBad) return status;
  return Tell(options, source, std::min(numbered, output.LinesLost()));
}

#include "find.h"

#include <unistd.h>

#include "exit_status.h"
#include "interrupt.h"
#include "trace_file.h"
#include "tree/find/searched_text.h"
#include "tree/regex/regex.h"

namespace {

constexpr std::uint64_t kStepsPerLook = 100000;  // of the matcher, in one text

// A pattern may keep one text busy for long: SIGINT is heard in the middle of it.
bool Matches(std::string_view text) {
  RegexAnswer answer = RegexBeginText(text, kStepsPerLook);
  while (answer == RegexAnswer::Unfinished && !Interrupted())
    answer = RegexResumeText(text, kStepsPerLook);
  return answer == RegexAnswer::Yes;
}

// Leaves the traces that match. False when interrupted.
bool KeepMatches(ShownTraces& traces, ProgressLine& progress) {
  const std::size_t all = traces.Size();
  std::size_t done = 0;
  std::string text;
  traces.Keep([&](const TraceEvent_i& trace) {
    if (done % kTracesPerLook == 0) progress.Show("Searching...", done, all);
    ++done;
    if (Interrupted()) return false;
    return Matches(SearchedText(trace, text));
  });
  return !Interrupted();
}

void Write(const ShownTraces& traces, const FindOptions& options, Output& output,
           ProgressLine& progress) {
  const DumpRange range{traces, 0, traces.Size()};
  if (options.countOnly) {
    output.Line(std::to_string(traces.Size()));
  } else if (options.output.format == DumpFormat::Jsonl) {
    DumpAsJsonl(range, output, progress);
  } else if (traces.Size() > 0) {
    DumpAsText(range, options.output, output, progress);
  }
}

}  // namespace

int RunFind(const FindOptions& options) {
  if (!RegexPrepare(options.pattern.c_str(), options.ignoreCase, !options.expression,
                    options.wordSearch, 0)) {
    Complain("Illegal search pattern.");
    return kExitBad;
  }
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.output.file);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;

  ShownTraces traces(*document);
  if (!traces.Filter(options.output.filter)) return kExitBad;
  if (!KeepMatches(traces, host.Progress())) {
    host.Progress().Clear();
    return kExitInterrupted;
  }
  if (isatty(STDOUT_FILENO) != 0) host.Progress().Silence();
  Output output;
  Write(traces, options, output, host.Progress());
  host.Progress().Clear();
  const int status = output.Finish();
  return StatusWithDamage(*document, status == kExitGood && traces.Size() == 0 ? kExitNo : status);
}

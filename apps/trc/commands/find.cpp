#include "commands/find.h"

#include <unistd.h>

#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/trace_file.h"
#include "tree/find/searched_text.h"
#include "tree/regex/regex.h"

namespace {

constexpr std::uint64_t kStepsPerLook = 100000;  // of the matcher, in one text

// A pattern may take long for one text. SIGINT ends it in the middle, and earlier results are
// written without waiting for it.
bool Matches(std::string_view text, Output& output) {
  RegexAnswer answer = RegexBeginText(text, kStepsPerLook);
  while (answer == RegexAnswer::Unfinished && output.FlushWhenOld() && !Interrupted())
    answer = RegexResumeText(text, kStepsPerLook);
  return answer == RegexAnswer::Yes;
}

void Write(ShownTraces& traces, const FindOptions& options, Output& output,
           ProgressLine& progress) {
  const DumpRange range{traces, 0, traces.All()};
  if (options.countOnly) {
    const std::size_t count = traces.Count();
    if (!Interrupted()) output.Line(std::to_string(count));
    return;
  }
  if (!traces.Has(0)) return;
  if (isatty(STDOUT_FILENO) != 0) progress.Silence();
  if (options.output.format == DumpFormat::Jsonl) {
    DumpAsJsonl(range, output, progress);
  } else {
    DumpAsText(range, options.output, output, progress);
  }
}

}  // namespace

int RunFind(const FindOptions& options) {
  if (!RegexPrepare(options.pattern.c_str(), options.ignoreCase, !options.expression,
                    options.wordSearch, 0)) {
    PrintError("Illegal search pattern.");
    return kExitBad;
  }
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.output.file);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;

  ShownTraces traces(*document);
  if (!traces.Filter(options.output.filter)) return kExitBad;
  Output output;
  traces.Keep([&output, text = std::string()](const TraceEvent_i& trace) mutable {
    return Matches(SearchedText(trace, text), output);
  });
  traces.OnLook([&](std::size_t place) {
    host.Progress().Show("Searching...", place, traces.All());
    return output.FlushWhenOld() && !Interrupted();
  });
  Write(traces, options, output, host.Progress());
  host.Progress().Clear();
  const int status = output.Finish();
  return StatusOfAnswer(*document, options.output.file,
                        status == kExitGood && !traces.Has(0) ? kExitNo : status);
}

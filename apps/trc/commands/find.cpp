#include "commands/find.h"

#include <unistd.h>

#include "commands/follow.h"
#include "filter/perl_pattern.h"
#include "input/trace_input.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "tree/find/searched_text.h"
#include "tree/regex/regex.h"

namespace {

constexpr std::uint64_t kStepsPerLook = 100000;  // of the matcher, in one text

// What PATTERN means.
class Pattern {
 public:
  // False after a message on standard error.
  bool Prepare(const FindOptions& options) {
    m_invert = options.invert;
    if (!options.perl) {
      const int prepared = RegexPrepare(options.pattern.c_str(), options.ignoreCase,
                                        !options.expression, options.wordSearch, 0);
      if (prepared == 0) PrintError("Illegal search pattern.");
      return prepared != 0;
    }
    std::string why;
    m_perl = PerlPattern::Make(options.pattern, {options.ignoreCase, options.wordSearch}, &why);
    if (!m_perl) PrintError(why);
    return m_perl != nullptr;
  }
  bool Matches(std::string_view text, Output& output) {
    return (m_perl ? m_perl->OccursIn(text) : Occurs(text, output)) != m_invert;
  }
  std::uint64_t GivenUp() const { return m_perl ? m_perl->GivenUp() : 0; }

 private:
  // A pattern may take long for one text. SIGINT ends it in the middle, and earlier results are
  // written without waiting for it.
  static bool Occurs(std::string_view text, Output& output) {
    RegexAnswer answer = RegexBeginText(text, kStepsPerLook);
    while (answer == RegexAnswer::Unfinished && output.FlushWhenOld() && !Interrupted())
      answer = RegexResumeText(text, kStepsPerLook);
    return answer == RegexAnswer::Yes;
  }

  std::unique_ptr<PerlPattern> m_perl;
  bool m_invert = false;
};

// Did any match?
bool Write(ShownTraces& traces, const FindOptions& options, Output& output,
           ProgressLine& progress) {
  const DumpRange range{traces, traces.Limit(options.output.traces)};
  if (options.totalOnly) {
    const std::size_t count = traces.Count();
    if (!Interrupted()) output.Line(std::to_string(count));
    return count > 0;
  }
  if (!traces.Has(range.from)) return false;
  if (isatty(STDOUT_FILENO) != 0) progress.Silence();
  if (options.output.format == DumpFormat::Jsonl) {
    DumpAsJsonl(range, options.output.traces.utc, output, progress);
  } else {
    DumpAsText(range, options.output, output, progress);
  }
  return true;
}

int StatusOf(int status, bool any, std::uint64_t givenUp) {
  if (givenUp > 0) {
    PrintError(std::to_string(givenUp) + " texts would take too long to search, and are left out");
    return status == kExitGood ? kExitDamaged : status;
  }
  return status == kExitGood && !any ? kExitNo : status;
}

int Follow(Pattern& pattern, const DumpOptions& options) {
  const auto matches = [&, text = std::string()](const TraceEvent_i& trace,
                                                 Output& output) mutable {
    return pattern.Matches(SearchedText(trace, text), output);
  };
  return StatusOf(RunFollow(options, matches), true, pattern.GivenUp());
}

}  // namespace

int RunFind(const FindOptions& options) {
  Pattern pattern;
  if (!pattern.Prepare(options)) return kExitBad;
  if (options.output.traces.follow) return Follow(pattern, options.output);
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.output.files)) return StatusWithoutInput();

  ShownTraces traces(input.Document());
  if (!traces.Filter(options.output.traces)) return kExitBad;
  Output output;
  traces.Keep([&, text = std::string()](const TraceEvent_i& trace) mutable {
    return pattern.Matches(SearchedText(trace, text), output);
  });
  traces.OnLook([&](std::size_t place) {
    host.Progress().Show("Searching...", place, traces.All());
    return output.FlushWhenOld() && !Interrupted();
  });
  const bool any = Write(traces, options, output, host.Progress());
  host.Progress().Clear();
  return input.StatusOfAnswer(StatusOf(output.Finish(), any, pattern.GivenUp()));
}

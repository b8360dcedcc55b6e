#include "commands/find.h"

#include <unistd.h>

#include "commands/follow.h"
#include "commands/notes.h"
#include "filter/perl_pattern.h"
#include "input/trace_input.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "tree/find/scan/load_scan.h"
#include "tree/find/scan/text_scan.h"
#include "tree/find/searched_text.h"
#include "tree/regex/regex.h"

namespace {

constexpr std::uint64_t kStepsPerLook = 100000;  // of the matcher, in one text

// A compiled pattern has 1,024 bytes: 2 for a character, 17 for a letter of any case.
std::string WhyIllegal(const FindOptions& options) {
  try {
    RegexProgram::Compile(options.pattern.c_str(), {.ignoreCase = options.ignoreCase,
                                                    .literal = !options.expression,
                                                    .wordSearch = options.wordSearch});
  } catch (const std::string& error) {
    if (error.ends_with(" " + std::to_string(kRegexTooLong)))
      return "Illegal search pattern: it is too long (at most 511 characters, with --ignore-case "
             "60 letters); --perl-regex takes longer ones";
  }
  return "Illegal search pattern.";
}

// What PATTERN means.
class Pattern {
 public:
  // False after a message on standard error.
  bool Prepare(const FindOptions& options) {
    m_invert = options.invert;
    if (!options.perl) {
      const int prepared = RegexPrepare(options.pattern.c_str(), options.ignoreCase,
                                        !options.expression, options.wordSearch, 0);
      if (prepared == 0) PrintError(WhyIllegal(options));
      return prepared != 0;
    }
    std::string why;
    m_perl = PerlPattern::Make(options.pattern, {options.ignoreCase, options.wordSearch}, &why);
    if (!m_perl) PrintError(why);
    return m_perl != nullptr;
  }
  // What the scan of a file looks for; null: it cannot tell.
  const RegexProgram* Program() const { return m_perl || m_invert ? nullptr : RegexLastProgram(); }
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

// The traces of a file that may match, found by all processors.
class Candidates {
 public:
  // From this trace on. Nothing: each has to be tested.
  ShownTraces::NextCandidate From(const ScanOrder& order, CTraceDoc& document,
                                  const RegexProgram& program) {
    if (m_loaded) return Known(order, document);
    m_traces = &document.m_traces;
    m_next = order.start;
    m_step = order.backward ? ~std::size_t{0} : 1;
    m_failed = false;
    m_scan = TextScan::Begin(document.Lend(), program, order);
    if (!m_scan) return {};
    return [this] { return Next(); };
  }
  // Those that the load of the file has found, all of them.
  void Know(std::shared_ptr<const LoadScan> scan) { m_loaded = std::move(scan); }
  // The trace is the last one that was found, and matches.
  bool IsSure(const TraceEvent_i& trace) const { return &trace == m_sure; }

 private:
  static constexpr std::chrono::milliseconds kWait{20};

  std::optional<std::size_t> Next() {
    m_sure = nullptr;
    switch (m_failed ? TextScan::State::Failed : m_scan->Next(kWait)) {
      case TextScan::State::NotYet:
        return std::nullopt;
      case TextScan::State::Over:
        return m_traces->size();
      case TextScan::State::Failed:
        m_failed = true;  // all that are left are candidates
        return Left();
      case TextScan::State::Found:
        break;
    }
    m_next = m_scan->Place() + m_step;
    if (m_scan->IsSure()) m_sure = (*m_traces)[m_scan->Place()];
    return m_scan->Place();
  }

  ShownTraces::NextCandidate Known(const ScanOrder& order, CTraceDoc& document) {
    return [this, &document, walk = LoadScan::Walk(*m_loaded, order)]() mutable {
      const ScanHit* const hit = walk.Next();
      const std::size_t place = hit ? hit->Place() : document.m_traces.size();
      m_sure = hit && hit->IsSure() ? document.m_traces[place] : nullptr;
      return std::optional<std::size_t>(place);
    };
  }

  // Behind the last one, in either direction: none.
  std::size_t Left() {
    const std::size_t place = std::min(m_next, m_traces->size());
    m_next = place + m_step;
    return place;
  }

  std::shared_ptr<const LoadScan> m_loaded;  // null: not searched by the load
  const TraceList_t* m_traces = nullptr;
  std::unique_ptr<TextScan> m_scan;
  std::size_t m_next = 0;
  std::size_t m_step = 1;  // or -1: numbers wrap
  bool m_failed = false;
  const TraceEvent_i* m_sure = nullptr;
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

// The search of the load. Null where the first results are there earlier without it: where not all
// are wanted, and where a test may take long.
std::shared_ptr<LoadScan> ScanOfLoad(const RegexProgram* program, const FindOptions& options) {
  const TraceOptions& traces = options.output.traces;
  const bool helps = program && !options.expression && options.output.files.size() == 1 &&
                     !traces.where && traces.count == TraceOptions::kAll;
  return helps ? std::make_shared<LoadScan>(*program) : nullptr;
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
  const RegexProgram* const program = pattern.Program();
  const std::shared_ptr<LoadScan> scan = ScanOfLoad(program, options);
  if (!input.Open(options.output.files, scan)) return StatusWithoutInput();

  ShownTraces traces(input.Document());
  if (!UseNotes(input, options.output.traces, traces) || !traces.Filter(options.output.traces))
    return kExitBad;
  Output output;
  Candidates candidates;
  candidates.Know(scan);
  traces.Keep([&, text = std::string()](const TraceEvent_i& trace) mutable {
    return candidates.IsSure(trace) || pattern.Matches(SearchedText(trace, text), output);
  });
  // A filter text counts the searches that it gives up, in each trace that is left.
  if (program && !options.output.traces.where) {
    traces.PassOver([&](std::size_t from, bool backward) {
      return candidates.From({.start = from, .backward = backward}, input.Document(), *program);
    });
  }
  traces.OnLook([&](std::size_t place) {
    host.Progress().Show("Searching...", place, traces.All());
    return output.FlushWhenOld() && !Interrupted();
  });
  const bool any = Write(traces, options, output, host.Progress());
  host.Progress().Clear();
  return input.StatusOfAnswer(StatusOf(output.Finish(), any, pattern.GivenUp()));
}

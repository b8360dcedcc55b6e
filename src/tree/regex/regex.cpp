#include "tree/regex/regex.h"

#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <utility>

RegexState_t RegexState = {};

namespace {

constexpr std::int64_t kAllSteps = std::numeric_limits<std::int64_t>::max();

// The pattern last prepared; none before the first, when nothing matches.
struct Prepared {
  explicit Prepared(RegexProgram last) : program(std::move(last)), plan(program) {}
  RegexProgram program;
  RegexPlan plan;
};
std::optional<Prepared> g_last;
RegexMatcher g_matcher;

// A program outside RegexState is at most this long.
const unsigned char* EndOf(const unsigned char* code) {
  const unsigned char* const end = std::end(RegexState.program);
  const bool own = !std::less<>()(code, RegexState.program) && std::less<>()(code, end);
  return own ? end : code + sizeof RegexState.program;
}

void ShowRange(const RegexMachine& machine) {
  RegexState.rangeLow = machine.RangeLow();
  RegexState.rangeExtra = machine.RangeExtra();
}

void ShowCaptures(const RegexMachine& machine, const char* begin) {
  const auto position = [begin](std::size_t at) {
    return at == RegexMachine::kUnset ? nullptr : begin + at;
  };
  for (int group = 0; group < kRegexGroups; ++group) {
    RegexState.groupStart[group] = position(machine.GroupStart(group));
    RegexState.groupEnd[group] = position(machine.GroupEnd(group));
  }
}

RegexAnswer Shown(RegexAnswer answer, const char* begin) {
  if (answer != RegexAnswer::Yes) return answer;
  const RegexNodes& nodes = g_last->plan.Nodes();
  if (nodes.HasRanges()) ShowRange(g_matcher.Machine());
  RegexState.matchStart = begin + g_matcher.MatchStart();
  RegexState.matchEnd = begin + g_matcher.MatchEnd();
  if (nodes.HasGroups()) ShowCaptures(g_matcher.Machine(), begin);
  return answer;
}

void ShowCounts(const RegexCounts& counts) {
  RegexState.groupCount = counts.groupCount;
  RegexState.closedGroups = counts.closedGroups;
  RegexState.anchored = counts.anchored;
}

// Attempts at any positions of one text with one program.
class Attempts {
 public:
  Attempts(const char* begin, const char* end, const unsigned char* code)
      : m_begin(begin),
        m_text(begin, static_cast<std::size_t>(end - begin)),
        m_nodes(code, EndOf(code), RegexState.acrossLines != 0),
        m_machine(std::make_unique<RegexMachine>()) {}

  bool MatchHere(const char* at, bool wordFlag) {
    std::int64_t steps = kAllSteps;
    const auto place = static_cast<std::size_t>(at - m_begin);
    const bool hit = m_machine->Begin(m_nodes, m_text, place, wordFlag, steps) == RegexRun::Hit;
    if (m_nodes.HasRanges()) ShowRange(*m_machine);
    ShowCaptures(*m_machine, m_begin);
    if (hit) RegexState.matchEnd = m_begin + m_machine->MatchEnd();
    return hit;
  }

 private:
  const char* m_begin;
  std::string_view m_text;
  RegexNodes m_nodes;
  std::unique_ptr<RegexMachine> m_machine;
};

}  // namespace

unsigned char* RegexCompile(const char* pattern, unsigned char* buffer, unsigned char* bufferEnd,
                            int delimiter, int literal, int ignoreCase) {
  RegexCounts counts;
  try {
    const RegexSource source{pattern, delimiter, literal != 0, ignoreCase != 0,
                             RegexState.wordSearch != 0};
    unsigned char* const end = CompileRegex(source, buffer, bufferEnd, counts);
    ShowCounts(counts);
    return end;
  } catch (...) {
    ShowCounts(counts);
    throw;
  }
}

int RegexPrepare(const char* pattern, int ignoreCase, int literal, int wordSearch,
                 int acrossLines) {
  RegexState.wordSearch = wordSearch;
  RegexState.acrossLines = acrossLines;
  int compiled = 0;
  try {
    RegexCompile(pattern, RegexState.program, RegexState.program + kRegexProgramBytes, 0, literal,
                 ignoreCase);
    compiled = 1;
  } catch (...) {
    // The caller shows the message; the part that was compiled stays.
  }
  const RegexOptions options{ignoreCase != 0, literal != 0, wordSearch != 0, acrossLines != 0};
  g_last.emplace(RegexProgram({std::begin(RegexState.program), std::end(RegexState.program)},
                              options, RegexState.anchored != 0));
  g_matcher.Stop();
  return compiled;
}

const RegexProgram* RegexLastProgram() {
  return g_last ? &g_last->program : nullptr;
}

int RegexMatchText(std::string_view text) {
  return RegexBeginText(text, kAllSteps) == RegexAnswer::Yes;
}

RegexAnswer RegexBeginText(std::string_view text, std::uint64_t steps) {
  if (!g_last) return RegexAnswer::No;
  return Shown(g_matcher.Begin(g_last->plan, text, static_cast<std::int64_t>(steps)), text.data());
}

RegexAnswer RegexResumeText(std::string_view text, std::uint64_t steps) {
  if (!g_last) return RegexAnswer::No;
  return Shown(g_matcher.Resume(g_last->plan, text, static_cast<std::int64_t>(steps)), text.data());
}

int RegexFindIn(const char* from, const char* begin, const char* end, const char** matchFrom,
                const char** matchTo) {
  const int found = RegexSearch(from, begin, end, RegexState.program);
  if (found) {
    *matchFrom = RegexState.matchStart;
    *matchTo = RegexState.matchEnd;
  }
  return found;
}

int RegexSearch(const char* from, const char* begin, const char* end,
                const unsigned char* program) {
  Attempts attempts(begin, end, program);
  if (RegexState.anchored) {
    RegexState.matchStart = from;
    return attempts.MatchHere(from, false);
  }
  const bool startsWithByte = program[0] == RX_CHAR;
  const char first = static_cast<char>(program[1]);
  for (const char* at = from;; ++at) {
    const bool worth = !startsWithByte || at == end || *at == first;
    if (worth && attempts.MatchHere(at, RegexState.wordSearch != 0)) {
      RegexState.matchStart = at;
      return 1;
    }
    if (at == end) return 0;
  }
}

int RegexMatchHere(const char* at, const char* begin, const char* end, const unsigned char* code,
                   int wordFlag) {
  return Attempts(begin, end, code).MatchHere(at, wordFlag != 0);
}

#include "tree/regex/regex.h"

#include <functional>
#include <limits>
#include <memory>

#include "tree/regex/regex_machine.h"
#include "tree/regex/regex_plan.h"

RegexState_t RegexState = {};

namespace {

constexpr std::int64_t kAllSteps = std::numeric_limits<std::int64_t>::max();

// The plan of the pattern prepared last; null before the first one, when nothing matches.
std::unique_ptr<RegexPlan> g_plan;
unsigned g_prepared = 0;

// A program outside RegexState is at most this long.
const unsigned char* EndOf(const unsigned char* code) {
  const unsigned char* const end = std::end(RegexState.program);
  const bool own = !std::less<>()(code, RegexState.program) && std::less<>()(code, end);
  return own ? end : code + sizeof RegexState.program;
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

RegexAnswer Shown(RegexAnswer answer, const RegexPlan& plan, const char* begin) {
  if (answer != RegexAnswer::Yes) return answer;
  RegexState.matchStart = begin + plan.MatchStart();
  RegexState.matchEnd = begin + plan.MatchEnd();
  if (plan.Nodes().HasGroups()) ShowCaptures(plan.Machine(), begin);
  return answer;
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
  g_plan = std::make_unique<RegexPlan>();
  ++g_prepared;
  return compiled;
}

unsigned RegexPrepared() {
  return g_prepared;
}

int RegexMatchText(std::string_view text) {
  return RegexBeginText(text, kAllSteps) == RegexAnswer::Yes;
}

RegexAnswer RegexBeginText(std::string_view text, std::uint64_t steps) {
  if (!g_plan) return RegexAnswer::No;
  return Shown(g_plan->Begin(text, static_cast<std::int64_t>(steps)), *g_plan, text.data());
}

RegexAnswer RegexResumeText(std::string_view text, std::uint64_t steps) {
  if (!g_plan) return RegexAnswer::No;
  return Shown(g_plan->Resume(text, static_cast<std::int64_t>(steps)), *g_plan, text.data());
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

// Any pattern on any text: the fast matcher and the slow, simple one must agree.
//
// Shape    One byte of flags, the pattern up to its first zero, the text.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "support/regex_oracle.h"
#include "tree/regex/regex.h"

namespace {

constexpr unsigned kIgnoreCase = 1, kLiteral = 2, kWord = 4, kAcrossLines = 8, kRawProgram = 16;
constexpr std::uint64_t kBudget = 200000;

// The pattern's bytes as the program itself.
void UseAsProgram(const std::string& bytes) {
  const std::size_t count = std::min(bytes.size(), kRegexProgramBytes);
  std::copy_n(bytes.begin(), count, RegexState.program);
  RegexState.program[count] = RX_END;
}

bool Same(bool found, const std::optional<RegexOracle::Match>& wanted, const char* begin) {
  if (found != wanted.has_value()) return false;
  return !found || (RegexState.matchStart == begin + wanted->start &&
                    RegexState.matchEnd == begin + wanted->end);
}

// Tried position by position.
void PlaySearch(const std::string& text) {
  RegexOracle oracle(text, kBudget);
  const auto wanted = oracle.Search(0);
  if (oracle.GaveUp()) return;
  const char *const begin = text.data(), *from = nullptr, *to = nullptr;
  const bool found = RegexFindIn(begin, begin, begin + text.size(), &from, &to) != 0;
  if (!Same(found, wanted, begin)) std::abort();
}

// With the plan, in small parts.
void PlayText(const std::string& text) {
  RegexOracle oracle(text, kBudget);
  const auto wanted = oracle.SearchText();
  if (oracle.GaveUp()) return;
  RegexAnswer answer = RegexBeginText(text, 10);
  while (answer == RegexAnswer::Unfinished) answer = RegexResumeText(text, 10);
  if (!Same(answer == RegexAnswer::Yes, wanted, text.data())) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
  const unsigned flags = data[0];
  const std::size_t zero = std::min(input.find('\0'), input.size());
  const std::string pattern = input.substr(0, zero);
  const std::string text = input.substr(std::min(zero + 1, input.size()));
  RegexPrepare(pattern.c_str(), flags & kIgnoreCase, flags & kLiteral, flags & kWord,
               flags & kAcrossLines);
  if (flags & kRawProgram) {
    RegexState.anchored = 0;
    UseAsProgram(pattern);
  } else {
    PlayText(text);
  }
  PlaySearch(text);
  return 0;
}

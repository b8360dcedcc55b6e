#define PCRE2_CODE_UNIT_WIDTH 8
#include "filter/perl_pattern.h"

#include <pcre2.h>

#include "base/fail_with.h"

namespace {

// Compiled expressions need a stack that grows with the text.
constexpr std::size_t kStackBytes = std::size_t{64} << 10, kStackBytesMax = std::size_t{64} << 20;

std::string Reason(int error) {
  unsigned char words[256];
  pcre2_get_error_message(error, words, sizeof words);
  return reinterpret_cast<const char*>(words);
}

}  // namespace

struct PerlPattern::Compiled {
  pcre2_code* code = nullptr;
  pcre2_match_data* match = nullptr;
  pcre2_match_context* context = nullptr;
  pcre2_jit_stack* stack = nullptr;

  ~Compiled() {
    pcre2_jit_stack_free(stack);
    pcre2_match_context_free(context);
    pcre2_match_data_free(match);
    pcre2_code_free(code);
  }
};

PerlPattern::PerlPattern() : m_compiled(std::make_unique<Compiled>()) {}
PerlPattern::~PerlPattern() = default;

std::unique_ptr<PerlPattern> PerlPattern::Make(const std::string& expression, Way way,
                                               std::string* why) {
  std::unique_ptr<PerlPattern> made(new PerlPattern);
  Compiled& compiled = *made->m_compiled;
  pcre2_compile_context* const rules = pcre2_compile_context_create(nullptr);
  if (way.words) pcre2_set_compile_extra_options(rules, PCRE2_EXTRA_MATCH_WORD);
  const std::uint32_t options = PCRE2_UTF | PCRE2_MATCH_INVALID_UTF | PCRE2_NEVER_BACKSLASH_C |
                                (way.ignoreCase ? PCRE2_CASELESS : 0);
  int error = 0;
  PCRE2_SIZE at = 0;
  compiled.code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()), expression.size(),
                                options, &error, &at, rules);
  pcre2_compile_context_free(rules);
  if (!compiled.code)
    return FailWith(
        why, "wrong expression: " + Reason(error) + " (at byte " + std::to_string(at + 1) + ")",
        nullptr);
  pcre2_jit_compile(compiled.code, PCRE2_JIT_COMPLETE);  // without it the match is slower
  compiled.match = pcre2_match_data_create_from_pattern(compiled.code, nullptr);
  compiled.context = pcre2_match_context_create(nullptr);
  pcre2_set_match_limit(compiled.context, kStepsMax);
  compiled.stack = pcre2_jit_stack_create(kStackBytes, kStackBytesMax, nullptr);
  pcre2_jit_stack_assign(compiled.context, nullptr, compiled.stack);
  return made;
}

bool PerlPattern::OccursIn(std::string_view text) {
  const int found = pcre2_match(m_compiled->code, reinterpret_cast<PCRE2_SPTR>(text.data()),
                                text.size(), 0, 0, m_compiled->match, m_compiled->context);
  if (found < 0 && found != PCRE2_ERROR_NOMATCH) ++m_givenUp;
  return found >= 0;
}

#define PCRE2_CODE_UNIT_WIDTH 8
#include "where/where_regex.h"

#include <pcre2.h>

#include <cstring>

#include "base/text.h"

namespace {

// Enough for any text that is meant: an expression that tries all ways ends within milliseconds.
constexpr std::uint32_t kStepsMax = 250'000;
constexpr std::uint32_t kHeapKiBMax = 16 << 10;
constexpr std::size_t kStackBytes = std::size_t{64} << 10, kStackBytesMax = std::size_t{8} << 20;
// \C may end inside of a character, and the fast matcher does not know it.
constexpr std::uint32_t kOptions = PCRE2_NEVER_BACKSLASH_C;

PCRE2_SPTR BytesOf(std::string_view text) {
  return reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data());
}

bool IsAscii(std::string_view text) {
  std::uint64_t bits = 0, word = 0;
  const char* at = text.data();
  std::size_t left = text.size();
  for (; left >= sizeof word; left -= sizeof word, at += sizeof word) {
    std::memcpy(&word, at, sizeof word);
    bits |= word;
  }
  for (; left > 0; --left, ++at) bits |= static_cast<unsigned char>(*at);
  return (bits & 0x8080808080808080U) == 0;
}

std::string Reason(int error) {
  unsigned char words[256];
  pcre2_get_error_message(error, words, sizeof words);
  return reinterpret_cast<const char*>(words);
}

}  // namespace

struct WhereRegex::Code {
  explicit Code(pcre2_code* compiled) : code(compiled) {
    isFast = pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) == 0;
    std::size_t bytes = 0;
    // "(*NO_JIT)" is compiled, but for the slow matcher only.
    pcre2_pattern_info(code, PCRE2_INFO_JITSIZE, &bytes);
    isFast = isFast && bytes > 0;
  }
  ~Code() { pcre2_code_free(code); }
  Code(const Code&) = delete;
  Code& operator=(const Code&) = delete;

  // Null: it is no expression with these options.
  static std::unique_ptr<Code> Make(std::string_view expression, std::uint32_t options, int& error,
                                    std::size_t& place) {
    pcre2_code* const compiled = pcre2_compile(BytesOf(expression), expression.size(),
                                               kOptions | options, &error, &place, nullptr);
    return compiled ? std::make_unique<Code>(compiled) : nullptr;
  }

  pcre2_code* code;
  bool isFast = false;
};

WhereRegex::WhereRegex() = default;
WhereRegex::~WhereRegex() = default;

std::shared_ptr<const WhereRegex> WhereRegex::Compile(std::string_view expression,
                                                      std::size_t& place, std::string& why) {
  std::shared_ptr<WhereRegex> made(new WhereRegex);
  int error = 0, otherError = 0;
  std::size_t otherPlace = 0;
  // The beginning "(*UTF)" must not make a code for characters of the one for bytes.
  made->m_bytes = Code::Make(expression, PCRE2_NEVER_UTF, error, place);
  // Alone it must bear malformed texts too.
  const std::uint32_t alone = made->m_bytes ? 0 : PCRE2_MATCH_INVALID_UTF;
  const std::uint32_t characters = PCRE2_UTF | PCRE2_UCP | alone;
  made->m_characters = Code::Make(expression, characters, otherError, otherPlace);
  if (made->m_bytes || made->m_characters) return made;
  // An expression that is no UTF-8 fails for characters at once: its bytes tell more.
  const bool tellsMore = IsUtf8(expression);
  place = tellsMore ? otherPlace : place;
  why = Reason(tellsMore ? otherError : error);
  return nullptr;
}

struct WhereRegexSearch::Memory {
  Memory()
      : match(pcre2_match_data_create(1, nullptr)),
        context(pcre2_match_context_create(nullptr)),
        stack(pcre2_jit_stack_create(kStackBytes, kStackBytesMax, nullptr)) {
    pcre2_set_match_limit(context, kStepsMax);
    pcre2_set_heap_limit(context, kHeapKiBMax);
    pcre2_jit_stack_assign(context, nullptr, stack);
  }
  ~Memory() {
    pcre2_jit_stack_free(stack);
    pcre2_match_context_free(context);
    pcre2_match_data_free(match);
  }
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;

  pcre2_match_data* match;
  pcre2_match_context* context;
  pcre2_jit_stack* stack;
};

WhereRegexSearch::WhereRegexSearch() = default;
WhereRegexSearch::~WhereRegexSearch() = default;

// For ASCII the two codes find the same, and that for bytes is faster.
bool WhereRegexSearch::Finds(const WhereRegex& regex, std::string_view text) {
  if (!regex.m_characters) return FindsIn(*regex.m_bytes, text);
  if (!regex.m_bytes) return FindsIn(*regex.m_characters, text);
  const bool bytes = IsAscii(text) || !IsUtf8(text);
  return FindsIn(bytes ? *regex.m_bytes : *regex.m_characters, text);
}

bool WhereRegexSearch::FindsIn(const WhereRegex::Code& code, std::string_view text) {
  if (!m_memory) m_memory = std::make_unique<Memory>();
  const auto find = code.isFast ? &pcre2_jit_match : &pcre2_match;
  const int found =
      find(code.code, BytesOf(text), text.size(), 0, 0, m_memory->match, m_memory->context);
  if (found >= 0) return true;
  if (found != PCRE2_ERROR_NOMATCH) ++m_limitsReached;
  return false;
}

#define PCRE2_CODE_UNIT_WIDTH 8
#include "where/where_regex.h"

#include <pcre2.h>

#include <algorithm>
#include <chrono>

#include "base/text.h"
#include "base/thread_time.h"
#include "where/plain_regex.h"
#include "where/well_formed.h"

namespace {

// Enough for any text that is meant: an expression that tries all ways ends within milliseconds.
constexpr std::uint32_t kStepsMax = 250'000;
// Nearly all searches need fewer at each place. Where one needs more, the places are searched anew,
// a few at a time, and a text gets so many steps for all of them.
constexpr std::uint32_t kStepsFirst = 2'000, kStepsMore = 25'000;
constexpr std::uint32_t kStepsOfText = 32'000'000;
constexpr std::size_t kPlacesAnew = 8;
constexpr std::uint32_t kHeapKiBMax = 16 << 10;
constexpr std::size_t kStackBytes = std::size_t{64} << 10, kStackBytesMax = std::size_t{8} << 20;
// PCRE2 counts the steps anew at each place where a match may begin. So a long text is searched in
// parts, each of so many places, until the time is over.
constexpr std::size_t kWholeBytesMax = 1024;
constexpr std::size_t kPartFirst = 64, kPartMax = 1024;
constexpr std::uint64_t kPartsNanoseconds = 50'000'000;
// \C may end inside of a character, and the fast matcher does not know it.
constexpr std::uint32_t kOptions = PCRE2_NEVER_BACKSLASH_C;

PCRE2_SPTR BytesOf(std::string_view text) {
  return reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data());
}

// Not those that look at where a search begins, or that end it.
bool MayBeSearchedInParts(std::string_view expression) {
  return expression.find("\\G") == expression.npos && expression.find("(*") == expression.npos;
}

// The time of a long search, without that in which others had the processor.
class SearchTime {
 public:
  bool IsOver() {
    if (m_thread > 0) return ThreadNanoseconds() - m_thread > kPartsNanoseconds;
    const auto passed = std::chrono::steady_clock::now() - m_begun;
    if (passed > std::chrono::nanoseconds(kPartsNanoseconds)) m_thread = ThreadNanoseconds();
    return false;
  }

 private:
  const std::chrono::steady_clock::time_point m_begun = std::chrono::steady_clock::now();
  std::uint64_t m_thread = 0;  // asked for late: it costs more
};

std::string Reason(int error) {
  unsigned char words[256];
  pcre2_get_error_message(error, words, sizeof words);
  return reinterpret_cast<const char*>(words);
}

// The way as the library wants it.
struct Rules {
  explicit Rules(WhereRegexWay way)
      : words(way.words),
        options(way.ignoreCase ? PCRE2_CASELESS : 0),
        context(pcre2_compile_context_create(nullptr)) {
    if (way.words) pcre2_set_compile_extra_options(context, PCRE2_EXTRA_MATCH_WORD);
  }
  ~Rules() { pcre2_compile_context_free(context); }
  Rules(const Rules&) = delete;
  Rules& operator=(const Rules&) = delete;

  const bool words;
  const std::uint32_t options;
  pcre2_compile_context* const context;
};

}  // namespace

struct WhereRegex::Code {
  class Form {
   public:
    Form(std::string_view expression, std::uint32_t options, const Rules& rules, int& error,
         std::size_t& place)
        : m_code(pcre2_compile(BytesOf(expression), expression.size(),
                               kOptions | rules.options | options, &error, &place, rules.context)) {
      if (!m_code || pcre2_jit_compile(m_code, PCRE2_JIT_COMPLETE) != 0) return;
      std::size_t bytes = 0;
      // "(*NO_JIT)" is compiled, but for the slow matcher only.
      pcre2_pattern_info(m_code, PCRE2_INFO_JITSIZE, &bytes);
      m_isFast = bytes > 0;
    }
    ~Form() { pcre2_code_free(m_code); }
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    explicit operator bool() const { return m_code != nullptr; }
    int Match(std::string_view text, std::size_t from, pcre2_match_data* match,
              pcre2_match_context* context) const {
      const auto search = m_isFast ? pcre2_jit_match : pcre2_match;
      return search(m_code, BytesOf(text), text.size(), from, 0, match, context);
    }

   private:
    pcre2_code* const m_code;
    bool m_isFast = false;
  };

  Code(std::string_view expression, std::uint32_t options, const Rules& rules, int& error,
       std::size_t& place)
      : whole(expression, options, rules, error, place), ofCharacters((options & PCRE2_UTF) != 0) {
    int partsError = 0;
    std::size_t partsPlace = 0;
    const bool bearsMalformed = (options & PCRE2_MATCH_INVALID_UTF) != 0;
    // What a whole word is may need more than a part.
    if (whole && !bearsMalformed && !rules.words && MayBeSearchedInParts(expression))
      parts = std::make_unique<Form>(expression, options | PCRE2_USE_OFFSET_LIMIT, rules,
                                     partsError, partsPlace);
  }

  // Null: it is no expression with these options.
  static std::unique_ptr<Code> Make(std::string_view expression, std::uint32_t options,
                                    const Rules& rules, int& error, std::size_t& place) {
    auto made = std::make_unique<Code>(expression, options, rules, error, place);
    return made->whole ? std::move(made) : nullptr;
  }

  const Form whole;
  std::unique_ptr<Form> parts;  // null: parts do not find the same
  const bool ofCharacters;
};

WhereRegex::WhereRegex() = default;
WhereRegex::~WhereRegex() = default;

std::shared_ptr<const WhereRegex> WhereRegex::Compile(std::string_view expression,
                                                      std::size_t& place, std::string& why,
                                                      WhereRegexWay way) {
  std::shared_ptr<WhereRegex> made(new WhereRegex);
  const Rules rules(way);
  int error = 0, otherError = 0;
  std::size_t otherPlace = 0;
  // The beginning "(*UTF)" must not make a code for characters of the one for bytes.
  made->m_bytes = Code::Make(expression, PCRE2_NEVER_UTF, rules, error, place);
  // Alone it must bear malformed texts too.
  const std::uint32_t alone = made->m_bytes ? 0 : PCRE2_MATCH_INVALID_UTF;
  const std::uint32_t characters = PCRE2_UTF | PCRE2_UCP | alone;
  made->m_characters = Code::Make(expression, characters, rules, otherError, otherPlace);
  // Characters that are no ASCII may be letters, and the same letter as an ASCII one.
  made->m_meansTheSame = made->m_bytes && way == WhereRegexWay{} && MeansTheSameByBytes(expression);
  if (made->m_meansTheSame) made->m_beginning = BeginningOf(expression);
  made->m_seesNoEnd = made->m_meansTheSame && SeesNoEnd(expression);
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
    pcre2_set_match_limit(context, kStepsFirst);
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

void WhereRegexSearch::Bound(const WhereBounds& bounds) {
  m_bounds = bounds;
  if (!m_memory) m_memory = std::make_unique<Memory>();
  pcre2_set_match_limit(m_memory->context, bounds.steps);
}

bool WhereRegexSearch::MayBeginBounded(std::string_view text) const {
  return text.size() <= m_bounds->textBytes && ThreadNanoseconds() < m_endNs;
}

// For ASCII the two codes find the same, and that for bytes is faster.
bool WhereRegexSearch::Finds(const WhereRegex& regex, std::string_view text) {
  if (!MayBegin(text)) {
    ++m_limitsReached;
    return false;
  }
  return FindsIn(CodeFor(regex, text), text);
}

const WhereRegex::Code& WhereRegexSearch::CodeFor(const WhereRegex& regex, std::string_view text) {
  if (regex.m_meansTheSame || !regex.m_characters) return *regex.m_bytes;
  if (!regex.m_bytes) return *regex.m_characters;
  const bool bytes = IsAscii(text) || !IsWellFormed(text);
  return bytes ? *regex.m_bytes : *regex.m_characters;
}

// What an expression looks back at may lie before `from`.
std::optional<WhereRegexSearch::Place> WhereRegexSearch::FindPlace(const WhereRegex& regex,
                                                                   std::string_view text,
                                                                   std::size_t from,
                                                                   std::uint64_t steps) {
  if (!m_memory) m_memory = std::make_unique<Memory>();
  if (from > text.size() || MatchWhole(CodeFor(regex, text), text, steps, from) < 0)
    return std::nullopt;
  const PCRE2_SIZE* const ends = pcre2_get_ovector_pointer(m_memory->match);
  // \K may move the beginning behind the end.
  return Place{std::min(ends[0], ends[1]), std::max(ends[0], ends[1])};
}

bool WhereRegexSearch::FindsInField(const WhereRegex& regex, const char* text, std::size_t length) {
  // Most fields have no NUL and no hit, and the search alone tells it.
  if (regex.m_seesNoEnd && length <= kWholeBytesMax && !m_bounds) {
    if (!m_memory) m_memory = std::make_unique<Memory>();
    const int found =
        regex.m_bytes->whole.Match({text, length}, 0, m_memory->match, m_memory->context);
    if (found == PCRE2_ERROR_NOMATCH) return false;
    if (found >= 0 && !std::memchr(text, 0, length)) return true;
  }
  return Finds(regex, {text, strnlen(text, length)});
}

bool WhereRegexSearch::FindsIn(const WhereRegex::Code& code, std::string_view text) {
  if (!m_memory) m_memory = std::make_unique<Memory>();
  int found = text.size() <= kWholeBytesMax
                  ? code.whole.Match(text, 0, m_memory->match, m_memory->context)
                  : MatchLong(code, text);
  if (found == PCRE2_ERROR_MATCHLIMIT && text.size() <= kWholeBytesMax && !m_bounds)
    found = MatchAnew(code, text);
  if (found >= 0) return true;
  if (found != PCRE2_ERROR_NOMATCH) ++m_limitsReached;
  return false;
}

// Where a match may begin in a part that ends at `end` or a little later.
std::size_t WhereRegexSearch::EndPart(const WhereRegex::Code& code, std::string_view text,
                                      std::size_t end) const {
  end = std::min(end, text.size());
  while (code.ofCharacters && end < text.size() && (text[end] & 0xC0) == 0x80) ++end;
  pcre2_set_offset_limit(m_memory->context, end < text.size() ? end - 1 : PCRE2_UNSET);
  return end;
}

int WhereRegexSearch::MatchAnew(const WhereRegex::Code& code, std::string_view text) {
  if (!code.parts || text.empty()) return MatchWhole(code, text, kStepsOfText);
  const Memory& memory = *m_memory;
  std::uint64_t left = kStepsOfText;
  int found = PCRE2_ERROR_NOMATCH;
  for (std::size_t from = 0, end = 0; found == PCRE2_ERROR_NOMATCH && end < text.size();
       from = end) {
    end = EndPart(code, text, from + kPlacesAnew);
    found = PCRE2_ERROR_MATCHLIMIT;
    for (const std::uint32_t steps : {kStepsFirst, kStepsMore, kStepsMax}) {
      const std::uint64_t cost = std::uint64_t{steps} * (end - from);
      if (found != PCRE2_ERROR_MATCHLIMIT || cost > left) break;
      left -= cost;
      pcre2_set_match_limit(memory.context, steps);
      found = code.parts->Match(text, from, memory.match, memory.context);
    }
  }
  pcre2_set_offset_limit(memory.context, PCRE2_UNSET);
  pcre2_set_match_limit(memory.context, kStepsFirst);
  return found;
}

// `steps`: of all places together.
int WhereRegexSearch::MatchWhole(const WhereRegex::Code& code, std::string_view text,
                                 std::uint64_t steps, std::size_t from) {
  const Memory& memory = *m_memory;
  const std::uint64_t ofPlace = std::min<std::uint64_t>(kStepsMax, steps / (text.size() + 1));
  pcre2_set_match_limit(memory.context, static_cast<std::uint32_t>(ofPlace));
  const int found = code.whole.Match(text, from, memory.match, memory.context);
  pcre2_set_match_limit(memory.context, m_bounds ? m_bounds->steps : kStepsFirst);
  return found;
}

int WhereRegexSearch::MatchLong(const WhereRegex::Code& code, std::string_view text) {
  if (code.parts) return MatchInParts(code, text);
  // As many steps together as a shorter text has.
  return MatchWhole(code, text,
                    m_bounds ? std::uint64_t{m_bounds->steps} * kWholeBytesMax : kStepsOfText);
}

int WhereRegexSearch::MatchInParts(const WhereRegex::Code& code, std::string_view text) {
  const Memory& memory = *m_memory;
  SearchTime time;
  int found = PCRE2_ERROR_NOMATCH;
  if (!m_bounds) pcre2_set_match_limit(memory.context, kStepsMax);
  std::size_t from = 0, end = 0, places = kPartFirst;
  for (; found == PCRE2_ERROR_NOMATCH && end < text.size(); from = end) {
    if (from > 0 && time.IsOver()) {
      found = PCRE2_ERROR_MATCHLIMIT;
      break;
    }
    end = EndPart(code, text, from + places);
    found = code.parts->Match(text, from, memory.match, memory.context);
    places = std::min(2 * places, kPartMax);
  }
  if (!m_bounds) pcre2_set_match_limit(memory.context, kStepsFirst);
  pcre2_set_offset_limit(memory.context, PCRE2_UNSET);
  return found;
}

#define PCRE2_CODE_UNIT_WIDTH 8
#include "import/lines/regex_lines.h"

#include <pcre2.h>

#include <algorithm>
#include <utility>

#include "base/fail_with.h"
#include "base/near/near_word.h"
#include "base/text.h"

namespace {

// Enough for any line that is meant; an expression that tries all ways ends within a blink.
constexpr std::uint32_t kStepsMax = 1'000'000;
// Compiled expressions need a stack that grows with the line: the usual 32 KiB end some of them
// after 2,000 characters.
constexpr std::size_t kStackBytes = std::size_t{64} << 10, kStackBytesMax = std::size_t{64} << 20;

std::string RegexReason(int error) {
  unsigned char words[256];
  pcre2_get_error_message(error, words, sizeof words);
  return reinterpret_cast<const char*>(words);
}

}  // namespace

struct RegexLines::Compiled {
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

RegexLines::RegexLines(ImportFields& fields)
    : m_fields(fields), m_compiled(std::make_unique<Compiled>()) {}
RegexLines::~RegexLines() = default;

std::unique_ptr<RegexLines> RegexLines::Make(const std::string& expression, ImportFields& fields,
                                             std::string* why) {
  std::unique_ptr<RegexLines> made(new RegexLines(fields));
  if (!made->Compile(expression, why) || !made->ReadGroups(why)) return nullptr;
  return made;
}

bool RegexLines::Compile(const std::string& expression, std::string* why) {
  int error = 0;
  PCRE2_SIZE at = 0;
  const auto compile = [&](std::uint32_t options) {
    return pcre2_compile(reinterpret_cast<PCRE2_SPTR>(expression.data()), expression.size(),
                         options, &error, &at, nullptr);
  };
  m_compiled->code = compile(0);
  if (!m_compiled->code)
    return FailWith(why, "wrong expression: " + RegexReason(error) + " (at character " +
                             std::to_string(at + 1) + ")");
  std::uint32_t options = 0;
  pcre2_pattern_info(m_compiled->code, PCRE2_INFO_ALLOPTIONS, &options);
  // "(*UTF)": a malformed byte would end the search of its whole line.
  if ((options & PCRE2_UTF) != 0)
    if (pcre2_code* const lenient = compile(PCRE2_MATCH_INVALID_UTF))
      pcre2_code_free(std::exchange(m_compiled->code, lenient));
  pcre2_jit_compile(m_compiled->code, PCRE2_JIT_COMPLETE);  // without it the match is slower
  m_compiled->match = pcre2_match_data_create_from_pattern(m_compiled->code, nullptr);
  m_compiled->context = pcre2_match_context_create(nullptr);
  pcre2_set_match_limit(m_compiled->context, kStepsMax);
  m_compiled->stack = pcre2_jit_stack_create(kStackBytes, kStackBytesMax, nullptr);
  pcre2_jit_stack_assign(m_compiled->context, nullptr, m_compiled->stack);
  return true;
}

bool RegexLines::ReadGroups(std::string* why) {
  std::uint32_t count = 0, entryBytes = 0;
  PCRE2_SPTR entry = nullptr;
  pcre2_pattern_info(m_compiled->code, PCRE2_INFO_NAMECOUNT, &count);
  pcre2_pattern_info(m_compiled->code, PCRE2_INFO_NAMEENTRYSIZE, &entryBytes);
  pcre2_pattern_info(m_compiled->code, PCRE2_INFO_NAMETABLE, &entry);
  for (; count > 0; --count, entry += entryBytes) {
    const std::string word = reinterpret_cast<const char*>(entry + 2);
    const auto field = FieldNamed(word);
    if (!field)
      return FailWith(why, "\"" + word + "\" is no field" + DidYouMean(word, FieldWords()));
    m_groups.push_back({static_cast<unsigned>(entry[0] << 8 | entry[1]), *field, word});
    m_hasText = m_hasText || *field == ImportField::Text;
  }
  if (m_groups.empty())
    return FailWith(why, "the expression has no named group, such as (?<time>...) or (?<text>...)");
  std::sort(m_groups.begin(), m_groups.end(),
            [](const Group& a, const Group& b) { return a.number < b.number; });
  return true;
}

bool RegexLines::Read(std::string_view line, ImportedTrace& trace) {
  const int found = pcre2_match(m_compiled->code, reinterpret_cast<PCRE2_SPTR>(line.data()),
                                line.size(), 0, 0, m_compiled->match, m_compiled->context);
  if (found < 0) {
    if (found != PCRE2_ERROR_NOMATCH) ++m_givenUp;
    return false;
  }
  const PCRE2_SIZE* const ends = pcre2_get_ovector_pointer(m_compiled->match);
  m_extra.clear();
  for (const Group& group : m_groups) {
    const PCRE2_SIZE begin = ends[2 * group.number], end = ends[2 * group.number + 1];
    if (begin == PCRE2_UNSET || end < begin) continue;
    if (!SetGroup(group, line.substr(begin, end - begin), trace)) return false;
  }
  if (!m_hasText) trace.text = line;
  if (m_extra.empty()) return true;
  m_text = trace.text;
  trace.text = m_text += m_extra;
  return true;
}

bool RegexLines::SetGroup(const Group& group, std::string_view value, ImportedTrace& trace) {
  if (m_fields.Set(group.field, value, trace)) return true;
  if (group.field == ImportField::Time) return false;
  m_extra.append(" ").append(group.word).append("=").append(value);
  return true;
}

std::vector<std::string> RegexLines::Notes() const {
  if (m_givenUp == 0) return {};
  return {"of these the search in " + GroupDigits(m_givenUp) +
          (m_givenUp == 1 ? " line" : " lines") +
          " was given up: the expression takes too many steps or too much memory"};
}

// A regular expression of a filter text, and its search in the texts of traces.
//
// Shape    A well-formed UTF-8 text is searched by its characters, any other one by its bytes. An
//          expression that means characters only ("\x{100}") finds nothing in malformed parts.
// Owner    WhereRegex is immutable and shared. A WhereRegexSearch is used for all expressions of
//          one walk; it allocates nothing per text.
// Errors   Compile: null, the reason and the place in the expression. A search that takes too many
//          steps, too much memory or, in a long text, too much time finds nothing and is counted.
// Threads  WhereRegex: any. WhereRegexSearch: one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// How the texts are compared.
struct WhereRegexWay {
  bool ignoreCase = false;
  bool words = false;  // what is found has no letter, digit or "_" on either side

  bool operator==(const WhereRegexWay&) const = default;
};

class WhereRegex {
 public:
  // `place`: bytes into the expression.
  static std::shared_ptr<const WhereRegex> Compile(std::string_view expression, std::size_t& place,
                                                   std::string& why, WhereRegexWay way = {});
  ~WhereRegex();
  WhereRegex(const WhereRegex&) = delete;
  WhereRegex& operator=(const WhereRegex&) = delete;

  // No: it finds nothing in a text that begins with these bytes, however the text goes on.
  bool MayBeginWith(const char* text, std::size_t length) const {
    return m_beginning.empty() || (length >= m_beginning.size() &&
                                   std::memcmp(text, m_beginning.data(), m_beginning.size()) == 0);
  }

 private:
  friend class WhereRegexSearch;
  struct Code;
  WhereRegex();

  // Of these one may lack: `bytes` for an expression that needs characters, `characters` for one
  // that is no UTF-8 itself.
  std::unique_ptr<Code> m_bytes, m_characters;
  bool m_meansTheSame = false;  // both find the same, in every text
  bool m_seesNoEnd = false;     // and what they find in a text they find in longer ones too
  std::string m_beginning;      // of every text in which it finds something
};

// For expressions and texts of strangers. A search that would pass a bound is given up.
struct WhereBounds {
  std::uint32_t steps;    // of one search
  std::size_t textBytes;  // of a text
};

class WhereRegexSearch {
 public:
  WhereRegexSearch();
  ~WhereRegexSearch();
  WhereRegexSearch(const WhereRegexSearch&) = delete;
  WhereRegexSearch& operator=(const WhereRegexSearch&) = delete;

  void Bound(const WhereBounds& bounds);
  // REQUIRES: Bound. Searches that begin after this time of the thread (ThreadNanoseconds) are
  // given up at once.
  void EndAt(std::uint64_t threadNs) { m_endNs = threadNs; }
  bool Finds(const WhereRegex& regex, std::string_view text);
  // The same for a field: its text ends before the first NUL.
  bool FindsInField(const WhereRegex& regex, const char* text, std::size_t length);
  struct Place {
    std::size_t begin, end;
  };
  // The first match that begins at `from` or behind it. None also where it takes more than these
  // steps, in which PCRE2 counts. REQUIRES: no character lies across `from`.
  std::optional<Place> FindPlace(const WhereRegex& regex, std::string_view text, std::size_t from,
                                 std::uint64_t steps);
  // The searches that were given up.
  std::uint64_t LimitsReached() const { return m_limitsReached; }

 private:
  struct Memory;
  static const WhereRegex::Code& CodeFor(const WhereRegex& regex, std::string_view text);
  bool FindsIn(const WhereRegex::Code& code, std::string_view text);
  bool MayBegin(std::string_view text) const { return !m_bounds || MayBeginBounded(text); }
  bool MayBeginBounded(std::string_view text) const;
  std::size_t EndPart(const WhereRegex::Code& code, std::string_view text, std::size_t end) const;
  int MatchAnew(const WhereRegex::Code& code, std::string_view text);
  int MatchWhole(const WhereRegex::Code& code, std::string_view text, std::uint64_t steps,
                 std::size_t from = 0);
  int MatchLong(const WhereRegex::Code& code, std::string_view text);
  int MatchInParts(const WhereRegex::Code& code, std::string_view text);

  std::unique_ptr<Memory> m_memory;
  std::optional<WhereBounds> m_bounds;
  std::uint64_t m_endNs = ~std::uint64_t{0};
  std::uint64_t m_limitsReached = 0;
};

// A Perl expression (PCRE2) that texts are searched for: what "matches" of a filter text is, with
// the options of find.
//
// Owner    Holds the compiled expression.
// Errors   A search that takes too many steps is given up: no match, and counted.
// Threads  One.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "where/where_regex.h"

class PerlPattern {
 public:
  // Null and a reason with the place: it is no expression.
  static std::unique_ptr<PerlPattern> Make(const std::string& expression, WhereRegexWay way,
                                           std::string* why);

  bool OccursIn(std::string_view text) { return m_search.Finds(*m_regex, text); }
  // How many texts were given up.
  std::uint64_t GivenUp() const { return m_search.LimitsReached(); }

 private:
  explicit PerlPattern(std::shared_ptr<const WhereRegex> regex) : m_regex(std::move(regex)) {}

  const std::shared_ptr<const WhereRegex> m_regex;
  WhereRegexSearch m_search;
};

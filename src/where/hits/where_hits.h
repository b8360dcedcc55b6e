// What a filter text finds in the texts of traces, for windows that tint it.
//
// Shape    The places of `contains`, `startswith` and `matches` of the field text, where they are
//          not negated: bytes, in order, without overlaps, at most kHitsMax. Another field, and a
//          test that a text does not meet, give none.
// Owner    Shares the program.
// Errors   None: an expression that takes long in a text gives its first places only.
// Threads  One.
#pragma once

#include <string_view>
#include <vector>

#include "controls/text/cell_parts.h"
#include "where/where_program.h"

class WhereHits {
 public:
  static constexpr std::size_t kHitsMax = 500;

  // Null: no filter text.
  explicit WhereHits(WhereProgramPtr program) : m_program(std::move(program)) {}

  const WhereProgramPtr& Program() const { return m_program; }
  std::vector<HitRange> In(std::string_view text);

 private:
  void AddMatches(const WhereRegex& regex, std::string_view text, std::vector<HitRange>& hits);

  const WhereProgramPtr m_program;
  WhereRegexSearch m_search;
};

// Both, in order, without overlaps.
std::vector<HitRange> JoinedHits(std::vector<HitRange> one, const std::vector<HitRange>& other);

// A set of colour rules whose filter texts are compiled once, to be asked by any number of judges
// (colour_judge.h).
//
// Shape    All texts are compiled, so that the errors of rules that are off are known too.
// Owner    Shared and immutable.
// Errors   A rule whose text is wrong, or for which there is no room, is never asked: ErrorOf.
// Threads  Any.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "where/colours/colour_rules.h"
#include "where/text/where_parser.h"
#include "where/where_program.h"

class ColourProgram;
using ColourProgramPtr = std::shared_ptr<const ColourProgram>;

class ColourProgram {
 public:
  // The rules that are on have at most so many tests together, as one filter text has.
  static constexpr std::size_t kTestsMax = kWhereTestsMax;

  static ColourProgramPtr Compile(ColourRules rules);

  const ColourRules& Rules() const { return m_rules; }
  // Null: it is off, or never asked.
  const WhereProgramPtr& ProgramOf(std::size_t rule) const { return m_lines[rule].program; }
  // Does the program have expressions of `matches`?
  bool Searches(std::size_t rule) const { return m_lines[rule].searches; }
  // Its place is in the rule's filter text.
  const std::optional<WhereError>& ErrorOf(std::size_t rule) const { return m_lines[rule].error; }
  // Is a rule asked that looks at the newest trace?
  bool UsesEnd() const { return m_usesEnd; }

 private:
  struct Line {
    WhereProgramPtr program;
    bool searches = false;
    std::optional<WhereError> error;
  };
  explicit ColourProgram(ColourRules rules) : m_rules(std::move(rules)) {}

  const ColourRules m_rules;
  std::vector<Line> m_lines;
  bool m_usesEnd = false;
};

// What a filter text says of each branch of the filter dialog's tree.
//
// Shape    The branches are severities, developer, verbose, components, categories, applications,
//          and machines with processes and threads. The tree shows a trace that passes all of them.
// Owner    Borrows the text's tree, the filter, the names and the time.
// Threads  One.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tree/filter/text/choice_diagram.h"
#include "tree/filter/text/look_time.h"
#include "tree/filter/text/thread_choices.h"
#include "where/text/where_parser.h"

enum class FilterBranch : std::size_t {
  Severities,
  Developer,
  Verbose,
  Components,
  Categories,
  Applications,
  Threads,
};
constexpr std::size_t kFilterBranches = 7;
// Nothing: the tree has no such field.
std::optional<FilterBranch> BranchOf(WhereField field);
// "All Severities", as the dialog has it.
const char* LabelOf(FilterBranch branch);

class TextChoices {
 public:
  // `expr`, or its negation. REQUIRES: its tests are on fields of branches; and, where names may
  // come, none is of a part of a name. Its expressions compile. `time` may be null.
  TextChoices(const WhereExpr& expr, bool negated, const CTraceFilter& filter,
              const FilterNames& names, LookTime* time);
  ~TextChoices();

  // Sets the marks of a filter that has the names, so that it passes what the text does. Errors:
  // false and the reason. The marks say nothing if the time is over then.
  bool Mark(CTraceFilter& filter, std::string* why);

 private:
  using Passes = std::vector<bool>;
  using Node = ChoiceDiagram::Node;

  void Collect(const WhereExpr& expr);
  WhereTests TestsOf(FilterBranch branch) const;
  void AddNameClasses(FilterBranch branch, const std::map<NameId, int>& marks);
  std::size_t CountOf(FilterBranch branch) const;
  Passes PassesOf(const WhereRule& test) const;
  Node Build(const WhereExpr& expr, bool negated, ChoiceDiagram& diagram) const;

  bool MarkBranches(const std::vector<Passes>& passes, CTraceFilter& filter, std::string* why);
  bool MarkSeverities(const Passes& passes, CTraceFilter& filter, std::string* why) const;
  bool MarkFlag(const Passes& passes, const char* word, int& mark, std::string* why) const;
  bool MarkNames(FilterBranch branch, const Passes& passes, std::map<NameId, int>& marks, int& all,
                 std::string* why);
  std::string WhyJoined() const;

  const WhereExpr& m_expr;
  const bool m_negated;
  const FilterNames& m_names;
  LookTime* const m_time;
  mutable WhereRegexSearch m_search;
  std::map<const WhereExpr*, WhereRule> m_rules;
  std::array<std::unique_ptr<NameClasses>, 3> m_classes;  // components, categories, applications
  std::array<NameSet, 3> m_later;
  std::unique_ptr<ThreadChoices> m_threads;
  bool m_isTooLarge = false;
};

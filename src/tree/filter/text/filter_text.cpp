#include "tree/filter/text/filter_text.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/fail_with.h"
#include "base/text.h"
#include "tree/filter/text/thread_text.h"
#include "where/text/where_parser.h"
#include "where/text/where_writer.h"

namespace {

using F = WhereField;
using O = WhereOperator;

// The branches of the tree, each as a test that must hold.
class Branches {
 public:
  Branches(const CTraceFilter& filter, const FilterNames& names, std::string* why)
      : m_filter(filter), m_names(names), m_why(why) {}

  bool Add() {
    if (!m_filter.allSeverities) AddSeverities();
    if (!m_filter.allAttributes) {
      AddFlag(F::Developer, m_filter.attributes[0] == 1, m_filter.attributes[1] == 1);
      AddFlag(F::Verbose, m_filter.attributes[2] == 1, m_filter.attributes[3] == 1);
    }
    return (m_filter.allComponents || AddNames(F::Component, "components", m_filter.components)) &&
           (m_filter.allCategories || AddNames(F::Category, "categories", m_filter.categories)) &&
           (m_filter.allApplications ||
            AddNames(F::Application, "applications", m_filter.applications)) &&
           (m_filter.allThreads || AddThreads());
  }
  // REQUIRES: Add has been true.
  std::string Text() {
    if (m_never) return WhereText(WhereNever());
    return m_all.empty() ? std::string() : WhereText(WhereAll(std::move(m_all)));
  }

 private:
  void AddSeverities();
  void AddFlag(F field, bool without, bool with);
  bool AddNames(F field, const char* what, const std::map<NameId, int>& marks);
  bool AddThreads();

  const CTraceFilter& m_filter;
  const FilterNames& m_names;
  std::string* const m_why;
  std::vector<WhereExpr> m_all;
  bool m_never = false;
};

// A trace without a severity is hidden, so each form must compare with one.
void Branches::AddSeverities() {
  std::vector<WhereValue> shown;
  for (std::size_t place = 0; place < 3; ++place) {
    WhereValue value;
    value.severity = static_cast<WhereSeverity>(place);
    if (m_filter.severities[place] == 1) shown.push_back(std::move(value));
  }
  if (shown.empty()) {
    m_never = true;
    return;
  }
  const bool andAbove = shown.size() > 1 && shown.back().severity == WhereSeverity::Error &&
                        (shown.size() == 3 || shown.front().severity == WhereSeverity::Warn);
  if (andAbove)
    m_all.push_back(WhereTest(F::Severity, O::GreaterEqual, {shown.front()}));
  else
    m_all.push_back(WhereOneOf(F::Severity, std::move(shown)));
}

void Branches::AddFlag(F field, bool without, bool with) {
  if (without && with) return;
  WhereExpr set = WhereTest(field, O::IsSet);
  if (!without && !with)
    m_never = true;
  else
    m_all.push_back(with ? std::move(set) : WhereNot(std::move(set)));
}

bool Branches::AddNames(F field, const char* what, const std::map<NameId, int>& marks) {
  const auto before = [](const std::string& a, const std::string& b) {
    const int order = CompareIgnoringCase(a, b);
    return order != 0 ? order < 0 : a < b;
  };
  std::map<std::string, bool, decltype(before)> byName(before);
  for (const auto& [id, mark] : marks) {
    const std::string name = NameOf(m_names.names, id);
    const auto [at, isNew] = byName.emplace(name, mark == 1);
    if (!isNew && at->second != (mark == 1)) return FailWith(m_why, SameNames(what, name));
  }
  std::vector<WhereValue> shown, hidden;
  for (const auto& [name, isShown] : byName) (isShown ? shown : hidden).push_back(NameValue(name));
  if (hidden.empty()) return true;
  if (shown.empty() && !m_names.mayGrow)
    m_never = true;
  else if (m_names.mayGrow || hidden.size() < shown.size())
    m_all.push_back(WhereOneOf(field, std::move(hidden), false));
  else
    m_all.push_back(WhereOneOf(field, std::move(shown)));
  return true;
}

bool Branches::AddThreads() {
  const auto marks = ThreadMarksOf(m_filter, m_names, m_why);
  if (!marks) return false;
  std::optional<WhereExpr> threads = ThreadText(*marks, m_names.mayGrow);
  if (!threads) return true;
  if (*threads == WhereNever())
    m_never = true;
  else
    m_all.push_back(std::move(*threads));
  return true;
}

}  // namespace

std::optional<std::string> TextOfFilter(const CTraceFilter& filter, const FilterNames& names,
                                        std::string* why) {
  const auto none = [&](std::string reason) {
    return FailWith(why, std::move(reason), std::optional<std::string>());
  };
  if (filter.allTraces) return std::string();
  Branches branches(filter, names, why);
  if (!branches.Add()) return std::nullopt;
  std::string text = branches.Text();
  WhereError error;
  if (!text.empty() && !ParseWhere(text, error))
    return none("the tree is too large for a filter text: " + error.reason);
  return text;
}

#include "tree/filter/text/filter_of_text.h"

#include <string>
#include <utility>

#include "tree/filter/text/text_choices.h"

namespace {

using Kind = WhereExpr::Kind;

bool FailAt(const WhereExpr& expr, std::string reason, WhereError& error) {
  error = {expr.place, expr.length, std::move(reason), {}};
  return false;
}

// The first test that no tree has.
bool CheckTests(const WhereExpr& expr, const FilterNames& names, WhereError& error) {
  for (const WhereExpr& child : expr.children)
    if (!CheckTests(child, names, error)) return false;
  if (expr.kind != Kind::Test) return true;
  std::string said(WordOf(expr.field));
  if (expr.op != WhereOperator::IsSet) said.append(" ").append(WordOf(expr.op));
  if (!BranchOf(expr.field))
    return FailAt(expr, "the filter dialog cannot say \"" + said + "\"", error);
  const bool part = expr.op == WhereOperator::Contains || expr.op == WhereOperator::StartsWith ||
                    expr.op == WhereOperator::Matches;
  if (part && names.mayGrow)
    return FailAt(expr,
                  "the filter dialog cannot say \"" + said + "\" of names that are still to come",
                  error);
  WhereError wrong;
  if (MakeRule(expr, wrong)) return true;
  error = std::move(wrong);
  return false;
}

struct Document {
  const FilterNames& names;
  LookTime* time;
};

bool Says(const WhereExpr& expr, bool negated, const Document& document, CTraceFilter& filter,
          std::string* why) {
  return TextChoices(expr, negated, filter, document.names, document.time).Mark(filter, why);
}

// Of parts that must all hold at least one cannot be said: what a tree shows and another one shows
// as well a third one does.
const WhereExpr& Blamed(const WhereExpr& expr, bool negated, const Document& document,
                        const CTraceFilter& filter, std::string& why) {
  if (expr.kind == Kind::Not) {
    const WhereExpr& inner = expr.children.front();
    const WhereExpr& blamed = Blamed(inner, !negated, document, filter, why);
    return &blamed == &inner ? expr : blamed;
  }
  if (expr.kind == (negated ? Kind::Or : Kind::And)) {
    for (const WhereExpr& child : expr.children) {
      CTraceFilter tried = filter;
      std::string childWhy;
      if (Says(child, negated, document, tried, &childWhy)) continue;
      why = std::move(childWhy);
      return Blamed(child, negated, document, filter, why);
    }
  }
  return expr;
}

void Restrict(int& all, int otherAll) {
  all = all && otherAll ? 1 : 0;
}

void Restrict(int& mark, bool whole, int other, bool otherWhole) {
  mark = (whole || mark == 1) && (otherWhole || other == 1) ? 1 : 0;
}

template <class Marks>
void RestrictMarks(Marks& marks, int& all, const Marks& others, int otherAll, bool every,
                   bool everyOther) {
  auto other = others.begin();
  for (auto& mark : marks) {
    if constexpr (std::is_same_v<Marks, std::vector<int>>)
      Restrict(mark, every || all, *other, everyOther || otherAll);
    else
      Restrict(mark.second, every || all, other->second, everyOther || otherAll);
    ++other;
  }
  all = (every || all) && (everyOther || otherAll) ? 1 : 0;
}

// Both have the same entries.
void RestrictThreads(CTraceFilter& filter, const CTraceFilter& said, bool every, bool everyOther) {
  const bool all = every || filter.allThreads, otherAll = everyOther || said.allThreads;
  auto otherMachine = said.threads.begin();
  for (auto& [id, machine] : filter.threads) {
    const MachineFilterEntry& other = (otherMachine++)->second;
    const bool whole = all || machine.allProcesses, otherWhole = otherAll || other.allProcesses;
    auto otherProcess = other.processes.begin();
    for (auto& [processId, process] : machine.processes) {
      const ProcessFilterEntry& with = (otherProcess++)->second;
      RestrictMarks(process.threadMarks, process.allThreadsOfProcess, with.threadMarks,
                    with.allThreadsOfProcess, whole, otherWhole);
    }
    machine.allProcesses = whole && otherWhole ? 1 : 0;
  }
  filter.allThreads = all && otherAll ? 1 : 0;
}

void RestrictTo(CTraceFilter& filter, const CTraceFilter& said) {
  const bool all = filter.allTraces, other = said.allTraces;
  RestrictMarks(filter.severities, filter.allSeverities, said.severities, said.allSeverities, all,
                other);
  RestrictMarks(filter.attributes, filter.allAttributes, said.attributes, said.allAttributes, all,
                other);
  RestrictMarks(filter.components, filter.allComponents, said.components, said.allComponents, all,
                other);
  RestrictMarks(filter.categories, filter.allCategories, said.categories, said.allCategories, all,
                other);
  RestrictMarks(filter.applications, filter.allApplications, said.applications,
                said.allApplications, all, other);
  RestrictThreads(filter, said, all, other);
  Restrict(filter.allTraces, said.allTraces);
}

}  // namespace

bool FilterOfText(const WhereExpr& expr, const FilterNames& names, CTraceFilter& filter,
                  WhereError& error, LookTime* time) {
  if (!CheckTests(expr, names, error)) return false;
  const Document document{names, time};
  CTraceFilter said = filter;
  std::string why;
  const bool says = Says(expr, false, document, said, &why);
  const WhereExpr& blamed = says ? expr : Blamed(expr, false, document, filter, why);
  if (time && time->IsOver())
    return FailAt(expr, "it takes too long to compare this with all names of the traces", error);
  if (!says) return FailAt(blamed, std::move(why), error);
  RestrictTo(filter, said);
  return true;
}

#include "tree/filter/text/text_choices.h"

#include <algorithm>
#include <iterator>

#include "base/fail_with.h"
#include "tree/filter/filter_dialog.h"
#include "where/text/where_writer.h"

namespace {

using F = WhereField;
using B = FilterBranch;

// The attributes of each choice. A trace without a severity is a choice too.
constexpr int kSeverities[] = {0, kAttributeInfo, kAttributeWarn, kAttributeError};
constexpr int kDevelopers[] = {0, kAttributeDeveloper};
constexpr int kVerboses[] = {0, kAttributeVerbose};

std::size_t NamePlace(B branch) {
  return static_cast<std::size_t>(branch) - static_cast<std::size_t>(B::Components);
}

const char* WordsOf(B branch) {
  if (branch == B::Components) return "components";
  return branch == B::Categories ? "categories" : "applications";
}

}  // namespace

std::optional<FilterBranch> BranchOf(WhereField field) {
  switch (field) {
    case F::Severity:
      return B::Severities;
    case F::Developer:
      return B::Developer;
    case F::Verbose:
      return B::Verbose;
    case F::Component:
      return B::Components;
    case F::Category:
      return B::Categories;
    case F::Application:
      return B::Applications;
    case F::Machine:
    case F::Pid:
    case F::Account:
    case F::Tid:
      return B::Threads;
    default:
      return std::nullopt;
  }
}

const char* LabelOf(FilterBranch branch) {
  constexpr const char* kLabels[kFilterBranches] = {"All Severities",
                                                    "Developer",
                                                    "Verbose",
                                                    CFilterDialog::kComponents,
                                                    CFilterDialog::kCategories,
                                                    CFilterDialog::kApplications,
                                                    CFilterDialog::kThreads};
  return kLabels[static_cast<std::size_t>(branch)];
}

TextChoices::TextChoices(const WhereExpr& expr, bool negated, const CTraceFilter& filter,
                         const FilterNames& names, LookTime* time)
    : m_expr(expr), m_negated(negated), m_names(names), m_time(time) {
  if (time) time->Bound(m_search);
  Collect(expr);
  AddNameClasses(B::Components, filter.components);
  AddNameClasses(B::Categories, filter.categories);
  AddNameClasses(B::Applications, filter.applications);
  m_threads = std::make_unique<ThreadChoices>(filter, names, TestsOf(B::Threads), m_search, time);
}

TextChoices::~TextChoices() = default;

void TextChoices::Collect(const WhereExpr& expr) {
  for (const WhereExpr& child : expr.children) Collect(child);
  if (expr.kind != WhereExpr::Kind::Test) return;
  WhereError error;
  if (auto rule = MakeRule(expr, error)) m_rules.emplace(&expr, std::move(*rule));
}

WhereTests TextChoices::TestsOf(FilterBranch branch) const {
  WhereTests tests;
  for (const auto& [expr, rule] : m_rules)
    if (BranchOf(rule.field) == branch) tests.push_back(&rule);
  return tests;
}

void TextChoices::AddNameClasses(FilterBranch branch, const std::map<NameId, int>& marks) {
  const std::size_t place = NamePlace(branch);
  const WhereTests tests = TestsOf(branch);
  m_classes[place] = std::make_unique<NameClasses>(tests, m_search);
  NameSet known;
  for (const auto& [id, mark] : marks) known.insert(NameOf(m_names.names, id));
  if (m_names.mayGrow) m_later[place] = LaterNames(tests, known);
  m_isTooLarge = m_isTooLarge || known.size() * tests.size() > ThreadChoices::kLooksMax;
  if (m_isTooLarge) {
    known.clear();
    m_later[place].clear();
  }
  for (const NameSet& names : {known, m_later[place]}) {
    for (const std::string& name : names) {
      if (m_time && m_time->IsOver()) break;
      m_classes[place]->Of(name);
    }
  }
  // Without traces there is nothing to tell apart.
  if (m_classes[place]->Count() == 0) m_classes[place]->Of("");
}

std::size_t TextChoices::CountOf(FilterBranch branch) const {
  switch (branch) {
    case B::Severities:
      return std::size(kSeverities);
    case B::Developer:
    case B::Verbose:
      return 2;
    case B::Threads:
      return m_threads->Count();
    default:
      return m_classes[NamePlace(branch)]->Count();
  }
}

TextChoices::Passes TextChoices::PassesOf(const WhereRule& test) const {
  Passes passes;
  const auto ofAttributes = [&](const auto& all) {
    for (const int attributes : all)
      passes.push_back(HoldsFor(test, static_cast<std::uint16_t>(attributes), {}, m_search));
    return passes;
  };
  const FilterBranch branch = *BranchOf(test.field);
  switch (branch) {
    case B::Severities:
      return ofAttributes(kSeverities);
    case B::Developer:
      return ofAttributes(kDevelopers);
    case B::Verbose:
      return ofAttributes(kVerboses);
    case B::Threads:
      return m_threads->PassesOf(test);
    default:
      return m_classes[NamePlace(branch)]->PassesOf(test);
  }
}

ChoiceDiagram::Node TextChoices::Build(const WhereExpr& expr, bool negated,
                                       ChoiceDiagram& diagram) const {
  if (expr.kind == WhereExpr::Kind::Not) return Build(expr.children.front(), !negated, diagram);
  if (expr.kind == WhereExpr::Kind::Test) {
    const WhereRule& rule = m_rules.at(&expr);
    Passes passes = PassesOf(rule);
    if (negated) passes.flip();
    return diagram.Test(static_cast<std::size_t>(*BranchOf(rule.field)), passes);
  }
  const bool all = (expr.kind == WhereExpr::Kind::And) != negated;
  Node node = all ? ChoiceDiagram::kPasses : ChoiceDiagram::kFails;
  for (const WhereExpr& child : expr.children) {
    const Node next = Build(child, negated, diagram);
    node = all ? diagram.And(node, next) : diagram.Or(node, next);
  }
  return node;
}

bool TextChoices::Mark(CTraceFilter& filter, std::string* why) {
  constexpr const char* kTooLarge = "too many different cases for the filter dialog";
  if (m_time && m_search.LimitsReached() > 0) m_time->End();
  if (m_isTooLarge || m_threads->IsTooLarge() || (m_time && m_time->IsOver()))
    return FailWith(why, kTooLarge);
  std::vector<std::size_t> choices;
  for (std::size_t branch = 0; branch < kFilterBranches; ++branch)
    choices.push_back(CountOf(static_cast<FilterBranch>(branch)));
  ChoiceDiagram diagram(choices);
  const Node node = Build(m_expr, m_negated, diagram);
  if (node == ChoiceDiagram::kTooLarge) return FailWith(why, kTooLarge);
  filter.ShowAll();
  if (node == ChoiceDiagram::kFails) {
    filter.allTraces = filter.allSeverities = 0;
    std::ranges::fill(filter.severities, 0);
    return true;
  }
  const auto passes = diagram.Product(node);
  if (!passes) return FailWith(why, WhyJoined());
  return MarkBranches(*passes, filter, why);
}

bool TextChoices::MarkBranches(const std::vector<Passes>& passes, CTraceFilter& filter,
                               std::string* why) {
  const auto of = [&](FilterBranch branch) -> const Passes& {
    return passes[static_cast<std::size_t>(branch)];
  };
  const bool said =
      MarkSeverities(of(B::Severities), filter, why) &&
      MarkFlag(of(B::Developer), "for developers", filter.attributes[1], why) &&
      MarkFlag(of(B::Verbose), "verbose", filter.attributes[3], why) &&
      MarkNames(B::Components, of(B::Components), filter.components, filter.allComponents, why) &&
      MarkNames(B::Categories, of(B::Categories), filter.categories, filter.allCategories, why) &&
      MarkNames(B::Applications, of(B::Applications), filter.applications, filter.allApplications,
                why) &&
      m_threads->Mark(of(B::Threads), filter, why);
  filter.allAttributes = filter.attributes[1] && filter.attributes[3];
  filter.allTraces = filter.allSeverities && filter.allAttributes && filter.allComponents &&
                     filter.allCategories && filter.allApplications && filter.allThreads;
  return said;
}

bool TextChoices::MarkSeverities(const Passes& passes, CTraceFilter& filter,
                                 std::string* why) const {
  for (std::size_t place = 0; place < 3; ++place)
    filter.severities[place] = passes[place + 1] ? 1 : 0;
  const bool all = passes[1] && passes[2] && passes[3];
  filter.allSeverities = all ? 1 : 0;
  if (passes[0] == all) return true;
  return FailWith(why, all ? "the filter dialog also shows traces without a severity where it "
                             "shows all three"
                           : "the filter dialog hides traces without a severity unless it shows "
                             "all three; it can say severity in {...}");
}

bool TextChoices::MarkFlag(const Passes& passes, const char* word, int& mark,
                           std::string* why) const {
  mark = passes[1] ? 1 : 0;
  if (passes[0]) return true;
  return FailWith(why, std::string("the filter dialog can hide traces that are ") + word +
                           ", but not the others");
}

bool TextChoices::MarkNames(FilterBranch branch, const Passes& passes, std::map<NameId, int>& marks,
                            int& all, std::string* why) {
  const std::size_t place = NamePlace(branch);
  all = 1;
  for (const std::string& name : m_later[place])
    if (!passes[m_classes[place]->Of(name)])
      return FailWith(why, std::string("the filter dialog shows ") + WordsOf(branch) +
                               " that come later; it can say \"not in\" of those that have come");
  for (auto& [id, mark] : marks) {
    mark = passes[m_classes[place]->Of(NameOf(m_names.names, id))] ? 1 : 0;
    if (!mark) all = 0;
  }
  // Nothing has come, and nothing will.
  if (marks.empty() && !passes.front()) all = 0;
  return true;
}

std::string TextChoices::WhyJoined() const {
  std::vector<FilterBranch> branches;
  for (const auto& [expr, rule] : m_rules) branches.push_back(*BranchOf(rule.field));
  std::ranges::sort(branches);
  branches.erase(std::ranges::unique(branches).begin(), branches.end());
  std::string words;
  for (std::size_t i = 0; i < branches.size(); ++i) {
    if (i > 0) words += i + 1 == branches.size() ? " and " : ", ";
    words += LabelOf(branches[i]);
  }
  return "the filter dialog shows what passes each of its branches; here " + words +
         " depend on each other";
}

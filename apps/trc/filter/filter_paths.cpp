#include "filter/filter_paths.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string_view>
#include <utility>

#include "base/fail_with.h"
#include "base/text.h"
#include "documents/trace_doc.h"
#include "filter/account.h"
#include "records/process_name.h"
#include "text/visible_text.h"

namespace {

constexpr std::size_t kNearNamesMax = 5;
// A longer path has no similar ones: comparing costs the product of the lengths.
constexpr std::size_t kComparedBytesMax = 200;

// The rest of the path after the label; none if it does not begin with the label.
std::optional<std::string_view> Below(std::string_view path, std::string_view label) {
  if (path.size() <= label.size() || path.substr(0, label.size()) != label ||
      path[label.size()] != '/')
    return std::nullopt;
  return path.substr(label.size() + 1);
}

void FindBelow(FilterNode& node, std::string_view path, std::vector<FilterNode*>& found) {
  std::vector<FilterNode*> through;
  for (std::size_t place = 0; place < node.ChildCount(); ++place) {
    FilterNode& child = node.Child(place);
    if (child.Label() == path) found.push_back(&child);
    if (Below(path, child.Label())) through.push_back(&child);
  }
  if (!found.empty()) return;
  std::stable_sort(through.begin(), through.end(), [](const FilterNode* a, const FilterNode* b) {
    return a->Label().size() > b->Label().size();
  });
  std::string_view label;  // of the children that led to the result
  for (FilterNode* child : through) {
    if (!found.empty() && child->Label() != label) return;
    label = child->Label();
    FindBelow(*child, *Below(path, label), found);
  }
}

std::string PathOf(const FilterNode& node) {
  if (!node.Parent()) return {};
  const std::string above = PathOf(*node.Parent());
  return above.empty() ? node.Label() : above + "/" + node.Label();
}

// How many bytes must be inserted, removed or changed to make the texts equal.
std::size_t Distance(std::string_view a, std::string_view b) {
  if (std::max(a.size(), b.size()) > kComparedBytesMax) return std::string_view::npos;
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

// Collects the nodes below, with their distance from the requested path.
class NearNames {
 public:
  explicit NearNames(std::string_view path) : m_path(ToLowerAscii(path)) {
    const std::size_t slash = m_path.rfind('/');
    m_last = slash == std::string::npos ? m_path : m_path.substr(slash + 1);
  }

  void Look(const FilterNode& node) {
    for (std::size_t place = 0; place < node.ChildCount(); ++place) {
      const FilterNode& child = node.Child(place);
      const std::size_t away = FarFrom(child);
      if (away <= m_path.size() / 4 + 2) m_found.push_back({away, PathOf(child)});
      Look(child);
    }
  }
  std::vector<std::string> Nearest() {
    std::stable_sort(m_found.begin(), m_found.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> names;
    for (const auto& [away, path] : m_found) {
      if (names.size() == kNearNamesMax || away > m_found.front().first) break;
      if (std::find(names.begin(), names.end(), path) == names.end()) names.push_back(path);
    }
    return names;
  }

 private:
  // In mistakes. The same name at another place, and a path that is not complete, count as one.
  std::size_t FarFrom(const FilterNode& node) const {
    const std::string path = ToLowerAscii(PathOf(node)), label = ToLowerAscii(node.Label());
    if (label == m_last || path.starts_with(m_path)) return 1;
    const std::size_t last = Distance(label, m_last);
    return std::min(Distance(path, m_path), last > kComparedBytesMax ? last : last * 2);
  }

  std::string m_path, m_last;  // in small letters
  std::vector<std::pair<std::size_t, std::string>> m_found;
};

// The deepest node on the path.
const FilterNode& Deepest(const FilterNode& node, std::string_view path) {
  for (std::size_t place = 0; place < node.ChildCount(); ++place)
    if (const auto rest = Below(path, node.Child(place).Label()))
      return Deepest(node.Child(place), *rest);
  return node;
}

bool IsBelowNames(const FilterNode& node) {
  const FilterNode* branch = &node;
  while (branch->Parent() && branch->Parent()->Parent()) branch = branch->Parent();
  return branch->Parent() && branch->Place() >= CFilterDialog::kBranchesWithoutNames;
}

// A name may have any content: a terminal must not interpret it.
std::string Quoted(const std::string& path) {
  return "\"" + VisibleText(path) + "\"";
}

// All nodes below "All Threads" that are processes.
std::vector<FilterNode*> ProcessNodes(FilterNode& root) {
  std::vector<FilterNode*> processes;
  for (FilterNode* const threads : FindFilterNodes(root, CFilterDialog::kThreads))
    for (std::size_t machine = 0; machine < threads->ChildCount(); ++machine)
      for (std::size_t place = 0; place < threads->Child(machine).ChildCount(); ++place)
        processes.push_back(&threads->Child(machine).Child(place));
  return processes;
}

std::string AccountOfNode(const FilterNode& process) {
  const std::string_view label = process.Label();
  return std::string(ProcessName::Of(label.substr(label.find(':') + 1)).account);
}

void SetNode(CFilterDialog& dialog, FilterNode& node, bool check) {
  const FilterState wanted = check ? FilterState::Checked : FilterState::Unchecked;
  while (node.State() != wanted) dialog.OnTreeClick(&node, true);
}

std::vector<std::string> FirstBelow(const FilterNode& node) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < std::min(node.ChildCount(), kNearNamesMax + 1); ++i)
    names.push_back(PathOf(node.Child(i)));
  return names;
}

}  // namespace

std::vector<FilterNode*> FindFilterNodes(FilterNode& root, const std::string& path) {
  if (path.empty()) return {&root};
  std::vector<FilterNode*> found;
  FindBelow(root, path, found);
  return found;
}

std::string NoSuchPath(FilterNode& root, const std::string& path) {
  NearNames near(path);
  near.Look(root);
  std::vector<std::string> names = near.Nearest();
  const bool any = !names.empty();
  if (!any) names = FirstBelow(Deepest(root, path));
  std::string text = "there is no " + Quoted(path) + " in the filter";
  const char* between = any ? "; near it: " : "; there is: ";
  for (const std::string& name : names) text += std::exchange(between, ", ") + Quoted(name);
  return text;
}

bool FilterPaths::Touch(std::string_view branch) const {
  if (!m_account.empty() && branch == CFilterDialog::kThreads) return true;
  return std::any_of(m_steps.begin(), m_steps.end(), [branch](const Step& step) {
    return step.path.empty() || step.path.starts_with(branch);
  });
}

std::vector<std::string> FilterPaths::Take(Host& host, CTraceFilter& filter, NameMap names,
                                           std::vector<std::string>* accounts) const {
  CFilterDialog dialog(host, filter, names);
  dialog.OnInitDialog();
  std::vector<std::string> unknown;
  for (const Step& step : m_steps) {
    const std::vector<FilterNode*> nodes = FindFilterNodes(dialog.Tree().Root(), step.path);
    if (nodes.empty()) unknown.push_back(step.path);
    for (FilterNode* node : nodes) SetNode(dialog, *node, step.check);
  }
  if (!m_account.empty())
    for (FilterNode* process : ProcessNodes(dialog.Tree().Root())) {
      const std::string account = AccountOfNode(*process);
      if (account != m_account) SetNode(dialog, *process, false);
      if (accounts) accounts->push_back(account);
    }
  dialog.OnOK();
  return unknown;
}

bool FilterPaths::Apply(CTraceDoc& document, CTraceFilter& filter, std::string* why) const {
  filter.MergeDocumentNames(document);
  std::vector<std::string> accounts;
  const std::vector<std::string> unknown =
      Take(document.GetHost(), filter, document.m_names, &accounts);
  if (unknown.empty()) {
    const bool known = m_account.empty() ||
                       std::find(accounts.begin(), accounts.end(), m_account) != accounts.end();
    return known || FailWith(why, NoSuchAccount("trace", m_account, accounts));
  }
  NameMap names = document.m_names;
  CFilterDialog dialog(document.GetHost(), filter, names);
  dialog.OnInitDialog();
  return FailWith(why, NoSuchPath(dialog.Tree().Root(), unknown.front()));
}

bool FilterPaths::HasImpossiblePath(Host& host, std::string* why) const {
  CTraceFilter filter;
  NameMap names;
  CFilterDialog dialog(host, filter, names);
  dialog.OnInitDialog();
  FilterNode& root = dialog.Tree().Root();
  for (const Step& step : m_steps) {
    if (!FindFilterNodes(root, step.path).empty()) continue;
    if (IsBelowNames(Deepest(root, step.path))) continue;
    *why = NoSuchPath(root, step.path);
    return true;
  }
  return false;
}

#include "filter/tree_steps.h"

#include <algorithm>

#include "base/fail_with.h"
#include "where/text/where_lexer.h"

namespace {

struct Step {
  std::string path;
  bool check;
};

// Those that make this node and all below it, which are shown or hidden as `shown` says.
void AddSteps(const FilterNode& node, const std::string& path, bool shown,
              std::vector<Step>& steps) {
  std::size_t checked = 0, unchecked = 0;
  for (std::size_t place = 0; place < node.ChildCount(); ++place) {
    const FilterState state = node.Child(place).State();
    checked += state == FilterState::Checked ? 1 : 0;
    unchecked += state == FilterState::Unchecked ? 1 : 0;
  }
  bool wanted = node.State() == FilterState::Checked;
  if (node.State() == FilterState::Partial)
    wanted = checked == unchecked ? shown : checked > unchecked;
  if (wanted != shown) steps.push_back({path, wanted});
  if (node.State() != FilterState::Partial) return;
  for (std::size_t place = 0; place < node.ChildCount(); ++place) {
    const FilterNode& child = node.Child(place);
    AddSteps(child, path.empty() ? child.Label() : path + "/" + child.Label(), wanted, steps);
  }
}

std::string HexEscape(char c) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
}

// For bash and zsh. What a terminal would not show is escaped.
std::string ShellQuoted(std::string_view text) {
  std::string plain, escaped;
  bool hidden = false;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t known = CharacterBytes(text, at);
    const std::size_t bytes = std::max<std::size_t>(1, known);
    if (IsHiddenCharacter(text, at, known)) {
      hidden = true;
      for (std::size_t i = 0; i < bytes; ++i) escaped += HexEscape(text[at + i]);
    } else {
      const std::string_view character = text.substr(at, bytes);
      plain.append(character == "'" ? "'\\''" : character);
      escaped.append(character == "'" || character == "\\" ? "\\" : "").append(character);
    }
    at += bytes;
  }
  return hidden ? "$'" + escaped + "'" : "'" + plain + "'";
}

}  // namespace

std::optional<std::vector<std::string>> TreeSteps(CTraceDoc& document, const CTraceFilter& filter,
                                                  std::string* why) {
  CTraceFilter shown = filter, made = filter;
  NameMap names = document.m_names;
  CFilterDialog dialog(document.GetHost(), shown, names);
  dialog.OnInitDialog();
  std::vector<Step> steps;
  AddSteps(dialog.Tree().Root(), {}, true, steps);
  FilterPaths paths;
  std::vector<std::string> lines;
  for (const Step& step : steps) {
    paths.Add(step.path, step.check);
    lines.push_back((step.check ? "--check " : "--uncheck ") + ShellQuoted(step.path));
  }
  made.ShowAll();
  paths.Take(document.GetHost(), made, document.m_names);
  dialog.OnOK();
  CFilterDialog again(document.GetHost(), made, names);
  again.OnInitDialog();
  if (again.Tree().Marks() != dialog.Tree().Marks())
    return FailWith(why, "two nodes of the tree have the same path, and one of them is shown",
                    std::optional<std::vector<std::string>>());
  return lines;
}

#include "listview/colours/active_colours.h"

#include <algorithm>

#include "base/fail_with.h"
#include "base/text.h"
#include "settings/registry.h"

namespace {

constexpr const char *kShown = "Shown", *kRules = "Rules", *kSaved = "Saved";

ColourProgramPtr active;
unsigned choices = 0;

std::string Key() {
  return std::string(kRegTraceView) + "\\Colours";
}

// A set in one line. Within its texts a line end is written as \n.
std::string LineOf(const ColourRules& rules) {
  std::string line = ColourRulesText(rules);
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

std::string CleanName(std::string name) {
  for (char& c : name)
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  const std::size_t first = name.find_first_not_of(' ');
  if (first == name.npos) return {};
  return name.substr(first, name.find_last_not_of(' ') - first + 1);
}

std::string TextOf(const std::vector<SavedColours>& sets) {
  std::string text;
  for (const SavedColours& set : sets) text += set.name + '\t' + LineOf(set.rules) + '\n';
  return text;
}

void Drop(std::vector<SavedColours>& sets, const std::string& name) {
  std::erase_if(sets,
                [&](const SavedColours& set) { return CompareIgnoringCase(set.name, name) == 0; });
}

}  // namespace

UsedColours ReadUsedColours() {
  UsedColours colours;
  colours.shown = NtRegGet(HKEY_CURRENT_USER, Key(), kShown, 0U) == 1;
  const std::string text = NtRegGet(HKEY_CURRENT_USER, Key(), kRules, "");
  if (auto rules = ReadColourRules(text, nullptr)) colours.rules = std::move(*rules);
  return colours;
}

bool UseColours(const UsedColours& colours, std::string* why) {
  const std::string text = LineOf(colours.rules);
  if (text.size() > kColourFileBytes) return FailWith(why, "These rules are too long to be kept.");
  NtRegPut(HKEY_CURRENT_USER, Key(), kRules, text);
  NtRegPut(HKEY_CURRENT_USER, Key(), kShown, colours.shown ? 1U : 0U);
  active = colours.shown ? ColourProgram::Compile(colours.rules) : nullptr;
  ++choices;
  return true;
}

unsigned ColourChoices() {
  return choices;
}

const ColourProgramPtr& ActiveColours() {
  return active;
}

void ReadActiveColours() {
  active = nullptr;
  UsedColours colours = ReadUsedColours();
  if (colours.shown) active = ColourProgram::Compile(std::move(colours.rules));
}

std::vector<SavedColours> ReadSavedColours() {
  const std::string all = NtRegGet(HKEY_CURRENT_USER, Key(), kSaved, "");
  std::vector<SavedColours> sets;
  for (std::size_t from = 0; from < all.size() && sets.size() < kSavedColourSets;) {
    const std::size_t end = std::min(all.find('\n', from), all.size());
    const std::string line = all.substr(from, end - from);
    from = end + 1;
    const std::size_t tab = line.find('\t');
    if (tab == line.npos || tab == 0) continue;
    if (auto rules = ReadColourRules(line.substr(tab + 1), nullptr))
      sets.push_back({line.substr(0, tab), std::move(*rules)});
  }
  std::ranges::stable_sort(sets, [](const SavedColours& a, const SavedColours& b) {
    return CompareIgnoringCase(a.name, b.name) < 0;
  });
  return sets;
}

bool SaveColours(std::string name, const ColourRules& rules, std::string* why) {
  name = CleanName(std::move(name));
  if (name.empty()) return FailWith(why, "A set of colour rules needs a name.");
  std::vector<SavedColours> sets = ReadSavedColours();
  Drop(sets, name);
  if (sets.size() >= kSavedColourSets)
    return FailWith(why, "There are 50 saved sets. Delete one of them first.");
  sets.push_back({std::move(name), rules});
  const std::string text = TextOf(sets);
  if (text.size() > kColourSetsBytes || LineOf(rules).size() > kColourFileBytes)
    return FailWith(why, "These rules are too long to be saved. Export them to a file.");
  NtRegPut(HKEY_CURRENT_USER, Key(), kSaved, text);
  return true;
}

void DeleteSavedColours(const std::string& name) {
  std::vector<SavedColours> sets = ReadSavedColours();
  Drop(sets, name);
  NtRegPut(HKEY_CURRENT_USER, Key(), kSaved, TextOf(sets));
}

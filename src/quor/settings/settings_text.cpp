#include "quor/settings/settings_text.h"

#include <algorithm>
#include <utility>

#include "base/fail_with.h"
#include "quor/settings/plain_words.h"
#include "quor/settings/settings_words.h"

namespace {

constexpr std::size_t kFaultsMax = 16;

// Is `name` the name of that trace or component? 0: no, 1: but for its capitals, 2: yes.
int Likeness(std::string_view name, std::string_view known) {
  return !IsSameWord(name, known) ? 0 : name == known ? 2 : 1;
}

// Of "COMPONENT/CATEGORY".
int Likeness(std::string_view name, std::string_view component, std::string_view category) {
  if (name.size() != component.size() + 1 + category.size() || name[component.size()] != '/')
    return 0;
  return std::min(Likeness(name.substr(0, component.size()), component),
                  Likeness(name.substr(component.size() + 1), category));
}

}  // namespace

SettingsText SettingsText::Read(std::string_view text, std::vector<std::string>* faults) {
  SettingsText read;
  std::size_t untold = 0;
  for (bool more = true; more;) {
    const std::size_t end = text.find(';');
    more = end != std::string_view::npos;
    const std::string_view rule = WithoutBlanks(text.substr(0, end));
    if (more) text.remove_prefix(end + 1);
    std::string why;
    if (rule.empty() || read.ReadRule(rule, &why) || !faults) continue;
    faults->size() < kFaultsMax ? faults->push_back(std::move(why)) : void(++untold);
  }
  if (untold != 0)
    faults->push_back("and " + std::to_string(untold) + " more of its rules cannot be used");
  return read;
}

bool SettingsText::ReadRule(std::string_view text, std::string* why) {
  const std::size_t equals = text.rfind('=');
  if (equals == std::string_view::npos)
    return FailWith(why, InQuotes(text) + " has no \"=\" before its settings");
  std::string_view traces = WithoutBlanks(text.substr(0, equals));
  while (traces.ends_with("/*")) traces = WithoutBlanks(traces.substr(0, traces.size() - 2));
  Rule rule;
  rule.traces = traces;
  rule.words = WithoutBlanks(text.substr(equals + 1));
  if (rule.traces.starts_with("*/"))
    return FailWith(why,
                    "\"*\" stands for all traces, not for a component (in " + InQuotes(text) + ")");
  if (rule.traces.empty()) return FailWith(why, InQuotes(text) + " names no traces");
  std::string reason;
  const std::optional<unsigned> settings = SettingsOf(rule.words, &reason);
  if (!settings) return FailWith(why, reason + " (in " + InQuotes(text) + ")");
  if (m_rules.size() == kRulesMax) return FailWith(why, InQuotes(text) + " is one rule too many");
  rule.settings = *settings;
  AddRule(std::move(rule));
  return true;
}

void SettingsText::AddRule(Rule rule) {
  std::erase_if(m_rules, [&rule](const Rule& one) { return one.traces == rule.traces; });
  m_rules.push_back(std::move(rule));
}

void SettingsText::Add(const SettingsText& later) {
  for (const Rule& rule : later.m_rules) AddRule(rule);
}

int SettingsText::ExactnessOf(std::string_view traces, std::string_view component,
                              std::string_view category) {
  if (const int trace = Likeness(traces, component, category); trace != 0) return 4 + trace;
  if (const int whole = Likeness(traces, component); whole != 0) return 2 + whole;
  return traces == "*" ? 1 : 0;
}

std::optional<unsigned> SettingsText::Of(std::string_view component,
                                         std::string_view category) const {
  const Rule* holds = nullptr;
  int best = 1;
  for (const Rule& rule : m_rules) {
    const int exactness = ExactnessOf(rule.traces, component, category);
    if (exactness < best) continue;
    best = exactness;
    holds = &rule;
  }
  return holds ? std::optional(holds->settings) : std::nullopt;
}

unsigned SettingsText::AnySettings() const {
  unsigned any = 0;
  for (const Rule& rule : m_rules) any |= rule.settings;
  return any;
}

std::string SettingsText::Written() const {
  std::string text;
  for (const Rule& rule : m_rules)
    text.append(text.empty() ? "" : ";").append(rule.traces).append("=").append(rule.words);
  return text;
}

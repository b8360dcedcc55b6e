#include "shell/colours/colour_rules_dialog.h"

#include <algorithm>
#include <cstdio>

#include "base/text.h"

namespace {

constexpr char kExtension[] = ".colours";
constexpr char kNoColour[] = "A colour is written as #rrggbb: two digits each for red, green, blue";

FileDialogRequest RequestOf(const char* title) {
  FileDialogRequest request;
  request.title = title;
  request.defaultExtension = kExtension;
  request.filters = {{"Colour Rules (*.colours)", "*.colours"}, {"All Files (*.*)", "*"}};
  return request;
}

}  // namespace

CColourRulesDialog::CColourRulesDialog(Host& host, std::optional<UsedColours> own)
    : CDialog(host), m_own(std::move(own)), m_program(ColourProgram::Compile({})) {}

void CColourRulesDialog::OnInitDialog() {
  UsedColours used = m_own ? *m_own : ReadUsedColours();
  m_shown = used.shown;
  Take(std::move(used.rules));
  m_changed = false;
}

const ColourRule* CColourRulesDialog::CurrentRule() const {
  return m_current < 0 ? nullptr : &m_rules[static_cast<std::size_t>(m_current)];
}

const std::optional<WhereError>& CColourRulesDialog::ErrorOf(int rule) const {
  return m_program->ErrorOf(static_cast<std::size_t>(rule));
}

std::string CColourRulesDialog::Notice() const {
  const ColourRule* const rule = CurrentRule();
  if (!rule) return {};
  if (m_halfWritten) return kNoColour;
  if (const auto& error = ErrorOf(m_current)) return error->reason;
  const double contrast = Contrast(rule->ink, rule->ground);
  if (contrast >= kLeastContrast) return {};
  char text[100];
  // Rounded down: what is below the bound must not read as the bound.
  std::snprintf(text, sizeof text,
                "Hard to read: the contrast is %.1f, and should be %.1f at least",
                static_cast<int>(contrast * 10) / 10.0, kLeastContrast);
  return text;
}

void CColourRulesDialog::Select(int rule) {
  if (rule >= -1 && rule < static_cast<int>(m_rules.size())) Edited(rule);
}

void CColourRulesDialog::Edited(int rule) {
  m_current = rule;
  m_halfWritten = nullptr;
}

void CColourRulesDialog::Changed(bool compile) {
  m_changed = true;
  if (compile) m_program = ColourProgram::Compile(m_rules);
}

void CColourRulesDialog::Switch(int rule, bool on) {
  m_rules[static_cast<std::size_t>(rule)].on = on;
  Changed(true);
}

void CColourRulesDialog::SetName(const std::string& name) {
  if (m_current < 0) return;
  m_rules[static_cast<std::size_t>(m_current)].name = name;
  Changed(false);
}

void CColourRulesDialog::SetText(const std::string& text) {
  if (m_current < 0) return;
  m_rules[static_cast<std::size_t>(m_current)].where = text;
  Changed(true);
}

bool CColourRulesDialog::SetColour(const std::string& text, Colour ColourRule::*which) {
  const std::optional<Colour> colour = ColourOf(text);
  if (m_current < 0) return false;
  if (!colour) {
    m_halfWritten = which;
    return false;
  }
  if (m_halfWritten == which) m_halfWritten = nullptr;
  m_rules[static_cast<std::size_t>(m_current)].*which = *colour;
  Changed(false);
  return true;
}

void CColourRulesDialog::Add() {
  if (m_rules.size() >= kColourRulesMax)
    return Say("There are " + GroupDigits(kColourRulesMax) + " rules. Remove one of them first.");
  ColourRule added{"New rule", "severity >= warn", {}, {0xff, 0xee, 0xbb}};
  if (const ColourRule* const rule = CurrentRule()) {
    added.ink = rule->ink;
    added.ground = rule->ground;
  }
  m_rules.insert(m_rules.begin() + (m_current + 1), std::move(added));
  Edited(m_current + 1);
  Changed(true);
}

void CColourRulesDialog::Remove() {
  if (m_current < 0) return;
  m_rules.erase(m_rules.begin() + m_current);
  Edited(std::min(m_current, static_cast<int>(m_rules.size()) - 1));
  Changed(true);
}

bool CColourRulesDialog::MayMove(int by) const {
  const int to = m_current + by;
  return m_current >= 0 && to >= 0 && to < static_cast<int>(m_rules.size());
}

void CColourRulesDialog::Move(int by) {
  if (!MayMove(by)) return;
  std::swap(m_rules[static_cast<std::size_t>(m_current)],
            m_rules[static_cast<std::size_t>(m_current + by)]);
  Edited(m_current + by);
  Changed(true);
}

bool CColourRulesDialog::MayReplace() {
  if (!m_changed || m_rules.empty()) return true;
  return GetHost().MessageBox({.text = "The rules of this window have changed. Replace them?",
                               .icon = BoxIcon::Question,
                               .buttons = BoxButtons::YesNo,
                               .preferred = BoxAnswer::No}) == BoxAnswer::Yes;
}

void CColourRulesDialog::Take(ColourRules rules) {
  m_rules = std::move(rules);
  Edited(m_rules.empty() ? -1 : 0);
  Changed(true);
  m_changed = false;
}

void CColourRulesDialog::UseShipped(ColourGround ground) {
  if (!MayReplace()) return;
  Take(ShippedColours(ground));
  m_shown = true;
}

void CColourRulesDialog::Import() {
  const auto answer = GetHost().RunFileDialog(RequestOf("Import Colour Rules"));
  if (!answer) return;
  std::string why;
  std::optional<ColourRules> rules = LoadColourRules(answer->path, &why);
  if (!rules) return Say(why);
  if (MayReplace()) Take(std::move(*rules));
}

void CColourRulesDialog::Export() {
  if (!CheckAll()) return;
  FileDialogRequest request = RequestOf("Export Colour Rules");
  request.save = true;
  request.suggestedName = std::string("rules") + kExtension;
  const auto answer = GetHost().RunFileDialog(request);
  std::string why;
  if (answer && !SaveColourRules(answer->path, m_rules, &why)) Say(why);
}

std::vector<std::string> CColourRulesDialog::SetNames() const {
  std::vector<std::string> names;
  for (SavedColours& set : ReadSavedColours()) names.push_back(std::move(set.name));
  return names;
}

void CColourRulesDialog::LoadSet(const std::string& name) {
  for (SavedColours& set : ReadSavedColours()) {
    if (CompareIgnoringCase(set.name, name) != 0) continue;
    if (MayReplace()) Take(std::move(set.rules));
    return;
  }
  Say("There is no set of this name.");
}

void CColourRulesDialog::SaveSet(const std::string& name) {
  std::string why;
  if (!CheckAll()) return;
  if (!SaveColours(name, m_rules, &why)) return Say(why);
  m_changed = false;
}

void CColourRulesDialog::DeleteSet(const std::string& name) {
  const std::vector<std::string> names = SetNames();
  const bool known = std::ranges::any_of(
      names, [&](const std::string& each) { return CompareIgnoringCase(each, name) == 0; });
  if (!known) return Say("There is no set of this name.");
  if (GetHost().MessageBox({.text = "Delete the set \"" + name + "\"?",
                            .icon = BoxIcon::Question,
                            .buttons = BoxButtons::YesNo,
                            .preferred = BoxAnswer::No}) == BoxAnswer::Yes)
    DeleteSavedColours(name);
}

void CColourRulesDialog::Say(const std::string& text) {
  GetHost().MessageBox({.text = text, .icon = BoxIcon::Warning});
}

bool CColourRulesDialog::CheckAll() {
  if (m_halfWritten) {
    Edited(m_current);
    Say(std::string(kNoColour) + ". The rule keeps the one that it had.");
    return false;
  }
  for (std::size_t i = 0; i < m_rules.size(); ++i) {
    std::string why;
    if (CheckColourRule(m_rules[i], &why)) continue;
    Edited(static_cast<int>(i));
    Say("Rule " + std::to_string(i + 1) + ": " + why + ".");
    return false;
  }
  return true;
}

void CColourRulesDialog::OnOK() {
  if (!CheckAll()) return;
  std::string why;
  if (!UseColours({m_shown, m_rules}, &why)) return Say(why);
  CDialog::OnOK();
}

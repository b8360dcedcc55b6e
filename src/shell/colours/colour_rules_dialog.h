// "Colour Rules": the rules that lists paint by, one of which is edited, and the sets of rules.
//
// Shape    Works on a copy, which OK puts into use and keeps. A rule whose filter text is wrong
//          keeps its text and colours nothing.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "docview/dialogs/dialog.h"
#include "listview/colours/active_colours.h"
#include "where/colours/shipped_colours.h"

class CColourRulesDialog : public CDialog {
 public:
  // Ids of the controls.
  static constexpr unsigned kShown = 1201, kRules = 1202, kName = 1203, kText = 1204, kInk = 1205,
                            kGround = 1206, kAdd = 1207, kRemove = 1208, kUp = 1209, kDown = 1210,
                            kSet = 1211, kLoadSet = 1212, kSaveSet = 1213, kDeleteSet = 1214,
                            kImport = 1215, kExport = 1216, kLight = 1217, kDark = 1218,
                            kPickInk = 1219, kPickGround = 1220;
  static const char* Title() { return "Colour Rules"; }
  const char* HelpTopic() const override { return "colours"; }

  // `own`: the rules that it begins with; none: those in use.
  explicit CColourRulesDialog(Host& host, std::optional<UsedColours> own = {});
  void OnInitDialog() override;

  bool m_shown = false;  // lists paint by the rules
  const ColourRules& Rules() const { return m_rules; }
  int Current() const { return m_current; }  // -1: there are no rules
  const ColourRule* CurrentRule() const;
  // Of the rule's filter text.
  const std::optional<WhereError>& ErrorOf(int rule) const;
  // What is wrong with the rule that is edited, or does not read well; empty: nothing.
  std::string Notice() const;

  void Select(int rule);
  void Switch(int rule, bool on);
  void SetName(const std::string& name);
  void SetText(const std::string& text);
  // As "#rrggbb". False: it is written otherwise, and the rule keeps the colour that it has.
  bool SetInk(const std::string& text) { return SetColour(text, &ColourRule::ink); }
  bool SetGround(const std::string& text) { return SetColour(text, &ColourRule::ground); }
  // Below the one that is edited, which it copies but for name and text.
  void Add();
  void Remove();
  bool MayMove(int by) const;
  void Move(int by);  // by one place: -1 or 1

  // ---- sets; what is replaced is asked about if it was changed
  void UseShipped(ColourGround ground);
  void Import();
  void Export();
  std::vector<std::string> SetNames() const;
  void LoadSet(const std::string& name);
  void SaveSet(const std::string& name);
  void DeleteSet(const std::string& name);

  // A message, and the dialog stays open, if a rule cannot be kept.
  void OnOK() override;

 private:
  bool SetColour(const std::string& text, Colour ColourRule::*which);
  bool MayReplace();
  void Take(ColourRules rules);
  void Changed(bool compile);
  void Edited(int rule);
  bool CheckAll();
  void Say(const std::string& text);

  const std::optional<UsedColours> m_own;
  ColourRules m_rules;
  ColourProgramPtr m_program;  // of the rules, for their errors
  int m_current = -1;
  Colour ColourRule::*m_halfWritten = nullptr;  // what is written for it is no colour
  bool m_changed = false;
};

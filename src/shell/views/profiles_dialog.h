// "Profiles": the profiles of the user, one of which is chosen: applied to the window in front,
// saved from it, renamed, deleted, exported and imported.
//
// Shape    Each button works at once. What is replaced or deleted is asked about.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "docview/dialogs/dialog.h"
#include "views/view_text.h"

// What a box says about parts that could not be applied.
std::string MissedText(const std::string& profile, const std::string& missed);

class CProfilesDialog : public CDialog {
 public:
  // Ids of the controls.
  static constexpr unsigned kProfiles = 1241, kName = 1242, kSave = 1243, kApply = 1244,
                            kRename = 1245, kDelete = 1246, kImport = 1247, kExport = 1248;
  static const char* Title() { return "Profiles"; }
  const char* HelpTopic() const override { return "profiles"; }

  // What the window in front shows.
  using Collect = std::function<ViewState()>;
  // To that window; gives what could not be applied.
  using Apply = std::function<std::string(const ViewState&)>;
  // `saves`: the user begins with the name of a new one.
  CProfilesDialog(Host& host, Collect collect, Apply apply, bool saves);
  void OnInitDialog() override;

  bool BeginsWithName() const { return m_saves; }
  const std::vector<std::string>& Names() const { return m_names; }
  int Current() const { return m_current; }  // -1: none
  // The current one has these parts: "5 columns, filter pid == 1, colours, tree".
  std::string Description() const;
  std::string m_name;  // as it is written

  void Select(int profile);  // its name is written then
  bool HasName() const { return !CleanViewName(m_name).empty(); }
  void Save();
  void ApplyCurrent();
  void Rename();
  void Delete();
  void Import();
  void Export();

 private:
  void ReadNames(const std::string& current);
  std::string CurrentName() const;
  bool Ask(const std::string& question);
  void Say(const std::string& text);
  void Keep(Profile profile);

  const Collect m_collect;
  const Apply m_apply;
  const bool m_saves;
  std::vector<std::string> m_names;
  int m_current = -1;
};

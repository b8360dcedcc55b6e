// The words that lead a person through the wizard, whatever its window is.
//
// Shape    Words separated by blanks: "next", "back", "finish", "cancel"; "task:1"; "file:NAME" and
//          "nofile" for the file dialog that follows; "local", "remote", "same", "each"; "add:web",
//          "del:web"; "pick:orders,billing" on the page of applications; "away:web" when a machine
//          goes away.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "support/sheet_button.h"
#include "wizard/machines_page.h"
#include "wizard/network_page.h"
#include "wizard/select_page.h"

class WizardWords {
 protected:
  ~WizardWords() = default;

  virtual void UserPresses(SheetButton button) = 0;
  // A radio button, or a check box with 0 or 1.
  virtual void UserChooses(unsigned control, int number) = 0;
  // In the file dialog that follows; nothing cancels it.
  virtual void UserWillChooseFile(const std::optional<std::string>& name) = 0;
  virtual void UserAdds(const std::string& machine) = 0;
  virtual void UserDeletes(const std::string& machine) = 0;
  virtual void UserPicks(const std::vector<std::string>& apps) = 0;
  virtual void GoesAway(const std::string& machine) = 0;

  static std::vector<std::string> Split(const std::string& text, char at) {
    std::istringstream in(text);
    std::vector<std::string> parts;
    for (std::string part; std::getline(in, part, at);)
      if (!part.empty()) parts.push_back(part);
    return parts;
  }
  void DoWord(const std::string& word) {
    const std::size_t colon = word.find(':');
    const std::string what = word.substr(0, colon);
    const std::string value = colon == std::string::npos ? "" : word.substr(colon + 1);
    if (what == "next") return UserPresses(SheetButton::Next);
    if (what == "back") return UserPresses(SheetButton::Back);
    if (what == "finish") return UserPresses(SheetButton::Finish);
    if (what == "cancel") return UserPresses(SheetButton::Cancel);
    if (what == "task") return UserChooses(CWizSelectPage::kTask, std::stoi(value));
    if (what == "file") return UserWillChooseFile(value);
    if (what == "nofile") return UserWillChooseFile(std::nullopt);
    if (what == "local") return UserChooses(CWizNetworkPage::kMode, 0);
    if (what == "remote") return UserChooses(CWizNetworkPage::kMode, 1);
    if (what == "each") return UserChooses(CWizMachinesPage::kIdentical, 0);
    if (what == "same") return UserChooses(CWizMachinesPage::kIdentical, 1);
    if (what == "away") return GoesAway(value);
    if (what == "add") return UserAdds(value);
    if (what == "del") return UserDeletes(value);
    if (what == "pick") return UserPicks(Split(value, ','));
    FAIL() << "no such word: " << word;
  }
};

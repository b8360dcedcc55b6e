// "Add Application": chooses among the registered applications that a configuration does not have
// yet.
//
// Shape    An item's number is the place of its name in the sorted set, whatever order the list
//          shows.
// Threads  Interface thread.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "docview/dialogs/dialog.h"

class CAddAppDialog : public CDialog {
 public:
  static constexpr char kCaption[] = "Add Application";
  static constexpr char kLabel[] = "Application &Name:\n(select from list of registered names)";
  const char* HelpTopic() const override { return "configuration"; }

  // `note` tells why there are no names; empty if there is nothing to say.
  CAddAppDialog(Host& host, std::set<std::string> names, std::string note = {});

  // The texts of the items, in the order of the set.
  std::vector<std::string> Items() const;
  // The numbers of the selected items. Numbers without a name are ignored.
  void OnSelect(const std::set<std::size_t>& items);
  bool MayOK() const { return !m_selected.empty(); }
  // Ends the dialog with the selected names as its set. Without a selection it stays open.
  void OnOK() override;

  const std::string m_note;
  // What was offered; after OK what was chosen.
  std::set<std::string> m_names;

 private:
  std::set<std::size_t> m_selected;
};

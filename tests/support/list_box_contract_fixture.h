// A list box with four items, and what it reported, for its contract.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "controls/listbox/list_box.h"

class RecordingListBoxOwner final : public ListBoxOwner {
 public:
  void OnListBoxSelection() override { Note("selection"); }
  void OnListBoxDoubleClick() override { Note("double"); }
  bool OnListBoxKey(ListBoxKey key) override {
    Note(key == ListBoxKey::Enter ? "enter" : "delete");
    return takesKeys;
  }
  void OnListBoxContextMenu(int, int) override { Note("menu"); }
  std::string Reported() { return std::exchange(m_reported, ""); }
  bool takesKeys = true;

 private:
  void Note(const char* word) { m_reported += (m_reported.empty() ? "" : " ") + std::string(word); }
  std::string m_reported;
};

// `Harness` as support/list_box_contract.h describes it.
template <class Harness>
class ListBoxContract : public testing::Test {
 protected:
  void Make(ListBoxMode mode, int page = 5) {
    m_harness.emplace(m_owner, mode);
    m_harness->Box().AddString("lager", 3);
    m_harness->Box().AddString("Billing", 2);
    m_harness->Box().AddString("zoll", 4);
    m_harness->Box().AddString("archiv", 1);
    m_harness->SetPage(page);
    m_owner.Reported();
  }
  ListBox& Box() { return m_harness->Box(); }
  // "archiv=1 *Billing=2": a star before each selected item.
  std::string Shown() {
    std::string text;
    for (int item = 0; item < Box().Count(); ++item)
      text += (item ? " " : "") + std::string(Box().IsSelected(item) ? "*" : "") +
              Box().Text(item) + "=" + std::to_string(Box().Data(item));
    return text;
  }

  RecordingListBoxOwner m_owner;
  std::optional<Harness> m_harness;
};

// The pane of a configuration view without a screen.
#pragma once

#include <string>

#include "config/view/config_pane.h"
#include "support/fake_list_box.h"

class FakeConfigPane final : public ConfigPane {
 public:
  explicit FakeConfigPane(ListBoxOwner& owner) : m_list(owner) {}

  FakeListBox& List() override { return m_list; }
  void SetNote(const std::string& text) override { m_note = text; }
  void SetFocus() override { m_list.SetFocus(); }

  const std::string& Note() const { return m_note; }

 private:
  FakeListBox m_list;
  std::string m_note;
};

// The contract of a configuration view's pane: run for the fake and for the pane on the screen.
//
// To run it, write an adapter and instantiate the suite:
//
//   struct MyHarness {
//     explicit MyHarness(ListBoxOwner& owner);
//     ConfigPane& Pane();
//     std::string Note();          // what the user sees below the list, empty for no line
//     bool ListHasFocus();
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, ConfigPaneContract, MyHarness);
#pragma once

#include <gtest/gtest.h>

#include "config/view/config_pane.h"

class QuietListBoxOwner final : public ListBoxOwner {
 public:
  void OnListBoxSelection() override {}
  void OnListBoxDoubleClick() override {}
  bool OnListBoxKey(ListBoxKey) override { return true; }
  void OnListBoxContextMenu(int, int) override {}
};

template <class Harness>
class ConfigPaneContract : public testing::Test {
 protected:
  QuietListBoxOwner m_owner;
  Harness m_harness{m_owner};
};

TYPED_TEST_SUITE_P(ConfigPaneContract);

TYPED_TEST_P(ConfigPaneContract, TheNoteIsThereWhileItHasAText) {
  EXPECT_EQ(this->m_harness.Note(), "");
  this->m_harness.Pane().SetNote("Not connected to <b>web</b>.");
  EXPECT_EQ(this->m_harness.Note(), "Not connected to <b>web</b>.");
  this->m_harness.Pane().SetNote("");
  EXPECT_EQ(this->m_harness.Note(), "");
}

TYPED_TEST_P(ConfigPaneContract, TheFocusGoesToTheList) {
  EXPECT_FALSE(this->m_harness.ListHasFocus());
  this->m_harness.Pane().SetFocus();
  EXPECT_TRUE(this->m_harness.ListHasFocus());
}

REGISTER_TYPED_TEST_SUITE_P(ConfigPaneContract, TheNoteIsThereWhileItHasAText,
                            TheFocusGoesToTheList);

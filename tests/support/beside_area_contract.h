// What every area of panes beside the rows must do: the Qt class and the fake.
//
// A harness has Area(), Owner(), Control(i) and Tabs() ("Details *Marks"), ClickTab and ClickClose
// as a user does, and IsSeen(i): the control is what the area shows.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "shell/beside/beside_area.h"

// "front 1", "close 0".
class RecordingAreaOwner final : public BesideAreaOwner {
 public:
  void OnTab(std::size_t place) override { m_told.push_back("front " + std::to_string(place)); }
  void OnCloseTab(std::size_t place) override {
    m_told.push_back("close " + std::to_string(place));
  }
  std::vector<std::string> Told() { return std::exchange(m_told, {}); }

 private:
  std::vector<std::string> m_told;
};

template <class Harness>
class BesideAreaContract : public testing::Test {
 protected:
  using Strings = std::vector<std::string>;

  void Insert(std::size_t place, const char* title, std::size_t control) {
    Area().InsertTab(place, title, m_harness.Control(control));
  }
  BesideArea& Area() { return m_harness.Area(); }
  Harness m_harness;
};
TYPED_TEST_SUITE_P(BesideAreaContract);

TYPED_TEST_P(BesideAreaContract, TheFirstTabIsInFrontAndALaterOneBehindIt) {
  EXPECT_EQ(this->Area().Front(), 0u);
  this->Insert(0, "Marks", 0);
  EXPECT_EQ(this->m_harness.Tabs(), "*Marks");
  this->Insert(1, "Hits", 1);
  EXPECT_EQ(this->m_harness.Tabs(), "*Marks Hits");
  this->Insert(0, "Details", 2);
  EXPECT_EQ(this->m_harness.Tabs(), "Details *Marks Hits");
  EXPECT_EQ(this->Area().Front(), 1u);
  EXPECT_TRUE(this->m_harness.IsSeen(0));
  EXPECT_FALSE(this->m_harness.IsSeen(2));
  EXPECT_TRUE(this->m_harness.Owner().Told().empty());
}

TYPED_TEST_P(BesideAreaContract, OnlyTheUsersChoiceOfATabIsTold) {
  this->Insert(0, "Details", 0);
  this->Insert(1, "Marks", 1);
  this->Area().SetFront(1);
  EXPECT_EQ(this->m_harness.Tabs(), "Details *Marks");
  EXPECT_TRUE(this->m_harness.IsSeen(1));
  EXPECT_TRUE(this->m_harness.Owner().Told().empty());
  this->m_harness.ClickTab(0);
  EXPECT_EQ(this->m_harness.Tabs(), "*Details Marks");
  EXPECT_EQ(this->m_harness.Owner().Told(), (std::vector<std::string>{"front 0"}));
}

TYPED_TEST_P(BesideAreaContract, AClosedTabStaysUntilItsOwnerTakesItAway) {
  this->Insert(0, "Details", 0);
  this->Insert(1, "Marks", 1);
  this->m_harness.ClickClose(1);
  EXPECT_EQ(this->m_harness.Owner().Told(), (std::vector<std::string>{"close 1"}));
  EXPECT_EQ(this->m_harness.Tabs(), "*Details Marks");
}

TYPED_TEST_P(BesideAreaContract, ARemovedTabGivesTheFrontToTheNextOneOrElseToTheOneBefore) {
  for (std::size_t i = 0; i < 3; ++i) this->Insert(i, std::to_string(i).c_str(), i);
  this->Area().SetFront(1);
  this->Area().RemoveTab(1);
  EXPECT_EQ(this->m_harness.Tabs(), "0 *2");
  this->Area().RemoveTab(0);
  EXPECT_EQ(this->m_harness.Tabs(), "*2");
  this->Insert(0, "0", 0);
  EXPECT_EQ(this->m_harness.Tabs(), "0 *2");
  this->Area().RemoveTab(1);
  EXPECT_EQ(this->m_harness.Tabs(), "*0");
  this->Area().RemoveTab(0);
  EXPECT_EQ(this->m_harness.Tabs(), "");
  EXPECT_TRUE(this->m_harness.Owner().Told().empty());
}

TYPED_TEST_P(BesideAreaContract, ATitleIsShownAsItIsAndMayChange) {
  this->Insert(0, "Hits", 0);
  this->Area().SetTabTitle(0, "Hits of \"a&b\"");
  EXPECT_EQ(this->m_harness.Tabs(), "*Hits of \"a&b\"");
}

TYPED_TEST_P(BesideAreaContract, ATabThatDoesNotExistIsIgnored) {
  this->Area().RemoveTab(0);
  this->Insert(0, "Details", 0);
  this->Area().RemoveTab(1);
  this->Area().SetFront(7);
  this->Area().SetTabTitle(1, "x");
  EXPECT_EQ(this->m_harness.Tabs(), "*Details");
}

TYPED_TEST_P(BesideAreaContract, TheFocusGoesToTheControlInFront) {
  this->Area().SetFocus();
  EXPECT_FALSE(this->Area().HasFocus()) << "there is nothing to have it";
  this->Insert(0, "Details", 0);
  this->Insert(1, "Marks", 1);
  EXPECT_FALSE(this->Area().HasFocus());
  this->Area().SetFront(1);
  this->Area().SetFocus();
  EXPECT_TRUE(this->Area().HasFocus());
  EXPECT_TRUE(this->m_harness.ControlHasFocus(1));
}

REGISTER_TYPED_TEST_SUITE_P(BesideAreaContract, TheFirstTabIsInFrontAndALaterOneBehindIt,
                            OnlyTheUsersChoiceOfATabIsTold, AClosedTabStaysUntilItsOwnerTakesItAway,
                            ARemovedTabGivesTheFrontToTheNextOneOrElseToTheOneBefore,
                            ATitleIsShownAsItIsAndMayChange, ATabThatDoesNotExistIsIgnored,
                            TheFocusGoesToTheControlInFront);

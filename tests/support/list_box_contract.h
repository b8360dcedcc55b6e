// The contract of the list box: run for the fake and for the control on the screen.
//
// To run it, write an adapter ("harness") and instantiate the suite:
//
//   struct MyHarness {
//     MyHarness(ListBoxOwner& owner, ListBoxMode mode);
//     ListBox& Box();
//     void SetPage(int items);                     // sizes it so that CountPerPage() is `items`
//     void Click(int item, bool control = false);  // on an item that is seen
//     void DoubleClick(int item);
//     void RightClick(int item);                   // -1: below the items
//     bool Press(ListBoxKey key);                  // false: the window got the key
//   };
//   INSTANTIATE_TYPED_TEST_SUITE_P(Mine, ListBoxContract, MyHarness);
#pragma once

#include <gtest/gtest.h>

#include "controls/listbox/list_box.h"
#include "support/list_box_contract_fixture.h"

TYPED_TEST_SUITE_P(ListBoxContract);

TYPED_TEST_P(ListBoxContract, SortsItsItemsIgnoringCaseAndKeepsTheirData) {
  this->Make(ListBoxMode::One);
  EXPECT_EQ(this->Shown(), "archiv=1 Billing=2 lager=3 zoll=4");
  EXPECT_EQ(this->Box().AddString("LAGER", 5), 3) << "of equal ones the first added comes first";
  EXPECT_EQ(this->Shown(), "archiv=1 Billing=2 lager=3 LAGER=5 zoll=4");
  this->Box().ResetContent();
  EXPECT_EQ(this->Box().Count(), 0);
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ListBoxContract, FindsAWholeTextInAnyCase) {
  this->Make(ListBoxMode::One);
  EXPECT_EQ(this->Box().FindStringExact("BILLING"), 1);
  EXPECT_EQ(this->Box().FindStringExact("Bill"), -1);
}

TYPED_TEST_P(ListBoxContract, AnItemThatDoesNotExistIsIgnored) {
  this->Make(ListBoxMode::One);
  for (const int item : {-1, 4}) {
    this->Box().DeleteString(item);
    EXPECT_EQ(this->Box().Text(item), "");
    EXPECT_EQ(this->Box().Data(item), 0u);
    EXPECT_FALSE(this->Box().IsSelected(item));
  }
  EXPECT_EQ(this->Box().Count(), 4);
}

TYPED_TEST_P(ListBoxContract, BeginsWithoutASelectionAndACallSelectsOneInSilence) {
  this->Make(ListBoxMode::One);
  EXPECT_EQ(this->Box().CurSel(), -1);
  this->Box().SetCurSel(2);
  EXPECT_EQ(this->Box().CurSel(), 2);
  this->Box().SetCurSel(1);
  EXPECT_EQ(this->Shown(), "archiv=1 *Billing=2 lager=3 zoll=4");
  this->Box().SetCurSel(-1);
  EXPECT_EQ(this->Box().CurSel(), -1);
  EXPECT_EQ(this->Box().SelectedCount(), 0);
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ListBoxContract, TheSelectionStaysWithItsItem) {
  this->Make(ListBoxMode::One);
  this->Box().SetCurSel(2);
  this->Box().AddString("Bestand", 6);
  EXPECT_EQ(this->Shown(), "archiv=1 Bestand=6 Billing=2 *lager=3 zoll=4");
  EXPECT_EQ(this->Box().CurSel(), 3);
  this->Box().DeleteString(0);
  EXPECT_EQ(this->Box().CurSel(), 2);
  this->Box().DeleteString(2);
  EXPECT_EQ(this->Shown(), "Bestand=6 Billing=2 zoll=4") << "no neighbour is selected";
  EXPECT_EQ(this->Box().CurSel(), -1);
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ListBoxContract, AClickSelectsAndIsReported) {
  this->Make(ListBoxMode::One);
  this->m_harness->Click(1);
  EXPECT_EQ(this->Box().CurSel(), 1);
  EXPECT_EQ(this->m_owner.Reported(), "selection");
  this->m_harness->Click(3);
  EXPECT_EQ(this->Box().CurSel(), 3);
  EXPECT_EQ(this->Box().SelectedCount(), 1);
}

TYPED_TEST_P(ListBoxContract, ADoubleClickOnAnItemIsReported) {
  this->Make(ListBoxMode::One);
  this->m_harness->DoubleClick(2);
  EXPECT_EQ(this->m_owner.Reported(), "selection double");
  EXPECT_EQ(this->Box().CurSel(), 2);
}

TYPED_TEST_P(ListBoxContract, ARightClickSelectsWhatIsUnderItAndBesideAllItemsNothing) {
  this->Make(ListBoxMode::One);
  this->m_harness->RightClick(1);
  EXPECT_EQ(this->m_owner.Reported(), "selection menu");
  EXPECT_EQ(this->Box().CurSel(), 1);
  this->m_harness->RightClick(-1);
  EXPECT_EQ(this->m_owner.Reported(), "menu");
  EXPECT_EQ(this->Box().CurSel(), 1) << "it stays as it was";
}

TYPED_TEST_P(ListBoxContract, TheOwnerGetsDelAndEnterAndMayLeaveThemToTheWindow) {
  this->Make(ListBoxMode::One);
  this->Box().SetFocus();
  EXPECT_TRUE(this->m_harness->Press(ListBoxKey::Delete));
  EXPECT_TRUE(this->m_harness->Press(ListBoxKey::Enter));
  EXPECT_EQ(this->m_owner.Reported(), "delete enter");
  this->m_owner.takesKeys = false;
  EXPECT_FALSE(this->m_harness->Press(ListBoxKey::Enter));
}

TYPED_TEST_P(ListBoxContract, SeveralCanBeSelected) {
  this->Make(ListBoxMode::Several);
  this->m_harness->Click(0);
  this->m_harness->Click(2, true);
  EXPECT_EQ(this->Shown(), "*archiv=1 Billing=2 *lager=3 zoll=4");
  EXPECT_EQ(this->Box().SelectedCount(), 2);
  EXPECT_EQ(this->m_owner.Reported(), "selection selection");
  this->m_harness->Click(0, true);
  EXPECT_EQ(this->Shown(), "archiv=1 Billing=2 *lager=3 zoll=4");
  EXPECT_EQ(this->Box().CurSel(), 2);
}

TYPED_TEST_P(ListBoxContract, ACallSelectsSeveralInSilence) {
  this->Make(ListBoxMode::Several);
  for (const int item : {2, 0, -1, 4}) this->Box().SetSel(item, true);
  EXPECT_EQ(this->Shown(), "*archiv=1 Billing=2 *lager=3 zoll=4");
  EXPECT_EQ(this->Box().SelectedCount(), 2);
  this->Box().AddString("Bestand", 5);
  EXPECT_EQ(this->Shown(), "*archiv=1 Bestand=5 Billing=2 *lager=3 zoll=4");
  this->Box().SetSel(0, false);
  EXPECT_EQ(this->Shown(), "archiv=1 Bestand=5 Billing=2 *lager=3 zoll=4");
  EXPECT_EQ(this->Box().CurSel(), 3);
  this->Box().ResetContent();
  EXPECT_EQ(this->Box().SelectedCount(), 0);
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ListBoxContract, ACallSelectsTheseAndNoOthersInSilence) {
  this->Make(ListBoxMode::Several);
  this->Box().SetSel(2, true);
  this->Box().SelectOnly({3, 1, 0, 3, -1, 4});
  EXPECT_EQ(this->Shown(), "*archiv=1 *Billing=2 lager=3 *zoll=4");
  EXPECT_EQ(this->Box().SelectedCount(), 3);
  EXPECT_EQ(this->Box().CurSel(), 0);
  this->Box().SelectOnly({});
  EXPECT_EQ(this->Box().SelectedCount(), 0);
  EXPECT_EQ(this->Box().CurSel(), -1);
  EXPECT_EQ(this->m_owner.Reported(), "");
}

TYPED_TEST_P(ListBoxContract, SelectingAnItemScrollsItIntoView) {
  this->Make(ListBoxMode::One, 2);
  EXPECT_EQ(this->Box().CountPerPage(), 2);
  this->Box().SetCurSel(3);
  EXPECT_EQ(this->Box().TopIndex(), 2);
  this->Box().SetCurSel(0);
  EXPECT_EQ(this->Box().TopIndex(), 0);
}

REGISTER_TYPED_TEST_SUITE_P(ListBoxContract, SortsItsItemsIgnoringCaseAndKeepsTheirData,
                            FindsAWholeTextInAnyCase, AnItemThatDoesNotExistIsIgnored,
                            BeginsWithoutASelectionAndACallSelectsOneInSilence,
                            TheSelectionStaysWithItsItem, AClickSelectsAndIsReported,
                            ADoubleClickOnAnItemIsReported,
                            ARightClickSelectsWhatIsUnderItAndBesideAllItemsNothing,
                            TheOwnerGetsDelAndEnterAndMayLeaveThemToTheWindow, SeveralCanBeSelected,
                            ACallSelectsSeveralInSilence, ACallSelectsTheseAndNoOthersInSilence,
                            SelectingAnItemScrollsItIntoView);

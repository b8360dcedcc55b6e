// What every window of a property sheet does, whoever made it: run by the fake and by the window on
// the screen.
//
// To run it, write two harnesses, one for a sheet and one for a wizard, and instantiate the suites:
//
//   struct MyHarness {
//     // Opens the window of the sheet, whose pages are ContractPages.
//     explicit MyHarness(CPropertySheet& sheet);
//     std::string Title() const;
//     std::size_t Front() const;               // the page that is seen
//     std::string Text(unsigned field) const;  // on that page
//     unsigned Focus() const;                  // the field that has the focus; 0: none
//     int WidthPx() const;                     // of the window, or of its pages
//     bool CanPress(SheetButton button) const;
//     void Press(SheetButton button);          // nothing when it cannot be pressed
//     void PressEnter();
//     void ChooseTab(std::size_t place);       // of a sheet
//     void Type(unsigned field, const std::string& text);  // replaces what is there
//   };
#pragma once

#include <gtest/gtest.h>

#include "support/sheet_contract_fixture.h"

template <class Harness>
class SheetContract : public SheetFixture<Harness> {
 protected:
  SheetContract() {
    for (ContractPage* page : {&this->m_a, &this->m_b, &this->m_c}) this->m_sheet.AddPage(*page);
    this->Open();
  }
};
TYPED_TEST_SUITE_P(SheetContract);

TYPED_TEST_P(SheetContract, OpensOnItsFirstPageAndBeginsNoOther) {
  EXPECT_EQ(this->Reported(), (SheetLog{"A begins", "A active"}));
  EXPECT_EQ(this->Window().Title(), "Configuration for web");
  EXPECT_EQ(this->Window().Front(), 0U);
  EXPECT_EQ(this->Window().Text(this->kNote), "begun");
  EXPECT_EQ(this->Window().Focus(), this->kName);
  EXPECT_EQ(this->Enabled(), "ok cancel ");
}

TYPED_TEST_P(SheetContract, AnotherPageComesWhenTheOneInFrontHasAgreed) {
  this->Window().Type(this->kName, "x");
  this->Reported();
  this->Window().ChooseTab(2);
  EXPECT_EQ(this->Reported(), (SheetLog{"A asked", "C begins", "C active"}));
  EXPECT_EQ(this->Window().Front(), 2U);
  EXPECT_EQ(this->m_a.m_name, "x");
  this->Window().ChooseTab(0);
  EXPECT_EQ(this->Reported(), (SheetLog{"C asked", "A active"})) << "begins once";
  EXPECT_EQ(this->Window().Text(this->kName), "x");
}

TYPED_TEST_P(SheetContract, APageThatDoesNotAgreeStaysInFrontWithWhatWasTypedAndTheFocusItChose) {
  this->Window().Type(this->kName, "bad");
  this->Reported();
  this->Window().ChooseTab(1);
  EXPECT_EQ(this->Reported(), SheetLog{"A asked"});
  EXPECT_EQ(this->Window().Front(), 0U);
  EXPECT_EQ(this->Window().Text(this->kName), "bad");
  EXPECT_EQ(this->Window().Focus(), this->kNote);
  EXPECT_EQ(this->ReportedBy(SheetButton::Ok), SheetLog{"A asked"});
  EXPECT_FALSE(this->m_sheet.Ended());
}

TYPED_TEST_P(SheetContract, APageWithAFieldThatRefusesItsTextStaysAndLooksAtNothingElse) {
  this->Window().Type(this->kName, "bad");  // the page itself would hold the user in the note
  this->Window().Type(this->kNumber, "x");
  this->m_a.SetModified();
  this->Reported();
  this->Window().ChooseTab(1);
  EXPECT_EQ(this->Reported(), SheetLog{"A asked"});
  EXPECT_EQ(this->Window().Front(), 0U);
  EXPECT_EQ(this->Window().Focus(), this->kNumber);
  EXPECT_EQ(this->Window().Text(this->kNumber), "x");
  EXPECT_EQ(this->ReportedBy(SheetButton::Apply), SheetLog{"A asked"});
  EXPECT_EQ(this->ReportedBy(SheetButton::Ok), SheetLog{"A asked"});
  EXPECT_FALSE(this->m_sheet.Ended());
  this->Window().Type(this->kName, "good");
  this->Window().Type(this->kNumber, "7");
  this->Window().ChooseTab(1);
  EXPECT_EQ(this->Window().Front(), 1U);
  EXPECT_EQ(this->m_a.m_number, 7);
}

TYPED_TEST_P(SheetContract, OkAsksThePageInFrontAndThenTellsThePagesThatWereShownInTheirOrder) {
  this->Window().Type(this->kName, "x");
  this->Window().ChooseTab(2);
  this->Window().ChooseTab(0);
  this->Window().ChooseTab(2);
  this->Window().Type(this->kName, "z");
  EXPECT_EQ(this->ReportedBy(SheetButton::Ok), (SheetLog{"C asked", "A ok x", "C ok z"}));
  EXPECT_EQ(this->m_sheet.Result(), CDialog::kIdOk);
}

TYPED_TEST_P(SheetContract, EnterIsOk) {
  this->Reported();
  this->Window().PressEnter();
  EXPECT_EQ(this->Reported(), (SheetLog{"A asked", "A ok "}));
  EXPECT_EQ(this->m_sheet.Result(), CDialog::kIdOk);
}

TYPED_TEST_P(SheetContract, CancelTellsThePagesThatWereShownAndTakesNoData) {
  this->Window().Type(this->kName, "bad");
  EXPECT_EQ(this->ReportedBy(SheetButton::Cancel), SheetLog{"A cancel"});
  EXPECT_EQ(this->m_sheet.Result(), CDialog::kIdCancel);
  EXPECT_EQ(this->m_a.m_name, "");
}

TYPED_TEST_P(SheetContract, ApplyIsEnabledByAModifiedPageAndLeavesTheSheetOpen) {
  EXPECT_EQ(this->ReportedBy(SheetButton::Apply), SheetLog{});
  this->m_a.SetModified();
  EXPECT_EQ(this->Enabled(), "ok cancel apply ");
  this->Window().Type(this->kName, "x");
  EXPECT_EQ(this->ReportedBy(SheetButton::Apply), (SheetLog{"A asked", "A ok x"}));
  EXPECT_FALSE(this->m_sheet.Ended());
  EXPECT_EQ(this->Enabled(), "ok cancel ");
  EXPECT_EQ(this->Window().Text(this->kNote), "applied");
  EXPECT_FALSE(this->m_a.IsModified());
}

TYPED_TEST_P(SheetContract, ApplyOfAPageThatDoesNotAgreeAppliesNothingAndStaysEnabled) {
  this->m_a.SetModified();
  this->Window().Type(this->kName, "bad");
  EXPECT_EQ(this->ReportedBy(SheetButton::Apply), SheetLog{"A asked"});
  EXPECT_EQ(this->Enabled(), "ok cancel apply ");
}

TYPED_TEST_P(SheetContract, APostedTitleComesWithTheHostsQueue) {
  this->m_sheet.SetTitle("Configuration for db[*] & more");
  EXPECT_EQ(this->Window().Title(), "Configuration for web");
  this->m_host.RunPosted();
  EXPECT_EQ(this->Window().Title(), "Configuration for db[*] & more");
}

TYPED_TEST_P(SheetContract, ASheetThatIsShownAgainBeginsItsPagesAnew) {
  this->m_a.SetModified();
  this->m_sheet.SetTitle("Configuration for db");
  this->m_host.RunPosted();
  this->m_sheet.SetTitle("late");
  this->Reopen();
  EXPECT_EQ(this->Reported(), (SheetLog{"A begins", "A active"}));
  this->m_sheet.SetWizardButtons(PSWIZB_NEXT);
  this->m_host.RunPosted();
  EXPECT_EQ(this->Window().Title(), "Configuration for web") << "posted to the window before";
  EXPECT_EQ(this->Enabled(), "ok cancel ");
}

TYPED_TEST_P(SheetContract, TheWindowIsAsWideForEveryPageAsTheWidestWants) {
  const int widthPx = this->Window().WidthPx();
  EXPECT_GE(widthPx, this->m_b.m_widthPx);
  for (const std::size_t place : {1U, 2U, 0U}) {
    this->Window().ChooseTab(place);
    EXPECT_EQ(this->Window().WidthPx(), widthPx) << place;
  }
}

REGISTER_TYPED_TEST_SUITE_P(SheetContract, OpensOnItsFirstPageAndBeginsNoOther,
                            AnotherPageComesWhenTheOneInFrontHasAgreed,
                            APageThatDoesNotAgreeStaysInFrontWithWhatWasTypedAndTheFocusItChose,
                            APageWithAFieldThatRefusesItsTextStaysAndLooksAtNothingElse,
                            OkAsksThePageInFrontAndThenTellsThePagesThatWereShownInTheirOrder,
                            EnterIsOk, CancelTellsThePagesThatWereShownAndTakesNoData,
                            ApplyIsEnabledByAModifiedPageAndLeavesTheSheetOpen,
                            ApplyOfAPageThatDoesNotAgreeAppliesNothingAndStaysEnabled,
                            APostedTitleComesWithTheHostsQueue,
                            ASheetThatIsShownAgainBeginsItsPagesAnew,
                            TheWindowIsAsWideForEveryPageAsTheWidestWants);

// What every window of a wizard does, whoever made it. The harness is that of
// support/sheet_contract.h.
#pragma once

#include <string>

#include "support/sheet_contract_fixture.h"

template <class Harness>
class WizardContract : public SheetFixture<Harness> {
 protected:
  WizardContract() {
    this->m_sheet.SetWizardMode();
    for (ContractPage* page : {&this->m_a, &this->m_b, &this->m_c}) this->m_sheet.AddPage(*page);
    this->Open();
    this->Reported();
  }
  void Go(SheetButton button) {
    this->Window().Press(button);
    this->m_host.RunPosted();
    this->Reported();
  }
};
TYPED_TEST_SUITE_P(WizardContract);

TYPED_TEST_P(WizardContract, NextAndBackGoInTheOrderOfThePages) {
  EXPECT_EQ(this->ReportedBy(SheetButton::Next),
            (SheetLog{"A next", "A asked", "B begins", "B active"}));
  EXPECT_EQ(this->Window().Front(), 1U);
  EXPECT_EQ(this->ReportedBy(SheetButton::Back), (SheetLog{"B back", "B asked", "A active"}));
  EXPECT_EQ(this->Window().Front(), 0U);
}

TYPED_TEST_P(WizardContract, ThereIsNoPageBeforeTheFirstAndNoneAfterTheLast) {
  EXPECT_EQ(this->ReportedBy(SheetButton::Back), SheetLog{"A back"});
  EXPECT_EQ(this->Window().Front(), 0U);
  this->m_a.answer = this->kThird;
  this->Go(SheetButton::Next);
  EXPECT_EQ(this->ReportedBy(SheetButton::Next), SheetLog{"C next"});
  EXPECT_EQ(this->Window().Front(), 2U);
}

TYPED_TEST_P(WizardContract, AReturnedNumberNamesThePageAndMinusOneStays) {
  this->m_a.answer = -1;
  EXPECT_EQ(this->ReportedBy(SheetButton::Next), SheetLog{"A next"});
  EXPECT_EQ(this->Window().Front(), 0U);
  this->m_a.answer = this->kThird;
  EXPECT_EQ(this->ReportedBy(SheetButton::Next),
            (SheetLog{"A next", "A asked", "C begins", "C active"}));
  this->m_c.answer = this->kFirst;
  EXPECT_EQ(this->ReportedBy(SheetButton::Back), (SheetLog{"C back", "C asked", "A active"}));
  this->m_a.answer = 999;
  EXPECT_EQ(this->ReportedBy(SheetButton::Next), SheetLog{"A next"}) << "no page has this number";
  EXPECT_EQ(this->Window().Front(), 0U);
}

TYPED_TEST_P(WizardContract, APageThatStaysKeepsWhatWasTypedIntoIt) {
  this->m_a.answer = -1;
  this->Window().Type(this->kName, "x");
  this->Window().Press(SheetButton::Next);
  EXPECT_EQ(this->Window().Text(this->kName), "x");
}

TYPED_TEST_P(WizardContract, APageMayHoldTheUserWhenItsDataAreTaken) {
  this->Window().Type(this->kName, "bad");
  EXPECT_EQ(this->ReportedBy(SheetButton::Next), (SheetLog{"A next", "A asked"}));
  EXPECT_EQ(this->Window().Front(), 0U);
  EXPECT_EQ(this->Window().Focus(), this->kNote);
}

TYPED_TEST_P(WizardContract, APageWithAFieldThatRefusesItsTextStays) {
  this->Window().Type(this->kName, "bad");
  this->Window().Type(this->kNumber, "x");
  EXPECT_EQ(this->ReportedBy(SheetButton::Next), (SheetLog{"A next", "A asked"}));
  EXPECT_EQ(this->Window().Front(), 0U);
  EXPECT_EQ(this->Window().Focus(), this->kNumber);
}

TYPED_TEST_P(WizardContract, TheFocusGoesToTheFirstFieldOfThePageThatComes) {
  EXPECT_EQ(this->Window().Focus(), this->kName);
  this->Window().Type(this->kNote, "x");
  this->Go(SheetButton::Next);
  EXPECT_EQ(this->Window().Focus(), this->kName);
}

TYPED_TEST_P(WizardContract, TheTitleIsThePagesCaptionUntilAPostedOneComes) {
  EXPECT_EQ(this->Window().Title(), "A");
  this->m_b.onActive = [this] { this->m_sheet.SetTitle("B on web"); };
  this->Window().Press(SheetButton::Next);
  EXPECT_EQ(this->Window().Title(), "B");
  this->m_host.RunPosted();
  EXPECT_EQ(this->Window().Title(), "B on web");
  this->Go(SheetButton::Next);
  EXPECT_EQ(this->Window().Title(), "C");
}

TYPED_TEST_P(WizardContract, AtTheStartBackAndNextAreEnabledAndPostedButtonsComeWithTheQueue) {
  EXPECT_EQ(this->Enabled(), "cancel back next ");
  this->m_sheet.SetWizardButtons(PSWIZB_BACK | PSWIZB_NEXT);
  this->m_sheet.SetWizardButtons(PSWIZB_NEXT);  // the last one holds
  EXPECT_EQ(this->Enabled(), "cancel back next ");
  this->m_host.RunPosted();
  EXPECT_EQ(this->Enabled(), "cancel next ");
  EXPECT_EQ(this->ReportedBy(SheetButton::Back), SheetLog{});
  this->Reopen();
  EXPECT_EQ(this->Enabled(), "cancel back next ");
}

TYPED_TEST_P(WizardContract, ButtonsThatAreStillPostedHoldForTheNextPress) {
  this->m_b.onActive = [this] { this->m_sheet.SetWizardButtons(PSWIZB_BACK); };
  this->Window().Press(SheetButton::Next);
  EXPECT_EQ(this->ReportedBy(SheetButton::Next), SheetLog{});
  EXPECT_EQ(this->Window().Front(), 1U);
  EXPECT_EQ(this->Enabled(), "cancel back ");
}

TYPED_TEST_P(WizardContract, FinishStandsInThePlaceOfNextAndEndsTheWizard) {
  this->m_sheet.SetWizardButtons(PSWIZB_BACK | PSWIZB_FINISH);
  this->m_host.RunPosted();
  EXPECT_EQ(this->Enabled(), "cancel back finish ");
  this->m_a.answer = -1;
  EXPECT_EQ(this->ReportedBy(SheetButton::Finish), SheetLog{"A finish"});
  EXPECT_FALSE(this->m_sheet.Ended());
  this->m_a.answer = 0;
  this->Window().PressEnter();
  EXPECT_EQ(this->Reported(), SheetLog{"A finish"});
  EXPECT_EQ(this->m_sheet.Result(), CDialog::kIdOk);
}

TYPED_TEST_P(WizardContract, EnterIsNextAndNothingWhereNextIsDisabled) {
  this->Window().PressEnter();
  EXPECT_EQ(this->Window().Front(), 1U);
  this->m_sheet.SetWizardButtons(PSWIZB_BACK);
  this->m_host.RunPosted();
  this->Reported();
  this->Window().PressEnter();
  EXPECT_EQ(this->Reported(), SheetLog{});
  EXPECT_FALSE(this->m_sheet.Ended());
}

TYPED_TEST_P(WizardContract, APageThatEndsTheWizardIsFollowedByNoOther) {
  this->m_a.onAnswer = [this] { this->m_sheet.EndDialog(CDialog::kIdOk); };
  EXPECT_EQ(this->ReportedBy(SheetButton::Next), SheetLog{"A next"});
  EXPECT_EQ(this->m_sheet.Result(), CDialog::kIdOk);
}

TYPED_TEST_P(WizardContract, CancelEndsItFromAnyPage) {
  this->Go(SheetButton::Next);
  EXPECT_EQ(this->ReportedBy(SheetButton::Cancel), (SheetLog{"A cancel", "B cancel"}));
  EXPECT_EQ(this->m_sheet.Result(), CDialog::kIdCancel);
}

REGISTER_TYPED_TEST_SUITE_P(
    WizardContract, NextAndBackGoInTheOrderOfThePages,
    ThereIsNoPageBeforeTheFirstAndNoneAfterTheLast, AReturnedNumberNamesThePageAndMinusOneStays,
    APageThatStaysKeepsWhatWasTypedIntoIt, APageMayHoldTheUserWhenItsDataAreTaken,
    APageWithAFieldThatRefusesItsTextStays, TheFocusGoesToTheFirstFieldOfThePageThatComes,
    TheTitleIsThePagesCaptionUntilAPostedOneComes,
    AtTheStartBackAndNextAreEnabledAndPostedButtonsComeWithTheQueue,
    ButtonsThatAreStillPostedHoldForTheNextPress, FinishStandsInThePlaceOfNextAndEndsTheWizard,
    EnterIsNextAndNothingWhereNextIsDisabled, APageThatEndsTheWizardIsFollowedByNoOther,
    CancelEndsItFromAnyPage);

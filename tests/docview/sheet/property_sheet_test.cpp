// A property sheet whose window is closed, and calls that no window makes.
#include "docview/sheet/property_sheet.h"

#include "fake_sheet_harness.h"
#include "support/sheet_contract.h"

namespace {

class PropertySheet : public SheetFixture<FakeSheetHarness> {
 protected:
  PropertySheet() {
    m_sheet.AddPage(m_a);
    m_sheet.AddPage(m_b);
    Open();
    Reported();
  }
};

TEST_F(PropertySheet, AfterItsWindowIsClosedNothingPostedTakesEffect) {
  m_sheet.SetTitle("late");
  m_sheet.SetWizardButtons(PSWIZB_FINISH);
  m_window.reset();
  m_host.RunPosted();
  EXPECT_EQ(m_sheet.Title(), "Configuration for web");
  EXPECT_EQ(m_sheet.WizardButtons(), unsigned{PSWIZB_BACK | PSWIZB_NEXT});
}

TEST_F(PropertySheet, WithoutAWindowNoPageIsInFrontAndNoneIsAsked) {
  m_window.reset();
  EXPECT_EQ(m_sheet.GetActivePage(), nullptr);
  EXPECT_FALSE(m_sheet.SetActivePage(1));
  m_sheet.OnOK();
  EXPECT_FALSE(m_sheet.Ended());
  EXPECT_EQ(Reported(), SheetLog{});
  EXPECT_TRUE(m_a.UpdateData(true));
  EXPECT_TRUE(m_a.UpdateData(false));
  m_a.SetFocus(kName);
  m_a.SetModified();
  EXPECT_TRUE(m_sheet.CanApply());
}

TEST_F(PropertySheet, ApplyWithoutAModifiedPageDoesNothing) {
  m_sheet.OnApply();
  EXPECT_EQ(Reported(), SheetLog{});
}

TEST_F(PropertySheet, ThePageInFrontStaysWithoutBeingAsked) {
  EXPECT_TRUE(m_sheet.SetActivePage(0));
  EXPECT_FALSE(m_sheet.SetActivePage(2)) << "there are two";
  EXPECT_EQ(Reported(), SheetLog{});
}

TEST_F(PropertySheet, ASheetMayOpenOnAnotherPage) {
  CPropertySheet sheet(m_host, "Sheet", 1);
  sheet.AddPage(m_a);
  sheet.AddPage(m_b);
  sheet.OnInitDialog();
  const FakeSheetHarness window(sheet);
  EXPECT_EQ(window.Front(), 1U);
  EXPECT_EQ(Reported(), (SheetLog{"B begins", "B active"}));
}

}  // namespace

// The sheet as a whole, and its welcome page.
#include "wizard/wizard_sheet.h"

#include "support/wizard_fixture.h"

namespace {

class WizardSheetTest : public WizardFixture {};

}  // namespace

TEST_F(WizardSheetTest, HasSevenPagesInOrder) {
  Open();
  std::string pages;
  for (const CPropertyPage* page : Sheet().Pages())
    pages += std::to_string(page->Id()) + " " + page->Caption() + "\n";
  EXPECT_EQ(pages,
            "107 Trace Wizard: Welcome\n149 Trace Wizard: Mode\n143 Trace Wizard: Networking\n"
            "144 Trace Wizard: Machines\n145 Trace Wizard: Applications\n"
            "146 Trace Wizard: Traces\n148 Trace Wizard: Finish\n");
  EXPECT_TRUE(Sheet().IsWizard());
  EXPECT_EQ(Window().Title(), "Trace Wizard: Welcome");
  EXPECT_EQ(CTraceWizardSheet(m_host, m_program).Title(), "Setup Wizard");
}

TEST_F(WizardSheetTest, MachinesAreOrderedByTheBytesOfTheirNames) {
  Open();
  for (const char* name : {"web", "Zoll", "db", "\xC3\xA4", "Web"}) Sheet().m_machines[name];
  EXPECT_EQ(MachineNames(), "Web Zoll db web \xC3\xA4 ");
}

TEST_F(WizardSheetTest, BeginsWithTheDefaultsOfAnEmptyStore) {
  Open();
  EXPECT_EQ(Sheet().WelcomePage().m_bAutoStart, 1);
  EXPECT_EQ(Sheet().SelectPage().m_nTask, 0);
  EXPECT_EQ(Sheet().NetworkPage().m_nNetworkMode, 0);
  EXPECT_EQ(Sheet().MachinesPage().m_bIdentical, 0);
}

TEST_F(WizardSheetTest, TheAutoStartOptionTakesEffectWithoutPressingNext) {
  Open();
  EXPECT_EQ(Window().Text(CWizWelcomePage::kAutoStart), "1");
  Window().ClickAutoStart(false);
  EXPECT_EQ(Stored("Auto-start"), 0U);
  Walk("cancel");
  Open();
  EXPECT_EQ(Window().Text(CWizWelcomePage::kAutoStart), "0");
  Window().ClickAutoStart(true);
  EXPECT_EQ(Stored("Auto-start"), 1U);
}

TEST_F(WizardSheetTest, NetworkModeAndIdenticalMachinesAreRememberedFromTheLastNext) {
  Walk("next next remote next add:web same next");
  EXPECT_EQ(Where(), "Applications") << "without a machine: they are configured the same";
  EXPECT_EQ(Stored("Network Mode"), 1U);
  EXPECT_EQ(Stored("Identical Machines"), 1U);
  Open();
  EXPECT_TRUE(Sheet().IsIdentical());
  Walk("next next");
  EXPECT_EQ(Window().Text(CWizNetworkPage::kMode), "1") << "the radio button shows it";
  Walk("next add:web");
  EXPECT_EQ(Window().Text(CWizMachinesPage::kIdentical), "1");
  Walk("each back local cancel");
  EXPECT_EQ(Stored("Network Mode"), 1U) << "no Next has stored the other";
  EXPECT_EQ(Stored("Identical Machines"), 1U);
}

TEST_F(WizardSheetTest, AStoredNumberThatNoRadioButtonHasReadsAsOneOfThem) {
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Network Mode", 7U);
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Identical Machines", 9U);
  Open();
  EXPECT_EQ(Sheet().NetworkPage().m_nNetworkMode, 1);
  EXPECT_EQ(Sheet().MachinesPage().m_bIdentical, 1);
}

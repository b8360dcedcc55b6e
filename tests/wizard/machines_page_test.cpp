// The page that gathers the machines.
#include "support/wizard_fixture.h"

namespace {

class MachinesPageTest : public WizardFixture {
 protected:
  void Begin() { Walk("next next remote next"); }
  std::string Shown() { return FakeWizard::Shown(Window().machines); }
  bool MayDelete() { return Sheet().MachinesPage().MayDelete(); }
};

}  // namespace

TEST_F(MachinesPageTest, BeginsEmptyWithOnlyBack) {
  Begin();
  EXPECT_EQ(Where(), "Machines");
  EXPECT_EQ(Shown(), "");
  EXPECT_EQ(Window().Enabled(), "back");
  EXPECT_FALSE(MayDelete());
}

TEST_F(MachinesPageTest, AnAddedMachineIsConnectedAndListedAndEnablesNextAndDelete) {
  Begin();
  Walk("add:web");
  EXPECT_EQ(Shown(), "*web") << "what Delete would take";
  EXPECT_EQ(m_program.Machine("web").m_log, "connect web\nlist\n");
  EXPECT_EQ(Offered("web"), "orders shop");
  EXPECT_EQ(Window().Enabled(), "back next");
  EXPECT_TRUE(MayDelete());
}

TEST_F(MachinesPageTest, AQuestionThatIsCancelledAddsNothing) {
  Begin();
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnCancel(); });
  Sheet().MachinesPage().OnAdd();
  EXPECT_EQ(Shown(), "");
  EXPECT_EQ(Window().Enabled(), "back");
}

TEST_F(MachinesPageTest, AMachineTypedInAnotherCaseIsRefusedAsADuplicate) {
  Walk("next next local next back remote next add:web");
  Boxes();
  std::string shouted = _trc_GetHostName();
  for (char& letter : shouted) letter = static_cast<char>(std::toupper(letter));
  for (const std::string& name : {std::string("WEB"), std::string("web"), shouted}) {
    Walk("add:" + name);
    EXPECT_EQ(Boxes(), Box("Duplicate entry!  Machine not added.", "warning")) << name;
  }
  EXPECT_EQ(Sheet().m_machines.size(), 2U);
  EXPECT_EQ(Window().machines.Count(), 2);
  EXPECT_EQ(m_program.Machine("web").m_log, "connect web\nlist\n") << "nothing more is asked";
}

TEST_F(MachinesPageTest, AMachineThatCannotBeReachedIsNamedAndNotAddedAndAnotherCanBeTried) {
  Begin();
  Walk("add:moon");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to configuration server on moon"));
  EXPECT_EQ(Shown(), "");
  EXPECT_EQ(Window().Enabled(), "back");
  EXPECT_FALSE(MayDelete());
  Walk("add:web");
  EXPECT_EQ(Shown(), "*web");
}

TEST_F(MachinesPageTest, AMachineWithAnOpenConfigurationIsAddedWithoutANewConnection) {
  CConfigDoc& open = m_program.OpenConfig("Web");
  open.AddApplication("ghost");
  m_program.Machine("web").m_log.clear();
  Begin();
  Walk("add:web");
  EXPECT_EQ(m_program.Machine("web").m_log, "list\n");
  EXPECT_EQ(Sheet().m_machines.at("web").m_pConfig, open.GetConfig());
  EXPECT_EQ(Offered("web"), "ghost orders shop") << "an open handle registers it";
  EXPECT_FALSE(Sheet().m_machines.at("web").m_apps.at("ghost").m_app) << "not before Next";
  Walk("next");
  EXPECT_TRUE(Sheet().m_machines.at("web").m_apps.at("ghost").m_app);
}

TEST_F(MachinesPageTest, AMachineThatDiedUnderItsOpenConfigurationIsNamedAndNotAdded) {
  m_program.OpenConfig("web");
  m_program.Machine("web").m_away = true;
  Begin();
  Walk("add:web");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to configuration server on web"));
  EXPECT_EQ(m_log.Reported("notice"), "notice Cannot configure web: no answer in time\n");
  EXPECT_EQ(Shown(), "");
  EXPECT_EQ(MachineNames(), "");
  EXPECT_EQ(Window().Enabled(), "back");
  m_program.Machine("web").m_away = false;
  Walk("add:web");
  EXPECT_EQ(Offered("web"), "orders shop");
}

TEST_F(MachinesPageTest, WhyAMachineCannotBeReachedStandsInTheStatusBarUntilOneIs) {
  Begin();
  m_program.Machine("web").m_away = true;
  Walk("add:web");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to configuration server on web"));
  m_log.Clear();
  Walk("add:web");
  Boxes();
  EXPECT_EQ(m_log.Reported("notice"), "notice Cannot configure web: no trace service there\n");
  m_log.Clear();
  Walk("add:db del:db add:db");
  EXPECT_EQ(m_log.Reported("notice"), "notice \n") << "removed once";
}

TEST_F(MachinesPageTest, DeletingAllMachinesLeavesOnlyBack) {
  Begin();
  Walk("add:web add:db del:db");
  EXPECT_EQ(Shown(), "web");
  EXPECT_EQ(MachineNames(), "web ");
  EXPECT_EQ(Window().Enabled(), "back next");
  EXPECT_FALSE(MayDelete());
  Walk("del:web");
  EXPECT_EQ(Shown(), "");
  EXPECT_EQ(MachineNames(), "");
  EXPECT_EQ(Window().Enabled(), "back");
  EXPECT_EQ(m_program.Machine("web").m_handles, 0);
  Walk("next");
  EXPECT_EQ(Where(), "Machines");
}

TEST_F(MachinesPageTest, OfTwoNamesThatDifferInCaseOnlyTheSelectedOneIsDeleted) {
  Begin();
  Walk("add:web");
  Sheet().m_machines["WEB"] = Sheet().m_machines["web"];
  Walk("back next");
  EXPECT_EQ(Shown(), "WEB web");
  Window().machines.Click(1);
  Window().PressDelete();
  EXPECT_EQ(MachineNames(), "WEB ");
  EXPECT_EQ(Shown(), "WEB");
}

TEST_F(MachinesPageTest, AClickEnablesDeleteAndTheKeyDeletesToo) {
  Begin();
  Walk("add:web add:db back next");
  EXPECT_EQ(Shown(), "db web") << "nothing is selected when the user comes back";
  EXPECT_FALSE(MayDelete());
  EXPECT_TRUE(Sheet().MachinesPage().OnListBoxKey(ListBoxKey::Delete));
  EXPECT_EQ(Shown(), "db web");
  Window().machines.Click(0);
  EXPECT_TRUE(MayDelete());
  EXPECT_TRUE(Window().machines.Press(ListBoxKey::Delete));
  EXPECT_EQ(Shown(), "web");
  EXPECT_FALSE(Window().machines.Press(ListBoxKey::Enter)) << "Enter is the window's Next";
}

TEST_F(MachinesPageTest, AddAndDeleteKeepWhatTheUserHasSetInTheCheckBox) {
  Begin();
  Walk("same add:web");
  EXPECT_EQ(Window().Text(CWizMachinesPage::kIdentical), "1");
  Walk("each del:web");
  EXPECT_EQ(Window().Text(CWizMachinesPage::kIdentical), "0");
}

TEST_F(MachinesPageTest, WithAllMachinesTheSameEachHasTheUnionOfTheNames) {
  Begin();
  Walk("add:web add:db same next");
  EXPECT_EQ(Offered("web"), "orders shop store");
  EXPECT_EQ(Offered("db"), "orders shop store");
  EXPECT_EQ(FakeWizard::Shown(Window().applications), "orders shop store");
  EXPECT_EQ(Where(), "Applications");
}

TEST_F(MachinesPageTest, WithDifferentMachinesEachKeepsItsNamesAndTheFirstComesFirst) {
  Begin();
  Walk("add:web add:db each next");
  EXPECT_EQ(Offered("web"), "orders shop");
  EXPECT_EQ(Offered("db"), "store");
  EXPECT_EQ(Where(), "Applications on db");
}

TEST_F(MachinesPageTest, AMachineThatIsDeletedWhileItWasWorkedOnIsNotAskedAgain) {
  Begin();
  Walk("add:web add:db next pick:store next");
  EXPECT_EQ(Where(), "Traces for store on db");
  Walk("back back del:db next");
  EXPECT_EQ(Where(), "Applications on web");
}

// The walk through the pages: every step, and what decides it.
#include "support/wizard_fixture.h"
#include "wizard/walk_steps.h"

namespace {

class WholeWalk : public WizardFixture {};
class WizardWalk : public WizardFixture, public testing::WithParamInterface<WalkStep> {};

}  // namespace

TEST_P(WizardWalk, GoesAsTheTableSays) {
  const WalkStep& step = GetParam();
  m_folder.File("good.tcf", "TCF Version 3.2\nAPP: \"orders\"\n");
  m_folder.File("bad.tcf", "nonsense\n");
  Walk(step.words);
  EXPECT_EQ(Where().substr(0, step.from.size()), step.from);
  Walk(step.by);
  EXPECT_EQ(Where(), step.to);
  EXPECT_EQ(Boxes(), step.says.empty() ? "" : Box(step.says));
}

INSTANTIATE_TEST_SUITE_P(FirstPages, WizardWalk, testing::ValuesIn(FirstPages()));
INSTANTIATE_TEST_SUITE_P(Forward, WizardWalk, testing::ValuesIn(Forward()));
INSTANTIATE_TEST_SUITE_P(Backward, WizardWalk, testing::ValuesIn(Backward()));

TEST_F(WholeWalk, EachPageSetsItsButtons) {
  std::string buttons;
  const auto note = [&] { buttons += Where() + ": " + Window().Enabled() + "\n"; };
  Open();
  note();
  for (const char* words :
       {"next", "next", "remote next", "add:web", "next", "pick:orders", "next", "next"}) {
    Walk(words);
    note();
  }
  EXPECT_EQ(buttons,
            "Welcome: next\nMode: back next\nNetworking: back next\nMachines: back\n"
            "Machines: back next\nApplications on web: back\nApplications on web: back next\n"
            "Traces for orders on web: back next\nFinish: back finish\n");
}

TEST_F(WholeWalk, WithDifferentMachinesItGoesOncePerMachineInTheOrderOfTheirBytes) {
  m_program.Machine("Zebra").Run("first", {"Net/Open"});
  Walk("next next remote next");
  std::string seen;
  for (const char* words : {"add:web add:db add:Zebra each next", "pick:first next", "next",
                            "pick:store next", "next", "pick:shop next", "next"}) {
    Walk(words);
    seen += Where() + "\n";
  }
  EXPECT_EQ(seen,
            "Applications on Zebra\nTraces for first on Zebra\nApplications on db\n"
            "Traces for store on db\nApplications on web\nTraces for shop on web\nFinish\n");
}

TEST_F(WholeWalk, WithIdenticalMachinesItGoesOnceAndTheOthersGetCopies) {
  Walk("next next remote next add:web add:db same next pick:orders next next");
  EXPECT_EQ(Where(), "Finish");
  const WizMachine& first = Sheet().m_machines.at("db");
  const WizMachine& second = Sheet().m_machines.at("web");
  EXPECT_EQ(first.m_apps.at("orders").m_app, second.m_apps.at("orders").m_app);
  EXPECT_EQ(Offered("web"), "*orders shop store");
  EXPECT_EQ(second.m_pConfig, first.m_pConfig);
}

TEST_F(WholeWalk, BackAndForthOverSeveralMachinesEndsAtTheSamePlace) {
  Walk("next next remote next add:web add:db each next pick:store next next pick:orders,shop next");
  EXPECT_EQ(Where(), "Traces for orders on web");
  Walk("next next");
  EXPECT_EQ(Where(), "Finish");
  std::string seen;
  for (int step = 0; step < 6; ++step) {
    Walk("back");
    seen += Where() + "\n";
  }
  EXPECT_EQ(seen,
            "Traces for shop on web\nTraces for orders on web\nApplications on web\n"
            "Traces for store on db\nApplications on db\nMachines\n");
  seen.clear();
  for (int step = 0; step < 6; ++step) {
    Walk("next");
    seen += Where() + "\n";
  }
  EXPECT_EQ(seen,
            "Applications on db\nTraces for store on db\nApplications on web\n"
            "Traces for orders on web\nTraces for shop on web\nFinish\n");
}

TEST_F(WholeWalk, MachinesThatAreReplacedOnTheWayLeaveNoPlaceBehind) {
  Walk("next next remote next add:web add:db each next pick:store next next pick:shop next next");
  EXPECT_EQ(Where(), "Finish");
  Walk("back back back back back del:db del:web back local next");
  EXPECT_EQ(Where(), "Applications on THIS");
  WizMachines& machines = Sheet().m_machines;
  EXPECT_EQ(Sheet().ApplicationPage().m_itMachine.In(machines), machines.begin());
  Walk("pick:orders next next finish");
  EXPECT_EQ(Where(), "ended");
}

TEST_F(WholeWalk, MachinesOfTheSameConfigurationAreOnlyForTheRemoteMode) {
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Identical Machines", 1U);
  Walk("next next local next");
  EXPECT_EQ(Where(), "Applications on THIS");
  Walk("pick:orders next next back");
  EXPECT_EQ(Where(), "Traces for orders");
}

// The walk through the pages: every step, and what decides it.
#include "support/wizard_fixture.h"

namespace {

struct Step {
  std::string from;   // the page
  std::string when;   // the condition
  std::string words;  // how to come there and to meet the condition
  std::string by;     // the button
  std::string to;     // what stands in front then
};

// Words that lead to a page. The machines are "db" (store) and "web" (orders,
// shop), in this order; this one has billing and orders.
const char kMode[] = "next ", kNetwork[] = "next task:0 next ";
std::string Here(const std::string& words) {
  return kNetwork + ("local next " + words);
}
std::string Remote(const std::string& words) {
  return kNetwork + ("remote next add:web add:db " + words);
}
std::string Each(const std::string& words) {
  return Remote("each next " + words);
}
std::string Same(const std::string& words) {
  return Remote("same next " + words);
}

std::vector<Step> FirstPages() {
  return {
      {"Welcome", "", "", "next", "Mode"},
      {"Mode", "new setup", kMode + std::string("task:0"), "next", "Networking"},
      {"Mode", "configuration opened", kMode + std::string("task:1 file:good.tcf"), "next",
       "ended"},
      {"Mode", "traces opened", kMode + std::string("task:2 file:good.trc"), "next", "ended"},
      {"Mode", "no configuration chosen", kMode + std::string("task:1 nofile"), "next", "Mode"},
      {"Mode", "no traces chosen", kMode + std::string("task:2 nofile"), "next", "Mode"},
      {"Mode", "configuration not opened", kMode + std::string("task:1 file:bad.tcf"), "next",
       "Mode"},
      {"Mode", "traces not opened", kMode + std::string("task:2 file:bad.trc"), "next", "Mode"},
      {"Mode", "", kMode, "back", "Welcome"},
      {"Networking", "local, answers", kNetwork + std::string("local"), "next",
       "Applications on THIS"},
      {"Networking", "local, no answer", kNetwork + std::string("local away:localhost"), "next",
       "Networking"},
      {"Networking", "remote", kNetwork + std::string("remote"), "next", "Machines"},
      {"Networking", "", kNetwork, "back", "Mode"},
      {"Machines", "different", Remote("each"), "next", "Applications on db"},
      {"Machines", "identical", Remote("same"), "next", "Applications"},
      {"Machines", "", Remote(""), "back", "Networking"},
  };
}

std::vector<Step> Forward() {
  return {
      {"Applications", "local", Here("pick:orders,billing"), "next", "Traces for billing"},
      {"Applications", "different", Each("pick:store"), "next", "Traces for store on db"},
      {"Applications", "identical", Same("pick:store,shop"), "next", "Traces for shop"},
      {"Traces", "another follows, local", Here("pick:orders,billing next"), "next",
       "Traces for orders"},
      {"Traces", "another follows, different", Each("pick:store next next pick:orders,shop next"),
       "next", "Traces for shop on web"},
      {"Traces", "another follows, identical", Same("pick:store,shop next"), "next",
       "Traces for store"},
      {"Traces", "none follows, local", Here("pick:billing next"), "next", "Finish"},
      {"Traces", "none follows, identical", Same("pick:shop next"), "next", "Finish"},
      {"Traces", "none follows, another machine", Each("pick:store next"), "next",
       "Applications on web"},
      {"Traces", "none follows, last machine", Each("pick:store next next pick:shop next"), "next",
       "Finish"},
      {"Finish", "", Here("pick:billing next next"), "finish", "ended"},
  };
}

std::vector<Step> Backward() {
  return {
      {"Finish", "local", Here("pick:orders,billing next next next"), "back", "Traces for orders"},
      {"Finish", "different", Each("pick:store next next pick:orders,shop next next next"), "back",
       "Traces for shop on web"},
      {"Finish", "identical", Same("pick:orders,shop next next next"), "back", "Traces for shop"},
      {"Traces", "an earlier one, local", Here("pick:orders,billing next next"), "back",
       "Traces for billing"},
      {"Traces", "an earlier one, different",
       Each("pick:store next next pick:orders,shop next next"), "back", "Traces for orders on web"},
      {"Traces", "none before", Here("pick:billing next"), "back", "Applications on THIS"},
      {"Traces", "none selected before", Here("pick:orders next"), "back", "Applications on THIS"},
      {"Traces", "none before, later machine", Each("pick:store next next pick:orders next"),
       "back", "Applications on web"},
      {"Applications", "local", Here(""), "back", "Networking"},
      {"Applications", "identical", Same(""), "back", "Machines"},
      {"Applications", "first machine", Each(""), "back", "Machines"},
      {"Applications", "later machine", Each("pick:store next next"), "back",
       "Traces for store on db"},
  };
}

class WholeWalk : public WizardFixture {};
class WizardWalk : public WizardFixture, public testing::WithParamInterface<Step> {};

void PrintTo(const Step& step, std::ostream* to) {
  *to << step.from << ", " << step.by << (step.when.empty() ? "" : ": ") << step.when;
}

}  // namespace

TEST_P(WizardWalk, GoesAsTheTableSays) {
  const Step& step = GetParam();
  m_folder.File("good.tcf", "TCF Version 3.2\nAPP: \"orders\"\n");
  m_folder.File("bad.tcf", "nonsense\n");
  Walk(step.words);
  EXPECT_EQ(Where().substr(0, step.from.size()), step.from);
  Walk(step.by);
  EXPECT_EQ(Where(), step.to);
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

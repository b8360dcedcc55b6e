// The last page: what Finish makes of the tables.
#include "config/used_machines.h"
#include "docview/dialogs/work_box.h"
#include "support/short_pieces.h"
#include "support/wizard_fixture.h"

namespace {

constexpr unsigned kSupport = 7;

class FinishPageTest : public WizardFixture {
 protected:
  ~FinishPageTest() override { g_quickClose = false; }
  FakeMachine& Machine(const std::string& name) { return m_program.Machine(name); }
  // Gives all traces of the page in front these settings.
  void Set(unsigned settings) { Window().traces.GiveAll(settings); }
  // To the last page: orders of this machine, all its traces at kSupport.
  void WalkLocal() {
    Walk("next next local next pick:orders next");
    Set(kSupport);
    Walk("next");
  }
  // To the last page: store of db and orders of web.
  void WalkRemote() {
    Walk("next next remote next add:web add:db each next pick:store next");
    Set(kSupport);
    Walk("next pick:orders next");
    Set(kSupport);
    Walk("next");
  }
  static std::string Names(const CConfigDoc& config) {
    std::string names;
    for (const QuorPtr<trace_App_i>& app : config.GetApplications()->m_apps)
      names += app->GetAppName() + " ";
    return names;
  }
  std::string Question(const std::string& app, const std::string& answer) {
    return "box Tessera [question] \"Some traces are still active in " + app +
           ".  Do you want to turn them off?\" (Yes, No, Cancel) -> " + answer + "\n";
  }
};

constexpr char kNoConnection[] = "Error trying to connect to configuration server.";

}  // namespace

TEST_F(FinishPageTest, InLocalModeAWindowIsNamedByTheHostNameAndTheMonitorOpensLast) {
  WalkLocal();
  EXPECT_EQ(Where(), "Finish");
  EXPECT_EQ(Machine("localhost").InForce("orders"), "Net/Open=4 Disk/Read=4") << "nothing went yet";
  m_log.Clear();
  Walk("finish");
  EXPECT_EQ(Where(), "ended");
  ASSERT_EQ(m_program.Configs(), 1U);
  EXPECT_EQ(m_program.Config(0).GetTitle(), "Configuration on " + _trc_GetHostName());
  EXPECT_EQ(Names(m_program.Config(0)), "orders ");
  EXPECT_EQ(Machine("localhost").InForce("orders"), "Net/Open=7 Disk/Read=7");
  EXPECT_TRUE(m_program.Config(0).IsModified()) << "it is not in a file";
  EXPECT_EQ(m_log.Reported("child show"), "child show\n");
  EXPECT_EQ(m_log.Reported("monitor"), "monitor\n");
  EXPECT_EQ(m_log.Lines().back(), "monitor");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(m_host.WaitCursors(), 0);
}

TEST_F(FinishPageTest, TheApplicationsOfAMachineAreAddedInTheOrderOfTheirNames) {
  Machine("localhost").Run("Zoll", {"Row/Put"}, 1);
  Walk("next next local next pick:orders,billing,Zoll next next next next");
  Machine("localhost").m_log.clear();
  Walk("finish");
  EXPECT_EQ(Names(m_program.Config(0)), "Zoll billing orders ");
  EXPECT_EQ(
      Machine("localhost").m_log,
      "connect " + _trc_GetHostName() +
          "\nopen Zoll\nsubmit Zoll\nopen billing\nsubmit billing\nopen orders\nsubmit orders\n");
}

TEST_F(FinishPageTest, EachMachineGetsAWindowInTheOrderOfTheirNamesAndTheMonitorComesOnce) {
  WalkRemote();
  Walk("finish");
  ASSERT_EQ(m_program.Configs(), 2U);
  EXPECT_EQ(m_program.Config(0).GetMachineName(), "db");
  EXPECT_EQ(Names(m_program.Config(0)), "store ");
  EXPECT_EQ(m_program.Config(1).GetMachineName(), "web");
  EXPECT_EQ(Names(m_program.Config(1)), "orders ");
  EXPECT_EQ(Machine("db").InForce("store"), "Row/Put=7");
  EXPECT_EQ(Machine("web").InForce("orders"), "Net/Open=7 Disk/Read=7");
  EXPECT_EQ(Machine("web").InForce("shop"), "Cart/Add=0");
  EXPECT_EQ(m_log.Reported("monitor"), "monitor\n");
  EXPECT_EQ(UsedMachines(), (std::vector<std::string>{"web", "db"}));
}

TEST_F(FinishPageTest, WithIdenticalMachinesEachGetsTheSameApplicationsAndSettings) {
  Machine("db").Run("orders", {"Disk/Read", "Disk/Write", "Net/Open"}, 3);
  Machine("db").m_apps["orders"].sinkName = "mars";
  Walk("next next remote next add:web add:db same next pick:orders next");
  Set(kSupport);
  Walk("next finish");
  ASSERT_EQ(m_program.Configs(), 2U);
  EXPECT_EQ(Names(m_program.Config(0)), "orders ");
  EXPECT_EQ(Names(m_program.Config(1)), "orders ");
  EXPECT_EQ(Machine("db").InForce("orders"), "Disk/Read=7 Disk/Write=7 Net/Open=7");
  EXPECT_EQ(Machine("web").InForce("orders"), "Net/Open=7 Disk/Read=7");
  EXPECT_EQ(Machine("web").m_apps["orders"].sinkName, "mars") << "the first machine's sink";
}

TEST_F(FinishPageTest, AnOpenWindowIsReusedAfterItsQuestions) {
  CConfigDoc& open = m_program.OpenConfig("WEB");
  open.AddApplication("orders");
  open.AddApplication("shop");
  Machine("web").m_apps["orders"].traces[0].settings = 15;
  open.GetApplications()->m_apps.front()->Refresh();
  Walk("next next remote next add:web next pick:orders next next");
  Boxes();
  m_host.AnswerBox(BoxAnswer::Yes);
  Walk("finish");
  EXPECT_EQ(Boxes(), Question("orders", "Yes")) << "shop has no active traces";
  EXPECT_EQ(m_program.Configs(), 1U) << "no second window";
  EXPECT_EQ(Names(open), "orders ");
  EXPECT_EQ(Machine("web").InForce("orders"), "Net/Open=15 Disk/Read=0") << "as on the page";
  EXPECT_EQ(Where(), "ended");
}

TEST_F(FinishPageTest, AQuestionThatIsCancelledComesAgainUntilItIsAnswered) {
  CConfigDoc& open = m_program.OpenConfig("web");
  Machine("web").m_apps["orders"].traces[0].settings = 15;
  open.AddApplication("orders");
  Walk("next next remote next add:web next pick:shop next next");
  Boxes();
  for (const BoxAnswer answer : {BoxAnswer::Cancel, BoxAnswer::Cancel, BoxAnswer::No})
    m_host.AnswerBox(answer);
  Walk("finish");
  EXPECT_EQ(Boxes(),
            Question("orders", "Cancel") + Question("orders", "Cancel") + Question("orders", "No"));
  EXPECT_EQ(Names(open), "shop ");
  EXPECT_EQ(Machine("web").InForce("orders"), "Net/Open=15 Disk/Read=0");
  EXPECT_EQ(m_log.Reported("monitor"), "monitor\n");
}

// Ends the program while a box is up.
TEST_F(FinishPageTest, AProgramThatMustEndWhileAQuestionIsUpOpensNothingMore) {
  CConfigDoc& open = m_program.OpenConfig("db");
  Machine("db").m_apps["store"].traces[0].settings = 15;
  open.AddApplication("store");
  WalkRemote();
  Boxes();
  m_host.m_onBox = [] { g_quickClose = true; };
  Walk("finish");
  EXPECT_EQ(Boxes(), Question("store", "Cancel")) << "once";
  EXPECT_EQ(Names(open), "");
  EXPECT_EQ(Machine("db").InForce("store"), "Row/Put=15") << "nothing is sent behind the box";
  EXPECT_EQ(m_program.Configs(), 1U);
  EXPECT_EQ(Machine("web").InForce("orders"), "Net/Open=0 Disk/Read=0");
  EXPECT_EQ(m_log.Reported("monitor"), "");
}

TEST_F(FinishPageTest, AMachineThatIsAwayIsSkippedWithItsMessageAndTheOthersGoOn) {
  WalkRemote();
  Machine("db").m_away = true;
  Walk("finish");
  EXPECT_EQ(Boxes(), Box(kNoConnection));
  EXPECT_EQ(m_log.Reported("notice"), "notice Cannot configure db: no trace service there\n");
  ASSERT_EQ(m_program.Configs(), 1U);
  EXPECT_EQ(m_program.Config(0).GetMachineName(), "web");
  EXPECT_EQ(Machine("web").InForce("orders"), "Net/Open=7 Disk/Read=7");
  EXPECT_EQ(m_log.Reported("monitor"), "monitor\n");
  EXPECT_EQ(Where(), "ended");
  EXPECT_EQ(UsedMachines(), std::vector<std::string>{"web"});
}

TEST_F(FinishPageTest, AllMachinesThatAreAwayAreNamedInOneNotice) {
  WalkRemote();
  Machine("db").m_away = Machine("web").m_away = true;
  Walk("finish");
  EXPECT_EQ(Boxes(), Box(kNoConnection) + Box(kNoConnection));
  EXPECT_EQ(
      m_log.Reported("notice"),
      "notice 2 of 2 machines are not wholly configured: db (no trace service there), web (no "
      "trace service there)\n");
}

TEST_F(FinishPageTest, ManyApplicationsAreLongWorkThatCanBeCancelled) {
  const ShortPieces pieces(m_host);
  Walk("next next remote next add:web add:db each next pick:store next next");
  m_host.AnswerWorkBox([this](CDialog& box) { m_host.Finish(box); });
  Walk("pick:orders,shop next next next");
  EXPECT_EQ(Where(), "Finish");
  m_host.AnswerWorkBox([](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    EXPECT_STREQ(box.Message(), "Configuring applications...");
    EXPECT_EQ(box.Progress(), 500);
    dialog.OnCancel();
  });
  Machine("web").m_log.clear();
  Walk("finish");
  EXPECT_EQ(Where(), "ended");
  EXPECT_EQ(Names(m_program.Config(0)), "store ");
  EXPECT_EQ(Names(m_program.Config(1)), "orders ");
  EXPECT_EQ(Machine("web").m_log, "connect web\nopen orders\nsubmit orders\n");
  EXPECT_EQ(m_log.Reported("monitor"), "monitor\n");
  EXPECT_EQ(m_log.Reported("notice"),
            "notice 1 of 2 machines is not wholly configured: web (cancelled after 1 of 2 "
            "applications)\n");
}

TEST_F(FinishPageTest, BehindACancelNoFurtherMachineIsAsked) {
  const ShortPieces pieces(m_host);
  const auto finish = [this](CDialog& box) { m_host.Finish(box); };
  Machine("db").Run("zoll", {"Net/Open"});
  m_host.AnswerWorkBox(finish);
  Walk("next next remote next add:web add:db each next pick:store,zoll next next next");
  Walk("pick:orders next next");
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  Walk("finish");
  EXPECT_EQ(m_program.Configs(), 1U);
  EXPECT_EQ(m_log.Reported("notice"),
            "notice 2 of 2 machines are not wholly configured: db (cancelled after 1 of 2 "
            "applications), web (cancelled)\n");
}

TEST_F(FinishPageTest, AMachineThatGoesAwayAmidItsApplicationsIsAskedAndToldOnce) {
  CConfigDoc& open = m_program.OpenConfig("web");
  Walk("next next remote next add:web next pick:orders,shop next next next");
  Boxes();
  Machine("web").m_away = true;
  Machine("web").m_log.clear();
  Walk("finish");
  EXPECT_EQ(Boxes(), Box(kNoConnection));
  EXPECT_EQ(Machine("web").m_log, "open orders\n");
  EXPECT_EQ(Names(open), "");
  EXPECT_EQ(m_log.Reported("monitor"), "monitor\n");
}

TEST_F(FinishPageTest, AMachineThatFallsSilentNeedsNoBoxForTheRest) {
  Walk("next next local next pick:orders,billing next next next");
  const ShortPieces pieces(m_host);
  m_host.WantNoWorkBox();
  FakeMachine& here = Machine("localhost");
  here.m_onSubmit = [&here] { here.m_away = here.m_waited = true; };
  Walk("finish");
  EXPECT_EQ(Boxes(), Box(kNoConnection));
  EXPECT_EQ(m_log.Reported("notice"), "notice Cannot configure " + _trc_GetHostName() +
                                          ": it has taken 1 of 2 applications\n");
}

TEST_F(FinishPageTest, AMachineThatIsUpAndGivesNoHandleIsAskedOnceMoreAndToldOnce) {
  Walk("next next local next pick:orders,billing next next next");
  Machine("localhost").m_refusesOpen = true;
  Machine("localhost").m_log.clear();
  Walk("finish");
  EXPECT_EQ(Boxes(), Box(kNoConnection));
  EXPECT_EQ(Machine("localhost").m_log,
            "connect " + _trc_GetHostName() + "\nopen billing\nlist\nopen billing\n");
  EXPECT_EQ(m_log.Reported("notice"), "notice Cannot configure " + _trc_GetHostName() +
                                          ": it has taken 0 of 2 applications\n");
  EXPECT_EQ(Where(), "ended");
}

TEST_F(FinishPageTest, AMachineNeedsToGiveNoMoreHandlesThanThereAreApplications) {
  Machine("localhost").Run("zoll", {"Net/Open"});
  Machine("localhost").m_apps["billing"].instances = 0;  // its handle is all that holds it
  Machine("localhost").m_openMax = 3;
  Walk("next next local next");
  Sheet().m_machines.begin()->second.m_apps["billing"] = {};
  Sheet().ApplicationPage().OnSetActive();
  Walk("pick:billing,orders,zoll next");
  Set(kSupport);
  Walk("next next next finish");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Names(m_program.Config(0)), "billing orders zoll ");
  EXPECT_EQ(Machine("localhost").InForce("billing"), "Net/Open=7");
}

TEST_F(FinishPageTest, TheHandlesOfUnselectedApplicationsAndOfCopiesAreGivenBackFirst) {
  Machine("db").Run("orders", {"Disk/Read"}, 3);
  Machine("db").Run("zoll", {"Net/Open"});
  Machine("db").m_openMax = 3;
  Walk("next next remote next add:web add:db same next pick:zoll next back");
  Walk("pick:orders,store next next next");
  EXPECT_EQ(Machine("db").m_open["zoll"], 1);
  Walk("finish");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Names(m_program.Config(0)), "orders store ");
  EXPECT_EQ(Names(m_program.Config(1)), "orders store ");
}

TEST_F(FinishPageTest, AMachineThatTakesNoSubmitIsNotToldInABoxButTheWindowKnows) {
  WalkLocal();
  Machine("localhost").m_refuses = true;
  Walk("finish");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(m_program.Config(0).NotInForce(), std::set<std::string>{"orders"});
  EXPECT_EQ(Where(), "ended");
}

TEST_F(FinishPageTest, OnlyAWindowThatWasFilledFromAFileCountsAsSaved) {
  WalkRemote();
  Sheet().m_machines.at("db").m_strConfigFile = "/tmp/a.tcf";
  Walk("finish");
  EXPECT_FALSE(m_program.Config(0).IsModified());
  EXPECT_TRUE(m_program.Config(1).IsModified());
}

TEST_F(FinishPageTest, AnEntryWithoutAHandleIsPassedOver) {
  Walk("next next local next pick:orders,billing next next next");
  Sheet().m_machines.begin()->second.m_apps.at("billing").m_app = nullptr;
  Walk("finish");
  EXPECT_EQ(Names(m_program.Config(0)), "orders ");
}

TEST_F(FinishPageTest, WithoutMachinesNoMonitorOpens) {
  WalkLocal();
  Sheet().m_machines.clear();
  Walk("back");
  EXPECT_EQ(Where(), "Finish") << "there is nothing to go back to";
  Walk("finish");
  EXPECT_EQ(Where(), "ended");
  EXPECT_EQ(m_log.Reported("monitor"), "");
}

TEST_F(FinishPageTest, BackGoesToTheLastSelectedApplicationOfTheLastMachine) {
  Machine("web").Run("zebra", {"Net/Open"});
  Walk(
      "next next remote next add:web add:db each next pick:store next next pick:orders,shop next "
      "next next");
  EXPECT_EQ(Where(), "Finish");
  Walk("back");
  EXPECT_EQ(Where(), "Traces for shop on web");
}

TEST_F(FinishPageTest, BackWithIdenticalMachinesGoesToTheFirstMachine) {
  Walk("next next remote next add:web add:db same next pick:orders next next back");
  EXPECT_EQ(Where(), "Traces for orders");
  WizMachines& machines = Sheet().m_machines;
  EXPECT_EQ(Sheet().ApplicationPage().m_itMachine.In(machines), machines.begin());
}

TEST_F(FinishPageTest, BackWithNothingSelectedGoesToTheApplications) {
  WalkLocal();
  for (auto& [name, app] : Sheet().m_machines.begin()->second.m_apps) app.m_bSelected = false;
  Walk("back");
  EXPECT_EQ(Where(), "Applications on THIS");
}

TEST_F(FinishPageTest, TheWizardsOwnHandlesAreReleasedWithTheSheet) {
  WalkLocal();
  Walk("finish");
  Close();
  EXPECT_EQ(Machine("localhost").m_handles, 2) << "the window's connection and application";
}

// Machines that refuse or die under the wizard, in its window: what is told, and how it goes on.
#include "wizard/ui/live/wizard_live_fixture.h"

namespace {

constexpr char kNotAdded[] = "Error trying to connect to configuration server on ";
constexpr char kNotReached[] = "Error trying to connect to configuration server.";

class RefusalTest : public WizardFleet {
 protected:
  std::string Notice() {
    Settle();
    return Face().Panes().PaneText(kPaneMessage).toStdString();
  }
  // From the page of machines: the store of "db" at all its traces.
  static void Finish(WizardUser& user) {
    user.Do("next pick:store next give:max next");
    EXPECT_EQ(user.Where(), "Finish");
    user.Do("finish");
  }
  void ExpectOnlyDbConfigured() {
    EXPECT_NE(Settings("db", "store").find("Stack"), std::string::npos) << Settings("db", "store");
    EXPECT_EQ(Windows(), (std::vector<std::string>{"Configuration on " + Name("db"),
                                                   "Traces sent to " + _trc_GetHostName()}));
  }
};

}  // namespace

// Its certificates are from another authority: neither side trusts the other.
TEST_F(RefusalTest, AMachineWhoseCertificateNobodyTrustsIsNotAddedAndTheWizardGoesOn) {
  QuordProcess stranger;
  ASSERT_EQ(stranger.Run({"keys", "init"}), 0) << stranger.Log();
  stranger.Start({"--listen", "127.0.0.1:0"});
  setenv("QUOR_SOCKET", m_fleet.Service(0).SocketPath().c_str(), 1);
  setenv("QUOR_KEYS", m_fleet.Keys("configure").c_str(), 1);
  const std::string name = "127.0.0.1:" + stranger.Port();
  RunWizard([&](WizardUser& user) {
    user.Do("next next remote next add:" + name);
    EXPECT_EQ(user.Boxes(), kNotAdded + name);
    EXPECT_EQ(user.Items("machines"), "");
    EXPECT_FALSE(user.CanPress(SheetButton::Next));
    EXPECT_TRUE(Notice().starts_with("Cannot configure " + name + ": ")) << Notice();
    EXPECT_NE(Notice().find("certificate"), std::string::npos) << Notice();
    user.Do("add:db add:" + name);
    EXPECT_EQ(user.Boxes(), kNotAdded + name);
    EXPECT_EQ(user.Items("machines"), "*db");
    Finish(user);
  });
  ExpectOnlyDbConfigured();
}

TEST_F(RefusalTest, ACertificateThatMayOnlyMonitorAddsNoMachineAndTheWizardGoesOn) {
  RunWizard([&](WizardUser& user) {
    setenv("QUOR_KEYS", m_fleet.Keys("monitor").c_str(), 1);
    user.Do("next next remote next add:db");
    EXPECT_EQ(user.Boxes(), kNotAdded + Name("db"));
    EXPECT_EQ(user.Items("machines"), "");
    EXPECT_NE(Notice().find("the certificate does not allow to configure"), std::string::npos)
        << Notice();
    setenv("QUOR_KEYS", m_fleet.Keys("configure").c_str(), 1);
    user.Do("add:db");
    EXPECT_EQ(user.Items("machines"), "*db");
    EXPECT_EQ(Notice().find("Cannot"), std::string::npos) << Notice();
    Finish(user);
  });
  ExpectOnlyDbConfigured();
}

TEST_F(RefusalTest, OneThatDiesBehindItsPageIsToldAndTheUserCanGoBackAndLeaveItOut) {
  RunWizard([](WizardUser& user) {
    user.Do("next next remote next add:web add:db each next pick:store next away:web");
    EXPECT_EQ(user.Walk("give:max next"), "Applications on web\n");
    EXPECT_EQ(user.Walk("pick:orders,shop next"), "Applications on web\n");
    EXPECT_EQ(user.Boxes(), kNotReached);
    EXPECT_EQ(user.Items("applications"), "orders shop") << "none is selected any more";
    EXPECT_FALSE(user.CanPress(SheetButton::Next));
    EXPECT_EQ(user.Walk("back"), "Traces for store on db\n");
    EXPECT_NE(user.Traces().find("Stack"), std::string::npos);
    EXPECT_EQ(user.Walk("next back back back"),
              "Applications on web\nTraces for store on db\nApplications on db\nMachines\n");
    user.Do("del:web");
    Finish(user);
  });
  ExpectOnlyDbConfigured();
}

TEST_F(RefusalTest, OneThatComesBackIsConfiguredAfterAll) {
  RunWizard([&](WizardUser& user) {
    user.Do("next next remote next add:web each next away:web pick:shop next");
    EXPECT_EQ(user.Boxes(), kNotReached);
    m_fleet.StartAgain(2);
    ASSERT_NO_FATAL_FAILURE(AwaitApps());
    EXPECT_EQ(user.Walk("pick:shop next"), "Traces for shop on web\n");
    EXPECT_EQ(user.Walk("give:off next"), "Finish\n");
    user.Do("finish");
  });
  EXPECT_EQ(Settings("web", "shop"), "Cart/Close Off\nCart/Connect Off\nCart/Request Off\n");
}

// The first of machines that are the same is the one that is asked.
TEST_F(RefusalTest, OfMachinesThatAreTheSameTheFirstMayDieAndTheOthersGoOnWithoutIt) {
  RunWizard([](WizardUser& user) {
    user.Do("next next remote next add:web add:db same next pick:shop,store next next");
    EXPECT_EQ(user.Where(), "Traces for store");
    user.Do("away:db");
    EXPECT_EQ(user.Walk("next back back back"),
              "Finish\nTraces for store\nTraces for shop\nApplications\n");
    EXPECT_EQ(user.Walk("back del:db next"), "Machines\nApplications\n");
    EXPECT_EQ(user.Walk("next give:max next next"), "Traces for shop\nTraces for store\nFinish\n");
    user.Do("finish");
    EXPECT_EQ(user.Where(), "ended");
  });
  EXPECT_NE(Settings("web", "shop").find("Stack"), std::string::npos);
  EXPECT_EQ(Windows(), (std::vector<std::string>{"Configuration on " + Name("web"),
                                                 "Traces sent to " + _trc_GetHostName()}));
}

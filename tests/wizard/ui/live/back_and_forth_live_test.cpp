// Whole walks in both directions, in the wizard's window and over real services: what is kept and
// what is lost on the way, and what the machines have after Finish.
#include <algorithm>

#include "wizard/ui/live/wizard_live_fixture.h"

namespace {

const std::string kSupport = "Info, Warn, Error", kDeveloper = kSupport + ", Developer",
                  kMax = kDeveloper + ", Verbose, Location, Stack";

class BackAndForthTest : public WizardFleet {
 protected:
  // All traces of a component, as the page of traces shows them or as trc prints them.
  static std::string Rows(const std::string& component, const std::string& settings) {
    std::string text;
    for (const char* category : {"Close", "Connect", "Request"})
      text += component + "|" + category + "|" + settings + "\n";
    return text;
  }
  static std::string Printed(const std::string& component, const std::string& settings) {
    std::string text;
    for (const char* category : {"Close", "Connect", "Request"})
      text += component + "/" + category + " " + settings + "\n";
    return text;
  }
  std::vector<std::string> ConfigsAndMonitor(const std::vector<std::string>& machines) {
    std::vector<std::string> titles;
    for (const std::string& machine : machines) titles.push_back("Configuration on " + machine);
    titles.push_back("Traces sent to " + _trc_GetHostName());
    return titles;
  }
};

}  // namespace

TEST_F(BackAndForthTest, OnThisMachine) {
  RunWizard([](WizardUser& user) {
    user.Do("next next local next pick:billing,orders next give:max next");
    EXPECT_EQ(user.Where(), "Traces for orders");
    EXPECT_EQ(user.Traces(), Rows("Db", kSupport) + Rows("Net", kSupport));
    user.Do("give:off back");
    EXPECT_EQ(user.Where(), "Traces for billing");
    EXPECT_EQ(user.Traces(), Rows("Db", kMax)) << "what Next has taken is kept";
    user.Do("next");
    EXPECT_EQ(user.Traces(), Rows("Db", kSupport) + Rows("Net", kSupport)) << "Back has lost it";
    EXPECT_EQ(user.Walk("next back back back back back back"),
              "Finish\nTraces for orders\nTraces for billing\nApplications on THIS\nNetworking\n"
              "Mode\nWelcome\n");
    EXPECT_EQ(user.Walk("next next next"), "Mode\nNetworking\nApplications on THIS\n");
    EXPECT_EQ(user.Items("applications"), "billing orders") << "it was read anew";
    EXPECT_FALSE(user.CanPress(SheetButton::Next));
    user.Do("pick:orders,billing next");
    EXPECT_EQ(user.Traces(), Rows("Db", kSupport)) << "what the machine has";
    EXPECT_EQ(user.Walk("give:developer next give:off next"), "Traces for orders\nFinish\n");
    user.Do("finish");
    EXPECT_EQ(user.Where(), "ended");
  });
  EXPECT_EQ(Settings("localhost", "billing"), Printed("Db", kDeveloper));
  EXPECT_EQ(Settings("localhost", "orders"), Printed("Db", "Off") + Printed("Net", "Off"));
  EXPECT_EQ(Windows(), ConfigsAndMonitor({_trc_GetHostName()}));
}

TEST_F(BackAndForthTest, OverThreeMachinesThatAreDifferent) {
  RunWizard([](WizardUser& user) {
    user.Do("next next remote next add:localhost add:web add:db each");
    EXPECT_EQ(user.Walk("next pick:store next give:max next pick:orders next give:max next "
                        "pick:billing next next"),
              "Applications on db\nTraces for store on db\nApplications on web\n"
              "Traces for orders on web\nApplications on localhost\n"
              "Traces for billing on localhost\nFinish\n");
    EXPECT_EQ(user.Walk("back back back"),
              "Traces for billing on localhost\nApplications on localhost\n"
              "Traces for shop on web\n")
        << "the last application of the machine before, selected or not";
    EXPECT_EQ(user.Traces(), "");
    EXPECT_EQ(user.Walk("next back back"),
              "Applications on localhost\nTraces for shop on web\nTraces for orders on web\n");
    EXPECT_EQ(user.Traces(), Rows("Db", kMax) + Rows("Net", kMax)) << "what Next has taken is kept";
    EXPECT_EQ(user.Walk("give:off back next"), "Applications on web\nTraces for orders on web\n");
    EXPECT_EQ(user.Traces(), Rows("Db", kSupport) + Rows("Net", kSupport))
        << "what the machine has";
    EXPECT_EQ(user.Walk("back back back back back back back"),
              "Applications on web\nTraces for store on db\nApplications on db\nMachines\n"
              "Networking\nMode\nWelcome\n");
    EXPECT_EQ(user.Walk("next next next next"), "Mode\nNetworking\nMachines\nApplications on db\n");
    EXPECT_EQ(user.Items("applications"), "*store") << "machines and choice were kept";
    EXPECT_EQ(user.Walk("next give:max next next give:developer next next give:off next"),
              "Traces for store on db\nApplications on web\nTraces for orders on web\n"
              "Applications on localhost\nTraces for billing on localhost\nFinish\n");
    user.Do("finish");
  });
  EXPECT_EQ(Settings("db", "store"), Printed("Row", kMax));
  EXPECT_EQ(Settings("web", "orders"), Printed("Db", kDeveloper) + Printed("Net", kDeveloper));
  EXPECT_EQ(Settings("web", "shop"), Printed("Cart", kSupport)) << "nobody has chosen it";
  EXPECT_EQ(Settings("localhost", "billing"), Printed("Db", "Off"));
  EXPECT_EQ(Settings("localhost", "orders"), Printed("Db", kSupport) + Printed("Net", kSupport));
  EXPECT_EQ(Windows(), ConfigsAndMonitor({Name("db"), Name("web"), "localhost"}));
}

TEST_F(BackAndForthTest, OverMachinesThatAreTheSame) {
  const TrcProcess more(m_fleet.Emit(1, "orders", "Net,Db"));
  ASSERT_TRUE(m_fleet.IsTraced(1, "orders"));
  ASSERT_EQ(RunTrc({"sink", Name("db"), "orders", "--server", Name("db")}).status, 0);
  RunWizard([](WizardUser& user) {
    user.Do("next next remote next add:web add:db same");
    EXPECT_EQ(user.Walk("next pick:orders,store next give:max next"),
              "Applications\nTraces for orders\nTraces for store\n")
        << "once for all, without a name";
    EXPECT_EQ(user.Walk("give:off back"), "Traces for orders\n");
    EXPECT_EQ(user.Traces(), Rows("Db", kMax) + Rows("Net", kMax)) << "what Next has taken is kept";
    EXPECT_EQ(user.Walk("next"), "Traces for store\n");
    EXPECT_EQ(user.Traces(), Rows("Row", kSupport)) << "Back has lost it";
    EXPECT_EQ(user.Walk("give:developer next back"), "Finish\nTraces for store\n")
        << "the last selected application of the first machine";
    EXPECT_EQ(user.Traces(), Rows("Row", kDeveloper));
    EXPECT_EQ(user.Walk("back back back back"),
              "Traces for orders\nApplications\nMachines\nNetworking\n");
    EXPECT_EQ(user.Walk("next next"), "Machines\nApplications\n");
    EXPECT_EQ(user.Items("applications"), "*orders shop *store");
    EXPECT_EQ(user.Walk("next give:max next give:developer next"),
              "Traces for orders\nTraces for store\nFinish\n");
    user.Do("finish");
  });
  EXPECT_EQ(Settings("db", "store"), Printed("Row", kDeveloper));
  for (const char* machine : {"db", "web"}) {
    EXPECT_EQ(Settings(machine, "orders"), Printed("Db", kMax) + Printed("Net", kMax)) << machine;
    EXPECT_NE(m_fleet.Shown(m_words.at(machine), "orders").find(Name("db")), std::string::npos)
        << "the first machine's sink";
  }
  EXPECT_EQ(Settings("web", "shop"), Printed("Cart", kSupport)) << "nobody has chosen it";
  EXPECT_EQ(Settings("localhost", "orders"), Printed("Db", kSupport) + Printed("Net", kSupport));
  EXPECT_EQ(Windows(), ConfigsAndMonitor({Name("db"), Name("web")}));
}

TEST_F(BackAndForthTest, FromRemoteToLocalAllMachinesAreForgotten) {
  RunWizard([](WizardUser& user) {
    user.Do("next next remote next add:web add:db each next pick:store next give:max next");
    EXPECT_EQ(user.Walk("back back back back local next"),
              "Traces for store on db\nApplications on db\nMachines\nNetworking\n"
              "Applications on THIS\n");
    EXPECT_EQ(user.Walk("pick:orders next give:off next"), "Traces for orders\nFinish\n");
    EXPECT_EQ(user.Walk("back back back remote next"),
              "Traces for orders\nApplications on THIS\nNetworking\nMachines\n");
    EXPECT_EQ(user.Items("machines"), "THIS");
    EXPECT_EQ(user.Walk("back local next pick:billing next give:max next"),
              "Networking\nApplications on THIS\nTraces for billing\nFinish\n");
    user.Do("finish");
  });
  EXPECT_EQ(Settings("localhost", "billing"), Printed("Db", kMax));
  EXPECT_EQ(Settings("localhost", "orders"), Printed("Db", kSupport) + Printed("Net", kSupport));
  EXPECT_EQ(Settings("db", "store"), Printed("Row", kSupport));
  EXPECT_EQ(Windows(), ConfigsAndMonitor({_trc_GetHostName()}));
}

TEST_F(BackAndForthTest, FromLocalToRemoteThisMachineIsKept) {
  std::vector<std::string> machines = {_trc_GetHostName(), Name("web")};
  std::sort(machines.begin(), machines.end());
  RunWizard([&](WizardUser& user) {
    EXPECT_EQ(user.Walk("next next local next pick:billing next back back remote next"),
              "Mode\nNetworking\nApplications on THIS\nTraces for billing\n"
              "Applications on THIS\nNetworking\nMachines\n");
    EXPECT_EQ(user.Items("machines"), "THIS");
    EXPECT_TRUE(user.CanPress(SheetButton::Next));
    user.Do("add:web each next");
    for (const std::string& machine : machines) {
      const bool here = machine == _trc_GetHostName();
      EXPECT_EQ(user.Where(), here ? "Applications on THIS" : "Applications on web");
      EXPECT_EQ(user.Items("applications"), here ? "*billing orders" : "orders shop");
      user.Do(here ? "next give:max next" : "pick:shop next give:off next");
    }
    EXPECT_EQ(user.Where(), "Finish");
    user.Do("finish");
  });
  EXPECT_EQ(Settings("localhost", "billing"), Printed("Db", kMax));
  EXPECT_EQ(Settings("web", "shop"), Printed("Cart", "Off"));
  EXPECT_EQ(Windows(), ConfigsAndMonitor(machines));
}

// The page that asks whether other machines are configured.
#include "support/wizard_fixture.h"

namespace {

class NetworkPageTest : public WizardFixture {
 protected:
  FakeMachine& Local() { return m_program.Machine("localhost"); }
};

}  // namespace

TEST_F(NetworkPageTest, LocalModeConnectsWithThisMachineAndNamesItByItsHostName) {
  Walk("next next local next");
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(Local().m_log, "connect localhost\nlist\n");
  EXPECT_EQ(MachineNames(), _trc_GetHostName() + " ");
  EXPECT_EQ(Offered(_trc_GetHostName()), "billing orders");
  for (const auto& [name, app] : Sheet().m_machines.begin()->second.m_apps) {
    EXPECT_FALSE(app.m_app) << name;
    EXPECT_TRUE(app.m_traces.empty()) << name;
  }
  EXPECT_EQ(Stored("Network Mode"), 0U);
  EXPECT_EQ(m_host.WaitCursors(), 0);
}

TEST_F(NetworkPageTest, AServiceHereThatDoesNotAnswerKeepsTheUserAndTheTable) {
  Walk("next next remote next add:web back");
  Local().m_away = true;
  Walk("local next");
  EXPECT_EQ(Where(), "Networking");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to local configuration server."));
  EXPECT_EQ(MachineNames(), "web ");
  EXPECT_EQ(Stored("Network Mode"), 0U) << "stored before the question";
  EXPECT_EQ(m_log.Reported("notice"),
            "notice Cannot configure localhost: no trace service there\n");
  m_log.Clear();
  Local().m_away = false;
  Walk("next");
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(m_log.Reported("notice"), "notice \n") << "the reason has gone";
}

TEST_F(NetworkPageTest, BackToLocalClearsAllMachinesThatWereAdded) {
  Walk("next next remote next add:web add:db next pick:store next");
  EXPECT_EQ(Where(), "Traces for store on db");
  Walk("back back back local next");
  EXPECT_EQ(MachineNames(), _trc_GetHostName() + " ");
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_EQ(m_program.Machine("web").m_handles, 0) << "their connections are closed";
  EXPECT_EQ(m_program.Machine("db").m_handles, 0);
}

TEST_F(NetworkPageTest, FromLocalToRemoteKeepsTheLocalMachinesEntryInTheList) {
  Walk("next next local next back remote next");
  EXPECT_EQ(Where(), "Machines");
  EXPECT_EQ(FakeWizard::Shown(Window().machines), _trc_GetHostName());
  EXPECT_EQ(Window().Enabled(), "back next");
}

TEST_F(NetworkPageTest, ApplicationsOfAnOpenConfigurationAreOfferedWithTheirHandles) {
  std::string shouted = _trc_GetHostName();
  for (char& letter : shouted) letter = static_cast<char>(std::toupper(letter));
  CConfigDoc& open = m_program.OpenConfig(shouted);
  trace_App_i* const ghost = open.AddApplication("ghost");
  trace_App_i* const orders = open.AddApplication("orders");
  Walk("next next local next");
  EXPECT_EQ(Offered(_trc_GetHostName()), "billing ghost orders");
  WizApps& apps = Sheet().m_machines.begin()->second.m_apps;
  EXPECT_EQ(apps.at("ghost").m_app, ghost) << "not registered here, but open";
  EXPECT_EQ(apps.at("orders").m_app, orders);
  EXPECT_FALSE(apps.at("billing").m_app);
}

TEST_F(NetworkPageTest, AServiceHereThatGoesAwayBeforeItsListIsReadKeepsTheUserAndTheTable) {
  Walk("next next remote next add:web back");
  m_program.m_client.connect = [this](const std::string& host, std::string* why) {
    trace_Config_i* const made = Local().Connect(host, why);
    Local().m_away = true;
    return made;
  };
  Walk("local next");
  EXPECT_EQ(Where(), "Networking");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to local configuration server."));
  EXPECT_EQ(MachineNames(), "web ");
}

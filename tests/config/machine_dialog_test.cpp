#include "config/machine_dialog.h"

#include <gmock/gmock.h>

#include <sstream>

#include "config/machine_browser.h"
#include "quor/client/trace_thread.h"
#include "support/recording_host.h"

namespace {

using testing::ElementsAre;

TEST(MachineDialog, StartsWithTheLocalMachineAndItsPrompt) {
  RecordingHost host;
  const CMachineDlg query(host, "What machine?");
  EXPECT_EQ(query.m_strMachine, _trc_GetHostName());
  EXPECT_EQ(query.m_strPrompt, "What machine?");
}

TEST(MachineDialog, OkTakesTheMachineAsTyped) {
  RecordingHost host;
  CMachineDlg query(host, "What machine?");
  host.AnswerDialog([&](CDialog&) {
    query.SetMachine(" Web ");
    query.OnOK();
  });
  EXPECT_EQ(query.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(query.m_strMachine, " Web ");
}

TEST(MachineDialog, AnEmptiedFieldStandsForTheLocalMachine) {
  RecordingHost host;
  CMachineDlg query(host, "What machine?");
  query.SetMachine("");
  query.OnOK();
  EXPECT_EQ(query.m_strMachine, _trc_GetHostName());
}

TEST(MachineDialog, TheNextQuestionRemembersNothing) {
  RecordingHost host;
  CMachineDlg first(host, "What machine?");
  first.SetMachine("web");
  first.OnOK();
  EXPECT_EQ(CMachineDlg(host, "What machine?").m_strMachine, _trc_GetHostName());
}

TEST(MachineDialog, BrowsingPutsTheChosenMachineIntoTheFieldAndCancelLeavesIt) {
  RecordingHost host;
  CMachineDlg query(host, "What machine?");
  query.SetMachine("web");
  query.OnBrowse();
  EXPECT_EQ(query.m_strMachine, "web");
  host.AnswerDialog([](CDialog& dialog) {
    auto& browser = dynamic_cast<CMachineBrowser&>(dialog);
    EXPECT_FALSE(browser.MayOK());
    browser.OnOK();
    EXPECT_FALSE(browser.Ended());
    browser.OnSelect(0);
    browser.OnOK();
  });
  query.OnBrowse();
  EXPECT_EQ(query.m_strMachine, _trc_GetHostName());
  EXPECT_FALSE(query.Ended());
}

TEST(MachineBrowser, OffersThisMachineAndThoseOfTheHostsFileOnceInAlphabeticalOrder) {
  std::istringstream hosts(
      "127.0.0.1 localhost\n"
      "127.0.1.1 desk.example.org desk\n"
      "10.0.0.7\tweb web.example.org # the front\n"
      "# 10.0.0.8 gone\n"
      "10.0.0.9 DB\n"
      "10.0.1.9 db\n"
      "10.0.0.3 Desk.example.org\n"
      "10.0.0.4\n"
      "\n"
      "::1 ip6-localhost ip6-loopback\n"
      "fe00::0 ip6-localnet\n"
      "ff02::1 ip6-allnodes\n"
      "255.255.255.255 broadcasthost\n"
      "0.0.0.0 blocked.example.org\n"
      ":: blocked.example.org\n"
      "fd00::12 archive\n");
  EXPECT_THAT(MachinesIn(hosts, "desk"), ElementsAre("desk", "archive", "DB", "web"));
}

TEST(MachineBrowser, AHostsFileThatCannotBeReadOffersThisMachine) {
  std::istringstream hosts;
  hosts.setstate(std::ios::failbit);
  EXPECT_THAT(MachinesIn(hosts, "desk"), ElementsAre("desk"));
}

}  // namespace

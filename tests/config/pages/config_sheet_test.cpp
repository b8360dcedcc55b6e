#include "config/pages/config_sheet.h"

#include "support/config_sheet_fixture.h"
#include "support/fake_config_sheet.h"

namespace {

using ConfigSheetTest = ConfigSheetFixture;

}  // namespace

TEST_F(ConfigSheetTest, ReadsTheMachineAgainAndShowsTracesBeforeSink) {
  Orders().traces[0].settings = 7;  // since the application was added
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  EXPECT_EQ(Asked(), "refresh orders\n");
  const std::string wait = "wait cursor on\nwait cursor off\n";
  EXPECT_EQ(m_host.Reported(), wait + wait) << "for the machine's answer, and for the sink";
  const FakeConfigSheet window(sheet);
  EXPECT_EQ(window.Title(), "Configuration for orders");
  ASSERT_EQ(sheet.Pages().size(), 2u);
  EXPECT_EQ(sheet.Pages()[0]->Caption(), "Traces");
  EXPECT_EQ(sheet.Pages()[1]->Caption(), "Sink");
  EXPECT_EQ(sheet.Pages()[1]->Id(), 136u);
  EXPECT_EQ(window.Front(), 0u);
  EXPECT_EQ(window.traces.Shown(), "Disk|Read|Off Net|Open|Info, Warn, Error Net|Close|Off");
  EXPECT_EQ(sheet.Note(), "");
}

TEST_F(ConfigSheetTest, APageThatWasNotVisitedSendsNothing) {
  Orders().sinkName = "mars";
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  Orders().sinkName = "venus";  // by somebody else
  Asked();
  window.Press(SheetButton::Ok);
  EXPECT_EQ(Asked(), "submit orders\n");
  EXPECT_EQ(SinkInForce(), "server venus ");
}

TEST_F(ConfigSheetTest, AMachineThatDoesNotAnswerIsToldAndItsLastStateIsShown) {
  m_machine.m_away = true;
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  const FakeConfigSheet window(sheet);
  EXPECT_EQ(window.traces.Shown(), "Disk|Read|Off Net|Open|Off Net|Close|Off");
  EXPECT_EQ(sheet.Note(), "web does not answer. These are the settings that it had before.");
}

TEST_F(ConfigSheetTest, WhatTheEnvironmentHasSetIsToldUnlessThereIsTrouble) {
  Orders().startNotes = {{12, "QUOR_SETTINGS=Net=max"}, {13, std::string(300, 'x')}};
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  const FakeConfigSheet window(sheet);
  EXPECT_EQ(sheet.Note(),
            "Process 12: QUOR_SETTINGS=Net=max\nProcess 13: " + std::string(200, 'x') + "...");
  m_machine.m_away = true;
  CConfigPropertySheet later(m_host, *m_doc, *m_app);
  EXPECT_EQ(later.Note(), "web does not answer. These are the settings that it had before.");
}

TEST_F(ConfigSheetTest, WhatIsKeptAndAnUnreachableSinkAreTold) {
  Orders().startNotes = {{12, "QUOR_SETTINGS=Net=max"}};
  Orders().kept = "Net=max;Db/Query=Info+Stack";
  Orders().sinkName = "mars";
  Orders().sinkTrouble = "connection refused";
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  const FakeConfigSheet window(sheet);
  EXPECT_EQ(sheet.Note(),
            "mars cannot be reached: connection refused\n"
            "Kept for later starts: Net=max;Db/Query=Info+Stack "
            "(\"trc forget orders\" takes it back)\n"
            "Process 12: QUOR_SETTINGS=Net=max");
  Orders().kept = std::string(1000, 'k');
  Orders().sinkTrouble.clear();
  Orders().startNotes.clear();
  CConfigPropertySheet later(m_host, *m_doc, *m_app);
  EXPECT_EQ(later.Note(), "Kept for later starts: " + std::string(400, 'k') +
                              "... (\"trc forget orders\" takes it back)");
}

TEST_F(ConfigSheetTest, AMachineThatGoesAwayIsAskedOnceAndGetsAllWithTheNextApply) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  window.traces.Give(0, TRC_PRESET_SUPPORT);
  window.ChooseTab(1);
  window.Type(CAppSinkCfgPropertyPage::kMachine, "mars");
  m_machine.m_away = true;
  Asked();
  window.Press(SheetButton::Apply);
  EXPECT_EQ(Asked(), "submit orders\n") << "a second question would take five seconds more";
  EXPECT_EQ(sheet.Note(), "These changes are not in force: web does not answer.");
  EXPECT_EQ(m_doc->NotInForce(), std::set<std::string>{"orders"});
  m_machine.m_away = false;
  sheet.SinkPage().OnEdit();
  EXPECT_EQ(sheet.Note(), "These changes are not in force: web does not answer.")
      << "they are not, although it is back";
  window.Press(SheetButton::Apply);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=7");
  EXPECT_EQ(SinkInForce(), "server mars ");
  EXPECT_EQ(sheet.Note(), "");
  EXPECT_TRUE(m_doc->NotInForce().empty());
}

TEST_F(ConfigSheetTest, AMachineThatRefusesIsTold) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  m_machine.m_refuses = true;
  window.traces.Give(0, TRC_PRESET_SUPPORT);
  window.Press(SheetButton::Apply);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=0");
  EXPECT_EQ(sheet.Note(), "web has refused these changes.");
  EXPECT_EQ(Boxes(), "") << "the result of a Submit has no box";
}

TEST_F(ConfigSheetTest, ApplyStaysEnabledUntilTheMachineHasTakenTheChanges) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  window.traces.Give(0, TRC_PRESET_SUPPORT);
  window.ChooseTab(1);
  m_machine.m_refuses = true;
  window.Press(SheetButton::Apply);
  EXPECT_TRUE(window.CanPress(SheetButton::Apply));
  m_machine.m_refuses = false;
  window.Press(SheetButton::Apply);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=7");
  EXPECT_FALSE(window.CanPress(SheetButton::Apply));
}

TEST_F(ConfigSheetTest, TheLastSubmitDecidesBecauseItSendsAllThatIsHeld) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  window.traces.Give(0, TRC_PRESET_SUPPORT);
  window.ChooseTab(1);
  m_machine.m_refusesNext = 1;
  window.Press(SheetButton::Apply);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=7");
  EXPECT_EQ(sheet.Note(), "");
  EXPECT_TRUE(m_doc->NotInForce().empty());
}

TEST_F(ConfigSheetTest, AMachineThatIsBackAndHasTakenTheChangesIsNotSaidToBeAway) {
  m_machine.m_away = true;
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  m_machine.m_away = false;
  EXPECT_NE(sheet.Note(), "") << "what is shown is still old";
  window.traces.Give(0, TRC_PRESET_SUPPORT);
  window.Press(SheetButton::Apply);
  EXPECT_EQ(sheet.Note(), "");
}

TEST_F(ConfigSheetTest, KeepsTheApplicationWhileItIsUp) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  m_doc->RemoveApplication(m_app);
  EXPECT_EQ(m_machine.m_open["orders"], 1);
  window.Press(SheetButton::Ok);
  EXPECT_TRUE(sheet.Ended());
}

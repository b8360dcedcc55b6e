#include "config/pages/traces_page.h"

#include "support/config_sheet_fixture.h"
#include "support/fake_config_sheet.h"

namespace {

using TracesPageTest = ConfigSheetFixture;

}  // namespace

TEST_F(TracesPageTest, ListsEveryTraceOfTheApplicationWithItsSettings) {
  Orders().traces[1].settings = 12;
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  const FakeConfigSheet window(sheet);
  EXPECT_EQ(sheet.TracesPage().Caption(), "Traces");
  EXPECT_EQ(sheet.TracesPage().Id(), 133u);
  EXPECT_STREQ(CAppTraceCfgPropertyPage::kLabel, "Select the &traces you want to change:");
  EXPECT_EQ(window.traces.Shown(), "Disk|Read|Off Net|Open|Off Net|Close|Error, Developer");
}

TEST_F(TracesPageTest, ApplyIsEnabledByAButtonOfTheList) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  window.traces.Rows().Click(0);
  EXPECT_FALSE(window.CanPress(SheetButton::Apply));
  window.traces.PressPreset(TRC_PRESET_OFF);
  EXPECT_TRUE(window.CanPress(SheetButton::Apply)) << "also if nothing has become different";
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=0");
  window.traces.PressPreset(TRC_PRESET_MAX);
  Asked();
  window.Press(SheetButton::Apply);
  EXPECT_EQ(Asked(), "submit orders\n");
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=799");
  EXPECT_FALSE(window.CanPress(SheetButton::Apply));
}

TEST_F(TracesPageTest, OkGivesTheMachineAllRowsAlsoThoseThatDidNotChange) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  // Somebody else has changed them meanwhile.
  for (FakeMachine::Trace& trace : Orders().traces) trace.settings = 31;
  window.traces.Give(2, TRC_PRESET_SUPPORT);
  m_host.ClearTranscript();
  m_machine.m_onSubmit = [this] { m_host.Note("submit"); };
  window.Press(SheetButton::Ok);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=7 Disk/Read=0");
  EXPECT_TRUE(m_doc->IsModified());
  EXPECT_TRUE(sheet.Ended());
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nsubmit\nwait cursor off\n");
}

TEST_F(TracesPageTest, OkMarksTheDocumentAsChangedWhetherOrNotAnythingChanged) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  window.Press(SheetButton::Ok);
  EXPECT_TRUE(m_doc->IsModified());
}

TEST_F(TracesPageTest, WithoutTracesNothingIsSubmittedButTheDocumentIsMarked) {
  Orders().traces.clear();
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  EXPECT_EQ(window.traces.Shown(), "");
  Asked();
  window.Press(SheetButton::Ok);
  EXPECT_EQ(Asked(), "");
  EXPECT_TRUE(m_doc->IsModified());
}

TEST_F(TracesPageTest, CancelDropsAllChanges) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  window.traces.GiveAll(TRC_PRESET_MAX);
  Asked();
  window.Press(SheetButton::Cancel);
  EXPECT_EQ(Asked(), "");
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=0");
  EXPECT_FALSE(m_doc->IsModified());
  EXPECT_EQ(m_app->GetSettings(1), 0u) << "the handle has not got them either";
}

TEST_F(TracesPageTest, TracesThatTheApplicationGainsMeanwhileAreLeftAlone) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  m_machine.Run("orders", {"Mail/Send"}, 4);
  window.traces.GiveAll(TRC_PRESET_SUPPORT);
  window.Press(SheetButton::Ok);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=7 Net/Close=7 Disk/Read=7 Mail/Send=4");
  CConfigPropertySheet next(m_host, *m_doc, *m_app);
  const FakeConfigSheet nextWindow(next);
  EXPECT_EQ(nextWindow.traces.Shown(),
            "Disk|Read|Info, Warn, Error Mail|Send|Error Net|Open|Info, Warn, Error "
            "Net|Close|Info, Warn, Error");
}

TEST_F(TracesPageTest, AnApplicationThatEndsMeanwhileKeepsWhatIsSetForItsNextStart) {
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app);
  FakeConfigSheet window(sheet);
  Orders().instances = 0;
  window.traces.Give(0, TRC_PRESET_SUPPORT);
  window.Press(SheetButton::Ok);
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=0 Net/Close=0 Disk/Read=7");
  EXPECT_EQ(Boxes(), "");
}

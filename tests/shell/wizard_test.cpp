// The wizard in the program: the windows that it leaves, and what a file leaves that did not open.
#include "quor/client/trace_thread.h"
#include "shell_fixture.h"
#include "support/fake_connection.h"
#include "support/fake_wizard.h"

namespace {

class WizardInShell : public ShellTest {
 protected:
  WizardInShell() {
    m_app->m_connectMonitor = m_service.Connector();
    Start();
  }
  ~WizardInShell() override {
    g_quickClose = true;  // no configuration asks about traces that are on
    m_app.reset();
  }

  // Runs the command, and this inside its window.
  void Run(const std::function<void(FakeWizard&)>& person) {
    m_host.AnswerDialog([this, person](CDialog& dialog) {
      FakeWizard window(dynamic_cast<CTraceWizardSheet&>(dialog));
      person(window);
    });
    EXPECT_TRUE(Frame().OnCommand(ID_FILE_WIZARD));
    m_host.RunPosted();
  }
  void Press(FakeWizard& window, SheetButton button, int times = 1) {
    for (; times > 0; --times) {
      m_host.RunPosted();
      window.Press(button);
    }
    m_host.RunPosted();
  }
  std::string Titles() {
    std::string titles;
    for (const auto& child : Frame().Children()) titles += child->Title() + "\n";
    return titles;
  }

  FakeService m_service;
};

}  // namespace

TEST_F(WizardInShell, TheLocalWalkLeavesAConfigurationAndAMonitorOfThisMachine) {
  m_machine.Run("orders", {"Net/Open"}, 0);
  Run([this](FakeWizard& window) {
    Press(window, SheetButton::Next, 3);
    window.applications.Click(0);
    Press(window, SheetButton::Next);
    window.traces.Give(0, TRC_PRESET_DEVELOPER);
    Press(window, SheetButton::Next);
    Press(window, SheetButton::Finish);
  });
  const std::string host = _trc_GetHostName();
  EXPECT_EQ(Titles(), "Configuration on " + host + "\nTraces sent to " + host + "\n");
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Open=15");
  EXPECT_EQ(m_machine.m_handles, 2) << "those of the window";
}

TEST_F(WizardInShell, AMonitorThatIsOpenIsNotOpenedOnceMore) {
  m_machine.Run("orders", {"Net/Open"}, 0);
  ASSERT_TRUE(m_app->OpenMonitor("LOCALHOST"));
  Run([this](FakeWizard& window) {
    Press(window, SheetButton::Next, 3);
    window.applications.Click(0);
    Press(window, SheetButton::Next, 2);
    Press(window, SheetButton::Finish);
  });
  EXPECT_EQ(m_app->MonitorTemplate()->Documents().size(), 1U);
}

TEST_F(WizardInShell, ATraceFileThatDoesNotOpenHasItsReasonInTheStatusBar) {
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  m_host.AnswerFileDialog(m_dir.File("empty.trc", ""));
  Run([this](FakeWizard& window) {
    Press(window, SheetButton::Next);
    window.Choose(CWizSelectPage::kTask, CWizSelectPage::kLoadTraces);
    Press(window, SheetButton::Next);
    EXPECT_EQ(window.Title(), "Trace Wizard: Mode");
    EXPECT_EQ(Face().m_panes[kPaneMessage], "Cannot open empty.trc: The file is empty");
  });
  EXPECT_EQ(Titles(), "web.trc\n");
}

TEST_F(WizardInShell, ItDoesNotOpenOverAModalDialog) {
  m_faces.m_isModal = true;
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_WIZARD));
  EXPECT_EQ(m_host.TakeBoxes(), "");
}

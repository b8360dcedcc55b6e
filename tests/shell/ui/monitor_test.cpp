// A monitor's window, offscreen, fed by a fake connection on the host's own timer.
#include <QAbstractButton>
#include <QLineEdit>

#include "controls/list/ui/row_list_widget.h"
#include "documents/trace_realtime_doc.h"
#include "shell_fixture.h"
#include "support/fake_connection.h"

namespace {

class MonitorWindowTest : public ShellTest {
 protected:
  MonitorWindowTest() { g_updateInterval = 10; }
  ~MonitorWindowTest() override {
    m_app.reset();
    g_updateInterval = 333;
    g_traceLimit = 500000;
  }
  void OpenMonitor(const std::string& machine = "web") {
    m_app->m_connectMonitor = m_service.Connector();
    m_app->OpenMonitor(machine);
    ASSERT_EQ(Frame().Children().size(), 1U);
  }
  CTraceRealtimeDoc& Monitor() {
    return static_cast<CTraceRealtimeDoc&>(*m_app->MonitorTemplate()->Documents().front());
  }
  QtRowList& List() { return static_cast<QtRowList&>(View(*Frame().Children().front())->List()); }
  FakeService m_service;
};

TEST_F(MonitorWindowTest, TracesBecomeRowsOnTheTimerAndTheListFollowsItsLastRow) {
  Start();
  OpenMonitor();
  EXPECT_EQ(Front()->windowTitle(), QStringLiteral("Traces sent to web"));
  m_service.Last().SendMany(500);
  ASSERT_TRUE(Until([this] { return List().ItemCount() == 500; }));
  EXPECT_EQ(Face().Panes().PaneText(kPaneRowCount), QStringLiteral("500"));
  EXPECT_GT(List().TopIndex(), 0);
  m_service.Last().SendMany(500);
  ASSERT_TRUE(Until([this] { return List().ItemCount() == 1000; }));
  EXPECT_GE(List().TopIndex() + List().CountPerPage(), 1000);
}

TEST_F(MonitorWindowTest,
       AnEmptyMonitorSaysWhatItWaitsForAndOneThatDoesNotFollowLeadsBackToItsEnd) {
  Start();
  OpenMonitor();
  EXPECT_EQ(List().Owner().RowListEmptyText().substr(0, 28), "Waiting for traces from web\n");
  auto* const toEnd = List().findChild<QAbstractButton*>("toEnd");
  ASSERT_TRUE(toEnd);
  m_service.Last().SendMany(500);
  ASSERT_TRUE(Until([this] { return List().ItemCount() == 500; }));
  EXPECT_FALSE(toEnd->isVisible());
  List().EnsureVisible(0);
  EXPECT_TRUE(toEnd->isVisible());
  QTest::mouseClick(toEnd, Qt::LeftButton);
  m_service.Last().SendMany(5);
  ASSERT_TRUE(Until([this] { return List().ItemCount() == 505; }));
  EXPECT_GE(List().TopIndex() + List().CountPerPage(), 505);
  EXPECT_FALSE(toEnd->isVisible());
}

TEST_F(MonitorWindowTest, ATrimKeepsTheRowsThatAreInViewWhereTheyAre) {
  Start();
  OpenMonitor();
  g_traceLimit = 2500;
  m_service.Last().SendMany(2500);
  ASSERT_TRUE(Until([this] { return List().ItemCount() == 2500; }));
  List().EnsureVisible(1000);
  const TraceEvent_i* const top = Monitor().m_traces[static_cast<std::size_t>(List().TopIndex())];
  m_service.Last().SendMany(250);
  ASSERT_TRUE(Until([this] { return m_service.Last().m_waiting.empty(); }));
  EXPECT_EQ(Monitor().m_traces.size(), 2450U);
  EXPECT_EQ(List().ItemCount(), 2450);
  EXPECT_EQ(Monitor().m_traces[static_cast<std::size_t>(List().TopIndex())], top);
}

TEST_F(MonitorWindowTest, AFloodBeyondTheLimitPaintsOnlyWhatIsHeld) {
  Start();
  OpenMonitor();
  g_traceLimit = 2500;
  for (int i = 0; i < 3; ++i) {
    m_service.Last().SendMany(6000);
    ASSERT_TRUE(Until([this] { return m_service.Last().m_waiting.empty(); }));
    EXPECT_FALSE(List().viewport()->grab().isNull());
  }
  EXPECT_EQ(List().ItemCount(), 2500);
}

TEST_F(MonitorWindowTest, NewMonitorAsksInAWindowAndAFailedConnectLeavesNone) {
  Start();
  m_service.m_refuse = true;
  m_app->m_connectMonitor = m_service.Connector();
  OnModal([](QWidget* dialog) {
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Machine Query"));
    dialog->findChild<QLineEdit*>("machine")->setText("nowhere");
    QTest::keyClick(dialog, Qt::Key_Return);
  });
  Frame().OnCommand(ID_FILE_NEWMONITOR);
  EXPECT_EQ(m_service.m_log, "connect nowhere\n");
  EXPECT_TRUE(Frame().Children().empty());
  EXPECT_TRUE(Face().Area().subWindowList().isEmpty());
}

TEST_F(MonitorWindowTest, TheMonitorDrainsWhileADialogIsUp) {
  Start();
  OpenMonitor();
  m_service.Last().SendMany(3);
  OnModal([this](QWidget* dialog) {
    EXPECT_TRUE(Until([this] { return List().ItemCount() == 3; }));
    QTest::keyClick(dialog, Qt::Key_Escape);
  });
  Frame().OnCommand(ID_FILE_NEWMONITOR);
  EXPECT_EQ(List().ItemCount(), 3);
}

TEST_F(MonitorWindowTest, TheToolBarsPauseShowsItsState) {
  Start();
  OpenMonitor();
  Face().Actions().UpdateAll();
  QAction* const pause = Face().Actions().Action(ID_VIEW_PAUSE);
  EXPECT_TRUE(pause->isEnabled());
  pause->trigger();
  Face().Actions().UpdateAll();
  EXPECT_TRUE(pause->isChecked());
  EXPECT_EQ(m_service.m_log, "connect web\npause\n");
}

TEST_F(MonitorWindowTest, ClosingTheWindowEndsTheConnectionAndItsTimer) {
  Start();
  OpenMonitor();
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_TRUE(Until([this] { return Frame().Children().empty(); }));
  EXPECT_EQ(m_service.m_log, "connect web\ndisconnect\n");
  // A timer that was left would tick without a target, as often as this one does.
  int ticks = 0;
  const TimerId timer = m_host.SetTimer(10, [&ticks] { ++ticks; });
  EXPECT_TRUE(Until([&ticks] { return ticks >= 3; }));
  m_host.KillTimer(timer);
}

TEST_F(MonitorWindowTest, HelpInTheMachineQueryOpensThePageOfMonitors) {
  Start();
  OnModal([this](QWidget* dialog) {
    QTest::keyClick(dialog, Qt::Key_F1);
    EXPECT_TRUE(m_faces->Help() && m_faces->Help()->Topic() == QStringLiteral("monitor"));
    if (m_faces->Help()) m_faces->Help()->close();
    QTest::keyClick(dialog, Qt::Key_Escape);
  });
  Frame().OnCommand(ID_FILE_NEWMONITOR);
}

}  // namespace

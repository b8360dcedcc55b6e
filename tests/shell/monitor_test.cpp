// Monitors in the whole program over fakes: opening, the timer, commands, the end.
#include <algorithm>
#include <filesystem>

#include "config/machine_dialog.h"
#include "documents/trace_realtime_doc.h"
#include "shell/realtime_frame.h"
#include "shell_fixture.h"
#include "support/endless_texts.h"
#include "support/fake_connection.h"
#include "tree/regex/regex.h"

namespace {

class MonitorTest : public ShellTest {
 protected:
  MonitorTest() {
    m_app->m_connectMonitor = m_service.Connector();
    g_updateInterval = 333;
    Start();
  }
  ~MonitorTest() override {
    m_app.reset();
    g_updateInterval = 333;
  }
  // "New Monitor" with the machine typed and OK pressed.
  void NewMonitor(const std::string& machine) {
    m_host.AnswerDialog([machine](CDialog& dialog) {
      auto& query = dynamic_cast<CMachineDlg&>(dialog);
      query.SetMachine(machine);
      query.OnOK();
    });
    EXPECT_TRUE(State(ID_FILE_NEWMONITOR).IsEnabled());
    EXPECT_TRUE(Frame().OnCommand(ID_FILE_NEWMONITOR));
  }
  std::size_t Monitors() const { return m_app->MonitorTemplate()->Documents().size(); }
  CTraceRealtimeDoc& Monitor(std::size_t index = 0) {
    return dynamic_cast<CTraceRealtimeDoc&>(*m_app->MonitorTemplate()->Documents()[index]);
  }
  int Rows(std::size_t child = 0) { return ListOf(*Frame().Children()[child]).List().ItemCount(); }
  FakeService m_service;
};

TEST_F(MonitorTest, TheMonitorTemplateIsHeldApartWithItsDocumentString) {
  const CMultiDocTemplate* const monitors = m_app->MonitorTemplate();
  ASSERT_TRUE(monitors);
  EXPECT_EQ(monitors->Resource(), 130U);
  std::string parts;
  for (int part = CMultiDocTemplate::windowTitle; part <= CMultiDocTemplate::regFileTypeName;
       ++part)
    parts +=
        "[" + monitors->GetDocString(static_cast<CMultiDocTemplate::DocStringIndex>(part)) + "]";
  EXPECT_EQ(parts, "[][TraceRealtimeDoc][Trace File][Trace Files (*.trc)][.trc][][]");
  ASSERT_FALSE(m_app->Templates().empty());
  for (const auto& registered : m_app->Templates()) EXPECT_NE(registered.get(), monitors);
}

TEST_F(MonitorTest, NewMonitorAsksForTheMachineWithItsPrompt) {
  std::string prompt;
  m_host.AnswerDialog(
      [&](CDialog& dialog) { prompt = dynamic_cast<CMachineDlg&>(dialog).m_strPrompt; });
  Frame().OnCommand(ID_FILE_NEWMONITOR);
  EXPECT_EQ(prompt, "What machine do you want to monitor for traces?");
  EXPECT_EQ(Monitors(), 0U);  // the user pressed Cancel
  EXPECT_EQ(m_service.m_log, "");
}

TEST_F(MonitorTest, AMonitorsWindowIsCalledTracesSentToTheMachine) {
  NewMonitor("Web.local:7447");
  ASSERT_EQ(Frame().Children().size(), 1U);
  EXPECT_EQ(Frame().Children()[0]->Title(), "Traces sent to Web.local:7447");
  EXPECT_EQ(Frame().MDIGetActive(), Frame().Children()[0].get());
  EXPECT_EQ(Face().m_menu, 130U);
  EXPECT_EQ(m_service.m_log, "connect Web.local:7447\n");
  EXPECT_TRUE(m_app->RecentFiles().empty());
}

// The list's save takes what follows the last dot for an extension, the document's does not.
TEST_F(MonitorTest, ASaveProposesTracesSentToTheMachine) {
  NewMonitor("web.local");
  Frame().OnCommand(ID_FILE_SAVECOPY);  // the user presses Cancel
  Frame().OnCommand(ID_VIEW_PROC);
  Frame().OnCommand(ID_FILE_SAVECOPY);
  ASSERT_EQ(m_host.m_fileRequests.size(), 2U);
  EXPECT_EQ(m_host.m_fileRequests[0].suggestedName, "Traces sent to web");
  EXPECT_EQ(m_host.m_fileRequests[1].suggestedName, "Traces sent to web.local");
}

TEST_F(MonitorTest, AMachineTextWithSlashesStandsWholeInTheTitleAndInTheQuestion) {
  NewMonitor("web/7447/");
  ASSERT_EQ(Frame().Children().size(), 1U);
  EXPECT_EQ(Frame().Children()[0]->Title(), "Traces sent to web/7447/");
  Monitor().SetModifiedFlag(true);
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::No);
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_EQ(
      m_host.Reported().find("box Tessera [warning] \"Save changes to Traces sent to web/7447/?"),
      0U)
      << m_host.Reported();
}

TEST_F(MonitorTest, AConnectThatFailsLeavesNoWindowAndGivesNoMessage) {
  m_service.m_refuse = true;
  NewMonitor("nowhere");
  EXPECT_EQ(Monitors(), 0U);
  EXPECT_TRUE(Frame().Children().empty());
  EXPECT_TRUE(m_host.Timers().empty());
  EXPECT_EQ(m_host.Reported(), "dialog -> 1\nwait cursor on\nwait cursor off\n");
  EXPECT_EQ(m_log.Reported("child show"), "");
}

TEST_F(MonitorTest, ASecondMonitorOnTheSameMachineIsAllowedFromNewMonitor) {
  NewMonitor("web");
  NewMonitor("web");
  EXPECT_EQ(Monitors(), 2U);
  EXPECT_EQ(m_service.m_connections.size(), 2U);
  EXPECT_EQ(Frame().Children()[1]->Title(), "Traces sent to web");
}

TEST_F(MonitorTest, OpenLocalMonitorReusesAMonitorOfLocalhostInAnyCase) {
  NewMonitor("LocalHost");
  m_app->OpenLocalMonitor();
  EXPECT_EQ(Monitors(), 1U);
  EXPECT_EQ(m_service.m_log, "connect LocalHost\n");
}

TEST_F(MonitorTest, OpenLocalMonitorReusesAMonitorOfTheHostNameInAnyCase) {
  std::string name = _trc_GetHostName();
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return toupper(c); });
  NewMonitor(name);
  m_app->OpenLocalMonitor();
  EXPECT_EQ(Monitors(), 1U);
}

TEST_F(MonitorTest, OpenLocalMonitorOpensOneToTheHostNameWhenThereIsNone) {
  NewMonitor("elsewhere");
  m_app->OpenLocalMonitor();
  ASSERT_EQ(Monitors(), 2U);
  EXPECT_EQ(Monitor(1).Machine(), _trc_GetHostName());
  m_app->OpenLocalMonitor();
  EXPECT_EQ(Monitors(), 2U);
}

TEST_F(MonitorTest, TheTimerRunsWithTheUpdateIntervalAndGoesWithTheFrame) {
  EXPECT_EQ(TRACE_TIMER_ID, 2001U);
  NewMonitor("web");
  EXPECT_EQ(m_host.Timers(), std::vector<unsigned>{333});
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_TRUE(m_host.Timers().empty());
  EXPECT_EQ(m_service.m_log, "connect web\ndisconnect\n");
}

TEST_F(MonitorTest, AnUpdateIntervalSetByHandIsThePeriodAndBelow10ItRunsAt10) {
  g_updateInterval = 500;
  NewMonitor("web");
  g_updateInterval = 0;
  NewMonitor("web");
  EXPECT_EQ(m_host.Timers(), (std::vector<unsigned>{500, 10}));
}

TEST_F(MonitorTest, ATickDrainsIntoTheList) {
  NewMonitor("web");
  m_service.Last().SendMany(3);
  EXPECT_EQ(Rows(), 0);
  m_host.TickTimers();
  EXPECT_EQ(Rows(), 3);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "3");
}

TEST_F(MonitorTest, WhileLongWorkReadsAMonitorItsTracesWaitInTheirQueueAndOtherMonitorsGoOn) {
  NewMonitor("web");
  NewMonitor("db");
  for (const auto& connection : m_service.m_connections) connection->SendMany(3);
  m_host.TickTimers();
  EndlessTexts walk;
  ASSERT_EQ(RegexPrepare("needle", 0, 1, 0, 0), 1);
  m_host.AnswerWorkBox([&](CDialog& box) {
    for (const auto& connection : m_service.m_connections) connection->SendMany(2);
    m_host.TickTimers();
    EXPECT_EQ(Rows(0), 3);
    EXPECT_EQ(Rows(1), 5);
    box.OnCancel();
  });
  CDocument* const web = Frame().Children()[0]->GetActiveDocument();
  EXPECT_EQ(RunSearch(m_host, web, walk), FindResult::Cancelled);
  m_host.TickTimers();
  EXPECT_EQ(Rows(0), 5);
}

TEST_F(MonitorTest, AFrameThatIsNotInFrontDrainsToo) {
  NewMonitor("web");
  NewMonitor("db");
  m_service.m_connections[0]->SendMany(2);
  m_host.TickTimers();
  EXPECT_EQ(Rows(0), 2);
  EXPECT_EQ(Rows(1), 0);
}

TEST_F(MonitorTest, AFrameWithoutAnActiveViewDoesNotDrainAndTheTracesWait) {
  NewMonitor("web");
  CMDIChildWnd& child = *Frame().Children()[0];
  CView* const view = child.GetActiveView();
  m_service.Last().SendMany(2);
  child.SetActiveView(nullptr);
  m_host.TickTimers();
  EXPECT_TRUE(Monitor().m_traces.empty());
  child.SetActiveView(view);
  dynamic_cast<CTraceRealtimeFrame&>(child).OnTimer(7);  // whatever the id
  EXPECT_EQ(Monitor().m_traces.size(), 2U);
}

TEST_F(MonitorTest, OfADrainBeyondTheLimitTheListShowsWhatTheDocumentHolds) {
  NewMonitor("web");
  g_traceLimit = 2500;
  m_service.Last().SendMany(1000);
  m_host.TickTimers();
  m_service.Last().SendMany(6000);
  m_host.TickTimers();
  EXPECT_EQ(Monitor().m_traces.size(), 2500U);
  EXPECT_EQ(Rows(), 2500);
  const CTraceView& list = ListOf(*Frame().Children()[0]);
  EXPECT_EQ(list.Rows().EventAt(0), Monitor().m_traces[0]);
  EXPECT_EQ(list.Rows().EventAt(2499), Monitor().m_traces[2499]);
}

TEST_F(MonitorTest, ASecondWindowOfAMonitorShowsTheSameTracesAndOneTimerDrainsForBoth) {
  NewMonitor("web");
  EXPECT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  m_service.Last().SendMany(2);
  m_host.TickTimers();
  EXPECT_EQ(Rows(0), 2);
  EXPECT_EQ(Rows(1), 2);
  EXPECT_EQ(Frame().Children()[1]->Title(), "Traces sent to web:2");
}

TEST_F(MonitorTest, CaptureIsCheckedWhileItRunsAndPauseWhilePaused) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(m_dir.Path());
  NewMonitor("web");
  EXPECT_TRUE(State(ID_FILE_CAPTURE).IsEnabled());
  EXPECT_FALSE(State(ID_FILE_CAPTURE).IsChecked());
  m_host.AnswerFileDialog(m_dir.File("live.trc"));
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_CAPTURE));
  EXPECT_TRUE(State(ID_FILE_CAPTURE).IsChecked());
  m_service.Last().Send();
  m_host.TickTimers();
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_CAPTURE));
  EXPECT_FALSE(State(ID_FILE_CAPTURE).IsChecked());
  EXPECT_GT(ReadAll(m_dir.File("live.trc")).size(), 16U);
  EXPECT_TRUE(Frame().OnCommand(ID_VIEW_PAUSE));
  EXPECT_TRUE(State(ID_VIEW_PAUSE).IsChecked());
  std::filesystem::current_path(before);
}

TEST_F(MonitorTest, WithoutAMonitorInFrontCaptureAndPauseAreDisabled) {
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_FALSE(State(ID_FILE_CAPTURE).IsEnabled());
  EXPECT_FALSE(State(ID_VIEW_PAUSE).IsEnabled());
}

TEST_F(MonitorTest, AMonitorWithoutAConnectionOffersNoPause) {
  m_app->OpenMonitor("");
  ASSERT_EQ(Monitors(), 1U);
  EXPECT_FALSE(State(ID_VIEW_PAUSE).IsEnabled());
  EXPECT_EQ(m_service.m_log, "");
}

TEST_F(MonitorTest, F1OpensThePageOfMonitors) {
  NewMonitor("web");
  m_log.Clear();
  Frame().OnCommand(ID_HELP);
  EXPECT_EQ(m_log.Reported(), "help \"monitor\"\n");
}

TEST_F(MonitorTest, QuickCloseWithAMonitorOpenEndsItsConnectionAndItsCapture) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(m_dir.Path());
  NewMonitor("web");
  m_host.AnswerFileDialog(m_dir.File("live.trc"));
  Frame().OnCommand(ID_FILE_CAPTURE);
  m_service.Last().Send();
  m_host.TickTimers();
  std::filesystem::current_path(before);
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(), kQuickClose + std::string("Yes\n"));
  EXPECT_TRUE(Face().m_closed);
  EXPECT_EQ(Monitors(), 0U);
  EXPECT_EQ(m_service.m_log, "connect web\ndisconnect\n");
  EXPECT_TRUE(m_host.Timers().empty());
  EXPECT_GT(ReadAll(m_dir.File("live.trc")).size(), 16U);
}

TEST_F(MonitorTest, AtNoTheMonitorsAreAskedBeforeTheFiles) {
  CTraceFileDoc* const file = Open(WriteTraces("web.trc", 1));
  ASSERT_TRUE(file);
  file->SetModifiedFlag(true);
  NewMonitor("web");
  m_service.Last().Send();
  m_host.TickTimers();
  m_host.ClearTranscript();
  for (int i = 0; i < 3; ++i) m_host.AnswerBox(BoxAnswer::No);
  Frame().OnClose();
  const std::string asked = "box Tessera [warning] \"Save changes to ";
  EXPECT_EQ(m_host.Reported(), kQuickClose + std::string("No\n") + asked +
                                   "Traces sent to web?\" (Yes, No, Cancel) -> No\n" + asked +
                                   "web.trc?\" (Yes, No, Cancel) -> No\n");
}

TEST_F(MonitorTest, TheEndOfTheProgramEndsConnectionsThatStillStand) {
  NewMonitor("web");
  NewMonitor("db");
  m_app.reset();
  EXPECT_EQ(m_service.m_log, "connect web\nconnect db\ndisconnect\ndisconnect\n");
  EXPECT_TRUE(m_host.Timers().empty());
}

TEST_F(MonitorTest, TheMessagePaneSaysWhatTheMonitorInFrontDoes) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(m_dir.Path());
  const auto message = [this] {
    Frame().OnIdle();
    return Face().m_panes[kPaneMessage];
  };
  NewMonitor("web");
  EXPECT_EQ(message(), "following");
  auto& list = ListOf(*Frame().Children()[0]).List();
  m_service.Last().SendMany(200);
  m_host.TickTimers();
  EXPECT_EQ(message(), "following");
  list.EnsureVisible(0);
  EXPECT_EQ(message(), "not following");
  list.EnsureVisible(199);
  m_host.AnswerFileDialog(m_dir.File("night.trc"));
  Frame().OnCommand(ID_FILE_CAPTURE);
  EXPECT_EQ(message(), "following, capturing to night.trc");
  Frame().OnCommand(ID_VIEW_PAUSE);
  EXPECT_EQ(message(), "paused, capturing to night.trc");
  m_service.Last().m_up = false;
  EXPECT_EQ(message(), "not connected, capturing to night.trc");
  Frame().OnCommand(ID_FILE_CAPTURE);
  EXPECT_EQ(message(), "not connected");
  m_service.Last().m_up = true;
  Frame().OnCommand(ID_VIEW_PAUSE);
  EXPECT_EQ(message(), "following");
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_EQ(message(), "");
  std::filesystem::current_path(before);
}

}  // namespace

#include "documents/trace_realtime_doc.h"

#include <gmock/gmock.h>

#include "docview/commands/command_ids.h"
#include "realtime_fixture.h"

namespace {

using testing::ElementsAre;

class RealtimeDocTest : public RealtimeTest {};

TEST_F(RealtimeDocTest, AConnectedDocumentHasItsTitleIsCleanAndNoLongerLoading) {
  CTraceRealtimeDoc document(m_host, m_service.Connector());
  EXPECT_TRUE(document.m_loading);
  document.SetModifiedFlag(true);
  EXPECT_TRUE(document.ConnectToMachine("Web.local:7447"));
  EXPECT_EQ(document.GetTitle(), "Traces sent to Web.local:7447");
  EXPECT_EQ(document.Machine(), "Web.local:7447");
  EXPECT_FALSE(document.IsModified());
  EXPECT_FALSE(document.m_loading);
  EXPECT_EQ(m_service.m_log, "connect Web.local:7447\n");
  EXPECT_EQ(&m_service.Last().m_names, &document.m_names);
}

TEST_F(RealtimeDocTest, TheConnectionIsMadeUnderAWaitCursor) {
  int cursors = 0;
  CTraceRealtimeDoc document(m_host, [&](const std::string&, NameMap&) -> TraceThread_i* {
    cursors = m_host.WaitCursors();
    return nullptr;
  });
  EXPECT_FALSE(document.ConnectToMachine("web"));
  EXPECT_EQ(cursors, 1);
  EXPECT_EQ(m_host.WaitCursors(), 0);
}

TEST_F(RealtimeDocTest, AConnectThatFailsGivesNoMessageAndLeavesTheDocumentLoading) {
  m_service.m_refuse = true;
  CTraceRealtimeDoc document(m_host, m_service.Connector());
  EXPECT_FALSE(document.ConnectToMachine("web"));
  EXPECT_FALSE(document.IsConnected());
  EXPECT_TRUE(document.m_loading);
  EXPECT_EQ(document.GetTitle(), "");
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n");
}

TEST_F(RealtimeDocTest, AnEmptyMachineGivesADocumentWithoutAConnectionThatGoesOnLoading) {
  CTraceRealtimeDoc document(m_host, m_service.Connector());
  EXPECT_TRUE(document.ConnectToMachine(""));
  EXPECT_EQ(m_service.m_log, "");
  EXPECT_FALSE(document.IsConnected());
  EXPECT_TRUE(document.m_loading);
  document.Drain();
  EXPECT_TRUE(document.m_traces.empty());
}

TEST_F(RealtimeDocTest, ADrainTakesAllWaitingTracesInOrderAndTellsTheViewsOnce) {
  Connect();
  LogHints();
  DrainOf(3);
  EXPECT_THAT(m_hints, ElementsAre("1004 1..3 of 3"));
  ASSERT_EQ(Size(), 3u);
  EXPECT_EQ(m_document->m_traces[0]->GetSequenceNumber(), 1u);
  EXPECT_TRUE(m_document->IsModified());
  DrainOf(2);
  EXPECT_THAT(m_hints, ElementsAre("1004 1..3 of 3", "1004 4..5 of 5"));
}

TEST_F(RealtimeDocTest, ATickWithNothingWaitingSendsNoHint) {
  Connect();
  m_document->Drain();
  EXPECT_EQ(m_log.Reported(), "");
  EXPECT_EQ(m_service.Last().m_looks, 1);
}

TEST_F(RealtimeDocTest, WithTracesWaitingAndALimitOf2500TheListNeverHoldsMore) {
  Connect();
  g_traceLimit = 2500;
  std::size_t most = 0;
  m_view->m_onUpdate = [&](CView*, unsigned, CObject*) { most = std::max(most, Size()); };
  m_service.Last().m_onTaken = [&] { most = std::max(most, Size()); };
  DrainOf(6000);
  EXPECT_EQ(most, 2500u);
  EXPECT_EQ(Size(), 2500u);
}

TEST_F(RealtimeDocTest, InASteadyStreamTheSizeRunsBetweenTheLimitMinus99AndTheLimit) {
  Connect();
  g_traceLimit = 2500;
  DrainOf(2500);
  std::size_t least = 2500, most = 0;
  for (int i = 0; i < 300; ++i) {
    DrainOf(1);
    least = std::min(least, Size());
    most = std::max(most, Size());
  }
  EXPECT_EQ(least, 2401u);
  EXPECT_EQ(most, 2500u);
}

TEST_F(RealtimeDocTest,
       AtTheLimitThe1005ComesBeforeTheAddedTraceIsInTheListAndThe1004AfterAllTrims) {
  Connect();
  g_traceLimit = 2500;
  DrainOf(2500);
  LogHints();
  DrainOf(150);
  EXPECT_THAT(m_hints, ElementsAre("1005 1..100 of 2500", "1005 101..200 of 2500",
                                   "1004 2501..2650 of 2450"));
}

TEST_F(RealtimeDocTest, ATrimTakesTheOldestHundredWhileTheyAreValid) {
  Connect();
  g_traceLimit = 2500;
  DrainOf(2500);
  int trims = 0;
  m_view->m_onUpdate = [&](CView*, unsigned hint, CObject* object) {
    if (hint != kHintTrimmed) return;
    ++trims;
    const auto& events = dynamic_cast<CTraceHint&>(*object).m_events;
    EXPECT_EQ(events.size(), 100u);
    for (std::size_t i = 0; i < events.size(); ++i) {
      EXPECT_EQ(events[i], m_document->m_traces[i]);
      EXPECT_EQ(events[i]->GetText(), "up");
    }
  };
  DrainOf(1);
  EXPECT_EQ(trims, 1);
  EXPECT_EQ(Size(), 2401u);
  EXPECT_EQ(m_document->m_traces.front()->GetSequenceNumber(), 101u);
}

// A drain may bring more than the limit. Traces that it trims itself are in no hint of the batch.
TEST_F(RealtimeDocTest, OfADrainOf6000AtALimitOf2500NoReleasedTraceReachesAView) {
  Connect();
  g_traceLimit = 2500;
  LogHints();
  DrainOf(6000);
  ASSERT_EQ(m_hints.size(), 36u);
  EXPECT_EQ(m_hints.front(), "1005 1..100 of 2500");
  EXPECT_EQ(m_hints[34], "1005 3401..3500 of 2500");
  EXPECT_EQ(m_hints.back(), "1004 3501..6000 of 2500");
}

TEST_F(RealtimeDocTest, ABatchOfWhichATrimLeftOnlyThePartInTheListTellsOnlyThatPart) {
  Connect();
  g_traceLimit = 2500;
  DrainOf(2460);
  LogHints();
  DrainOf(2461);  // trims all of the old ones and the first of the new
  EXPECT_EQ(m_hints.back(), "1004 2501..4921 of 2421");
}

TEST_F(RealtimeDocTest, TheLimitIsReadAnewAtEachAdd) {
  Connect();
  g_traceLimit = 2500;
  DrainOf(2500);
  g_traceLimit = 3000;
  DrainOf(500);
  EXPECT_EQ(Size(), 3000u);
  int taken = 0;
  m_service.Last().m_onTaken = [&] {
    if (++taken == 3) g_traceLimit = 2950;  // the third add of the drain is the first to see it
  };
  g_traceLimit = 4000;
  LogHints();
  DrainOf(4);
  EXPECT_THAT(m_hints, ElementsAre("1005 1..100 of 3002", "1004 3001..3004 of 2904"));
}

TEST_F(RealtimeDocTest, AMonitorThatRunsForDaysNeedsNoMoreStorageThanItsLimit) {
  Connect();
  g_traceLimit = 2500;
  std::size_t most = 0;
  for (int drain = 0; drain < 400; ++drain) {
    DrainOf(1000);
    most = std::max(most, m_document->m_traces.StorageBytes());
  }
  EXPECT_EQ(m_document->m_traces.back()->GetSequenceNumber(), 400000u);
  // Two blocks, the longest of which have 2 MiB, and no trace of what has gone.
  EXPECT_LE(most, (std::size_t{2} << 21) + 1024);
}

TEST_F(RealtimeDocTest, AfterTheLimitIsLoweredFarEachAddTrims100AndAdds1) {
  Connect();
  DrainOf(5000);
  g_traceLimit = 2500;
  std::vector<std::size_t> sizes;
  for (int i = 0; i < 3; ++i) {
    DrainOf(1);
    sizes.push_back(Size());
  }
  EXPECT_THAT(sizes, ElementsAre(4901u, 4802u, 4703u));
  DrainOf(100);
  EXPECT_LE(Size(), 2500u);
  EXPECT_GT(Size(), 2400u);
}

TEST_F(RealtimeDocTest, AStoredLimitBelowABlockTrimsWhatThereIsAndSendsNoEmptyTrim) {
  Connect();
  g_traceLimit = 0;
  LogHints();
  DrainOf(3);
  EXPECT_THAT(m_hints, ElementsAre("1005 1..1 of 1", "1005 2..2 of 1", "1004 3..3 of 1"));
  g_traceLimit = 40;
  DrainOf(45);
  EXPECT_EQ(m_hints.back(), "1004 43..48 of 6");
}

TEST_F(RealtimeDocTest, ATraceAddedByItselfIsTrimmedForToo) {
  Connect();
  g_traceLimit = 2500;
  DrainOf(2500);
  LogHints();
  m_document->AddTrace(m_service.Last().Send());
  m_service.Last().m_waiting.clear();
  EXPECT_THAT(m_hints, ElementsAre("1005 1..100 of 2500"));
  EXPECT_EQ(Size(), 2401u);
}

TEST_F(RealtimeDocTest, PauseTogglesBetweenPauseAndResume) {
  Connect();
  EXPECT_TRUE(IsEnabled(*m_document, ID_VIEW_PAUSE));
  EXPECT_FALSE(IsChecked(*m_document, ID_VIEW_PAUSE));
  m_document->OnCommand(ID_VIEW_PAUSE);
  EXPECT_TRUE(IsChecked(*m_document, ID_VIEW_PAUSE));
  EXPECT_TRUE(IsEnabled(*m_document, ID_VIEW_PAUSE));
  m_document->OnCommand(ID_VIEW_PAUSE);
  EXPECT_FALSE(IsChecked(*m_document, ID_VIEW_PAUSE));
  EXPECT_EQ(m_service.m_log, "connect web\npause\nresume\n");
}

TEST_F(RealtimeDocTest, AnEmptyMonitorSaysWhatItWaitsForAndWhyAndItsViewsHearOfAChange) {
  CTraceRealtimeDoc unconnected(m_host, m_service.Connector());
  EXPECT_FALSE(unconnected.IsStream());
  EXPECT_EQ(unconnected.WhyEmpty(), "No traces");
  Connect();
  LogHints();
  EXPECT_TRUE(m_document->IsStream());
  EXPECT_EQ(m_document->WhyEmpty(),
            "Waiting for traces from web\nThey show as soon as an application there sends some");
  m_document->TogglePause();
  EXPECT_EQ(m_document->WhyEmpty(),
            "Waiting for traces from web\nThe display is paused: View > Pause goes on");
  EXPECT_EQ(m_hints.size(), 1U);
  m_document->TogglePause();
  EXPECT_EQ(m_hints.size(), 2U);
  m_service.Last().m_up = false;
  m_document->Drain();
  m_document->Drain();
  EXPECT_EQ(m_hints.size(), 3U) << "once";
  EXPECT_EQ(m_document->WhyEmpty(),
            "Waiting for traces from web\n"
            "Not connected: no trace service answers there, and it is asked again");
  m_service.Last().m_up = true;
  DrainOf(1);
  EXPECT_EQ(m_hints.size(), 5U) << "the connection stands again, then the trace";
  m_hints.clear();
  m_document->TogglePause();
  EXPECT_TRUE(m_hints.empty()) << "with traces nothing says so";
}

// The connection's own thread finds the end.
TEST_F(RealtimeDocTest, AConnectionThatBreaksWhileADrainLooksAtItIsToldOnce) {
  Connect();
  LogHints();
  int looks = 0;
  m_service.Last().m_isUp = [&looks] { return ++looks == 1; };
  for (int drain = 0; drain < 3; ++drain) m_document->Drain();
  EXPECT_EQ(m_hints.size(), 1U);
}

TEST_F(RealtimeDocTest, WhilePausedTheDocumentLosesNoTraceThatArrivesAllTheSame) {
  Connect();
  m_document->TogglePause();
  DrainOf(2);
  EXPECT_EQ(Size(), 2u);
  m_document->TogglePause();
  DrainOf(1);
  EXPECT_EQ(Size(), 3u);
}

TEST_F(RealtimeDocTest, WithoutAConnectionPauseIsDisabledAndDoesNothing) {
  CTraceRealtimeDoc document(m_host, m_service.Connector());
  ASSERT_TRUE(document.ConnectToMachine(""));
  EXPECT_FALSE(IsEnabled(document, ID_VIEW_PAUSE));
  document.OnCommand(ID_VIEW_PAUSE);
  EXPECT_FALSE(document.IsPaused());
}

TEST_F(RealtimeDocTest, AClearKeepsConnectionNamesAndPauseAndTheNextDrainGoesOn) {
  Connect();
  m_document->m_names[1].name = "web";
  DrainOf(2);
  m_document->DeleteContents();
  EXPECT_EQ(m_service.m_log, "connect web\n");
  DrainOf(1);
  EXPECT_EQ(Size(), 1u);
  EXPECT_EQ(m_document->m_traces.front()->GetMachineName(m_document->m_names), "web");
}

TEST_F(RealtimeDocTest, ADocumentThatHasSeenATraceAsksWhenItClosesAndNotAfterQuickClose) {
  Connect();
  EXPECT_TRUE(m_document->SaveModified());
  DrainOf(1);
  EXPECT_FALSE(m_document->SaveModified());
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [warning] \"Save changes to Traces sent to web?\" (Yes, No, Cancel) -> "
            "Cancel\n");
  g_quickClose = true;
  EXPECT_TRUE(m_document->SaveModified());
}

TEST_F(RealtimeDocTest, TheConnectionEndsBeforeTracesAndCaptureGo) {
  Connect();
  DrainOf(2);
  const std::string path = StartCapture("live.trc");
  DrainOf(2);
  m_service.m_onLog = [&, document = m_document.get()](const std::string& line) {
    EXPECT_EQ(line, "disconnect");
    EXPECT_EQ(document->m_traces.size(), 4u);
    EXPECT_TRUE(document->IsCapturing());
    EXPECT_EQ(ReadAll(path).size(), 16u);  // the rest is in the buffer
  };
  m_view.reset();
  m_document.reset();
  EXPECT_EQ(m_service.m_log, "connect web\ndisconnect\n");
  EXPECT_GT(ReadAll(path).size(), 16u);
}

// A connection says no after the traces that had arrived when the drain began. Asked once more it
// would offer those that came since, and under a flood the drain would never end.
TEST_F(RealtimeDocTest, ADrainEndsWithTheFirstNoOfTheConnection) {
  Connect();
  DrainOf(1);
  EXPECT_EQ(m_service.Last().m_looks, 2);
}

TEST_F(RealtimeDocTest, AConnectionThatSaysYesAndGivesNothingEndsTheDrainWithoutAHint) {
  class Empty final : public TraceThread_i {
   public:
    void Disconnect() override { delete this; }
    int HasTraces() override { return 1; }
    TraceEvent_i* NextTrace() override { return nullptr; }
    void Pause() override {}
    void Resume() override {}
    Counts GetCounts() const override { return {}; }
  };
  CTraceRealtimeDoc document(m_host, [](const std::string&, NameMap&) { return new Empty; });
  ProbeView view(document, m_log);
  ASSERT_TRUE(document.ConnectToMachine("web"));
  m_log.Clear();
  document.Drain();
  EXPECT_EQ(m_log.Reported(), "");
  EXPECT_TRUE(document.m_traces.empty());
}

}  // namespace

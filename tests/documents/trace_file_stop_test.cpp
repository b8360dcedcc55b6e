// Loads that are cancelled, closed, hung, failed or that overlap.
#include <new>

#include "documents_fixture.h"

namespace {

class TraceFileStopTest : public DocumentsTest {
 protected:
  // Of this process, now.
  static std::ptrdiff_t Threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
  }
  // Ten names, then so many traces that the walk looks at the cancel event several times.
  std::string LongFile(const std::string& name = "web.trc") {
    TrcImage image;
    for (NameId id = 0; id < 10; ++id) image.Name(id, "name");
    for (int i = 0; i < 5000; ++i) image.Trace("x");
    return image.WriteTo(m_temp.File(name));
  }
};

TEST_F(TraceFileStopTest, AThreadThatHangsHoldsAWindowUpForTenSecondsAtMost) {
  EXPECT_EQ(TraceLoadSetup().stopWaitMs, 10000u);
}

TEST_F(TraceFileStopTest, CancelStopsAtTheNextMultipleOf1024RecordsAndTheTracesSoFarShow) {
  const HANDLE gate = CreateEvent();
  m_loads.beforeWalk = [gate] { gate->Wait(20000); };
  CTraceFileDoc* const document = Open(LongFile());
  ASSERT_TRUE(m_host.RunUntil([this] { return m_cancelEvents.size() == 1; }));
  m_cancelEvents[0]->Set();
  gate->Set();
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(document->m_traces.size(), 1014u);
  EXPECT_FALSE(document->IsModified());
  const std::string position = "position " + std::to_string(16 + 10 * 9 + 1014 * 46) + "\n";
  EXPECT_EQ(ReportedLines("position"), position) << "the final one only";
  EXPECT_EQ(ReportedLines("done"), "done\n");
  m_host.RunPosted();
  EXPECT_EQ(m_log.Reported("view message"), "view message 1128 1002 0\n");
}

TEST_F(TraceFileStopTest, TheStartMessageCarriesTheEventOfItsDocument) {
  CTraceFileDoc& document = Load(TrcImage().Trace("up"));
  ASSERT_EQ(m_cancelEvents.size(), 1u);
  EXPECT_EQ(m_cancelEvents[0], document.CancelEvent());
  EXPECT_FALSE(document.CancelEvent()->IsSet());
}

TEST_F(TraceFileStopTest, ClosingDuringTheLoadCancelsItWaitsAndAsksNothing) {
  std::function<void()> waitForCancel;
  m_loads.beforeWalk = [this, &waitForCancel] { waitForCancel(); };
  const HANDLE entered = CreateEvent();
  HANDLE cancel;
  const HANDLE known = CreateEvent();
  waitForCancel = [&] {
    entered->Set();
    known->Wait(20000);
    cancel->Wait(20000);
  };
  CTraceFileDoc* const document = Open(LongFile());
  cancel = document->CancelEvent();
  known->Set();
  ASSERT_TRUE(entered->Wait(20000));
  m_app.m_frame.MDIGetActive()->OnClose();
  EXPECT_TRUE(cancel->IsSet());
  EXPECT_TRUE(m_template->Documents().empty());
  m_host.RunPosted();
  EXPECT_TRUE(CreateForWriting(m_temp.File("web.trc"))) << "nobody waits for the file any more";
  EXPECT_EQ(ReportedLines("box"), "");
  EXPECT_EQ(ReportedLines("done"), "done\n") << "the progress box goes down";
  EXPECT_EQ(m_log.Reported("view message"), "");
}

TEST_F(TraceFileStopTest, AStoppedLoadLeavesItsNamesAndAnEmptyReadyDocument) {
  HANDLE cancel;
  m_loads.beforeWalk = [&cancel] { cancel->Wait(20000); };
  CTraceFileDoc document(m_host, m_loads);
  cancel = document.CancelEvent();
  ProbeView view(document, m_log);
  ASSERT_TRUE(document.OnOpenDocument(LongFile()));
  m_log.Clear();
  document.DeleteContents();
  EXPECT_TRUE(document.m_traces.empty());
  EXPECT_FALSE(document.m_loading);
  EXPECT_FALSE(document.IsModified());
  EXPECT_EQ(document.m_names.size(), 10u);
  EXPECT_EQ(m_log.Reported(), "view hint 1002\nview hint 1003\n");
  m_host.RunPosted();
  EXPECT_TRUE(document.m_traces.empty()) << "the queued hand-over finds nothing to do";
}

TEST_F(TraceFileStopTest, ADocumentThatGoesWhileItsHandOverIsQueuedIsNotTouched) {
  auto document = std::make_unique<CTraceFileDoc>(m_host, m_loads);
  const std::string path = LongFile();
  ASSERT_TRUE(document->OnOpenDocument(path));
  ASSERT_TRUE(m_host.WaitForPost());
  document.reset();
  m_host.RunPosted();
  EXPECT_EQ(ReportedLines("start").substr(0, 24), "start Loading... web.trc");
  EXPECT_EQ(ReportedLines("done"), "done\n");
}

TEST_F(TraceFileStopTest, AThreadThatHangsPastTheLimitIsDetachedAndTouchesNothingAfterwards) {
  const HANDLE gate = CreateEvent(), entered = CreateEvent();
  m_loads.beforeWalk = [gate, entered] {
    entered->Set();
    gate->Wait(20000);
  };
  m_loads.stopWaitMs = 20;
  const std::string path = LongFile();
  auto document = std::make_unique<CTraceFileDoc>(m_host, m_loads);
  ASSERT_TRUE(document->OnOpenDocument(path));
  ASSERT_TRUE(entered->Wait(20000));
  document.reset();
  m_host.RunPosted();
  EXPECT_EQ(ReportedLines(""), ReportedLines("start") + "done\n") << "the box goes down at once";
  EXPECT_FALSE(CreateForWriting(path)) << "the thread still holds its mapping";
  m_host.ClearTranscript();
  gate->Set();
  ASSERT_TRUE(ThreadReleases(path));
  EXPECT_EQ(m_host.PostedCount(), 0u);
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(TraceFileStopTest, AClearThatGivesUpWaitingLeavesTheDocumentEmptyAndLoading) {
  const std::ptrdiff_t threads = Threads();
  const HANDLE gate = CreateEvent();
  m_loads.beforeWalk = [gate] { gate->Wait(20000); };
  m_loads.stopWaitMs = 20;
  CTraceFileDoc document(m_host, m_loads);
  const std::string path = LongFile();
  ASSERT_TRUE(document.OnOpenDocument(path));
  document.DeleteContents();
  gate->Set();
  document.DeleteContents();  // nothing is left to wait for
  // The document still has the file: the thread's end is all that can be seen.
  ASSERT_TRUE(m_host.RunUntil([threads] { return Threads() == threads; }));
  m_host.RunPosted();
  EXPECT_TRUE(document.m_traces.empty());
  EXPECT_TRUE(document.m_names.empty());
  EXPECT_EQ(ReportedLines("done"), "done\n");
  EXPECT_TRUE(document.m_loading);
}

TEST_F(TraceFileStopTest, AFailedLoadSaysSoLeavesTheBoxUpAndTellsNoView) {
  m_loads.beforeWalk = [] { throw std::bad_alloc(); };
  CTraceFileDoc* const document = Open(LongFile());
  ASSERT_NE(document, nullptr);
  ASSERT_TRUE(m_host.RunUntil([this] { return !ReportedLines("posted box").empty(); }));
  m_host.RunPosted();
  EXPECT_EQ(ReportedLines("posted box"),
            "posted box Tessera [stop] \"Error opening trace file\" (OK)\n");
  EXPECT_EQ(m_cancelEvents.size(), 1u);
  EXPECT_EQ(ReportedLines("done"), "");
  EXPECT_EQ(ReportedLines("position"), "");
  EXPECT_EQ(m_log.Reported("view message"), "");
  EXPECT_TRUE(document->m_loading);
  // The box that stays up holds an event that outlives the document.
  m_app.m_frame.MDIGetActive()->OnClose();
  EXPECT_TRUE(m_template->Documents().empty());
  m_cancelEvents[0]->Set();
  m_host.ClosePostedBoxes();
  m_host.RunPosted();
  EXPECT_EQ(ReportedLines("done"), "");
}

TEST_F(TraceFileStopTest, AFailureOfADetachedLoadIsNotReported) {
  const HANDLE gate = CreateEvent();
  m_loads.beforeWalk = [gate] {
    gate->Wait(20000);
    throw std::bad_alloc();
  };
  m_loads.stopWaitMs = 20;
  const std::string path = LongFile();
  auto document = std::make_unique<CTraceFileDoc>(m_host, m_loads);
  ASSERT_TRUE(document->OnOpenDocument(path));
  document.reset();
  gate->Set();
  ASSERT_TRUE(ThreadReleases(path));
  EXPECT_EQ(ReportedLines("posted box"), "");
}

TEST_F(TraceFileStopTest, TwoOverlappingLoadsEachSpeakOfTheirOwnAndEachGetTheirTraces) {
  const HANDLE webGate = CreateEvent(), dbGate = CreateEvent();
  m_loads.beforeWalk = [webGate] { webGate->Wait(20000); };
  CTraceFileDoc* const web = Open(TrcImage().Trace("up").WriteTo(m_temp.File("web.trc")));
  m_loads.beforeWalk = [dbGate] { dbGate->Wait(20000); };
  CTraceFileDoc* const db =
      Open(TrcImage().Trace("insert").Trace("select").WriteTo(m_temp.File("db.trc")));
  ASSERT_TRUE(m_host.RunUntil([this] { return m_cancelEvents.size() == 2; }));
  EXPECT_NE(m_cancelEvents[0], m_cancelEvents[1]);
  dbGate->Set();
  ASSERT_TRUE(FinishLoad(*db));
  EXPECT_TRUE(web->m_loading);
  EXPECT_EQ(Texts(*db), "insert select ");
  webGate->Set();
  ASSERT_TRUE(FinishLoad(*web));
  EXPECT_EQ(Texts(*web), "up ");
  EXPECT_EQ(ReportedLines("done"), "done\ndone\n");
  EXPECT_EQ(ReportedLines("position"), "position 118\nposition 63\n");
}

TEST_F(TraceFileStopTest, TheCancelEventIsNeverResetSoThatASecondLoadOfTheSameDocumentStopsEarly) {
  CTraceFileDoc document(m_host, m_loads);
  ASSERT_TRUE(document.OnOpenDocument(LongFile()));
  ASSERT_TRUE(FinishLoad(document));
  EXPECT_EQ(document.m_traces.size(), 5000u);
  ASSERT_TRUE(document.OnOpenDocument(LongFile("again.trc")));
  ASSERT_TRUE(m_host.RunUntil([&] { return !document.m_traces.empty(); }));
  EXPECT_EQ(document.m_traces.size(), 1014u);
}

TEST_F(TraceFileStopTest, ManyLoadsStoppedAtAnyMomentLeaveNothingBehind) {
  for (int i = 0; i < 50; ++i) {
    CTraceFileDoc* const document = Open(LongFile("many" + std::to_string(i % 5) + ".trc"));
    ASSERT_NE(document, nullptr);
    for (int calls = 0; calls < i % 7; ++calls) m_host.RunOnePosted();
    document->OnCloseDocument();
  }
  m_host.RunPosted();
  EXPECT_TRUE(m_template->Documents().empty());
  EXPECT_TRUE(m_app.m_frame.Children().empty());
  EXPECT_EQ(m_cancelEvents.size(), 50u);
}

}  // namespace

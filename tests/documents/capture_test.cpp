// Capturing what a monitor takes into a file.
#include "realtime_fixture.h"
#include "support/file_limit.h"

namespace {

const std::string kHeader = TrcImage().Bytes();

class CaptureTest : public RealtimeTest {
 protected:
  // Opens the file as a document and lists its traces' texts, each after its machine's name.
  std::string Loaded(const std::string& path) {
    CTraceFileDoc* const file = Open(path);
    if (!file || !FinishLoad(*file)) return "not loaded";
    std::string all;
    for (std::size_t i = 0; i < file->m_traces.size(); ++i) {
      const TraceEvent_i& event = *file->m_traces[i];
      all += event.GetMachineName(file->m_names) + ":" + event.GetText() + " ";
    }
    return all;
  }
  void Take(const std::string& text, NameId id = 1) {
    m_service.Last().Send(text, id);
    m_document->Drain();
  }
};

TEST_F(CaptureTest, TheDialogAsksForATraceFileToWrite) {
  Connect();
  EXPECT_TRUE(m_document->ToggleCapture());
  EXPECT_FALSE(m_document->IsCapturing());
  EXPECT_EQ(
      m_host.Reported(),
      "save dialog \"Capture Output\" ext=.trc name=\"\" filters=\"Trace Files (*.trc)|*.trc\" -> "
      "none\n");
  ASSERT_EQ(m_host.m_fileRequests.size(), 1u);
  EXPECT_TRUE(m_host.m_fileRequests[0].save);  // which asks before it overwrites
}

TEST_F(CaptureTest, ItWritesWhatIsTakenFromNowOnAndNotWhatWasThereBefore) {
  Connect();
  m_document->m_names[1].name = "web";
  Take("before");
  const std::string path = StartCapture("live.trc");
  Take("one");
  Take("two");
  EXPECT_TRUE(m_document->ToggleCapture());
  EXPECT_FALSE(m_document->IsCapturing());
  Take("after");
  EXPECT_EQ(Loaded(path), "web:one web:two ");
}

TEST_F(CaptureTest, TheHeaderIsInTheFileAtOnce) {
  Connect();
  EXPECT_EQ(ReadAll(StartCapture("live.trc")), kHeader);
}

TEST_F(CaptureTest, TheTailThatIsBufferedAtTheEndOfTheFirstFileGoesToTheFirstFile) {
  Connect();
  const std::string first = StartCapture("first.trc");
  Take("a short one");
  EXPECT_EQ(ReadAll(first), kHeader);
  m_document->ToggleCapture();
  const std::string second = StartCapture("second.trc");
  EXPECT_EQ(ReadAll(second), kHeader);
  m_document->ToggleCapture();
  EXPECT_EQ(ReadAll(second), kHeader);
  EXPECT_EQ(Loaded(first), ":a short one ");
}

TEST_F(CaptureTest, TurnedOffAndOnAgainItAsksForAFileAgainAndWritesANewHeader) {
  Connect();
  const std::string first = StartCapture("first.trc");
  Take("one");
  m_document->ToggleCapture();
  const std::string second = StartCapture("second.trc");
  Take("two");
  m_document->ToggleCapture();
  EXPECT_EQ(m_host.m_fileRequests.size(), 2u);
  EXPECT_EQ(Loaded(first), ":one ");
  EXPECT_EQ(Loaded(second), ":two ");
}

TEST_F(CaptureTest, ASecondCaptureLacksTheNamesThatTheFirstOneHas) {
  Connect();
  m_document->m_names[1].name = "web";
  m_document->m_names[2].name = "db";
  const std::string first = StartCapture("first.trc");
  Take("one");
  m_document->ToggleCapture();
  const std::string second = StartCapture("second.trc");
  Take("two");
  Take("three", 2);
  m_document->ToggleCapture();
  EXPECT_EQ(Loaded(first), "web:one ");
  EXPECT_EQ(Loaded(second), ":two db:three ");
}

TEST_F(CaptureTest, ASaveBetweenTwoCapturesClearsTheMarksAndTheSecondHasItsNames) {
  Connect();
  m_document->m_names[1].name = "web";
  StartCapture("first.trc");
  Take("one");
  m_document->ToggleCapture();
  m_document->DeleteContents();
  ASSERT_TRUE(m_document->OnSaveDocument(m_temp.File("saved.trc")));
  const std::string second = StartCapture("second.trc");
  Take("two");
  m_document->ToggleCapture();
  EXPECT_EQ(Loaded(second), "web:two ");
}

TEST_F(CaptureTest, ASaveDuringACaptureTakesTheNamesThatTheCaptureHasNotWrittenYet) {
  Connect();
  m_document->m_names[1].name = "web";
  m_document->m_names[2].name = "db";
  Take("zero", 2);
  const std::string path = StartCapture("live.trc");
  ASSERT_TRUE(m_document->OnSaveDocument(m_temp.File("saved.trc")));
  Take("one", 2);
  Take("two");
  m_document->ToggleCapture();
  EXPECT_EQ(Loaded(path), ":one web:two ");
  EXPECT_EQ(Loaded(m_temp.File("saved.trc")), "db:zero ");
}

TEST_F(CaptureTest, AFileNameWithoutAFolderGoesToTheFolderThatTheDialogLastShowed) {
  Connect();
  std::filesystem::create_directory(m_temp.File("elsewhere"));
  // What an accepted dialog does.
  std::filesystem::current_path(m_temp.File("elsewhere"));
  m_host.AnswerFileDialog(m_temp.File("no such folder/live.trc"));
  EXPECT_TRUE(m_document->ToggleCapture());
  EXPECT_EQ(ReadAll(m_temp.File("elsewhere/live.trc")), kHeader);
}

TEST_F(CaptureTest, AFileThatCannotBeCreatedIsReportedInAPlainBoxAndCaptureStaysOff) {
  Connect();
  std::filesystem::create_directory(m_temp.File("live.trc"));
  m_host.AnswerFileDialog(m_temp.File("live.trc"));
  EXPECT_FALSE(m_document->ToggleCapture());
  EXPECT_FALSE(m_document->IsCapturing());
  EXPECT_EQ(m_host.Transcript().back(),
            "box Tessera [none] \"Cannot open output file\" (OK) -> OK");
}

TEST_F(CaptureTest, AnOpenTraceFileIsNotOverwritten) {
  Connect();
  CTraceFileDoc& open = Load(TrcImage().Trace("kept"), "open.trc");
  m_host.AnswerFileDialog(m_temp.File("open.trc"));
  EXPECT_FALSE(m_document->ToggleCapture());
  EXPECT_EQ(Texts(open), "kept ");
}

TEST_F(CaptureTest, AHeaderThatCannotBeWrittenIsReportedInAPlainBoxAndCaptureStaysOff) {
  Connect();
  std::filesystem::create_symlink("/dev/full", m_temp.File("full.trc"));
  m_host.AnswerFileDialog(m_temp.File("full.trc"));
  EXPECT_FALSE(m_document->ToggleCapture());
  EXPECT_FALSE(m_document->IsCapturing());
  EXPECT_EQ(m_host.Transcript().back(),
            "box Tessera [none] \"Cannot write to output file\" (OK) -> OK");
}

TEST_F(CaptureTest, ATraceThatCannotBeWrittenEndsTheCaptureSilentlyAndTheTracesStayInTheList) {
  Connect();
  const std::string path = StartCapture("live.trc");
  m_host.ClearTranscript();
  {
    const FileLimit full(5000);
    DrainOf(1000);
  }
  EXPECT_FALSE(m_document->IsCapturing());
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(Size(), 1000u);
  EXPECT_LE(ReadAll(path).size(), 5000u);
  EXPECT_GT(ReadAll(path).size(), kHeader.size()) << "what there was room for";
}

TEST_F(CaptureTest, AfterAFailedWriteTheBufferIsDiscardedAndTheNextFileBeginsWithItsHeader) {
  Connect();
  StartCapture("first.trc");
  {
    const FileLimit full(5000);
    DrainOf(1000);
  }
  const std::string second = StartCapture("second.trc");
  Take("fresh");
  m_document->ToggleCapture();
  EXPECT_EQ(Loaded(second), ":fresh ");
}

TEST_F(CaptureTest, TheDrainWritesWhatATrimOfTheSameDrainReleasesAgain) {
  Connect();
  g_traceLimit = 2500;
  const std::string path = StartCapture("live.trc");
  DrainOf(6000);
  m_document->ToggleCapture();
  CTraceFileDoc* const file = Open(path);
  ASSERT_TRUE(file && FinishLoad(*file));
  EXPECT_EQ(file->m_traces.size(), 6000u);
}

}  // namespace

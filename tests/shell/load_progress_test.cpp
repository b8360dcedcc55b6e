// Loads as the main frame shows them: real documents, real files, their threads and their box.
#include <atomic>

#include "documents/load_progress.h"
#include "shell_fixture.h"

namespace {

class LoadProgressTest : public ShellTest {
 protected:
  // Holds each load thread before its walk until the test releases it; the first to come is 0.
  void HoldLoads() {
    m_app->m_loads.beforeWalk = [this] {
      const int load = m_loads++;
      m_go[load]->Wait(20000);
    };
  }
  CTraceFileDoc* Begin(const std::string& path) {
    return static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(path));
  }
  bool RunUntilBoxSays(const std::string& path) {
    return m_host.RunUntil(
        [&] { return Frame().LoadStatus() && Frame().LoadStatus()->m_path == path; });
  }
  bool RunUntilReady(const CTraceFileDoc& document) {
    return m_host.RunUntil([&] { return !document.m_loading; });
  }
  std::string Box() {
    const CLoadStatus* status = Frame().LoadStatus();
    if (!status) return "no box";
    return status->m_caption + " " + status->m_path + " " + std::to_string(status->m_position) +
           "/" + std::to_string(status->m_range);
  }
  void SendPosition(std::intptr_t position) {
    Frame().SendMessage(WM_TRACE_PROGRESS, kLoadPosition, position);
  }
  void SendDone() { Frame().SendMessage(WM_TRACE_PROGRESS, kLoadDone); }
  void SendStart(const std::string& caption, const std::string& path, std::uint32_t size,
                 HANDLE event) {
    auto* start = new CLoadProgressStart{caption, path, size, std::move(event)};
    Frame().SendMessage(WM_TRACE_PROGRESS, kLoadStart, reinterpret_cast<std::intptr_t>(start));
  }

  std::atomic<int> m_loads = 0;
  HANDLE m_go[2] = {CreateEvent(), CreateEvent()};
};

TEST_F(LoadProgressTest, TheWindowStandsBeforeTheTracesAndTheBoxGoesFromStartToDone) {
  Start();
  const std::string path = WriteTraces("web.trc", 3000);
  const auto size = std::to_string(std::filesystem::file_size(path));
  HoldLoads();
  CTraceFileDoc* document = Begin(path);
  ASSERT_TRUE(document);
  EXPECT_EQ(Frame().Children().size(), 1U);
  EXPECT_TRUE(document->m_loading);
  EXPECT_TRUE(document->m_traces.empty());
  ASSERT_TRUE(RunUntilBoxSays(path));
  EXPECT_EQ(Box(), "Loading... " + path + " 0/" + size);
  m_go[0]->Set();
  std::vector<std::string> boxes;
  ASSERT_TRUE(m_host.RunUntil([&] {
    if (boxes.empty() || boxes.back() != Box()) boxes.push_back(Box());
    return !document->m_loading;
  }));
  m_host.RunPosted();
  // Header of 16 bytes, then records of 47.
  EXPECT_EQ(boxes, (std::vector<std::string>{
                       "Loading... " + path + " 0/" + size, "Loading... " + path + " 48144/" + size,
                       "Loading... " + path + " 96272/" + size,
                       "Loading... " + path + " " + size + "/" + size, "no box"}));
  EXPECT_EQ(document->m_traces.size(), 3000U);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "3000");
}

TEST_F(LoadProgressTest, AFileWithFewerThan1024RecordsShowsOnlyTheFinalPosition) {
  Start();
  const std::string path = WriteTraces("small.trc", 5);
  const auto size = static_cast<std::uint32_t>(std::filesystem::file_size(path));
  CTraceFileDoc* document = Begin(path);
  ASSERT_TRUE(document);
  std::vector<std::uint32_t> positions;
  ASSERT_TRUE(m_host.RunUntil([&] {
    const CLoadStatus* status = Frame().LoadStatus();
    if (status && status->m_position) positions.push_back(status->m_position);
    return !document->m_loading;
  }));
  ASSERT_FALSE(positions.empty());
  EXPECT_EQ(positions.front(), size);
  EXPECT_EQ(positions.back(), size);
}

TEST_F(LoadProgressTest, CancelStopsAtTheNext1024RecordsAndTheTracesSoFarShow) {
  Start();
  const std::string path = WriteTraces("web.trc", 3000);
  HoldLoads();
  CTraceFileDoc* document = Begin(path);
  ASSERT_TRUE(document);
  ASSERT_TRUE(RunUntilBoxSays(path));
  Frame().LoadStatus()->OnCancel();
  EXPECT_TRUE(Frame().LoadStatus());
  m_go[0]->Set();
  ASSERT_TRUE(RunUntilReady(*document));
  m_host.RunPosted();
  EXPECT_FALSE(Frame().LoadStatus());
  EXPECT_EQ(document->m_traces.size(), 1024U);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "1024");
}

TEST_F(LoadProgressTest, TracesThatAreNotLoadedReplaceNoFile) {
  Start();
  const std::string path = WriteTraces("web.trc", 3000);
  const std::string copy = m_dir.File("copy.trc", "a good copy");
  HoldLoads();
  CTraceFileDoc* document = Begin(path);
  ASSERT_TRUE(document);
  ASSERT_TRUE(RunUntilBoxSays(path));
  const std::string box =
      "box Tessera [warning] \"The traces of this file have not been loaded.\" (OK) -> OK";
  for (const unsigned command :
       std::vector<unsigned>{ID_FILE_SAVE, ID_FILE_SAVECOPY, ID_FILE_EXPORT}) {
    m_host.ClearTranscript();
    Frame().OnCommand(command);
    EXPECT_EQ(m_host.Transcript(), std::vector<std::string>{box});
  }
  m_host.ClearTranscript();
  EXPECT_FALSE(document->DoFileSave());
  EXPECT_EQ(m_host.Transcript(), std::vector<std::string>{box});
  EXPECT_EQ(ReadAll(copy), "a good copy");
  m_go[0]->Set();
  ASSERT_TRUE(RunUntilReady(*document));
  m_host.RunPosted();
  m_host.AnswerFileDialog(copy);
  Frame().OnCommand(ID_FILE_SAVE);
  EXPECT_EQ(ReadAll(copy), ReadAll(path));
}

TEST_F(LoadProgressTest, TwoOverlappingLoadsShareOneBoxAndStrayPositionsAreIgnored) {
  Start();
  const std::string first = WriteTraces("first.trc", 3000);
  const std::string second = WriteTraces("second.trc", 2000);
  HoldLoads();
  CTraceFileDoc* one = Begin(first);
  ASSERT_TRUE(one);
  ASSERT_TRUE(RunUntilBoxSays(first));
  ASSERT_TRUE(m_host.RunUntil([this] { return m_loads == 1; }));
  CLoadStatus* box = Frame().LoadStatus();
  CTraceFileDoc* two = Begin(second);
  ASSERT_TRUE(two);
  ASSERT_TRUE(RunUntilBoxSays(second));
  EXPECT_EQ(Frame().LoadStatus(), box);
  EXPECT_EQ(box->m_range, std::filesystem::file_size(second));

  m_go[1]->Set();
  ASSERT_TRUE(RunUntilReady(*two));
  EXPECT_FALSE(Frame().LoadStatus());
  EXPECT_TRUE(one->m_loading);
  m_go[0]->Set();
  ASSERT_TRUE(RunUntilReady(*one));
  m_host.RunPosted();
  EXPECT_FALSE(Frame().LoadStatus());
  EXPECT_EQ(one->m_traces.size(), 3000U);
}

TEST_F(LoadProgressTest, CancelOfASharedBoxSignalsTheLoadThatMadeIt) {
  Start();
  const HANDLE first = CreateEvent(), second = CreateEvent();
  SendStart("Loading...", "first.trc", 100, first);
  SendStart("Loading...", "second.trc", 50, second);
  Frame().LoadStatus()->OnCancel();
  EXPECT_TRUE(first->IsSet());
  EXPECT_FALSE(second->IsSet());
}

TEST_F(LoadProgressTest, AConversionsLoadChangesCaptionAndRangeOfTheSameBox) {
  Start();
  const HANDLE event = CreateEvent();
  SendStart("Converting...", "old.trc", 100, event);
  EXPECT_EQ(Box(), "Converting... old.trc 0/100");
  CLoadStatus* box = Frame().LoadStatus();
  SendPosition(80);
  EXPECT_EQ(Box(), "Converting... old.trc 80/100");
  SendStart("Loading...", "old.trc", 140, event);
  EXPECT_EQ(Frame().LoadStatus(), box);
  EXPECT_EQ(Box(), "Loading... old.trc 80/140");
  SendDone();
  EXPECT_EQ(Box(), "no box");
  EXPECT_EQ(m_host.Modeless().size(), 0U);
}

TEST_F(LoadProgressTest, PositionAndDoneWithoutABoxAreIgnored) {
  Start();
  SendPosition(80);
  SendDone();
  Frame().SendMessage(WM_TRACE_PROGRESS, 3, 80);
  EXPECT_EQ(Box(), "no box");
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(LoadProgressTest, TheStartRecordIsFreedAndAnAbsentOneIsIgnored) {
  Start();
  const HANDLE event = CreateEvent();
  SendStart("Loading...", "a.trc", 100, event);
  EXPECT_EQ(event.use_count(), 2);  // ours and the box's
  SendDone();
  EXPECT_EQ(event.use_count(), 1);
  Frame().SendMessage(WM_TRACE_PROGRESS, kLoadStart, 0);
  EXPECT_EQ(Box(), "no box");
}

TEST_F(LoadProgressTest, WithoutAWindowTheStartRecordIsFreedAndNoBoxIsShown) {
  CMainFrame frame(*m_app);
  const HANDLE event = CreateEvent();
  auto* start = new CLoadProgressStart{"Loading...", "a.trc", 100, event};
  frame.SendMessage(WM_TRACE_PROGRESS, kLoadStart, reinterpret_cast<std::intptr_t>(start));
  EXPECT_EQ(event.use_count(), 1);
  EXPECT_FALSE(frame.LoadStatus());
}

TEST_F(LoadProgressTest, ABoxLeftBehindByAFailedLoadGoesWithTheProgram) {
  Start();
  SendStart("Converting...", "old.trc", 100, CreateEvent());
  Frame().OnClose();
  EXPECT_TRUE(Face().m_closed);
  EXPECT_EQ(m_host.Modeless().size(), 0U);
}

TEST_F(LoadProgressTest, ClosingTheProgramDuringALoadStopsItAndEnds) {
  Start();
  const std::string path = WriteTraces("web.trc", 3000);
  HANDLE cancel;
  const HANDLE known = CreateEvent();
  m_app->m_loads.beforeWalk = [&] {
    known->Wait(20000);
    cancel->Wait(20000);
  };
  CTraceFileDoc* document = Begin(path);
  ASSERT_TRUE(document);
  cancel = document->CancelEvent();
  known->Set();
  Frame().OnClose();
  EXPECT_TRUE(cancel->IsSet());
  EXPECT_TRUE(Face().m_closed);
  EXPECT_TRUE(m_app->FileTemplate()->Documents().empty());
  m_host.RunPosted();
  EXPECT_EQ(m_host.Modeless().size(), 0U);
}

}  // namespace

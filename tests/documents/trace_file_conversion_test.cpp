// Opening a trace file of the older format.
#include "documents/trace_file_conversion.h"

#include <sys/stat.h>

#include "conversion_fixture.h"

namespace {

constexpr char kYes[] =
    "box Tessera [stop] \"This trace file was created by an older version of Tessera.  Do you want "
    "to convert it?\" (Yes, No) -> Yes\n";
constexpr char kNo[] =
    "box Tessera [stop] \"This trace file was created by an older version of Tessera.  Do you want "
    "to convert it?\" (Yes, No) -> No\n";

class TraceFileConversionTest : public ConversionTest {};

TEST_F(TraceFileConversionTest, NoClosesTheFileSilentlyAndTheFrameIsGoneAgain) {
  const std::string path = OldFile(3);
  const std::string before = ReadAll(path);
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_EQ(Open(path), nullptr);
  EXPECT_EQ(ReportedLines(""), kNo);
  EXPECT_EQ(m_host.PostedCount(), 0u);
  EXPECT_TRUE(m_app.m_frame.Children().empty());
  EXPECT_TRUE(m_template->Documents().empty());
  EXPECT_EQ(ReadAll(path), before);
  EXPECT_EQ(Folder(), "web.trc(old) ");
  EXPECT_TRUE(CreateForWriting(path)) << "view, mapping and file are released";
}

TEST_F(TraceFileConversionTest, AnyOtherAnswerGoesOn) {
  for (const BoxAnswer answer : {BoxAnswer::Yes, BoxAnswer::Ok, BoxAnswer::Cancel}) {
    m_host.AnswerBox(answer);
    CTraceFileDoc document(m_host, m_loads);
    ASSERT_TRUE(document.OnOpenDocument(OldFile(1)));
    EXPECT_TRUE(FinishLoad(document));
    EXPECT_EQ(Texts(document), "trace 1 ");
  }
}

TEST_F(TraceFileConversionTest, YesConvertsThenLoadsInTheSameProgressDialog) {
  const std::string path = OldFile(3);
  const std::string oldSize = std::to_string(std::filesystem::file_size(path));
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* const document = Open(path);
  ASSERT_NE(document, nullptr);
  ASSERT_TRUE(FinishLoad(*document));
  const std::string newSize = std::to_string(std::filesystem::file_size(path));
  EXPECT_EQ(m_host.Reported(), kYes + ("start Converting... web.trc " + oldSize) + "\nposition " +
                                   oldSize + "\nstart Loading... web.trc " + newSize +
                                   "\nposition " + newSize + "\ndone\n");
  EXPECT_EQ(Texts(*document), "trace 1 trace 2 trace 3 ");
  EXPECT_EQ(document->m_traces[0]->GetMachineName(document->m_names), "web");
  EXPECT_FALSE(document->IsModified());
  EXPECT_EQ(std::to_string(document->FileSize()), newSize);
  EXPECT_EQ(Folder(), "web.trc ") << "neither .tmp nor .old stays";
}

TEST_F(TraceFileConversionTest, TheNewFileBeginsWithTheHeaderAndASecondOpenOfItAsksNothing) {
  const std::string path = OldFile(2);
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(ReadAll(path).substr(0, 16), std::string("TRC Version 3.1", 16));
  document->OnCloseDocument();
  m_host.RunPosted();
  m_host.ClearTranscript();
  document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(Texts(*document), "trace 1 trace 2 ");
  EXPECT_EQ(ReportedLines("box") + ReportedLines("start Conv"), "");
}

TEST_F(TraceFileConversionTest, PositionsComeAtMultiplesOf1024RecordsAndOnceAtTheEnd) {
  const std::string path = OldFile(3000);
  m_host.AnswerBox(BoxAnswer::Yes);
  ASSERT_TRUE(FinishLoad(*Open(path)));
  const auto reported = m_host.Transcript();
  ASSERT_GT(reported.size(), 5u);
  EXPECT_EQ(reported[1].substr(0, 19), "start Converting...");
  const std::string size = reported[1].substr(reported[1].rfind(' ') + 1);
  // A name of 6 bytes, then traces of 48 bytes and their number's digits after a tag and a NUL.
  const std::size_t end1024 = 12 + 6 + 1023 * 54 + 9 + 2 * 90 + 3 * 900 + 4 * 24;
  EXPECT_EQ(reported[2], "position " + std::to_string(end1024));
  EXPECT_EQ(reported[3], "position " + std::to_string(end1024 + 1024 * 58));
  EXPECT_EQ(reported[4], "position " + size);
  EXPECT_EQ(reported[5].substr(0, 16), "start Loading...");
}

TEST_F(TraceFileConversionTest, AStaleOldFileAndAStaleTemporaryFileAreReplaced) {
  const std::string path = OldFile(1);
  m_temp.File("web.trc.old", "from an earlier try");
  m_temp.File("web.trc.tmp",
              "from an earlier try, and longer than the new file will ever be, as "
              "far as one can say; it has to be emptied before it is written. It is "
              "still not long enough, so here is another sentence.");
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(Texts(*document), "trace 1 ");
  EXPECT_EQ(Folder(), "web.trc ");
  EXPECT_EQ(ReportedLines("posted box"), "");
}

TEST_F(TraceFileConversionTest, ACancelLeavesTheShortenedFileUnderItsNameAndTheOldOneIsGone) {
  const std::string path = OldFile(5000);
  HANDLE cancel;
  m_loads.beforeWalk = [&cancel] { cancel->Set(); };
  CTraceFileDoc document(m_host, m_loads);
  cancel = document.CancelEvent();
  m_host.AnswerBox(BoxAnswer::Yes);
  ASSERT_TRUE(document.OnOpenDocument(path));
  ASSERT_TRUE(FinishLoad(document));
  EXPECT_EQ(document.m_traces.size(), 1022u)
      << "the conversion stopped at 1024 records, one of them a name; of the new file's two "
         "names and 1023 traces the load read 1024 records too";
  EXPECT_EQ(Folder(), "web.trc ");
  EXPECT_FALSE(document.IsModified());
  m_loads.beforeWalk = nullptr;
  CTraceFileDoc again(m_host, m_loads);
  ASSERT_TRUE(again.OnOpenDocument(path));
  ASSERT_TRUE(FinishLoad(again));
  EXPECT_EQ(again.m_traces.size(), 1023u);
}

TEST_F(TraceFileConversionTest, ClosingTheDocumentCancelsTheConversionToo) {
  const std::string path = OldFile(5000);
  const HANDLE entered = CreateEvent(), known = CreateEvent();
  HANDLE cancel;
  m_loads.beforeWalk = [&] {
    entered->Set();
    known->Wait(20000);
    cancel->Wait(20000);
  };
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* const document = Open(path);
  cancel = document->CancelEvent();
  known->Set();
  ASSERT_TRUE(entered->Wait(20000));
  m_app.m_frame.MDIGetActive()->OnClose();
  EXPECT_TRUE(m_template->Documents().empty());
  m_host.RunPosted();
  EXPECT_EQ(ReportedLines("done"), "done\n");
  EXPECT_EQ(Folder(), "web.trc ");
  EXPECT_TRUE(CreateForWriting(path)) << "nobody holds the file any more";
}

TEST_F(TraceFileConversionTest, TheOldViewStaysMappedUntilTheDocumentGoes) {
  const auto views = [] {
    const std::string maps = ReadAll("/proc/self/maps");
    return maps.find("web.trc.old (deleted)") != std::string::npos;
  };
  const std::string path = OldFile(1000);
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_TRUE(views());
  document->OnCloseDocument();
  m_host.RunPosted();
  EXPECT_FALSE(views());
}

TEST_F(TraceFileConversionTest, AFileOfWholePagesConvertsLikeAnyOther) {
  for (const std::size_t pages : {1u, 2u, 16u}) {
    OldTrcImage image;
    image.Trace("first");
    const std::size_t missing = 4096 * pages - image.Size() - 48;
    image.Trace({.text = std::string(missing, 'x')});
    ASSERT_EQ(image.Size() % 4096, 0u);
    m_host.AnswerBox(BoxAnswer::Yes);
    CTraceFileDoc* const document = Open(image.WriteTo(m_temp.File("web.trc")));
    ASSERT_TRUE(FinishLoad(*document));
    EXPECT_EQ(Texts(*document), "first " + std::string(missing, 'x') + " ");
    document->OnCloseDocument();
    m_host.RunPosted();
  }
}

TEST_F(TraceFileConversionTest, AFileThatIsCutOrFullOfStrayBytesConvertsWithoutAMessage) {
  OldTrcImage image;
  image.Trace("one").Raw(99).Raw(7).Trace("two").Cut(2);
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc* const document = Open(image.WriteTo(m_temp.File("web.trc")));
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(Texts(*document), "one tw ");
  EXPECT_EQ(ReportedLines("posted box"), "");
}

TEST_F(TraceFileConversionTest, TheNewFileHasTheOldOnesPermissions) {
  for (const mode_t mode : {0600u, 0640u, 0444u}) {
    const std::string path = OldFile(1, "mode" + std::to_string(mode) + ".trc");
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    m_host.AnswerBox(BoxAnswer::Yes);
    ASSERT_TRUE(FinishLoad(*Open(path)));
    struct stat status;
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, mode);
  }
}

TEST_F(TraceFileConversionTest, TwoDocumentsOfOneOlderFileDoNotHurtEachOther) {
  const std::string path = OldFile(100);
  const HANDLE gate = CreateEvent();
  m_loads.beforeWalk = [gate] { gate->Wait(20000); };
  m_host.AnswerBox(BoxAnswer::Yes);
  m_host.AnswerBox(BoxAnswer::Yes);
  CTraceFileDoc first(m_host, m_loads), second(m_host, m_loads);
  ASSERT_TRUE(first.OnOpenDocument(path));
  ASSERT_TRUE(second.OnOpenDocument(path));
  gate->Set();
  // Each has its traces or has said why not.
  EXPECT_TRUE(m_host.RunUntil([&] {
    m_host.ClosePostedBoxes();
    const bool failed = ReportedLines("posted box").find("Error opening") != std::string::npos;
    return int{!first.m_loading} + int{!second.m_loading} + int{failed} == 2;
  }));
  EXPECT_EQ(ReadAll(path).substr(0, 15), "TRC Version 3.1");
}

}  // namespace

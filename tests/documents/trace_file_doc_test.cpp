#include "documents/trace_file_doc.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "documents/trace_file_load.h"
#include "documents_fixture.h"

namespace {

class TraceFileDocTest : public DocumentsTest {
 protected:
  // A new document refuses the path: returns the boxes that were shown, then the reason.
  std::string Refused(const std::string& path) {
    m_host.ClearTranscript();
    CTraceFileDoc document(m_host);
    if (document.OnOpenDocument(path)) return "opened";
    EXPECT_EQ(document.FileSize(), 0u);
    return m_host.Reported() + document.OpenFailure();
  }
};

constexpr char kInvalid[] = "box Tessera [stop] \"Invalid format.\" (OK) -> OK\n";

TEST_F(TraceFileDocTest, TheFrameShowsBeforeTheTracesAndTheViewIsNotifiedOfThem) {
  const HANDLE gate = CreateEvent();
  m_loads.beforeWalk = [gate] { gate->Wait(20000); };
  CTraceFileDoc* const document =
      Open(TrcImage().Name(7, "web").Trace("up").Trace("down").WriteTo(m_temp.File("web.trc")));
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(m_app.m_frame.MDIGetActive()->Title(), "web.trc");
  EXPECT_TRUE(document->m_loading);
  EXPECT_TRUE(document->m_traces.empty());
  EXPECT_FALSE(IsEnabled(*document, ID_EDIT_CLEAR_ALL));
  m_log.Clear();
  gate->Set();
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(Texts(*document), "up down ");
  EXPECT_EQ(NameOf(document->m_names, 7), "web");
  EXPECT_FALSE(document->IsModified());
  EXPECT_EQ(m_log.Reported(), "") << "the update is posted";
  m_host.RunPosted();
  EXPECT_EQ(m_log.Reported(), "view message 1128 1002 0\n");
}

TEST_F(TraceFileDocTest, EveryViewIsNotifiedOnceWhenTheTracesAreReady) {
  const HANDLE gate = CreateEvent();
  m_loads.beforeWalk = [gate] { gate->Wait(20000); };
  CTraceFileDoc* const document = Open(TrcImage().Trace("up").WriteTo(m_temp.File("web.trc")));
  ProbeView late(*document, m_log, "late");
  gate->Set();
  ASSERT_TRUE(FinishLoad(*document));
  m_host.RunPosted();
  EXPECT_EQ(m_log.Reported("late"), "late message 1128 1002 0\n");
  EXPECT_EQ(m_log.Reported("view message"), "view message 1128 1002 0\n");
}

TEST_F(TraceFileDocTest, FewerThan1024RecordsShowOnlyTheFinalPosition) {
  TrcImage image;
  for (int i = 0; i < 1023; ++i) image.Trace("x");
  CTraceFileDoc& document = Load(image);
  const std::string size = std::to_string(image.Size());
  EXPECT_EQ(m_host.Reported(),
            "start Loading... web.trc " + size + "\nposition " + size + "\ndone\n");
  EXPECT_EQ(document.m_traces.size(), 1023u);
}

TEST_F(TraceFileDocTest, PositionsComeAtMultiplesOf1024RecordsOfAnyTagAndOnceAtTheEnd) {
  TrcImage image;
  std::string expected;
  for (int record = 1; record <= 2500; ++record) {
    if (record % 3 == 0) {
      image.Name(7, "web");
    } else if (record % 3 == 1) {
      image.Raw(12);
    } else {
      image.Trace("x");
    }
    if (record % 1024 == 0) expected += "position " + std::to_string(image.Size()) + "\n";
  }
  CTraceFileDoc& document = Load(image);
  const std::string size = std::to_string(image.Size());
  EXPECT_EQ(m_host.Reported(),
            "start Loading... web.trc " + size + "\n" + expected + "position " + size + "\ndone\n");
  EXPECT_EQ(document.m_traces.size(), 833u);
  EXPECT_EQ(document.Damage().skippedBytes, 834u);
}

TEST_F(TraceFileDocTest, TheLoadingFlagStandsUntilAfterTheDoneMessage) {
  CTraceFileDoc* document = nullptr;
  std::string seen;
  m_onProgress = [&](std::uintptr_t what) {
    if (what == kLoadDone) seen = document->m_loading ? "loading" : "ready";
  };
  document = Open(TrcImage().Trace("up").WriteTo(m_temp.File("web.trc")));
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(seen, "loading");
}

TEST_F(TraceFileDocTest, TheLoadThreadReachesTheInterfaceOnlyByPostedCalls) {
  const std::string path = TrcImage().Trace("up").WriteTo(m_temp.File("web.trc"));
  const auto load =
      std::make_shared<TraceFileLoad>(m_host, MappedFile::Open(path), path, CreateEvent());
  int handedOver = 0;
  load->m_handOver = [&handedOver] { ++handedOver; };
  std::thread([load] { load->Run({}); }).join();
  EXPECT_EQ(m_host.Reported() + m_log.Reported(), "");
  EXPECT_EQ(handedOver, 0);
  m_host.RunPosted();
  EXPECT_EQ(m_host.Reported(), "start Loading... web.trc 63\nposition 63\ndone\n");
  EXPECT_EQ(handedOver, 1);
}

TEST_F(TraceFileDocTest, PositionsDoNotFloodAQueueThatIsNotServed) {
  const std::size_t bytes = std::size_t{1024} * TraceFileLoad::kWaitingPositions * 10;
  const std::string path = m_temp.File("stray.trc", TrcImage().Bytes() + std::string(bytes, 'x'));
  const auto load =
      std::make_shared<TraceFileLoad>(m_host, MappedFile::Open(path), path, CreateEvent());
  load->Run({});
  EXPECT_EQ(load->m_found.damage.skippedBytes, bytes);
  m_host.RunPosted();
  const auto reported = m_host.Transcript();
  ASSERT_EQ(reported.size(), TraceFileLoad::kWaitingPositions + 3u);  // start, final position, done
  for (std::size_t i = 1; i <= TraceFileLoad::kWaitingPositions; ++i) {
    EXPECT_EQ(reported[i], "position " + std::to_string(16 + 1024 * i));
  }
  EXPECT_EQ(reported[reported.size() - 2], "position " + std::to_string(16 + bytes));
  EXPECT_EQ(reported.back(), "done");
}

TEST_F(TraceFileDocTest, AFileOfExactly16BytesLoadsAsAnEmptyDocument) {
  CTraceFileDoc& document = Load(TrcImage());
  EXPECT_TRUE(document.m_traces.empty());
  EXPECT_EQ(m_host.Reported(), "start Loading... web.trc 16\nposition 16\ndone\n");
}

TEST_F(TraceFileDocTest, AnyOtherHeaderIsAnInvalidFormat) {
  for (const char* header : {"TRC Version 3.2", "TRC Version 3.", "PK", "trc version 3.1"}) {
    const std::string path = m_temp.File("bad.trc", std::string(header) + std::string(20, '\0'));
    EXPECT_EQ(Refused(path), std::string(kInvalid) + "Invalid format.") << header;
    EXPECT_TRUE(CreateForWriting(path)) << "everything is released";
  }
}

TEST_F(TraceFileDocTest, AMissingPathGivesNoMessageAndItsFrameIsGoneAgain) {
  EXPECT_EQ(Open(m_temp.File("missing.trc")), nullptr);
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_TRUE(m_app.m_frame.Children().empty());
  EXPECT_TRUE(m_template->Documents().empty());
  EXPECT_NE(m_log.Reported().find("child gone"), std::string::npos);
  EXPECT_NE(Refused(m_temp.File("missing.trc")), "");
}

TEST_F(TraceFileDocTest, WhatCannotBeMappedFailsWithoutABoxButWithAReason) {
  const std::string fifo = m_temp.File("fifo.trc"), huge = m_temp.File("huge.trc", "x");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  ASSERT_EQ(truncate(huge.c_str(), off_t{1} << 32), 0);
  for (const std::string& path : {m_temp.File("empty.trc", ""), m_temp.Path(), fifo, huge}) {
    const std::string why = Refused(path);
    EXPECT_NE(why, "") << path;
    EXPECT_NE(why, "opened") << path;
    EXPECT_EQ(m_host.Reported(), "") << path;
  }
}

TEST_F(TraceFileDocTest, AFileThatEndsInTheMiddleOfATraceLoadsWithoutAMessage) {
  TrcImage whole;
  whole.Trace("one").Trace("two");
  for (std::size_t cut = 1; cut <= 47; ++cut) {
    TrcImage image = whole;
    image.Cut(cut);
    m_host.ClearTranscript();
    CTraceFileDoc& document = Load(image, "cut" + std::to_string(cut) + ".trc");
    EXPECT_EQ(document.m_traces.size(), 2u) << cut;
    EXPECT_EQ(Texts(document).substr(0, 4), "one ") << cut;
    EXPECT_EQ(DamageText(document.Damage(), true), "last record cut at byte 64") << cut;
    const auto reported = m_host.Transcript();
    EXPECT_EQ(reported.at(1), "position " + std::to_string(image.Size())) << "not behind the end";
    EXPECT_EQ(reported.back(), "done");
  }
}

TEST_F(TraceFileDocTest, AWholeFileHasNoDamage) {
  CTraceFileDoc& document = Load(TrcImage().Name(7, "web").Trace("up").Name(8, ""));
  EXPECT_FALSE(document.Damage().Any());
  EXPECT_EQ(DamageText(document.Damage(), true), "");
  EXPECT_FALSE(Load(TrcImage(), "header.trc").Damage().Any());
}

TEST_F(TraceFileDocTest, StrayBytesAndACutNameAreCountedWithTheirPlaces) {
  TrcImage image;
  image.Trace("up").Raw(12).Raw(12).Trace("down").Raw(13).Name(7, "web").Cut(1);
  const TrcDamage damage = Load(image).Damage();
  EXPECT_EQ(damage.skippedBytes, 3u);
  EXPECT_EQ(damage.firstSkippedAt, 16u + 47u);
  EXPECT_EQ(damage.cutAt, image.Size() - 7);
  EXPECT_EQ(DamageText(damage), "3 bytes skipped, last record cut");
  EXPECT_EQ(DamageText(damage, true),
            "3 bytes skipped in 2 places from byte 63 on, last record cut at byte 115");
}

TEST_F(TraceFileDocTest, ANameEndsAtItsFirstNul) {
  TrcImage image;
  image.Name(7, std::string_view("web\0stray", 9)).Trace({.text = "up", .machine = 7});
  CTraceFileDoc& document = Load(image);
  EXPECT_EQ(document.m_names.at(7).name, "web");
  const std::string copy = m_temp.File("copy.trc");
  ASSERT_TRUE(document.OnSaveDocument(copy));
  EXPECT_EQ(ReadAll(copy).substr(16, 8), std::string("\x0A\0\7\0\3web", 8));
}

TEST_F(TraceFileDocTest, NamesMayRepeatBeEmptyOrMissing) {
  TrcImage image;
  image.Name(7, "old").Name(8, "").Trace({.text = "up", .machine = 7, .app = 8, .component = 9});
  image.Raw(12).Name(7, "new");
  CTraceFileDoc& document = Load(image);
  const TraceEvent_i& trace = *document.m_traces[0];
  EXPECT_EQ(trace.GetMachineName(document.m_names), "new");
  EXPECT_EQ(trace.GetAppName(document.m_names), "");
  EXPECT_EQ(trace.GetComponentName(document.m_names), "");
  EXPECT_EQ(document.m_names.size(), 2u);
  EXPECT_EQ(document.m_names.at(7).written, 0u);
  EXPECT_EQ(document.Damage().skippedBytes, 1u);
  EXPECT_EQ(document.m_indexes.components.Ids(), std::vector<NameId>{9});
}

TEST_F(TraceFileDocTest, ClearKeepsTheMappingAndDoesNotReload) {
  TrcImage image;
  image.Name(7, "web").Trace({.text = "up", .machine = 7});
  CTraceFileDoc& document = Load(image);
  m_host.RunPosted();
  m_host.ClearTranscript();
  m_log.Clear();
  EXPECT_TRUE(document.OnCommand(ID_EDIT_CLEAR_ALL));
  EXPECT_EQ(m_log.Reported(), "view hint 1002\nview hint 1003\n");
  EXPECT_TRUE(document.m_traces.empty());
  EXPECT_EQ(document.FileSize(), image.Size());
  EXPECT_FALSE(CreateForWriting(m_temp.File("web.trc"))) << "the file is still held";
  EXPECT_EQ(NameOf(document.m_names, 7), "web");
  EXPECT_FALSE(document.m_loading);
  m_host.RunPosted();
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(TraceFileDocTest, ANewDocumentOnlyClears) {
  CTraceFileDoc document(m_host);
  ProbeView view(document, m_log);
  EXPECT_TRUE(document.OnNewDocument());
  EXPECT_EQ(m_log.Reported(), "view hint 1002\nview hint 1003\n");
  EXPECT_EQ(m_host.PostedCount(), 0u);
}

TEST_F(TraceFileDocTest, AStartMessageWithoutAMainWindowIsFreed) {
  m_host.SetMainWindow(nullptr);
  CTraceFileDoc document(m_host);
  ASSERT_TRUE(document.OnOpenDocument(TrcImage().Trace("up").WriteTo(m_temp.File("web.trc"))));
  ASSERT_TRUE(FinishLoad(document));
  EXPECT_EQ(Texts(document), "up ");
  EXPECT_EQ(m_host.Reported(), "");
  m_host.SetMainWindow(&m_app.m_frame);
}

TEST_F(TraceFileDocTest, AClosedDocumentReleasesItsFile) {
  Load(TrcImage().Trace("up"));
  EXPECT_FALSE(CreateForWriting(m_temp.File("web.trc")));
  m_app.m_frame.MDIGetActive()->OnClose();
  EXPECT_TRUE(m_template->Documents().empty());
  EXPECT_TRUE(CreateForWriting(m_temp.File("web.trc")));
}

}  // namespace

#include "documents_fixture.h"
#include "records/trc_writer.h"
#include "support/file_limit.h"
#include "support/folder_names.h"
#include "support/short_pieces.h"

namespace {

constexpr char kCannotCreate[] = "box Tessera [stop] \"Error creating file.\" (OK) -> OK\n";
constexpr char kCannotWrite[] = "box Tessera [stop] \"Error writing to file.\" (OK) -> OK\n";

std::string Dump(const CTraceDoc& document) {
  std::string all;
  const NameMap& names = document.m_names;
  for (std::size_t i = 0; i < document.m_traces.size(); ++i) {
    const TraceEvent_i& trace = *document.m_traces[i];
    for (const std::uint64_t number :
         {std::uint64_t{trace.GetSequenceNumber()}, std::uint64_t{trace.GetMachineId()},
          std::uint64_t{trace.GetAppId()}, std::uint64_t{trace.GetComponentId()},
          std::uint64_t{trace.GetCategoryId()}, std::uint64_t{trace.GetPidId()},
          std::uint64_t{trace.GetTidId()}, std::uint64_t{trace.GetSourceFileId()},
          std::uint64_t{trace.GetDate()}, std::uint64_t{trace.GetTime()}, trace.GetTicCount(),
          static_cast<std::uint64_t>(trace.GetAttributes()),
          std::uint64_t{trace.GetSourceLine()}}) {
      all += std::to_string(number) + " ";
    }
    all += trace.GetMachineName(names) + "," + trace.GetAppName(names) + "," +
           trace.GetComponentName(names) + "," + trace.GetCategoryName(names) + "," +
           trace.GetPidName(names) + "," + trace.GetTidName(names) + "," +
           trace.GetSourceFileName(names) + " " + trace.GetText() + "|" + trace.GetStack() + "\n";
  }
  return all;
}

TrcImage Sample() {
  TrcImage image;
  for (NameId id = 1; id <= 14; ++id) image.Name(id, "name " + std::to_string(id));
  for (NameId i = 0; i < 40; ++i) {
    const NameId odd = i % 2 ? 7 : 0;
    TraceFields trace;
    trace.text = "text " + std::to_string(i) + " \xC3\xA4";
    trace.stack = odd ? "a\nb" : "";
    trace.machine = 1 + odd, trace.app = 2 + odd, trace.component = 3 + odd;
    trace.category = 4 + odd, trace.pid = 5 + odd, trace.tid = 6 + odd, trace.file = 7 + odd;
    trace.tic = 0xFF00000000000000u + i, trace.line = i, trace.attributes = 31;
    image.Trace(trace);
  }
  return image;
}

class TraceSaveTest : public DocumentsTest {
 protected:
  static TrcImage ManyTraces() {
    TrcImage image;
    image.Name(7, "web");
    for (int i = 0; i < 2000; ++i) image.Trace({.text = std::to_string(i), .machine = 7});
    return image;
  }
  std::set<std::string> Folder() const { return NamesIn(m_temp.Path()); }
};

TEST_F(TraceSaveTest, ADocumentWithNoTraceIsSavedAs16Bytes) {
  CTraceDoc document(m_host);
  EXPECT_TRUE(document.OnSaveDocument(m_temp.File("empty.trc")));
  EXPECT_EQ(ReadAll(m_temp.File("empty.trc")), TrcImage().Bytes());
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n");
}

TEST_F(TraceSaveTest, ASavedFileReopenedEqualsTheOriginal) {
  CTraceFileDoc& original = Load(Sample());
  ASSERT_EQ(original.m_traces.size(), 40u);
  EXPECT_TRUE(original.OnSaveDocument(m_temp.File("copy.trc")));
  const CTraceFileDoc* const copy = Open(m_temp.File("copy.trc"));
  ASSERT_NE(copy, nullptr);
  ASSERT_TRUE(FinishLoad(*copy));
  EXPECT_EQ(Dump(*copy), Dump(original));
  EXPECT_NE(Dump(*copy).find("name 14"), std::string::npos);
}

TEST_F(TraceSaveTest, EverySaveWritesEveryNameAnew) {
  CTraceFileDoc& document = Load(Sample());
  EXPECT_TRUE(document.OnSaveDocument(m_temp.File("first.trc")));
  EXPECT_TRUE(document.OnSaveDocument(m_temp.File("second.trc")));
  EXPECT_EQ(ReadAll(m_temp.File("first.trc")), ReadAll(m_temp.File("second.trc")));
  EXPECT_EQ(std::filesystem::file_size(m_temp.File("first.trc")), Sample().Size());
}

TEST_F(TraceSaveTest, TheModifiedFlagIsNotTouched) {
  CTraceFileDoc& document = Load(Sample());
  document.SetModifiedFlag(true);
  EXPECT_TRUE(document.OnSaveDocument(m_temp.File("copy.trc")));
  EXPECT_TRUE(document.IsModified());
  document.SetModifiedFlag(false);
  EXPECT_TRUE(document.OnSaveDocument(m_temp.File("copy.trc")));
  EXPECT_FALSE(document.IsModified());
}

TEST_F(TraceSaveTest, ASaveOverItsOwnOpenFileFailsAndLeavesItByteForByte) {
  CTraceFileDoc& document = Load(Sample());
  std::filesystem::create_hard_link(m_temp.File("web.trc"), m_temp.File("hard.trc"));
  std::filesystem::create_symlink(m_temp.File("web.trc"), m_temp.File("soft.trc"));
  for (const char* name : {"web.trc", "hard.trc", "soft.trc"}) {
    m_host.ClearTranscript();
    m_host.AnswerFileDialog(m_temp.File(name));
    EXPECT_FALSE(document.DoSave(nullptr, false)) << name;
    EXPECT_EQ(m_host.Transcript().size(), 2u) << name;
    EXPECT_EQ(m_host.Transcript().back() + "\n", kCannotCreate) << name;
    EXPECT_EQ(ReadAll(m_temp.File("web.trc")), Sample().Bytes()) << name;
  }
  EXPECT_EQ(document.m_traces.size(), 40u);
}

TEST_F(TraceSaveTest, AFileThatCannotBeMadeIsReported) {
  CTraceDoc document(m_host);
  EXPECT_FALSE(document.OnSaveDocument(m_temp.File("no/such/folder.trc")));
  EXPECT_EQ(m_host.Reported(), kCannotCreate);
}

TEST_F(TraceSaveTest, AFullDiskThatShowsOnlyAtTheLastFlushIsSeen) {
  CTraceDoc document(m_host);
  EXPECT_FALSE(document.OnSaveDocument("/dev/full"));
  EXPECT_EQ(m_host.Reported(),
            std::string("wait cursor on\n") + kCannotWrite + "wait cursor off\n");
  EXPECT_EQ(m_host.WaitCursors(), 0);
}

TEST_F(TraceSaveTest, AFailedWriteIsReportedWhileTheWaitCursorStillShows) {
  TrcImage image;  // more than what is gathered before it goes to the disk
  for (std::size_t i = 0; i < TrcWriter::kBlockBytes / 1000; ++i)
    image.Trace(std::string(2000, 'x'));
  CTraceFileDoc& document = Load(image);
  m_host.ClearTranscript();
  EXPECT_FALSE(document.OnSaveDocument("/dev/full"));
  EXPECT_EQ(m_host.Reported(),
            std::string("wait cursor on\n") + kCannotWrite + "wait cursor off\n");
}

TEST_F(TraceSaveTest, ThePartAlreadyWrittenStaysOnTheDisk) {
  CTraceFileDoc& document = Load(Sample());
  const std::string path = m_temp.File("part.trc");
  {
    const FileLimit full(1024);
    EXPECT_FALSE(document.OnSaveDocument(path));
  }
  EXPECT_EQ(std::filesystem::file_size(path), 1024u);
  EXPECT_EQ(ReadAll(path).substr(0, 16), TrcImage().Bytes());
}

TEST_F(TraceSaveTest, ADocumentIsLeftAsItWasByAFailedSave) {
  CTraceFileDoc& document = Load(Sample());
  const std::string before = Dump(document);
  EXPECT_FALSE(document.OnSaveDocument("/dev/full"));
  EXPECT_EQ(Dump(document), before);
  EXPECT_FALSE(document.IsModified());
  EXPECT_TRUE(document.OnSaveDocument(m_temp.File("copy.trc")));
  EXPECT_EQ(std::filesystem::file_size(m_temp.File("copy.trc")), Sample().Size());
}

TEST_F(TraceSaveTest, ALongSaveTellsHowFarItIsAndTakesItsPlaceWhenItIsWhole) {
  CTraceFileDoc& document = Load(ManyTraces());
  const std::string path = m_temp.File("copy.trc", "old");
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& dialog) {
    const auto& box = dynamic_cast<CWorkBox&>(dialog);
    EXPECT_STREQ(box.Message(), "Saving...");
    EXPECT_TRUE(document.IsBusy());
    int last = *box.Progress();
    for (int tick = 0; tick < 4; ++tick) {
      m_host.TickTimers();
      EXPECT_GT(*box.Progress(), last);
      last = *box.Progress();
      EXPECT_EQ(ReadAll(path), "old");
    }
    EXPECT_LT(last, 1000);
    m_host.Finish(dialog);
  });
  EXPECT_TRUE(document.OnSaveDocument(path));
  EXPECT_EQ(ReadAll(path), ManyTraces().Bytes());
  EXPECT_FALSE(document.IsBusy());
}

TEST_F(TraceSaveTest, ACancelledSaveLeavesNoFileAndAnExistingOneAsItWas) {
  CTraceFileDoc& document = Load(ManyTraces());
  m_temp.File("old.trc", "old");
  const std::set<std::string> before = Folder();
  m_host.ClearTranscript();
  for (const char* name : {"old.trc", "new.trc"}) {
    const ShortPieces pieces(m_host);
    m_host.AnswerWorkBox([&](CDialog& box) {
      m_host.TickTimers();
      EXPECT_GT(Folder().size(), before.size());
      box.OnCancel();
    });
    EXPECT_FALSE(document.OnSaveDocument(m_temp.File(name)));
  }
  EXPECT_EQ(Folder(), before);
  EXPECT_EQ(ReadAll(m_temp.File("old.trc")), "old");
  EXPECT_EQ(m_host.Reported().find("box Tessera"), std::string::npos) << "the person knows";
  EXPECT_EQ(m_host.WaitCursors(), 0);
}

TEST_F(TraceSaveTest, WhatACancelledSaveWroteOfTheNamesACaptureWritesAgain) {
  CTraceFileDoc& document = Load(ManyTraces());
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  EXPECT_FALSE(document.OnSaveDocument(m_temp.File("new.trc")));
  EXPECT_EQ(document.m_names.at(7).written, 0);
}

TEST_F(TraceSaveTest, TracesThatGoMeanwhileAreNotReadAndTheSaveFails) {
  CTraceFileDoc& document = Load(ManyTraces());
  m_host.ClearTranscript();
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) {
    document.m_traces.Clear();
    m_host.Finish(box);
  });
  EXPECT_FALSE(document.OnSaveDocument(m_temp.File("copy.trc")));
  EXPECT_NE(m_host.Reported().find(kCannotWrite), std::string::npos);
}

TEST_F(TraceSaveTest, ACancelledSaveOfAClosingDocumentKeepsItOpen) {
  CTraceFileDoc& document = Load(ManyTraces());
  document.SetModifiedFlag(true);
  const ShortPieces pieces(m_host);
  m_host.AnswerBox(BoxAnswer::Yes);
  m_host.AnswerFileDialog(m_temp.File("copy.trc"));
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  EXPECT_FALSE(document.SaveModified());
  EXPECT_TRUE(document.IsModified());
}

}  // namespace

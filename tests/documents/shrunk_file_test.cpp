// Trace files that other programs cut, replace or lengthen while this one has them open.
#include <unistd.h>

#include "conversion_fixture.h"

namespace {

class ShrunkFileTest : public ConversionTest {
 protected:
  static constexpr std::size_t kTraces = 3000;
  static constexpr off_t kLeft = 8192;  // two pages

  // Whole pages of traces, each with a name, a text and a stack: a last, partial page would be a
  // copy, and stay.
  std::string LongFile() {
    TrcImage image;
    image.Name(1, "web");
    for (std::size_t i = 0; i < kTraces; ++i)
      image.Trace({.text = "the request was served", .stack = "main", .machine = 1});
    while (image.Size() % 4096 != 0) image.Raw(12);
    return image.WriteTo(m_temp.File("web.trc"));
  }
  // How many traces still have their text.
  static std::size_t Whole(const CTraceDoc& document) {
    std::size_t whole = 0;
    document.m_traces.ForEach(0, [&](const TraceEvent_i* trace) {
      whole += trace->GetText() == "the request was served" && trace->GetStack() == "main";
    });
    return whole;
  }
};

TEST_F(ShrunkFileTest, ACutUnderShownTracesLeavesTheirNumberAndReadsAsZerosFromThere) {
  const std::string path = LongFile();
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  ASSERT_EQ(Whole(*document), kTraces);
  ASSERT_EQ(truncate(path.c_str(), kLeft), 0);
  EXPECT_EQ(document->m_traces.size(), kTraces);
  // A record is 45 bytes and its texts' 26, after the header and a name of 8 bytes.
  EXPECT_EQ(Whole(*document), std::size_t{(kLeft - 24) / 71});
  const TraceEvent_i& last = *document->m_traces.back();
  EXPECT_EQ(last.GetText() + last.GetStack() + last.GetMachineName(document->m_names), "");
  EXPECT_EQ(last.GetSequenceNumber(), 0u);
  EXPECT_EQ(document->m_traces.front()->GetMachineName(document->m_names), "web");
}

TEST_F(ShrunkFileTest, ADocumentWhoseFileWasCutIsStillSavedWithAllItsTraces) {
  const std::string path = LongFile(), copy = m_temp.File("copy.trc");
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  ASSERT_EQ(truncate(path.c_str(), kLeft), 0);
  EXPECT_TRUE(document->OnSaveDocument(copy));
  const CTraceFileDoc* const saved = Open(copy);
  ASSERT_TRUE(saved && FinishLoad(*saved));
  EXPECT_EQ(saved->m_traces.size(), kTraces);
  EXPECT_EQ(Whole(*saved), Whole(*document));
}

TEST_F(ShrunkFileTest, ACutDuringTheLoadLoadsWhatIsLeftAndSaysNothing) {
  const std::string path = LongFile();
  m_loads.beforeWalk = [&path] { EXPECT_EQ(truncate(path.c_str(), kLeft), 0); };
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(Whole(*document), std::size_t{(kLeft - 24) / 71});
  EXPECT_LE(document->m_traces.size(), Whole(*document) + 1) << "the last one is cut";
  EXPECT_GT(document->Damage().skippedBytes, 0u) << "zeros are no records";
  EXPECT_EQ(ReportedLines("box") + ReportedLines("posted box"), "");
  EXPECT_EQ(ReportedLines("done"), "done\n");
}

TEST_F(ShrunkFileTest, ACutDuringAConversionSaysSoAndDeletesNothing) {
  const std::string path = OldFile(3000);
  m_loads.beforeWalk = [&path] { EXPECT_EQ(truncate(path.c_str(), kLeft), 0); };
  m_host.AnswerBox(BoxAnswer::Yes);
  ASSERT_NE(Open(path), nullptr);
  EXPECT_TRUE(m_host.RunUntil([this] {
    m_host.ClosePostedBoxes();
    return ReportedLines("posted box").find("Error opening") != std::string::npos;
  }));
  EXPECT_NE(ReportedLines("posted box").find("Error renaming old trace file"), std::string::npos);
  EXPECT_EQ(std::filesystem::file_size(path), kLeft);
  EXPECT_EQ(Folder(), "web.trc(old) ");
}

TEST_F(ShrunkFileTest, AFileReplacedUnderItsNameStaysWhatItWasForItsDocument) {
  const std::string path = LongFile();
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  std::filesystem::rename(TrcImage().Trace("another").WriteTo(m_temp.File("new.trc")), path);
  EXPECT_EQ(Whole(*document), kTraces);
}

TEST_F(ShrunkFileTest, WhatIsAppendedToAnOpenFileIsNotSeen) {
  const std::string path = TrcImage().Trace("up").WriteTo(m_temp.File("web.trc"));
  const std::string more = TrcImage().Trace("down").Bytes().substr(16);
  m_loads.beforeWalk = [&] { std::ofstream(path, std::ios::binary | std::ios::app) << more; };
  CTraceFileDoc* const document = Open(path);
  ASSERT_TRUE(FinishLoad(*document));
  EXPECT_EQ(Texts(*document), "up ");
  EXPECT_EQ(document->FileSize() + more.size(), std::filesystem::file_size(path));
}

}  // namespace

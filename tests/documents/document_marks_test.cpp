// A document gives filter texts the marks that stand beside its file.
#include <gmock/gmock.h>

#include "notes/file_notes.h"
#include "realtime_fixture.h"

namespace {

class DocumentMarks : public DocumentsTest {
 protected:
  static void Mark(const CTraceFileDoc& document, std::size_t row) {
    FileNotes notes;
    const NotedTraces traces{document.FileBytes(), document.m_traces};
    std::string why;
    ASSERT_TRUE(notes.Load(document.GetPathName(), traces, &why)) << why;
    notes.Notes().Mark(row, document.m_traces[row]->Record(), 5);
    ASSERT_TRUE(notes.Save(traces, false, &why)) << why;
  }
  static int ColourOf(CTraceFileDoc& document, std::size_t row) {
    std::string why;
    const auto marks = document.Marks(&why);
    EXPECT_EQ(why, "");
    return marks ? marks->Of(document.m_traces[row]->Record()).colour : -1;
  }
};

TEST_F(DocumentMarks, AreThoseBesideTheFileAsTheyAreNow) {
  CTraceFileDoc& document = Load(TrcImage().Trace("a").Trace("b"));
  EXPECT_EQ(ColourOf(document, 1), 0);
  Mark(document, 1);
  EXPECT_EQ(ColourOf(document, 1), 5);
  EXPECT_EQ(ColourOf(document, 0), 0);
  Mark(document, 0);
  EXPECT_EQ(ColourOf(document, 0), 5);
}

TEST_F(DocumentMarks, ThoseThatCannotBeReadOrAreOfAnotherFileAreSaid) {
  CTraceFileDoc& document = Load(TrcImage().Trace("a").Trace("b"));
  m_temp.File("web.trc.notes", "{");
  std::string why;
  EXPECT_EQ(document.Marks(&why), nullptr);
  EXPECT_THAT(why, testing::HasSubstr("web.trc.notes: no JSON"));
  std::filesystem::remove(m_temp.File("web.trc.notes"));
  Mark(document, 1);
  CTraceFileDoc& other = Load(TrcImage().Trace("other").Trace("b"), "other.trc");
  std::filesystem::rename(m_temp.File("web.trc.notes"), m_temp.File("other.trc.notes"));
  EXPECT_EQ(other.Marks(&why), nullptr);
  EXPECT_THAT(why, testing::HasSubstr("other.trc.notes: of another trace file"));
}

class MonitorMarks : public RealtimeTest {
 protected:
  int ColourOf(std::uint64_t number) {
    const TraceEvent_i* const trace = m_document->Notes().TraceAt(number);
    return trace ? m_document->Notes().Of(*trace).colour : -1;
  }
  std::string NotesOf(const std::string& name) {
    CTraceFileDoc& saved = *Open(m_temp.File(name));
    EXPECT_TRUE(FinishLoad(saved));
    std::string all;
    for (const auto& [number, record] : saved.Notes().Notes().Records()) {
      const WhereMark said = saved.Notes().Notes().Of(record);
      all += std::to_string(number) + ":" + std::to_string(said.colour) + ":" +
             std::string(said.note) + " ";
    }
    EXPECT_TRUE(saved.Notes().Others().empty());
    return all;
  }
};

TEST_F(MonitorMarks, GoWithTheirTraces) {
  Connect();
  g_traceLimit = 200;
  DrainOf(200);
  const auto marks = m_document->Marks(nullptr);
  ASSERT_TRUE(m_document->Notes().Mark({0, 99, 100, 199}, 4));
  EXPECT_EQ(marks->Of(m_document->m_traces[99]->Record()).colour, 4) << "filters see new ones";
  DrainOf(1);
  EXPECT_EQ(m_document->m_traces.Popped(), 100u);
  EXPECT_EQ(m_document->Notes().Notes().size(), 2u);
  EXPECT_EQ(ColourOf(99), -1);
  EXPECT_EQ(ColourOf(100), 4);
  EXPECT_EQ(ColourOf(199), 4);
  EXPECT_FALSE(m_document->Notes().SetNote(99, "too late"));
  for (int turn = 0; turn < 8; ++turn) DrainOf(100);
  EXPECT_TRUE(m_document->Notes().Notes().empty());
  for (std::size_t i = 0; i < Size(); ++i)
    ASSERT_EQ(marks->Of(m_document->m_traces[i]->Record()).colour, 0)
        << "a trace at the place in memory of one that was marked";
}

TEST_F(MonitorMarks, AClearTakesThem) {
  Connect();
  DrainOf(3);
  m_document->Notes().Mark({1}, 4);
  const auto marks = m_document->Marks(nullptr);
  m_document->DeleteContents();
  EXPECT_TRUE(m_document->Notes().Notes().empty());
  DrainOf(3);
  for (std::size_t i = 0; i < Size(); ++i)
    EXPECT_EQ(marks->Of(m_document->m_traces[i]->Record()).colour, 0);
}

TEST_F(MonitorMarks, AreWrittenWithASaveAtTheirNewPlaces) {
  Connect();
  g_traceLimit = 200;
  DrainOf(201);
  ASSERT_EQ(m_document->m_traces.Popped(), 100u);
  m_document->Notes().Mark({103}, 4);
  m_document->Notes().SetNote(200, "the last one");
  ASSERT_TRUE(m_document->OnSaveDocument(m_temp.File("saved.trc")));
  EXPECT_EQ(NotesOf("saved.trc"), "3:4: 100:0:the last one ");
}

TEST_F(MonitorMarks, ASaveOverAFileAsksBeforeItReplacesNotes) {
  Connect();
  DrainOf(3);
  const std::string path = m_temp.File("saved.trc");
  m_document->Notes().Mark({1}, 4);
  ASSERT_TRUE(m_document->OnSaveDocument(path));
  m_document->Notes().Mark({1}, 5);
  m_host.AnswerBox(BoxAnswer::No);
  ASSERT_TRUE(m_document->OnSaveDocument(path));
  EXPECT_THAT(m_host.Reported(), testing::HasSubstr("has the notes of the file before"));
  EXPECT_THAT(m_host.Reported(), testing::HasSubstr("saved without their marks and notes"));
  EXPECT_THAT(ReadIfThere(path + ".notes"), testing::HasSubstr("\"mark\": 4"));
  m_host.AnswerBox(BoxAnswer::Yes);
  ASSERT_TRUE(m_document->OnSaveDocument(path));
  EXPECT_EQ(NotesOf("saved.trc"), "1:5: ");
}

TEST_F(MonitorMarks, ASaveWithoutThemWritesNoNotes) {
  Connect();
  DrainOf(3);
  m_document->Notes().Mark({1}, 4);
  m_document->Notes().Mark({1}, 0);
  ASSERT_TRUE(m_document->OnSaveDocument(m_temp.File("saved.trc")));
  EXPECT_FALSE(std::filesystem::exists(m_temp.File("saved.trc.notes")));
}

TEST_F(MonitorMarks, ViewsHearOfEachChange) {
  Connect();
  DrainOf(2);
  m_log.Clear();
  m_document->Notes().Mark({0, 1}, 4);
  EXPECT_EQ(m_log.Reported(), "view hint 1007\n");
}

}  // namespace

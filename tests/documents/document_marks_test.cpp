// A document gives filter texts the marks that stand beside its file.
#include <gmock/gmock.h>

#include "documents_fixture.h"
#include "notes/file_notes.h"

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

TEST_F(DocumentMarks, AMonitorHasNone) {
  CTraceDoc document(m_host);
  std::string why;
  EXPECT_EQ(document.Marks(&why), nullptr);
  EXPECT_EQ(why, "");
}

}  // namespace

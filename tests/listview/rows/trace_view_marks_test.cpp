// A filter text that asks for marks, in a list of a file.
#include <gmock/gmock.h>

#include "support/noted_file.h"
#include "trace_view_fixture.h"

namespace {

class TraceViewMarks : public TraceViewTest {
 protected:
  TraceViewMarks() { m_fileView.OnInitialUpdate(); }
  std::string Shown() {
    std::string shown;
    for (int row = 0; row < m_fileView.Rows().Size(); ++row)
      shown += m_fileView.RowListText(row, Column::Trace) + " ";
    return shown;
  }

  NotedFile m_file{40};
  CTraceView m_fileView{m_file.m_document,
                        [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); }};
};

TEST_F(TraceViewMarks, AreReadWhenATextIsApplied) {
  m_file.Mark(1, 3);
  m_file.Apply(m_fileView, "marked");
  EXPECT_EQ(Shown(), "two ");
  m_file.Mark(2, 4);
  m_file.Apply(m_fileView, "marked == 4");
  EXPECT_EQ(Shown(), "three ");
  m_file.Apply(m_fileView, "not marked and text in {one, two}");
  EXPECT_EQ(Shown(), "one ");
}

TEST_F(TraceViewMarks, ATextThatIsCancelledLeavesThoseOfTheTextBefore) {
  m_file.Mark(1, 3);
  m_file.Apply(m_fileView, "marked");
  const auto before = m_fileView.m_filter.noted;
  ASSERT_TRUE(before);
  m_fileView.m_scanSetup = {.perLook = 1, .perPiece = 1, .threads = 1};
  WhereError error;
  ASSERT_TRUE(m_fileView.SetWhere(
      WhereProgram::Compile("text == one or text matches \"(a|aa)+$\"", error)));
  EXPECT_FALSE(m_fileView.m_filter.noted);
  ASSERT_TRUE(m_fileView.FilterProgress());
  m_fileView.CancelFilter();
  EXPECT_EQ(m_fileView.m_filter.noted, before);
  EXPECT_EQ(Shown(), "two ");
}

TEST_F(TraceViewMarks, ABoxSaysWhyTheyCannotBeRead) {
  m_file.SpoilNotes();
  m_file.m_host.ClearTranscript();
  m_file.Apply(m_fileView, "text == one");
  EXPECT_THAT(m_file.m_host.Transcript(),
              testing::Not(testing::Contains(testing::HasSubstr("box"))));
  m_file.Apply(m_fileView, "marked");
  EXPECT_THAT(m_file.m_host.Transcript(),
              testing::Contains(testing::HasSubstr("web.trc.notes: no JSON")));
  EXPECT_EQ(Shown(), "");
}

TEST_F(TraceViewMarks, ARowShowsTheMarkAndTheNoteOfItsTrace) {
  DocNotes& notes = m_file.m_document.Notes();
  EXPECT_FALSE(m_fileView.RowListMark(1));
  notes.Mark({1}, 3);
  notes.SetNote(2, std::string(5000, 'x'));
  ASSERT_TRUE(m_fileView.RowListMark(1));
  EXPECT_EQ(m_fileView.RowListMark(1)->number, 3);
  EXPECT_EQ(m_fileView.RowListMark(1)->note, "");
  ASSERT_TRUE(m_fileView.RowListMark(2));
  EXPECT_EQ(m_fileView.RowListMark(2)->number, 0);
  EXPECT_EQ(m_fileView.RowListMark(2)->note, std::string(2000, 'x') + "...") << "a tool tip";
  EXPECT_FALSE(m_fileView.RowListMark(0));
  EXPECT_FALSE(m_fileView.RowListMark(10'000));
}

TEST_F(TraceViewMarks, AChangeRepaintsTheRowsAndNothingElse) {
  auto& list = static_cast<FakeRowList&>(m_fileView.List());
  const int before = list.repaints;
  list.calls.clear();
  m_file.m_document.Notes().Mark({1}, 3);
  EXPECT_EQ(list.repaints, before + 1);
  EXPECT_TRUE(list.calls.empty());
}

}  // namespace

#include "shell/marks/marks_pane.h"

#include "marks_fixture.h"

namespace {

using testing::HasSubstr;

class MarksPaneTest : public MarksTest {
 protected:
  MarksPaneTest() {
    m_view.Watch(m_pane);
    m_pane.OnPane(m_view);
    m_pane.OnShown(true);
  }
  ~MarksPaneTest() override { m_view.Unwatch(m_pane); }
  // "1|0|one|note; ": mark, index, trace and note of each row.
  std::string Rows() {
    m_file.m_host.RunPosted();
    std::string all;
    for (int row = 0; row < m_rows->ItemCount(); ++row) {
      for (const auto column :
           {MarksPane::kMark, MarksPane::kIndex, MarksPane::kTrace, MarksPane::kNote})
        all += m_pane.RowListText(row, column) + (column == MarksPane::kNote ? "; " : "|");
    }
    return all;
  }
  void FocusRow(int row) {
    m_rows->SetItemState(-1, 0, kRowFocused | kRowSelected);
    m_rows->SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  }

  FakeRowList* m_rows = nullptr;
  MarksPane m_pane{m_file.m_host,
                   [this](RowListOwner& owner) {
                     auto made = std::make_unique<FakeRowList>(owner);
                     m_rows = made.get();
                     return made;
                   },
                   [this](const std::string& text) { m_said = text; }};
};

TEST_F(MarksPaneTest, ListsMarksAndNotesAsTheyCome) {
  EXPECT_EQ(Rows(), "");
  EXPECT_THAT(m_pane.RowListEmptyText(), HasSubstr("Ctrl+D"));
  Notes().Mark({2}, 4);
  Notes().SetNote(0, "first line\nsecond");
  EXPECT_EQ(Rows(), "|0|one|first line; 4 Green|2|three|; ");
  EXPECT_EQ(m_pane.RowListMark(1)->number, 4);
  EXPECT_EQ(m_pane.RowListMark(0)->note, "first line\nsecond");
  m_file.Apply(m_view, "text == two");
  EXPECT_EQ(Rows(), "|0|one|first line; 4 Green|2|three|; ") << "it filters nothing";
}

TEST_F(MarksPaneTest, ManyChangesInOneTurnMakeTheRowsOnce) {
  Rows();
  m_rows->calls.clear();
  for (std::uint64_t number = 0; number < 5; ++number) Notes().Mark({number}, 1);
  EXPECT_EQ(m_rows->ItemCount(), 0);
  m_file.m_host.RunPosted();
  EXPECT_EQ(std::ranges::count(m_rows->calls, "count 5"), 1);
  m_rows->calls.clear();
  CTraceHint added;
  m_file.m_document.UpdateAllViews(nullptr, kHintAdded, &added);
  m_file.m_host.RunPosted();
  EXPECT_TRUE(m_rows->calls.empty()) << "nothing is made anew for traces without marks";
}

TEST_F(MarksPaneTest, WhatIsNotSeenDoesNothing) {
  m_pane.OnShown(false);
  Notes().Mark({1}, 1);
  m_file.m_host.RunPosted();
  EXPECT_EQ(m_rows->ItemCount(), 0);
  m_pane.OnShown(true);
  EXPECT_EQ(m_rows->ItemCount(), 1);
}

TEST_F(MarksPaneTest, EnterGoesToTheTraceAndSaysWhenTheFilterHidesIt) {
  Notes().Mark({0, 2}, 1);
  Rows();
  m_pane.OnRowDoubleClicked(1);
  EXPECT_EQ(Focused(), 2);
  EXPECT_EQ(m_said, "");
  m_file.Apply(m_view, "text == one");
  m_pane.OnRowDoubleClicked(1);
  EXPECT_THAT(m_said, HasSubstr("hides"));
  m_pane.OnRowDoubleClicked(7);
}

TEST_F(MarksPaneTest, DeleteTakesMarksAwayAndAsksForNotes) {
  Notes().Mark({0, 1, 2}, 1);
  Notes().SetNote(2, "note");
  Rows();
  FocusRow(1);
  EXPECT_TRUE(m_pane.OnRowListDelete());
  EXPECT_EQ(Rows(), "1 Red|0|one|; 1 Red|2|three|note; ");
  EXPECT_EQ(m_rows->NextItem(-1, kRowFocused), 1) << "the row that came to its place";
  m_file.m_host.AnswerBox(BoxAnswer::No);
  m_pane.OnRowListDelete();
  EXPECT_EQ(Marks(), "0:1 2:1");
  m_file.m_host.AnswerBox(BoxAnswer::Yes);
  m_pane.OnRowListDelete();
  EXPECT_EQ(Marks(), "0:1");
  EXPECT_EQ(Rows(), "1 Red|0|one|; ");
}

TEST_F(MarksPaneTest, RowsThatDoNotApplyStandApartWithTheReason) {
  Notes().Mark({0, 2}, 1);
  m_file.m_host.TickTimers();
  const std::string path = m_file.m_directory.File("cut.trc");
  TrcImage().Trace("one").WriteTo(path);
  std::filesystem::copy(m_file.m_directory.File("web.trc.notes"), path + ".notes");
  CTraceFileDoc cut(m_file.m_host);
  ASSERT_TRUE(cut.OnOpenDocument(path));
  cut.SetPathName(path, false);
  ASSERT_TRUE(m_file.m_host.RunUntil([&] { return !cut.m_loading; }));
  CTraceView view(cut, [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
  view.OnInitialUpdate();
  m_pane.OnPane(view);
  EXPECT_EQ(Rows(), "1 Red|0|one|; 1 Red|2|(beyond the end of the file)|; ");
  EXPECT_EQ(m_pane.RowListTint(0), RowTint::None);
  EXPECT_EQ(m_pane.RowListTint(1), RowTint::Warn);
  m_pane.OnRowDoubleClicked(1);
  FocusRow(1);
  m_pane.OnRowListDelete();
  EXPECT_EQ(cut.Notes().Others().size(), 0u);
  m_pane.OnPane(m_view);
}

TEST_F(MarksPaneTest, AFileThatCannotBeReadSaysWhy) {
  NotedFile spoilt;
  spoilt.SpoilNotes();
  CTraceView view(spoilt.m_document,
                  [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
  view.OnInitialUpdate();
  m_pane.OnPane(view);
  EXPECT_THAT(m_pane.RowListEmptyText(), HasSubstr("cannot be read"));
  EXPECT_THAT(m_pane.RowListEmptyText(), HasSubstr("no JSON"));
  m_pane.OnPane(m_view);
}

}  // namespace

// A filter text that asks for marks, in a tree of a file.
#include "proc_view_fixture.h"
#include "support/noted_file.h"
#include "support/short_pieces.h"

namespace {

class ProcViewMarks : public ProcViewTest {
 protected:
  ProcViewMarks() { m_fileView.OnInitialUpdate(); }

  NotedFile m_file;
  CProcView m_fileView{m_file.m_document, [](TreeControlOwner& owner) {
                         return std::make_unique<FakeTreeControl>(owner);
                       }};
};

TEST_F(ProcViewMarks, AreReadWhenATextIsApplied) {
  m_file.Mark(1, 3);
  m_file.Apply(m_fileView, "marked");
  EXPECT_EQ(m_fileView.Model().TraceCount(), 1);
  m_file.Mark(2, 4);
  m_file.Apply(m_fileView, "marked in {3, 4}");
  EXPECT_EQ(m_fileView.Model().TraceCount(), 2);
  m_file.Apply(m_fileView, "marked == 5");
  EXPECT_EQ(m_fileView.Model().TraceCount(), 0);
}

TEST_F(ProcViewMarks, ATextThatIsCancelledLeavesThoseOfTheTextBefore) {
  m_file.Mark(1, 3);
  m_file.Apply(m_fileView, "marked");
  const auto before = m_fileView.m_filter.noted;
  ASSERT_TRUE(before);
  const ShortPieces pieces{m_file.m_host};
  WhereError error;
  ASSERT_TRUE(m_fileView.SetWhere(WhereProgram::Compile("text == one", error)));
  EXPECT_FALSE(m_fileView.m_filter.noted);
  ASSERT_TRUE(m_fileView.FilterProgress());
  m_fileView.CancelFilter();
  EXPECT_EQ(m_fileView.m_filter.noted, before);
  EXPECT_EQ(m_fileView.Model().TraceCount(), 1);
}

TEST_F(ProcViewMarks, ItemsOfTracesShowTheirMarksAndThoseAboveDoNot) {
  m_file.m_document.Notes().Mark({0, 1, 2}, 3);
  std::size_t marked = 0, items = 0;
  for (TreeItem item = m_fileView.NextTreeItem(0); item; item = m_fileView.NextTreeItem(item)) {
    const auto mark = m_fileView.TreeItemMark(m_fileView.Tree().ItemData(item));
    marked += mark && mark->number == 3;
    ++items;
  }
  EXPECT_EQ(marked, 3u);
  EXPECT_GT(items, 3u);
  EXPECT_FALSE(m_fileView.TreeItemMark(0));
}

}  // namespace

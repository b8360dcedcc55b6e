// Copy Rows As in the list.
#include "listview/copy/copy_form.h"
#include "listview/rows/trace_view_fixture.h"

namespace {

class TraceViewCopy : public TraceViewTest {
 protected:
  void OpenThree() {
    g_activeColumns.fill(0);
    for (const Column column : {Column::Count, Column::TicDiff, Column::Trace})
      g_activeColumns[static_cast<std::size_t>(column)] = 1;
    Add({.text = "a", .tic = 10});
    Add({.text = "b", .tic = 25});
    Add({.text = "c", .tic = 45});
    Open();
  }
  void Select(int row) { m_list->SetItemState(row, kRowSelected, kRowSelected); }
  bool Enabled(unsigned id) {
    CCmdUI ui(id, true, false);
    UpdateCommand(*m_view, ui);
    return ui.IsEnabled();
  }
};

TEST_F(TraceViewCopy, WantsASelection) {
  OpenThree();
  for (unsigned id = ID_EDIT_COPYROWS; id <= ID_EDIT_COPYFILTER; ++id) EXPECT_FALSE(Enabled(id));
  Select(1);
  for (unsigned id = ID_EDIT_COPYROWS; id <= ID_EDIT_COPYFILTER; ++id) EXPECT_TRUE(Enabled(id));
  CCmdUI copy(ID_EDIT_COPY, true, false);
  UpdateCommand(*m_view, copy);
  EXPECT_FALSE(copy.IsEnabled()) << "kept: Copy itself stays grey";
}

TEST_F(TraceViewCopy, TheSelectedRowsAreCopiedWithTheColumnsThatShow) {
  OpenThree();
  Select(0);
  Select(2);
  ASSERT_TRUE(m_view->OnCommand(ID_EDIT_COPYTABS));
  EXPECT_EQ(m_host.m_clipboard, "Count\tTic Diff\tTrace\n1\tn/a\ta\n3\t20\tc\n")
      << "a difference is to the row above, selected or not";
  m_view->OnCommand(ID_EDIT_COPYHEADINGS);
  ASSERT_TRUE(m_view->OnCommand(ID_EDIT_COPYROWS));
  EXPECT_EQ(m_host.m_clipboard, "1\tn/a\ta\n3\t20\tc\n") << "the form of the last time";
  ASSERT_TRUE(m_view->OnCommand(ID_EDIT_COPYFILTER));
  EXPECT_EQ(m_host.m_clipboard, "count in {1, 3}");
}

TEST_F(TraceViewCopy, TheColumnsAreInTheOrderOnTheScreen) {
  OpenThree();
  ListOrder order = m_list->Header().GetColumnOrder();
  std::ranges::reverse(order);
  m_list->Header().SetColumnOrder(order);
  Select(1);
  ASSERT_TRUE(m_view->OnCommand(ID_EDIT_COPYTEXT));
  EXPECT_EQ(m_host.m_clipboard, "Trace  Tic Diff  Count\nb            15      2\n");
}

}  // namespace

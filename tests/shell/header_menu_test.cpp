// The menu of the header in a whole program: all windows show the same columns.
#include "listview/columns/columns.h"
#include "shell_fixture.h"

namespace {

class HeaderMenuShellTest : public ShellTest {
 protected:
  CTraceView& List(std::size_t child) { return ListOf(*Frame().Children().at(child)); }
  int Width(std::size_t child, Column column) {
    return List(child).List().Header().ColumnWidth(column);
  }
};

TEST_F(HeaderMenuShellTest, AColumnThatOneWindowHidesIsHiddenInAllAndComesBackAsWideAsItWas) {
  Start();
  Open(WriteTraces("a.trc", 3));
  Open(WriteTraces("b.trc", 3));
  const int before = Width(0, Column::Component);
  ASSERT_GT(before, 0);
  List(1).OnHeaderContextMenu(Column::Component, 10, 20);
  m_host.Choose("Hide \"Component\"");
  m_host.RunPosted();
  EXPECT_EQ(Width(0, Column::Component), 0);
  EXPECT_EQ(Width(1, Column::Component), 0);
  Frame().OnCommand(ID_VIEW_HEADERMENU);
  m_host.Choose("Component");
  m_host.RunPosted();
  EXPECT_EQ(Width(0, Column::Component), before);
  EXPECT_EQ(Width(1, Column::Component), before);
}

TEST_F(HeaderMenuShellTest, AFittedColumnAndAMovedOneAreThereInTheNextWindow) {
  Start();
  Open(WriteTraces("a.trc", 3));
  List(0).OnHeaderContextMenu(Column::Component, 0, 0);
  m_host.Choose("Fit \"Component\"");
  EXPECT_EQ(StoredColumnWidth(Column::Component), Width(0, Column::Component));
  List(0).OnHeaderContextMenu(Column::Sev, 0, 0);
  m_host.Choose("Move \"Sev\" to the End");
  EXPECT_EQ(ReadColumnOrder().back(), static_cast<std::int32_t>(Column::Sev));
}

TEST_F(HeaderMenuShellTest, AMenuThatOutlivesItsWindowDoesNothing) {
  Start();
  Open(WriteTraces("a.trc", 3));
  List(0).OnHeaderContextMenu(Column::Component, 0, 0);
  Frame().OnCommand(ID_FILE_CLOSE);
  m_host.Choose("Hide \"Component\"");
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
}

}  // namespace

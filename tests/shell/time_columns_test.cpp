// The columns of times and the zone of times from the commands to the windows.
#include "listview/columns/time_columns.h"

#include "shell/goto/go_to_dialog.h"
#include "shell_fixture.h"
#include "support/zone_guard.h"

namespace {

class TimeCommandsTest : public ShellTest {
 protected:
  static int WidthPx(CMDIChildWnd& child, Column column) {
    return ListOf(child).List().Header().ColumnWidth(column);
  }
  std::string Zone() {
    Frame().OnIdle();
    return Face().m_panes[kPaneZone];
  }
};

TEST_F(TimeCommandsTest, AColumnShowsInAllWindowsAndIsCheckedInTheMenu) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("a.trc", 2)));
  ASSERT_TRUE(Open(WriteTraces("b.trc", 2)));
  EXPECT_FALSE(State(ID_VIEW_TIMEDELTA).IsChecked());
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_TIMEDELTA));
  EXPECT_TRUE(State(ID_VIEW_TIMEDELTA).IsChecked());
  EXPECT_FALSE(State(ID_VIEW_TIMEWALL).IsChecked());
  for (const auto& child : Frame().Children()) EXPECT_GT(WidthPx(*child, Column::Delta), 0);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_TIMEDELTA));
  for (const auto& child : Frame().Children()) EXPECT_EQ(WidthPx(*child, Column::Delta), 0);
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
}

TEST_F(TimeCommandsTest, AReferenceShowsTheColumnSince) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("a.trc", 2)));
  CTraceView& list = ListOf(*Frame().Children()[0]);
  list.List().SetItemState(1, kRowFocused, kRowFocused);
  EXPECT_TRUE(State(ID_VIEW_TIMEREFERENCE).IsEnabled());
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_TIMEREFERENCE));
  EXPECT_GT(WidthPx(*Frame().Children()[0], Column::Since), 0);
  EXPECT_EQ(list.RowListText(1, Column::Since), "reference");
  EXPECT_TRUE(State(ID_VIEW_TIMEREFERENCE).IsChecked());
}

TEST_F(TimeCommandsTest, GoToRowGoesThereInTheListAndInTheTree) {
  Start();
  EXPECT_FALSE(State(ID_VIEW_GOTOROW).IsEnabled());
  ASSERT_TRUE(Open(WriteTraces("a.trc", 5)));
  EXPECT_TRUE(State(ID_VIEW_GOTOTIME).IsEnabled());
  auto& child = dynamic_cast<CTraceChildFrame&>(*Frame().Children()[0]);
  const auto go = [&](const char* row) {
    m_host.AnswerDialog([row](CDialog& dialog) {
      dynamic_cast<CGoToDlg&>(dialog).SetText(row);
      dialog.OnOK();
    });
    ASSERT_TRUE(Frame().OnCommand(ID_VIEW_GOTOROW));
  };
  const CTraceDoc& document = child.ShownPane()->Document();
  go("4");
  EXPECT_EQ(child.ShownPane()->CurrentEvent(), document.m_traces[3]);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  ASSERT_TRUE(child.IsTreeShown());
  go("2");
  EXPECT_EQ(child.ShownPane()->CurrentEvent(), document.m_traces[1]);
}

TEST_F(TimeCommandsTest, TheZoneOfTheShownTimesStandsInTheStatusBar) {
  const ZoneGuard zone("CET-1CEST,M3.5.0,M10.5.0/3");
  Start();
  EXPECT_EQ(Zone(), "");
  ASSERT_TRUE(Open(WriteTraces("a.trc", 2)));
  EXPECT_EQ(Zone(), "UTC+01:00");
  g_useUtc = true;
  EXPECT_EQ(Zone(), "UTC");
  ASSERT_TRUE(Frame().OnCommand(ID_FILE_CLOSE));
  m_host.RunPosted();
  EXPECT_EQ(Zone(), "");
}

}  // namespace

// Where lists and trees stand after their windows were made, shown again or given another size.
#include <stdexcept>

#include "controls/list/ui/row_list_widget.h"
#include "controls/tree/ui/tree_widget.h"
#include "documents/trace_realtime_doc.h"
#include "shell_fixture.h"
#include "support/fake_connection.h"
#include "tree/proc/proc_view.h"

namespace {

constexpr int kManyRows = 2000;

// With the sizes of a first start, and in a main window of 1280 by 900.
class EndOfListTest : public ShellTest, public testing::WithParamInterface<bool> {
 protected:
  EndOfListTest() { g_updateInterval = 10; }
  ~EndOfListTest() override {
    m_app.reset();
    g_updateInterval = 333;
  }
  void StartSized() {
    if (GetParam()) {
      NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Width", 1280U);
      NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Height", 900U);
    }
    Start();
  }
  // A window of a monitor with as many rows.
  void StartMonitor() {
    StartSized();
    AddMonitor();
  }
  void AddMonitor() {
    m_app->m_connectMonitor = m_service.Connector();
    m_app->OpenMonitor("web");
    Send(kManyRows);
  }
  void Send(int traces) {
    const int before = List(Child()).ItemCount();
    m_service.Last().SendMany(traces);
    ASSERT_TRUE(Until([&] { return List(Child()).ItemCount() == before + traces; }));
    Settle();
  }
  CMDIChildWnd& Child(std::size_t index) { return *Frame().Children()[index]; }
  CMDIChildWnd& Child() { return *Frame().Children().back(); }
  QtRowList& List(const CMDIChildWnd& child) {
    return static_cast<QtRowList&>(
        static_cast<const CTraceView*>(child.Views().front().get())->List());
  }
  QtTreeControl& Tree() {
    return static_cast<QtTreeControl&>(static_cast<CProcView*>(Child().GetActiveView())->Tree());
  }
  ChildWindow& WindowOf(const CMDIChildWnd& child) {
    for (QMdiSubWindow* window : Face().Area().subWindowList()) {
      auto* each = static_cast<ChildWindow*>(window);
      if (each->Child() == &child) return *each;
    }
    throw std::runtime_error("no window");
  }
  void Toggle() {
    ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
    Settle();
  }
  // Is the row on view, whole?
  static bool Shows(QtRowList& list, int row) {
    return list.isVisible() && list.viewport()->rect().contains(list.RowRect(row));
  }
  static bool ShowsSelected(QtTreeControl& tree) {
    const TreeItem item = tree.SelectedItem();
    return item && tree.viewport()->rect().contains(tree.RowRect(tree.Items().RowOf(item)));
  }
  // Opens the first item of each level; gives the last one of the tree.
  TreeItem ExpandAll() {
    TreeItem item = Tree().Walk(0, TreeStep::FirstChild);
    for (; item; item = Tree().Walk(item, TreeStep::FirstChild)) Tree().Expand(item, true);
    TreeItem last = 0;
    while (const TreeItem below = Tree().Walk(last, TreeStep::LastChild)) last = below;
    return last;
  }
  static bool ShowsEnd(QtRowList& list) { return Shows(list, list.ItemCount() - 1); }
  static void Focus(QtRowList& list, int row) {
    list.SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  }

  FakeService m_service;
};

}  // namespace

TEST_P(EndOfListTest, AnOpenedFileAndANewWindowOnItEndAtTheLastRow) {
  StartSized();
  Open(TraceFile("a.trc", kManyRows));
  Settle();
  EXPECT_TRUE(ShowsEnd(List(Child()))) << List(Child()).TopIndex();
  Frame().OnCommand(ID_WINDOW_NEW);
  ASSERT_EQ(Frame().Children().size(), 2U);
  Settle();
  EXPECT_TRUE(ShowsEnd(List(Child()))) << List(Child()).TopIndex();
}

TEST_P(EndOfListTest, ANewWindowOnAMonitorEndsAtTheLastRowAndFollows) {
  StartMonitor();
  Frame().OnCommand(ID_WINDOW_NEW);
  ASSERT_EQ(Frame().Children().size(), 2U);
  Settle();
  EXPECT_TRUE(ShowsEnd(List(Child()))) << List(Child()).TopIndex();
  Send(300);
  EXPECT_TRUE(ShowsEnd(List(Child(0)))) << List(Child(0)).TopIndex();
  EXPECT_TRUE(ShowsEnd(List(Child(1)))) << List(Child(1)).TopIndex();
}

TEST_P(EndOfListTest, TheFirstToggleShowsTheSelectedTraceInTheTree) {
  StartSized();
  Open(TraceFile("a.trc", kManyRows));
  Focus(List(Child()), 1500);
  Toggle();
  EXPECT_TRUE(ShowsSelected(Tree()));
}

TEST_P(EndOfListTest, AToggleInALowerFrameShowsTheSelectedTraceInTreeAndList) {
  StartSized();
  Open(TraceFile("a.trc", kManyRows));
  Toggle();
  Toggle();
  ChildWindow& window = WindowOf(Child());
  int row = 100;
  for (const int height : {300, 260, 220, 180}) {
    window.resize(window.width(), height);
    Settle();
    Focus(List(Child()), row += 321);
    Toggle();
    EXPECT_TRUE(ShowsSelected(Tree())) << height;
    window.resize(window.width(), height - 20);
    Settle();
    EXPECT_TRUE(ShowsSelected(Tree())) << height;
    Toggle();
    EXPECT_TRUE(Shows(List(Child()), row)) << height;
  }
}

TEST_P(EndOfListTest, ASelectedItemStaysOnViewWhenTheFrameIsLoweredWhileTheListShows) {
  StartMonitor();
  Toggle();
  const TreeItem last = ExpandAll();
  Tree().SelectItem(last);
  Tree().EnsureVisible(last);
  Toggle();
  // Nothing that the tree would go to by itself.
  List(Child()).SetItemState(-1, 0, kRowFocused | kRowSelected);
  ChildWindow& window = WindowOf(Child());
  window.resize(window.width(), window.height() - 120);
  Settle();
  Toggle();
  EXPECT_TRUE(ShowsSelected(Tree()));
}

TEST_P(EndOfListTest, ATreeThatIsHiddenAndShownAgainKeepsItsFirstRow) {
  StartMonitor();
  Toggle();
  TreeItem item = ExpandAll();
  for (int back = 0; back < 700; ++back) item = Tree().Walk(item, TreeStep::PreviousSibling);
  Tree().ScrollTo(0);
  Tree().SelectItem(item);
  Tree().EnsureVisible(item);  // at the lower edge
  const std::int64_t top = Tree().TopRow();
  Toggle();
  List(Child()).SetItemState(-1, 0, kRowFocused | kRowSelected);
  Toggle();
  EXPECT_EQ(Tree().TopRow(), top);
}

TEST_P(EndOfListTest, AMonitorsListFollowsAfterToggleShrinkAndToggleBack) {
  StartMonitor();
  Toggle();
  WindowOf(Child()).resize(500, 200);
  Settle();
  Send(50);
  Tree().SelectItem(0);
  Toggle();
  EXPECT_TRUE(ShowsEnd(List(Child()))) << List(Child()).TopIndex();
  Send(50);
  EXPECT_TRUE(ShowsEnd(List(Child()))) << List(Child()).TopIndex();
}

TEST_P(EndOfListTest, AFollowingMonitorFollowsThroughMaximisedRestoredTiledAndMinimised) {
  StartMonitor();
  ChildWindow& window = WindowOf(Child());
  const auto follows = [&](const char* step) {
    Settle();
    Send(7);
    EXPECT_TRUE(ShowsEnd(List(Child()))) << step << " " << List(Child()).TopIndex();
  };
  window.showMaximized();
  follows("maximised");
  window.showNormal();
  follows("restored");
  window.showMaximized();
  Settle();
  Frame().OnCommand(ID_WINDOW_TILE_HORZ);
  follows("tiled");
  Frame().OnCommand(ID_WINDOW_CASCADE);
  follows("cascaded");
  window.showMinimized();
  Settle();
  Send(7);
  window.showNormal();
  follows("minimised for a while");
}

TEST_P(EndOfListTest, AMonitorOfFewRowsThatAllShowFollowsWhenItsWindowGetsLower) {
  StartSized();
  m_app->m_connectMonitor = m_service.Connector();
  m_app->OpenMonitor("web");
  ChildWindow& window = WindowOf(Child());
  window.showMaximized();
  Settle();
  Send(12);
  ASSERT_EQ(List(Child()).TopIndex(), 0);
  window.showNormal();
  window.resize(500, 200);
  Settle();
  Send(3);
  EXPECT_TRUE(ShowsEnd(List(Child()))) << List(Child()).TopIndex();
}

TEST_P(EndOfListTest, AFollowingMonitorFollowsAfterAnotherMaximisedWindowWasClosed) {
  StartSized();
  AddMonitor();
  CMDIChildWnd& monitor = Child();
  WindowOf(monitor).showMaximized();
  Settle();
  Open(TraceFile("a.trc", 3));
  Settle();
  Frame().OnCommand(ID_FILE_CLOSE);
  ASSERT_TRUE(Until([this] { return Frame().Children().size() == 1; }));
  Settle();
  Send(40);
  EXPECT_TRUE(ShowsEnd(List(monitor))) << List(monitor).TopIndex();
  WindowOf(monitor).showNormal();
  Settle();
  Send(40);
  EXPECT_TRUE(ShowsEnd(List(monitor))) << List(monitor).TopIndex();
}

TEST_P(EndOfListTest, AListThatIsNotAtItsEndStaysWhereItIsInEverySize) {
  StartMonitor();
  ChildWindow& window = WindowOf(Child());
  List(Child()).EnsureVisible(500);
  const int top = List(Child()).TopIndex();
  window.showMaximized();
  Settle();
  window.showNormal();
  window.resize(500, 200);
  Settle();
  Toggle();
  window.resize(500, 260);
  Settle();
  Tree().SelectItem(0);
  Toggle();
  Send(50);
  EXPECT_EQ(List(Child()).TopIndex(), top);
}

INSTANTIATE_TEST_SUITE_P(Sizes, EndOfListTest, testing::Bool(), [](const auto& size) {
  return std::string(size.param ? "In1280By900" : "AtAFirstStart");
});

// The toggle between list and tree in the whole program over fakes.
#include "settings/globals.h"
#include "shell/child_frame.h"
#include "shell_fixture.h"
#include "support/fake_connection.h"
#include "support/fake_tree_control.h"
#include "support/short_pieces.h"
#include "tree/proc/proc_view.h"

namespace {

constexpr int kMany = 10000;  // traces whose rebuild has several parts

class TreeToggle : public ShellTest {
 protected:
  TreeToggle() {
    m_app->m_connectMonitor = m_service.Connector();
    Start();
  }
  ~TreeToggle() override { m_app.reset(); }

  // Traces "1", "2" ... of one thread, the even ones of category 9.
  void OpenFile(int traces) {
    TrcImage image;
    for (int i = 1; i <= traces; ++i)
      image.Trace({.text = std::to_string(i),
                   .machine = 1,
                   .category = static_cast<NameId>(i % 2 ? 8 : 9),
                   .tid = 2});
    ASSERT_TRUE(Open(image.WriteTo(m_dir.File("web.trc"))));
    m_list = &ListOf(Child());
  }
  CMDIChildWnd& Child() { return *Frame().Children()[0]; }
  void Toggle() { ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC)); }
  CProcView& Tree() { return dynamic_cast<CProcView&>(*Child().GetActiveView()); }
  FakeTreeControl& Control() { return static_cast<FakeTreeControl&>(Tree().Tree()); }
  void Focus(int row) {
    m_list->List().SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  }
  std::string FocusedText() {
    const TraceEvent_i* const event = m_list->CurrentEvent();
    return event ? event->GetText() : std::string();
  }
  std::string SelectedText() {
    const TraceEvent_i* const event = Tree().CurrentEvent();
    return event ? event->GetText() : std::string();
  }
  static CTraceFilter WithoutNine() {
    CTraceFilter filter;
    filter.allTraces = filter.allCategories = 0;
    filter.categories[9] = 0;
    return filter;
  }

  FakeService m_service;
  CTraceView* m_list = nullptr;
};

TEST_F(TreeToggle, TheSecondToggleShowsTheSameListAgainAndTheThirdTheSameTree) {
  OpenFile(3);
  Toggle();
  CProcView* const tree = &Tree();
  Toggle();
  EXPECT_EQ(Child().GetActiveView(), m_list);
  Toggle();
  EXPECT_EQ(Child().GetActiveView(), tree);
  EXPECT_EQ(Child().Views().size(), 2U);
}

TEST_F(TreeToggle, TheMenuItemIsCheckedWhileTheTreeShows) {
  OpenFile(1);
  EXPECT_TRUE(State(ID_VIEW_PROC).IsEnabled());
  EXPECT_FALSE(State(ID_VIEW_PROC).IsChecked());
  Toggle();
  EXPECT_TRUE(State(ID_VIEW_PROC).IsChecked());
  Toggle();
  EXPECT_FALSE(State(ID_VIEW_PROC).IsChecked());
}

TEST_F(TreeToggle, WithoutATraceWindowTheToggleIsDisabled) {
  EXPECT_FALSE(State(ID_VIEW_PROC).IsEnabled());
}

TEST_F(TreeToggle, TheIdsAreSwappedAndTheMainPaneShowsWithTheKeyboard) {
  OpenFile(1);
  auto& face = dynamic_cast<FakeChildFace&>(*Child().Face());
  Toggle();
  EXPECT_EQ(Tree().GetDlgCtrlID(), 59648U);
  EXPECT_EQ(m_list->GetDlgCtrlID(), 59649U);
  EXPECT_EQ(face.m_view, &Tree());
  EXPECT_TRUE(Control().hasKeyboard);
  CProcView& tree = Tree();
  Toggle();
  EXPECT_EQ(tree.GetDlgCtrlID(), 59649U);
  EXPECT_EQ(m_list->GetDlgCtrlID(), 59648U);
  EXPECT_EQ(face.m_view, m_list);
}

TEST_F(TreeToggle, TheTreeSelectsTheListsCurrentTraceAndTheListTheTrees) {
  OpenFile(9);
  Focus(4);
  Toggle();
  EXPECT_EQ(SelectedText(), "5");
  Control().SelectItem(Control().Find("8"));
  Toggle();
  EXPECT_EQ(FocusedText(), "8");
}

TEST_F(TreeToggle, EachToggleBringsTheSelectedTraceIntoTheFrameAsItIsThen) {
  OpenFile(200);
  auto& face = dynamic_cast<FakeChildFace&>(*Child().Face());
  face.Resize(700, 8 * SizedControl::kRowHeightPx);
  for (const int rows : {8, 5, 3}) {
    face.Resize(700, rows * SizedControl::kRowHeightPx);
    Focus(20 * rows);
    Toggle();
    EXPECT_EQ(SelectedText(), std::to_string(20 * rows + 1));
    EXPECT_TRUE(Control().IsOnScreen(Control().SelectedItem())) << rows;
    face.Resize(700, (rows - 1) * SizedControl::kRowHeightPx);
    Control().SelectItem(Control().Find(std::to_string(10 * rows)));
    Toggle();
    m_host.RunPosted();
    EXPECT_EQ(FocusedText(), std::to_string(10 * rows));
    const int focus = m_list->List().NextItem(-1, kRowFocused);
    EXPECT_GE(focus, m_list->List().TopIndex());
    EXPECT_LT(focus, m_list->List().TopIndex() + rows - 1);
  }
}

TEST_F(TreeToggle, AMonitorsListFollowsItsStreamOverATogglesLowerFrame) {
  ASSERT_TRUE(m_app->OpenMonitor("web"));
  m_list = &ListOf(Child());
  auto& face = dynamic_cast<FakeChildFace&>(*Child().Face());
  face.Resize(700, 12 * SizedControl::kRowHeightPx);
  m_service.Last().SendMany(100);
  m_host.TickTimers();
  Toggle();
  face.Resize(700, 4 * SizedControl::kRowHeightPx);
  m_service.Last().SendMany(10);
  m_host.TickTimers();
  Tree().Tree().SelectItem(0);
  Toggle();
  EXPECT_EQ(m_list->List().TopIndex(), 106);
  m_service.Last().SendMany(10);
  m_host.TickTimers();
  EXPECT_EQ(m_list->List().TopIndex(), 116);
}

TEST_F(TreeToggle, ANewWindowEndsAtTheLastRowInTheSizeThatItGets) {
  OpenFile(2000);
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Window Height", 11U * SizedControl::kRowHeightPx);
  Frame().OnCommand(ID_WINDOW_NEW);
  ASSERT_EQ(Frame().Children().size(), 2U);
  const RowList& list = ListOf(*Frame().Children()[1]).List();
  EXPECT_EQ(list.CountPerPage(), 11);
  EXPECT_EQ(list.TopIndex(), 1989);
}

TEST_F(TreeToggle, WithoutASelectionInTheTreeTheListStaysWhereItIs) {
  OpenFile(9);
  Focus(4);
  Toggle();
  Tree().Tree().SelectItem(0);
  Toggle();
  EXPECT_EQ(FocusedText(), "5");
}

TEST_F(TreeToggle, TheListsChangedFilterGoesToTheTreeOnce) {
  OpenFile(6);
  m_list->SetFilter(WithoutNine(), true);
  m_list->m_filterChanged = true;
  Toggle();
  EXPECT_FALSE(m_list->m_filterChanged);
  EXPECT_FALSE(Tree().m_filterChanged);
  EXPECT_EQ(Tree().Model().TraceCount(), 3);
  Toggle();
  m_list->SetFilter(CTraceFilter(), true);  // not by the user: no mark
  Toggle();
  EXPECT_EQ(Tree().Model().TraceCount(), 3);
  Toggle();
  m_list->m_filterChanged = true;
  Toggle();
  EXPECT_EQ(Tree().Model().TraceCount(), 6);
}

TEST_F(TreeToggle, TheTreesChangedFilterGoesToTheList) {
  OpenFile(6);
  Toggle();
  Tree().SetFilter(WithoutNine(), true);
  CProcView& tree = Tree();
  tree.m_filterChanged = true;
  Toggle();
  EXPECT_EQ(m_list->Rows().Size(), 3);
  EXPECT_FALSE(tree.m_filterChanged);
  EXPECT_FALSE(m_list->m_filterChanged);
}

// The rebuild that a filter causes ends at the list's own row, not at the tree's selection.
TEST_F(TreeToggle, WithAChangedFilterTheListComesBackOnTheRowThatItWasLeftOn) {
  OpenFile(9);
  Focus(4);
  Toggle();
  Tree().SetFilter(WithoutNine(), true);
  Tree().m_filterChanged = true;
  Control().SelectItem(Control().Find("9"));
  ASSERT_EQ(SelectedText(), "9");
  Toggle();
  EXPECT_EQ(m_list->Rows().Size(), 5);
  EXPECT_EQ(FocusedText(), "5");
}

TEST_F(TreeToggle, ThePanesFollowTheViewThatShows) {
  OpenFile(6);
  m_list->SetFilter(WithoutNine(), true);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "3");
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "FILTERED");
  Toggle();  // the filter was not changed by the user, so that the tree shows all
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "6");
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "");
  Toggle();
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "3");
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "FILTERED");
}

TEST_F(TreeToggle, SynchronizeIsOfferedOnceThereAreTwoViewsAndTheHiddenOneFollows) {
  OpenFile(9);
  EXPECT_FALSE(State(ID_VIEW_SYNCHRONIZE).IsEnabled());
  Toggle();
  EXPECT_TRUE(State(ID_VIEW_SYNCHRONIZE).IsEnabled());
  Frame().OnCommand(ID_VIEW_SYNCHRONIZE);
  Control().EnsureVisible(Control().Find("1"));
  Tree().NextTreeItem(Control().Find("1"));
  Toggle();
  Focus(3);
  m_list->OnRowClicked(3);
  EXPECT_EQ(static_cast<CProcView&>(*Child().Views()[1]).CurrentEvent()->GetText(), "4");
}

TEST_F(TreeToggle, F1TellsOfTheTreeWhileItShows) {
  OpenFile(1);
  Toggle();
  m_log.Clear();
  Frame().OnCommand(ID_HELP);
  EXPECT_EQ(m_log.Reported(), "help \"tree\"\n");
}

TEST_F(TreeToggle, TheContextMenuOfTheTreeIsTheFramesPopUp) {
  OpenFile(1);
  Toggle();
  m_log.Clear();
  Tree().OnTreeContextMenu(12, 34);
  EXPECT_EQ(m_log.Reported(), "main popup 144 12 34\n");
}

TEST_F(TreeToggle, AClearEmptiesBothViewsAndLeavesNothingToSelect) {
  OpenFile(5);
  Focus(2);
  Toggle();
  Frame().OnCommand(ID_EDIT_CLEAR_ALL);
  EXPECT_EQ(Control().Count(), 0U);
  EXPECT_EQ(m_list->Rows().Size(), 0);
  Toggle();
  Toggle();
  EXPECT_EQ(Tree().CurrentEvent(), nullptr);
}

// ---- toggles that take long

TEST_F(TreeToggle, ACancelledFirstToggleLeavesTheListAsIfItHadNotBeen) {
  OpenFile(kMany);
  Focus(4);
  m_list->m_filterChanged = true;
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_EQ(dynamic_cast<FakeChildFace&>(*Child().Face()).m_view, m_list)
        << "the list is seen while the tree is built";
    box.OnCancel();
  });
  Toggle();
  EXPECT_EQ(Child().GetActiveView(), m_list);
  EXPECT_EQ(m_list->GetDlgCtrlID(), 59648U);
  EXPECT_EQ(Child().Views().size(), 1U);
  EXPECT_EQ(m_list->Document().Views().size(), 1U);
  EXPECT_FALSE(State(ID_VIEW_PROC).IsChecked());
  EXPECT_FALSE(State(ID_VIEW_SYNCHRONIZE).IsEnabled());
  EXPECT_TRUE(m_list->m_filterChanged);
  EXPECT_EQ(FocusedText(), "5");
  Toggle();
  EXPECT_EQ(Tree().Model().TraceCount(), kMany);
  EXPECT_EQ(SelectedText(), "5");
}

TEST_F(TreeToggle, AFilterWhoseHandOverToTheTreeIsCancelledGoesOverWithTheNextToggle) {
  OpenFile(kMany);
  Toggle();
  CProcView& tree = Tree();
  Toggle();
  m_list->SetFilter(WithoutNine(), true);
  m_list->m_filterChanged = true;
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  Toggle();
  EXPECT_EQ(Child().GetActiveView(), m_list);
  EXPECT_TRUE(m_list->m_filterChanged);
  EXPECT_EQ(tree.Model().TraceCount(), kMany);
  EXPECT_EQ(tree.m_filter.allTraces, 1);
  Toggle();
  EXPECT_EQ(tree.Model().TraceCount(), kMany / 2);
}

TEST_F(TreeToggle, AFilterWhoseHandOverToTheListIsCancelledGoesOverWithTheNextToggle) {
  OpenFile(kMany);
  Toggle();
  CProcView& tree = Tree();
  tree.SetFilter(WithoutNine(), true);
  tree.m_filterChanged = true;
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  Toggle();
  EXPECT_EQ(Child().GetActiveView(), &tree);
  EXPECT_TRUE(State(ID_VIEW_PROC).IsChecked());
  EXPECT_TRUE(tree.m_filterChanged);
  EXPECT_EQ(m_list->Rows().Size(), kMany);
  Toggle();
  EXPECT_EQ(Child().GetActiveView(), m_list);
  EXPECT_EQ(m_list->Rows().Size(), kMany / 2);
}

// The tree shows while its document loads; nothing of it stays to pass for the document's.
TEST_F(TreeToggle, ATreeThatIsCancelledAtTheEndOfTheLoadGivesWayToTheList) {
  OpenFile(kMany);
  m_list->Document().m_loading = true;
  Toggle();
  CProcView& tree = Tree();
  tree.m_filter.allTraces = 0;
  tree.m_filterChanged = true;
  m_list->Document().m_loading = false;
  const ShortPieces pieces(m_host);
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  tree.SendMessage(WM_TRACE_UPDATE, kHintReady, 0);
  EXPECT_EQ(Child().GetActiveView(), m_list);
  EXPECT_EQ(m_list->Rows().Size(), kMany);
  EXPECT_EQ(m_list->m_filter.allTraces, 1)
      << "a rebuild could be cancelled, and the tree would stay";
  EXPECT_EQ(tree.Model().TraceCount(), 0);
  Toggle();
  EXPECT_EQ(Child().GetActiveView(), &tree);
  EXPECT_EQ(tree.Model().TraceCount(), kMany);
}

TEST_F(TreeToggle, FortyTogglesUnderALiveStreamWithTrims) {
  g_traceLimit = 300;
  ASSERT_TRUE(m_app->OpenMonitor("web"));
  m_list = &ListOf(Child());
  const std::vector<std::string> texts = {
      "Begin: work", "inside", "End: ", "plain", "End: ", "more"};
  std::size_t sent = 0;
  for (int toggle = 0; toggle < 40; ++toggle) {
    Toggle();
    if (toggle % 2 == 0) {
      EXPECT_EQ(Control().Picture().empty(), m_list->Rows().Size() == 0);
      if (const TreeItem last = Tree().LastTreeItem()) Control().Expand(last, true);
    } else if (m_list->Rows().Size() > 0) {
      Focus(toggle % m_list->Rows().Size());
    }
    for (int i = 0; i < 70; ++i, ++sent)
      m_service.Last().Send(texts[sent % texts.size()], static_cast<NameId>(1 + sent % 3));
    m_host.TickTimers();
    ASSERT_LE(m_list->Document().m_traces.size(), 300U);
    ASSERT_EQ(m_list->Rows().Size(), static_cast<int>(m_list->Document().m_traces.size()));
  }
  Toggle();
  EXPECT_EQ(Tree().Model().TraceCount(), 40 * 70);
  EXPECT_TRUE(Control().SelectedItem());
}

}  // namespace

// The line of filter text in a window, in the whole program over fakes: its commands, the rows, the
// tree, the steps by the cell.
#include <gmock/gmock.h>

#include "base/thread_time.h"
#include "shell/child_frame.h"
#include "shell_fixture.h"
#include "support/sanitizer_slowdown.h"
#include "support/short_pieces.h"
#include "tree/filter/filter_tree_text.h"
#include "tree/proc/proc_view.h"

namespace {

using Strings = std::vector<std::string>;

class FilterText : public ShellTest {
 protected:
  // Traces "1", "2" ... in turn of the components Net and Sql, one a second, and in two threads.
  void OpenFile(int traces = 6) {
    TrcImage image;
    image.Name(1, "web").Name(2, "shop").Name(3, "812").Name(4, "main").Name(5, "worker");
    image.Name(8, "Net").Name(9, "Job & queue");
    for (int i = 1; i <= traces; ++i)
      image.Trace({.text = std::to_string(i),
                   .machine = 1,
                   .app = 2,
                   .component = static_cast<NameId>(i % 2 ? 8 : 9),
                   .time = PackTime(9, 41, i * 4 % 60, 0),
                   .pid = 3,
                   .tid = static_cast<NameId>(i <= 3 ? 4 : 5)});
    ASSERT_TRUE(Open(image.WriteTo(m_dir.File("web.trc"))));
  }
  CTraceChildFrame& Child(std::size_t place = 0) {
    return dynamic_cast<CTraceChildFrame&>(*Frame().Children()[place]);
  }
  CTraceView& List() { return ListOf(Child()); }
  std::string Rows(CTraceView& list) {
    std::string all;
    for (int row = 0; row < list.Rows().Size(); ++row)
      all += list.RowListText(row, Column::Trace) + " ";
    return all;
  }
  std::string Rows() {
    Settle();
    return Rows(List());
  }
  FakeFilterLine* Line() { return m_faces.m_filterLine; }
  void Apply(const std::string& text) {
    if (!Line()) Frame().OnCommand(ID_VIEW_FILTERTEXT);
    ASSERT_TRUE(Line());
    Line()->m_line.Edit(text);
    Line()->m_line.Apply();
  }
  void RunDialog(unsigned command, const std::function<void(CFilterDialog&)>& script) {
    m_host.AnswerDialog([&](CDialog& dialog) { script(dynamic_cast<CFilterDialog&>(dialog)); });
    ASSERT_TRUE(Frame().OnCommand(command));
  }
  // A large file, or a loaded machine, takes more than the first step.
  void Settle() {
    EXPECT_TRUE(m_host.RunUntil([this] { return !List().FilterProgress(); }));
  }
  void OpenMenu(int row, Column column) {
    List().List().SetItemState(-1, 0, kRowSelected);
    List().List().SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
    List().OnRowListContextMenu(static_cast<int>(column) * 100 + 50, 7);
  }
  // Before the menus of copies and marks, which are always there.
  Strings Offered() {
    Strings all;
    for (const MenuItem& item : Face().m_popupMore) all.push_back(item.text);
    const Strings always = {"Copy Row&s As", "&Mark\tCtrl+D", "Mark Colo&ur",
                            "&Note...\tCtrl+Shift+D"};
    const auto begin = std::ranges::search(all, always).begin();
    EXPECT_EQ(all.end() - begin, std::ssize(always));
    return {all.begin(), begin};
  }
};

TEST_F(FilterText, TheCommandShowsTheLineAndGivesItTheFocus) {
  Start();
  EXPECT_FALSE(State(ID_VIEW_FILTERTEXT).IsEnabled()) << "no window";
  OpenFile();
  EXPECT_EQ(Line(), nullptr);
  EXPECT_FALSE(State(ID_VIEW_FILTERTEXT).IsChecked());
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
  ASSERT_TRUE(Line());
  EXPECT_TRUE(Line()->m_focus);
  EXPECT_EQ(dynamic_cast<FakeChildFace&>(*Child().Face()).m_bar, Line());
  EXPECT_TRUE(State(ID_VIEW_FILTERTEXT).IsChecked());
}

TEST_F(FilterText, TheTextFiltersTheRowsAndTheStatusBarSaysSo) {
  Start();
  OpenFile();
  Apply("component == Net");
  EXPECT_EQ(Rows(), "1 3 5 ");
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "FILTERED");
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "3");
  Apply("");
  EXPECT_EQ(Rows(), "1 2 3 4 5 6 ");
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "");
}

TEST_F(FilterText, ItFiltersWhatTheFilterDialogLetsThrough) {
  Start();
  OpenFile();
  CTraceFilter marks = List().m_filter;
  marks.MergeDocumentNames(List().Document());
  marks.allTraces = marks.allComponents = 0;
  marks.components[9] = 0;
  ASSERT_TRUE(List().SetFilter(marks, true));
  Apply("text in {\"3\", \"4\", \"5\"}");
  EXPECT_EQ(Rows(), "3 5 ");
  Line()->m_line.PutAway();
  EXPECT_EQ(Rows(), "1 3 5 ");
}

TEST_F(FilterText, TheKeyInTheLinePutsItAwayAndTheRowsComeBack) {
  Start();
  OpenFile();
  Apply("component == Net");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
  EXPECT_EQ(Line(), nullptr) << "what is put away has no window";
  EXPECT_EQ(dynamic_cast<FakeChildFace&>(*Child().Face()).m_bar, nullptr);
  EXPECT_EQ(Rows(), "1 2 3 4 5 6 ");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
  EXPECT_EQ(Line()->m_line.Text(), "component == Net") << "for the next time";
  EXPECT_EQ(Rows(), "1 2 3 4 5 6 ") << "not in force until it is applied";
}

TEST_F(FilterText, WithTheFocusInTheRowsTheKeyGoesBackToTheLine) {
  Start();
  OpenFile();
  Apply("component == Net");
  Line()->m_focus = false;
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
  ASSERT_TRUE(Line());
  EXPECT_TRUE(Line()->m_focus);
  EXPECT_EQ(Rows(), "1 3 5 ");
}

TEST_F(FilterText, WhetherItIsShownIsRememberedForNewWindowsWithoutItsText) {
  Start();
  OpenFile();
  Apply("component == Net");
  ASSERT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  ASSERT_EQ(Frame().Children().size(), 2U);
  EXPECT_TRUE(Child(1).Filter().IsShown());
  EXPECT_EQ(Line()->m_line.Text(), "");
  EXPECT_FALSE(Line()->m_focus) << "the rows have the focus";
  EXPECT_EQ(Rows(ListOf(Child(1))), "1 2 3 4 5 6 ");
  EXPECT_EQ(Rows(ListOf(Child(0))), "1 3 5 ") << "each window has its own";
  Line()->m_line.PutAway();
  ASSERT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  EXPECT_FALSE(Child(2).Filter().IsShown());
}

TEST_F(FilterText, ATextIsAppliedInTheBackgroundAndItsFirstRowsReplaceThoseThatStood) {
  Start();
  OpenFile(10000);
  Apply("component == Net");
  Settle();
  ASSERT_EQ(List().Rows().Size(), 5000);
  const ShortPieces pieces(m_host);
  m_host.WantNoWorkBox();
  Apply("text == \"9999\"");
  EXPECT_EQ(List().Rows().Size(), 5000) << "until a row has come";
  EXPECT_THAT(Line()->m_message, testing::HasSubstr("Filtering: "));
  Settle();
  EXPECT_EQ(Rows(), "9999 ");
  EXPECT_EQ(Line()->m_message, "Applied.");
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "1");
}

TEST_F(FilterText, EscapeStopsATextAndLeavesRowsTextAndStepsAsTheyWere) {
  Start();
  OpenFile(10000);
  Apply("component == Net");
  Settle();
  List().List().SetItemState(70, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  const ShortPieces pieces(m_host);
  Apply("text contains \"7\"");
  ASSERT_TRUE(Line()->m_percent);
  Line()->m_line.Escape();
  ASSERT_TRUE(Line()) << "it is not put away";
  Settle();
  EXPECT_EQ(List().Rows().Size(), 5000);
  EXPECT_EQ(List().RowListText(70, Column::Trace), "141");
  EXPECT_EQ(List().CurrentEvent(), List().Rows().EventAt(70));
  EXPECT_EQ(List().m_filter.where->Text(), "component == Net");
  EXPECT_EQ(Line()->m_line.GetState(), FilterLine::State::Edited);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "5000");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  Settle();
  EXPECT_EQ(List().Rows().Size(), 10000) << "the stopped text is no step";
}

TEST_F(FilterText, TheKeyThatPutsTheLineAwayDuringAPassLeavesItsTextAmongTheSteps) {
  Start();
  OpenFile(10000);
  Apply("component == Net");
  Settle();
  {
    const ShortPieces pieces(m_host);
    Apply("text contains \"77\"");
    ASSERT_TRUE(Line()->m_percent);
    ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
    EXPECT_EQ(Line(), nullptr);
  }
  Settle();
  EXPECT_EQ(List().Rows().Size(), 10000);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  ASSERT_TRUE(Line());
  EXPECT_EQ(Line()->m_text, "text contains \"77\"");
  Settle();
  EXPECT_EQ(List().RowListText(0, Column::Trace), "77");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  EXPECT_EQ(Line()->m_text, "component == Net");
}

TEST_F(FilterText, EscapeThatNoRowWantsStopsATextAndNothingElse) {
  Start();
  OpenFile(10000);
  Apply("component == Net");
  Settle();
  EXPECT_FALSE(Child().OnEscape());
  const ShortPieces pieces(m_host);
  Apply("text contains \"7\"");
  ASSERT_TRUE(Line()->m_percent);
  EXPECT_TRUE(Child().OnEscape());
  ASSERT_TRUE(Line()) << "it is not put away";
  EXPECT_EQ(List().m_filter.where->Text(), "component == Net");
  EXPECT_EQ(List().Rows().Size(), 5000);
  Settle();
  EXPECT_FALSE(Child().OnEscape());
}

TEST_F(FilterText, TheTreeWaitsForATextThatIsUnderWayAndMayBeCancelled) {
  Start();
  OpenFile(10000);
  {
    const ShortPieces pieces(m_host);
    Apply("component == Net");
    m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
    ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
    EXPECT_FALSE(Child().IsTreeShown()) << "the user does not wait";
  }
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  ASSERT_TRUE(Child().IsTreeShown());
  EXPECT_EQ(dynamic_cast<CProcView&>(*Child().GetActiveView()).Model().TraceCount(), 5000);
}

TEST_F(FilterText, AWindowMayBeClosedWhileATextIsUnderWay) {
  Start();
  OpenFile(10000);
  const ShortPieces pieces(m_host);
  Apply("text contains \"7\"");
  ASSERT_TRUE(Line()->m_percent);
  Child().GetActiveDocument()->OnCloseDocument();
  EXPECT_TRUE(Frame().Children().empty());
  m_host.RunPosted();
}

TEST_F(FilterText, TheTreeGetsTheTextOfTheListAndGivesItBack) {
  Start();
  OpenFile();
  Apply("component == Net");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  auto& tree = dynamic_cast<CProcView&>(*Child().GetActiveView());
  EXPECT_EQ(tree.Model().TraceCount(), 3);
  EXPECT_EQ(Line()->m_message, "Applied.");
  Apply("text == \"5\"");
  EXPECT_TRUE(m_host.RunUntil([&tree] { return !tree.FilterProgress(); }));
  EXPECT_EQ(tree.Model().TraceCount(), 1);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  EXPECT_EQ(Rows(), "5 ");
}

TEST_F(FilterText, TheCompletionsAreTheNamesOfTheDocument) {
  Start();
  OpenFile();
  Apply("");
  Line()->m_line.Edit("component == ");
  Strings all;
  for (const WhereCompletion& each : Line()->m_line.CompletionsAt(13)) all.push_back(each.insert);
  EXPECT_THAT(all, testing::IsSupersetOf({"Net", "\"Job & queue\""}));
}

TEST_F(FilterText, ACellOffersStepsOfItsValueThreadAndTime) {
  Start();
  OpenFile();
  OpenMenu(1, Column::Component);
  EXPECT_EQ(Offered(), (Strings{"&Only This Component \"Job && queue\"",
                                "&Hide This Component \"Job && queue\"", "Only This Th&read",
                                "Only &Around This (5 s)"}));
  OpenMenu(1, Column::TicDiff);
  EXPECT_EQ(Offered(), (Strings{"Only This Th&read", "Only &Around This (5 s)"}));
  List().List().SetItemState(-1, 0, kRowSelected);
  List().OnRowListContextMenu(50, 7);
  EXPECT_EQ(Offered(), Strings{}) << "beside the rows";
}

TEST_F(FilterText, StepsByTheCellShowTheLineAndGoBackAndForth) {
  Start();
  OpenFile();
  EXPECT_FALSE(State(ID_VIEW_FILTERBACK).IsEnabled());
  OpenMenu(0, Column::Component);
  ASSERT_TRUE(Frame().OnCommand(ID_FILTER_HIDETHIS));
  EXPECT_EQ(Rows(), "2 4 6 ");
  ASSERT_TRUE(Line());
  EXPECT_EQ(Line()->m_text, "component != Net");
  EXPECT_FALSE(Line()->m_focus) << "the rows keep the focus";
  OpenMenu(1, Column::Tid);
  ASSERT_TRUE(Frame().OnCommand(ID_FILTER_ONLYTHIS));
  EXPECT_EQ(Line()->m_text, "component != Net and tid == worker");
  EXPECT_EQ(Rows(), "4 6 ");
  EXPECT_TRUE(State(ID_VIEW_FILTERBACK).IsEnabled());
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  EXPECT_EQ(Rows(), "2 4 6 ");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  EXPECT_EQ(Rows(), "1 2 3 4 5 6 ");
  EXPECT_FALSE(State(ID_VIEW_FILTERBACK).IsEnabled());
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERFORWARD));
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERFORWARD));
  EXPECT_EQ(Rows(), "4 6 ");
  EXPECT_FALSE(State(ID_VIEW_FILTERFORWARD).IsEnabled());
}

TEST_F(FilterText, OnlyThisThreadAndOnlyAroundThis) {
  Start();
  OpenFile();
  OpenMenu(4, Column::Trace);
  ASSERT_TRUE(Frame().OnCommand(ID_FILTER_ONLYAROUND));
  EXPECT_EQ(Rows(), "4 5 6 ") << "five seconds before and after, and traces four seconds apart";
  OpenMenu(0, Column::Trace);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  ASSERT_TRUE(Frame().OnCommand(ID_FILTER_ONLYTHREAD));
  EXPECT_EQ(Rows(), "4 5 6 ");
}

TEST_F(FilterText, BackAfterTheLineWasPutAwayShowsItAgain) {
  Start();
  OpenFile();
  Apply("component == Net");
  Line()->m_line.PutAway();
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  ASSERT_TRUE(Line());
  EXPECT_EQ(Line()->m_text, "component == Net");
  EXPECT_EQ(Rows(), "1 3 5 ");
}

TEST_F(FilterText, AnItemOfTheTreeOffersItsComponentThreadProcessApplicationOrMachine) {
  Start();
  OpenFile();
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  auto& tree = dynamic_cast<CProcView&>(*Child().GetActiveView());
  Strings first;
  for (TreeItem item = tree.NextTreeItem(0); item && first.size() < 5;
       item = tree.NextTreeItem(item)) {
    tree.Tree().SelectItem(item);
    tree.OnTreeContextMenu(1, 2);
    first.push_back(Offered().front());
  }
  EXPECT_EQ(first, (Strings{"&Only This Machine \"web\"", "&Only This Application \"shop\"",
                            "&Only This Process \"812\"", "&Only This Thread \"main\"",
                            "&Only This Component \"Net\""}));
  ASSERT_TRUE(Frame().OnCommand(ID_FILTER_ONLYTHIS));
  EXPECT_TRUE(m_host.RunUntil([&tree] { return !tree.FilterProgress(); }));
  EXPECT_EQ(tree.Model().TraceCount(), 3);
}

// ---- the filter dialog's tree

TEST_F(FilterText, AsTextPutsTheTreeIntoTheLineAndOneStepLeadsBack) {
  Start();
  OpenFile();
  RunDialog(ID_VIEW_FILTER, [](CFilterDialog& dialog) {
    dialog.OnTreeClick(&NodeAt(dialog, {"All Components", "Net"}), true);
    dialog.OnOK();
  });
  EXPECT_EQ(Rows(), "2 4 6 ");
  EXPECT_EQ(Line(), nullptr);
  RunDialog(ID_VIEW_FILTER, [](CFilterDialog& dialog) {
    dialog.OnTreeClick(&NodeAt(dialog, {"All Threads", "web", "PID:812", "TID:main"}), true);
    dialog.OnAsText();
  });
  ASSERT_TRUE(Line());
  EXPECT_EQ(Line()->m_text, "component == \"Job & queue\" and pid == 812 and tid == worker");
  EXPECT_EQ(Rows(), "4 6 ");
  EXPECT_EQ(List().m_filter.allTraces, 1);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  EXPECT_EQ(Rows(), "2 4 6 ");
  EXPECT_EQ(Line()->m_text, "");
  EXPECT_EQ(List().m_filter.components[8], 0);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERFORWARD));
  EXPECT_EQ(Rows(), "4 6 ");
  EXPECT_EQ(List().m_filter.allTraces, 1);
}

TEST_F(FilterText, ATextOpensInTheDialogAsTheTreeOfWhatIsShown) {
  Start();
  OpenFile();
  RunDialog(ID_VIEW_FILTER, [](CFilterDialog& dialog) {
    dialog.OnTreeClick(&NodeAt(dialog, {"All Components", "Net"}), true);
    dialog.OnOK();
  });
  Apply("not tid == main");
  EXPECT_EQ(Line()->m_line.WhyNoTree(), "");
  m_host.AnswerDialog([](CDialog& dialog) {
    auto& filter = dynamic_cast<CFilterDialog&>(dialog);
    EXPECT_EQ(NodeAt(filter, {"All Components", "Net"}).State(), FilterState::Unchecked);
    EXPECT_EQ(NodeAt(filter, {"All Threads", "web", "PID:812", "TID:main"}).State(),
              FilterState::Unchecked);
    EXPECT_FALSE(filter.m_takeAsText);
    dialog.OnOK();
  });
  Line()->m_line.OpenAsTree();
  EXPECT_EQ(Rows(), "4 6 ");
  EXPECT_EQ(Line()->m_text, "");
  EXPECT_FALSE(List().m_filter.where);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  EXPECT_EQ(Line()->m_text, "not tid == main");
  EXPECT_EQ(Rows(), "4 6 ");
  EXPECT_EQ(List().m_filter.threads[1].processes[3].threadMarks[4], 1);
}

TEST_F(FilterText, ADialogOfATextThatIsCancelledChangesNothing) {
  Start();
  OpenFile();
  Apply("tid == main");
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnCancel(); });
  Line()->m_line.OpenAsTree();
  EXPECT_EQ(Line()->m_text, "tid == main");
  EXPECT_EQ(Rows(), "1 2 3 ");
  EXPECT_EQ(List().m_filter.allTraces, 1);
  Apply("text contains \"1\"");
  EXPECT_EQ(Line()->m_line.WhyNoTree(), "Column 1: the filter dialog cannot say \"text contains\"");
}

TEST_F(FilterText, NeitherTheMenuNorItsCommandTriesAllWaysInAllNamesToOpenATextAsATree) {
  Start();
  constexpr NameId kNames = 4000;
  TrcImage image;
  for (NameId i = 0; i < kNames; ++i) {
    const auto id = static_cast<NameId>(10 + i);
    image.Name(id, std::string(60, 'a') + std::to_string(i)).Trace({.component = id});
  }
  ASSERT_TRUE(Open(image.WriteTo(m_dir.File("hostile.trc"))));
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
  const FilterLine& line = Line()->m_line;
  Line()->m_line.Edit("component matches \"^(a|aa)+$\"");
  constexpr std::uint64_t kMillisecond = 1'000'000 * kSanitizerSlowdown;
  std::uint64_t begun = ThreadNanoseconds();
  EXPECT_EQ(line.WhyNoTree(), "") << "the command finds it out";
  EXPECT_LT(ThreadNanoseconds() - begun, 200 * kMillisecond);
  begun = ThreadNanoseconds();
  std::string why;
  EXPECT_FALSE(line.OpenAsTree(&why));
  EXPECT_EQ(why, "Column 1: it takes too long to compare this with all names of the traces");
  EXPECT_LT(ThreadNanoseconds() - begun, 2000 * kMillisecond);
}

TEST_F(FilterText, TheOtherPaneTakesTheTextOfTheTreeWithIt) {
  Start();
  OpenFile();
  RunDialog(ID_VIEW_FILTER, [](CFilterDialog& dialog) {
    dialog.OnTreeClick(&NodeAt(dialog, {"All Components", "Net"}), true);
    dialog.OnAsText();
  });
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  auto& tree = dynamic_cast<CProcView&>(*Child().GetActiveView());
  EXPECT_EQ(tree.Model().TraceCount(), 3);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_FILTERBACK));
  EXPECT_TRUE(m_host.RunUntil([&tree] { return !tree.FilterProgress(); }));
  EXPECT_EQ(tree.Model().TraceCount(), 6);
}

}  // namespace

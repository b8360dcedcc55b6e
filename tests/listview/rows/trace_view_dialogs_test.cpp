// The list's properties and filter: which trace, which cursor steps, what a filter changes.
#include <gtest/gtest.h>

#include "listview/details/trace_detail_dialog.h"
#include "listview/rows/trace_view_fixture.h"
#include "tree/filter/filter_dialog.h"
#include "tree/filter/filter_tree_text.h"

namespace {

class Dialogs : public TraceViewTest {
 protected:
  bool Enabled(unsigned id) {
    CCmdUI ui(id, true, false);
    UpdateCommand(*m_view, ui);
    return ui.IsEnabled();
  }
  // What the user does in the dialog that the command opens.
  template <class Dialog>
  void Run(unsigned id, const std::function<void(Dialog&)>& script) {
    bool ran = false;
    m_host.AnswerDialog([&](CDialog& dialog) {
      ran = true;
      script(dynamic_cast<Dialog&>(dialog));
    });
    EXPECT_TRUE(m_view->OnCommand(id));
    EXPECT_TRUE(ran);
  }
  void RunProperties(const std::function<void(CTraceDetailDialog&)>& script) {
    Run<CTraceDetailDialog>(ID_VIEW_PROPERTIES, script);
  }
  void RunFilter(const std::function<void(CFilterDialog&)>& script) {
    Run<CFilterDialog>(ID_VIEW_FILTER, script);
  }
  static void Click(CFilterDialog& dialog, const std::vector<std::string>& labels) {
    dialog.OnTreeClick(&NodeAt(dialog, labels), true);
  }
};

// ---- properties

TEST_F(Dialogs, PropertiesIsDisabledWithoutAFocusedRow) {
  Open();
  EXPECT_FALSE(Enabled(ID_VIEW_PROPERTIES));
  EXPECT_TRUE(m_view->OnCommand(ID_VIEW_PROPERTIES));
  EXPECT_EQ(m_host.Reported().find("dialog"), std::string::npos);
  DrainMany(2);
  EXPECT_FALSE(Enabled(ID_VIEW_PROPERTIES));
  Focus(1);
  EXPECT_TRUE(Enabled(ID_VIEW_PROPERTIES));
}

TEST_F(Dialogs, PropertiesShowsTheFocusedRowWhateverIsSelected) {
  AddMany(5);
  Open();
  Focus(1);
  m_list->SetItemState(3, kRowSelected, kRowSelected);
  RunProperties([](CTraceDetailDialog& dialog) { EXPECT_EQ(dialog.m_count, "2"); });
}

TEST_F(Dialogs, ADoubleClickOpensProperties) {
  AddMany(2);
  Open();
  Focus(0);
  bool ran = false;
  m_host.AnswerDialog(
      [&](CDialog& dialog) { ran = dynamic_cast<CTraceDetailDialog&>(dialog).m_count == "1"; });
  m_view->OnRowDoubleClicked(0);
  EXPECT_TRUE(ran);
}

TEST_F(Dialogs, WithSynchronizeOnOpeningOnATraceWithATicCountSendsTwoHintsBeforeItShows) {
  for (int i = 0; i < 3; ++i) Add({.tic = 100});
  Open();
  Focus(1);
  FollowProbe other(m_document);
  m_document.m_synchronize = true;
  RunProperties([&](CTraceDetailDialog&) {
    EXPECT_EQ(other.followed,
              (std::vector<TraceEvent_i*>{m_document.m_traces[0], m_document.m_traces[1]}));
    EXPECT_EQ(States(), "1 focused selected");  // away and back
  });
}

TEST_F(Dialogs, WithoutSynchronizeNoHintIsSent) {
  for (int i = 0; i < 3; ++i) Add({.tic = 100});
  Open();
  Focus(1);
  FollowProbe other(m_document);
  RunProperties([](CTraceDetailDialog& dialog) { dialog.OnNext(); });
  EXPECT_TRUE(other.followed.empty());
}

TEST_F(Dialogs, WalkingMovesTheSelectionAndLeavesTheFocus) {
  AddMany(4);
  Open();
  Focus(1);
  RunProperties([&](CTraceDetailDialog& dialog) {
    dialog.OnNext();
    EXPECT_EQ(dialog.m_count, "3");
    dialog.OnNext();
    EXPECT_FALSE(dialog.m_hasNext);
  });
  EXPECT_EQ(States(), "1 focused 3 selected");
}

TEST_F(Dialogs, AFilterChangesThePreviousTraceOfTheDifference) {
  Add({.component = 1, .tic = 100});
  Add({.component = 9, .tic = 150});
  Add({.component = 1, .tic = 170});
  Open();
  HideNine();
  Focus(1);
  RunProperties(
      [](CTraceDetailDialog& dialog) { EXPECT_EQ(dialog.m_ticDifference, "70 (70 ps)"); });
}

TEST_F(Dialogs, ATrimDuringTheDialogLeavesWhatItShowsAndTheNextStepGoesOnFromTheRowsNumber) {
  AddMany(10);
  Open();
  Focus(4);
  RunProperties([&](CTraceDetailDialog& dialog) {
    EXPECT_EQ(dialog.m_count, "5");
    Trim(6);  // the trace under the cursor dies
    EXPECT_EQ(dialog.m_count, "5");
    dialog.OnNext();  // row 5 of 4: the last one
    EXPECT_EQ(dialog.m_count, "10");
    EXPECT_FALSE(dialog.m_hasNext);
    dialog.OnBack();
    EXPECT_EQ(dialog.m_count, "9");
  });
}

TEST_F(Dialogs, AClearDuringTheDialogEmptiesTheFieldsAtTheNextStep) {
  for (int i = 0; i < 4; ++i) Add({.text = "x", .stack = "s", .tic = 7});
  Open();
  Focus(2);
  RunProperties([&](CTraceDetailDialog& dialog) {
    m_document.DeleteContents();
    EXPECT_EQ(dialog.m_text, "x");
    dialog.OnBack();
    EXPECT_EQ(dialog.m_text, "");
    EXPECT_EQ(dialog.m_count, "");
    EXPECT_FALSE(dialog.m_stackEnabled);
    EXPECT_FALSE(dialog.m_hasNext);
    dialog.OnBack();  // still nothing there
    EXPECT_EQ(dialog.m_text, "");
  });
}

TEST_F(Dialogs, ATraceThatArrivesDuringTheDialogCanBeWalkedToAfterTheNextStep) {
  AddMany(2);
  Open();
  Focus(1);
  RunProperties([&](CTraceDetailDialog& dialog) {
    EXPECT_FALSE(dialog.m_hasNext);
    DrainMany(1);
    EXPECT_FALSE(dialog.m_hasNext);
    dialog.OnBack();
    dialog.OnNext();
    EXPECT_TRUE(dialog.m_hasNext);
  });
}

// ---- filter

TEST_F(Dialogs, FilterListsEveryNameOfTheDocument) {
  m_document.m_names = {{1, {"Net"}}, {9, {"Db"}}};
  Add({.component = 1});
  Add({.component = 9});
  Open();
  RunFilter([](CFilterDialog& dialog) {
    const FilterNode& components = NodeAt(dialog, {"All Components"});
    EXPECT_EQ(TreeText(components), "[x] All Components\n  [x] Db\n  [x] Net\n");
  });
}

TEST_F(Dialogs, OkRebuildsTheRowsAndMarksTheFilterChanged) {
  m_document.m_names = {{1, {"Net"}}, {9, {"Db"}}};
  for (const NameId component : {1, 9, 1, 9}) Add({.component = component});
  Open();
  m_view->OnActivateView(true, m_view.get(), nullptr);
  m_main.Reported();
  RunFilter([](CFilterDialog& dialog) {
    Click(dialog, {"All Components", "Db"});
    dialog.OnOK();
  });
  EXPECT_EQ(Rows(), "1 3");
  EXPECT_TRUE(m_view->m_filterChanged);
  EXPECT_EQ(m_main.Reported(), (std::vector<std::string>{"rows 2", "filtered 1"}));
  RunFilter([](CFilterDialog& dialog) {
    Click(dialog, {"All Components", "Db"});
    dialog.OnOK();
  });
  EXPECT_EQ(Rows(), "1 2 3 4");
  EXPECT_EQ(m_main.Reported(), (std::vector<std::string>{"rows 4", "filtered 0"}));
}

TEST_F(Dialogs, CancelChangesNothing) {
  AddMany(2);
  Open();
  m_view->OnActivateView(true, m_view.get(), nullptr);
  m_main.Reported();
  RunFilter([](CFilterDialog& dialog) {
    Click(dialog, {});
    dialog.OnCancel();
  });
  EXPECT_EQ(Rows(), "1 2");
  EXPECT_FALSE(m_view->m_filterChanged);
  EXPECT_TRUE(m_main.Reported().empty());
}

TEST_F(Dialogs, ARebuildByTheFilterKeepsTheFocusedTraceOrTheNearest) {
  m_document.m_names = {{9, {"Db"}}, {1, {"Net"}}};
  for (const NameId component : {1, 9, 1, 1}) Add({.component = component});
  Open();
  Focus(2);
  RunFilter([](CFilterDialog& dialog) {
    Click(dialog, {"All Components", "Db"});
    dialog.OnOK();
  });
  EXPECT_EQ(Rows(), "1 3 4");
  EXPECT_EQ(States(), "1 focused selected");
}

TEST_F(Dialogs, TracesThatComeWhileTheFilterIsOpenAreJudgedByTheOldMarksUntilOk) {
  m_document.m_names = {{1, {"Net"}}, {9, {"Db"}}};
  for (const NameId component : {1, 9}) Add({.component = component});
  Open();
  RunFilter([&](CFilterDialog& dialog) {
    Click(dialog, {"All Components", "Db"});
    Drain({{.component = 9}});
    EXPECT_EQ(Rows(), "1 2 3");
    dialog.OnOK();
  });
  EXPECT_EQ(Rows(), "1");
}

TEST_F(Dialogs, ANewThreadUnderAPartlyHiddenMachineShowsOnlyAfterTheDialogWasEndedByOk) {
  m_document.m_names = {{1, {"m"}}, {2, {"10"}}, {3, {"11"}}, {4, {"12"}}};
  Add({.machine = 1, .pid = 2, .tid = 2});
  Add({.machine = 1, .pid = 3, .tid = 2});
  Open();
  RunFilter([](CFilterDialog& dialog) {
    Click(dialog, {"All Threads", "m", "PID:11"});
    dialog.OnOK();
  });
  Drain({{.machine = 1, .pid = 4, .tid = 2}});
  EXPECT_EQ(Rows(), "1");
  RunFilter([](CFilterDialog& dialog) { dialog.OnOK(); });
  EXPECT_EQ(Rows(), "1 3");
}

// Opening the dialog adds the names that the document has by then to the filter.
TEST_F(Dialogs, ANewThreadOfAPartlyHiddenMachineIsShownFromTheNextDialogOnAlsoWhenThatIsCancelled) {
  Add({.machine = 1, .pid = 2, .tid = 3});
  Add({.machine = 1, .pid = 2, .tid = 4});
  Open();
  m_view->m_filter.MergeDocumentNames(m_document);
  CTraceFilter filter = m_view->m_filter;
  filter.allTraces = filter.allThreads = filter.threads[1].allProcesses = 0;
  filter.threads[1].processes[2].allThreadsOfProcess = 0;
  filter.threads[1].processes[2].threadMarks[4] = 0;
  ASSERT_TRUE(m_view->SetFilter(filter, true));
  EXPECT_EQ(Rows(), "1");
  Drain({{.machine = 1, .pid = 2, .tid = 5}});
  EXPECT_EQ(Rows(), "1");
  RunFilter([](CFilterDialog& dialog) { dialog.OnCancel(); });
  EXPECT_EQ(Rows(), "1");
  Drain({{.machine = 1, .pid = 2, .tid = 5}});
  EXPECT_EQ(Rows(), "1 4");
  RunFilter([](CFilterDialog& dialog) { dialog.OnOK(); });
  EXPECT_EQ(Rows(), "1 3 4");
}

}  // namespace

// The tree view's commands, its mouse, and the cursor of the properties dialog.
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "listview/details/trace_detail_dialog.h"
#include "proc_view_fixture.h"
#include "tree/filter/filter_dialog.h"
#include "tree/find/find_dialog.h"
#include "tree/find/find_settings.h"
#include "tree/proc/model/tree_text.h"
#include "tree/proc/proc_view_iterator.h"

namespace {

using Lines = std::vector<std::string>;

class ProcViewCommands : public ProcViewTest {
 protected:
  ~ProcViewCommands() override { FindSettings = {}; }

  // The user searches for the text.
  void Find(const std::string& text, bool backward = false) {
    m_host.AnswerDialog([=](CDialog& dialog) {
      auto& find = dynamic_cast<CFindDialog&>(dialog);
      find.searchText = text;
      find.backward = backward;
      find.OnOK();
    });
    m_view->OnCommand(ID_EDIT_FIND);
  }
  std::string Export(const std::string& name) {
    const std::string path = m_directory.File(name);
    m_host.AnswerFileDialog(path);
    m_view->OnCommand(ID_FILE_EXPORT);
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
  }
};

TEST_F(ProcViewCommands, AFilteredViewWithNoTracePassingHasNoItemsSoFindAndFindNextAreDisabled) {
  FindSettings.searchText = "up";
  AddMany(2);
  Open();
  EXPECT_TRUE(State(ID_EDIT_FIND).IsEnabled());
  EXPECT_TRUE(State(ID_EDIT_FINDNEXT).IsEnabled());
  FindSettings.searchText.clear();
  EXPECT_FALSE(State(ID_EDIT_FINDNEXT).IsEnabled());
  FindSettings.searchText = "up";
  CTraceFilter none;
  none.allTraces = none.allSeverities = 0;
  none.severities = {0, 0, 0};
  m_view->SetFilter(none, true);
  EXPECT_EQ(m_tree->Count(), 0U);
  EXPECT_FALSE(State(ID_EDIT_FIND).IsEnabled());
  EXPECT_FALSE(State(ID_EDIT_FINDNEXT).IsEnabled());
}

TEST_F(ProcViewCommands, WithoutASelectedItemPropertiesAndGotoSourceAreLeftAsTheyWere) {
  AddMany(1);
  Open();
  for (const unsigned id : {ID_VIEW_PROPERTIES, ID_VIEW_GOTOSOURCE}) {
    EXPECT_TRUE(State(id, true).IsEnabled());
    EXPECT_FALSE(State(id, false).IsEnabled());
    m_view->OnCommand(id);
  }
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(ProcViewCommands, GotoSourceIsForPlainTracesWithAFileOnly) {
  Add({.text = "Begin: work", .file = 7});
  Add({.text = "with", .file = 7});
  Add("without");
  Open();
  ExpandToThread();
  Expand("work - 0 ps");
  for (const char* text : {"desk", "work - 0 ps", "without"}) {
    Select(text);
    EXPECT_FALSE(State(ID_VIEW_GOTOSOURCE).IsEnabled()) << text;
  }
  Select("with");
  EXPECT_TRUE(State(ID_VIEW_GOTOSOURCE, false).IsEnabled());
  Select("Begin: work");
  EXPECT_TRUE(State(ID_VIEW_GOTOSOURCE, false).IsEnabled());
}

TEST_F(ProcViewCommands, PropertiesOnALevelNodeShowTheTraceThatMadeThatNode) {
  Add("first");
  Add("second");
  Open();
  Select("desk");
  EXPECT_TRUE(State(ID_VIEW_PROPERTIES, false).IsEnabled());
  std::string shown;
  m_host.AnswerDialog(
      [&](CDialog& dialog) { shown = dynamic_cast<CTraceDetailDialog&>(dialog).m_text; });
  m_view->OnCommand(ID_VIEW_PROPERTIES);
  EXPECT_EQ(shown, "first");
}

TEST_F(ProcViewCommands, ANodeWhoseTraceHasBeenTrimmedHasNoProperties) {
  AddMany(2);
  Open();
  Trim(1);
  Select("desk");
  EXPECT_FALSE(State(ID_VIEW_PROPERTIES).IsEnabled());
  m_host.ClearTranscript();
  m_view->OnCommand(ID_VIEW_PROPERTIES);
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(ProcViewCommands, TheCursorGoesThroughAllItemsAndABeginComesTwice) {
  Add("Begin: work");
  Add("inside");
  Open();
  Select("desk");
  CProcViewIterator cursor(*m_view, m_tree->SelectedItem());
  EXPECT_FALSE(cursor.HasPrev());
  std::string shown = cursor.current->GetText();
  while (cursor.HasNext()) {
    cursor.Next();
    shown += "|" + cursor.current->GetText();
  }
  EXPECT_EQ(shown,
            "Begin: work|Begin: work|Begin: work|Begin: work|Begin: work|Begin: work|inside");
  EXPECT_EQ(Selected(), "inside");
  EXPECT_EQ(m_tree->calls.back(), "visible inside");
  while (cursor.HasPrev()) cursor.Prev();
  EXPECT_EQ(Selected(), "desk");
}

TEST_F(ProcViewCommands, EachStepOfTheCursorIsFollowedWhileTheDocumentSynchronizes) {
  AddMany(2);
  FollowProbe other(m_document);
  Open();
  ExpandToThread();
  Select("1");
  CProcViewIterator cursor(*m_view, m_tree->SelectedItem());
  cursor.Next();
  EXPECT_TRUE(other.followed.empty());
  m_document.m_synchronize = true;
  cursor.Prev();
  EXPECT_EQ(other.followed, std::vector<TraceEvent_i*>{m_document.m_traces[0]});
}

TEST_F(ProcViewCommands, TheCursorOutlivesItsItemAndItsTrace) {
  AddMany(4);
  Open();
  ExpandToThread();
  Select("1");
  CProcViewIterator cursor(*m_view, m_tree->SelectedItem());
  Select("desk");
  CProcViewIterator level(*m_view, m_tree->SelectedItem());
  Trim(2);
  EXPECT_EQ(cursor.current, nullptr);
  EXPECT_EQ(level.current, nullptr);
  ASSERT_TRUE(cursor.HasNext());
  cursor.Next();  // from the selected item, which is now the oldest trace
  ASSERT_TRUE(cursor.current);
  EXPECT_EQ(cursor.current->GetText(), "4");
  Clear();
  EXPECT_EQ(cursor.current, nullptr);
  EXPECT_FALSE(cursor.HasNext());
  EXPECT_FALSE(cursor.HasPrev());
}

TEST_F(ProcViewCommands, ADoubleClickShowsTheProperties) {
  AddMany(1);
  Open();
  Select("desk");
  m_view->OnTreeDoubleClicked();
  EXPECT_EQ(m_host.Reported(), "dialog -> 2\n");
}

TEST_F(ProcViewCommands, AClickOnAnItemIsFollowedOnlyWhileTheDocumentSynchronizes) {
  AddMany(2);
  FollowProbe other(m_document);
  Open();
  ExpandToThread();
  const TreeItem item = m_tree->Find("2");
  m_view->OnTreeClicked(item);
  EXPECT_TRUE(other.followed.empty());
  m_document.m_synchronize = true;
  m_view->OnTreeClicked(0);
  EXPECT_TRUE(other.followed.empty());
  m_view->OnTreeClicked(item);
  EXPECT_EQ(other.followed, std::vector<TraceEvent_i*>{m_document.m_traces[1]});
}

TEST_F(ProcViewCommands, TheRightButtonSelectsTheItemUnderIt) {
  AddMany(1);
  Open();
  m_view->OnTreeRightPressed(m_tree->Find("desk"));
  EXPECT_EQ(Selected(), "desk");
  m_view->OnTreeRightPressed(0);
  EXPECT_EQ(Selected(), "desk");
}

TEST_F(ProcViewCommands, SynchronizeTurnsTheFlagOverAndSendsTheSelectedTraceWhenItIsSet) {
  AddMany(2);
  FollowProbe other(m_document);
  Open();
  ExpandToThread();
  Select("2");
  m_view->OnCommand(ID_VIEW_SYNCHRONIZE);
  EXPECT_TRUE(m_document.m_synchronize);
  EXPECT_EQ(other.followed.size(), 1U);
  m_view->OnCommand(ID_VIEW_SYNCHRONIZE);
  EXPECT_FALSE(m_document.m_synchronize);
  EXPECT_EQ(other.followed.size(), 1U);
}

TEST_F(ProcViewCommands, TheFiltersOkRebuildsAndMarksItChanged) {
  Add({.text = "one", .category = 9});
  Open();
  m_host.AnswerDialog([](CDialog& dialog) {
    auto& filter = dynamic_cast<CFilterDialog&>(dialog);
    filter.OnTreeClick(&filter.Tree().Root(), true);
    filter.OnOK();
  });
  m_view->OnCommand(ID_VIEW_FILTER);
  EXPECT_TRUE(m_view->m_filterChanged);
  EXPECT_EQ(m_tree->Picture(), "");
  EXPECT_TRUE(m_view->m_filter.categories.contains(9));
}

TEST_F(ProcViewCommands, TheFiltersCancelChangesNothing) {
  AddMany(1);
  Open();
  m_view->OnCommand(ID_VIEW_FILTER);
  EXPECT_FALSE(m_view->m_filterChanged);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");
}

TEST_F(ProcViewCommands, FindGoesOnFromTheSelectedItemAndAroundTheEndWithoutOpeningAnything) {
  AddMany(3);
  Open();
  Select("desk");
  Find("2");
  EXPECT_EQ(Selected(), "2");
  Find("TID");
  EXPECT_EQ(Selected(), "TID one - 0 ps");
  m_view->OnCommand(ID_EDIT_FINDNEXT);  // only the selected item has it
  EXPECT_NE(m_host.Reported().find("\"Text not found.\""), std::string::npos);
  Find("1", true);
  EXPECT_EQ(Selected(), "PID 100 - 0 ps");
  Find("3", true);
  EXPECT_EQ(Selected(), "3");
}

TEST_F(ProcViewCommands, AHitOutsideTheScreenIsScrolledIntoView) {
  AddMany(40);
  Open();
  Select("desk");
  Find("35");
  EXPECT_EQ(Selected(), "35");
  EXPECT_TRUE(m_tree->IsOnScreen(m_tree->SelectedItem()));
  Find("2", true);
  EXPECT_TRUE(m_tree->IsOnScreen(m_tree->SelectedItem()));
}

TEST_F(ProcViewCommands, ATreeWithOneItemFindsNothing) {
  Add("x");
  Open();
  m_tree->insertionsLeft = 0;
  Select("desk");
  Find("desk");
  EXPECT_NE(m_host.Reported().find("\"Text not found.\""), std::string::npos);
}

TEST_F(ProcViewCommands, FindWithoutASelectedItemFindsNothing) {
  AddMany(1);
  Open();
  Find("desk");
  EXPECT_NE(m_host.Reported().find("\"Text not found.\""), std::string::npos);
}

TEST_F(ProcViewCommands, FindNextRunsUnderTheWaitCursor) {
  AddMany(2);
  Open();
  Select("desk");
  Find("1");
  m_host.ClearTranscript();
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(m_host.Reported().rfind("wait cursor on\nwait cursor off\n", 0), 0U)
      << m_host.Reported();
}

TEST_F(ProcViewCommands, TheExportWritesWhatIsOpenWithTheLabelsOfTheScreen) {
  Add("Begin: work");
  Add("inside");
  Add("End: ");
  Add("Begin: rest");
  Open();
  ExpandToThread();
  Expand("work - 0 ps");
  EXPECT_EQ(Export("tree.txt"),
            "|- desk\n"
            "|   |- shop\n"
            "|   |   |- PID 100 - 0 ps\n"
            "|   |   |   |- TID one - 0 ps\n"
            "|   |   |   |   |- work - 0 ps\n"
            "|   |   |   |   |   |- Begin: work\n"
            "|   |   |   |   |   |- inside\n"
            "|   |   |   |   |   |- End: \n"
            "|   |   |   |   +- rest - 0 ps\n");
}

TEST_F(ProcViewCommands, TheExportOfATreeThatIsOpenedWholeIsTheTextOfTheModel) {
  for (const char* text :
       {"Begin: a", "in a", "Begin: b", "End: ", "End: ", "End: ", "Begin: open"})
    Add(text);
  Add({.text = "other", .tid = 5});
  Add({.text = "far", .machine = 6});
  Open();
  for (TreeItem item = m_tree->Walk(0, TreeStep::FirstChild); item;
       item = m_view->NextTreeItem(item))
    m_tree->Expand(item, true);
  std::string text;
  VisitNodes(m_view->Model(), *m_view->Model().Root().children[0], kAllLevels,
             [&text](int depth, bool closed, const std::string& label) {
               AppendTreeLine(text, depth, closed, label);
               text += '\n';
               return true;
             });
  EXPECT_EQ(Export("tree.txt"), text);
  EXPECT_NE(text.find("|- other"), std::string::npos);
}

TEST_F(ProcViewCommands, TheExportOfATreeWithTwoMachinesHoldsOnlyTheFirst) {
  AddMany(1);
  Add({.text = "far", .machine = 6});
  Open();
  EXPECT_EQ(Export("tree.txt"), "+- desk\n");
}

TEST_F(ProcViewCommands, TheExportOfAnEmptyTreeIsAnEmptyFile) {
  Open();
  EXPECT_EQ(Export("tree.txt"), "");
  EXPECT_EQ(m_host.Reported().find("box"), std::string::npos);
}

TEST_F(ProcViewCommands, TheExportsDialogOffersTheDocumentsNameWithoutItsLastExtension) {
  Open();
  m_document.SetTitle("Traces sent to web.local");
  m_view->OnCommand(ID_FILE_EXPORT);
  m_document.SetPathName("/traces/web.old.trc", false);
  m_view->OnCommand(ID_FILE_EXPORT);
  EXPECT_EQ(m_host.Reported(),
            "save dialog \"Export\" ext=.txt name=\"Traces sent to web\" "
            "filters=\"Text Files (*.txt)|*.txt|All Files (*.*)|*\" -> none\n"
            "save dialog \"Export\" ext=.txt name=\"/traces/web.old\" "
            "filters=\"Text Files (*.txt)|*.txt|All Files (*.*)|*\" -> none\n");
}

TEST_F(ProcViewCommands, AnExportFileThatCannotBeOpenedSaysSoAndLeavesTheView) {
  AddMany(1);
  Open();
  Export("no/such/folder/tree.txt");
  EXPECT_NE(m_host.Reported().find("\"Error opening output file.\""), std::string::npos);
  EXPECT_EQ(m_tree->Picture(), "+desk\n");
}

}  // namespace

// Find and Find Next in the list view: the walk over the rows and what a hit does.
#include <gtest/gtest.h>

#include "listview/rows/trace_view_fixture.h"
#include "tree/find/find_dialog.h"
#include "tree/find/find_search.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class TraceViewFindTest : public TraceViewTest {
 protected:
  TraceViewFindTest() { FindSettings = {}; }
  ~TraceViewFindTest() override { FindSettings = {}; }

  void OpenWith(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) Add({.text = text});
    Open();
    m_host.ClearTranscript();
    m_list->calls.clear();
  }
  void LookFor(const std::string& text, bool backward = false) {
    ASSERT_EQ(RegexPrepare(text.c_str(), 0, 1, 0, 0), 1);
    FindSettings = {text, 0, backward, 0, 0};
  }
  void Focus(int row) { m_list->SetItemState(row, kRowFocused, kRowFocused); }
  int Focused() const { return m_list->NextItem(-1, kRowFocused); }
  // Find Next from the row; where the focus is then.
  int NextFrom(int row) {
    Focus(row);
    m_host.ClearTranscript();
    m_view->OnCommand(ID_EDIT_FINDNEXT);
    return Focused();
  }
  bool Enabled(unsigned id) {
    CCmdUI ui(id, true, false);
    UpdateCommand(*m_view, ui);
    return ui.IsEnabled();
  }
  const std::string kNotFound = "box Tessera [none] \"Text not found.\" (OK) -> OK\n";
};

TEST_F(TraceViewFindTest, FindWantsRowsAndFindNextATextToo) {
  Open();
  LookFor("x");
  EXPECT_FALSE(Enabled(ID_EDIT_FIND));
  EXPECT_FALSE(Enabled(ID_EDIT_FINDNEXT));
  Drain({{.text = "a"}});
  EXPECT_TRUE(Enabled(ID_EDIT_FIND));
  EXPECT_TRUE(Enabled(ID_EDIT_FINDNEXT));
  FindSettings.searchText.clear();
  EXPECT_TRUE(Enabled(ID_EDIT_FIND));
  EXPECT_FALSE(Enabled(ID_EDIT_FINDNEXT));
}

TEST_F(TraceViewFindTest, ForwardFromTheRowAfterTheFocus) {
  OpenWith({"hit", "no", "hit", "no", "hit"});
  LookFor("hit");
  EXPECT_EQ(NextFrom(0), 2);
  EXPECT_EQ(NextFrom(2), 4);
  EXPECT_EQ(NextFrom(3), 4);
}

TEST_F(TraceViewFindTest, ForwardGoesOnFromTheFirstRow) {
  OpenWith({"no", "hit", "no", "no"});
  LookFor("hit");
  EXPECT_EQ(NextFrom(2), 1);
  EXPECT_EQ(NextFrom(3), 1) << "wrapping at once";
}

TEST_F(TraceViewFindTest, BackwardFromTheRowBeforeTheFocusAndRound) {
  OpenWith({"hit", "no", "hit", "no"});
  LookFor("hit", true);
  EXPECT_EQ(NextFrom(3), 2);
  EXPECT_EQ(NextFrom(2), 0);
  EXPECT_EQ(NextFrom(0), 2) << "wrapping at once";
  EXPECT_EQ(NextFrom(1), 0);
}

TEST_F(TraceViewFindTest, WithoutAFocusTheWalkBeginsAtTheFirstOrLastRow) {
  OpenWith({"hit", "no", "hit"});
  m_list->SetItemState(-1, 0, kRowFocused);
  LookFor("hit");
  m_view->FindInRows();
  EXPECT_EQ(Focused(), 0);
  m_list->SetItemState(-1, 0, kRowFocused);
  LookFor("hit", true);
  m_view->FindInRows();
  EXPECT_EQ(Focused(), 2);
}

TEST_F(TraceViewFindTest, AHitInTheFocusedRowAloneIsNotFound) {
  OpenWith({"no", "hit", "no"});
  LookFor("hit");
  EXPECT_EQ(NextFrom(1), 1);
  EXPECT_EQ(m_host.Reported(), kNotFound);
  LookFor("hit", true);
  EXPECT_EQ(NextFrom(1), 1);
  EXPECT_EQ(m_host.Reported(), kNotFound);
}

TEST_F(TraceViewFindTest, ASearchThatWrapsAtItsFirstStepEndsAfterOnePass) {
  OpenWith({"no", "no", "no"});
  LookFor("hit");
  EXPECT_EQ(NextFrom(2), 2) << "the last row has the focus";
  EXPECT_EQ(m_host.Reported(), kNotFound);
  LookFor("hit", true);
  EXPECT_EQ(NextFrom(0), 0) << "backward, the first row has the focus";
  EXPECT_EQ(m_host.Reported(), kNotFound);
  m_list->SetItemState(-1, 0, kRowFocused);
  m_host.ClearTranscript();
  m_view->FindInRows();
  EXPECT_EQ(Focused(), -1) << "no row has the focus";
  EXPECT_EQ(m_host.Reported(), kNotFound);
}

TEST_F(TraceViewFindTest, ASingleFocusedRowIsTestedOnce) {
  OpenWith({"hit"});
  LookFor("no");
  EXPECT_EQ(NextFrom(0), 0);
  EXPECT_EQ(m_host.Reported(), kNotFound);
  LookFor("hit");
  EXPECT_EQ(NextFrom(0), 0);
  EXPECT_EQ(m_host.Reported(), "") << "the walk that wraps comes to it in its turn";
}

TEST_F(TraceViewFindTest, AHitMovesTheFocusAloneAndShowsTheRow) {
  OpenWith({"no", "no", "hit"});
  m_list->SetItemState(0, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
  LookFor("hit");
  m_list->calls.clear();
  m_view->FindInRows();
  EXPECT_EQ(m_list->calls,
            (std::vector<std::string>{"state 0 0/1", "state 2 1/1", "visible 2", "hit 2 12"}));
  EXPECT_EQ(m_list->GetItemState(0), unsigned{kRowSelected});
  EXPECT_EQ(m_list->GetItemState(2), unsigned{kRowFocused});
  EXPECT_EQ(m_view->CurrentEvent(), m_view->Rows().EventAt(2));
}

TEST_F(TraceViewFindTest, AStopRowOutsideOfTheListTakesTheFocusFromAllRowsOrNone) {
  OpenWith({"hit", "no"});
  Focus(1);
  LookFor("hit");
  m_list->calls.clear();
  m_view->FindInRows();
  EXPECT_EQ(m_list->calls,
            (std::vector<std::string>{"state -1 0/1", "state 0 1/1", "visible 0", "hit 0 12"}));
  LookFor("no", true);
  m_list->calls.clear();
  m_view->FindInRows();
  EXPECT_EQ(m_list->calls,
            (std::vector<std::string>{"state 2 0/1", "state 1 1/1", "visible 1", "hit 1 12"}));
  EXPECT_EQ(Focused(), 1);
}

TEST_F(TraceViewFindTest, ASynchronisedHitGoesToTheOtherViews) {
  OpenWith({"no", "hit"});
  FollowProbe other(m_document);
  LookFor("hit");
  NextFrom(0);
  EXPECT_TRUE(other.followed.empty());
  m_document.m_synchronize = true;
  NextFrom(0);
  EXPECT_EQ(other.followed, (std::vector<TraceEvent_i*>{m_view->Rows().EventAt(1)}));
  LookFor("nowhere");
  NextFrom(0);
  EXPECT_EQ(other.followed.size(), 1u);
}

TEST_F(TraceViewFindTest, OnlyTheTextIsSearched) {
  Add({.text = "text"});
  Add({.text = "other"});
  Open();
  for (const char* shown : {"1", "Info", ":0"}) {
    LookFor(shown);
    NextFrom(1);
    EXPECT_EQ(m_host.Reported(), kNotFound) << shown;
  }
}

TEST_F(TraceViewFindTest, FindAsksAndThenSearchesUnderTheWaitCursor) {
  OpenWith({"no", "hit"});
  m_host.AnswerDialog([](CDialog& dialog) {
    dynamic_cast<CFindDialog&>(dialog).searchText = "hit";
    dialog.OnOK();
  });
  m_view->OnCommand(ID_EDIT_FIND);
  EXPECT_EQ(m_host.Reported(), "dialog -> 1\nwait cursor on\nwait cursor off\n");
  EXPECT_EQ(Focused(), 1);
}

TEST_F(TraceViewFindTest, FindNextHasNoDialogAndNoWaitCursor) {
  OpenWith({"no", "hit"});
  LookFor("hit");
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(Focused(), 1);
}

TEST_F(TraceViewFindTest, CancelInTheDialogSearchesNothing) {
  OpenWith({"no", "hit"});
  LookFor("hit");
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnCancel(); });
  m_view->OnCommand(ID_EDIT_FIND);
  EXPECT_EQ(m_host.Reported(), "dialog -> 2\n");
  EXPECT_TRUE(m_list->calls.empty());
}

TEST_F(TraceViewFindTest, FindNextCompilesNothingAndServesEveryView) {
  OpenWith({"a", "b", "c"});
  const auto second = MakeView();
  second->OnInitialUpdate();
  LookFor("b");
  FindSettings.searchText = "c";  // not compiled: the pattern is still the other
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(Focused(), 1);
  second->OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(second->CurrentEvent(), second->Rows().EventAt(1));
}

TEST_F(TraceViewFindTest, FindNextAfterABadPatternRunsWhatWasCompiledOfIt) {
  OpenWith({"no", "q here"});
  LookFor("no");
  m_host.AnswerDialog([](CDialog& dialog) {
    dynamic_cast<CFindDialog&>(dialog).searchText = "\\(q";
    dynamic_cast<CFindDialog&>(dialog).regularExpression = 1;
    dialog.OnOK();
  });
  m_view->OnCommand(ID_EDIT_FIND);
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(Focused(), 1);
}

TEST_F(TraceViewFindTest, AFilteredListIsSearchedAsItIsShown) {
  Add({.text = "no", .attributes = kAttributeInfo});
  Add({.text = "hit", .attributes = kAttributeWarn});
  Add({.text = "hit", .attributes = kAttributeInfo});
  Open();
  CTraceFilter filter;
  filter.MergeDocumentNames(m_document);
  filter.allTraces = filter.allSeverities = 0;
  filter.severities[1] = 0;
  m_view->SetFilter(filter, true);
  ASSERT_EQ(m_view->Rows().Size(), 2);
  LookFor("hit");
  EXPECT_EQ(NextFrom(0), 1);
}

TEST_F(TraceViewFindTest, ACancelledSearchChangesNothingAndSaysNothing) {
  OpenWith({"no", "hit"});
  ASSERT_EQ(RegexPrepare("\\(x*\\)\\(x*\\)\\(x*\\)\\1\\2\\3y", 0, 0, 0, 0), 1);
  FindSettings.searchText = "x";
  Drain({{.text = std::string(60000, 'x') + "zy"}});
  Focus(0);
  m_host.ClearTranscript();
  m_host.AnswerWorkBox([](CDialog& dialog) { dialog.OnCancel(); });
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(m_host.Reported(), "dialog -> 2\n");
  EXPECT_EQ(Focused(), 0);
}

}  // namespace

// What the list view says of its rows' looks: tints, hits of a search, the end, and why it is
// empty.
#include <gtest/gtest.h>

#include "listview/rows/trace_view_fixture.h"
#include "settings/globals.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class Look : public TraceViewTest {
 protected:
  Look() {
    g_tintSeverity = true;
    FindSettings = {};
  }
  ~Look() override {
    g_tintSeverity = true;
    FindSettings = {};
  }
  // "2+3 7+3": where the row's hits begin and how long they are; "" for none.
  std::string Hit(int row, Column column = Column::Trace) {
    std::string hits;
    for (const HitRange& hit : m_view->RowListHits(row, column))
      hits += (hits.empty() ? "" : " ") + std::to_string(hit.begin) + "+" +
              std::to_string(hit.end - hit.begin);
    return hits;
  }
  void FindNext(const char* text, int literal = 1) {
    ASSERT_EQ(RegexPrepare(text, 0, literal, 0, 0), 1);
    FindSettings.searchText = text;
    m_view->OnCommand(ID_EDIT_FINDNEXT);
  }
};

TEST_F(Look, WarningsAndErrorsAreTintedUnlessTheOptionIsOff) {
  Add({.attributes = kAttributeInfo});
  Add({.attributes = kAttributeWarn});
  Add({.attributes = kAttributeError});
  Add({.attributes = 0});
  Open();
  EXPECT_EQ(m_view->RowListTint(0), RowTint::None);
  EXPECT_EQ(m_view->RowListTint(1), RowTint::Warn);
  EXPECT_EQ(m_view->RowListTint(2), RowTint::Error);
  EXPECT_EQ(m_view->RowListTint(3), RowTint::None);
  EXPECT_EQ(m_view->RowListTint(4), RowTint::None) << "there is no such row";
  g_tintSeverity = false;
  EXPECT_EQ(m_view->RowListTint(2), RowTint::None);
}

TEST_F(Look, AfterASearchTheHitsOfAllRowsShowUntilTheFocusMovesOn) {
  for (const char* text : {"one", "a bone", "two", "stone"}) Add({.text = text});
  Open();
  EXPECT_EQ(Hit(1), "") << "nothing was searched yet";
  FindNext("one");
  const int repaints = m_list->repaints;
  EXPECT_GT(repaints, 0);
  EXPECT_EQ(Hit(0), "0+3");
  EXPECT_EQ(Hit(1), "3+3");
  EXPECT_EQ(Hit(2), "");
  EXPECT_EQ(Hit(3), "2+3");
  EXPECT_EQ(Hit(1, Column::Source), "") << "only the text is searched";
  FindNext("one");
  EXPECT_EQ(Hit(3), "2+3") << "the search itself moves the focus";
  m_list->SetItemState(2, kRowFocused, kRowFocused);
  EXPECT_EQ(Hit(1), "");
  EXPECT_GT(m_list->repaints, repaints);
}

TEST_F(Look, EveryHitOfARowShowsAsFarAsItsCellDoes) {
  Add({.text = "one, bone and stone"});
  Add({.text = "one" + std::string(254, ' ') + "one one"});
  Open();
  FindNext("one");
  EXPECT_EQ(Hit(0), "0+3 6+3 16+3");
  EXPECT_EQ(Hit(1), "0+3 257+3") << "a cell shows 259 bytes";
}

TEST_F(Look, ASearchScrollsAcrossToItsHitOnceItsHitsShow) {
  for (const char* text : {"zero", "one"}) Add({.text = text});
  Open();
  m_list->calls.clear();
  FindNext("one");
  const std::string shown = "hit 1 " + std::to_string(static_cast<int>(Column::Trace));
  ASSERT_FALSE(m_list->calls.empty());
  EXPECT_EQ(m_list->calls.back(), shown) << "behind the focus, whose move takes old hits down";
}

TEST_F(Look, ASearchWithoutAHitAndARebuildLeaveNoHits) {
  for (const char* text : {"one", "two"}) Add({.text = text});
  Open();
  FindNext("one");
  ASSERT_EQ(Hit(0), "0+3");
  m_document.UpdateAllViews(nullptr, kHintReady);
  EXPECT_EQ(Hit(0), "");
}

TEST_F(Look, APatternThatCostsTooMuchInACellHasNoHitThere) {
  std::string costly;
  for (int block = 0; block < 5; ++block) costly += std::string(400, 'a') + "x";
  costly += "aab";
  Add({.text = costly});
  Add({.text = "aab"});
  Open();
  FindNext("a*a*b", 0);
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(Hit(1), "0+3");
  ASSERT_EQ(RegexMatchText(costly), 1);
  EXPECT_EQ(Hit(0), "") << "the paint cannot wait for it";
}

TEST_F(Look, TheHitsStayThoseOfTheirOwnSearchAndDisturbNoOther) {
  for (const char* text : {"one", "a bone"}) Add({.text = text});
  Open();
  FindNext("one");
  ASSERT_EQ(RegexPrepare("a*a*a*a*b", 0, 0, 0, 0), 1);  // another view's search
  const std::string whole = std::string(3000, 'a') + "b";
  RegexAnswer answer = RegexBeginText(whole, 100);
  ASSERT_EQ(answer, RegexAnswer::Unfinished);
  EXPECT_EQ(Hit(1), "3+3");
  while (answer == RegexAnswer::Unfinished) answer = RegexResumeText(whole, 100000);
  EXPECT_EQ(answer, RegexAnswer::Yes);
}

TEST_F(Look, AnEmptyListSaysThatThereAreNoTracesOrThatTheFilterHidesThem) {
  EXPECT_EQ(m_view->RowListEmptyText(), "") << "nobody knows yet";
  Open();
  EXPECT_EQ(m_view->RowListEmptyText(), "No traces");
  Add({.component = 9});
  HideNine();
  EXPECT_EQ(m_view->RowListEmptyText(),
            "The filter hides the only trace\nView > Filter... shows it again");
  for (int i = 0; i < 1233; ++i) Add({.component = 9});
  HideNine();
  EXPECT_EQ(m_view->RowListEmptyText(),
            "The filter hides all 1,234 traces\nView > Filter... shows them again");
  m_document.m_loading = true;
  EXPECT_EQ(m_view->RowListEmptyText(), "");
}

TEST_F(Look, AListThatIsNotLiveHasNoMarkOfItsEnd) {
  Open();
  EXPECT_FALSE(m_list->endMark);
}

}  // namespace

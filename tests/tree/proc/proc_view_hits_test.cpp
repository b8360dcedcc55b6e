// What the tree view says of the hits of a search in its labels.
#include "proc_view_fixture.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class ProcViewHits : public ProcViewTest {
 protected:
  ProcViewHits() { FindSettings = {}; }
  ~ProcViewHits() override { FindSettings = {}; }

  void FindNext(const char* text) {
    ASSERT_EQ(RegexPrepare(text, 0, 1, 0, 0), 1);
    FindSettings.searchText = text;
    m_view->OnCommand(ID_EDIT_FINDNEXT);
  }
  void OpenOn(std::initializer_list<const char*> texts) {
    for (const char* text : texts) Add(text);
    Open();
    ExpandToThread();
    Select("desk");
  }
  std::size_t Hits(const char* label) { return m_view->TreeTextHits(label).size(); }
};

TEST_F(ProcViewHits, AfterASearchAllHitsOfAllLabelsShowUntilAnotherItemIsSelected) {
  OpenOn({"one", "a bone, one", "two"});
  EXPECT_EQ(Hits("one"), 0U) << "nothing was searched yet";
  FindNext("one, ");
  ASSERT_EQ(Selected(), "a bone, one");
  EXPECT_EQ(m_view->TreeTextHits("a bone, one, "), (std::vector<HitRange>{{3, 8}, {8, 13}}));
  FindNext("one");
  EXPECT_EQ(Hits("a bone, one"), 2U);
  EXPECT_EQ(Hits("TID one - 0 ps"), 1U) << "the whole label is searched";
  EXPECT_EQ(Hits("two"), 0U);
  const int repaints = m_tree->repaints;
  EXPECT_GT(repaints, 0);
  m_tree->SelectItem(m_tree->Find("two"));
  EXPECT_EQ(Hits("one"), 0U);
  EXPECT_GT(m_tree->repaints, repaints);
}

TEST_F(ProcViewHits, ASearchScrollsAcrossToItsHitOnceItsHitsShow) {
  OpenOn({"one"});
  FindNext("one");
  ASSERT_FALSE(m_tree->calls.empty());
  EXPECT_EQ(m_tree->calls.back(), "hit " + Selected()) << "behind all that takes old hits down";
  EXPECT_EQ(Hits("one"), 1U);
}

TEST_F(ProcViewHits, ASearchWithoutAHitLeavesThoseOfTheOneBefore) {
  OpenOn({"one", "two"});
  FindNext("one");
  FindNext("nothing so named");
  EXPECT_EQ(Hits("one"), 1U) << "the selection has not moved";
}

TEST_F(ProcViewHits, ARebuildAndATrimLeaveNoHits) {
  OpenOn({"one", "two", "three"});
  FindNext("three");
  ASSERT_EQ(Hits("three"), 1U);
  m_document.UpdateAllViews(nullptr, kHintReady);
  EXPECT_EQ(Hits("three"), 0U);
  ExpandToThread();
  Select("desk");
  FindNext("three");
  ASSERT_EQ(Hits("three"), 1U);
  Trim(1);
  EXPECT_EQ(Hits("three"), 0U) << "it moves the selection";
}

TEST_F(ProcViewHits, TheTracesWithAHitAreCountedInTheOrderOfTheDocument) {
  OpenOn({"hit", "a hit", "two"});
  EXPECT_EQ(m_view->Hits(), nullptr);
  const auto text = [this] {
    while (m_view->FilterProgress() || m_view->Hits()->IsAtWork()) {
      m_host.RunPosted();
      m_host.TickTimers();
    }
    return m_view->Hits()->Text();
  };
  FindNext("hit");
  EXPECT_EQ(text(), "1 of 2 hits");
  FindNext("hit");
  EXPECT_EQ(text(), "2 of 2 hits");
  Drain({{.text = "hit more"}, {.text = "a hit of nine", .category = 9}, {.text = "hits"}});
  EXPECT_EQ(text(), "2 of 5 hits");
  CTraceFilter filter;
  HideNine(filter);
  ASSERT_TRUE(m_view->SetFilter(filter, true));
  EXPECT_EQ(text(), "2 of 4 hits") << "what the filter hides is not counted";
  WhereError error;
  ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile("text contains \"h\" and count > 1", error)));
  EXPECT_EQ(text(), "1 of 3 hits");
  ASSERT_TRUE(m_view->SetWhere(nullptr));
  Trim(1);
  m_tree->SelectItem(m_tree->Find("a hit"));
  EXPECT_EQ(text(), "1 of 3 hits");
  m_tree->SelectItem(m_tree->Find("desk"));
  EXPECT_EQ(text(), "3 hits") << "a machine is no trace";
  Clear();
  EXPECT_EQ(text(), "no hits");
}

TEST_F(ProcViewHits, TheTracesBelowTheSelectedItemAreCopied) {
  Add("a");
  Add({.text = "other thread", .tid = 5});
  Add("b");
  Open();
  ExpandToThread();
  const auto copied = [this](const char* item) {
    Select(item);
    EXPECT_TRUE(m_view->OnCommand(ID_EDIT_COPYFILTER));
    return m_host.m_clipboard;
  };
  EXPECT_EQ(copied("b"), "count in {3}");
  EXPECT_EQ(copied(kThread), "count in {1, 3}");
  EXPECT_EQ(copied("desk"), "count in {1..3}");
}

}  // namespace

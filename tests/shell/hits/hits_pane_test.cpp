#include "shell/hits/hits_pane.h"

#include <chrono>

#include "listview/rows/trace_view_fixture.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class HitsPaneTest : public TraceViewTest {
 protected:
  HitsPaneTest() { FindSettings = {}; }
  ~HitsPaneTest() override { FindSettings = {}; }

  void MakePane() {
    m_pane = std::make_unique<HitsPane>(
        m_host,
        [this](RowListOwner& owner) {
          m_owner = &owner;
          return std::make_unique<FakeRowList>(owner);
        },
        [this] { ++m_focused; });
    m_hits = static_cast<FakeRowList*>(&m_pane->List());
    m_pane->OnPane(*m_view);
    m_pane->OnShown(true);
  }
  void OpenWith(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) Add({.text = text});
    Open();
    MakePane();
  }
  void FindNext(const std::string& text, bool expression = false) {
    ASSERT_EQ(RegexPrepare(text.c_str(), 0, expression ? 0 : 1, 0, 0), 1);
    FindSettings = {text, 0, 0, expression ? 1 : 0, 0};
    m_view->OnCommand(ID_EDIT_FINDNEXT);
    Settle();
  }
  void Settle() {
    for (int turns = 0; m_view->Hits()->IsAtWork(); ++turns) {
      ASSERT_LT(turns, 1000);
      m_host.TickTimers();
    }
    m_host.TickTimers();
    m_host.RunPosted();
  }
  RowListOwner& Owner() { return *m_owner; }
  // "2 hit | 4 a hit"
  std::string Listed() {
    std::string listed;
    for (int row = 0; row < m_hits->ItemCount(); ++row)
      listed += (row ? " | " : "") + Owner().RowListText(row, HitsPane::kRow) + " " +
                Owner().RowListText(row, HitsPane::kText);
    return listed;
  }
  int Focused() const { return m_list->NextItem(-1, kRowFocused); }

  std::unique_ptr<HitsPane> m_pane;
  FakeRowList* m_hits = nullptr;
  RowListOwner* m_owner = nullptr;
  int m_focused = 0;
};

TEST_F(HitsPaneTest, SaysWhatItWaitsFor) {
  OpenWith({"a"});
  EXPECT_EQ(m_hits->ItemCount(), 0);
  EXPECT_TRUE(Owner().RowListEmptyText().starts_with("Nothing was searched"));
  FindNext("zzz");
  EXPECT_EQ(Owner().RowListEmptyText(), "No hits");
}

TEST_F(HitsPaneTest, ListsEachRowWithAHitAndItsPlace) {
  OpenWith({"no", "hit", "no", "a hit"});
  FindNext("hit");
  EXPECT_EQ(Listed(), "2 hit | 4 a hit");
  EXPECT_NE(Owner().RowListText(1, HitsPane::kTime), "");
  EXPECT_EQ(Owner().RowListHits(1, HitsPane::kText), (std::vector<HitRange>{{2, 5}}));
  EXPECT_TRUE(Owner().RowListHits(1, HitsPane::kTime).empty());
  EXPECT_EQ(Owner().RowListText(2, HitsPane::kText), "") << "there is no such hit";
}

TEST_F(HitsPaneTest, FollowsTicksTrimsFiltersAndNewSearches) {
  OpenWith({"hit", "no", "a hit"});
  FindNext("hit");
  Drain({{.text = "new hit", .component = 9}, {.text = "no"}});
  Settle();
  EXPECT_EQ(Listed(), "1 hit | 3 a hit | 4 new hit");
  Trim(2);
  Settle();
  EXPECT_EQ(Listed(), "1 a hit | 2 new hit");
  HideNine();
  Settle();
  EXPECT_EQ(Listed(), "1 a hit");
  FindNext("no");
  EXPECT_EQ(Listed(), "2 no");
  m_document.DeleteContents();
  Settle();
  EXPECT_EQ(Listed(), "");
}

TEST_F(HitsPaneTest, ShowsTheTextAroundAHitThatStandsFarBehind) {
  OpenWith({std::string(3000, 'x') + "ü" + std::string(39, 'y') + " hit behind"});
  FindNext("hit");
  const std::string text = Owner().RowListText(0, HitsPane::kText);
  EXPECT_TRUE(text.starts_with("\u2026 ")) << text;
  const std::vector<HitRange> hits = Owner().RowListHits(0, HitsPane::kText);
  ASSERT_EQ(hits.size(), 1U);
  EXPECT_EQ(text.substr(hits[0].begin, hits[0].end - hits[0].begin), "hit");
  EXPECT_LE(hits[0].begin, 50U);
}

TEST_F(HitsPaneTest, GoingFromHitToHitLeadsToTheirRowsAndKeepsTheFocus) {
  OpenWith({"no", "hit", "no", "hit", "hit"});
  FindNext("hit");
  m_list->SetItemState(0, kRowSelected, kRowSelected);
  m_hits->SetItemState(2, kRowFocused, kRowFocused);
  m_host.RunPosted();
  EXPECT_EQ(Focused(), 4);
  EXPECT_EQ(m_view->Hits()->Text(), "3 of 3 hits");
  EXPECT_FALSE(m_view->RowListHits(4, Column::Trace).empty()) << "its hit is tinted";
  EXPECT_EQ(m_list->GetItemState(0), kRowSelected) << "the selection is the user's";
  Owner().OnRowClicked(1);
  m_host.RunPosted();
  EXPECT_EQ(Focused(), 3);
  EXPECT_EQ(m_focused, 0);
  Owner().OnRowDoubleClicked(0);
  EXPECT_EQ(Focused(), 1);
  EXPECT_EQ(m_focused, 1) << "Enter goes to the rows";
}

TEST_F(HitsPaneTest, AHitThatHasGoneLeadsNowhere) {
  OpenWith({"hit", "hit"});
  FindNext("hit");
  Owner().OnRowClicked(1);
  m_document.DeleteContents();
  m_host.RunPosted();
  EXPECT_EQ(Owner().RowListText(0, HitsPane::kText), "");
  Owner().OnRowDoubleClicked(1);
  Owner().OnRowClicked(-1);
  m_host.RunPosted();
  EXPECT_EQ(Focused(), -1);
}

TEST_F(HitsPaneTest, LooksAtNothingWhileNobodySeesIt) {
  OpenWith({"hit"});
  FindNext("hit");
  EXPECT_EQ(m_host.Timers(), std::vector{HitsPane::kLookMs});
  m_pane->OnShown(false);
  EXPECT_TRUE(m_host.Timers().empty());
  Drain({{.text = "hit"}});
  while (m_view->Hits()->IsAtWork()) m_host.TickTimers();
  EXPECT_EQ(m_hits->ItemCount(), 1);
  m_pane->OnShown(true);
  EXPECT_EQ(m_hits->ItemCount(), 2);
}

TEST_F(HitsPaneTest, HitsAreThoseOfTheWholeTextAlsoWhereItIsCut) {
  // The end of the hit stands behind the cut.
  OpenWith({"no", std::string(200, 'x') + "a" + std::string(900, 'b') + "c"});
  FindNext("ab*c", true);
  ASSERT_EQ(m_hits->ItemCount(), 1);
  const std::string text = Owner().RowListText(0, HitsPane::kText);
  const std::vector<HitRange> hits = Owner().RowListHits(0, HitsPane::kText);
  ASSERT_EQ(hits.size(), 1U) << text;
  EXPECT_EQ(text[hits[0].begin], 'a');
  EXPECT_EQ(hits[0].end, text.size()) << "as far as it can be seen";
}

TEST_F(HitsPaneTest, AHitBehindBytesThatAreNoUtf8IsSeen) {
  OpenWith({std::string(60'000, '\x80') + "hit" + std::string(100, '\xBF')});
  FindNext("hit");
  const std::string text = Owner().RowListText(0, HitsPane::kText);
  const std::vector<HitRange> hits = Owner().RowListHits(0, HitsPane::kText);
  ASSERT_EQ(hits.size(), 1U);
  EXPECT_EQ(text.substr(hits[0].begin, hits[0].end - hits[0].begin), "hit");
  EXPECT_EQ(hits[0].begin, std::string("\u2026 ").size() + 40) << "with what stands before it";
}

TEST_F(HitsPaneTest, EmptyHitsAreListedAndTintNothing) {
  OpenWith({"a", "", "bbb"});
  FindNext("x*", true);
  EXPECT_EQ(m_hits->ItemCount(), m_view->Hits()->Count());
  EXPECT_GE(m_hits->ItemCount(), 2);
  for (int row = 0; row < m_hits->ItemCount(); ++row) {
    EXPECT_TRUE(Owner().RowListHits(row, HitsPane::kText).empty()) << row;
    EXPECT_EQ(Owner().RowListText(row, HitsPane::kText).find("\u2026"), std::string::npos);
  }
}

TEST_F(HitsPaneTest, TextsWrittenRightToLeftAreCutBetweenCharacters) {
  std::string text;
  for (int i = 0; i < 5000; ++i) text += "\xD7\xA9";  // a letter of two bytes
  OpenWith({text + " hit " + text});
  FindNext("hit");
  const std::string shown = Owner().RowListText(0, HitsPane::kText);
  EXPECT_LT(shown.size(), static_cast<std::size_t>(kCellBytes));
  std::size_t letters = 0;
  for (std::size_t at = shown.find("\xD7"); at != std::string::npos;
       at = shown.find("\xD7", at + 1))
    letters += shown[at + 1] == '\xA9';
  EXPECT_EQ(shown.size(), std::string("\u2026 ").size() + 2 * letters + 5) << "no half letters";
  const std::vector<HitRange> hits = Owner().RowListHits(0, HitsPane::kText);
  ASSERT_EQ(hits.size(), 1U);
  EXPECT_EQ(shown.substr(hits[0].begin, 3), "hit");
}

TEST_F(HitsPaneTest, TrimsWhileHitsAreListedLeadToTheRowsThatAreLeft) {
  for (int i = 0; i < 400; ++i) Add({.text = i % 3 ? "no" : "hit"});
  Open();
  MakePane();
  FindNext("hit");
  for (int round = 0; round < 20; ++round) {
    m_hits->SetItemState(m_hits->ItemCount() - 1, kRowFocused, kRowFocused);
    Drain({{.text = "hit"}, {.text = "no"}});
    Trim(7);  // before the step that was asked for
    m_host.RunPosted();
    Settle();
    ASSERT_EQ(m_hits->ItemCount(), m_view->Hits()->Count());
    for (int row = 0; row < m_hits->ItemCount(); ++row)
      ASSERT_NE(Owner().RowListText(row, HitsPane::kText).find("hit"), std::string::npos) << row;
  }
}

TEST_F(HitsPaneTest, AMillionHitsCostWhatIsPainted) {
  for (int i = 0; i < 1'000'000; ++i) Add({.text = "hit"});
  Open();
  MakePane();
  ASSERT_EQ(RegexPrepare("hit", 0, 1, 0, 0), 1);
  FindSettings = {"hit", 0, 0, 0, 0};
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  while (m_view->Hits()->IsAtWork()) m_host.TickTimers();
  m_host.TickTimers();
  ASSERT_EQ(m_hits->ItemCount(), 1'000'000);
  const auto begin = std::chrono::steady_clock::now();
  for (int page = 0; page < 100; ++page)
    for (int row = page * 9'999; row < page * 9'999 + 40; ++row) {
      EXPECT_EQ(Owner().RowListText(row, HitsPane::kText), "hit");
      EXPECT_EQ(Owner().RowListHits(row, HitsPane::kText).size(), 1U);
    }
  const auto took = std::chrono::steady_clock::now() - begin;
  RecordProperty("microsecondsAPage", static_cast<int>(took / std::chrono::microseconds(100)));
  EXPECT_LT(took, std::chrono::seconds(3)) << "a generous bound: 30 ms a page";
  Owner().OnRowClicked(999'999);
  m_host.RunPosted();
  EXPECT_EQ(Focused(), 999'999);
}

}  // namespace

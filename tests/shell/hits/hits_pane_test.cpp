#include "shell/hits/hits_pane.h"

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
  void FindNext(const std::string& text) {
    ASSERT_EQ(RegexPrepare(text.c_str(), 0, 1, 0, 0), 1);
    FindSettings = {text, 0, 0, 0, 0};
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

}  // namespace

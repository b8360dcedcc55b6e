// The list paints its rows by colour rules.
#include <gtest/gtest.h>

#include "listview/colours/active_colours.h"
#include "listview/rows/trace_view_fixture.h"

namespace {

constexpr std::uint64_t kSecond = 1'000'000'000'000;

class Colours : public TraceViewTest {
 protected:
  ~Colours() override { EXPECT_TRUE(UseColours({}, nullptr)); }

  // Rule n has the ink n.
  void Use(const std::vector<std::string>& texts) {
    UsedColours used;
    used.shown = true;
    for (const std::string& text : texts)
      used.rules.push_back(
          {"x", text, {0, 0, static_cast<std::uint8_t>(used.rules.size())}, {1, 2, 3}});
    ASSERT_TRUE(UseColours(used, nullptr));
  }
  // "0 - 1": the rule of each row, as one painting shows them.
  std::string Page() {
    std::string page;
    m_view->OnRowListPaint(true);
    for (int row = 0; row < m_view->Rows().Size(); ++row) {
      const auto colours = m_view->RowListColours(row);
      EXPECT_TRUE(!colours || colours->ground == 0x010203u);
      page += (row > 0 ? " " : "") + (colours ? std::to_string(colours->ink) : "-");
    }
    m_view->OnRowListPaint(false);
    return page;
  }
};

TEST_F(Colours, RowsAreInTheColoursOfTheFirstRuleThatHolds) {
  for (const char* text : {"one", "two", "three"}) Add({.text = text});
  Open();
  EXPECT_EQ(Page(), "- - -");
  Use({"text == \"two\"", "text contains \"o\""});
  EXPECT_EQ(Page(), "1 0 -");
  ASSERT_TRUE(UseColours({}, nullptr));
  EXPECT_EQ(Page(), "- - -");
}

TEST_F(Colours, DeltaIsToTheTraceBeforeInTheDocumentWhateverTheListShows) {
  for (const std::uint64_t second : {1, 2, 9, 10, 19})
    Add({.text = second == 2 ? "hidden" : "x", .tic = second * kSecond});
  Open();
  Use({"delta > 7500ms", "delta > 5s"});
  EXPECT_EQ(Page(), "- - 1 - 0");
  WhereError error;
  ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile("text == \"x\"", error)));
  ASSERT_TRUE(m_view->FinishFilter());
  ASSERT_EQ(m_view->Rows().Size(), 4);
  EXPECT_EQ(Page(), "- 1 - 0");
}

TEST_F(Colours, TracesThatComeGoAndAreClearedHaveTheirOwnColours) {
  Open();
  Use({"text == \"a\""});
  for (int round = 0; round < 50; ++round) {
    Drain({{.text = "a"}, {.text = "b"}});
    ASSERT_EQ(Page(), "0 -");
    Trim(1);
    ASSERT_EQ(Page(), "-");
    Drain({{.text = "a"}});
    ASSERT_EQ(Page(), "- 0");
    Trim(2);
  }
}

TEST_F(Colours, TheEndMovesWithTheTracesThatCome) {
  Open();
  Use({"time > end - 5m"});
  Drain({{.text = "early", .time = PackTime(9, 0, 0, 0)}});
  EXPECT_EQ(Page(), "0");
  const int repaints = m_list->repaints;
  Drain({{.text = "late", .time = PackTime(9, 10, 0, 0)}});
  EXPECT_GT(m_list->repaints, repaints);
  EXPECT_EQ(Page(), "- 0");
}

TEST_F(Colours, WhatThePageHasNoTimeForComesWithTheNextPainting) {
  Use({"text contains \"b\"", "severity >= info"});
  for (int i = 0; i < 10; ++i) Add({.text = "a"});
  Open();
  m_view->m_colourTime = {};
  EXPECT_NE(Page(), "1 1 1 1 1 1 1 1 1 1");
  const int repaints = m_list->repaints;
  m_host.RunPosted();
  EXPECT_EQ(m_list->repaints, repaints + 1);
  int pages = 1;
  while (Page() != "1 1 1 1 1 1 1 1 1 1" && pages < 100) ++pages;
  EXPECT_LT(pages, 100);
  m_host.RunPosted();
  const int last = m_list->repaints;
  Page();
  m_host.RunPosted();
  EXPECT_EQ(m_list->repaints, last) << "all is known";
}

}  // namespace

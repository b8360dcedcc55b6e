// The hits of a search in all rows of the list, beside a count of the rows that it shows.
#include <random>

#include "listview/rows/trace_view_fixture.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class TraceViewHitCount : public TraceViewTest, public testing::WithParamInterface<unsigned> {
 protected:
  TraceViewHitCount() { FindSettings = {}; }
  ~TraceViewHitCount() override { FindSettings = {}; }

  int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
  void FindNext(const std::string& text) {
    ASSERT_EQ(RegexPrepare(text.c_str(), 0, 1, 0, 0), 1);
    FindSettings = {text, 0, 0, 0, 0};
    m_searched = text;
    m_view->OnCommand(ID_EDIT_FINDNEXT);
  }
  void Settle() {
    for (int turns = 0; m_view->FilterProgress() || m_view->Hits()->IsAtWork(); ++turns) {
      ASSERT_LT(turns, 10000);
      m_host.RunPosted();
      m_host.TickTimers();
    }
  }
  void ExpectExact() {
    ASSERT_NO_FATAL_FAILURE(Settle());
    ASSERT_TRUE(m_view->Hits());
    std::vector<int> plain, counted;
    for (int row = 0; row < m_list->ItemCount(); ++row)
      if (m_view->RowListText(row, Column::Trace).find(m_searched) != std::string::npos)
        plain.push_back(row);
    m_view->Hits()->VisitIn(0, m_list->ItemCount(), [&](int row) { counted.push_back(row); });
    ASSERT_EQ(counted, plain);
    ASSERT_TRUE(m_view->Hits()->IsWhole());
    ASSERT_EQ(m_view->Hits()->Count(), static_cast<int>(plain.size()));
  }
  std::vector<TraceFields> Some(int most) {
    static const char* const kTexts[] = {"hit", "a hit", "hat", "", "rabbit"};
    std::vector<TraceFields> traces;
    for (int left = Below(most); left > 0; --left)
      traces.push_back({.text = kTexts[Below(5)], .component = static_cast<NameId>(8 + Below(2))});
    return traces;
  }

  std::mt19937 m_random{GetParam()};
  std::string m_searched;
};

TEST_P(TraceViewHitCount, IsExactUnderFiltersTextsTicksTrimsAndClears) {
  for (const TraceFields& fields : Some(200)) Add(fields);
  Open();
  Drain({{.text = "hit"}});
  ASSERT_NO_FATAL_FAILURE(FindNext("hit"));
  for (int step = 0; step < 50; ++step) {
    switch (Below(9)) {
      case 0:
        HideNine();
        break;
      case 1:
        m_view->SetFilter(CTraceFilter(), true);
        break;
      case 2: {
        WhereError error;
        const char* const texts[] = {"text contains \"a\"", "component == 8", "count > 40"};
        ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile(texts[Below(3)], error)));
        break;
      }
      case 3:
        ASSERT_TRUE(m_view->SetWhere(nullptr));
        break;
      case 4:
        Trim(Below(static_cast<int>(m_document.m_traces.size()) + 1));
        break;
      case 5:
        if (Below(4) == 0) m_document.DeleteContents();
        break;
      case 6:
        if (m_view->Rows().Size() == 0) break;
        ASSERT_NO_FATAL_FAILURE(FindNext(Below(2) ? "hit" : "a"));
        break;
      default:
        Drain(Some(60));
    }
    for (int turns = Below(3); turns > 0; --turns) m_host.TickTimers();
    if (Below(2) == 0) m_host.RunOnePosted();
    if (Below(4) == 0) {
      ASSERT_NO_FATAL_FAILURE(ExpectExact()) << "step " << step;
    }
  }
  ExpectExact();
}

INSTANTIATE_TEST_SUITE_P(Seeds, TraceViewHitCount, testing::Range(1U, 101U));

class TraceViewHitText : public TraceViewHitCount {};

TEST_P(TraceViewHitText, SaysWhichHitTheFocusIsAt) {
  for (const char* const text : {"hit", "no", "hit", "hit"}) Add({.text = text});
  Open();
  EXPECT_FALSE(m_view->Hits()) << "nothing was searched";
  EXPECT_TRUE(m_host.Timers().empty());
  Focus(0);
  FindNext("hit");
  Settle();
  EXPECT_EQ(m_view->Hits()->Text(), "2 of 3 hits");
  Focus(1);
  EXPECT_EQ(m_view->Hits()->Text(), "3 hits");
  Drain({{.text = "a hit"}});
  m_view->OnCommand(ID_EDIT_FINDNEXT);
  Settle();
  EXPECT_EQ(m_view->Hits()->Text(), "2 of 4 hits");
  Trim(1);
  EXPECT_EQ(m_view->Hits()->Text(), "1 of 3 hits");
  FindNext("nothing of this kind");
  Settle();
  EXPECT_EQ(m_view->Hits()->Text(), "no hits");
}

INSTANTIATE_TEST_SUITE_P(Once, TraceViewHitText, testing::Values(1U));

}  // namespace

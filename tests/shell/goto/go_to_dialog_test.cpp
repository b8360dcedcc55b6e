// Going to a time or a row in the list and in the tree.
#include "shell/goto/go_to_dialog.h"

#include <gtest/gtest.h>

#include <random>

#include "settings/globals.h"
#include "support/fake_row_list.h"
#include "support/fake_tree_control.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/view_probes.h"
#include "tree/proc/proc_view.h"

namespace {

using Kind = CGoToDlg::Kind;

class GoTo : public testing::Test {
 protected:
  GoTo() {
    g_useUtc = true;
    m_document.m_loading = false;
  }
  ~GoTo() override { g_useUtc = false; }

  // At so many seconds behind 09:00; of component 9 if it is to be hidden.
  void Add(std::vector<unsigned> seconds, NameId component = 0) {
    for (const unsigned s : seconds)
      m_document.AddTrace(
          MakeEvent(
              {.count = m_next++, .component = component, .time = PackTime(9, s / 60, s % 60, 0)})
              .release());
  }
  void Open() {
    m_view = std::make_unique<CTraceView>(
        m_document, [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
    m_view->OnInitialUpdate();
  }
  void OpenTree() {
    m_tree = std::make_unique<CProcView>(m_document, [](TreeControlOwner& owner) {
      return std::make_unique<FakeTreeControl>(owner);
    });
    m_tree->OnInitialUpdate();
    ASSERT_TRUE(m_tree->Build());
  }
  static CTraceFilter WithoutNine() {
    CTraceFilter filter;
    filter.allTraces = filter.allComponents = 0;
    filter.components[9] = 0;
    return filter;
  }
  // What the dialog says; empty: it has gone there.
  std::string Go(TracePane& pane, Kind kind, const char* text) {
    std::string why;
    m_host.AnswerDialog([&](CDialog& dialog) {
      auto& goTo = dynamic_cast<CGoToDlg&>(dialog);
      goTo.SetText(text);
      goTo.OnOK();
      why = goTo.Why();
      EXPECT_EQ(why.empty(), goTo.Ended());
      if (!goTo.Ended()) goTo.OnCancel();
    });
    RunGoTo(pane, kind);
    return why;
  }
  // The focused row after it, or what the dialog says.
  std::string RowAt(Kind kind, const char* text) {
    const std::string why = Go(*m_view, kind, text);
    return why.empty() ? std::to_string(m_view->List().NextItem(-1, kRowFocused)) : why;
  }
  std::string NumberAt(Kind kind, const char* text) {
    const std::string why = Go(*m_tree, kind, text);
    return why.empty() ? std::to_string(m_tree->CurrentEvent()->GetSequenceNumber()) : why;
  }

  RecordingHost m_host;
  PaneProbe m_main{m_host};
  CTraceDoc m_document{m_host};
  std::unique_ptr<CTraceView> m_view;
  std::unique_ptr<CProcView> m_tree;
  std::uint32_t m_next = 1;
};

TEST_F(GoTo, GoesToTheFirstRowAtOrAfterATimeAndSelectsIt) {
  Add({10, 20, 20, 30});
  Open();
  EXPECT_EQ(RowAt(Kind::Time, "09:00:15"), "1");
  EXPECT_TRUE(m_view->List().GetItemState(1) & kRowSelected);
  EXPECT_EQ(m_view->List().SelectedCount(), 1);
  EXPECT_EQ(RowAt(Kind::Time, "+1s"), "3") << "from the row with the focus";
  EXPECT_EQ(RowAt(Kind::Time, "-20s"), "0");
  EXPECT_EQ(RowAt(Kind::Time, "2026-11-21"), "0");
  EXPECT_EQ(RowAt(Kind::Time, "end"), "3");
  EXPECT_EQ(m_view->List().SelectedCount(), 1);
}

TEST_F(GoTo, OfTimesThatStepBackTheEarliestThatIsNotBeforeCounts) {
  Add({10, 50, 20, 30, 20});
  Open();
  EXPECT_EQ(RowAt(Kind::Time, "09:00:15"), "2");
  EXPECT_EQ(RowAt(Kind::Time, "09:00:35"), "1");
}

TEST_F(GoTo, AfterTheLastTimeThereIsNoneAndItIsTold) {
  Add({10, 50, 20});
  Open();
  EXPECT_EQ(RowAt(Kind::Time, "09:01"),
            "No shown trace is at or after this time. The last one is at 2026-11-21 09:00:50.000.");
  EXPECT_EQ(m_view->List().NextItem(-1, kRowFocused), -1) << "nothing has moved";
}

TEST_F(GoTo, HiddenTracesAreNotGoneTo) {
  Add({10});
  Add({20}, 9);
  Add({30});
  Open();
  m_view->SetFilter(WithoutNine(), true);
  EXPECT_EQ(RowAt(Kind::Time, "09:00:15"), "1");
  EXPECT_EQ(RowAt(Kind::Row, "2"), "1");
  EXPECT_EQ(RowAt(Kind::Row, "3"), "The rows are 1 to 2, from the end -1 to -2.");
}

TEST_F(GoTo, ARowIsFoundByItsNumberAlsoWhereNumbersOfTracesStepBack) {
  Add({10, 20});
  m_next = 1;
  Add({30, 40});
  Open();
  EXPECT_EQ(RowAt(Kind::Row, "3"), "2");
  EXPECT_EQ(RowAt(Kind::Row, "-1"), "3");
  EXPECT_EQ(RowAt(Kind::Row, "0%"), "0");
  EXPECT_EQ(RowAt(Kind::Time, "09:00:30"), "2");
}

TEST_F(GoTo, TheTreeGoesToTheItemOfTheTrace) {
  Add({10});
  Add({20}, 9);
  Add({30, 40});
  OpenTree();
  EXPECT_EQ(NumberAt(Kind::Time, "09:00:15"), "2");
  EXPECT_EQ(NumberAt(Kind::Row, "-1"), "4");
  EXPECT_EQ(NumberAt(Kind::Row, "1"), "1");
  m_tree->SetFilter(WithoutNine(), true);
  EXPECT_EQ(NumberAt(Kind::Time, "09:00:15"), "3");
  EXPECT_EQ(NumberAt(Kind::Row, "2"), "3");
  EXPECT_EQ(NumberAt(Kind::Row, "-1"), "4");
  EXPECT_EQ(NumberAt(Kind::Row, "4"), "The rows are 1 to 3, from the end -1 to -3.");
}

TEST_F(GoTo, ASynchronisedListFollowsTheTree) {
  Add({10, 20, 30});
  Open();
  OpenTree();
  m_document.m_synchronize = true;
  EXPECT_EQ(NumberAt(Kind::Row, "2"), "2");
  EXPECT_EQ(m_view->List().NextItem(-1, kRowFocused), 1);
}

TEST_F(GoTo, TheReasonGoesAwayWithTheTextThatItIsAbout) {
  Add({10});
  Open();
  CGoToDlg dialog(*m_view, Kind::Row);
  dialog.SetText("x");
  dialog.OnOK();
  EXPECT_NE(dialog.Why(), "");
  dialog.SetText("x");
  EXPECT_NE(dialog.Why(), "") << "it has not changed";
  dialog.SetText("1");
  EXPECT_EQ(dialog.Why(), "");
}

TEST_F(GoTo, ItMayBeCalledWhereThereAreTraces) {
  Open();
  EXPECT_FALSE(MayGoTo(m_view.get()));
  EXPECT_FALSE(MayGoTo(nullptr));
  Add({10});
  EXPECT_TRUE(MayGoTo(m_view.get()));
}

TEST_F(GoTo, ARandomTimeIsWhereAPlainSearchFindsIt) {
  std::mt19937 random(7);
  std::vector<unsigned> times(300);
  for (unsigned& time : times) time = random() % 900;
  Add(times);
  Open();
  for (unsigned wanted = 0; wanted < 900; wanted += 7) {
    int best = -1;
    for (std::size_t i = 0; i < times.size(); ++i)
      if (times[i] >= wanted && (best < 0 || times[i] < times[static_cast<std::size_t>(best)]))
        best = static_cast<int>(i);
    char text[16];
    std::snprintf(text, sizeof text, "09:%02u:%02u", wanted / 60, wanted % 60);
    if (best < 0) break;
    EXPECT_EQ(RowAt(Kind::Time, text), std::to_string(best)) << text;
  }
}

}  // namespace

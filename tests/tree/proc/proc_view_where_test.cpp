// A filter text that is being applied to the tree, and what happens meanwhile.
#include "proc_view_fixture.h"
#include "settings/globals.h"
#include "support/short_pieces.h"
#include "support/zone_guard.h"

namespace {

class ProcViewWhere : public ProcViewTest {
 protected:
  static constexpr int kMany = 10000;  // some parts' worth of children

  void Apply(const char* text) {
    WhereError error;
    const WhereProgramPtr where = WhereProgram::Compile(text, error);
    ASSERT_TRUE(where) << error.reason;
    ASSERT_TRUE(m_view->SetWhere(where));
    ASSERT_TRUE(m_view->FilterProgress());
  }
  void ApplyAll() {
    while (m_view->FilterProgress()) ASSERT_TRUE(m_host.RunOnePosted());
  }

  const ShortPieces m_pieces{m_host};
};

TEST_F(ProcViewWhere, ATraceThatCameAndWasRemovedMeanwhileIsInNeitherTree) {
  m_view->m_scanSetup.perLook = 1;
  AddMany(5);
  Open();
  m_host.WantNoWorkBox();
  ASSERT_NO_FATAL_FAILURE(Apply("count > 2"));
  Drain({{.text = "late"}, {.text = "later"}, {.text = "last"}});
  Trim(7);
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  EXPECT_EQ(m_view->Model().TraceCount(), 1);
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[0]);
  EXPECT_TRUE(m_tree->Find("last"));
  EXPECT_FALSE(m_tree->Find("later"));
}

TEST_F(ProcViewWhere, AnItemThatTheUserOpensOnTheWayToTheSelectionIsFilledOnce) {
  AddMany(kMany);
  Open();
  FollowTo(m_document.m_traces[kMany - 1]);
  ASSERT_NO_FATAL_FAILURE(Apply("count > 0"));
  while (m_tree->Count() < 4 + 4096 || m_tree->Find("10000"))
    ASSERT_TRUE(m_host.RunOnePosted()) << "the new tree gets its items in parts";
  ASSERT_TRUE(m_view->FilterProgress());
  ExpandToThread();
  EXPECT_EQ(m_tree->Count(), 4U + kMany);
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  EXPECT_EQ(m_tree->Count(), 4U + kMany);
  EXPECT_EQ(Selected(), "10000");
}

TEST_F(ProcViewWhere, ASecondTextKeepsTheTraceThatTheFirstOneStillLooksFor) {
  AddMany(kMany);
  Open();
  FollowTo(m_document.m_traces[kMany - 1]);
  ASSERT_NO_FATAL_FAILURE(Apply("count > 0"));
  while (m_view->CurrentEvent()) ASSERT_TRUE(m_host.RunOnePosted());
  ASSERT_NO_FATAL_FAILURE(Apply("count > 9000"));
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  EXPECT_EQ(m_view->Model().TraceCount(), 1000);
  EXPECT_EQ(Selected(), "10000");
}

// Half of the traces are of an hour that is hidden in UTC and shown in the local zone.
TEST_F(ProcViewWhere, ATextWithATimeWithoutAZoneIsAppliedAnewWhenTheZoneOfTheTimesChanges) {
  const ZoneGuard zone("CET-1");
  m_view->m_scanSetup.perLook = 1;
  for (int i = 0; i < 20; ++i)
    Add({.date = PackDate(2026, 11, 23), .time = PackTime(i % 2 ? 12 : 11, 30, 0, 0)});
  const auto options = [this](bool utc) {
    g_useUtc = utc;
    m_document.UpdateAllViews(nullptr, kHintOptions);
  };
  options(true);
  Open();
  ASSERT_NO_FATAL_FAILURE(Apply("time >= 2026-11-23T12:00"));
  for (int i = 0; i < 8; ++i) ASSERT_TRUE(m_host.RunOnePosted());
  ASSERT_TRUE(m_view->Filtering() && m_view->Filtering()->pass);
  options(false);
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  EXPECT_EQ(m_view->Model().TraceCount(), 20) << "no trace is asked about in the zone from before";
  options(true);
  ASSERT_TRUE(m_view->FilterProgress());
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  EXPECT_EQ(m_view->Model().TraceCount(), 10);
  options(false);
  Drain({{.date = PackDate(2026, 11, 23), .time = PackTime(11, 30, 0, 0)}});
  options(true);
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  EXPECT_EQ(m_view->Model().TraceCount(), 10) << "what came was judged in the other zone";
  ASSERT_NO_FATAL_FAILURE(Apply("time >= 2026-11-23T12:00Z"));
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  options(false);
  EXPECT_FALSE(m_view->FilterProgress()) << "that says its zone";
}

TEST_F(ProcViewWhere, ATextThatIsTakenBackIsAppliedInTheZoneOfNow) {
  const ZoneGuard zone("CET-1");
  m_view->m_scanSetup.perLook = 1;
  for (int i = 0; i < 20; ++i)
    Add({.date = PackDate(2026, 11, 23), .time = PackTime(i % 2 ? 12 : 11, 30, 0, 0)});
  const auto options = [this](bool utc) {
    g_useUtc = utc;
    m_document.UpdateAllViews(nullptr, kHintOptions);
  };
  options(true);
  Open();
  ASSERT_NO_FATAL_FAILURE(Apply("time >= 2026-11-23T12:00"));
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  ASSERT_EQ(m_view->Model().TraceCount(), 10);
  ASSERT_NO_FATAL_FAILURE(Apply("count < 1000"));
  ASSERT_TRUE(m_host.RunOnePosted());
  options(false);
  ASSERT_TRUE(m_view->FilterProgress());
  m_view->CancelFilter();
  ASSERT_TRUE(m_view->FilterProgress());
  ASSERT_NO_FATAL_FAILURE(ApplyAll());
  EXPECT_EQ(m_view->Model().TraceCount(), 20);
  options(true);
  ASSERT_TRUE(m_view->FilterProgress());
  m_view->CancelFilter();
  EXPECT_FALSE(m_view->FilterProgress()) << "the user wants no other tree";
  EXPECT_EQ(m_view->Model().TraceCount(), 20);
  options(false);
  EXPECT_FALSE(m_view->FilterProgress()) << "the tree is of this zone";
}

}  // namespace

// A filter text that is being applied to the tree, and what happens meanwhile.
#include "proc_view_fixture.h"
#include "support/short_pieces.h"

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

}  // namespace

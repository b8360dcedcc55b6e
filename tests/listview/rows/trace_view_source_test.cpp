// Goto Source of the list: when it is enabled, and what it opens.
#include "listview/source/open_source.h"
#include "listview/source/source_map.h"
#include "support/fake_frame.h"
#include "support/fake_rich_edit.h"
#include "trace_view_fixture.h"

namespace {

class TraceViewSourceTest : public TraceViewTest {
 protected:
  TraceViewSourceTest() { g_sourceMap.clear(); }
  ~TraceViewSourceTest() override { g_sourceMap.clear(); }
  bool Enabled() {
    CCmdUI ui(ID_VIEW_GOTOSOURCE, true, false);
    UpdateCommand(*m_view, ui);
    return ui.IsEnabled();
  }
  void AddName(NameId id, const std::string& name) { m_document.m_names[id].name = name; }

  FrameLog m_log;
  FakeApp m_app{m_host, m_log};
  CSourceTemplate m_template{m_host, m_app.MainFrame(), [](RichEditOwner& owner) {
                               return std::make_unique<FakeRichEdit>(owner);
                             }};
};

TEST_F(TraceViewSourceTest, IsDisabledInAnEmptyDocument) {
  Open();
  EXPECT_FALSE(Enabled());
}

TEST_F(TraceViewSourceTest, IsDisabledWithoutAFocusedRowAndWithoutASourceFile) {
  AddName(7, "/src/a.c");
  AddName(8, "");
  Add({.file = 7, .line = 2});
  Add({.file = 0});
  Add({.file = 8});
  Open();
  EXPECT_FALSE(Enabled());
  Focus(0);
  EXPECT_TRUE(Enabled());
  Focus(1);
  EXPECT_FALSE(Enabled());
  Focus(2);
  EXPECT_FALSE(Enabled());
}

TEST_F(TraceViewSourceTest, ATraceWithoutASourceFileSaysWhatItLacks) {
  AddName(7, "/src/a.c");
  Add({.file = 7, .line = 2});
  Add({.file = 0});
  Open();
  const auto whyNot = [this] {
    CCmdUI ui(ID_VIEW_GOTOSOURCE, true, false);
    UpdateCommand(*m_view, ui);
    return ui.WhyNot();
  };
  Focus(0);
  EXPECT_EQ(whyNot(), "");
  Focus(1);
  EXPECT_EQ(whyNot(), kNoSourceFile);
}

TEST_F(TraceViewSourceTest, OpensTheFileOfTheFocusedRowAtItsLine) {
  const std::string path = m_directory.File("a.c", "one\ntwo\nthree\n");
  AddName(7, path);
  Add({.file = 7, .line = 1});
  Add({.file = 7, .line = 3});
  Open();
  Focus(1);
  EXPECT_TRUE(m_view->OnCommand(ID_VIEW_GOTOSOURCE));
  ASSERT_EQ(m_template.Documents().size(), 1u);
  EXPECT_EQ(m_template.Documents()[0]->GetPathName(), path);
  const auto& edit = dynamic_cast<FakeRichEdit&>(*m_template.Documents()[0]->Views()[0]->Control());
  EXPECT_EQ(edit.calls.back(), "select 8 8");
}

TEST_F(TraceViewSourceTest, WithoutAFocusedRowNothingOpens) {
  AddName(7, m_directory.File("a.c", "one\n"));
  Add({.file = 7, .line = 1});
  Open();
  EXPECT_TRUE(m_view->OnCommand(ID_VIEW_GOTOSOURCE));
  EXPECT_TRUE(m_template.Documents().empty());
  EXPECT_EQ(m_host.Reported().find("dialog"), std::string::npos);
}

TEST_F(TraceViewSourceTest, AFileThatIsNotHereIsAskedForByItsRecordedPath) {
  AddName(7, "c:\\build\\a.c");
  Add({.file = 7, .line = 1});
  Open();
  Focus(0);
  m_view->OnCommand(ID_VIEW_GOTOSOURCE);
  ASSERT_EQ(m_host.m_fileRequests.size(), 1u);
  EXPECT_EQ(m_host.m_fileRequests[0].suggestedName, "c:\\build\\a.c");
  EXPECT_TRUE(m_template.Documents().empty());
}

}  // namespace

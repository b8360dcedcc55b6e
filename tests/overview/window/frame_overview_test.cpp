#include "overview/window/frame_overview.h"

#include <gtest/gtest.h>

#include "overview/window/overview_documents.h"
#include "support/fake_overview.h"
#include "support/plain_trace_pane.h"
#include "support/temp_dir.h"

namespace {

// A window that has room for a strip.
class Window final : public ChildFrameFace {
 public:
  void SetTitle(const std::string&) override {}
  void Show() override {}
  void Activate() override {}
  void ShowView(CView&) override {}
  void ShowBar(ViewControl*) override {}
  void ShowStrip(ViewControl* strip) override { m_strip = strip; }
  void ShowBeside(ViewControl*, BesideEdge, int) override {}
  ViewControl* m_strip = nullptr;
};

class FrameOverviewTest : public testing::Test {
 protected:
  FrameOverviewTest() { StoreOverviewShown(false); }
  ~FrameOverviewTest() override { StoreOverviewShown(false); }

  OverviewDocument<CTraceDoc> m_document;
  PlainTracePane m_pane{m_document.m_document};
  Window m_window;
  FakeOverview* m_face = nullptr;
  std::vector<std::string> m_taken;
  FrameOverview m_overview{
      m_document.m_host,
      [this](OverviewStrip& strip) { return std::make_unique<FakeOverview>(strip, m_face); },
      [this] { return &m_pane; }, [this](const std::string& text) { m_taken.push_back(text); }};
};

TEST_F(FrameOverviewTest, IsOffUntilAskedForAndCostsNothing) {
  m_overview.OnCreate(m_window);
  m_document.AddAt(5);
  EXPECT_EQ(m_window.m_strip, nullptr);
  EXPECT_EQ(m_face, nullptr);
  EXPECT_TRUE(m_document.m_host.Timers().empty());
}

TEST_F(FrameOverviewTest, OneKeyShowsItWithTheFocusAndPutsItAway) {
  m_overview.OnCreate(m_window);
  m_overview.Toggle();
  ASSERT_NE(m_face, nullptr);
  EXPECT_EQ(m_window.m_strip, m_face);
  EXPECT_TRUE(m_face->HasFocus());
  EXPECT_TRUE(IsOverviewShown());
  m_overview.Toggle();
  EXPECT_EQ(m_face, nullptr);
  EXPECT_EQ(m_window.m_strip, nullptr);
  EXPECT_FALSE(m_overview.IsShown());
  EXPECT_FALSE(IsOverviewShown());
  EXPECT_EQ(m_pane.m_control.m_focused, 1);
  EXPECT_TRUE(m_document.m_host.Timers().empty());
}

TEST_F(FrameOverviewTest, WithoutTheFocusTheKeyGivesItTheFocus) {
  m_overview.OnCreate(m_window);
  m_overview.Toggle();
  m_face->m_focus = false;
  m_overview.Toggle();
  ASSERT_NE(m_face, nullptr);
  EXPECT_TRUE(m_face->HasFocus());
}

TEST_F(FrameOverviewTest, ANewWindowShowsItIfTheLastOneDidWithoutTheFocus) {
  StoreOverviewShown(true);
  m_overview.OnCreate(m_window);
  ASSERT_NE(m_face, nullptr);
  EXPECT_FALSE(m_face->HasFocus());
}

TEST_F(FrameOverviewTest, EscapeGivesTheFocusToTheRows) {
  m_overview.OnCreate(m_window);
  m_overview.Toggle();
  m_face->m_strip.OnKey(OverviewStrip::Key::Escape, false);
  EXPECT_EQ(m_pane.m_control.m_focused, 1);
  EXPECT_TRUE(m_overview.IsShown());
}

}  // namespace

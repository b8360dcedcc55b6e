// What the list view passes on to its frame and to commands.
#include <gtest/gtest.h>

#include "listview/rows/trace_view_fixture.h"
#include "support/fake_frame.h"

namespace {

class MenuChild final : public CMDIChildWnd {
 public:
  using CMDIChildWnd::CMDIChildWnd;
  void OnContextMenu(int screenXPx, int screenYPx) override {
    asked.emplace_back(screenXPx, screenYPx);
  }
  std::vector<std::pair<int, int>> asked;
};

TEST_F(TraceViewTest, TheContextMenuIsTheChildFrames) {
  FrameLog log;
  FakeApp app(m_host, log);
  MenuChild child(app.m_frame);
  CTraceView* const view = m_view.get();
  child.AddView(std::move(m_view));
  view->OnRowListContextMenu(30, 40);
  EXPECT_EQ(child.asked, (std::vector<std::pair<int, int>>{{30, 40}}));
}

TEST_F(TraceViewTest, WithoutAFrameTheContextMenuIsNobodys) {
  Open();
  m_view->OnRowListContextMenu(30, 40);
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n") << "only the first rebuild";
}

TEST_F(TraceViewTest, FilterExportAndTheSavesAreAlwaysEnabled) {
  Open();
  for (const unsigned id : {unsigned{ID_VIEW_FILTER}, unsigned{ID_FILE_EXPORT},
                            unsigned{ID_FILE_SAVE}, unsigned{ID_FILE_SAVECOPY}}) {
    CCmdUI ui(id, true, false);
    UpdateCommand(*m_view, ui);
    EXPECT_TRUE(ui.IsEnabled()) << id;
  }
}

TEST_F(TraceViewTest, TheClearIsTheDocuments) {
  EXPECT_TRUE(m_view->HasCommand(ID_EDIT_CLEAR_ALL));
  AddMany(3);
  Open();
  m_document.SetModifiedFlag(false);
  m_view->OnCommand(ID_EDIT_CLEAR_ALL);
  EXPECT_EQ(m_list->ItemCount(), 0);
}

TEST_F(TraceViewTest, AMessageThatItDoesNotKnowIsIgnored) {
  AddMany(3);
  Open();
  m_list->calls.clear();
  EXPECT_EQ(m_view->SendMessage(9999, 1, 2), 0);
  EXPECT_TRUE(m_list->calls.empty());
}

}  // namespace

// What the list view passes on to its frame and to commands.
#include <gtest/gtest.h>

#include "listview/rows/trace_view_rig.h"
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

// A list view of a later version, which has properties.
class ViewWithProperties final : public CTraceView {
 public:
  ViewWithProperties(CTraceDoc& document, const RowListMaker& makeList)
      : CTraceView(document, makeList) {
    MapCommand(ID_VIEW_PROPERTIES, [this] { ++runs; });
  }
  int runs = 0;
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
  EXPECT_EQ(m_host.Told(), "wait cursor on\nwait cursor off\n") << "only the first rebuild";
}

TEST_F(TraceViewTest, ADoubleClickRunsTheCommandProperties) {
  AddMany(2);
  ViewWithProperties view(m_document,
                          [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
  view.OnInitialUpdate();
  view.OnRowDoubleClicked(1);
  EXPECT_EQ(view.runs, 1);
}

TEST_F(TraceViewTest, TheSavesAndTheClearAreTheDocuments) {
  for (const unsigned id :
       {unsigned{ID_FILE_SAVE}, unsigned{ID_FILE_SAVECOPY}, unsigned{ID_EDIT_CLEAR_ALL}})
    EXPECT_TRUE(m_view->HasCommand(id)) << id;
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

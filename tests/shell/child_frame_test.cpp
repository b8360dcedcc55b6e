// The window around a trace document's views.
#include "shell/child_frame.h"

#include "shell_fixture.h"

namespace {

using ChildFrame = ShellTest;

FakeChildFace& FaceOf(CMDIChildWnd& child) {
  return dynamic_cast<FakeChildFace&>(*child.Face());
}

TEST_F(ChildFrame, TheLastOneSizedSetsTheSizeOfTheNextOneMade) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  ASSERT_TRUE(Open(WriteTraces("db.trc", 1)));
  Frame().Children()[0]->OnSize(SizeType::Restored, 640, 480);
  Frame().Children()[1]->OnSize(SizeType::Restored, 800, 333);
  Frame().Children()[0]->OnSize(SizeType::Restored, 641, 481);
  ASSERT_TRUE(Open(WriteTraces("third.trc", 1)));
  EXPECT_EQ(FaceOf(*Frame().Children()[2]).m_widthPx, 641);
  EXPECT_EQ(FaceOf(*Frame().Children()[2]).m_heightPx, 481);
}

TEST_F(ChildFrame, ItsSizeIsStoredApartFromTheMainWindows) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  Frame().OnSize(SizeType::Restored, 1234, 567);
  Frame().Children()[0]->OnSize(SizeType::Restored, 640, 480);
  EXPECT_EQ(Stored(kRegTraceView, "Window Width"), 640U);
  EXPECT_EQ(Stored(kRegTraceView, "Window Height"), 480U);
  EXPECT_EQ(Stored(kRegSettings, "Window Width"), 1234U);
  EXPECT_EQ(Stored(kRegSettings, "Window Height"), 567U);
}

TEST_F(ChildFrame, AMinimisedOrMaximisedFrameDoesNotOverwriteTheStoredSize) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  CMDIChildWnd& child = *Frame().Children()[0];
  child.OnSize(SizeType::Restored, 640, 480);
  child.OnSize(SizeType::Maximised, 1000, 650);
  child.OnSize(SizeType::Minimised, 160, 30);
  child.OnSize(SizeType::Restored, 0, 0);
  EXPECT_EQ(Stored(kRegTraceView, "Window Width"), 640U);
  EXPECT_EQ(Stored(kRegTraceView, "Window Height"), 480U);
}

TEST_F(ChildFrame, ItsPopUpOpensAtTheGivenScreenPosition) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  m_log.Clear();
  Frame().Children()[0]->OnContextMenu(-40, 1100);
  EXPECT_EQ(m_log.Reported(), "main popup 144 -40 1100\n");
}

TEST_F(ChildFrame, TheListsContextMenuAlsoFromTheKeyboardOpensThePopUp) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  m_log.Clear();
  ListOf(*Frame().Children()[0]).OnRowListContextMenu(12, 34);
  EXPECT_EQ(m_log.Reported(), "main popup 144 12 34\n");
}

TEST_F(ChildFrame, CommandsOfThePopUpGoToTheActiveViewAndDocument) {
  Start();
  CTraceFileDoc* document = Open(WriteTraces("web.trc", 3));
  ASSERT_TRUE(document);
  EXPECT_TRUE(State(ID_EDIT_CLEAR_ALL).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_EDIT_CLEAR_ALL));
  EXPECT_TRUE(document->m_traces.empty());
}

}  // namespace

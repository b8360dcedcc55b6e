#include "docview/frame.h"

#include "docview_fixture.h"

namespace {

class FrameTest : public DocviewTest {
 protected:
  FrameTest() : m_template(AddTemplate()) {}
  CDocument& Open(const std::string& path = "/somewhere/web.trc") {
    return *m_template.OpenDocumentFile(&path);
  }
  std::string Titles() const {
    std::string titles;
    for (const auto& child : m_app.m_frame.Children()) titles += child->Title() + " ";
    return titles;
  }
  CMultiDocTemplate& m_template;
};

TEST_F(FrameTest, AnOpenedDocumentShowsItsViewThenItsTitleThenItsWindow) {
  EXPECT_EQ(ReportedBy([&] { Open(); }),
            "frame create\n"
            "open /somewhere/web.trc\n"
            "child title web.trc\n"
            "view1 initial update\nview1 hint 0\n"
            "child view 59648\n"
            "child show\nchild activate\nview1 activated\nactive web.trc\n");
}

TEST_F(FrameTest, TheViewThatLosesIsNotifiedBeforeTheOneThatGains) {
  CDocument& web = Open();
  CDocument& db = Open("/somewhere/db.trc");
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), &FrameOf(db));
  EXPECT_EQ(ReportedBy([&] { FrameOf(web).OnActivate(true); }),
            "view2 deactivated\nview1 activated\nactive web.trc\n");
}

TEST_F(FrameTest, OnlyATrueChangeOfActivationIsReported) {
  CDocument& web = Open();
  EXPECT_EQ(ReportedBy([&] { FrameOf(web).OnActivate(true); }), "");
  EXPECT_EQ(ReportedBy([&] { FrameOf(web).OnActivate(false); }),
            "view1 deactivated\nactive none\n");
  EXPECT_EQ(ReportedBy([&] { FrameOf(web).OnActivate(false); }), "");
}

TEST_F(FrameTest, AFrameThatTheWindowSystemActivatesBeforeItsViewStandsTellsTheViewLater) {
  ProbeDoc document(m_host, m_log);
  CMDIChildWnd& frame = *m_app.m_frame.AddChild(std::make_unique<ProbeFrame>(m_app.m_frame, m_log));
  frame.OnActivate(true);
  frame.AddView(std::make_unique<ProbeView>(document, m_log));
  EXPECT_EQ(ReportedBy([&] { frame.InitialUpdateFrame(&document, true); }),
            "view activated\nview initial update\nview hint 0\n");
}

TEST_F(FrameTest, SetActiveViewTellsBothViewsOnceAndOnlyIfAsked) {
  CDocument& document = Open();
  CMDIChildWnd& frame = FrameOf(document);
  CView* const list = frame.GetActiveView();
  CView* const tree = frame.AddView(std::make_unique<ProbeView>(document, m_log, "tree"));
  EXPECT_EQ(tree->GetParentFrame(), &frame);
  EXPECT_EQ(ReportedBy([&] { frame.SetActiveView(tree); }), "view1 deactivated\ntree activated\n");
  EXPECT_EQ(ReportedBy([&] { frame.SetActiveView(tree); }), "");
  EXPECT_EQ(ReportedBy([&] { frame.SetActiveView(list, false); }), "");
  EXPECT_EQ(frame.GetActiveView(), list);
  EXPECT_EQ(frame.GetActiveDocument(), &document);
}

TEST_F(FrameTest, TheInitialUpdateReachesTheHiddenViewTooAndTheMainPaneIsShown) {
  CDocument& document = Open();
  CMDIChildWnd& frame = FrameOf(document);
  CView* const list = frame.GetActiveView();
  CView* const tree = frame.AddView(std::make_unique<ProbeView>(document, m_log, "tree"));
  list->SetDlgCtrlID(59649);
  EXPECT_EQ(ReportedBy([&] { frame.InitialUpdateFrame(&document, true); }),
            "view1 initial update\nview1 hint 0\ntree initial update\ntree hint 0\n"
            "child view 59648\nchild show\nchild activate\n");
  EXPECT_EQ(static_cast<FakeChildFace*>(frame.Face())->m_view, tree);
}

TEST_F(FrameTest, AFrameThatStaysHiddenIsUpdatedWhenItIsShown) {
  CDocument& document = *m_template.OpenDocumentFile(nullptr, false);
  EXPECT_EQ(m_log.Reported("view1"), "view1 hint 1002\n");  // the new document is empty
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), nullptr);
  CMDIChildWnd& frame = FrameOf(document);
  EXPECT_NE(frame.GetActiveView(), nullptr);
  m_log.Clear();
  m_template.InitialUpdateFrame(frame, document, true);
  EXPECT_EQ(m_log.Reported("view1"), "view1 initial update\nview1 hint 0\nview1 activated\n");
}

TEST_F(FrameTest, ADocumentWithSeveralFramesNumbersThem) {
  CDocument& document = Open();
  EXPECT_EQ(Titles(), "web.trc ");
  NewWindow(m_template, document);
  EXPECT_EQ(Titles(), "web.trc:1 web.trc:2 ");
  NewWindow(m_template, document);
  EXPECT_EQ(Titles(), "web.trc:1 web.trc:2 web.trc:3 ");
  FrameOf(document, 1).Destroy();
  EXPECT_EQ(Titles(), "web.trc:1 web.trc:2 ");
  FrameOf(document, 0).Destroy();
  EXPECT_EQ(Titles(), "web.trc ");
}

TEST_F(FrameTest, ASecondViewInOneFrameIsNoSecondWindow) {
  CDocument& document = Open();
  FrameOf(document).AddView(std::make_unique<ProbeView>(document, m_log, "tree"));
  document.SetTitle("web");
  EXPECT_EQ(Titles(), "web ");
}

TEST_F(FrameTest, OnlyTheLastFrameAsksAndClosesTheDocument) {
  CDocument& document = Open();
  document.SetModifiedFlag(true);
  NewWindow(m_template, document);
  FrameOf(document, 1).OnClose();
  EXPECT_EQ(m_host.Reported(), "");
  ASSERT_EQ(m_template.Documents().size(), 1u);
  FrameOf(document).OnClose();
  EXPECT_EQ(m_host.Transcript().size(), 1u);
  EXPECT_EQ(m_template.Documents().size(), 1u) << "the question was cancelled";
  m_host.AnswerBox(BoxAnswer::No);
  FrameOf(document).OnClose();
  EXPECT_TRUE(m_template.Documents().empty());
  EXPECT_TRUE(m_app.m_frame.Children().empty());
}

TEST_F(FrameTest, ClosingInOrderDestroysFrameViewWindowAndThenTheDocument) {
  CDocument& document = Open();
  EXPECT_EQ(ReportedBy([&] { FrameOf(document).OnClose(); }),
            "frame destroy\nview1 deactivated\nframe gone\nview1 gone\nchild gone\nactive none\n"
            "delete contents\ndocument gone\n");
}

TEST_F(FrameTest, DestroyOfTheLastFrameClosesTheDocumentWithoutAQuestion) {
  CDocument& document = Open();
  document.SetModifiedFlag(true);
  FrameOf(document).Destroy();
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_TRUE(m_template.Documents().empty());
}

TEST_F(FrameTest, TheCloseCommandClosesTheActiveDocumentFromWithin) {
  Open();
  CDocument& db = Open("/somewhere/db.trc");
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), &FrameOf(db));
  EXPECT_TRUE(m_app.m_frame.OnCommand(ID_FILE_CLOSE));
  EXPECT_EQ(Titles(), "web.trc ");
  EXPECT_EQ(m_template.Documents().size(), 1u);
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), nullptr);
  EXPECT_FALSE(m_app.m_frame.OnCommand(ID_FILE_CLOSE)) << "no child is active";
}

TEST_F(FrameTest, ACommandOfTheViewOrDocumentMayCloseTheDocumentThatRunsIt) {
  for (const bool byView : {true, false}) {
    auto& document = static_cast<ProbeDoc&>(Open());
    const auto close = [&document] { document.OnCloseDocument(); };
    if (byView) {
      ViewOf(FrameOf(document)).MapCommand(40000, close);
    } else {
      document.MapCommand(40000, close);
    }
    EXPECT_TRUE(m_app.m_frame.OnCommand(40000));
    EXPECT_TRUE(m_template.Documents().empty());
    EXPECT_TRUE(m_app.m_frame.Children().empty());
  }
}

TEST_F(FrameTest, ASecondCloseWhileTheQuestionStandsIsIgnored) {
  class AskingHost : public RecordingHost {
   public:
    BoxAnswer MessageBox(const MessageBoxRequest& request) override {
      if (m_meanwhile) m_meanwhile();
      return RecordingHost::MessageBox(request);
    }
    std::function<void()> m_meanwhile;
  } host;
  FakeApp app(host, m_log);
  CMDIChildWnd& frame = *app.m_frame.AddChild(std::make_unique<ProbeFrame>(app.m_frame, m_log));
  ProbeDoc document(host, m_log);
  frame.AddView(std::make_unique<ProbeView>(document, m_log));
  document.SetModifiedFlag(true);
  host.m_meanwhile = [&] { frame.OnClose(); };
  frame.OnClose();
  EXPECT_EQ(host.Transcript().size(), 1u);
  EXPECT_EQ(app.m_frame.Children().size(), 1u);
}

TEST_F(FrameTest, AWindowSystemThatActivatesTheNextChildAtACloseGivesNoEmptyMoment) {
  CDocument& web = Open();
  CDocument& db = Open("/somewhere/db.trc");
  static_cast<FakeChildFace*>(FrameOf(db).Face())->m_onGone = [this, &web] {
    FrameOf(web).OnActivate(true);
  };
  EXPECT_EQ(ReportedBy([&] { FrameOf(db).Destroy(); }),
            "frame destroy\nview2 deactivated\nframe gone\nview2 gone\nchild gone\n"
            "view1 activated\nactive web.trc\n"
            "delete contents\ndocument gone\n");
}

TEST_F(FrameTest, WhatIsQueuedForAViewGoesWithItsFrame) {
  CDocument& document = Open();
  document.Views().front()->PostMessage(1128, 1002);
  FrameOf(document).OnClose();
  EXPECT_EQ(ReportedBy([&] { m_host.RunPosted(); }), "");
}

TEST_F(FrameTest, TheMainFrameTakesItsChildrenAndTheirDocumentsWithIt) {
  auto app = std::make_unique<FakeApp>(m_host, m_log);
  CMultiDocTemplate::Makers makers;
  makers.document = [this] { return std::make_unique<ProbeDoc>(m_host, m_log); };
  makers.frame = [this, &app] { return std::make_unique<ProbeFrame>(app->m_frame, m_log); };
  makers.view = [this](CDocument& document) {
    return std::make_unique<ProbeView>(document, m_log);
  };
  CMultiDocTemplate* const docTemplate = app->AddDocTemplate(
      std::make_unique<CMultiDocTemplate>(129, kTraceFileString, app->MainFrame(), makers));
  NewWindow(*docTemplate, *docTemplate->OpenDocumentFile(nullptr));
  docTemplate->OpenDocumentFile(nullptr)->SetModifiedFlag(true);
  ASSERT_EQ(app->m_frame.Children().size(), 3u);
  m_log.Clear();
  app.reset();
  EXPECT_EQ(m_log.Reported("document"), "document gone\ndocument gone\n");
  EXPECT_EQ(m_log.Reported("view gone"), "view gone\nview gone\nview gone\n");
  EXPECT_EQ(m_host.Reported(), "");
}

}  // namespace

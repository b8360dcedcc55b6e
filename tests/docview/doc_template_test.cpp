#include "docview/doc_template.h"

#include "docview_fixture.h"

namespace {

class DocTemplateTest : public DocviewTest {};

TEST_F(DocTemplateTest, TheDocumentStringHasSevenParts) {
  const auto traces = MakeTemplate(129, kTraceFileString);
  EXPECT_EQ(traces->GetDocString(CMultiDocTemplate::windowTitle), "");
  EXPECT_EQ(traces->GetDocString(CMultiDocTemplate::docName), "");
  EXPECT_EQ(traces->GetDocString(CMultiDocTemplate::fileNewName), "Trace File");
  EXPECT_EQ(traces->GetDocString(CMultiDocTemplate::filterName), "Trace Files (*.trc)");
  EXPECT_EQ(traces->GetDocString(CMultiDocTemplate::filterExt), ".trc");
  EXPECT_EQ(traces->GetDocString(CMultiDocTemplate::regFileTypeId), "TraceFile");
  EXPECT_EQ(traces->GetDocString(CMultiDocTemplate::regFileTypeName), "Trace File");
  EXPECT_EQ(MakeTemplate(1, "title\nname")->GetDocString(CMultiDocTemplate::filterExt), "");
}

TEST_F(DocTemplateTest, TheExtensionDecidesWithoutRegardToCase) {
  const auto traces = MakeTemplate(129, kTraceFileString);
  EXPECT_TRUE(traces->Matches("/somewhere/web.trc"));
  EXPECT_TRUE(traces->Matches("web.TRC"));
  EXPECT_FALSE(traces->Matches("web.tcf"));
  EXPECT_FALSE(traces->Matches("trc"));
  EXPECT_FALSE(traces->Matches("web.trc/plain"));
}

TEST_F(DocTemplateTest, ATemplateWithoutAnExtensionTakesNoPath) {
  const auto source = MakeTemplate(145, "\n\nSource File\n\n\n\nSource File");
  EXPECT_FALSE(source->Matches("web.cpp"));
  EXPECT_FALSE(source->Matches("web"));
  ASSERT_EQ(source->FileFilters().size(), 1u);
  EXPECT_EQ(source->FileFilters().front().patterns, "*");
}

TEST_F(DocTemplateTest, NewDocumentsAreCounted) {
  CMultiDocTemplate& traces = AddTemplate();
  EXPECT_EQ(traces.OpenDocumentFile(nullptr)->GetTitle(), "Trace File1");
  EXPECT_EQ(traces.OpenDocumentFile(nullptr)->GetTitle(), "Trace File2");
  const auto monitors =
      MakeTemplate(130, "\nTraceRealtimeDoc\nTrace File\nTrace Files (*.trc)\n.trc\n\n");
  EXPECT_EQ(monitors->OpenDocumentFile(nullptr)->GetTitle(), "TraceRealtimeDoc1");
}

TEST_F(DocTemplateTest, AFailedOpenLeavesNoFrameAndNoDocument) {
  CMultiDocTemplate& traces = AddTemplate();
  ProbeDoc::s_refuse = true;
  const std::string path = "/somewhere/web.trc";
  EXPECT_EQ(traces.OpenDocumentFile(&path), nullptr);
  EXPECT_EQ(m_log.Reported(),
            "frame create\nopen /somewhere/web.trc\n"
            "frame destroy\nframe gone\nview1 gone\nchild gone\ndelete contents\ndocument gone\n");
  EXPECT_TRUE(traces.Documents().empty());
  EXPECT_TRUE(m_app.m_frame.Children().empty());
  EXPECT_TRUE(m_app.RecentFiles().empty());
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(DocTemplateTest, AFileOfATemplateThatFileOpenDoesNotKnowIsNoRecentFile) {
  const auto sources = MakeTemplate(145, "\n\nSource File\n\n\n\nSource File");
  const std::string path = "/somewhere/a.c";
  ASSERT_NE(sources->OpenDocumentFile(&path), nullptr);
  EXPECT_TRUE(m_app.RecentFiles().empty());
}

TEST_F(DocTemplateTest, AFailedNewDocumentLeavesNothingEither) {
  CMultiDocTemplate& traces = AddTemplate();
  ProbeDoc::s_refuse = true;
  EXPECT_EQ(traces.OpenDocumentFile(nullptr), nullptr);
  EXPECT_TRUE(traces.Documents().empty());
  EXPECT_TRUE(m_app.m_frame.Children().empty());
}

TEST_F(DocTemplateTest, AFrameWithoutAWindowLeavesNothingEither) {
  CMultiDocTemplate& traces = AddTemplate();
  m_app.m_frame.m_refuseFaces = true;
  EXPECT_EQ(traces.OpenDocumentFile(nullptr), nullptr);
  EXPECT_TRUE(traces.Documents().empty());
  EXPECT_TRUE(m_app.m_frame.Children().empty());
}

TEST_F(DocTemplateTest, AFrameCarriesTheMenusOfItsTemplateAndTheSizeThatItWishes) {
  class Sized : public CMDIChildWnd {
   public:
    using CMDIChildWnd::CMDIChildWnd;
    void PreCreateWindow(int& widthPx, int& heightPx) override {
      EXPECT_EQ(widthPx, 0) << "the face finds a good size";
      widthPx = 333;
      EXPECT_EQ(heightPx, 0);
      heightPx = 222;
    }
  };
  CMultiDocTemplate::Makers makers;
  makers.document = [this] { return std::make_unique<ProbeDoc>(m_host, m_log); };
  makers.frame = [this] { return std::make_unique<Sized>(m_app.m_frame); };
  makers.view = [this](CDocument& document) {
    return std::make_unique<ProbeView>(document, m_log);
  };
  CMultiDocTemplate monitors(130, kTraceFileString, m_app.MainFrame(), makers);
  CMDIChildWnd& frame = FrameOf(*monitors.OpenDocumentFile(nullptr));
  EXPECT_EQ(frame.MenuResource(), 130u);
  const auto* face = static_cast<FakeChildFace*>(frame.Face());
  EXPECT_EQ(face->m_widthPx, 333);
  EXPECT_EQ(face->m_heightPx, 222);
}

TEST_F(DocTemplateTest, SaveAllModifiedAsksEachAndStopsAtTheFirstRefusal) {
  CMultiDocTemplate& traces = AddTemplate();
  for (int i = 0; i < 3; ++i) traces.OpenDocumentFile(nullptr)->SetModifiedFlag(true);
  m_host.AnswerBox(BoxAnswer::No);
  m_host.AnswerBox(BoxAnswer::Cancel);
  EXPECT_FALSE(traces.SaveAllModified());
  EXPECT_EQ(m_host.Transcript().size(), 2u);
  for (int i = 0; i < 3; ++i) m_host.AnswerBox(BoxAnswer::No);
  EXPECT_TRUE(traces.SaveAllModified());
  EXPECT_EQ(m_host.Transcript().size(), 5u);
}

TEST_F(DocTemplateTest, CloseAllDocumentsAsksNothing) {
  CMultiDocTemplate& traces = AddTemplate();
  for (int i = 0; i < 3; ++i) traces.OpenDocumentFile(nullptr)->SetModifiedFlag(true);
  NewWindow(traces, *traces.Documents()[1]);
  traces.CloseAllDocuments();
  EXPECT_TRUE(traces.Documents().empty());
  EXPECT_TRUE(m_app.m_frame.Children().empty());
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(DocTemplateTest, ATemplateThatGoesClosesItsDocuments) {
  auto monitors = MakeTemplate(130, kTraceFileString);
  monitors->OpenDocumentFile(nullptr);
  monitors.reset();
  EXPECT_TRUE(m_app.m_frame.Children().empty());
  EXPECT_EQ(m_log.Lines().back(), "document gone");
}

TEST_F(DocTemplateTest, TheStepsOfAnOpeningServeAFlowOfItsOwn) {
  CMultiDocTemplate& configs = *m_app.AddDocTemplate(MakeTemplate(131, kConfigString));
  CDocument* const document = configs.CreateNewDocument();
  CMDIChildWnd* const frame = configs.CreateNewFrame(*document);
  ASSERT_NE(frame, nullptr);
  configs.SetDefaultTitle(*document);
  EXPECT_TRUE(document->OnNewDocument());
  configs.InitialUpdateFrame(*frame, *document, true);
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), frame);
  EXPECT_EQ(frame->Title(), "Trace Config1");
  EXPECT_EQ(document->GetDocTemplate(), &configs);
}

}  // namespace

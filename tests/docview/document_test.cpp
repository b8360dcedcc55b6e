#include "docview/document.h"

#include <sys/stat.h>

#include "docview_fixture.h"
#include "support/temp_dir.h"

namespace {

class DocumentTest : public DocviewTest {
 protected:
  DocumentTest() : m_template(AddTemplate()) {}
  CDocument& Open(const std::string& path = "/somewhere/web.trc") {
    return *m_template.OpenDocumentFile(&path);
  }
  CMultiDocTemplate& m_template;
};

TEST_F(DocumentTest, TellsEveryViewButTheSender) {
  ProbeDoc document(m_host, m_log);
  ProbeView first(document, m_log, "first"), second(document, m_log, "second");
  EXPECT_EQ(ReportedBy([&] { document.UpdateAllViews(nullptr, 1004); }),
            "first hint 1004\nsecond hint 1004\n");
  CObject object;
  EXPECT_EQ(ReportedBy([&] { document.UpdateAllViews(&first, 1006, &object); }),
            "second hint 1006 from first with object\n");
}

TEST_F(DocumentTest, AViewThatLeftWhileTheOthersAreNotifiedIsSkipped) {
  ProbeDoc document(m_host, m_log);
  ProbeView first(document, m_log, "first");
  auto second = std::make_unique<ProbeView>(document, m_log, "second");
  ProbeView third(document, m_log, "third");
  first.m_onUpdate = [&](CView*, unsigned, CObject*) { second.reset(); };
  EXPECT_EQ(ReportedBy([&] { document.UpdateAllViews(nullptr, 1002); }),
            "first hint 1002\nsecond gone\nthird hint 1002\n");
}

TEST_F(DocumentTest, AViewThatLeavesInItsOwnHintAndOneThatComesDisturbNobody) {
  ProbeDoc document(m_host, m_log);
  auto first = std::make_unique<ProbeView>(document, m_log, "first");
  ProbeView second(document, m_log, "second");
  std::unique_ptr<ProbeView> third;
  second.m_onUpdate = [&](CView*, unsigned, CObject*) {
    first.reset();
    third = std::make_unique<ProbeView>(document, m_log, "third");
  };
  EXPECT_EQ(ReportedBy([&] { document.UpdateAllViews(nullptr, 1002); }),
            "first hint 1002\nsecond hint 1002\nfirst gone\n");
  EXPECT_EQ(document.Views(), (std::vector<CView*>{&second, third.get()}));
}

TEST_F(DocumentTest, AViewOutlivesItsDocumentWithoutHarm) {
  auto document = std::make_unique<ProbeDoc>(m_host, m_log);
  ProbeView view(*document, m_log);
  document.reset();
  EXPECT_EQ(view.GetDocument(), nullptr);
  EXPECT_FALSE(view.OnCommand(1));
  EXPECT_FALSE(view.HasCommand(1));
}

TEST_F(DocumentTest, AnUnmodifiedDocumentMayGoWithoutAQuestion) {
  EXPECT_TRUE(Open().SaveModified());
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(DocumentTest, AModifiedDocumentAsksByItsName) {
  CDocument& document = Open();
  document.SetModifiedFlag(true);
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_TRUE(document.SaveModified());
  m_host.AnswerBox(BoxAnswer::Cancel);
  EXPECT_FALSE(document.SaveModified());
  const std::string question = "box Tessera [warning] \"Save changes to web.trc?\" ";
  EXPECT_EQ(m_host.Reported(),
            question + "(Yes, No, Cancel) -> No\n" + question + "(Yes, No, Cancel) -> Cancel\n");
}

TEST_F(DocumentTest, ADocumentWithoutAPathAsksByItsTitle) {
  CDocument& document = *m_template.OpenDocumentFile(nullptr);
  document.SetModifiedFlag(true);
  EXPECT_FALSE(document.SaveModified());
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [warning] \"Save changes to Trace File1?\" (Yes, No, Cancel) -> Cancel\n");
}

TEST_F(DocumentTest, YesSavesInPlaceWhereTheFileCanBeWritten) {
  const TempDir temp;
  CDocument& document = Open(temp.File("web.trc", "old"));
  document.SetModifiedFlag(true);
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(document.SaveModified());
  EXPECT_EQ(m_log.Reported("save"), "save " + temp.File("web.trc") + "\n");
}

TEST_F(DocumentTest, YesAsksForANameWhereThereIsNoFileToWrite) {
  CDocument& document = *m_template.OpenDocumentFile(nullptr);
  document.SetModifiedFlag(true);
  m_host.AnswerBox(BoxAnswer::Yes);
  m_host.AnswerFileDialog("/somewhere/new.trc");
  m_host.ClearTranscript();
  EXPECT_TRUE(document.SaveModified());
  EXPECT_EQ(m_host.Transcript().back(),
            "save dialog \"Save As\" ext=.trc name=\"Trace File1\" "
            "filters=\"Trace Files (*.trc)|*.trc|All Files (*.*)|*\" -> /somewhere/new.trc");
  EXPECT_EQ(document.GetPathName(), "/somewhere/new.trc");
  EXPECT_EQ(document.GetTitle(), "new.trc");
}

TEST_F(DocumentTest, YesWithoutANameOrWithAFailedSaveKeepsTheDocument) {
  CDocument& document = *m_template.OpenDocumentFile(nullptr);
  document.SetModifiedFlag(true);
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_FALSE(document.SaveModified());
  m_host.AnswerBox(BoxAnswer::Yes);
  m_host.AnswerFileDialog("/somewhere/new.trc");
  ProbeDoc::s_refuse = true;
  EXPECT_FALSE(document.SaveModified());
  EXPECT_EQ(document.GetPathName(), "");
}

TEST_F(DocumentTest, ASavedCopyLeavesNameTitleAndRecentFiles) {
  CDocument& document = Open();
  m_host.AnswerFileDialog("/somewhere/copy.trc");
  EXPECT_TRUE(document.DoSave(nullptr, false));
  EXPECT_EQ(m_host.Reported(),
            "save dialog \"Save Copy As\" ext=.trc name=\"/somewhere/web.trc\" "
            "filters=\"Trace Files (*.trc)|*.trc|All Files (*.*)|*\" -> /somewhere/copy.trc\n");
  EXPECT_EQ(m_log.Reported("save"), "save /somewhere/copy.trc\n");
  EXPECT_EQ(document.GetTitle(), "web.trc");
  EXPECT_EQ(m_app.RecentFiles(), std::vector<std::string>{"/somewhere/web.trc"});
}

TEST_F(DocumentTest, ASaveToAPathAsksNothingAndWithReplaceRenames) {
  CDocument& document = Open();
  const std::string path = "/somewhere/else.trc";
  EXPECT_TRUE(document.DoSave(&path, true));
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(document.GetPathName(), path);
  EXPECT_EQ(FrameOf(document).Title(), "else.trc");
  EXPECT_EQ(m_app.RecentFiles(), (std::vector<std::string>{path, "/somewhere/web.trc"}));
}

TEST_F(DocumentTest, AFailedSaveDeletesNothing) {
  const TempDir temp;
  const std::string path = temp.File("original.trc", "the user's only copy");
  CDocument& document = Open();
  ProbeDoc::s_refuse = true;
  m_host.AnswerFileDialog(path);
  EXPECT_FALSE(document.DoSave(nullptr, false));
  EXPECT_EQ(ReadAll(path), "the user's only copy");
}

TEST_F(DocumentTest, ABaseDocumentHasNoFormInAFile) {
  CDocument document(m_host);
  EXPECT_FALSE(document.OnOpenDocument("/somewhere/web.trc"));
  EXPECT_FALSE(document.OnSaveDocument("/somewhere/web.trc"));
}

TEST_F(DocumentTest, ANewDocumentIsEmptyNamelessAndUnmodified) {
  CDocument& document = Open();
  document.SetModifiedFlag(true);
  EXPECT_EQ(ReportedBy([&] { document.OnNewDocument(); }), "delete contents\nview1 hint 1002\n");
  EXPECT_EQ(document.GetPathName(), "");
  EXPECT_FALSE(document.IsModified());
}

TEST_F(DocumentTest, ATitleMayStandForADocumentThatHasNoFile) {
  CDocument& document = *m_template.OpenDocumentFile(nullptr);
  document.SetPathName("Traces sent to web", false);
  EXPECT_EQ(document.GetTitle(), "Traces sent to web");
  EXPECT_EQ(FrameOf(document).Title(), "Traces sent to web");
  EXPECT_TRUE(m_app.RecentFiles().empty());
}

}  // namespace

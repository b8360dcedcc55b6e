// Leaving the program: the Quick Close question, the documents' questions, the order of the end.
#include "shell_fixture.h"

namespace {

class CloseTest : public ShellTest {
 protected:
  CDocument* OpenModified(CMultiDocTemplate& docTemplate, const std::string& title) {
    CDocument* document = docTemplate.OpenDocumentFile(nullptr);
    document->SetTitle(title);
    document->SetModifiedFlag(true);
    return document;
  }
  static std::string SaveQuestion(const std::string& title, const std::string& answer) {
    return "box Tessera [warning] \"Save changes to " + title + "?\" (Yes, No, Cancel) -> " +
           answer + "\n";
  }
};

TEST_F(CloseTest, ClosingWithOnlyTraceFilesOpenAsksNoQuickCloseQuestion) {
  Start();
  m_app->HoldMonitorTemplate();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  m_host.ClearTranscript();
  m_log.Clear();
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_TRUE(Face().m_closed);
  EXPECT_TRUE(m_app->FileTemplate()->Documents().empty());
  EXPECT_EQ(m_host.MainWindow(), nullptr);
  EXPECT_FALSE(g_quickClose);
}

TEST_F(CloseTest, TheWindowClosesAfterTheDocuments) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  m_log.Clear();
  Frame().OnClose();
  const auto& lines = m_log.Lines();
  const auto child = std::find(lines.begin(), lines.end(), "child gone");
  const auto window = std::find(lines.begin(), lines.end(), "main close");
  ASSERT_NE(child, lines.end());
  ASSERT_NE(window, lines.end());
  EXPECT_LT(child, window);
}

TEST_F(CloseTest, ClosingWithAMonitorOpenAndYesClosesAllWithNoFurtherQuestion) {
  Start();
  OpenModified(m_app->HoldMonitorTemplate(), "Traces sent to web");
  CTraceFileDoc* file = Open(WriteTraces("web.trc", 1));
  ASSERT_TRUE(file);
  file->SetModifiedFlag(true);
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(), std::string(kQuickClose) + "Yes\n");
  EXPECT_TRUE(g_quickClose);
  EXPECT_TRUE(Face().m_closed);
  EXPECT_TRUE(m_app->MonitorTemplate()->Documents().empty());
}

TEST_F(CloseTest, AConfigurationRaisesTheQuestionToo) {
  Start();
  OpenConfig();
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnClose();
  EXPECT_EQ(m_host.Transcript().front() + "\n", std::string(kQuickClose) + "Yes\n");
  EXPECT_TRUE(Face().m_closed);
}

TEST_F(CloseTest, CancelOfTheQuestionGoesOnWithTheProgramAsItWas) {
  Start();
  OpenModified(m_app->HoldMonitorTemplate(), "Traces sent to web");
  m_log.Clear();
  m_host.AnswerBox(BoxAnswer::Cancel);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(), std::string(kQuickClose) + "Cancel\n");
  EXPECT_FALSE(g_quickClose);
  EXPECT_FALSE(Face().m_closed);
  EXPECT_EQ(m_app->MonitorTemplate()->Documents().size(), 1U);
  EXPECT_EQ(m_host.MainWindow(), &Frame());
  EXPECT_EQ(m_log.Reported(), "");
}

TEST_F(CloseTest, AtNoTheUsualQuestionsComeOneByOneMonitorsFirst) {
  Start();
  CTraceFileDoc* file = Open(WriteTraces("web.trc", 1));
  ASSERT_TRUE(file);
  file->SetModifiedFlag(true);
  CMultiDocTemplate& monitors = m_app->HoldMonitorTemplate();
  OpenModified(monitors, "first monitor");
  OpenModified(monitors, "second monitor");
  m_host.ClearTranscript();
  for (int answers = 0; answers < 4; ++answers) m_host.AnswerBox(BoxAnswer::No);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(),
            kQuickClose + std::string("No\n") + SaveQuestion("first monitor", "No") +
                SaveQuestion("second monitor", "No") + SaveQuestion("web.trc", "No"));
  EXPECT_FALSE(g_quickClose);
  EXPECT_TRUE(Face().m_closed);
}

TEST_F(CloseTest, ARefusalOfAMonitorStopsTheCloseAndNobodyElseIsAsked) {
  Start();
  CTraceFileDoc* file = Open(WriteTraces("web.trc", 1));
  ASSERT_TRUE(file);
  file->SetModifiedFlag(true);
  OpenModified(m_app->HoldMonitorTemplate(), "monitor");
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::No);
  m_host.AnswerBox(BoxAnswer::Cancel);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(),
            kQuickClose + std::string("No\n") + SaveQuestion("monitor", "Cancel"));
  EXPECT_FALSE(Face().m_closed);
  EXPECT_EQ(m_app->FileTemplate()->Documents().size(), 1U);
  EXPECT_EQ(m_app->MonitorTemplate()->Documents().size(), 1U);
}

TEST_F(CloseTest, ARefusalOfAFileStopsTheClose) {
  Start();
  CTraceFileDoc* file = Open(WriteTraces("web.trc", 1));
  ASSERT_TRUE(file);
  file->SetModifiedFlag(true);
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::Cancel);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(), SaveQuestion("web.trc", "Cancel"));
  EXPECT_FALSE(Face().m_closed);
}

TEST_F(CloseTest, ASecondCloseWhileAQuestionIsOnTheScreenAsksNotAgain) {
  class AskingHost : public RecordingHost {
   public:
    BoxAnswer MessageBox(const MessageBoxRequest& request) override {
      if (m_frame) m_frame->OnClose();
      return RecordingHost::MessageBox(request);
    }
    CMainFrame* m_frame = nullptr;
  };
  AskingHost host;
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
  TestApp app(host, m_faces, m_log);
  ASSERT_TRUE(app.InitInstance({}));
  ASSERT_TRUE(app.HoldMonitorTemplate().OpenDocumentFile(nullptr));
  host.m_frame = app.Frame();
  host.AnswerBox(BoxAnswer::Cancel);
  app.Frame()->OnClose();
  EXPECT_EQ(host.Reported(), std::string(kQuickClose) + "Cancel\n");
}

TEST_F(CloseTest, AQuickEnterAtTheQuickCloseQuestionAsksTheDocumentsAndLosesNothing) {
  class EnterHost : public RecordingHost {
   public:
    BoxAnswer MessageBox(const MessageBoxRequest& request) override {
      AnswerBox(request.preferred.value_or(BoxAnswer::Yes));  // the first button
      return RecordingHost::MessageBox(request);
    }
  };
  EnterHost host;
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
  TestApp app(host, m_faces, m_log);
  ASSERT_TRUE(app.InitInstance({}));
  ASSERT_TRUE(app.HoldMonitorTemplate().OpenDocumentFile(nullptr));
  app.Frame()->OnClose();
  EXPECT_EQ(host.Reported(), std::string(kQuickClose) + "No\n");
  EXPECT_FALSE(g_quickClose);
}

TEST_F(CloseTest, ExitIsTheSameAsClosingTheWindow) {
  Start();
  OpenModified(m_app->HoldMonitorTemplate(), "monitor");
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(State(ID_APP_EXIT).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_APP_EXIT));
  EXPECT_EQ(m_host.Reported(), std::string(kQuickClose) + "Yes\n");
  EXPECT_TRUE(Face().m_closed);
}

// A program that is ended from outside (no question can be asked) destroys its objects.
TEST_F(CloseTest, TheEndOfTheApplicationTakesMonitorsAndFilesBeforeTheWindow) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  ASSERT_TRUE(m_app->HoldMonitorTemplate().OpenDocumentFile(nullptr));
  m_log.Clear();
  m_host.ClearTranscript();
  m_app.reset();
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(m_log.Reported("child gone"), "child gone\nchild gone\n");
  EXPECT_EQ(m_log.Lines().back(), "main gone");
  EXPECT_EQ(m_host.MainWindow(), nullptr);
}

}  // namespace

// Source windows in the whole program: their template, their menu, the questions at the end.
#include "listview/source/locate_wait.h"
#include "listview/source/source_map.h"
#include "listview/source/source_view.h"
#include "shell_fixture.h"
#include "support/fake_rich_edit.h"

namespace {

class SourceWindowsTest : public ShellTest {
 protected:
  SourceWindowsTest() { g_sourceMap.clear(); }
  ~SourceWindowsTest() override { g_sourceMap.clear(); }

  CSourceView& OpenSource(const std::string& name) {
    OpenSourceAt(m_dir.File(name, "one\ntwo\n"), 2);
    return static_cast<CSourceView&>(*m_app->SourceTemplate()->Documents().back()->Views().front());
  }
  void Edit(const std::string& name) {
    static_cast<FakeRichEdit&>(OpenSource(name).Edit()).Type("x");
  }
  static std::string Question(const std::string& title, const std::string& answer) {
    return "box Tessera [warning] \"Save changes to " + title + "?\" (Yes, No, Cancel) -> " +
           answer + "\n";
  }
};

TEST_F(SourceWindowsTest, TheirTemplateIsNotRegistered) {
  Start();
  ASSERT_NE(m_app->SourceTemplate(), nullptr);
  EXPECT_EQ(g_sourceTemplate, m_app->SourceTemplate());
  ASSERT_FALSE(m_app->Templates().empty());
  for (const auto& docTemplate : m_app->Templates()) EXPECT_NE(docTemplate->Resource(), 145u);
}

TEST_F(SourceWindowsTest, FileOpenOffersNoSourcesAndOpensNone) {
  Start();
  m_host.AnswerFileDialog(m_dir.File("a.c", "one\n"));
  Frame().OnCommand(ID_FILE_OPEN);
  ASSERT_GE(m_host.m_fileRequests[0].filters.size(), 2u);
  for (const FileFilter& filter : m_host.m_fileRequests[0].filters)
    EXPECT_EQ(filter.label.find("Source"), std::string::npos) << filter.label;
  EXPECT_TRUE(m_app->SourceTemplate()->Documents().empty());
}

TEST_F(SourceWindowsTest, ASourceWindowHasItsMenuAndClearsBothPanes) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 3)));
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "3");
  OpenSource("a.c");
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "");
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "");
  EXPECT_NE(m_log.Reported("main menu").find("main menu 145"), std::string::npos);
  EXPECT_TRUE(m_app->RecentFiles().size() == 1);
}

TEST_F(SourceWindowsTest, TheMessagePaneSaysWhereTheFileLies) {
  Start();
  OpenSource("a.c");
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], m_dir.File("a.c"));
}

TEST_F(SourceWindowsTest, ItsCommandsWorkOrAreDisabled) {
  Start();
  CSourceView& view = OpenSource("a.c");
  for (const unsigned id : {ID_EDIT_FIND, ID_FILE_SAVE, ID_FILE_CLOSE})
    EXPECT_TRUE(State(id).IsEnabled());
  for (const unsigned id : {ID_EDIT_COPY, ID_FILE_PRINT, ID_FILE_PRINT_PREVIEW, ID_EDIT_CLEAR_ALL})
    EXPECT_FALSE(State(id).IsEnabled()) << id;
  view.Edit().SetSel(0, 3);
  EXPECT_TRUE(State(ID_EDIT_COPY).IsEnabled());
}

TEST_F(SourceWindowsTest, HelpTellsOfSources) {
  Start();
  OpenSource("a.c");
  EXPECT_TRUE(Frame().OnCommand(ID_HELP));
  EXPECT_EQ(m_log.Lines().back(), "help \"source\"");
}

TEST_F(SourceWindowsTest, OptionsAreNotSentToSources) {
  Start();
  ASSERT_TRUE(m_app->HoldMonitorTemplate().OpenDocumentFile(nullptr));
  OpenSource("a.c");
  ProbeView source(*m_app->SourceTemplate()->Documents().back(), m_log, "source");
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnOK(); });
  Frame().OnCommand(ID_VIEW_OPTIONS);
  m_host.RunPosted();
  EXPECT_NE(m_log.Reported("monitor hint 1001"), "");
  EXPECT_EQ(m_log.Reported("source hint"), "");
}

TEST_F(SourceWindowsTest, EditsAreAskedForAfterMonitorsAndRegisteredDocuments) {
  Start();
  Edit("a.c");
  CDocument* monitor = m_app->HoldMonitorTemplate().OpenDocumentFile(nullptr);
  monitor->SetTitle("monitor");
  monitor->SetModifiedFlag(true);
  CTraceFileDoc* file = Open(WriteTraces("web.trc", 1));
  ASSERT_TRUE(file);
  file->SetModifiedFlag(true);
  m_host.ClearTranscript();
  for (int i = 0; i < 4; ++i) m_host.AnswerBox(BoxAnswer::No);
  Frame().OnClose();
  const std::string reported = m_host.Reported();
  EXPECT_EQ(reported.substr(reported.find('\n') + 1),
            Question("monitor", "No") + Question("web.trc", "No") + Question("a.c", "No"));
  EXPECT_TRUE(Face().m_closed);
  EXPECT_TRUE(m_app->SourceTemplate()->Documents().empty());
}

TEST_F(SourceWindowsTest, ARefusalKeepsTheProgram) {
  Start();
  Edit("a.c");
  m_host.AnswerBox(BoxAnswer::Cancel);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(), Question("a.c", "Cancel"));
  EXPECT_FALSE(Face().m_closed);
}

TEST_F(SourceWindowsTest, YesSavesTheEdits) {
  Start();
  Edit("a.c");
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnClose();
  EXPECT_TRUE(Face().m_closed);
  EXPECT_EQ(ReadAll(m_dir.File("a.c")), "one\nxtwo\n");
}

TEST_F(SourceWindowsTest, AfterAQuickCloseTheyAreNotAskedFor) {
  Start();
  Edit("a.c");
  ASSERT_TRUE(m_app->HoldMonitorTemplate().OpenDocumentFile(nullptr));
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnClose();
  EXPECT_EQ(m_host.Transcript().size(), 1u);
  EXPECT_TRUE(Face().m_closed);
  EXPECT_EQ(ReadAll(m_dir.File("a.c")), "one\ntwo\n");
}

TEST_F(SourceWindowsTest, ClosingTheProgramCancelsTheWaitForASourceAndThenCloses) {
  Start();
  m_host.AnswerFileDialog(m_dir.File("b.c", "two\n"));
  m_host.AnswerDialog([this](CDialog& dialog) {
    Frame().OnClose();
    EXPECT_TRUE(dialog.Ended());
    EXPECT_FALSE(Face().m_closed);
  });
  OpenSourceAt("/nowhere/a.c", 1);
  EXPECT_TRUE(m_app->SourceTemplate()->Documents().empty());
  EXPECT_FALSE(Face().m_closed);
  m_host.RunPosted();
  EXPECT_TRUE(Face().m_closed);
}

}  // namespace

#include "docview/win_app.h"

#include <filesystem>

#include "docview_fixture.h"
#include "support/temp_dir.h"

namespace {

using Paths = std::vector<std::string>;

class WinAppTest : public DocviewTest {
 protected:
  WinAppTest() : m_traces(AddTemplate()) {
    m_configs = m_app.AddDocTemplate(MakeTemplate(131, kConfigString));
  }
  CMultiDocTemplate& m_traces;
  CMultiDocTemplate* m_configs;
  TempDir m_temp;
};

TEST_F(WinAppTest, TheFirstArgumentThatIsNoOptionIsTheFile) {
  const auto info = CWinApp::ParseCommandLine({"--unknown", "-x", "/a/web.trc", "/a/db.trc"});
  EXPECT_EQ(info.command, CCommandLineInfo::FileOpen);
  EXPECT_EQ(info.file, "/a/web.trc");
}

TEST_F(WinAppTest, AFileIsRelativeToTheStartFolder) {
  EXPECT_EQ(CWinApp::ParseCommandLine({"web.trc"}).file,
            (std::filesystem::current_path() / "web.trc").string());
}

TEST_F(WinAppTest, WithoutAFileANewDocumentIsAskedFor) {
  EXPECT_EQ(CWinApp::ParseCommandLine({}).command, CCommandLineInfo::FileNew);
  EXPECT_EQ(CWinApp::ParseCommandLine({"--version", ""}).command, CCommandLineInfo::FileNew);
}

TEST_F(WinAppTest, AfterTwoDashesANameMayBeginWithADash) {
  EXPECT_EQ(CWinApp::ParseCommandLine({"--", "-web.trc"}).file,
            (std::filesystem::current_path() / "-web.trc").string());
}

TEST_F(WinAppTest, TheShellCommandOpensMakesOrDoesNothing) {
  CCommandLineInfo info{CCommandLineInfo::FileNothing, ""};
  EXPECT_TRUE(m_app.ProcessShellCommand(info));
  EXPECT_TRUE(m_traces.Documents().empty());
  info.command = CCommandLineInfo::FileNew;
  EXPECT_TRUE(m_app.ProcessShellCommand(info));
  EXPECT_EQ(m_traces.Documents().front()->GetTitle(), "Trace File1");
  info = {CCommandLineInfo::FileOpen, m_temp.File("web.trc")};
  EXPECT_TRUE(m_app.ProcessShellCommand(info));
  EXPECT_EQ(m_traces.Documents().back()->GetTitle(), "web.trc");
  ProbeDoc::s_refuse = true;
  info.file = m_temp.File("bad.trc");
  EXPECT_FALSE(m_app.ProcessShellCommand(info));
}

TEST_F(WinAppTest, TheExtensionChoosesTheTemplateAndAnUnknownOneTheFirst) {
  m_app.OpenDocumentFile(m_temp.File("a.tcf"));
  m_app.OpenDocumentFile(m_temp.File("a.TRC"));
  m_app.OpenDocumentFile(m_temp.File("a.log"));
  m_app.OpenDocumentFile(m_temp.File("plain"));
  EXPECT_EQ(m_configs->Documents().size(), 1u);
  EXPECT_EQ(m_traces.Documents().size(), 3u);
}

TEST_F(WinAppTest, AFileThatIsOpenAlreadyComesToTheFront) {
  CDocument* const web = m_app.OpenDocumentFile(m_temp.File("web.trc", "x"));
  m_app.OpenDocumentFile(m_temp.File("db.trc", "x"));
  EXPECT_EQ(m_app.OpenDocumentFile(m_temp.File("web.trc")), web);
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), &FrameOf(*web));
  EXPECT_EQ(m_traces.Documents().size(), 2u);
  EXPECT_EQ(m_app.RecentFiles(), (Paths{m_temp.File("web.trc"), m_temp.File("db.trc")}));
}

TEST_F(WinAppTest, OneFileUnderSeveralPathsIsOneDocument) {
  CDocument* const web = m_app.OpenDocumentFile(m_temp.File("web.trc", "x"));
  std::filesystem::create_symlink(m_temp.File("web.trc"), m_temp.File("latest.trc"));
  std::filesystem::create_directory(m_temp.File("sub"));
  EXPECT_EQ(m_app.OpenDocumentFile(m_temp.File("latest.trc")), web);
  EXPECT_EQ(m_app.OpenDocumentFile(m_temp.File("sub/../web.trc")), web);
  EXPECT_NE(m_app.OpenDocumentFile(m_temp.File("Web.trc", "x")), web) << "names keep their case";
}

TEST_F(WinAppTest, ALinkOpensUnderTheNameThatTheUserKnows) {
  m_temp.File("web.trc", "x");
  std::filesystem::create_symlink(m_temp.File("web.trc"), m_temp.File("latest.trc"));
  EXPECT_EQ(m_app.OpenDocumentFile(m_temp.File("latest.trc"))->GetTitle(), "latest.trc");
}

TEST_F(WinAppTest, ADocumentNamedWithoutAFileIsNotMistakenForOne) {
  CDocument* const monitor = m_traces.OpenDocumentFile(nullptr);
  monitor->SetPathName("web.trc", false);
  EXPECT_NE(m_app.OpenDocumentFile("web.trc"), monitor);
}

TEST_F(WinAppTest, FileOpenOffersTheRegisteredTemplatesAndOpensWhatIsChosen) {
  m_app.OnCommand(ID_FILE_OPEN);
  EXPECT_EQ(m_host.Reported(),
            "open dialog \"Open\" ext=.trc name=\"\" filters=\"Trace Files (*.trc)|*.trc|"
            "Trace Config Files (*.tcf)|*.tcf|All Files (*.*)|*\" -> none\n");
  m_host.AnswerFileDialog(m_temp.File("web.trc", "x"));
  m_app.OnFileOpen();
  EXPECT_EQ(m_traces.Documents().size(), 1u);
}

TEST_F(WinAppTest, FileOpenBeginsBesideTheFileInFront) {
  std::filesystem::create_directory(m_temp.File("night"));
  m_app.OpenDocumentFile(m_temp.File("night/web.trc"));
  m_app.OnFileOpen();
  EXPECT_NE(m_host.Reported().find("name=\"" + m_temp.File("night/") + "\""), std::string::npos)
      << m_host.Reported();
  m_host.ClearTranscript();
  m_traces.OpenDocumentFile(nullptr)->SetPathName("Traces sent to web", false);
  m_app.OnFileOpen();
  EXPECT_NE(m_host.Reported().find("name=\"\""), std::string::npos) << m_host.Reported();
}

TEST_F(WinAppTest, APromptForOneTemplateOffersItsFilesAndOpensNothing) {
  const std::string offered =
      "open dialog \"Open\" ext=.tcf name=\"\" filters=\"Trace Config Files (*.tcf)|*.tcf|"
      "All Files (*.*)|*\" -> ";
  EXPECT_EQ(m_app.DoPromptFileName(m_configs), std::nullopt);
  EXPECT_EQ(m_host.Reported(), offered + "none\n");
  m_host.AnswerFileDialog("/a/web.tcf");
  EXPECT_EQ(m_app.DoPromptFileName(m_configs), "/a/web.tcf");
  EXPECT_TRUE(m_configs->Documents().empty());
}

TEST_F(WinAppTest, FourRecentFilesNewestFirstEachOnce) {
  for (const char* name : {"1.trc", "2.trc", "3.trc", "4.trc", "5.trc", "3.trc"}) {
    m_app.OpenDocumentFile(m_temp.File(name));
  }
  EXPECT_EQ(m_app.RecentFiles(), (Paths{m_temp.File("3.trc"), m_temp.File("5.trc"),
                                        m_temp.File("4.trc"), m_temp.File("2.trc")}));
}

TEST_F(WinAppTest, ARecentFileThatNoLongerOpensLeavesTheList) {
  m_app.SetRecentFiles({m_temp.File("gone.trc"), m_temp.File("web.trc")});
  ProbeDoc::s_refuse = true;
  m_app.OpenRecentFile(0);
  EXPECT_EQ(m_app.RecentFiles(), Paths{m_temp.File("web.trc")});
  EXPECT_TRUE(m_traces.Documents().empty());
}

TEST_F(WinAppTest, RecentFilesAreCommandsAndThoseBeyondTheListAreDisabled) {
  m_app.SetRecentFiles({m_temp.File("1.trc"), m_temp.File("2.trc")});
  for (unsigned i = 0; i < 4; ++i) {
    CCmdUI ui(ID_FILE_MRU_FILE1 + i, false, false);
    UpdateCommand(m_app, ui);
    EXPECT_EQ(ui.IsEnabled(), i < 2) << i;
  }
  m_app.OnCommand(ID_FILE_MRU_FILE1 + 1);
  EXPECT_EQ(m_app.RecentFiles().front(), m_temp.File("2.trc"));
  m_app.OpenRecentFile(9);
  EXPECT_EQ(m_traces.Documents().size(), 1u);
}

TEST_F(WinAppTest, EveryChangeOfTheRecentFilesIsReportedOnce) {
  class App : public CWinApp {
   public:
    using CWinApp::CWinApp;
    void OnRecentFilesChanged() override { ++m_changes; }
    int m_changes = 0;
  } app(m_host);
  app.SetRecentFiles({"/a", "/b", "/c", "/d", "/e"});
  EXPECT_EQ(app.RecentFiles().size(), 4u);
  EXPECT_EQ(app.m_changes, 0);
  app.AddToRecentFileList("/b");
  EXPECT_EQ(app.m_changes, 1);
  app.RemoveFromRecentFileList("/x");
  EXPECT_EQ(app.m_changes, 1);
  app.RemoveFromRecentFileList("/b");
  EXPECT_EQ(app.m_changes, 2);
}

TEST_F(WinAppTest, SaveAllModifiedStopsAtTheTemplateThatRefuses) {
  m_traces.OpenDocumentFile(nullptr)->SetModifiedFlag(true);
  m_configs->OpenDocumentFile(nullptr)->SetModifiedFlag(true);
  EXPECT_FALSE(m_app.SaveAllModified());
  EXPECT_EQ(m_host.Transcript().size(), 1u);
  m_host.AnswerBox(BoxAnswer::No);
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_TRUE(m_app.SaveAllModified());
  m_app.CloseAllDocuments();
  EXPECT_TRUE(m_traces.Documents().empty());
  EXPECT_TRUE(m_configs->Documents().empty());
}

TEST_F(WinAppTest, WithoutATemplateNothingOpens) {
  CWinApp bare(m_host);
  EXPECT_EQ(bare.OpenDocumentFile("/a/web.trc"), nullptr);
  EXPECT_FALSE(bare.ProcessShellCommand({CCommandLineInfo::FileNew, ""}));
}

}  // namespace

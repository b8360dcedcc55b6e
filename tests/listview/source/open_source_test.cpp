// Going to a trace's source: which window comes to the front, and on which line its caret is.
#include "source_fixture.h"

namespace {

TEST_F(SourceTest, AReadablePathOpensDirectlyWhateverIsMapped) {
  const std::string path = File("a.c");
  File("other.c", "other\n");
  g_sourceMap = {{m_directory.Path() + "/a", m_directory.Path() + "/other"}};
  OpenSourceAt(path, 2);
  ASSERT_EQ(Open(), 1u);
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(Edit().GetText(), "one\ntwo\nthree\n");
  EXPECT_EQ(Doc().m_requestedPath, path);
  EXPECT_EQ(Doc().GetPathName(), path);
}

TEST_F(SourceTest, TheWindowIsShownWithTheFilesNameAndComesToTheFront) {
  OpenSourceAt(File("a.c"), 1);
  ASSERT_EQ(Open(), 1u);
  EXPECT_EQ(Frame().Title(), "a.c");
  EXPECT_EQ(Frame().MenuResource(), 145u);
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), &Frame());
  EXPECT_TRUE(Edit().hasKeyboard);
}

TEST_F(SourceTest, TheCaretStandsAtTheStartOfTheLine) {
  OpenSourceAt(File("a.c"), 3);
  EXPECT_EQ(Edit().calls.back(), "select 8 8");
  EXPECT_EQ(Edit().markedLine, 2);
}

TEST_F(SourceTest, LineZeroIsTheCaretsLine) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 2);
  Edit().SetSel(6, 6);
  OpenSourceAt(path, 0);
  EXPECT_EQ(Edit().calls.back(), "select 4 4");
}

TEST_F(SourceTest, ALineAfterTheEndLeavesTheCaret) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 2);
  for (const std::uint32_t line : {5u, 1000u, 0x7FFFFFFFu}) {
    OpenSourceAt(path, line);
    EXPECT_EQ(Edit().calls.back(), "select -1 -1");
    EXPECT_EQ(Edit().to, 4);
  }
}

TEST_F(SourceTest, ALineThatDoesNotFitTheHintLosesItsTopBit) {
  OpenSourceAt(File("a.c"), 0x80000003u);
  EXPECT_EQ(Edit().calls.back(), "select 8 8");
}

TEST_F(SourceTest, TheSamePathTwiceGivesOneDocumentAndMovesTheCaret) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  OpenSourceAt(File("b.c"), 1);
  ASSERT_EQ(Open(), 2u);
  OpenSourceAt(path, 3);
  EXPECT_EQ(Open(), 2u);
  EXPECT_EQ(Edit(0).to, 8);
  EXPECT_EQ(m_app.m_frame.MDIGetActive(), &Frame(0));
}

TEST_F(SourceTest, PathsThatDifferOnlyInCaseReachTheSameDocument) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  const std::string upper = m_directory.File("A.C");
  OpenSourceAt(upper, 2);
  EXPECT_EQ(Open(), 1u);
  EXPECT_EQ(Edit().to, 4);
}

TEST_F(SourceTest, ALocatedFileKeepsItsRecordedPathAndTakesThePathOfTheFile) {
  const std::string local = File("a.c");
  m_host.AnswerFileDialog(local);
  OpenSourceAt("c:\\build\\a.c", 2);
  ASSERT_EQ(Open(), 1u);
  EXPECT_EQ(Doc().m_requestedPath, "c:\\build\\a.c");
  EXPECT_EQ(Doc().GetPathName(), local);
  EXPECT_EQ(Frame().Title(), "a.c");
  OpenSourceAt("C:\\BUILD\\A.C", 3);
  EXPECT_EQ(Open(), 1u);
  EXPECT_EQ(m_host.Transcript().size(), 1u);
}

TEST_F(SourceTest, TheNextFileOfTheTreeOpensWithoutTheDialog) {
  m_host.AnswerFileDialog(File("a.c"));
  File("b.c");
  OpenSourceAt("c:\\build\\a.c", 1);
  OpenSourceAt("c:\\build\\b.c", 1);
  EXPECT_EQ(Open(), 2u);
  EXPECT_EQ(m_host.Transcript().size(), 1u);
  EXPECT_EQ(Doc(1).GetPathName(), m_directory.File("b.c"));
}

TEST_F(SourceTest, ACancelledDialogOpensNothingAndSaysNothing) {
  OpenSourceAt("/nowhere/a.c", 1);
  EXPECT_EQ(Open(), 0u);
  EXPECT_EQ(m_host.Transcript().size(), 1u);
  EXPECT_TRUE(m_app.m_frame.Children().empty());
  EXPECT_EQ(m_log.Reported(), "");
}

TEST_F(SourceTest, ALocatedFileOfAnotherNameOpensNothingOnceTheWaitIsCancelled) {
  m_host.AnswerFileDialog(File("b.c"));
  m_host.AnswerDialog([this](CDialog& dialog) {
    EXPECT_NE(dynamic_cast<LocateWait*>(&dialog), nullptr);
    // While one file is being looked for, another one has to wait.
    OpenSourceAt(File("c.c"), 1);
    dialog.OnCancel();
  });
  OpenSourceAt("/nowhere/a.c", 1);
  EXPECT_EQ(Open(), 0u);
  OpenSourceAt(File("c.c"), 1);
  EXPECT_EQ(Open(), 1u);
}

TEST_F(SourceTest, AFileThatIsNoTextSaysSoAndOpensNothing) {
  const std::string path = File("a.o", std::string("\x7f"
                                                   "ELF\0\0",
                                                   6));
  OpenSourceAt(path, 1);
  EXPECT_EQ(Open(), 0u);
  EXPECT_EQ(m_host.Reported(), "box Tessera [warning] \"" + path +
                                   "\nThe file is not text: it holds zero bytes.\" (OK) -> OK\n");
}

TEST_F(SourceTest, AFolderSaysSoAndOpensNothing) {
  OpenSourceAt(m_directory.Path(), 1);
  EXPECT_EQ(Open(), 0u);
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [warning] \"" + m_directory.Path() + "\nIs a directory\" (OK) -> OK\n");
}

TEST_F(SourceTest, WithoutAnApplicationNothingHappens) {
  m_template.reset();
  EXPECT_EQ(g_sourceTemplate, nullptr);
  OpenSourceAt(File("a.c"), 1);
  EXPECT_TRUE(m_app.m_frame.Children().empty());
}

TEST_F(SourceTest, AWindowThatCannotBeMadeLeavesNoDocument) {
  m_app.m_frame.m_refuseFaces = true;
  OpenSourceAt(File("a.c"), 1);
  EXPECT_EQ(Open(), 0u);
}

TEST_F(SourceTest, IsNoRecentFile) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  Edit().Type("x");
  m_host.AnswerFileDialog(path);
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_SAVE));
  EXPECT_EQ(ReadAll(path), "xone\ntwo\nthree\n");
  EXPECT_TRUE(m_app.RecentFiles().empty());
}

TEST_F(SourceTest, ARelativePathIsSavedWhereItWasOpened) {
  const std::filesystem::path before = std::filesystem::current_path();
  File("a.c");
  std::filesystem::current_path(m_directory.Path());
  OpenSourceAt("a.c", 1);
  std::filesystem::current_path(before);
  ASSERT_EQ(Open(), 1u);
  EXPECT_EQ(Doc().m_requestedPath, "a.c");
  EXPECT_EQ(Doc().GetPathName(), m_directory.File("a.c"));
}

}  // namespace

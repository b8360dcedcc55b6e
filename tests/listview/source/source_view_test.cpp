// A source window: its control, its hints, its panes, its commands and its saves.
#include <errno.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "source_fixture.h"
#include "support/file_limit.h"
#include "support/folder_names.h"

namespace {

std::function<bool(int descriptor)> g_sync;  // in place of the disk; none: the disk

}  // namespace

extern "C" int fdatasync(int descriptor) {
  if (!g_sync) return static_cast<int>(syscall(SYS_fdatasync, descriptor));
  if (g_sync(descriptor)) return 0;
  errno = EIO;
  return -1;
}

namespace {

TEST_F(SourceTest, TheControlHasAFixedFontTabsOfEightCellsAndNoWrap) {
  OpenSourceAt(File("a.c"), 1);
  EXPECT_EQ(Edit().format.face, "Courier New");
  EXPECT_EQ(Edit().format.tabCells, 8);
  EXPECT_FALSE(Edit().format.wrap);
}

TEST_F(SourceTest, AFreshWindowIsNotModifiedAndHasNoSelection) {
  OpenSourceAt(File("a.c"), 1);
  EXPECT_FALSE(Edit().modified);
  EXPECT_FALSE(Doc().IsModified());
  EXPECT_FALSE(Edit().HasSelection());
}

TEST_F(SourceTest, AHintWithoutTheTopBitOrWithASenderOrAnObjectDoesNothing) {
  OpenSourceAt(File("a.c"), 1);
  CTraceHint object;
  const std::size_t before = Edit().calls.size();
  View().OnUpdate(nullptr, 3, nullptr);
  View().OnUpdate(nullptr, 1002, nullptr);
  View().OnUpdate(&View(), kHintGoToLine | 3, nullptr);
  View().OnUpdate(nullptr, kHintGoToLine | 3, &object);
  EXPECT_EQ(Edit().calls.size(), before);
  View().OnUpdate(nullptr, kHintGoToLine | 3, nullptr);
  EXPECT_EQ(Edit().calls.back(), "select 8 8");
}

TEST_F(SourceTest, ActivationClearsBothPanes) {
  OpenSourceAt(File("a.c"), 1);
  m_log.Clear();
  View().OnActivateView(true, &View(), nullptr);
  const std::string cleared = std::to_string(static_cast<std::uintptr_t>(-1));
  EXPECT_EQ(m_log.Reported("main"), "main 1125 " + cleared + " 0\nmain 1126 " + cleared + " 0\n");
}

TEST_F(SourceTest, CopyTakesTheSelectionAndIsDisabledWithoutOne) {
  OpenSourceAt(File("a.c"), 1);
  EXPECT_FALSE(Enabled(ID_EDIT_COPY));
  Edit().SetSel(0, 3);
  EXPECT_TRUE(Enabled(ID_EDIT_COPY));
  EXPECT_TRUE(Frame().OnCommand(ID_EDIT_COPY));
  EXPECT_EQ(Edit().copied, "one");
}

TEST_F(SourceTest, FindOpensABoxThatStaysWhileItsHitsAreWalked) {
  OpenSourceAt(File("a.c", "one two one\n"), 1);
  EXPECT_TRUE(Frame().OnCommand(ID_EDIT_FIND));
  FindTextDialog* dialog = View().FindDialog();
  ASSERT_NE(dialog, nullptr);
  EXPECT_FALSE(dialog->MayFind());
  dialog->OnOK();
  EXPECT_TRUE(Edit().calls.empty() || Edit().calls.back().rfind("find", 0) != 0);
  dialog->m_find = {"one", true, true};
  dialog->OnOK();
  EXPECT_EQ(Edit().calls.back(), "find one case word");
  EXPECT_EQ(Edit().from, 0);
  dialog->OnOK();
  EXPECT_EQ(Edit().from, 8);
  EXPECT_FALSE(dialog->Ended());
  EXPECT_EQ(m_host.Modeless().size(), 1u);
}

TEST_F(SourceTest, FindOffersTheSelectionOfOneLine) {
  OpenSourceAt(File("a.c"), 1);
  Edit().SetSel(4, 7);
  Frame().OnCommand(ID_EDIT_FIND);
  EXPECT_EQ(View().FindDialog()->m_find.text, "two");
  Edit().SetSel(0, 7);
  Frame().OnCommand(ID_EDIT_FIND);
  EXPECT_EQ(View().FindDialog()->m_find.text, "");
  EXPECT_EQ(m_host.Modeless().size(), 1u);
}

TEST_F(SourceTest, FindNextIsDisabledAlsoAfterAFind) {
  OpenSourceAt(File("a.c", "one two one\n"), 1);
  EXPECT_FALSE(Enabled(ID_EDIT_FINDNEXT));
  Frame().OnCommand(ID_EDIT_FIND);
  View().FindDialog()->m_find.text = "one";
  View().FindDialog()->OnOK();
  View().FindDialog()->OnCancel();
  EXPECT_FALSE(Enabled(ID_EDIT_FINDNEXT));
  EXPECT_FALSE(Frame().OnCommand(ID_EDIT_FINDNEXT));
  EXPECT_EQ(Edit().from, 0);
}

TEST_F(SourceTest, TheFindBoxOffersWhatWasLookedForLast) {
  OpenSourceAt(File("a.c", "one two one\n"), 1);
  Frame().OnCommand(ID_EDIT_FIND);
  View().FindDialog()->m_find.text = "one";
  View().FindDialog()->OnOK();
  View().FindDialog()->OnCancel();
  Edit().SetSel(-1, -1);
  Frame().OnCommand(ID_EDIT_FIND);
  EXPECT_EQ(View().FindDialog()->m_find.text, "one");
}

TEST_F(SourceTest, ATextThatIsNotThereIsReported) {
  OpenSourceAt(File("a.c"), 1);
  Frame().OnCommand(ID_EDIT_FIND);
  View().FindDialog()->m_find.text = "four";
  m_host.ClearTranscript();
  View().FindDialog()->OnOK();
  EXPECT_EQ(m_host.Reported(), "box Tessera [none] \"Text not found.\" (OK) -> OK\n");
  EXPECT_FALSE(Edit().HasSelection());
}

TEST_F(SourceTest, TheFindBoxGoesWhenAnotherWindowComesToTheFront) {
  OpenSourceAt(File("a.c"), 1);
  Frame().OnCommand(ID_EDIT_FIND);
  EXPECT_EQ(m_host.Modeless().size(), 1u);
  OpenSourceAt(File("b.c"), 1);
  EXPECT_TRUE(m_host.Modeless().empty());
}

TEST_F(SourceTest, SaveAsksAndSuggestsTheLocatedFile) {
  const std::string local = File("a.c", "caf\xE9\r\n");
  m_host.AnswerFileDialog(local);
  OpenSourceAt("c:\\build\\a.c", 1);
  Edit().Type("my ");
  EXPECT_TRUE(Doc().IsModified());
  m_host.ClearTranscript();
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_SAVE));
  EXPECT_EQ(m_host.Reported(), "save dialog \"Save As\" ext= name=\"" + local +
                                   "\" filters=\"All Files (*.*)|*\" -> none\n");
  EXPECT_EQ(ReadAll(local), "caf\xE9\r\n");
  EXPECT_TRUE(Doc().IsModified());
}

TEST_F(SourceTest, SaveWritesTheChosenFileInTheFormOfTheOpenedOneAndShowsItsName) {
  const std::string local = File("a.c", "caf\xE9\r\n"), chosen = m_directory.File("b.c");
  OpenSourceAt(local, 1);
  Edit().Type("my ");
  m_host.AnswerFileDialog(chosen);
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_SAVE));
  EXPECT_EQ(ReadAll(chosen), "my caf\xE9\r\n");
  EXPECT_EQ(ReadAll(local), "caf\xE9\r\n");
  EXPECT_FALSE(Doc().IsModified());
  EXPECT_FALSE(Edit().modified);
  EXPECT_EQ(Frame().Title(), "b.c");
}

TEST_F(SourceTest, AStarInTheTitleSaysThatTheTextIsEdited) {
  OpenSourceAt(File("a.c"), 1);
  EXPECT_EQ(Frame().Title(), "a.c");
  Edit().Type("x");
  EXPECT_EQ(Frame().Title(), "a.c*");
  m_host.AnswerFileDialog(m_directory.File("b.c"));
  Frame().OnCommand(ID_FILE_SAVE);
  EXPECT_EQ(Frame().Title(), "b.c");
  Edit().Type("y");
  Edit().SetModify(false);
  EXPECT_EQ(Frame().Title(), "b.c");
}

TEST_F(SourceTest, AnEditTakenBackLeavesNothingToSave) {
  OpenSourceAt(File("a.c"), 1);
  Edit().Type("x");
  Edit().SetModify(false);
  EXPECT_FALSE(Doc().IsModified());
}

TEST_F(SourceTest, ClosingAnEditedWindowAsksByTheFilesName) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  Edit().Type("x");
  m_host.AnswerBox(BoxAnswer::Cancel);
  Frame().OnClose();
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [warning] \"Save changes to a.c?\" (Yes, No, Cancel) -> Cancel\n");
  ASSERT_EQ(Open(), 1u);
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnClose();
  EXPECT_EQ(Open(), 0u);
  EXPECT_EQ(ReadAll(path), "xone\ntwo\nthree\n");
}

TEST_F(SourceTest, ClosingAnUneditedWindowAsksNothing) {
  OpenSourceAt(File("a.c"), 1);
  Frame().OnClose();
  EXPECT_EQ(Open(), 0u);
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(SourceTest, AfterAQuickCloseNothingIsAsked) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  Edit().Type("x");
  g_quickClose = true;
  EXPECT_TRUE(m_template->SaveAllModified());
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(ReadAll(path), "one\ntwo\nthree\n");
}

TEST_F(SourceTest, ASaveThatFailsSaysSoAndKeepsTheEdits) {
  OpenSourceAt(File("a.c"), 1);
  Edit().Type("x");
  EXPECT_FALSE(Doc().OnSaveDocument(m_directory.File("missing/a.c")));
  EXPECT_FALSE(Doc().OnSaveDocument("/dev/full"));
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [stop] \"Error creating file.\" (OK) -> OK\n"
            "box Tessera [stop] \"Error writing to file.\" (OK) -> OK\n");
  EXPECT_TRUE(Doc().IsModified());
}

TEST_F(SourceTest, ASaveOnAFullDiskLeavesTheFileAsItWas) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  Edit().Type("x");
  {
    const FileLimit full(4);
    EXPECT_FALSE(Doc().OnSaveDocument(path));
  }
  EXPECT_EQ(m_host.Reported(), "box Tessera [stop] \"Error writing to file.\" (OK) -> OK\n");
  EXPECT_EQ(ReadAll(path), "one\ntwo\nthree\n");
  EXPECT_EQ(NamesIn(std::filesystem::path(path).parent_path()).size(), 1u);
  EXPECT_TRUE(Doc().IsModified());
}

TEST_F(SourceTest, TheNewBytesAreOnTheDiskBeforeTheOldFileGivesUpItsName) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  Edit().Type("x");
  std::vector<std::string> stood;
  off_t synced = 0;
  g_sync = [&](int descriptor) {
    stood.push_back(ReadAll(path));
    struct stat status = {};
    fstat(descriptor, &status);
    synced = status.st_size;
    return true;
  };
  EXPECT_TRUE(Doc().OnSaveDocument(path));
  g_sync = nullptr;
  ASSERT_FALSE(stood.empty());
  for (const std::string& each : stood) EXPECT_EQ(each, "one\ntwo\nthree\n");
  EXPECT_EQ(synced, static_cast<off_t>(std::filesystem::file_size(path)));
}

TEST_F(SourceTest, ADiskThatRefusesTheNewBytesKeepsTheOldFile) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  Edit().Type("x");
  g_sync = [](int) { return false; };
  EXPECT_FALSE(Doc().OnSaveDocument(path));
  g_sync = nullptr;
  EXPECT_EQ(m_host.Reported(), "box Tessera [stop] \"Error writing to file.\" (OK) -> OK\n");
  EXPECT_EQ(ReadAll(path), "one\ntwo\nthree\n");
}

// So a program that is killed in the middle leaves the old file.
TEST_F(SourceTest, ASaveWritesAnotherFileThatTakesTheNameWhenItIsWhole) {
  const std::string path = File("a.c");
  OpenSourceAt(path, 1);
  Edit().Type("x");
  std::ifstream old(path);
  EXPECT_TRUE(Doc().OnSaveDocument(path));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(old), {}), "one\ntwo\nthree\n");
  EXPECT_NE(ReadAll(path), "one\ntwo\nthree\n");
  EXPECT_EQ(NamesIn(std::filesystem::path(path).parent_path()).size(), 1u);
}

TEST_F(SourceTest, ASaveKeepsTheFilesRightsAndTheLinkToIt) {
  const std::string path = File("a.c"), link = m_directory.File("link.c");
  ASSERT_EQ(chmod(path.c_str(), 0750), 0);
  std::filesystem::create_symlink("a.c", link);
  OpenSourceAt(link, 1);
  Edit().Type("x");
  EXPECT_TRUE(Doc().OnSaveDocument(link));
  EXPECT_EQ(std::filesystem::read_symlink(link), "a.c");
  EXPECT_NE(ReadAll(path), "one\ntwo\nthree\n");
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, mode_t{0750});
}

TEST_F(SourceTest, ASaveOfAFileOfTwoNamesIsSeenUnderBoth) {
  const std::string path = File("a.c"), other = m_directory.File("other.c");
  std::filesystem::create_hard_link(path, other);
  OpenSourceAt(path, 1);
  Edit().Type("x");
  EXPECT_TRUE(Doc().OnSaveDocument(path));
  EXPECT_EQ(ReadAll(other), ReadAll(path));
  EXPECT_NE(ReadAll(other), "one\ntwo\nthree\n");
}

TEST_F(SourceTest, AFailedSaveOfAFileOfTwoNamesLeavesItAsItWas) {
  const std::string path = File("a.c");
  std::filesystem::create_hard_link(path, m_directory.File("other.c"));
  OpenSourceAt(path, 1);
  Edit().Type("x");
  {
    const FileLimit full(4);
    EXPECT_FALSE(Doc().OnSaveDocument(path));
  }
  EXPECT_EQ(ReadAll(path), "one\ntwo\nthree\n");
  EXPECT_EQ(NamesIn(std::filesystem::path(path).parent_path()).size(), 2u);
}

}  // namespace

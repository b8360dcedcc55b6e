// The list's save: shown or selected rows into a new .trc file.
#include "drained_view.h"
#include "support/trc_image.h"

namespace {

class TraceViewSaveTest : public TraceViewTest {
 protected:
  std::string Save(bool selectedOnly = false, unsigned command = ID_FILE_SAVE) {
    const std::string path = m_directory.File("out.trc");
    m_host.AnswerFileDialog(FileDialogAnswer{path, {selectedOnly}});
    EXPECT_TRUE(m_view->OnCommand(command));
    return ReadAll(path);
  }
  void SaveTo(const std::string& path) {
    m_host.ClearTranscript();
    m_host.AnswerFileDialog(path);
    m_view->OnCommand(ID_FILE_SAVE);
  }
  void AddName(NameId id, const std::string& name) { m_document.m_names[id].name = name; }
};

TEST_F(TraceViewSaveTest, BothCommandsWriteHeaderNamesAndRows) {
  AddName(7, "web");
  Add({.text = "up", .machine = 7});
  Add({.text = "down", .machine = 7});
  Open();
  TrcImage expected;
  expected.Name(7, "web");
  expected.Trace({.text = "up", .machine = 7}).Trace({.text = "down", .machine = 7});
  EXPECT_EQ(Save(), expected.Bytes());
  EXPECT_EQ(Save(false, ID_FILE_SAVECOPY), expected.Bytes());
}

TEST_F(TraceViewSaveTest, NamesThatAnEarlierFileGotAreWrittenAgain) {
  AddName(7, "web");
  Add({.machine = 7});
  Open();
  const std::string first = Save();
  EXPECT_EQ(Save(), first);
  EXPECT_NE(first.find("web"), std::string::npos);
}

TEST_F(TraceViewSaveTest, AFilteredViewSavesTheShownTracesAndClearsTheModifiedFlag) {
  Add({.text = "hidden", .component = 9});
  Add({.text = "shown"});
  Open();
  HideNine();
  EXPECT_TRUE(m_document.IsModified());
  const std::string bytes = Save();
  EXPECT_EQ(bytes.find("hidden"), std::string::npos);
  EXPECT_NE(bytes.find("shown"), std::string::npos);
  EXPECT_FALSE(m_document.IsModified());
}

TEST_F(TraceViewSaveTest, ASelectedSaveWritesTheSelectedRowsAndLeavesTheModifiedFlag) {
  for (const char* text : {"a", "b", "c"}) Add({.text = text});
  Open();
  m_list->SetItemState(0, kRowSelected, kRowSelected);
  m_list->SetItemState(2, kRowSelected, kRowSelected);
  TrcImage expected;
  expected.Trace({.text = "a", .count = 1}).Trace({.text = "c", .count = 3});
  EXPECT_EQ(Save(true), expected.Bytes());
  EXPECT_TRUE(m_document.IsModified());
}

TEST_F(TraceViewSaveTest, RowsThatComeWhileTheDialogStandsAreWritten) {
  TrcImage expected;
  expected.Trace({.text = "late", .count = 9});
  EXPECT_EQ(DrainedView().Written(ID_FILE_SAVE, m_directory.File("late.trc")), expected.Bytes());
}

TEST_F(TraceViewSaveTest, TheBoxIsEnabledByASelection) {
  Add({});
  Open();
  Save();
  EXPECT_FALSE(m_host.m_fileRequests.back().boxes.at(0).enabled);
  Focus(0);
  Save();
  EXPECT_TRUE(m_host.m_fileRequests.back().boxes.at(0).enabled);
}

TEST_F(TraceViewSaveTest, AnEmptyListGivesAHeader) {
  Open();
  EXPECT_EQ(Save(), TrcImage().Bytes());
}

TEST_F(TraceViewSaveTest, TheDocumentKeepsPathAndTitle) {
  Add({});
  Open();
  m_document.SetPathName(m_directory.File("web.trc"), false);
  Save();
  EXPECT_EQ(m_document.GetPathName(), m_directory.File("web.trc"));
  EXPECT_EQ(m_document.GetTitle(), "web.trc");
  EXPECT_EQ(m_host.m_fileRequests.back().suggestedName, m_directory.File("web"));
}

TEST_F(TraceViewSaveTest, TheRowsAreWrittenUnderTheWaitCursor) {
  Add({});
  Open();
  m_host.ClearTranscript();
  Save();
  ASSERT_EQ(m_host.Transcript().size(), 3u);
  EXPECT_EQ(m_host.Transcript()[1], "wait cursor on");
  EXPECT_EQ(m_host.Transcript()[2], "wait cursor off");
}

TEST_F(TraceViewSaveTest, AFileThatCannotBeCreatedIsReported) {
  Add({});
  Open();
  SaveTo("/nowhere/out.trc");
  EXPECT_EQ(m_host.Transcript().back(), "box Tessera [none] \"Error creating file.\" (OK) -> OK");
  EXPECT_TRUE(m_document.IsModified());
}

TEST_F(TraceViewSaveTest, AWriteThatFailsIsReportedAndLeavesTheModifiedFlag) {
  for (int i = 0; i < 100; ++i) Add({.text = std::string(1000, 'x')});
  Open();
  SaveTo("/dev/full");  // shows at the first block of 64 KiB, in the midst of the rows
  ASSERT_EQ(m_host.Transcript().size(), 4u);
  EXPECT_EQ(m_host.Transcript()[2], "box Tessera [none] \"Error writing to file.\" (OK) -> OK");
  EXPECT_EQ(m_host.WaitCursors(), 0);
  EXPECT_TRUE(m_document.IsModified());
}

TEST_F(TraceViewSaveTest, AFullDiskThatShowsOnlyAtTheEndIsReportedToo) {
  Add({});
  Open();
  SaveTo("/dev/full");
  EXPECT_NE(m_host.Reported().find("\"Error writing to file.\""), std::string::npos);
  EXPECT_TRUE(m_document.IsModified());
}

TEST_F(TraceViewSaveTest, AFileThatIsOpenElsewhereStaysWhole) {
  const std::string path = m_directory.File("web.trc", TrcImage().Trace("a").Bytes());
  const OpenFile reader = OpenForReading(path);
  Add({});
  Open();
  SaveTo(path);
  EXPECT_NE(m_host.Reported().find("\"Error creating file.\""), std::string::npos);
  EXPECT_EQ(ReadAll(path), TrcImage().Trace("a").Bytes());
}

TEST_F(TraceViewSaveTest, CancelWritesNothingAndKeepsTheMarks) {
  AddName(7, "web");
  m_document.m_names[7].written = 1;
  Open();
  m_view->OnCommand(ID_FILE_SAVE);
  EXPECT_EQ(m_document.m_names[7].written, 1);
  EXPECT_EQ(m_host.Transcript().back().find("box"), std::string::npos);
}

}  // namespace

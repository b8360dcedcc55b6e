// Options from the command to the views, and the settings that the shell keeps.
#include "listview/columns/options_dialog.h"
#include "shell_fixture.h"

namespace {

class OptionsTest : public ShellTest {
 protected:
  // The user sets boxes, UTC and limit, and presses OK.
  void AnswerOptions(std::vector<std::pair<unsigned, bool>> boxes, bool utc,
                     const std::string& limit) {
    m_host.AnswerDialog([=](CDialog& dialog) {
      auto& options = dynamic_cast<COptionsDlg&>(dialog);
      if (options.Exchange(boxes, utc, limit)) options.OnOK();
    });
  }
  int HintsOf(const std::string& view) {
    const std::string line = view + " hint 1001";
    const auto& lines = m_log.Lines();
    return static_cast<int>(std::count(lines.begin(), lines.end(), line));
  }
  int TimeWidthPx() {
    return ListOf(*Frame().Children()[0]).List().Header().ColumnWidth(Column::Time);
  }
};

TEST_F(OptionsTest, OkWritesTheSettingsAndTheViewsFollowAfterTheDialogIsGone) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 2)));
  EXPECT_EQ(TimeWidthPx(), 0);
  AnswerOptions({{1042, true}, {1159, false}}, true, "2500");
  EXPECT_TRUE(State(ID_VIEW_OPTIONS).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_VIEW_OPTIONS));
  EXPECT_EQ(TimeWidthPx(), 0);
  EXPECT_EQ(m_host.PostedCount(), 1U);
  m_host.RunPosted();
  EXPECT_EQ(TimeWidthPx(), 18 * 7 + 16);

  ColumnFlags expected = kDefaultActiveColumns;
  expected[0] = 0;
  expected[4] = 1;
  EXPECT_EQ(g_activeColumns, expected);
  EXPECT_EQ(g_traceLimit, 2500U);
  EXPECT_TRUE(g_useUtc);
  EXPECT_EQ(Stored(kRegTraceView, "Trace Limit"), 2500U);
  EXPECT_EQ(Stored(kRegTraceView, "Coordinated Universal Time"), 1U);
  ColumnFlags stored = {};
  NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", stored.data(),
              kDefaultActiveColumns.data(), sizeof stored);
  EXPECT_EQ(stored, expected);
}

TEST_F(OptionsTest, TheNextRunStartsWithWhatWasChosen) {
  Start();
  AnswerOptions({{1042, true}}, true, "1000000");
  Frame().OnCommand(ID_VIEW_OPTIONS);
  g_activeColumns = kDefaultActiveColumns;
  g_traceLimit = 500000;
  g_useUtc = false;
  ReadStartupSettings();
  MakeApp();
  Start();
  EXPECT_EQ(g_traceLimit, 1000000U);
  EXPECT_TRUE(g_useUtc);
  EXPECT_EQ(g_activeColumns[4], 1);
}

TEST_F(OptionsTest, CancelChangesNothingAndTellsNobody) {
  Start();
  const std::string before = ReadAll(SettingsFile());
  m_host.AnswerDialog([](CDialog& dialog) {
    dynamic_cast<COptionsDlg&>(dialog).OnBoxClicked(1042);
    dialog.OnCancel();
  });
  Frame().OnCommand(ID_VIEW_OPTIONS);
  EXPECT_EQ(m_host.Reported(), "dialog -> 2\n");
  EXPECT_EQ(m_host.PostedCount(), 0U);
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
  EXPECT_EQ(ReadAll(SettingsFile()), before);
}

TEST_F(OptionsTest, ALimitOutOfRangeKeepsTheDialogAndThenCancelChangesNothing) {
  Start();
  AnswerOptions({{1042, true}}, true, "2499");
  Frame().OnCommand(ID_VIEW_OPTIONS);
  EXPECT_EQ(g_traceLimit, 500000U);
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
  EXPECT_EQ(m_host.Transcript().back(), "dialog -> 2");
}

TEST_F(OptionsTest, AMonitorHearsItOncePerRegisteredTemplateAndTheOthersOnce) {
  Start();
  ASSERT_TRUE(m_app->HoldMonitorTemplate().OpenDocumentFile(nullptr));
  const ProbeView config(OpenConfig(), m_log, "config");
  AnswerOptions({}, false, "500000");
  Frame().OnCommand(ID_VIEW_OPTIONS);
  m_log.Clear();
  m_host.RunPosted();
  EXPECT_EQ(m_log.Reported(), "monitor hint 1001\nconfig hint 1001\nmonitor hint 1001\n");
  EXPECT_EQ(HintsOf("monitor"), 2);
  EXPECT_EQ(HintsOf("config"), 1);
}

TEST_F(OptionsTest, TheBroadcastIsDroppedWhenTheProgramEndsFirst) {
  Start();
  AnswerOptions({}, false, "500000");
  Frame().OnCommand(ID_VIEW_OPTIONS);
  EXPECT_EQ(m_host.PostedCount(), 1U);
  // Another program in the same memory would get what was posted for the first.
  std::destroy_at(m_app.get());
  std::construct_at(m_app.get(), m_host, m_faces, m_log);
  m_app->m_configClient = ClientOf(m_machine);
  ASSERT_TRUE(m_app->InitInstance({}));
  const ProbeView config(OpenConfig(), m_log, "config");
  m_log.Clear();
  m_host.RunPosted();
  EXPECT_EQ(m_log.Reported("config hint"), "");
}

class RecentFilesTest : public ShellTest {
 protected:
  std::string StoredNames() {
    std::string names;
    for (const char* value : {"File1", "File2", "File3", "File4", "File5"}) {
      const std::string path = NtRegGet(HKEY_CURRENT_USER, kRegRecentFiles, value, "-");
      names += (names.empty() ? "" : " ") +
               (path == "-" ? path : std::filesystem::path(path).filename().string());
    }
    return names;
  }
};

TEST_F(RecentFilesTest, TheLastFourAreKeptNewestFirstAndOutliveTheRun) {
  Start();
  for (const char* name : {"a.trc", "b.trc", "c.trc", "d.trc", "e.trc"})
    ASSERT_TRUE(Open(WriteTraces(name, 1)));
  EXPECT_EQ(StoredNames(), "e.trc d.trc c.trc b.trc -");
  MakeApp();
  Start();
  ASSERT_EQ(m_app->RecentFiles().size(), 4U);
  EXPECT_EQ(m_app->RecentFiles()[0], m_dir.File("e.trc"));
  EXPECT_EQ(m_app->RecentFiles()[3], m_dir.File("b.trc"));
}

TEST_F(RecentFilesTest, OneIsOpenedByItsPlaceAndTheWindowHearsOfTheChange) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("a.trc", 1)));
  ASSERT_TRUE(Open(WriteTraces("b.trc", 1)));
  m_app->CloseAllDocuments();
  m_log.Clear();
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_MRU_FILE1 + 1));
  ASSERT_EQ(Frame().Children().size(), 1U);
  EXPECT_EQ(Frame().Children()[0]->Title(), "a.trc");
  EXPECT_EQ(m_log.Reported("main recent"), "main recent files\n");
  EXPECT_EQ(StoredNames(), "a.trc b.trc - - -");
}

TEST_F(RecentFilesTest, AnEntryWhoseFileIsGoneLeavesTheListAndTheStore) {
  Start();
  const std::string path = WriteTraces("a.trc", 1);
  ASSERT_TRUE(Open(path));
  ASSERT_TRUE(Open(WriteTraces("b.trc", 1)));
  m_app->CloseAllDocuments();
  std::filesystem::remove(path);
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_MRU_FILE1 + 1));
  EXPECT_TRUE(Frame().Children().empty());
  EXPECT_EQ(StoredNames(), "b.trc  - - -");
  MakeApp();
  Start();
  EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{m_dir.File("b.trc")});
}

TEST_F(RecentFilesTest, WithoutOneTheItemIsDisabled) {
  Start();
  EXPECT_FALSE(State(ID_FILE_MRU_FILE1).IsEnabled());
  ASSERT_TRUE(Open(WriteTraces("a.trc", 1)));
  EXPECT_TRUE(State(ID_FILE_MRU_FILE1).IsEnabled());
  EXPECT_FALSE(State(ID_FILE_MRU_FILE1 + 1).IsEnabled());
}

TEST_F(RecentFilesTest, AStartWritesNothingToTheList) {
  Start();
  EXPECT_EQ(StoredNames(), "- - - - -");
}

}  // namespace

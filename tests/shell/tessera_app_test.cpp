// The start of the program, its templates and command line, and the commands of no document.
#include "shell/tessera_app.h"

#include "shell_fixture.h"
#include "wizard/wizard_sheet.h"

namespace {

using TesseraApp = ShellTest;

TEST_F(TesseraApp, ABareStartWithAutoStart0ShowsTheMainWindowWithNoDocumentAndNoWizard) {
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
  m_app->MapWizard();
  ASSERT_TRUE(m_app->InitInstance({}));
  m_host.RunPosted();
  EXPECT_TRUE(Face().m_shown);
  EXPECT_TRUE(Frame().Children().empty());
  EXPECT_EQ(m_log.Reported("wizard"), "");
  EXPECT_EQ(m_host.MainWindow(), &Frame());
}

TEST_F(TesseraApp, ABareStartPostsTheWizardSoThatItComesAfterTheWindowStands) {
  m_app->MapWizard();
  ASSERT_TRUE(m_app->InitInstance({}));
  EXPECT_EQ(m_log.Lines().back(), "main show");
  m_host.RunPosted();
  EXPECT_EQ(m_log.Lines().back(), "wizard");
}

TEST_F(TesseraApp, ABareStartThatIsToShowSomethingElseOffersNoWizard) {
  m_app->MapWizard();
  m_app->m_offerWizard = false;
  ASSERT_TRUE(m_app->InitInstance({}));
  m_host.RunPosted();
  EXPECT_EQ(m_log.Lines().back(), "main show");
}

TEST_F(TesseraApp, OptionsAloneOnTheCommandLineAreABareStart) {
  m_app->MapWizard();
  ASSERT_TRUE(m_app->InitInstance({"--unknown", "-x"}));
  m_host.RunPosted();
  EXPECT_EQ(m_log.Lines().back(), "wizard");
}

TEST_F(TesseraApp, WithAFileOnTheCommandLineTheWizardDoesNotStartWhateverAutoStartSays) {
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 1U);
  m_app->MapWizard();
  ASSERT_TRUE(m_app->InitInstance({"--unknown", WriteTraces("web.trc", 2), "second.trc"}));
  m_host.RunUntil([this] { return Face().m_panes[kPaneRowCount] == "2"; });
  m_host.RunPosted();
  EXPECT_EQ(m_log.Reported("wizard"), "");
  ASSERT_EQ(Frame().Children().size(), 1U);
  EXPECT_EQ(Frame().Children()[0]->Title(), "web.trc");
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "2");
  EXPECT_TRUE(Face().m_shown);
}

TEST_F(TesseraApp, TheFileIsOpenedBeforeTheWindowShows) {
  ASSERT_TRUE(m_app->InitInstance({WriteTraces("web.trc", 2)}));
  const auto& lines = m_log.Lines();
  const auto opened = std::find(lines.begin(), lines.end(), "child title web.trc");
  const auto shown = std::find(lines.begin(), lines.end(), "main show");
  ASSERT_NE(opened, lines.end());
  ASSERT_NE(shown, lines.end());
  EXPECT_LT(opened, shown);
}

TEST_F(TesseraApp, AFileOnTheCommandLineThatIsNoTraceFileEndsTheProgramAfterItsBox) {
  EXPECT_FALSE(m_app->InitInstance({m_dir.File("bad.trc", "this is no trace file, but text")}));
  EXPECT_EQ(m_host.Reported(), "box Tessera [stop] \"Invalid format.\" (OK) -> OK\n");
  EXPECT_EQ(m_log.Reported("main show"), "");
  EXPECT_TRUE(Frame().Children().empty());
}

TEST_F(TesseraApp, AMissingFileOnTheCommandLineEndsTheProgramWithoutAMessage) {
  EXPECT_FALSE(m_app->InitInstance({m_dir.File("missing.trc")}));
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(m_log.Reported("main show"), "");
  EXPECT_TRUE(Frame().Children().empty());
}

TEST_F(TesseraApp, WithoutAMainWindowTheProgramEndsQuietly) {
  m_faces.m_refuseFrame = true;
  EXPECT_FALSE(m_app->InitInstance({WriteTraces("web.trc", 2)}));
  EXPECT_EQ(m_host.Reported(), "");
  EXPECT_EQ(m_host.MainWindow(), nullptr);
  EXPECT_EQ(m_host.PostedCount(), 0U);
}

TEST_F(TesseraApp, TheActiveColumnsAreReadAtTheStartAndNotBefore) {
  ColumnFlags stored = {};
  stored[4] = 1;
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", stored.data(), sizeof stored);
  ReadStartupSettings();
  MakeApp();
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
  Start();
  EXPECT_EQ(g_activeColumns, stored);
}

TEST_F(TesseraApp, AFileOnTheCommandLineOpensWithTheActiveColumnsOfTheStore) {
  ColumnFlags stored = {};
  stored[4] = 1;
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", stored.data(), sizeof stored);
  ASSERT_TRUE(m_app->InitInstance({WriteTraces("web.trc", 2)}));
  ASSERT_EQ(Frame().Children().size(), 1U);
  const ListHeader& header = ListOf(*Frame().Children()[0]).List().Header();
  EXPECT_GT(header.ColumnWidth(Column::Time), 0);
  EXPECT_EQ(header.ColumnWidth(Column::Trace), 0);
}

TEST_F(TesseraApp, TraceLimitFromTheStoreIsNotRangeChecked) {
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Trace Limit", 7U);
  ReadStartupSettings();
  Start();
  EXPECT_EQ(g_traceLimit, 7U);
}

TEST_F(TesseraApp, TheTraceFileTemplateIsRegisteredWithItsDocumentString) {
  Start();
  ASSERT_FALSE(m_app->Templates().empty());
  // The first one: it takes a path whose extension no other knows.
  const CMultiDocTemplate& files = *m_app->Templates()[0];
  EXPECT_EQ(&files, m_app->FileTemplate());
  EXPECT_EQ(files.Resource(), 129U);
  std::string parts;
  for (int part = CMultiDocTemplate::windowTitle; part <= CMultiDocTemplate::regFileTypeName;
       ++part)
    parts += "[" + files.GetDocString(static_cast<CMultiDocTemplate::DocStringIndex>(part)) + "]";
  EXPECT_EQ(parts, "[][][Trace File][Trace Files (*.trc)][.trc][TraceFile][Trace File]");
}

TEST_F(TesseraApp, NoPathEverOpensAMonitor) {
  Start();
  m_app->HoldMonitorTemplate();
  for (const char* name : {"web.trc", "Traces sent to web"}) {
    const CDocument* document = Open(WriteTraces(name, 1));
    ASSERT_TRUE(document) << name;
    EXPECT_EQ(document->GetDocTemplate(), m_app->FileTemplate());
  }
  EXPECT_TRUE(m_app->MonitorTemplate()->Documents().empty());
}

TEST_F(TesseraApp, AFileThatIsOpenComesToTheFront) {
  Start();
  const std::string path = WriteTraces("web.trc", 1);
  const CDocument* web = Open(path);
  ASSERT_TRUE(Open(WriteTraces("db.trc", 1)));
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "db.trc");
  EXPECT_EQ(m_app->OpenDocumentFile(path), web);
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "web.trc");
  EXPECT_EQ(Frame().Children().size(), 2U);
}

TEST_F(TesseraApp, OpenAsksForATraceFileAndOpensIt) {
  Start();
  m_host.AnswerFileDialog(WriteTraces("web.trc", 1));
  EXPECT_TRUE(State(ID_FILE_OPEN).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_OPEN));
  ASSERT_EQ(m_host.m_fileRequests.size(), 1U);
  EXPECT_FALSE(m_host.m_fileRequests[0].save);
  ASSERT_FALSE(m_host.m_fileRequests[0].filters.empty());
  EXPECT_EQ(m_host.m_fileRequests[0].filters[0].label, "Trace Files (*.trc)");
  EXPECT_EQ(m_host.m_fileRequests[0].filters[0].patterns, "*.trc");
  ASSERT_EQ(Frame().Children().size(), 1U);
}

TEST_F(TesseraApp, AboutShowsTheVersionLine) {
  Start();
  EXPECT_TRUE(State(ID_APP_ABOUT).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_APP_ABOUT));
  EXPECT_EQ(m_log.Reported(), "about Tessera Version 3.1.0\n");
}

TEST_F(TesseraApp, PrintAndPreviewStayGreyAndPrintSetupWorks) {
  Start();
  EXPECT_FALSE(State(ID_FILE_PRINT).IsEnabled());
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_FALSE(State(ID_FILE_PRINT).IsEnabled());
  EXPECT_FALSE(State(ID_FILE_PRINT_PREVIEW).IsEnabled());
  EXPECT_FALSE(Frame().OnCommand(ID_FILE_PRINT));
  m_app->HoldMonitorTemplate();
  ASSERT_TRUE(m_app->MonitorTemplate()->OpenDocumentFile(nullptr));
  EXPECT_FALSE(State(ID_FILE_PRINT).IsEnabled());
  m_log.Clear();
  EXPECT_TRUE(State(ID_FILE_PRINT_SETUP).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_PRINT_SETUP));
  EXPECT_EQ(m_log.Reported(), "print setup\n");
}

TEST_F(TesseraApp, WhatNobodyTakesStandsDisabledInTheMenus) {
  Start();
  // Without a document nobody prints or copies.
  for (const unsigned id : {ID_FILE_PRINT, ID_EDIT_COPY}) {
    EXPECT_FALSE(State(id).IsEnabled()) << id;
    EXPECT_FALSE(Frame().OnCommand(id)) << id;
  }
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(TesseraApp, TheWizardRunsWhateverIsOpenAndIsGoneAfterwards) {
  Start();
  for (const bool open : {false, true}) {
    if (open) {
      ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
    }
    bool ran = false;
    m_host.AnswerDialog([&](CDialog& dialog) {
      ran = true;
      EXPECT_EQ(&dynamic_cast<CTraceWizardSheet&>(dialog).Program(), m_app.get());
      dialog.EndDialog(CDialog::kIdCancel);
    });
    EXPECT_TRUE(State(ID_FILE_WIZARD).IsEnabled());
    EXPECT_TRUE(Frame().OnCommand(ID_FILE_WIZARD));
    EXPECT_TRUE(ran);
  }
}

TEST_F(TesseraApp, NewWindowShowsTheDocumentASecondTime) {
  Start();
  CTraceFileDoc* document = Open(WriteTraces("web.trc", 3));
  ASSERT_TRUE(document);
  EXPECT_TRUE(State(ID_WINDOW_NEW).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  ASSERT_EQ(Frame().Children().size(), 2U);
  EXPECT_EQ(m_app->FileTemplate()->Documents().size(), 1U);
  EXPECT_EQ(document->Views().size(), 2U);
  EXPECT_EQ(Frame().Children()[0]->Title(), "web.trc:1");
  EXPECT_EQ(Frame().Children()[1]->Title(), "web.trc:2");
  EXPECT_EQ(Frame().MDIGetActive(), Frame().Children()[1].get());
  EXPECT_EQ(ListOf(*Frame().Children()[1]).List().ItemCount(), 3);
  EXPECT_EQ(Face().m_menu, 129U);

  Frame().Children()[1]->OnClose();
  ASSERT_EQ(Frame().Children().size(), 1U);
  EXPECT_EQ(Frame().Children()[0]->Title(), "web.trc");
  EXPECT_EQ(m_app->FileTemplate()->Documents().size(), 1U);
}

TEST_F(TesseraApp, TwoWindowsOfADocumentAreClearedTogether) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 3)));
  Frame().OnCommand(ID_WINDOW_NEW);
  ASSERT_EQ(Frame().Children().size(), 2U);
  EXPECT_TRUE(State(ID_VIEW_SYNCHRONIZE).IsEnabled());
  EXPECT_TRUE(Frame().OnCommand(ID_EDIT_CLEAR_ALL));
  EXPECT_EQ(ListOf(*Frame().Children()[0]).List().ItemCount(), 0);
  EXPECT_EQ(ListOf(*Frame().Children()[1]).List().ItemCount(), 0);
}

TEST_F(TesseraApp, NewWindowNeedsADocument) {
  Start();
  EXPECT_FALSE(State(ID_WINDOW_NEW).IsEnabled());
  Frame().OnCommand(ID_WINDOW_NEW);
  EXPECT_TRUE(Frame().Children().empty());
}

}  // namespace

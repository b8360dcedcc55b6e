// The main frame: panes, bars, sizes, title, menus, dropped files.
#include "shell/main_frame.h"

#include <sys/stat.h>

#include "shell_fixture.h"

namespace {

constexpr auto kMinusOne = static_cast<std::uintptr_t>(-1);

using MainFrame = ShellTest;

TEST_F(MainFrame, BothPanesAreEmptiedAtCreationAndTheMenuIsTheOneWithoutDocuments) {
  ASSERT_TRUE(m_app->InitInstance({}));
  EXPECT_EQ(m_log.Reported(),
            "main pane 59143 \"\"\n"
            "main pane 59144 \"\"\n"
            "main menu 128\n"
            "main title Tessera\n"
            "main show\n");
}

TEST_F(MainFrame, ARowCountOf0Shows0AndMinus1ShowsAnEmptyPane) {
  Start();
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 0);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "0");
  Frame().SendMessage(WM_TRACE_ROWCOUNT, kMinusOne);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "");
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 500000);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "500000");
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 3000000000U);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "3000000000");
}

TEST_F(MainFrame, FilteredWith0OrMinus1EmptiesThePane) {
  Start();
  Frame().SendMessage(WM_TRACE_FILTERED, 1);
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "FILTERED");
  Frame().SendMessage(WM_TRACE_FILTERED, 0);
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "");
  Frame().SendMessage(WM_TRACE_FILTERED, 7);
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "FILTERED");
  Frame().SendMessage(WM_TRACE_FILTERED, kMinusOne);
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "");
}

TEST_F(MainFrame, ThePanesTouchOneAnotherNot) {
  Start();
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 12);
  Frame().SendMessage(WM_TRACE_FILTERED, 1);
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "12");
  EXPECT_EQ(Face().m_panes[kPaneFiltered], "FILTERED");
}

TEST_F(MainFrame, OfThePanesOnlyTheRowCountsHasAnUpdateHandler) {
  Start();
  CCmdUI rows(kPaneRowCount, false, false), filtered(kPaneFiltered, false, false);
  EXPECT_TRUE(Frame().OnUpdateCommand(rows));
  EXPECT_TRUE(rows.IsEnabled());
  EXPECT_FALSE(Frame().OnUpdateCommand(filtered));
  EXPECT_FALSE(filtered.IsEnabled());
}

TEST_F(MainFrame, AnUnknownMessageIsNotTaken) {
  Start();
  EXPECT_EQ(Frame().SendMessage(4711, 1, 2), 0);
  EXPECT_EQ(m_log.Reported(), "");
}

TEST_F(MainFrame, TheBarsAreShownAndHiddenAndTheirItemsChecked) {
  Start();
  for (const unsigned bar : {ID_VIEW_TOOLBAR, ID_VIEW_STATUS_BAR}) {
    EXPECT_TRUE(State(bar).IsEnabled());
    EXPECT_TRUE(State(bar).IsChecked());
    EXPECT_TRUE(Frame().OnCommand(bar));
    EXPECT_FALSE(State(bar, true, true).IsChecked());
    EXPECT_TRUE(Frame().OnCommand(bar));
    EXPECT_TRUE(State(bar).IsChecked());
  }
  EXPECT_EQ(m_log.Reported(),
            "main bar 59392 off\nmain bar 59392 on\nmain bar 59393 off\nmain bar 59393 on\n");
}

TEST_F(MainFrame, HelpCommandsAreTakenWithAndWithoutADocument) {
  Start();
  const auto pressAll = [this] {
    m_log.Clear();
    for (const unsigned id : {ID_HELP_INDEX, ID_DEFAULT_HELP, ID_HELP, ID_CONTEXT_HELP}) {
      EXPECT_TRUE(State(id).IsEnabled()) << id;
      EXPECT_TRUE(Frame().OnCommand(id)) << id;
    }
    return m_log.Reported("help");
  };
  EXPECT_EQ(pressAll(), "help \"\"\nhelp \"\"\nhelp \"window\"\nhelp \"window\"\n");
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_EQ(pressAll(), "help \"\"\nhelp \"\"\nhelp \"list\"\nhelp \"list\"\n");
}

TEST_F(MainFrame, HelpOverADialogOpensThePageOfTheDialog) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  const auto helpOver = [this](unsigned command) {
    m_log.Clear();
    m_host.AnswerDialog([this](CDialog&) { Frame().OnCommand(ID_HELP); });
    Frame().OnCommand(command);
    return m_log.Reported("help");
  };
  EXPECT_EQ(helpOver(ID_VIEW_OPTIONS), "help \"columns\"\n");
  EXPECT_EQ(helpOver(ID_FILE_NEWMONITOR), "help \"monitor\"\n");
  EXPECT_EQ(helpOver(ID_EDIT_FIND), "help \"find\"\n");
  constexpr unsigned kCurrent = kRowFocused | kRowSelected;
  dynamic_cast<CTraceView&>(*Frame().MDIGetActive()->GetActiveView())
      .List()
      .SetItemState(0, kCurrent, kCurrent);
  EXPECT_EQ(helpOver(ID_VIEW_PROPERTIES), "help \"properties\"\n");
  EXPECT_EQ(helpOver(ID_VIEW_FILTER), "help \"filter\"\n");
  m_log.Clear();
  m_host.AnswerDialog([this](CDialog&) { Frame().OnCommand(ID_HELP); });
  CDialog(m_host).DoModal();
  Frame().OnCommand(ID_HELP);
  EXPECT_EQ(m_log.Reported("help"), "help \"list\"\nhelp \"list\"\n")
      << "no page of its own, no dialog";
}

TEST_F(MainFrame, TheFirstRunTakesTheProposedSize) {
  Start();
  EXPECT_EQ(Face().m_widthPx, 1000);
  EXPECT_EQ(Face().m_heightPx, 700);
}

TEST_F(MainFrame, ARestoredSizeIsStoredAndTheNextRunTakesIt) {
  Start();
  Frame().OnSize(SizeType::Restored, 1234, 567);
  EXPECT_EQ(Stored(kRegSettings, "Window Width"), 1234U);
  EXPECT_EQ(Stored(kRegSettings, "Window Height"), 567U);
  EXPECT_EQ(Stored(kRegTraceView, "Window Width"), 0U);
  MakeApp();
  Start();
  EXPECT_EQ(Face().m_widthPx, 1234);
  EXPECT_EQ(Face().m_heightPx, 567);
}

TEST_F(MainFrame, MinimisingMaximisingOrAnEmptySizeLeavesTheStoredSizeAsItWas) {
  Start();
  Frame().OnSize(SizeType::Restored, 1234, 567);
  Frame().OnSize(SizeType::Minimised, 160, 30);
  Frame().OnSize(SizeType::Maximised, 1920, 1080);
  Frame().OnSize(SizeType::Restored, 0, 400);
  Frame().OnSize(SizeType::Restored, 400, 0);
  EXPECT_EQ(Stored(kRegSettings, "Window Width"), 1234U);
  EXPECT_EQ(Stored(kRegSettings, "Window Height"), 567U);
}

TEST_F(MainFrame, AStoredSizeThatNoWindowCanHaveReadsAsTheProposedOne) {
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Width", 4294967295U);
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Height", 0U);
  Start();
  EXPECT_EQ(Face().m_widthPx, 1000);
  EXPECT_EQ(Face().m_heightPx, 700);
}

TEST_F(MainFrame, AStoredSizeJustAboveWhatAWindowCanHaveReadsAsTheProposedOne) {
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Width", 32768U);
  Start();
  EXPECT_EQ(Face().m_widthPx, 1000);
}

TEST_F(MainFrame, AnOddButPossibleStoredSizeIsTaken) {
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Width", 1U);
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Height", 32767U);
  Start();
  EXPECT_EQ(Face().m_widthPx, 1);
  EXPECT_EQ(Face().m_heightPx, 32767);
}

TEST_F(MainFrame, AStoredSizeLargerThanTheScreenIsLimitedToIt) {
  m_faces.m_largestWidthPx = 1920;
  m_faces.m_largestHeightPx = 1053;
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Width", 2800U);
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Height", 1620U);
  Start();
  EXPECT_EQ(Face().m_widthPx, 1920);
  EXPECT_EQ(Face().m_heightPx, 1053);
}

TEST_F(MainFrame, TheStateOfTheWindowIsKeptAndAMinimisedOneLeavesIt) {
  ASSERT_TRUE(m_app->InitInstance({}));
  EXPECT_EQ(m_log.Reported("main show"), "main show\n");
  Frame().OnSize(SizeType::Maximised, 1920, 1080);
  Frame().OnSize(SizeType::Minimised, 160, 30);
  MakeApp();
  m_log.Clear();
  ASSERT_TRUE(m_app->InitInstance({}));
  EXPECT_EQ(m_log.Reported("main show"), "main show maximised\n");
  Frame().OnSize(SizeType::Restored, 1234, 567);
  MakeApp();
  m_log.Clear();
  ASSERT_TRUE(m_app->InitInstance({}));
  EXPECT_EQ(m_log.Reported("main show"), "main show\n");
}

TEST_F(MainFrame, TheStateOfTheChildInFrontIsKeptForTheFirstOneOfTheNextStart) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  ASSERT_TRUE(Open(WriteTraces("db.trc", 1)));
  CMDIChildWnd& behind = *Frame().Children()[0];
  CMDIChildWnd& front = *Frame().Children()[1];
  EXPECT_FALSE(front.BeginsMaximised());
  front.OnSize(SizeType::Maximised, 900, 600);
  behind.OnSize(SizeType::Restored, 400, 300);
  EXPECT_TRUE(front.BeginsMaximised());
  EXPECT_EQ(Stored(kRegTraceView, "Window Width"), 400U);
  front.OnSize(SizeType::Minimised, 160, 30);
  EXPECT_TRUE(front.BeginsMaximised());
  front.OnSize(SizeType::Restored, 500, 300);
  EXPECT_FALSE(front.BeginsMaximised());
}

TEST_F(MainFrame, TabsAreSwitchedAndKeptAndATabTellsNothingOfTheWindowsState) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_FALSE(State(ID_WINDOW_TABS).IsChecked());
  EXPECT_TRUE(Frame().OnCommand(ID_WINDOW_TABS));
  EXPECT_TRUE(State(ID_WINDOW_TABS).IsChecked());
  CMDIChildWnd& child = *Frame().Children()[0];
  child.OnSize(SizeType::Maximised, 900, 600);
  EXPECT_FALSE(child.BeginsMaximised());
  MakeApp();
  m_log.Clear();
  ASSERT_TRUE(m_app->InitInstance({}));
  EXPECT_EQ(m_log.Reported("main tabs"), "main tabs\n");
  EXPECT_TRUE(Frame().OnCommand(ID_WINDOW_TABS));
  MakeApp();
  m_log.Clear();
  ASSERT_TRUE(m_app->InitInstance({}));
  EXPECT_EQ(m_log.Reported("main tabs"), "");
}

TEST_F(MainFrame, CascadeAndTileEndTheTabsAndArrangeIconsDoesNot) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  for (const unsigned id : {ID_WINDOW_CASCADE, ID_WINDOW_TILE_HORZ}) {
    Frame().OnCommand(ID_WINDOW_TABS);
    Frame().OnCommand(ID_WINDOW_ARRANGE);
    EXPECT_TRUE(Frame().AreTabsShown());
    m_log.Clear();
    Frame().OnCommand(id);
    EXPECT_EQ(m_log.Lines().front(), "main windows");
    EXPECT_FALSE(Frame().AreTabsShown());
  }
}

TEST_F(MainFrame, TheMenuIsTheActiveDocumentsAndGoesBackWhenTheLastOneCloses) {
  Start();
  m_app->HoldMonitorTemplate();
  EXPECT_EQ(Face().m_menu, 128U);
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_EQ(Face().m_menu, 129U);
  CDocument* monitor = m_app->MonitorTemplate()->OpenDocumentFile(nullptr);
  ASSERT_TRUE(monitor);
  EXPECT_EQ(Face().m_menu, 130U);
  Frame().Children().front()->ActivateFrame();
  EXPECT_EQ(Face().m_menu, 129U);
  m_app->CloseAllDocuments();
  EXPECT_EQ(Face().m_menu, 128U);
}

TEST_F(MainFrame, TheTitleNamesTheDocumentWhileItsWindowIsMaximised) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_EQ(Face().m_title, "Tessera");
  Frame().m_childMaximised = true;
  Frame().UpdateTitle();
  EXPECT_EQ(Face().m_title, "Tessera - [web.trc]");
  ASSERT_TRUE(Open(WriteTraces("db.trc", 1)));
  EXPECT_EQ(Face().m_title, "Tessera - [db.trc]");
  m_app->CloseAllDocuments();
  EXPECT_EQ(Face().m_title, "Tessera");
}

TEST_F(MainFrame, DroppedFilesAreOpened) {
  Start();
  Frame().OnDropFiles({WriteTraces("web.trc", 1), WriteTraces("db.trc", 1)});
  ASSERT_EQ(m_app->FileTemplate()->Documents().size(), 2U);
  EXPECT_EQ(m_app->FileTemplate()->Documents()[0]->GetTitle(), "web.trc");
  EXPECT_EQ(m_app->FileTemplate()->Documents()[1]->GetTitle(), "db.trc");
}

TEST_F(MainFrame, ADroppedFileThatDoesNotOpenLeavesNoWindowAndTheOthersOpen) {
  Start();
  Frame().OnDropFiles({m_dir.File("missing.trc"), WriteTraces("db.trc", 1)});
  ASSERT_EQ(Frame().Children().size(), 1U);
  EXPECT_EQ(Frame().Children().front()->Title(), "db.trc");
}

TEST_F(MainFrame, WindowCommandsLayTheChildrenOut) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  m_log.Clear();
  for (const unsigned id : {ID_WINDOW_CASCADE, ID_WINDOW_TILE_HORZ, ID_WINDOW_ARRANGE}) {
    EXPECT_TRUE(State(id).IsEnabled()) << id;
    EXPECT_TRUE(Frame().OnCommand(id)) << id;
  }
  EXPECT_EQ(m_log.Reported("layout"), "layout cascade\nlayout tile\nlayout arrange icons\n");
}

TEST_F(MainFrame, FilesThatDoNotOpenAreNamedWithTheReason) {
  Start();
  const std::string empty = m_dir.File("empty.trc", "");
  EXPECT_FALSE(m_app->OpenDocumentFile(empty));
  EXPECT_EQ(Face().m_panes[kPaneMessage], "Cannot open empty.trc: The file is empty");
  EXPECT_EQ(Face().m_paneTips[kPaneMessage], empty + ": The file is empty");
  EXPECT_EQ(m_host.Reported(), "") << "no box";
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], "Cannot open empty.trc: The file is empty") << "it stays";
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1)));
  EXPECT_EQ(Face().m_panes[kPaneMessage], "");

  const std::string fifo = m_dir.File("fifo.trc");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_FALSE(m_app->OpenDocumentFile(fifo));
  EXPECT_EQ(Face().m_panes[kPaneMessage].find("Cannot open fifo.trc: "), 0U);
  Frame().Children().front()->OnActivate(false);
  Frame().Children().front()->OnActivate(true);
  EXPECT_EQ(Face().m_panes[kPaneMessage], "") << "a window that comes to the front takes it away";
}

TEST_F(MainFrame, AFileThatABoxHasSpokenOfIsNotNamedAgain) {
  Start();
  EXPECT_FALSE(m_app->OpenDocumentFile(m_dir.File("other.trc", "no trace file at all")));
  EXPECT_EQ(m_host.Reported(), "box Tessera [stop] \"Invalid format.\" (OK) -> OK\n");
  EXPECT_EQ(Face().m_panes[kPaneMessage], "");
}

TEST_F(MainFrame, WithoutAStatusBarABoxSaysWhyAFileDoesNotOpen) {
  Start();
  Frame().OnCommand(ID_VIEW_STATUS_BAR);
  const std::string empty = m_dir.File("empty.trc", "");
  EXPECT_FALSE(m_app->OpenDocumentFile(empty));
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [warning] \"" + empty + ": The file is empty\" (OK) -> OK\n");
}

TEST_F(MainFrame, OfSeveralDroppedFilesThoseThatFailedAreNamed) {
  Start();
  const std::string empty = m_dir.File("empty.trc", "");
  const std::string other = m_dir.File("other.trc", "no trace file at all");
  Frame().OnDropFiles({WriteTraces("web.trc", 1), empty, other, WriteTraces("db.trc", 1)});
  EXPECT_EQ(m_app->FileTemplate()->Documents().size(), 2U);
  EXPECT_EQ(
      Face().m_panes[kPaneMessage],
      "2 of 4 files did not open: empty.trc (The file is empty), other.trc (Invalid format.)");
  EXPECT_EQ(Face().m_paneTips[kPaneMessage],
            empty + ": The file is empty\n" + other + ": Invalid format.");
  Frame().OnDropFiles({WriteTraces("a.trc", 1), WriteTraces("b.trc", 1)});
  EXPECT_EQ(Face().m_panes[kPaneMessage], "");
  Frame().OnDropFiles({empty});
  EXPECT_EQ(Face().m_panes[kPaneMessage], "Cannot open empty.trc: The file is empty");
}

TEST_F(MainFrame, OfManyThatFailedTheFirstOnesAreNamedAndTheRestCounted) {
  Start();
  std::vector<std::string> paths;
  for (const char* name : {"1.trc", "2.trc", "3.trc", "4.trc", "5.trc"})
    paths.push_back(m_dir.File(name, ""));
  Frame().OnDropFiles(paths);
  EXPECT_EQ(Face().m_panes[kPaneMessage],
            "5 of 5 files did not open: 1.trc (The file is empty), 2.trc (The file is empty), "
            "3.trc (The file is empty) and 2 more");
}

TEST_F(MainFrame, ADamagedFileSaysSoWhileItIsInFront) {
  Start();
  TrcImage image;
  image.Trace("up").Raw(12).Raw(12).Trace("down").Cut(1);
  ASSERT_TRUE(Open(image.WriteTo(m_dir.File("web.trc"))));
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], "damaged: 2 bytes skipped, last record cut");
  EXPECT_EQ(Face().m_paneTips[kPaneMessage],
            "damaged: 2 bytes skipped from byte 63 on, last record cut at byte 65");
  ASSERT_TRUE(Open(WriteTraces("db.trc", 1)));
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], "");
  Frame().Children().front()->ActivateFrame();
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], "damaged: 2 bytes skipped, last record cut");
}

TEST_F(MainFrame, TheRowCountsToolTipSaysOfHowManyInGroupsOfDigits) {
  Start();
  ASSERT_TRUE(Open(WriteTraces("web.trc", 1234)));
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneRowCount], "1234");
  EXPECT_EQ(Face().m_paneTips[kPaneRowCount], "1,234 of 1,234 traces");
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 12);
  Frame().OnIdle();
  EXPECT_EQ(Face().m_paneTips[kPaneRowCount], "12 of 1,234 traces");
  m_app->CloseAllDocuments();
  Frame().OnIdle();
  EXPECT_EQ(Face().m_paneTips[kPaneRowCount], "");
}

}  // namespace

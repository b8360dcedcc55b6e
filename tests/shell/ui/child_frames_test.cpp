#include <QTabBar>
#include <QWindow>
#include <set>

#include "shell_fixture.h"

namespace {

class ChildFramesTest : public ShellTest {
 protected:
  CMDIChildWnd& Child(std::size_t index) { return *Frame().Children()[index]; }
  ChildWindow* WindowOf(std::size_t index) {
    for (QMdiSubWindow* window : Face().Area().subWindowList()) {
      auto* child = static_cast<ChildWindow*>(window);
      if (child->Child() == &Child(index)) return child;
    }
    return nullptr;
  }
  unsigned StoredWidth() { return NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Window Width", 0U); }
};

}  // namespace

TEST_F(ChildFramesTest, ADocumentWithTwoWindowsNumbersTheirTitles) {
  Start();
  Open(TraceFile("web.trc", 3));
  EXPECT_EQ(WindowOf(0)->windowTitle(), QStringLiteral("web.trc"));
  Frame().OnCommand(ID_WINDOW_NEW);
  ASSERT_EQ(Frame().Children().size(), 2u);
  EXPECT_EQ(WindowOf(0)->windowTitle(), QStringLiteral("web.trc:1"));
  EXPECT_EQ(WindowOf(1)->windowTitle(), QStringLiteral("web.trc:2"));
  EXPECT_EQ(Front(), WindowOf(1));
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_TRUE(Until([this] { return Frame().Children().size() == 1; }));
  EXPECT_EQ(WindowOf(0)->windowTitle(), QStringLiteral("web.trc"));
}

TEST_F(ChildFramesTest, ATitleIsShownAsItIs) {
  Start();
  Open(TraceFile("web[*].trc", 3));
  WindowOf(0)->showMaximized();
  Settle();
  EXPECT_EQ(Window().windowHandle()->title(), QStringLiteral("Tessera - [web[*].trc]"));
}

TEST_F(ChildFramesTest, AtAFirstStartWithAFileItsWindowTakesThreeQuartersOfTheRoom) {
  m_app = std::make_unique<CTesseraApp>(m_host, *m_faces);
  ASSERT_TRUE(m_app->InitInstance({TraceFile("a.trc", 3)}));
  ASSERT_TRUE(Until([this] { return !m_app->Frame()->LoadStatus(); }));
  Settle();
  const QSize room = Face().Area().viewport()->size();
  EXPECT_NEAR(WindowOf(0)->width(), room.width() * 3 / 4, 8);
  EXPECT_NEAR(WindowOf(0)->height(), room.height() * 3 / 4, 40) << "the bars came with the window";
}

TEST_F(ChildFramesTest, AWindowOpensAtTheStoredSizeAndTheLastOneSizedSetsTheNext) {
  Start();
  Open(TraceFile("a.trc", 3));
  WindowOf(0)->resize(431, 287);
  EXPECT_TRUE(Until([this] { return StoredWidth() == 431; }));
  Open(TraceFile("b.trc", 3));
  EXPECT_EQ(WindowOf(1)->size(), QSize(431, 287));
}

TEST_F(ChildFramesTest, AStoredWindowLargerThanTheRoomIsMadeToFitIt) {
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Width", 500U);
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Height", 400U);
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Window Width", 2800U);
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Window Height", 1620U);
  m_app = std::make_unique<CTesseraApp>(m_host, *m_faces);
  ASSERT_TRUE(m_app->InitInstance({TraceFile("a.trc", 3)}));
  EXPECT_TRUE(Until([this] { return !m_app->Frame()->LoadStatus(); }));
  Settle();
  const QRect room(QPoint(0, 0), Face().Area().viewport()->size());
  EXPECT_EQ(WindowOf(0)->geometry(), room);
  Open(TraceFile("b.trc", 3));
  Settle();
  EXPECT_EQ(WindowOf(1)->geometry(), room);
  EXPECT_EQ(Face().Area().viewport()->size(), Face().Area().size()) << "no scroll bars";
}

TEST_F(ChildFramesTest, AWindowOpenedUnderAMaximisedOneIsRestoredInsideTheRoom) {
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Window Width", 500U);
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Window Height", 420U);
  Start();
  Open(TraceFile("a.trc", 3));
  WindowOf(0)->showMaximized();
  for (const char* name : {"b.trc", "c.trc", "d.trc"}) Open(TraceFile(name, 3));
  WindowOf(3)->showNormal();
  Settle();
  const QRect room(QPoint(0, 0), Face().Area().viewport()->size());
  std::set<std::pair<int, int>> places;
  for (std::size_t i = 1; i < 4; ++i) {
    Child(i).ActivateFrame();
    Settle();
    EXPECT_FALSE(WindowOf(i)->isMaximized());
    EXPECT_EQ(WindowOf(i)->size(), QSize(500, 420)) << i;
    EXPECT_TRUE(room.contains(WindowOf(i)->geometry())) << i;
    places.insert({WindowOf(i)->x(), WindowOf(i)->y()});
  }
  EXPECT_EQ(places.size(), 3u) << "each has a place of its own";
}

TEST_F(ChildFramesTest, ClosingAMaximisedWindowBringsTheOneUsedBeforeMaximised) {
  Start();
  for (const char* name : {"a.trc", "b.trc", "c.trc", "d.trc"}) Open(TraceFile(name, 3));
  WindowOf(3)->showMaximized();
  Child(1).ActivateFrame();
  Child(2).ActivateFrame();
  Child(3).ActivateFrame();
  Frame().OnCommand(ID_FILE_CLOSE);
  Settle();
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "c.trc");
  EXPECT_EQ(Front(), WindowOf(2));
  EXPECT_TRUE(Front()->isMaximized());
  EXPECT_EQ(Window().windowTitle(), QStringLiteral("Tessera - [c.trc]"));
  Front()->close();
  Settle();
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "b.trc");
  EXPECT_TRUE(Front()->isMaximized());
  Frame().OnCommand(ID_FILE_CLOSE);
  Settle();
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "a.trc");
  EXPECT_TRUE(Front()->isMaximized());
}

TEST_F(ChildFramesTest, ClosingARestoredWindowBringsTheOneUsedBeforeRestored) {
  Start();
  for (const char* name : {"a.trc", "b.trc", "c.trc"}) Open(TraceFile(name, 3));
  Child(1).ActivateFrame();
  Child(0).ActivateFrame();
  Frame().OnCommand(ID_FILE_CLOSE);
  Settle();
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "b.trc");
  EXPECT_FALSE(Front()->isMaximized());
}

TEST_F(ChildFramesTest, ClosingAWindowBehindTheFrontLeavesTheFront) {
  Start();
  for (const char* name : {"a.trc", "b.trc", "c.trc"}) Open(TraceFile(name, 3));
  WindowOf(2)->showMaximized();
  Child(0).OnClose();
  Settle();
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "c.trc");
  EXPECT_TRUE(Front()->isMaximized());
}

TEST_F(ChildFramesTest, TheNextStartBeginsMaximisedWhereTheLastOneWas) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  WindowOf(1)->showMaximized();
  Child(0).ActivateFrame();
  Settle();
  m_app.reset();
  Start();
  Open(TraceFile("a.trc", 3));
  EXPECT_TRUE(Front()->isMaximized());
  Front()->showNormal();
  Settle();
  m_app.reset();
  Start();
  Open(TraceFile("a.trc", 3));
  EXPECT_FALSE(Front()->isMaximized());
}

TEST_F(ChildFramesTest, CtrlF10MaximisesTheFrontWindowAndCtrlF5RestoresIt) {
  Start();
  Open(TraceFile("a.trc", 3));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_F10, Qt::ControlModifier);
  EXPECT_TRUE(Front()->isMaximized());
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_F5, Qt::ControlModifier);
  EXPECT_FALSE(Front()->isMaximized());
  QStringList keys;
  for (const QAction* action : Front()->systemMenu()->actions())
    if (action->text().contains(u'\t')) keys << action->text().remove(u'&');
  EXPECT_EQ(keys.join(u'|').toStdString(), "Restore\tCtrl+F5|Maximize\tCtrl+F10|Close\tCtrl+F4");
}

TEST_F(ChildFramesTest, TileTakesTheWholeRoomAlsoWhereScrollBarsStood) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  WindowOf(0)->move(2000, 2000);
  ASSERT_TRUE(Until([this] { return Face().Area().viewport()->size() != Face().Area().size(); }));
  Frame().OnCommand(ID_WINDOW_TILE_HORZ);
  Settle();
  EXPECT_EQ(WindowOf(0)->geometry().united(WindowOf(1)->geometry()),
            QRect(QPoint(0, 0), Face().Area().size()));
  EXPECT_EQ(Face().Area().viewport()->size(), Face().Area().size());
}

TEST_F(ChildFramesTest, TabsShowTheWindowsOneAtATimeAndGoBackToWhatTheyWere) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  const QSize before = WindowOf(1)->size();
  Frame().OnCommand(ID_WINDOW_TABS);
  Settle();
  auto* tabs = Face().Area().findChild<QTabBar*>();
  ASSERT_TRUE(tabs);
  EXPECT_EQ(tabs->tabText(0) + u'|' + tabs->tabText(1), QStringLiteral("a.trc|b.trc"));
  EXPECT_EQ(tabs->currentIndex(), 1);
  tabs->setCurrentIndex(0);
  EXPECT_TRUE(Until([this] { return Frame().MDIGetActive()->Title() == "a.trc"; }));
  Open(TraceFile("c.trc", 3));
  EXPECT_EQ(tabs->count(), 3);
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "c.trc");
  Frame().OnCommand(ID_FILE_CLOSE);
  Settle();
  EXPECT_EQ(tabs->count(), 2);
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "a.trc") << "the one used before";
  EXPECT_EQ(tabs->currentIndex(), 0);
  emit tabs->tabCloseRequested(0);
  EXPECT_TRUE(Until([this] { return Frame().Children().size() == 1; }));
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "b.trc");
  Frame().OnCommand(ID_WINDOW_TABS);
  Settle();
  EXPECT_FALSE(Face().Area().findChild<QTabBar*>());
  EXPECT_FALSE(Front()->isMaximized());
  EXPECT_EQ(Front()->size(), before);
}

TEST_F(ChildFramesTest, TabsAreKeptOverAStartAndLeaveTheWindowsStateAndSize) {
  Start();
  Open(TraceFile("a.trc", 3));
  WindowOf(0)->resize(431, 287);
  ASSERT_TRUE(Until([this] { return StoredWidth() == 431; }));
  Frame().OnCommand(ID_WINDOW_TABS);
  Settle();
  m_app.reset();
  Start();
  Open(TraceFile("a.trc", 3));
  Settle();
  EXPECT_TRUE(Face().Area().findChild<QTabBar*>());
  EXPECT_EQ(WindowOf(0)->width(), Face().Area().width());
  EXPECT_EQ(StoredWidth(), 431u);
  Frame().OnCommand(ID_WINDOW_TILE_HORZ);
  Settle();
  EXPECT_FALSE(Face().Area().findChild<QTabBar*>());
  EXPECT_FALSE(Frame().AreTabsShown());
  EXPECT_EQ(WindowOf(0)->size(), Face().Area().size());
}

TEST_F(ChildFramesTest, AMaximisedOrMinimisedWindowLeavesTheStoredSize) {
  Start();
  Open(TraceFile("a.trc", 3));
  WindowOf(0)->resize(431, 287);
  ASSERT_TRUE(Until([this] { return StoredWidth() == 431; }));
  WindowOf(0)->showMaximized();
  ASSERT_TRUE(Until([this] { return WindowOf(0)->width() != 431; }));
  Settle();
  EXPECT_EQ(StoredWidth(), 431u);
  WindowOf(0)->showMinimized();
  Settle();
  EXPECT_EQ(StoredWidth(), 431u);
  WindowOf(0)->showNormal();
  Settle();
  EXPECT_EQ(StoredWidth(), 431u);
}

TEST_F(ChildFramesTest, TheMainTitleNamesAMaximisedChildAndFollowsTheActiveOne) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  EXPECT_EQ(Window().windowTitle(), QStringLiteral("Tessera"));
  WindowOf(1)->showMaximized();
  EXPECT_TRUE(
      Until([this] { return Window().windowTitle() == QLatin1String("Tessera - [b.trc]"); }));
  Child(0).ActivateFrame();
  EXPECT_TRUE(Until([this] {
    return Window().windowTitle() == QLatin1String("Tessera - [a.trc]");
  })) << Window().windowTitle().toStdString();
  EXPECT_TRUE(WindowOf(0)->isMaximized());  // the state passes to the one that comes to the front
  WindowOf(0)->showNormal();
  EXPECT_TRUE(Until([this] { return Window().windowTitle() == QLatin1String("Tessera"); }));
}

TEST_F(ChildFramesTest, AWindowOpenedBesideAMaximisedOneIsMaximisedToo) {
  Start();
  Open(TraceFile("a.trc", 3));
  WindowOf(0)->showMaximized();
  Open(TraceFile("b.trc", 3));
  EXPECT_TRUE(WindowOf(1)->isMaximized());
  EXPECT_TRUE(
      Until([this] { return Window().windowTitle() == QLatin1String("Tessera - [b.trc]"); }));
  Frame().OnCommand(ID_FILE_CLOSE);
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_TRUE(Until([this] { return Window().windowTitle() == QLatin1String("Tessera"); }));
}

TEST_F(ChildFramesTest, AMaximisedDocumentThatIsRetitledRetitlesTheMainWindow) {
  Start();
  CTraceFileDoc* document = Open(TraceFile("a.trc", 3));
  WindowOf(0)->showMaximized();
  document->SetTitle("other.trc");
  EXPECT_TRUE(
      Until([this] { return Window().windowTitle() == QLatin1String("Tessera - [other.trc]"); }));
}

TEST_F(ChildFramesTest, TheActiveChildStaysActiveWhileADialogIsUp) {
  Start();
  Open(TraceFile("a.trc", 3));
  const CMDIChildWnd* active = Frame().MDIGetActive();
  ASSERT_TRUE(active);
  const CMDIChildWnd* during = nullptr;
  OnModal([&](QWidget* dialog) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(dialog));
    during = Frame().MDIGetActive();
    dialog->close();
  });
  Frame().OnCommand(ID_APP_ABOUT);
  EXPECT_EQ(during, active);
  EXPECT_EQ(Frame().MDIGetActive(), active);
}

TEST_F(ChildFramesTest, ClosingTheFrontWindowBringsAnotherToTheFront) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_TRUE(Until([this] { return Frame().Children().size() == 1; }));
  ASSERT_TRUE(Frame().MDIGetActive());
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "a.trc");
  EXPECT_EQ(Front(), WindowOf(0));
}

TEST_F(ChildFramesTest, CtrlF4ClosesTheFrontWindowAndCtrlWOpensTheWizardInstead) {
  Start();
  Open(TraceFile("a.trc", 3));
  QWidget* list = QApplication::focusWidget();
  ASSERT_TRUE(list);
  EXPECT_EQ(list->window(), &Window());
  OnModal([](QWidget* wizard) {
    EXPECT_EQ(wizard->windowTitle(), "Trace Wizard: Welcome");
    QTest::keyClick(wizard, Qt::Key_Escape);
  });
  QTest::keyClick(list, Qt::Key_W, Qt::ControlModifier);
  EXPECT_EQ(Frame().Children().size(), 1u);
  Window().activateWindow();  // offscreen no window manager does
  ASSERT_TRUE(QTest::qWaitForWindowActive(&Window()));
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_F4, Qt::ControlModifier);
  EXPECT_TRUE(Until([this] { return Frame().Children().empty(); }));
}

TEST_F(ChildFramesTest, CtrlTabGoesToTheNextWindow) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  ASSERT_TRUE(QApplication::focusWidget());
  QTest::keyPress(QApplication::focusWidget(), Qt::Key_Tab, Qt::ControlModifier);
  QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Control);
  EXPECT_TRUE(Until([this] { return Frame().MDIGetActive()->Title() == "a.trc"; }));
}

TEST_F(ChildFramesTest, TheWindowsOwnCloseButtonAsksTheDocument) {
  Start();
  CTraceFileDoc* document = Open(TraceFile("a.trc", 3));
  document->SetModifiedFlag(true);
  OnModal([](QWidget* box) { QTest::keyClick(box, Qt::Key_Escape); });
  WindowOf(0)->close();
  EXPECT_EQ(Frame().Children().size(), 1u);
  document->SetModifiedFlag(false);
  WindowOf(0)->close();
  EXPECT_TRUE(Frame().Children().empty());
}

TEST_F(ChildFramesTest, TwoDocumentsTiledFillTheAreaAndDoNotOverlap) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  Frame().OnCommand(ID_WINDOW_TILE_HORZ);
  const QRect room = Face().Area().viewport()->rect();
  const QRect front = WindowOf(1)->geometry(), other = WindowOf(0)->geometry();
  EXPECT_FALSE(front.intersects(other));
  EXPECT_EQ(front.united(other), room);
  EXPECT_EQ(front.width(), room.width());
  EXPECT_LT(front.top(), other.top());
}

TEST_F(ChildFramesTest, FiveWindowsTiledFillTheAreaAndDoNotOverlap) {
  Start();
  for (const char* name : {"a.trc", "b.trc", "c.trc", "d.trc", "e.trc"}) Open(TraceFile(name, 1));
  WindowOf(0)->showMaximized();
  Frame().OnCommand(ID_WINDOW_TILE_HORZ);
  int area = 0;
  QRect all;
  for (const QMdiSubWindow* window : Face().Area().subWindowList()) {
    area += window->width() * window->height();
    all = all.united(window->geometry());
  }
  const QRect room = Face().Area().viewport()->rect();
  EXPECT_EQ(all, room);
  EXPECT_EQ(area, room.width() * room.height());
}

TEST_F(ChildFramesTest, CascadedWindowsLieOneTitleFurtherEach) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  Frame().OnCommand(ID_WINDOW_CASCADE);
  const QPoint back = WindowOf(0)->pos(), front = WindowOf(1)->pos();
  EXPECT_GT(front.x(), back.x());
  EXPECT_GT(front.y(), back.y());
  EXPECT_EQ(WindowOf(0)->size(), WindowOf(1)->size());
}

TEST_F(ChildFramesTest, IconsAreArrangedAlongTheBottom) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  WindowOf(0)->showMinimized();
  WindowOf(0)->move(40, 10);
  Frame().OnCommand(ID_WINDOW_ARRANGE);
  const QRect room = Face().Area().viewport()->rect();
  EXPECT_EQ(WindowOf(0)->geometry().bottomLeft(), room.bottomLeft());
}

TEST_F(ChildFramesTest, ManyWindowsOpenedAndClosedInAnyOrderLeaveNothingBehind) {
  Start();
  for (int i = 0; i < 8; ++i) Open(TraceFile("f" + std::to_string(i) + ".trc", 2));
  while (!Frame().Children().empty()) {
    Child(Frame().Children().size() / 2).OnClose();
    QApplication::processEvents();
    EXPECT_EQ(Frame().MDIGetActive() == nullptr, Frame().Children().empty());
  }
  EXPECT_TRUE(Until([this] { return Face().Area().subWindowList().isEmpty(); }));
}

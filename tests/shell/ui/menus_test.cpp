#include "shell/ui/menus.h"

#include <QAbstractScrollArea>
#include <QAccessible>
#include <QMenuBar>

#include "shell_fixture.h"

namespace {

std::string Dump(const QMenu& menu) {
  std::string text;
  for (const QAction* action : menu.actions())
    text += (action->isSeparator() ? "-" : action->text().toStdString()) + "\n";
  return text;
}

std::string Expected(const MenuPopup& popup) {
  std::string text;
  for (const MenuItem& item : popup.items) text += (item.id == 0 ? "-" : item.text) + "\n";
  return text;
}

class MenusTest : public ShellTest {
 protected:
  QMenu* Menu(const char* title) {
    for (QAction* action : Window().menuBar()->actions()) {
      if (action->text() == QLatin1String(title)) return action->menu();
    }
    return nullptr;
  }
  // As when the user opens it.
  QMenu* Opened(const char* title) {
    QMenu* menu = Menu(title);
    if (menu) emit menu->aboutToShow();
    return menu;
  }
  QAction* Item(QMenu& menu, unsigned id) {
    for (QAction* action : menu.actions()) {
      if (action->data().toUInt() == id) return action;
    }
    return nullptr;
  }
};

// What a client of the accessibility bus finds below the menu bar, one line an item. Each is asked
// for as the bus does it: by the interface that was made when the item was first met.
std::string Met(QAccessibleInterface* item, int depth = 0) {
  if (!item || !item->isValid()) return std::string(depth, ' ') + "gone\n";
  std::string text = std::string(depth, ' ') + item->text(QAccessible::Name).toStdString() + "\n";
  for (int i = 0; i < item->childCount(); ++i) text += Met(item->child(i), depth + 1);
  return text;
}

}  // namespace

TEST_F(MenusTest, ItemsThatAnAccessibilityClientHasMetAreStillThereWhenTheBarComesBack) {
  Start();
  QAccessibleInterface* bar = QAccessible::queryAccessibleInterface(Window().menuBar());
  ASSERT_TRUE(bar);
  const std::string bare = Met(bar);
  EXPECT_NE(bare.find("Open"), std::string::npos) << bare;
  const std::string path = TraceFile("a.trc", 3);
  Open(path);
  const std::string withFile = Met(bar);
  EXPECT_NE(withFile.find("Export..."), std::string::npos) << withFile;
  EXPECT_EQ(withFile.find("gone"), std::string::npos) << withFile;
  const QAction* const exporting = Item(*Menu("&File"), ID_FILE_EXPORT);
  for (int turn = 0; turn < 2; ++turn) {
    ASSERT_TRUE(Frame().OnCommand(ID_FILE_CLOSE));
    ASSERT_TRUE(Until([this] { return !Menu("&Window"); }));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(Met(bar).find("gone"), std::string::npos) << Met(bar);
    Open(path);
    EXPECT_EQ(Met(bar), withFile);
    EXPECT_EQ(Item(*Opened("&File"), ID_FILE_EXPORT), exporting);
  }
}

TEST_F(MenusTest, AnItemOfAWindowThatHasGoneDoesNothing) {
  Start();
  Open(TraceFile("a.trc", 1));
  Open(TraceFile("b.trc", 1));
  const QPointer<QAction> first = Opened("&Window")->actions().at(7);
  ASSERT_EQ(first->text(), QStringLiteral("&1 a.trc"));
  Frame().Children().front()->OnClose();
  ASSERT_TRUE(first);
  first->trigger();
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "b.trc");
  Window().m_idle();
  EXPECT_EQ(Dump(*Menu("&Window")).find("a.trc"), std::string::npos);
}

TEST_F(MenusTest, EachResourceGivesAWholeBarWithTheExactTextsInOrder) {
  Start();
  for (const unsigned resource :
       {IDR_MAINFRAME, IDR_TRACEFILE, IDR_MONITOR, IDR_CONFIG, IDR_SOURCE}) {
    Face().SetMenu(resource);
    const QList<QAction*> bar = Window().menuBar()->actions();
    const auto& popups = MenuOf(resource);
    ASSERT_EQ(static_cast<std::size_t>(bar.size()), popups.size()) << resource;
    for (std::size_t i = 0; i < popups.size(); ++i) {
      const QAction* title = bar[static_cast<int>(i)];
      EXPECT_EQ(title->text().toStdString(), popups[i].title);
      emit title->menu()->aboutToShow();
      EXPECT_EQ(Dump(*title->menu()), Expected(popups[i])) << resource << " " << popups[i].title;
    }
  }
}

TEST_F(MenusTest, AMenuInsideOfAnotherHasItsItemsWithTheirStates) {
  Start();
  Open(TraceFile("a.trc", 3));
  const auto inside = [this]() -> QMenu* {
    for (const QAction* action : Opened("&View")->actions())
      if (action->menu()) return action->menu();
    return nullptr;
  };
  ASSERT_TRUE(inside());
  EXPECT_EQ(inside()->title(), QStringLiteral("Time Colum&ns"));
  EXPECT_EQ(Dump(*inside()), "&Delta\n&Since\n&Wall Time\n");
  Item(*inside(), ID_VIEW_TIMEWALL)->trigger();
  EXPECT_TRUE(Item(*inside(), ID_VIEW_TIMEWALL)->isChecked());
  EXPECT_FALSE(Item(*inside(), ID_VIEW_TIMEDELTA)->isChecked());
}

TEST_F(MenusTest, TheTextAfterTheTabIsShownAsItStandsAndNoKeyIsDerived) {
  Start();
  Face().SetMenu(IDR_MONITOR);
  QAction* item = Item(*Opened("&View"), ID_VIEW_SYNCHRONIZE);
  ASSERT_TRUE(item);
  EXPECT_EQ(item->text(), QStringLiteral("Synchroni&ze\tAlt-S"));
  EXPECT_TRUE(item->shortcut().isEmpty());
  Face().SetMenu(IDR_TRACEFILE);
  EXPECT_EQ(Item(*Opened("&View"), ID_VIEW_SYNCHRONIZE)->text(),
            QStringLiteral("Synchroni&ze\tAlt+S"));
}

TEST_F(MenusTest, TheBarIsThatOfTheActiveDocumentAndGoesBackWithTheLastOne) {
  Start();
  EXPECT_FALSE(Menu("&Window"));
  Open(TraceFile("a.trc", 3));
  ASSERT_TRUE(Menu("&Window"));
  ASSERT_TRUE(Frame().OnCommand(ID_FILE_CLOSE));
  EXPECT_TRUE(Until([this] { return !Menu("&Window"); }));
}

TEST_F(MenusTest, NoTitleOfABarHasAMnemonicThatIsAnAccelerator) {
  for (const unsigned resource :
       {IDR_MAINFRAME, IDR_TRACEFILE, IDR_MONITOR, IDR_CONFIG, IDR_SOURCE}) {
    for (const MenuPopup& popup : MenuOf(resource)) {
      const QKeySequence key = QKeySequence::mnemonic(QString::fromStdString(popup.title));
      for (const Accelerator& accelerator : Accelerators())
        EXPECT_NE(key, QKeySequence(QString::fromLatin1(accelerator.key))) << popup.title;
    }
  }
}

TEST_F(MenusTest, StatesAreBroughtUpToDateBeforeAMenuOpens) {
  Start();
  CTraceFileDoc* document = Open(TraceFile("a.trc", 3));
  QAction* item = Item(*Opened("&View"), ID_VIEW_SYNCHRONIZE);
  EXPECT_FALSE(item->isEnabled());  // one view has no other to follow it
  ASSERT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  item = Item(*Opened("&View"), ID_VIEW_SYNCHRONIZE);
  EXPECT_TRUE(item->isEnabled());
  EXPECT_FALSE(item->isChecked());
  item->trigger();
  EXPECT_TRUE(document->m_synchronize);
  EXPECT_TRUE(Item(*Opened("&View"), ID_VIEW_SYNCHRONIZE)->isChecked());
}

TEST_F(MenusTest, CommandsWithoutAHandlerStandInTheMenuAndAreDisabled) {
  Start();
  Open(TraceFile("a.trc", 3));
  QMenu* file = Opened("&File");
  for (const unsigned id : {ID_FILE_PRINT, ID_FILE_PRINT_PREVIEW}) {
    ASSERT_TRUE(Item(*file, id));
    EXPECT_FALSE(Item(*file, id)->isEnabled());
  }
  EXPECT_TRUE(Item(*file, ID_FILE_OPEN)->isEnabled());
}

TEST_F(MenusTest, AnItemShowsItsPromptInTheStatusBarAndAButtonItsToolTip) {
  Start();
  Open(TraceFile("a.trc", 3));
  QMenu* file = Opened("&File");
  QAction* open = Item(*file, ID_FILE_OPEN);
  EXPECT_EQ(open->toolTip(), QStringLiteral("Open"));
  open->showStatusText(&Window());
  EXPECT_EQ(Face().Panes().currentMessage(), QStringLiteral("Open an existing file"));
}

TEST_F(MenusTest, TheRecentFilesStandInTheFileMenuAndOpen) {
  Start();
  EXPECT_FALSE(Opened("&File")->actions().isEmpty());
  EXPECT_NE(Dump(*Opened("&File")).find("\nRecent File\n"), std::string::npos);
  const std::string path = TraceFile("a&b.trc", 3);
  Open(path);
  ASSERT_TRUE(Frame().OnCommand(ID_FILE_CLOSE));
  QMenu* file = Opened("&File");
  QAction* recent = nullptr;
  for (QAction* action : file->actions()) {
    if (action->text().startsWith(QLatin1String("&1 "))) recent = action;
  }
  ASSERT_TRUE(recent) << Dump(*file);
  EXPECT_TRUE(recent->text().contains(QLatin1String("a&&b.trc")));  // no mnemonic of the name's own
  recent->trigger();
  EXPECT_EQ(m_app->FileTemplate()->Documents().size(), 1u);
}

TEST_F(MenusTest, TheOpenWindowsFollowInTheWindowMenuAndComeToTheFront) {
  Start();
  Open(TraceFile("a.trc", 1));
  Open(TraceFile("b.trc", 1));
  QMenu* window = Opened("&Window");
  const QList<QAction*> items = window->actions();
  ASSERT_GE(items.size(), 2);
  QAction* first = items[items.size() - 2];
  QAction* second = items[items.size() - 1];
  EXPECT_EQ(first->text(), QStringLiteral("&1 a.trc"));
  EXPECT_EQ(second->text(), QStringLiteral("&2 b.trc"));
  EXPECT_TRUE(second->isChecked());
  EXPECT_FALSE(first->isChecked());
  first->trigger();
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "a.trc");
}

TEST_F(MenusTest, ThePopUpOpensAtTheScreenPositionGivenWithItsOwnTextsAndStates) {
  Start();
  Open(TraceFile("a.trc", 3));
  const QPoint wanted = Window().mapToGlobal(QPoint(60, 90));
  std::string texts;
  QPoint at;
  QTimer::singleShot(0, qApp, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    texts = Dump(*menu);
    at = menu->pos();
    EXPECT_TRUE(Item(*menu, ID_EDIT_CLEAR_ALL)->isEnabled());
    EXPECT_FALSE(Item(*menu, ID_VIEW_SYNCHRONIZE)->isEnabled());
    menu->close();
  });
  Face().TrackPopupMenu(IDR_TRACE_POPUP, wanted.x(), wanted.y(), {});
  EXPECT_EQ(at, wanted);
  EXPECT_EQ(texts, Expected(MenuOf(IDR_TRACE_POPUP).front()));
  // The menu bar's own text of a shared command is not the pop-up's.
  EXPECT_EQ(Item(*Opened("&Edit"), ID_EDIT_FIND)->text(), QStringLiteral("&Find\tCtrl+F"));
}

TEST_F(MenusTest, ACommandOfThePopUpIsRoutedToTheActiveViewAndDocument) {
  Start();
  CTraceFileDoc* document = Open(TraceFile("a.trc", 3));
  QTimer::singleShot(0, qApp, [this] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    menu->setActiveAction(Item(*menu, ID_EDIT_CLEAR_ALL));
    QTest::keyClick(menu, Qt::Key_Return);
  });
  Face().TrackPopupMenu(IDR_TRACE_POPUP, 10, 10, {});
  EXPECT_EQ(document->m_traces.size(), 0u);
}

TEST_F(MenusTest, ShiftF10RaisesThePopUpAtTheFocusedRow) {
  Start();
  Open(TraceFile("a.trc", 3));
  auto* list = qobject_cast<QAbstractScrollArea*>(QApplication::focusWidget());
  ASSERT_TRUE(list);
  std::string texts;
  QPoint at;
  QTimer::singleShot(0, qApp, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(menu);
    texts = Dump(*menu);
    at = menu->pos();
    menu->close();
  });
  QTest::keyClick(list, Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_EQ(texts, Expected(MenuOf(IDR_TRACE_POPUP).front()) +
                       "-\nCopy Row&s As\n&Mark\tCtrl+D\nMark Colo&ur\n&Note...\tCtrl+Shift+D\n");
  EXPECT_TRUE(
      QRect(list->viewport()->mapToGlobal(QPoint(0, 0)), list->viewport()->size()).contains(at));
}

// A window manager can close the window from outside although the pop-up has the mouse.
TEST_F(MenusTest, ClosingTheProgramWhileThePopUpIsUpEndsBoth) {
  Start();
  Open(TraceFile("a.trc", 3));
  auto* list = qobject_cast<QAbstractScrollArea*>(QApplication::focusWidget());
  ASSERT_TRUE(list);
  QTimer::singleShot(0, qApp, [this] {
    ASSERT_TRUE(QApplication::activePopupWidget());
    Window().close();
  });
  const QPoint position(20, 60);
  QContextMenuEvent asked(QContextMenuEvent::Mouse, position, list->mapToGlobal(position));
  QCoreApplication::sendEvent(list->viewport(), &asked);
  EXPECT_TRUE(Until([this] { return m_closed == 1; }));
  EXPECT_FALSE(QApplication::activePopupWidget());
}

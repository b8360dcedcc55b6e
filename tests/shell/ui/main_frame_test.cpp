#include <QAccessible>
#include <QMessageBox>
#include <QMimeData>
#include <QMouseEvent>
#include <QScreen>
#include <QToolButton>

#include "shell/menus/menu_resources.h"
#include "shell_fixture.h"

namespace {

class MainFrameTest : public ShellTest {
 protected:
  unsigned Stored(const char* key, const char* name) {
    return NtRegGet(HKEY_CURRENT_USER, key, name, 0U);
  }
  std::unique_ptr<QMimeData> Urls(const std::vector<QUrl>& urls) {
    auto data = std::make_unique<QMimeData>();
    data->setUrls(QList<QUrl>(urls.begin(), urls.end()));
    return data;
  }
  bool Drop(const QMimeData& data) {
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(&Window(), &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&Window(), &drop);
    return drop.isAccepted();
  }
};

}  // namespace

TEST_F(MainFrameTest, ABareStartShowsTheEmptyFrame) {
  Start();
  EXPECT_TRUE(Window().isVisible());
  EXPECT_EQ(Window().windowTitle(), QStringLiteral("Tessera"));
  EXPECT_TRUE(Frame().Children().empty());
  EXPECT_TRUE(Face().Area().subWindowList().isEmpty());
}

TEST_F(MainFrameTest, ThePanesStandInOrderAndAreSizedByTheirTexts) {
  Start();
  QApplication::processEvents();
  int right = 0;
  const std::vector<StatusIndicator> indicators = StatusIndicators();
  std::vector<const QLabel*> panes;
  for (const QLabel* pane : Face().Panes().findChildren<QLabel*>()) panes.push_back(pane);
  ASSERT_EQ(panes.size(), indicators.size());
  for (std::size_t i = 0; i < panes.size(); ++i) {
    EXPECT_GE(panes[i]->x(), right) << i;
    right = panes[i]->x() + panes[i]->width();
    const QString sizing = QString::fromLatin1(indicators[i].text);
    EXPECT_GE(panes[i]->width(), panes[i]->fontMetrics().horizontalAdvance(sizing)) << i;
  }
}

TEST_F(MainFrameTest, ThePanesShowRowCountAndFilterStateAndAreEmptyAtTheStart) {
  Start();
  EXPECT_EQ(Face().Panes().PaneText(kPaneRowCount), QString());
  EXPECT_EQ(Face().Panes().PaneText(kPaneFiltered), QString());
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 0);
  EXPECT_EQ(Face().Panes().PaneText(kPaneRowCount), QStringLiteral("0"));
  Frame().SendMessage(WM_TRACE_FILTERED, 1);
  EXPECT_EQ(Face().Panes().PaneText(kPaneFiltered), QStringLiteral("FILTERED"));
}

TEST_F(MainFrameTest, TheFiltersTextStandsThroughIdle) {
  Start();
  Frame().SendMessage(WM_TRACE_FILTERED, 1);
  // The window's own idle has come by when it has brought a command's state up to date.
  QAction* const open = Face().Actions().Action(ID_FILE_OPEN);
  open->setEnabled(false);
  ASSERT_TRUE(Until([open] { return open->isEnabled(); }));
  EXPECT_EQ(Face().Panes().PaneText(kPaneFiltered), QStringLiteral("FILTERED"));
}

TEST_F(MainFrameTest, TheRowCountIsThatOfTheActiveView) {
  Start();
  Open(TraceFile("a.trc", 12));
  EXPECT_TRUE(
      Until([this] { return Face().Panes().PaneText(kPaneRowCount) == QStringLiteral("12"); }));
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_TRUE(Until([this] { return Face().Panes().PaneText(kPaneRowCount).isEmpty(); }));
}

TEST_F(MainFrameTest, AFileThatIsCutWhileItIsOpenIsReportedInListAndTree) {
  Start();
  const std::string path = TraceFile("a.trc", 2000);
  Open(path);
  const auto reported = [this] { return Face().Panes().PaneText(kPaneMessage); };
  std::ofstream(path, std::ios::binary | std::ios::app) << "x";
  QAction* const open = Face().Actions().Action(ID_FILE_OPEN);
  open->setEnabled(false);
  ASSERT_TRUE(Until([open] { return open->isEnabled(); })) << "an idle has come by";
  EXPECT_EQ(reported(), QString()) << "what is appended is none of its traces";
  const auto size = std::filesystem::file_size(path);
  std::filesystem::resize_file(path, size - 1 - 1234);
  const QString words =
      QStringLiteral("damaged: the file has become shorter, 1,234 bytes are missing");
  EXPECT_TRUE(Until([&] { return reported() == words; })) << reported().toStdString();
  Frame().OnCommand(ID_VIEW_PROC);
  Settle();
  Face().Panes().SetPaneText(kPaneMessage, {});
  EXPECT_TRUE(Until([&] { return reported() == words; }))
      << "the tree: " << reported().toStdString();
  const std::string other = TraceFile("b.trc", 3);
  Open(other);
  EXPECT_TRUE(Until([&] { return reported().isEmpty(); })) << "it is of the window in front";
}

TEST_F(MainFrameTest, ARowCountOfMoreThanSixDigitsKeepsItsDistanceFromTheLine) {
  Start();
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 4294967294U);
  QLabel* const pane = Face().Panes().findChildren<QLabel*>().back();
  ASSERT_EQ(pane->text(), QStringLiteral("4294967294"));
  const int text = pane->fontMetrics().horizontalAdvance(pane->text());
  EXPECT_TRUE(Until([&] { return pane->contentsRect().width() >= text; }));
  EXPECT_GT(pane->contentsRect().left(), 0);
}

TEST_F(MainFrameTest, TheKeyboardPanesShowTheLocksThatAreOn) {
  Start();
  Face().Panes().ShowLocks({true, false, true});
  EXPECT_EQ(Face().Panes().PaneText(kPaneCaps), QStringLiteral("CAP"));
  EXPECT_EQ(Face().Panes().PaneText(kPaneNum), QString());
  EXPECT_EQ(Face().Panes().PaneText(kPaneScroll), QStringLiteral("SCRL"));
  Face().Panes().ShowLocks({});
  EXPECT_EQ(Face().Panes().PaneText(kPaneCaps), QString());
}

TEST_F(MainFrameTest, TheToolBarHoldsItsButtonsAndSeparatorsInOrderEachWithAPicture) {
  Start();
  const QList<QAction*> actions = Face().ToolBar().actions();
  const std::vector<unsigned>& wanted = ToolBarButtons();
  ASSERT_EQ(static_cast<std::size_t>(actions.size()), wanted.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const QAction* action = actions[static_cast<int>(i)];
    EXPECT_EQ(action->data().toUInt(), wanted[i]);
    EXPECT_EQ(action->isSeparator(), wanted[i] == 0);
    if (wanted[i] == 0) continue;
    EXPECT_FALSE(action->icon().isNull()) << wanted[i];
    EXPECT_FALSE(action->toolTip().isEmpty()) << wanted[i];
  }
}

TEST_F(MainFrameTest, AScreenReaderHearsEachPanesTextAndWhatItTellsOf) {
  Start();
  Frame().SendMessage(WM_TRACE_ROWCOUNT, 1234);
  Face().Panes().ShowLocks({true, false, false});
  QStringList heard;
  for (QLabel* pane : Face().Panes().findChildren<QLabel*>()) {
    const QAccessibleInterface* said = QAccessible::queryAccessibleInterface(pane);
    ASSERT_NE(said, nullptr);
    heard << said->text(QAccessible::Description) + QLatin1Char('=') +
                 said->text(QAccessible::Name);
  }
  EXPECT_EQ(heard.join(QLatin1Char('|')).toStdString(),
            "Message=|Time zone=|Caps Lock=CAP|Num Lock=|Scroll Lock=|Filter=|Rows=1234");
}

TEST_F(MainFrameTest, AScreenReaderHearsEachButtonByItsToolTip) {
  Start();
  QStringList heard;
  for (QAction* action : Face().ToolBar().actions()) {
    if (action->isSeparator()) continue;
    QWidget* button = Face().ToolBar().widgetForAction(action);
    heard << QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name);
  }
  EXPECT_EQ(heard.join(QLatin1Char('|')).toStdString(),
            "Erase All|Open|Save|Options|Procedure View|Synchronize|Pause|Copy|Find");
}

TEST_F(MainFrameTest, AButtonIsSharpAtTwiceTheSizeAndPalerWhenDisabled) {
  Start();
  const QIcon icon = Face().Actions().Action(ID_EDIT_FIND)->icon();
  const QImage once = icon.pixmap(QSize(16, 16), 1.0).toImage();
  const QImage twice = icon.pixmap(QSize(16, 16), 2.0).toImage();
  EXPECT_EQ(once.size(), QSize(16, 16));
  EXPECT_EQ(twice.size(), QSize(32, 32));
  EXPECT_NE(twice.convertToFormat(QImage::Format_ARGB32),
            once.scaled(32, 32).convertToFormat(QImage::Format_ARGB32));
  const auto ink = [](const QImage& image) {
    int alpha = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) alpha += qAlpha(image.pixel(x, y));
    return alpha;
  };
  const QImage disabled = icon.pixmap(QSize(16, 16), 1.0, QIcon::Disabled).toImage();
  EXPECT_GT(ink(disabled), 0);
  EXPECT_LT(ink(disabled), ink(once));
}

TEST_F(MainFrameTest, ButtonsFollowTheStateOfTheirCommandsByThemselves) {
  Start();
  QAction* clear = Face().Actions().Action(ID_EDIT_CLEAR_ALL);
  EXPECT_TRUE(Until([clear] { return !clear->isEnabled(); }));
  CTraceFileDoc* document = Open(TraceFile("a.trc", 3));
  EXPECT_TRUE(Until([clear] { return clear->isEnabled(); }));
  clear->trigger();
  EXPECT_EQ(document->m_traces.size(), 0u);
  EXPECT_TRUE(Until([clear] { return !clear->isEnabled(); }));
}

TEST_F(MainFrameTest, AButtonIsNotPressedAnyMoreWhenNobodyTakesItsCommand) {
  Start();
  Open(TraceFile("a.trc", 3));
  QAction* tree = Face().Actions().Action(ID_VIEW_PROC);
  tree->trigger();
  EXPECT_TRUE(Until([tree] { return tree->isChecked(); }));
  ASSERT_TRUE(Frame().OnCommand(ID_FILE_CLOSE));
  EXPECT_TRUE(Until([tree] { return !tree->isChecked() && !tree->isEnabled(); }));
}

TEST_F(MainFrameTest, ToolBarAndStatusBarHideAndShowAndAreMarkedInTheMenu) {
  Start();
  QAction* item = Face().Actions().Action(ID_VIEW_TOOLBAR);
  Face().Actions().UpdateAll();
  EXPECT_TRUE(item->isChecked());
  item->trigger();
  EXPECT_FALSE(Face().ToolBar().isVisible());
  Face().Actions().UpdateAll();
  EXPECT_FALSE(item->isChecked());
  item->trigger();
  EXPECT_TRUE(Face().ToolBar().isVisible());
  Face().Actions().Action(ID_VIEW_STATUS_BAR)->trigger();
  EXPECT_FALSE(Face().Panes().isVisible());
}

TEST_F(MainFrameTest, TheSizeOfARestoredWindowIsStoredAndTakenAtTheNextStart) {
  Start();
  Window().resize(711, 577);
  EXPECT_TRUE(Until([this] { return Stored(kRegSettings, "Window Width") == 711; }));
  EXPECT_EQ(Stored(kRegSettings, "Window Height"), 577u);
  m_app.reset();
  Start();
  EXPECT_EQ(Window().size(), QSize(711, 577));
}

TEST_F(MainFrameTest, MinimisingAndMaximisingLeaveTheStoredSize) {
  Start();
  Window().resize(711, 577);
  ASSERT_TRUE(Until([this] { return Stored(kRegSettings, "Window Width") == 711; }));
  Window().showMaximized();
  ASSERT_TRUE(Until([this] { return Window().width() != 711; }));
  Settle();
  EXPECT_EQ(Stored(kRegSettings, "Window Width"), 711u);
  Window().showMinimized();
  Settle();
  EXPECT_EQ(Stored(kRegSettings, "Window Width"), 711u);
  EXPECT_EQ(Stored(kRegSettings, "Window Height"), 577u);
}

TEST_F(MainFrameTest, AStoredSizeLargerThanTheScreenIsMadeToFitIt) {
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Width", 2800U);
  NtRegPut(HKEY_CURRENT_USER, kRegSettings, "Window Height", 1620U);
  Start();
  EXPECT_EQ(Window().size(), Window().screen()->availableSize());
  EXPECT_TRUE(Until([this] {
    return Window().screen()->availableGeometry().contains(Window().frameGeometry());
  }));
}

TEST_F(MainFrameTest, AMaximisedWindowComesBackMaximisedAndARestoredOneRestored) {
  Start();
  Window().resize(711, 577);
  ASSERT_TRUE(Until([this] { return Stored(kRegSettings, "Window Width") == 711; }));
  Window().showMaximized();
  Settle();
  Window().showMinimized();
  Settle();
  m_app.reset();
  Start();
  EXPECT_TRUE(Window().isMaximized());
  Window().showNormal();
  EXPECT_TRUE(Until([this] { return Window().size() == QSize(711, 577); }));
  Settle();
  m_app.reset();
  Start();
  EXPECT_FALSE(Window().isMaximized());
}

TEST_F(MainFrameTest, ClosingTheWindowEndsTheProgramWhenNothingAsks) {
  Start();
  Open(TraceFile("a.trc", 3));
  Window().close();
  EXPECT_EQ(m_closed, 1);
  EXPECT_FALSE(Window().isVisible());
  EXPECT_TRUE(m_app->FileTemplate()->Documents().empty());
}

TEST_F(MainFrameTest, ARefusalKeepsTheWindowAndItsDocuments) {
  Start();
  CTraceFileDoc* document = Open(TraceFile("a.trc", 3));
  document->SetModifiedFlag(true);
  std::string words;
  OnModal([&words](QWidget* box) {
    words = qobject_cast<QMessageBox*>(box)->text().toStdString();
    QTest::keyClick(box, Qt::Key_Escape);
  });
  Window().close();
  EXPECT_EQ(words, "Save changes to a.trc?");
  EXPECT_EQ(m_closed, 0);
  EXPECT_TRUE(Window().isVisible());
  EXPECT_EQ(m_app->FileTemplate()->Documents().size(), 1u);
}

TEST_F(MainFrameTest, ACloseWhileADialogIsUpIsIgnored) {
  Start();
  bool closed = true;
  OnModal([&](QWidget* dialog) {
    closed = Window().close();
    dialog->close();
  });
  Frame().OnCommand(ID_APP_ABOUT);
  EXPECT_FALSE(closed);
  EXPECT_TRUE(Window().isVisible());
  EXPECT_EQ(m_closed, 0);
}

TEST_F(MainFrameTest, EachLocalFileThatIsDroppedOpensAndOtherThingsAreLeft) {
  Start();
  const QString a = QString::fromStdString(TraceFile("a.trc", 1));
  const QString b = QString::fromStdString(TraceFile("b.trc", 1));
  const auto files = Urls(
      {QUrl::fromLocalFile(a), QUrl(QStringLiteral("http://host/c.trc")), QUrl::fromLocalFile(b)});
  EXPECT_TRUE(Drop(*files));
  EXPECT_TRUE(Until([this] { return m_app->FileTemplate()->Documents().size() == 2; }));
  const auto none = Urls({QUrl(QStringLiteral("http://host/c.trc"))});
  EXPECT_FALSE(Drop(*none));
  QCoreApplication::processEvents();
  EXPECT_EQ(m_app->FileTemplate()->Documents().size(), 2u);
}

TEST_F(MainFrameTest, AltF4ClosesTheMainWindow) {
  Start();
  QTest::keyClick(&Window(), Qt::Key_F4, Qt::AltModifier);
  EXPECT_EQ(m_closed, 1);
}

TEST_F(MainFrameTest, AboutIsAPlainBoxWithTheVersionLine) {
  Start();
  std::string words;
  OnModal([&words](QWidget* dialog) {
    for (const QLabel* label : dialog->findChildren<QLabel*>())
      words += label->text().toStdString();
    dialog->close();
  });
  Frame().OnCommand(ID_APP_ABOUT);
  EXPECT_EQ(words, "Tessera Version 3.1.0");
}

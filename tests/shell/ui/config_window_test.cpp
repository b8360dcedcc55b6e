// A configuration's window, offscreen, on a machine without a process.
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QPaintEvent>

#include "config/view/config_view.h"
#include "controls/listbox/ui/list_box_widget.h"
#include "shell_fixture.h"
#include "support/fake_config_client.h"

namespace {

class ConfigWindowTest : public ShellTest {
 protected:
  ~ConfigWindowTest() override {
    g_quickClose = true;
    m_app.reset();
    g_quickClose = false;
  }
  void StartOn(const std::string& machine) {
    if (!m_app) Start();
    m_app->m_configClient = ClientOf(m_machine);
    ASSERT_TRUE(m_app->OpenConfig(machine));
    Settle();
  }
  CConfigDoc& Config() {
    return static_cast<CConfigDoc&>(*m_app->ConfigTemplate()->Documents().front());
  }
  QtListBox& List() {
    return *dynamic_cast<QtListBox*>(Front()->findChild<QListView*>("applications"));
  }
  QPoint At(int item) { return List().visualRect(List().model()->index(item, 0)).center(); }
  // Closes the next dialog and notes its title.
  void CloseDialog() {
    OnModal([this](QWidget* dialog) {
      m_titles << dialog->windowTitle();
      QTest::keyClick(dialog, Qt::Key_Escape);
    });
  }
  // Looks at the next menu and closes it.
  static void OnPopup(const std::function<void(QMenu&)>& look) {
    auto* const clock = new QTimer(qApp);
    QObject::connect(clock, &QTimer::timeout, qApp, [clock, look] {
      auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
      if (!menu) return;
      clock->stop();
      clock->deleteLater();
      look(*menu);
      menu->close();
    });
    clock->start(5);
  }
  FakeMachine m_machine;
  QStringList m_titles;
};

// Notes whether this point is painted.
class PaintWatch final : public QObject {
 public:
  PaintWatch(QWidget& widget, QPoint point) : m_point(point) { widget.installEventFilter(this); }
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint)
      m_painted |= static_cast<QPaintEvent*>(event)->region().contains(m_point);
    return false;
  }
  bool m_painted = false;

 private:
  const QPoint m_point;
};

TEST_F(ConfigWindowTest, ItOpensSmallWithTheFocusInItsListAndTheMenusOfConfigurations) {
  StartOn("web");
  EXPECT_EQ(Front()->windowTitle(), QStringLiteral("Configuration on web"));
  EXPECT_EQ(Front()->size(), QSize(300, 300));
  EXPECT_TRUE(List().hasFocus());
  EXPECT_EQ(List().Text(0), CConfigView::kPlaceholder);
  EXPECT_EQ(List().accessibleName(), QStringLiteral("Applications"));
  EXPECT_FALSE(Face().Actions().Action(ID_EDIT_CLEAR_ALL)->isEnabled());
}

TEST_F(ConfigWindowTest, TheListFillsTheWindowWithoutABorderAtEverySize) {
  StartOn("web");
  for (const QSize size : {QSize(300, 300), QSize(640, 410), QSize(201, 173)}) {
    Front()->resize(size);
    Settle();
    const QWidget& client = *Front()->widget();
    const QRect list(List().mapTo(&client, QPoint()), List().viewport()->size());
    EXPECT_EQ(list, client.rect()) << size.width();
  }
}

TEST_F(ConfigWindowTest, AUserWhoWaitsForAMachineSeesTheWaitCursor) {
  StartOn("web");
  std::vector<int> shapes;
  const auto note = [&shapes] {
    const QCursor* const shown = QApplication::overrideCursor();
    shapes.push_back(shown ? shown->shape() : -1);
  };
  const ConfigClient client = ClientOf(m_machine);
  m_app->m_configClient.connect = [&](const std::string& host, std::string* why) {
    note();
    return client.connect(host, why);
  };
  m_app->m_configClient.open = [&](const std::string& host, const std::string& app) {
    note();
    return client.open(host, app);
  };
  ASSERT_TRUE(m_app->OpenConfig("db"));
  auto& document = static_cast<CConfigDoc&>(*m_app->ConfigTemplate()->Documents().back());
  document.AddApplication("orders");
  EXPECT_EQ(shapes, (std::vector<int>{Qt::WaitCursor, Qt::WaitCursor}));
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(ConfigWindowTest, TheTextForAnEmptyDeskGoesAlthoughTheWindowDoesNotCoverIt) {
  Start();
  Settle();
  QWidget& desk = *Face().Area().viewport();
  PaintWatch middle(desk, desk.rect().center());
  StartOn("web");
  ASSERT_FALSE(Front()->geometry().contains(desk.rect().center()));
  EXPECT_TRUE(Until([&] { return middle.m_painted; }));
}

TEST_F(ConfigWindowTest, EnterAndADoubleClickOnThePlaceholderOpenTheAddDialogAndDelDoesNothing) {
  StartOn("web");
  QTest::keyClick(&List(), Qt::Key_Delete);
  CloseDialog();
  QTest::keyClick(&List(), Qt::Key_Return);
  CloseDialog();
  QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, At(0));
  QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, At(0));
  EXPECT_EQ(m_titles, (QStringList{"Add Application", "Add Application"}));
}

TEST_F(ConfigWindowTest, EnterADoubleClickAndAltPOpenTheSheetAndDelDeletes) {
  m_machine.Run("orders", {"Net/Connect"});
  StartOn("web");
  Config().AddApplication("orders");
  EXPECT_FALSE(Enabled(ID_VIEW_PROPERTIES)) << "nothing is current";
  QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, At(0));
  CloseDialog();
  QTest::keyClick(&List(), Qt::Key_Return);
  CloseDialog();
  QTest::mouseDClick(List().viewport(), Qt::LeftButton, {}, At(0));
  // Offscreen no window manager activates the window again after a dialog.
  Window().activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&Window()));
  CloseDialog();
  QTest::keyClick(&List(), Qt::Key_P, Qt::AltModifier);
  EXPECT_EQ(m_titles, (QStringList{"Configuration for orders", "Configuration for orders",
                                   "Configuration for orders"}));
  QTest::keyClick(&List(), Qt::Key_Delete);
  EXPECT_EQ(List().Text(0), CConfigView::kPlaceholder);
}

TEST_F(ConfigWindowTest, CtrlAAddsAlthoughTheListHasTheFocus) {
  StartOn("web");
  CloseDialog();
  QTest::keyClick(&List(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(m_titles, QStringList{"Add Application"});
}

TEST_F(ConfigWindowTest, ARightClickBesideAllItemsLeavesTheCurrentOneAndOpensTheMenu) {
  m_machine.Run("a", {});
  m_machine.Run("b", {});
  StartOn("web");
  Config().AddApplication("a");
  Config().AddApplication("b");
  QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, At(0));
  QStringList menu;
  const auto rightClick = [&](QPoint at) {
    OnPopup([&](QMenu& popup) {
      menu.clear();
      for (const QAction* action : popup.actions())
        menu << (action->isSeparator() ? "-" : action->text().section('\t', 0, 0).remove('&'));
    });
    QTest::mousePress(List().viewport(), Qt::RightButton, {}, at);
    QContextMenuEvent asked(QContextMenuEvent::Mouse, at, List().viewport()->mapToGlobal(at));
    QApplication::sendEvent(List().viewport(), &asked);
  };
  rightClick(QPoint(20, List().viewport()->height() - 4));
  EXPECT_EQ(List().CurSel(), 0);
  EXPECT_EQ(menu,
            (QStringList{"Add Application", "Delete Application", "Properties...", "-", "Clear"}));
  rightClick(At(1));
  EXPECT_EQ(List().CurSel(), 1);
}

TEST_F(ConfigWindowTest, ItsSizeIsKeptApartFromThatOfTraceWindows) {
  StartOn("web");
  Front()->resize(420, 310);
  EXPECT_TRUE(
      Until([] { return NtRegGet(HKEY_CURRENT_USER, kRegConfigView, "Window Width", 0U) == 420; }));
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegConfigView, "Window Height", 0U), 310U);
  Front()->showMaximized();
  Settle();
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegConfigView, "Window Width", 0U), 420U);
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Window Width", 0U), 0U);
}

TEST_F(ConfigWindowTest, ALineBelowTheListTellsABrokenConnection) {
  StartOn("web");
  const auto* const note = Front()->findChild<QLabel*>("connection");
  EXPECT_FALSE(note->isVisible());
  m_machine.m_away = true;
  EXPECT_TRUE(Until([note] { return note->isVisible(); }));
  EXPECT_EQ(note->text(), QStringLiteral("Not connected to web. Trying again."));
  m_machine.m_away = false;
  EXPECT_TRUE(Until([note] { return !note->isVisible(); }));
}

}  // namespace

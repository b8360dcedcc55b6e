// A configuration's window over a real service and real applications: what it shows and does while
// they end, begin, and go away.
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <optional>
#include <string>
#include <vector>

#include "apps/demo/demo_process.h"
#include "config/document/config_doc.h"
#include "config/view/config_view.h"
#include "controls/listbox/ui/list_box_widget.h"
#include "docview/commands/command_ids.h"
#include "shell/ui/shell_fixture.h"
#include "support/qt_test_main.h"

namespace {

constexpr char kMachine[] = "localhost";
constexpr char kBroken[] = "Not connected to localhost. Trying again.";

class ConfigLiveTest : public ShellTest {
 protected:
  ~ConfigLiveTest() override {
    g_quickClose = true;
    m_app.reset();
    g_quickClose = false;
  }
  void OpenConfig() {
    ASSERT_TRUE(m_app->OpenConfig(kMachine));
    ASSERT_TRUE(Front());
  }
  CConfigDoc& Config() {
    return static_cast<CConfigDoc&>(*m_app->ConfigTemplate()->Documents().front());
  }
  QtListBox& List() {
    return *dynamic_cast<QtListBox*>(Front()->findChild<QListView*>("applications"));
  }
  std::string Note() {
    const auto* const note = Front()->findChild<QLabel*>("connection");
    return note->isVisible() ? note->text().toStdString() : "";
  }
  // Chooses an application in the Add dialog and cancels its sheet; false: it is not offered.
  bool Add(const std::string& app) {
    bool offered = false;
    OnModal([&](QWidget* dialog) {
      auto* const list = dynamic_cast<QtListBox*>(dialog->findChild<QListView*>("applications"));
      const int item = list->FindStringExact(app);
      offered = item >= 0;
      if (!offered) return QTest::keyClick(dialog, Qt::Key_Escape);
      OnModalAfter(dialog);
      QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                        list->visualRect(list->model()->index(item, 0)).center());
      QTest::keyClick(list, Qt::Key_Return);
    });
    Frame().OnCommand(ID_CONFIG_ADD);
    return offered;
  }
  // Cancels the dialog that opens after `before` has closed.
  static void OnModalAfter(QWidget* before) {
    auto* const clock = new QTimer(qApp);
    QObject::connect(clock, &QTimer::timeout, qApp, [clock, before] {
      QWidget* const dialog = QApplication::activeModalWidget();
      if (!dialog || dialog == before) return;
      clock->stop();
      clock->deleteLater();
      QTest::keyClick(dialog, Qt::Key_Escape);
    });
    clock->start(5);
  }
  // The settings that the machine holds for the first trace of an application, as another client
  // sees them.
  static unsigned FirstSettings(const std::string& app) {
    const QuorPtr<trace_App_i> other = trace_App_i::Create(kMachine, app);
    if (!other || other->GetTraceMap().empty()) return ~0U;
    return other->GetSettings(other->GetTraceMap().front().categories.front().traceId);
  }
  static bool HasTraces(const std::string& app) {
    return Until([&] { return FirstSettings(app) != ~0U; });
  }

  // A window with the running application "orders".
  void OpenWithOrders() {
    m_quord.Start();
    m_orders.emplace(std::vector<std::string>{"--name", "orders", "--rate", "200"});
    ASSERT_TRUE(HasTraces("orders"));
    Start();
    OpenConfig();
    ASSERT_TRUE(Add("orders"));
  }
  void LoseTheService() {
    m_quord.Kill();
    ASSERT_TRUE(Until([this] { return Note() == kBroken; }));
  }

  QuordProcess m_quord;
  std::optional<DemoProcess> m_orders;
};

TEST_F(ConfigLiveTest, AnApplicationThatBeginsWhileTheWindowIsOpenIsOfferedAndAddedWithItsSheet) {
  m_quord.Start();
  Start();
  OpenConfig();
  EXPECT_EQ(List().Text(0), CConfigView::kPlaceholder);
  const DemoProcess orders({"--name", "orders", "--rate", "200"});
  ASSERT_TRUE(HasTraces("orders"));
  ASSERT_TRUE(Add("orders"));
  EXPECT_EQ(List().Text(0), "orders");
  EXPECT_EQ(List().CurSel(), 0);
  EXPECT_FALSE(Config().GetApplications()->m_apps.front()->GetTraceMap().empty());
}

TEST_F(ConfigLiveTest, AnApplicationThatEndsStaysAndItsNextInstanceBeginsWithTheSettings) {
  m_quord.Start();
  Start();
  OpenConfig();
  {
    const DemoProcess orders({"--name", "orders", "--rate", "200"});
    ASSERT_TRUE(HasTraces("orders"));
    ASSERT_TRUE(Add("orders"));
  }  // killed
  ASSERT_TRUE(Until([this] {
    Config().GetConfig()->GetAppList();
    return Config().GetConfig()->GetInstances("orders") == 0;
  }));
  EXPECT_EQ(List().Text(0), "orders");
  trace_App_i& app = *Config().GetApplications()->m_apps.front();
  app.SetAllTraces(0x1F);
  EXPECT_TRUE(app.Submit()) << "the settings of an application that does not run are kept";
  const DemoProcess again({"--name", "orders", "--rate", "200"});
  EXPECT_TRUE(Until([] { return FirstSettings("orders") == 0x1F; }));
  EXPECT_EQ(Note(), "");
}

TEST_F(ConfigLiveTest, AServiceThatIsKilledAndStartedAgainIsToldAndComesBackByItself) {
  ASSERT_NO_FATAL_FAILURE(OpenWithOrders());
  trace_App_i& app = *Config().GetApplications()->m_apps.front();
  app.SetAllTraces(0x0F);
  ASSERT_TRUE(app.Submit());
  ASSERT_NO_FATAL_FAILURE(LoseTheService());
  EXPECT_EQ(List().Text(0), "orders");
  EXPECT_TRUE(Until(
      [this] { return Face().Panes().PaneText(kPaneMessage) == QStringLiteral("not connected"); }));
  m_quord.Start();
  EXPECT_TRUE(Until([this] { return Note().empty(); }));
  EXPECT_TRUE(HasTraces("orders"));
  EXPECT_TRUE(app.Refresh());
  EXPECT_EQ(FirstSettings("orders"), 0x0FU) << "it kept what was submitted";
  app.SetAllTraces(0x1F);
  EXPECT_TRUE(app.Submit());
  EXPECT_EQ(FirstSettings("orders"), 0x1FU);
}

TEST_F(ConfigLiveTest, AServiceThatIsAwayForGoodHoldsEachActionForFiveSecondsAtMost) {
  ASSERT_NO_FATAL_FAILURE(OpenWithOrders());
  ASSERT_NO_FATAL_FAILURE(LoseTheService());
  const auto seconds = [](const std::function<void()>& act) {
    QElapsedTimer clock;
    clock.start();
    act();
    return static_cast<double>(clock.elapsed()) / 1000;
  };
  EXPECT_LT(seconds([this] { EXPECT_FALSE(Add("orders")); }), 7) << "an empty dialog";
  EXPECT_EQ(List().Text(0), "orders") << "the list is as it was";
  g_quickClose = true;
  EXPECT_LT(seconds([this] { Config().SaveModified(); }), 7);
  g_quickClose = false;
}

TEST_F(ConfigLiveTest, ACertificateThatMayOnlyMonitorOpensNoWindowAndTheReasonIsTold) {
  ASSERT_EQ(m_quord.Run({"keys", "init", "--host", "orders1"}), 0);
  const std::string keys = m_quord.Folder().File("monitor");
  ASSERT_EQ(m_quord.Run({"keys", "issue", "monitor", "--role", "monitor", "--out", keys}), 0);
  m_quord.Start({"--listen", "127.0.0.1:0"});
  setenv("QUOR_KEYS", keys.c_str(), 1);
  Start();
  QString words;
  OnModal([&](QWidget* box) {
    words = box->findChild<QLabel*>("qt_msgbox_label")->text();
    QTest::keyClick(box, Qt::Key_Return);
  });
  EXPECT_FALSE(m_app->OpenConfig("127.0.0.1:" + m_quord.Port()));
  EXPECT_EQ(words, QStringLiteral("Error trying to connect to configuration server."));
  EXPECT_TRUE(Frame().Children().empty());
  EXPECT_TRUE(Face()
                  .Panes()
                  .PaneText(kPaneMessage)
                  .contains(QStringLiteral("the certificate does not allow to configure")))
      << Face().Panes().PaneText(kPaneMessage).toStdString();
}

}  // namespace

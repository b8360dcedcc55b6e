#include "config/ui/machine_face.h"

#include <QLabel>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include "docview/ui/qt_host.h"
#include "quor/client/trace_thread.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"

namespace {

class MachineFaceTest : public testing::Test {
 protected:
  MachineFaceTest() {
    m_host.RegisterFace<CMachineDlg, MachineFace>();
    m_host.RegisterFace<CMachineBrowser, MachineBrowserFace>();
  }
  // Runs once a window of this name is up and modal.
  static void OnWindow(const QString& name, const std::function<void(QWidget&)>& act) {
    auto* const clock = new QTimer(qApp);
    QObject::connect(clock, &QTimer::timeout, qApp, [clock, name, act = MustRun(act)] {
      QWidget* const dialog = QApplication::activeModalWidget();
      if (!dialog || dialog->objectName() != name) return;
      clock->stop();
      clock->deleteLater();
      act(*dialog);
    });
    clock->start(5);
  }
  static QLineEdit& Field(QWidget& window) { return *window.findChild<QLineEdit*>("machine"); }

  QtHost m_host;
  CMachineDlg m_query{m_host, "What machine to you want to configure?"};
};

TEST_F(MachineFaceTest, ShowsThePromptTheHintAndTheMachineAndTakesWhatIsTyped) {
  OnWindow("machine query", [](QWidget& window) {
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Machine Query"));
    QStringList texts;
    for (const QLabel* label : window.findChildren<QLabel*>()) texts << label->text();
    EXPECT_EQ(texts, (QStringList{"What machine to you want to configure?",
                                  "(default is the local machine)"}));
    EXPECT_EQ(Field(window).text().toStdString(), _trc_GetHostName());
    EXPECT_EQ(Field(window).selectedText(), Field(window).text());
    EXPECT_EQ(window.findChild<QToolButton*>("browse")->text(), QStringLiteral("&..."));
    EXPECT_EQ(window.findChild<QPushButton*>("57670")->accessibleName(), QStringLiteral("Help"));
    QTest::keyClicks(&Field(window), "web");  // replaces the selection
    QTest::keyClick(&window, Qt::Key_Return);
  });
  EXPECT_EQ(m_query.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(m_query.m_strMachine, "web");
}

TEST_F(MachineFaceTest, EscEndsItWithCancel) {
  OnWindow("machine query", [](QWidget& window) { QTest::keyClick(&window, Qt::Key_Escape); });
  EXPECT_EQ(m_query.DoModal(), CDialog::kIdCancel);
}

TEST_F(MachineFaceTest, TheBrowseButtonOffersMachinesAndWritesTheChosenOneIntoTheField) {
  OnWindow("machine query", [](QWidget& window) {
    OnWindow("machine browser", [](QWidget& browser) {
      auto* const list = browser.findChild<QListWidget*>("machines");
      ASSERT_GT(list->count(), 0);
      list->setCurrentRow(0);
      QTest::keyClick(&browser, Qt::Key_Return);
    });
    Field(window).setText("web");
    QTest::mouseClick(window.findChild<QToolButton*>("browse"), Qt::LeftButton);
    EXPECT_EQ(Field(window).text().toStdString(), _trc_GetHostName());
    QTest::keyClick(&window, Qt::Key_Return);
  });
  EXPECT_EQ(m_query.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(m_query.m_strMachine, _trc_GetHostName());
}

TEST_F(MachineFaceTest, ACancelledBrowserLeavesWhatWasTyped) {
  OnWindow("machine query", [](QWidget& window) {
    OnWindow("machine browser",
             [](QWidget& browser) { QTest::keyClick(&browser, Qt::Key_Escape); });
    Field(window).setText("web");
    QTest::mouseClick(window.findChild<QToolButton*>("browse"), Qt::LeftButton);
    EXPECT_EQ(Field(window).text(), QStringLiteral("web"));
    QTest::keyClick(&window, Qt::Key_Return);
  });
  EXPECT_EQ(m_query.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(m_query.m_strMachine, "web");
}

}  // namespace

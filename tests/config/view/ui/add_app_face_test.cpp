#include "config/view/ui/add_app_face.h"

#include <gmock/gmock.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include "docview/ui/qt_host.h"
#include "support/pending_actions.h"

namespace {

using testing::ElementsAre;

class AddAppFaceTest : public testing::Test {
 protected:
  AddAppFaceTest() { m_host.RegisterFace<CAddAppDialog, AddAppFace>(); }
  static void OnWindow(const std::function<void(QWidget&)>& act) {
    auto* const clock = new QTimer(qApp);
    QObject::connect(clock, &QTimer::timeout, qApp, [clock, act = MustRun(act)] {
      QWidget* const dialog = QApplication::activeModalWidget();
      if (!dialog || dialog->objectName() != "add application") return;
      clock->stop();
      clock->deleteLater();
      act(*dialog);
    });
    clock->start(5);
  }
  static QtListBox& List(QWidget& window) {
    return *dynamic_cast<QtListBox*>(window.findChild<QListView*>("applications"));
  }
  static QWidget& Ok(QWidget& window) {
    return *window.findChild<QWidget*>(QString::number(CDialog::kIdOk));
  }
  static void Click(QWidget& window, int item, Qt::KeyboardModifiers keys = {}) {
    QtListBox& list = List(window);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, keys,
                      list.visualRect(list.model()->index(item, 0)).center());
  }

  QtHost m_host;
  CAddAppDialog m_dialog{m_host, {"Zoll", "archiv", "orders"}};
};

TEST_F(AddAppFaceTest, ShowsItsLabelAndTheNamesAsPeopleSortThemAndOkIsDisabled) {
  OnWindow([](QWidget& window) {
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Add Application"));
    const auto* const label = window.findChild<QLabel*>();
    EXPECT_EQ(label->text(),
              QStringLiteral("Application &Name:\n(select from list of registered names)"));
    EXPECT_EQ(label->buddy(), &List(window));
    EXPECT_EQ(List(window).accessibleName(), QStringLiteral("Application Name"));
    EXPECT_EQ(List(window).Text(0) + List(window).Text(1) + List(window).Text(2),
              "archivordersZoll");
    EXPECT_FALSE(Ok(window).isEnabled());
    EXPECT_EQ(window.focusWidget(), &List(window));
    QTest::keyClick(&window, Qt::Key_Escape);
  });
  EXPECT_EQ(m_dialog.DoModal(), CDialog::kIdCancel);
}

TEST_F(AddAppFaceTest, SeveralAreChosenAndOkFollowsTheSelection) {
  OnWindow([](QWidget& window) {
    Click(window, 0);
    EXPECT_TRUE(Ok(window).isEnabled());
    Click(window, 0, Qt::ControlModifier);
    EXPECT_FALSE(Ok(window).isEnabled());
    Click(window, 0);
    Click(window, 2, Qt::ControlModifier);
    QTest::keyClick(&List(window), Qt::Key_Return);
  });
  EXPECT_EQ(m_dialog.DoModal(), CDialog::kIdOk);
  EXPECT_THAT(m_dialog.m_names, ElementsAre("Zoll", "archiv"));
}

TEST_F(AddAppFaceTest, ADoubleClickChoosesOne) {
  OnWindow([](QWidget& window) {
    Click(window, 1);
    QtListBox& list = List(window);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {},
                       list.visualRect(list.model()->index(1, 0)).center());
  });
  EXPECT_EQ(m_dialog.DoModal(), CDialog::kIdOk);
  EXPECT_THAT(m_dialog.m_names, ElementsAre("orders"));
}

TEST_F(AddAppFaceTest, AnEmptyListIsExplainedBelowIt) {
  CAddAppDialog empty(m_host, {}, "<web> does not answer.");
  OnWindow([](QWidget& window) {
    const auto* const note = window.findChild<QLabel*>("note");
    ASSERT_TRUE(note && note->isVisible());
    EXPECT_EQ(note->text(), QStringLiteral("<web> does not answer."));
    EXPECT_EQ(note->textFormat(), Qt::PlainText);
    EXPECT_FALSE(Ok(window).isEnabled());
    QTest::keyClick(&window, Qt::Key_Escape);
  });
  EXPECT_EQ(empty.DoModal(), CDialog::kIdCancel);
}

TEST_F(AddAppFaceTest, ByKeyboardTypingSelectsAndEnterAdds) {
  OnWindow([](QWidget& window) {
    QTest::keyClick(&List(window), Qt::Key_Z);
    EXPECT_TRUE(Ok(window).isEnabled());
    QTest::keyClick(&List(window), Qt::Key_Return);
  });
  EXPECT_EQ(m_dialog.DoModal(), CDialog::kIdOk);
  EXPECT_THAT(m_dialog.m_names, ElementsAre("Zoll"));
}

}  // namespace

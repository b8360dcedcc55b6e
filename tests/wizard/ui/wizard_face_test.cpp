// The wizard's window as a person meets it: texts at every font size, focus, keys, spoken names.
#include <QAccessible>
#include <QListView>
#include <QRadioButton>
#include <QStackedWidget>

#include "docview/ui/work_box_face.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"
#include "support/short_pieces.h"
#include "wizard/ui/wizard_face_fixture.h"

namespace {

TEST_F(WizardFaceTest, NoTextIsCutAtAnyFontSizeEvenInTheLeastWindow) {
  for (const int percent : {100, 150, 200}) {
    QFont font = m_font;
    font.setPointSizeF(m_font.pointSizeF() * percent / 100);
    QApplication::setFont(font);
    Open();
    m_face->resize(m_face->minimumSizeHint());
    Settle();
    auto* const pages = m_face->findChild<QStackedWidget*>();
    for (int place = 0; place < pages->count(); ++place) {
      pages->setCurrentIndex(place);
      Settle();
      for (const QLabel* const label : pages->currentWidget()->findChildren<QLabel*>())
        EXPECT_TRUE(Fits(*label)) << percent << " " << label->text().toStdString();
    }
  }
}

TEST_F(WizardFaceTest, NothingIsScrolledOnAScreenOf640By400) {
  const QSize least = m_face->minimumSizeHint();
  EXPECT_LE(least.width(), 620);
  EXPECT_LE(least.height(), 360) << "a frame needs the rest";
}

TEST_F(WizardFaceTest, EnterGoesOnAndTheFocusIsOnThePagesFirstControl) {
  EXPECT_EQ(Focus(), QString::number(CWizWelcomePage::kAutoStart));
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Mode");
  EXPECT_EQ(Focus(), QString::number(CWizSelectPage::kTask));
  Type(Qt::Key_Return);
  EXPECT_EQ(Focus(), QString::number(CWizNetworkPage::kMode));
  Type(Qt::Key_Return);
  EXPECT_EQ(Focus(), "applications");
  QTest::keyClicks(m_face->focusWidget(), "o");  // type-ahead
  Settle();
  EXPECT_TRUE(Button(QtSheetFace::kNext).isEnabled());
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Traces for orders");
  EXPECT_EQ(Focus(), "traces");
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Finish");
  EXPECT_EQ(Focus(), QString::number(QtSheetFace::kFinish));
}

TEST_F(WizardFaceTest, ArrowKeysChooseAndTheChosenOneHasTheFocusTheNextTime) {
  Type(Qt::Key_Return);
  Type(Qt::Key_Return);
  Type(Qt::Key_Down);
  EXPECT_TRUE(
      m_face->findChild<QRadioButton*>(QString::number(CWizNetworkPage::kMode + 1))->isChecked());
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Machines");
  Button(QtSheetFace::kBack).click();
  Settle();
  EXPECT_EQ(Focus(), QString::number(CWizNetworkPage::kMode + 1));
}

TEST_F(WizardFaceTest, EnterOnBackGoesBackAndOnCancelCancels) {
  Type(Qt::Key_Return);
  Button(QtSheetFace::kBack).setFocus();
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Welcome");
  Button(CDialog::kIdCancel).setFocus();
  Type(Qt::Key_Return);
  EXPECT_TRUE(m_sheet->Ended());
  EXPECT_EQ(m_sheet->Result(), CDialog::kIdCancel);
}

TEST_F(WizardFaceTest, ADisabledButtonLeavesTheFocusToThePage) {
  Type(Qt::Key_Return);
  Button(QtSheetFace::kNext).setFocus();
  m_sheet->SetWizardButtons(PSWIZB_BACK);
  Settle();
  EXPECT_EQ(Focus(), QString::number(CWizSelectPage::kTask));
}

TEST_F(WizardFaceTest, APageIsANamedGroupAndTheLastPagesWordsAreSaidWithItsButton) {
  Type(Qt::Key_Return);
  QAccessibleInterface* const page = QAccessible::queryAccessibleInterface(
      m_face->findChild<QWidget*>(QString::number(kSelectPage)));
  ASSERT_TRUE(page);
  EXPECT_EQ(page->role(), QAccessible::Grouping);
  EXPECT_EQ(page->text(QAccessible::Name), "Trace Wizard: Mode");
  EXPECT_TRUE(page->text(QAccessible::Description).contains("Please select the type of task"));
  EXPECT_TRUE(Button(QtSheetFace::kNext).accessibleDescription().isEmpty());
  Type(Qt::Key_Return);
  Type(Qt::Key_Return);
  QTest::keyClicks(m_face->focusWidget(), "o");
  Settle();
  Type(Qt::Key_Return);
  Type(Qt::Key_Return);
  EXPECT_TRUE(Button(QtSheetFace::kFinish).accessibleDescription().contains("\"Finish\" button"));
}

TEST_F(WizardFaceTest, AWideTitleIsCutInItsMiddleAndReadWhole) {
  const std::string name(300, 'n');
  m_program.Machine("localhost").Run(name, {"Net/Open"});
  for (int page = 0; page < 3; ++page) Type(Qt::Key_Return);
  QTest::keyClicks(m_face->focusWidget(), "n");
  Settle();
  const int width = m_face->width();
  Type(Qt::Key_Return);
  const auto isWhole = [this, &name] { return Title() == "Trace Wizard: Traces for " + name; };
  EXPECT_FALSE(isWhole());
  EXPECT_TRUE(Title().starts_with("Trace Wizard: Traces for nnn")) << Title();
  EXPECT_TRUE(Title().ends_with("nnn")) << Title();
  EXPECT_LT(m_face->fontMetrics().horizontalAdvance(m_face->windowTitle()), width);
  EXPECT_EQ(m_face->width(), width);
  for (QWidget* const read : {static_cast<QWidget*>(m_face.get()),
                              m_face->findChild<QWidget*>(QString::number(kTracesPage))})
    EXPECT_EQ(QAccessible::queryAccessibleInterface(read)->text(QAccessible::Name).toStdString(),
              "Trace Wizard: Traces for " + name);
  m_face->resize(10000, m_face->height());  // until it is kept on the screen
  EXPECT_TRUE(isWhole()) << Title();
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Finish");
  EXPECT_EQ(QAccessible::queryAccessibleInterface(m_face.get())->text(QAccessible::Name),
            "Trace Wizard: Finish");
}

TEST_F(WizardFaceTest, TheBoxOfLongWorkStandsOverTheWizardWhichGoesOnAfterACancel) {
  const ShortPieces pieces(m_host);
  m_host.RegisterFace<CWorkBox, WorkBoxFace>();
  m_program.Machine("localhost").Run("other", {"Net/Open"});
  for (int page = 0; page < 3; ++page) Type(Qt::Key_Return);
  m_face->findChild<QListView*>("applications")->selectAll();
  Settle();
  m_host.Post(MustRun([this] {
    QWidget* const box = QApplication::activeModalWidget();
    ASSERT_TRUE(box);
    EXPECT_EQ(box->objectName(), "working");
    EXPECT_FALSE(QApplication::overrideCursor()->shape() == Qt::WaitCursor);
    QTest::keyClick(box, Qt::Key_Escape);
  }));
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Applications on " + _trc_GetHostName());
  EXPECT_TRUE(Button(QtSheetFace::kNext).isEnabled());
  Type(Qt::Key_Return);
  EXPECT_EQ(Title(), "Trace Wizard: Traces for orders");
}

TEST_F(WizardFaceTest, ThePictureTakesNoRoomOnAScreenThatIsTooSmallForIt) {
  QFont large = m_font;
  large.setPointSizeF(m_font.pointSizeF() * 2);
  QApplication::setFont(large);
  Open();
  EXPECT_FALSE(m_face->findChild<QWidget*>("picture")->isVisible());
  QFont small = m_font;
  small.setPointSizeF(m_font.pointSizeF() / 2);
  QApplication::setFont(small);
  Open();
  EXPECT_TRUE(m_face->findChild<QWidget*>("picture")->isVisible());
}

}  // namespace

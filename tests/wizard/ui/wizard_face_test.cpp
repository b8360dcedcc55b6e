// The wizard's window as a person meets it: texts at every font size, focus, keys, spoken names.
#include "wizard/ui/trace_wizard_face.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTest>
#include <memory>

#include "docview/ui/qt_host.h"
#include "docview/ui/work_box_face.h"
#include "settings/registry.h"
#include "support/fake_wizard_program.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"
#include "support/short_pieces.h"
#include "support/temp_dir.h"

namespace {

class WizardFaceTest : public testing::Test {
 protected:
  WizardFaceTest() {
    SetSettingsFile(m_folder.File("settings.ini"));
    m_program.Machine("localhost").Run("orders", {"Net/Open", "Net/Close"});
    Open();
  }
  ~WizardFaceTest() override {
    m_face.reset();
    m_sheet.reset();
    QApplication::setFont(m_font);
    SetSettingsFile("");
  }
  void Open() {
    m_face.reset();
    m_sheet = std::make_unique<CTraceWizardSheet>(m_host, m_program);
    m_sheet->OnInitDialog();  // as a modal run does
    m_face = std::make_unique<TraceWizardFace>(*m_sheet, nullptr);
    m_face->UpdateData();
    m_face->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_face.get()));
    Settle();
  }
  // All that is posted has come.
  void Settle() {
    bool come = false;
    m_host.Post([&come] { come = true; });
    ASSERT_TRUE(QTest::qWaitFor([&come] { return come; }, 20000));
    QApplication::processEvents();
  }
  static bool Fits(const QLabel& label) {
    const int flags = Qt::TextShowMnemonic | (label.wordWrap() ? Qt::TextWordWrap : 0);
    const QRect room(0, 0, label.width(), 10000);
    const QSize text = label.fontMetrics().boundingRect(room, flags, label.text()).size();
    return text.width() <= label.width() && text.height() <= label.height();
  }
  QPushButton& Button(unsigned id) { return *m_face->findChild<QPushButton*>(QString::number(id)); }
  std::string Title() const { return m_face->windowTitle().toStdString(); }
  QString Focus() const { return m_face->focusWidget()->objectName(); }
  void Type(Qt::Key key) {
    QTest::keyClick(m_face->focusWidget(), key);
    Settle();
  }

  const QFont m_font = QApplication::font();
  TempDir m_folder;
  QtHost m_host;
  FrameLog m_log;
  FakeWizardProgram m_program{m_host, m_log};
  std::unique_ptr<CTraceWizardSheet> m_sheet;
  std::unique_ptr<TraceWizardFace> m_face;
};

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
  m_face->resize(10000, m_face->height());
  Settle();
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

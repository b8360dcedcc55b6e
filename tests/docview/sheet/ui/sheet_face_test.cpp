// Property sheets and wizards under the host on the screen, in its loops.
#include <gtest/gtest.h>

#include "docview/ui/qt_host.h"
#include "sheet_face_harness.h"
#include "support/pending_actions.h"

namespace {

class PlainSheetFace final : public TabbedSheetFace {
 public:
  PlainSheetFace(CPropertySheet& sheet, QWidget* parent)
      : TabbedSheetFace(sheet, parent, ContractFaces()) {}
};
class PlainWizard final : public CPropertySheet {
 public:
  using CPropertySheet::CPropertySheet;
  const char* HelpTopic() const override { return "wizard"; }
};
class PlainWizardFace final : public WizardFace {
 public:
  PlainWizardFace(CPropertySheet& sheet, QWidget* parent)
      : WizardFace(sheet, parent, ContractFaces()) {}
};

class SheetFaceTest : public testing::Test {
 protected:
  SheetFaceTest() {
    m_host.RegisterFace<CPropertySheet, PlainSheetFace>();
    m_host.RegisterFace<PlainWizard, PlainWizardFace>();
    m_wizard.SetWizardMode();
  }
  void AddPages(CPropertySheet& sheet) {
    sheet.AddPage(m_a);
    sheet.AddPage(m_b);
  }
  // What the user does in the window, when all that is posted before has come.
  void Then(const std::function<void(QDialog&)>& act) {
    m_host.Post([this, act = MustRun(act)] {
      m_host.Post([act] {
        auto* const window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(window);
        act(*window);
      });
    });
  }
  static void Click(QDialog& window, unsigned id) {
    auto* const button = window.findChild<QPushButton*>(QString::number(id));
    ASSERT_TRUE(button);
    QTest::mouseClick(button, Qt::LeftButton);
  }
  QtHost m_host;
  SheetLog m_log;
  ContractPage m_a{m_host, 101, "A", m_log, 100}, m_b{m_host, 102, "B", m_log, 100};
  CPropertySheet m_sheet{m_host, "Sheet"};
  PlainWizard m_wizard{m_host, "Setup Wizard"};
};

TEST_F(SheetFaceTest, AWizardRunsFromItsFirstPageToFinish) {
  AddPages(m_wizard);
  m_a.onActive = [this] { m_wizard.SetWizardButtons(PSWIZB_NEXT); };
  m_b.onActive = [this] {
    m_wizard.SetTitle("B on web");
    m_wizard.SetWizardButtons(PSWIZB_BACK | PSWIZB_FINISH);
  };
  Then([this](QDialog& window) {
    EXPECT_FALSE(window.findChild<QPushButton*>(QString::number(QtSheetFace::kBack))->isEnabled());
    Click(window, QtSheetFace::kNext);
    Then([](QDialog& last) {
      EXPECT_EQ(last.windowTitle(), "B on web");
      Click(last, QtSheetFace::kFinish);
    });
  });
  EXPECT_EQ(m_wizard.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(m_log, (SheetLog{"A begins", "A active", "A next", "A asked", "B begins", "B active",
                             "B finish"}));
  EXPECT_EQ(m_wizard.GetActivePage(), nullptr) << "its window is gone";
}

TEST_F(SheetFaceTest, EscCancelsAndWhatIsStillPostedIsDropped) {
  AddPages(m_wizard);
  Then([this](QDialog& window) {
    m_wizard.SetTitle("late");
    QTest::keyClick(&window, Qt::Key_Escape);
  });
  EXPECT_EQ(m_wizard.DoModal(), CDialog::kIdCancel);
  QApplication::processEvents();
  EXPECT_EQ(m_wizard.Title(), "A");
}

TEST_F(SheetFaceTest, WhileAPageAsksTheUserItIsStillInFront) {
  class AskingPage final : public ContractPage {
   public:
    using ContractPage::ContractPage;
    bool OnKillActive() override {
      return GetHost().MessageBox({.text = "Leave?", .buttons = BoxButtons::YesNo}) ==
             BoxAnswer::Yes;
    }
  } asking(m_host, 103, "C", m_log, 100);
  class AskingFace final : public TabbedSheetFace {
   public:
    AskingFace(CPropertySheet& sheet, QWidget* parent)
        : TabbedSheetFace(sheet, parent, ContractFaces().Add<AskingPage, ContractPageFace>()) {}
  };
  m_host.RegisterFace<CPropertySheet, AskingFace>();
  m_sheet.AddPage(asking);
  m_sheet.AddPage(m_b);
  Then([this](QDialog& window) {
    auto* const tabs = window.findChild<QTabBar*>();
    Then([tabs](QDialog& box) {
      EXPECT_EQ(tabs->currentIndex(), 0);
      QTest::keyClick(&box, Qt::Key_N, Qt::AltModifier);
    });
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(1).center());
    EXPECT_EQ(tabs->currentIndex(), 0);
    Then([](QDialog& box) { QTest::keyClick(&box, Qt::Key_Y, Qt::AltModifier); });
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(1).center());
    EXPECT_EQ(tabs->currentIndex(), 1);
    window.reject();
  });
  EXPECT_EQ(m_sheet.DoModal(), CDialog::kIdCancel);
}

TEST_F(SheetFaceTest, AControlOfAPageThatEndsTheSheetClosesItsWindow) {
  AddPages(m_sheet);
  Then([this](QDialog& window) {
    // By its name: findChild takes any widget for a class without Q_OBJECT.
    auto* const page = window.findChild<QWidget*>(QString::number(m_a.Id()));
    dynamic_cast<ContractPageFace&>(*page).Act([this] { m_sheet.EndDialog(7); });
    EXPECT_FALSE(window.isVisible());
  });
  EXPECT_EQ(m_sheet.DoModal(), 7);
}

TEST_F(SheetFaceTest, APageThatEndsTheSheetAtItsStartIsNeverSeen) {
  AddPages(m_sheet);
  m_a.onActive = [this] { m_sheet.EndDialog(8); };
  EXPECT_EQ(m_sheet.DoModal(), 8);
}

TEST_F(SheetFaceTest, ButtonsAndPagesAreNamedAndOnlyASheetWithAHelpPageHasAHelpButton) {
  AddPages(m_sheet);
  Then([](QDialog& window) {
    QStringList spoken;
    for (const QPushButton* button : window.findChildren<QPushButton*>())
      spoken << button->accessibleName();
    spoken.sort();
    EXPECT_EQ(spoken, (QStringList{"Apply", "Cancel", "OK"}));
    EXPECT_TRUE(window.findChild<QtPageFace*>("102"));
    window.reject();
  });
  m_sheet.DoModal();
  class HelpedSheet final : public CPropertySheet {
   public:
    using CPropertySheet::CPropertySheet;
    const char* HelpTopic() const override { return "sheet"; }
  } helped(m_host, "Sheet");
  helped.AddPage(m_a);
  m_host.RegisterFace<HelpedSheet, PlainSheetFace>();
  Then([](QDialog& window) {
    EXPECT_TRUE(window.findChild<QPushButton*>("57670"));
    window.reject();
  });
  helped.DoModal();
}

TEST_F(SheetFaceTest, APageWithoutControlsLeavesTheFocusToTheButtonAhead) {
  class EmptyFace final : public QtPageFace {
   public:
    EmptyFace(ContractPage&, QWidget* parent) : QtPageFace(parent) {}
    void ShowData() override {}
    bool TakeData() override { return true; }
  };
  class EmptyWizardFace final : public WizardFace {
   public:
    EmptyWizardFace(CPropertySheet& sheet, QWidget* parent)
        : WizardFace(sheet, parent, PageFaces().Add<ContractPage, EmptyFace>()) {}
  };
  m_host.RegisterFace<PlainWizard, EmptyWizardFace>();
  AddPages(m_wizard);
  Then([](QDialog& window) {
    ASSERT_TRUE(window.focusWidget());
    EXPECT_EQ(window.focusWidget()->objectName(), QString::number(QtSheetFace::kNext));
    window.reject();
  });
  m_wizard.DoModal();
}

// A screen reader reads a page's name when the focus enters the page.
TEST_F(SheetFaceTest, APageOfAWizardIsReadByThePostedTitleAsItStands) {
  AddPages(m_wizard);
  m_b.onActive = [this] { m_wizard.SetTitle("B on [*]web"); };
  QStringList read;
  const auto reader =
      QObject::connect(qApp, &QApplication::focusChanged, [&read](QWidget*, QWidget* now) {
        const auto* const page = now ? dynamic_cast<QtPageFace*>(now->parentWidget()) : nullptr;
        if (page) read << page->accessibleName();
      });
  Then([this, &read](QDialog& window) {
    read.clear();
    Click(window, QtSheetFace::kNext);
    EXPECT_EQ(read.join("; ").toStdString(), "B on [*]web");
    window.reject();
  });
  m_wizard.DoModal();
  QObject::disconnect(reader);
}

TEST_F(SheetFaceTest, APageThatComesOnceMoreHasTheNameOfItsNewTitleAtOnce) {
  AddPages(m_wizard);
  m_a.answer = 101;  // the same page, for the next of several
  int shown = 0;
  m_a.onActive = [&] { m_wizard.SetTitle("A for " + std::to_string(++shown)); };
  Then([](QDialog& window) {
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
    EXPECT_EQ(window.findChild<QWidget*>("101")->accessibleName().toStdString(), "A for 2");
    window.reject();
  });
  m_wizard.DoModal();
}

}  // namespace

// A start that offers the wizard, and a user who is faster than the offer.
#include <QDialog>

#include "docview/commands/command_ids.h"
#include "shell/menus/resource_ids.h"
#include "shell_fixture.h"

namespace {

class WizardOnceTest : public ShellTest {
 protected:
  // Runs the command before the posted wizard has come. What is open when it must have come is
  // noted, and closed. A second window would open in a loop of its own, so a clock looks, which
  // runs there too.
  void StartWith(unsigned command) {
    NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 1U);
    m_app = std::make_unique<CTesseraApp>(m_host, *m_faces);
    ASSERT_TRUE(m_app->InitInstance({}));
    m_host.Post([this] { m_offered = true; });
    QTimer clock;
    QObject::connect(&clock, &QTimer::timeout, &clock, [this] {
      QWidget* const open = QApplication::activeModalWidget();
      if (!m_offered || !open) return;
      if (m_first.empty()) Note(*open);
      static_cast<QDialog*>(open)->reject();
    });
    clock.start(5);
    Frame().OnCommand(command);
    Settle();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  }
  void Note(const QWidget& open) {
    m_first = open.metaObject()->className();
    for (const QWidget* const window : QApplication::topLevelWidgets())
      m_wizards += window->objectName() == "wizard" && window->isVisible();
  }

  bool m_offered = false;
  std::string m_first;
  int m_wizards = 0;
};

}  // namespace

TEST_F(WizardOnceTest, CtrlWBeforeTheOfferOpensOneWizard) {
  StartWith(ID_FILE_WIZARD);
  EXPECT_EQ(m_wizards, 1);
}

TEST_F(WizardOnceTest, NoWizardOpensOverTheDialogOfAFileToOpen) {
  StartWith(ID_FILE_OPEN);
  EXPECT_NE(m_first, "");
  EXPECT_EQ(m_wizards, 0);
}

TEST_F(WizardOnceTest, ItOpensWhenNothingIsModal) {
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 1U);
  m_app = std::make_unique<CTesseraApp>(m_host, *m_faces);
  ASSERT_TRUE(m_app->InitInstance({}));
  OnModal([this](QWidget* dialog) {
    m_first = dialog->objectName().toStdString();
    static_cast<QDialog*>(dialog)->reject();
  });
  Settle();
  EXPECT_EQ(m_first, "wizard");
}

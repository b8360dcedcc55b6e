#include "shell/ui/accelerator_keys.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QTest>

#include "shell/menu_resources.h"

namespace {

// Takes every accelerator's command and writes it down.
class Target : public CCmdTarget {
 public:
  Target() {
    for (const Accelerator& key : Accelerators()) {
      const unsigned id = key.id;
      MapCommand(
          id, [this, id] { m_taken.push_back(id); }, [this](CCmdUI& ui) { ui.Enable(m_enabled); });
    }
  }
  std::vector<unsigned> m_taken;
  bool m_enabled = true;
};

class AcceleratorKeysTest : public testing::Test {
 protected:
  AcceleratorKeysTest() : m_edit(new QLineEdit(QStringLiteral("some text"), &m_window)) {
    m_window.setCentralWidget(m_edit);
    m_window.show();
    m_edit->setFocus();
    m_edit->deselect();
  }
  void MakeKeys() {
    m_actions = new CommandActions(m_target, m_window);
    m_keys = new AcceleratorKeys(*m_actions, m_window);
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
  }
  Target m_target;
  QMainWindow m_window;
  QLineEdit* m_edit;
  CommandActions* m_actions = nullptr;
  AcceleratorKeys* m_keys = nullptr;
};

}  // namespace

TEST_F(AcceleratorKeysTest, EveryKeyOfTheTableSendsItsCommandOnceAlsoFromAFocusedEdit) {
  MakeKeys();
  for (const Accelerator& key : Accelerators()) {
    m_target.m_taken.clear();
    QTest::keySequence(m_edit, QKeySequence(QString::fromLatin1(key.key)));
    EXPECT_EQ(m_target.m_taken, std::vector<unsigned>{key.id}) << key.key;
  }
}

TEST_F(AcceleratorKeysTest, AKeyWhoseCommandIsDisabledIsSwallowedAndNotPassedToTheFocusedEdit) {
  ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
  QTest::keyClick(m_edit, Qt::Key_A, Qt::ControlModifier);
  ASSERT_EQ(m_edit->selectedText(), QStringLiteral("some text"));  // what the edit would do with it
  m_edit->deselect();

  MakeKeys();
  m_target.m_enabled = false;
  QTest::keyClick(m_edit, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(m_edit->selectedText(), QString());
  EXPECT_TRUE(m_target.m_taken.empty());
}

TEST_F(AcceleratorKeysTest, AKeyThatIsNoAcceleratorStillReachesTheEdit) {
  MakeKeys();
  m_edit->clear();
  QTest::keyClicks(m_edit, QStringLiteral("ace"));
  EXPECT_EQ(m_edit->text(), QStringLiteral("ace"));
}

TEST_F(AcceleratorKeysTest, InsideAModalDialogTheKeysBelongToTheDialog) {
  MakeKeys();
  QDialog dialog(&m_window);
  auto* edit = new QLineEdit(QStringLiteral("inner"), &dialog);
  dialog.setModal(true);
  dialog.show();
  edit->setFocus();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  edit->deselect();
  QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(edit->selectedText(), QStringLiteral("inner"));
  QTest::keyClick(edit, Qt::Key_F1);
  EXPECT_TRUE(m_target.m_taken.empty());
}

TEST_F(AcceleratorKeysTest, NoActionHasAShortcutOfItsOwnSoThatNoKeyIsKnownTwice) {
  MakeKeys();
  for (const Accelerator& key : Accelerators())
    EXPECT_TRUE(m_actions->Action(key.id)->shortcuts().isEmpty()) << key.key;
}

TEST_F(AcceleratorKeysTest, ACommandThatIsDisabledIsNotRunEvenIfItsActionDoesNotKnowYet) {
  MakeKeys();
  QAction* action = m_actions->Action(Accelerators().front().id);
  ASSERT_TRUE(action->isEnabled());
  m_target.m_enabled = false;
  action->trigger();
  EXPECT_TRUE(m_target.m_taken.empty());
}

TEST_F(AcceleratorKeysTest, WhenTheTargetHasGoneEveryCommandIsDisabled) {
  MakeKeys();
  m_actions->Detach();
  QTest::keyClick(m_edit, Qt::Key_F1);
  EXPECT_TRUE(m_target.m_taken.empty());
  QAction* action = m_actions->Action(ID_HELP);
  m_actions->UpdateAll();
  EXPECT_FALSE(action->isEnabled());
}

#include "shell/ui/accelerator_keys.h"

#include <gtest/gtest.h>

#include <QDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QTest>

#include "docview/commands/command_ids.h"
#include "shell/menus/menu_resources.h"

namespace {

constexpr unsigned kBars[] = {IDR_MAINFRAME, IDR_TRACEFILE, IDR_MONITOR, IDR_CONFIG, IDR_SOURCE};

// Takes every command of the accelerators and of the menus and writes it down.
class Target : public CCmdTarget {
 public:
  Target() {
    for (const Accelerator& key : Accelerators()) Take(key.id);
    for (const unsigned bar : kBars)
      for (const MenuPopup& popup : MenuOf(bar))
        for (const MenuItem& item : popup.items) Take(item.id);
  }
  std::vector<unsigned> m_taken;
  bool m_enabled = true;

 private:
  void Take(unsigned id) {
    MapCommand(
        id, [this, id] { m_taken.push_back(id); }, [this](CCmdUI& ui) { ui.Enable(m_enabled); });
  }
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

// What the menus show is typed, as a user does who reads it there.
TEST_F(AcceleratorKeysTest, EveryKeyThatAMenuShowsSendsTheCommandOfItsItem) {
  // Of the main window's frame, of the windows inside it and of a configuration's list.
  const QSet<QString> others = {QStringLiteral("Alt+F4"), QStringLiteral("Ctrl+F4"),
                                QStringLiteral("Del")};
  MakeKeys();
  int typed = 0;
  for (const unsigned bar : kBars) {
    for (const MenuPopup& popup : MenuOf(bar)) {
      for (const MenuItem& item : popup.items) {
        QString key = QString::fromStdString(item.text).section(QLatin1Char('\t'), 1);
        if (key.isEmpty() || others.contains(key)) continue;
        if (key == QLatin1String("Alt-S")) key = QStringLiteral("Alt+S");  // as a monitor writes it
        m_target.m_taken.clear();
        QTest::keySequence(m_edit, QKeySequence(key));
        // In a trace file both saves are one operation, and the key sends the document's.
        const unsigned wanted = item.id == ID_FILE_SAVECOPY ? unsigned{ID_FILE_SAVE} : item.id;
        EXPECT_EQ(m_target.m_taken, std::vector<unsigned>{wanted}) << item.text;
        ++typed;
      }
    }
  }
  EXPECT_GT(typed, 40);
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

TEST_F(AcceleratorKeysTest, AWindowThatStandsForItselfHasItsOwnKeys) {
  MakeKeys();
  QMainWindow help;
  auto* text = new QLineEdit(QStringLiteral("page"), &help);
  help.setCentralWidget(text);
  help.show();
  help.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&help));
  for (const Accelerator& key : Accelerators())
    QTest::keySequence(text, QKeySequence(QString::fromLatin1(key.key)));
  EXPECT_TRUE(m_target.m_taken.empty());
  m_window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
  QTest::keyClick(m_edit, Qt::Key_F1);
  EXPECT_EQ(m_target.m_taken, std::vector<unsigned>{ID_HELP});
}

TEST_F(AcceleratorKeysTest, AModelessBoxOfTheWindowPassesTheKeysOn) {
  MakeKeys();
  QDialog box(&m_window);
  box.show();
  box.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&box));
  QTest::keyClick(&box, Qt::Key_F1);
  EXPECT_EQ(m_target.m_taken, std::vector<unsigned>{ID_HELP});
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

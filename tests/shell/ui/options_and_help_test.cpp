#include <QCheckBox>
#include <QLineEdit>
#include <QTextBlock>
#include <QTextBrowser>

#include "listview/columns/options_dialog.h"
#include "shell/menu_resources.h"
#include "shell_fixture.h"

namespace {

QAbstractButton* Button(QWidget& dialog, const char* text) {
  for (auto* button : dialog.findChildren<QAbstractButton*>()) {
    if (button->text().remove(QLatin1Char('&')) == QLatin1String(text)) return button;
  }
  return nullptr;
}

class OptionsAndHelpTest : public ShellTest {
 protected:
  int Width(const CMDIChildWnd& child, Column column) {
    return View(child)->List().Header().ColumnWidth(column);
  }
};

}  // namespace

TEST_F(OptionsAndHelpTest, OkChangesTheColumnsOfEveryOpenListAndCancelNone) {
  Start();
  Open(TraceFile("a.trc", 3));
  Open(TraceFile("b.trc", 3));
  ASSERT_EQ(Width(*Frame().Children()[0], Column::Count), 0);
  OnModal([](QWidget* dialog) {
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Options"));
    Button(*dialog, "Count")->click();
    Button(*dialog, "Cancel")->click();
  });
  Frame().OnCommand(ID_VIEW_OPTIONS);
  Settle();
  EXPECT_EQ(Width(*Frame().Children()[0], Column::Count), 0);

  OnModal([](QWidget* dialog) {
    Button(*dialog, "Count")->click();
    Button(*dialog, "Application")->click();
    Button(*dialog, "OK")->click();
  });
  Frame().OnCommand(ID_VIEW_OPTIONS);
  EXPECT_TRUE(Until([this] { return Width(*Frame().Children()[0], Column::Count) > 0; }));
  for (const auto& child : Frame().Children()) {
    EXPECT_GT(Width(*child, Column::Count), 0);
    EXPECT_EQ(Width(*child, Column::Application), 0);
  }
}

TEST_F(OptionsAndHelpTest, TheOptionsDialogsHelpOpensItsPageBesideTheDialog) {
  Start();
  QString topic;
  bool usable = false;
  OnModal([&](QWidget* dialog) {
    Button(*dialog, "Help")->click();
    ASSERT_TRUE(m_faces->Help());
    topic = m_faces->Help()->Topic();
    usable = m_faces->Help()->parentWidget() == dialog && m_faces->Help()->isVisible();
    Button(*dialog, "Cancel")->click();
  });
  Frame().OnCommand(ID_VIEW_OPTIONS);
  EXPECT_EQ(topic, QStringLiteral("columns"));
  EXPECT_TRUE(usable);
}

TEST_F(OptionsAndHelpTest, HelpTopicsOpensTheContentsAndF1ThePageOfWhatIsActive) {
  Start();
  QTest::keyClick(&Window(), Qt::Key_F1);
  ASSERT_TRUE(m_faces->Help());
  EXPECT_TRUE(m_faces->Help()->isVisible());
  EXPECT_EQ(m_faces->Help()->Topic(), QStringLiteral("window"));
  Frame().OnCommand(ID_HELP_INDEX);
  EXPECT_EQ(m_faces->Help()->Topic(), QStringLiteral("contents"));
  Open(TraceFile("a.trc", 3));
  QTest::keyClick(&Window(), Qt::Key_F1);
  EXPECT_EQ(m_faces->Help()->Topic(), QStringLiteral("list"));
}

TEST_F(OptionsAndHelpTest, EveryTopicHasAPageAndEveryLinkLeadsToOne) {
  HelpWindow help(nullptr);
  help.setAttribute(Qt::WA_DeleteOnClose, false);
  auto* pages = help.findChild<QTextBrowser*>();
  int links = 0;
  EXPECT_GT(HelpWindow::Topics().size(), 5);
  for (const QString& topic : HelpWindow::Topics()) {
    help.ShowTopic(topic);
    EXPECT_EQ(help.Topic(), topic);
    EXPECT_GT(pages->toPlainText().size(), 200) << topic.toStdString();
    EXPECT_FALSE(pages->toPlainText().startsWith(u'#')) << "shown as it is written";
    for (QTextBlock block = pages->document()->begin(); block.isValid(); block = block.next()) {
      for (auto part = block.begin(); !part.atEnd(); ++part) {
        const QString link = part.fragment().charFormat().anchorHref();
        if (link.isEmpty()) continue;
        EXPECT_TRUE(HelpWindow::Topics().contains(link.section(u'.', 0, 0))) << link.toStdString();
        ++links;
      }
    }
  }
  EXPECT_GT(links, HelpWindow::Topics().size());
  help.ShowTopic(QStringLiteral("no such page"));
  EXPECT_EQ(help.Topic(), QStringLiteral("contents"));
}

TEST_F(OptionsAndHelpTest, TheKeyboardPageTellsEveryAccelerator) {
  HelpWindow help(nullptr);
  help.setAttribute(Qt::WA_DeleteOnClose, false);
  help.ShowTopic(QStringLiteral("keys"));
  const QString text = help.findChild<QTextBrowser*>()->toPlainText();
  for (const Accelerator& key : Accelerators())
    EXPECT_TRUE(text.contains(QLatin1String(key.key))) << key.key;
}

TEST_F(OptionsAndHelpTest, EscapeClosesTheHelpAndTheProgramsEndTakesItAlong) {
  Start();
  Frame().OnCommand(ID_HELP_INDEX);
  ASSERT_TRUE(QTest::qWaitForWindowActive(m_faces->Help()));
  QTest::keyClick(m_faces->Help(), Qt::Key_Escape);
  EXPECT_TRUE(Until([this] { return !m_faces->Help(); }));
  Frame().OnCommand(ID_HELP_INDEX);
  ASSERT_TRUE(m_faces->Help());
  Window().close();
  EXPECT_FALSE(m_faces->Help());
}

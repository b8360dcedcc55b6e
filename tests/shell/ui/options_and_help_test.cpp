#include <QCheckBox>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>

#include "listview/columns/options_dialog.h"
#include "shell/child_frame.h"
#include "shell/help/ui/help_search.h"
#include "shell/menus/menu_resources.h"
#include "shell_fixture.h"

namespace {

QAbstractButton* Button(QWidget& dialog, const char* text) {
  for (auto* button : dialog.findChildren<QAbstractButton*>()) {
    if (button->text().remove(QLatin1Char('&')) == QLatin1String(text)) return button;
  }
  return nullptr;
}

QImage PictureOf(QTextBrowser& pages, const QString& name) {
  return pages.loadResource(QTextDocument::ImageResource, QUrl(name)).value<QImage>();
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

TEST_F(OptionsAndHelpTest, EveryPictureOfTheHelpShowsInTheWidthOfTheWindowAndHasWords) {
  HelpWindow help(nullptr);
  help.show();
  auto* const pages = help.findChild<QTextBrowser*>();
  for (const int width : {help.width(), 500}) {
    help.resize(width, help.height());
    int pictures = 0;
    for (const QString& topic : HelpWindow::Topics()) {
      help.ShowTopic(topic);
      QApplication::processEvents();
      for (auto block = pages->document()->begin(); block.isValid(); block = block.next())
        for (auto at = block.begin(); !at.atEnd(); ++at) {
          const QTextImageFormat picture = at.fragment().charFormat().toImageFormat();
          if (!picture.isValid()) continue;
          ++pictures;
          EXPECT_FALSE(PictureOf(*pages, picture.name()).isNull()) << picture.name().toStdString();
          EXPECT_GT(picture.width(), 300);
          EXPECT_FALSE(picture.property(QTextFormat::ImageAltText).toString().isEmpty());
        }
      EXPECT_EQ(pages->horizontalScrollBar()->maximum(), 0) << topic.toStdString() << " " << width;
    }
    EXPECT_GE(pictures, 2);
  }
}

TEST_F(OptionsAndHelpTest, PicturesAreDarkInDarkColours) {
  HelpWindow help(nullptr);
  auto* const pages = help.findChild<QTextBrowser*>();
  const auto corner = [&](bool dark) {
    QPalette colours;
    colours.setColor(QPalette::Base, dark ? Qt::black : Qt::white);
    colours.setColor(QPalette::Text, dark ? Qt::white : Qt::black);
    pages->setPalette(colours);
    help.ShowTopic("wizard");
    return PictureOf(*pages, "images/wizard-traces.png").pixelColor(4, 4).lightness();
  };
  EXPECT_GT(corner(false), 200);
  EXPECT_LT(corner(true), 80);
}

TEST_F(OptionsAndHelpTest, TheKeyboardPageTellsEveryAccelerator) {
  HelpWindow help(nullptr);
  help.setAttribute(Qt::WA_DeleteOnClose, false);
  help.ShowTopic(QStringLiteral("keys"));
  const QString text = help.findChild<QTextBrowser*>()->toPlainText();
  for (const Accelerator& key : Accelerators())
    EXPECT_TRUE(text.contains(QLatin1String(key.key))) << key.key;
}

TEST_F(OptionsAndHelpTest, TheHelpIsSearchedOverAllItsPages) {
  HelpWindow help(nullptr);
  help.setAttribute(Qt::WA_DeleteOnClose, false);
  help.ShowTopic(QStringLiteral("window"));
  help.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&help));
  auto* field = help.findChild<QLineEdit*>();
  auto* pages = help.findChild<QTextBrowser*>();
  const auto* search = dynamic_cast<HelpSearch*>(field->parentWidget());
  ASSERT_TRUE(search);
  QTest::keyClick(pages, Qt::Key_F, Qt::ControlModifier);
  EXPECT_TRUE(field->hasFocus());
  QTest::keyClicks(field, QStringLiteral("procedure"));
  EXPECT_EQ(help.Topic(), QStringLiteral("window")) << "the page that shows comes first";
  EXPECT_EQ(pages->textCursor().selectedText().toLower(), QStringLiteral("procedure"));
  const QStringList said = search->StatusText().split(QStringLiteral(" of "));
  ASSERT_EQ(said.size(), 2);
  EXPECT_EQ(said[0], QStringLiteral("1"));
  const int hits = said[1].toInt();
  EXPECT_GT(hits, 3);
  QSet<QString> topics;
  for (int i = 0; i < hits; ++i) {
    topics << help.Topic();
    EXPECT_EQ(pages->textCursor().selectedText().toLower(), QStringLiteral("procedure")) << i;
    QTest::keyClick(field, Qt::Key_Return);
  }
  EXPECT_GT(topics.size(), 2);
  EXPECT_EQ(search->StatusText(), QStringLiteral("1 of %1").arg(hits)) << "round";
  QTest::keyClick(field, Qt::Key_F3, Qt::ShiftModifier);
  EXPECT_EQ(search->StatusText(), QStringLiteral("%1 of %1").arg(hits));
  field->setText(QStringLiteral("no such word"));
  EXPECT_EQ(search->StatusText(), QStringLiteral("not found"));
}

TEST_F(OptionsAndHelpTest, AnotherPageEndsTheCountOfHitsAndTheNextStepGoesOnFromThere) {
  HelpWindow help(nullptr);
  help.setAttribute(Qt::WA_DeleteOnClose, false);
  help.ShowTopic(QStringLiteral("window"));
  auto* const field = help.findChild<QLineEdit*>();
  auto* const pages = help.findChild<QTextBrowser*>();
  const auto* const search = dynamic_cast<HelpSearch*>(field->parentWidget());
  field->setText(QStringLiteral("procedure"));
  const QString hits = search->StatusText().section(u' ', 2);
  EXPECT_EQ(search->StatusText(), QStringLiteral("1 of ") + hits);
  help.ShowTopic(QStringLiteral("list"));
  EXPECT_EQ(search->StatusText(), hits + QStringLiteral(" found"));
  EXPECT_EQ(help.Topic(), QStringLiteral("list")) << "the page is left to the person";
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(search->StatusText(), QStringLiteral("1 of ") + hits);
  EXPECT_EQ(pages->textCursor().selectedText().toLower(), QStringLiteral("procedure"));
  help.ShowTopic(QStringLiteral("list"));
  QTest::keyClick(field, Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_EQ(search->StatusText(), hits + QStringLiteral(" of ") + hits);
}

TEST_F(OptionsAndHelpTest, TheHelpStaysOnASmallScreenWithItsFieldInLargeLetters) {
  const QFont before = QApplication::font();
  QFont large = before;
  large.setPointSize(2 * before.pointSize());
  QApplication::setFont(large);
  {
    HelpWindow help(nullptr);
    help.setAttribute(Qt::WA_DeleteOnClose, false);
    const QRect room = help.screen()->availableGeometry();
    help.resize(2 * room.size());
    help.move(room.center());
    help.show();
    EXPECT_TRUE(Until([&] { return room.contains(help.frameGeometry()); }));
    help.resize(room.width() * 3 / 4, room.height() / 2);
    auto* const field = help.findChild<QLineEdit*>();
    field->setText(QStringLiteral("the"));
    Settle();
    EXPECT_TRUE(field->isVisible());
    EXPECT_LE(field->mapTo(&help, QPoint(field->width(), 0)).x(), help.width());
  }
  QApplication::setFont(before);
}

TEST_F(OptionsAndHelpTest, TheKeysOfTheMainWindowAreNotThoseOfTheHelp) {
  Start();
  Open(TraceFile("a.trc", 3));
  Frame().OnCommand(ID_HELP_INDEX);
  ASSERT_TRUE(QTest::qWaitForWindowActive(m_faces->Help()));
  auto* pages = m_faces->Help()->findChild<QTextBrowser*>();
  QTest::keyClick(pages, Qt::Key_F6, Qt::ControlModifier);
  EXPECT_FALSE(static_cast<CTraceChildFrame*>(Frame().MDIGetActive())->IsTreeShown());
  Window().activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&Window()));
  QTest::keyClick(&Window(), Qt::Key_F6, Qt::ControlModifier);
  EXPECT_TRUE(static_cast<CTraceChildFrame*>(Frame().MDIGetActive())->IsTreeShown());
}

TEST_F(OptionsAndHelpTest, ADialogComesUpAtTheNextStartWhereItWasLeft) {
  Start();
  const auto open = [this](const std::function<void(QWidget*)>& act) {
    OnModal([&act](QWidget* dialog) {
      act(dialog);
      Button(*dialog, "Cancel")->click();
    });
    Frame().OnCommand(ID_VIEW_OPTIONS);
  };
  QPoint left;
  open([&left](QWidget* dialog) {
    QTest::qWait(300);  // after the time in which a window manager places it
    dialog->move(dialog->pos() + QPoint(30, 20));
    left = dialog->pos();
  });
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, std::string(kRegSettings) + "\\Dialogs", "COptionsDlg", "")
                .find(std::to_string(left.x()) + " " + std::to_string(left.y()) + " "),
            0u);
  m_app.reset();
  Start();
  open([left](QWidget* dialog) { EXPECT_EQ(dialog->pos(), left); });
}

TEST_F(OptionsAndHelpTest, FindComesUpBesideTheRowThatHasTheFocus) {
  Start();
  Open(TraceFile("a.trc", 400));
  Front()->showMaximized();
  Settle();
  RowList& list = View(*Frame().MDIGetActive())->List();
  const int top = list.TopIndex();
  for (int row = top; row < top + list.CountPerPage(); row += 3) {
    list.SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
    // Offscreen there is no window manager to bring the window back.
    Window().activateWindow();
    list.SetFocus();
    ASSERT_TRUE(Until([] { return QApplication::focusWidget() != nullptr; }));
    const QRect line = FocusedRowOnScreen();
    ASSERT_FALSE(line.isEmpty()) << row;
    OnModal([&](QWidget* dialog) {
      EXPECT_FALSE(dialog->frameGeometry().intersects(line)) << row;
      dialog->close();
    });
    Frame().OnCommand(ID_EDIT_FIND);
  }
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

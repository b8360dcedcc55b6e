// The details in their window: sizes, keys, the clipboard, the bus for assistive technology.
#include "shell/details/ui/details_widget.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QElapsedTimer>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include "docview/ui/hit_color.h"
#include "docview/ui/qt_host.h"
#include "settings/registry.h"
#include "support/make_event.h"
#include "support/plain_trace_pane.h"
#include "support/qt_test_main.h"
#include "support/temp_dir.h"

namespace {

class DetailsWidgetTest : public testing::Test {
 protected:
  DetailsWidgetTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    m_document.m_names[8].name = "Sql";
    m_document.m_loading = false;
    m_details.OnPane(m_pane);
    m_pane.Watch(m_details);
    m_details.OnShown(true);
    Widget().resize(700, 200);
    Widget().show();
    Widget().activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&Widget()));
  }
  ~DetailsWidgetTest() override {
    m_pane.Unwatch(m_details);
    SetSettingsFile("");
  }

  void Show(const TraceFields& fields) {
    m_document.AddTrace(MakeEvent(fields).release());
    m_pane.GoToTrace(m_document.m_traces.back());
    QTest::qWait(0);
  }
  QtDetails& Widget() { return *m_widget; }
  DetailFields& Fields() { return *Widget().findChild<DetailFields*>(); }
  DetailText& Text() { return *Widget().findChild<DetailText*>(); }
  QPushButton& All() { return *Widget().findChild<QPushButton*>("detailAll"); }
  QPushButton& Pretty() { return *Widget().findChild<QPushButton*>("detailPretty"); }
  QString Message() { return Widget().findChild<QLabel*>("detailMessage")->text(); }
  int RowOf(const char* caption) {
    for (int row = 0; row < Fields().topLevelItemCount(); ++row)
      if (Fields().topLevelItem(row)->text(0) == QLatin1String(caption)) return row;
    ADD_FAILURE() << "no row " << caption;
    return 0;
  }

  TempDir m_dir;
  QtHost m_host;
  CTraceDoc m_document{m_host};
  PlainTracePane m_pane{m_document};
  QtDetails* m_widget = nullptr;
  std::vector<std::string> m_taken;
  DetailsPane m_details{m_host,
                        [this](DetailsPane& pane) {
                          auto made = std::make_unique<QtDetails>(pane);
                          m_widget = made.get();
                          return made;
                        },
                        [this](const std::string& text) { m_taken.push_back(text); }};
};

TEST_F(DetailsWidgetTest, ItShowsTheFieldsAndTheWholeTextWithItsLines) {
  EXPECT_EQ(Message(), QStringLiteral("No trace has the focus"));
  Show({.text = "two\nlines", .component = 8});
  EXPECT_EQ(Message(), QString());
  EXPECT_EQ(Fields().topLevelItem(RowOf("Component"))->text(1), QStringLiteral("Sql"));
  EXPECT_EQ(Text().toPlainText(), QStringLiteral("two\nlines"));
  EXPECT_FALSE(All().isVisible());
}

TEST_F(DetailsWidgetTest, ATextThatIsNoUtf8IsShownNevertheless) {
  Show({.text = "a\xFFz"});
  EXPECT_EQ(Text().toPlainText(), QString::fromUtf8("a\xEF\xBF\xBDz"));
}

TEST_F(DetailsWidgetTest, WideItHasTheTextBesideTheFieldsAndNarrowBelowThem) {
  Show({.text = "a"});
  EXPECT_GT(Text().mapTo(&Widget(), QPoint()).x(), 100);
  Widget().resize(250, 600);
  QTest::qWait(0);
  EXPECT_EQ(Text().mapTo(&Widget(), QPoint()).x(), 0);
  EXPECT_GT(Text().mapTo(&Widget(), QPoint()).y(), 100);
}

TEST_F(DetailsWidgetTest, InLettersOfTwiceTheSizeTextAndFieldsKeepALine) {
  QFont large = Widget().font();
  large.setPointSizeF(large.pointSizeF() * 2);
  Widget().setFont(large);
  Show({.text = "a", .component = 8});
  QTest::qWait(0);
  EXPECT_GE(Text().viewport()->height(), Text().fontMetrics().lineSpacing());
  EXPECT_GE(Fields().visualItemRect(Fields().topLevelItem(0)).height(),
            Fields().fontMetrics().height());
  EXPECT_GE(Fields().columnWidth(0),
            Fields().fontMetrics().horizontalAdvance(QStringLiteral("Tic Difference")));
}

TEST_F(DetailsWidgetTest, AButtonShowsTheRestOfALongText) {
  const std::string text(65'000, 'x');
  Show({.text = text.c_str()});
  ASSERT_TRUE(All().isVisible());
  EXPECT_EQ(All().text(), QStringLiteral("Show &All (56,808 More Bytes)"));
  QTest::mouseClick(&All(), Qt::LeftButton);
  EXPECT_EQ(Text().toPlainText().size(), 65'000);
  EXPECT_FALSE(All().isVisible());
  EXPECT_TRUE(Text().hasFocus());
}

TEST_F(DetailsWidgetTest, CtrlCCopiesOneValueAndSeveralWithTheirNames) {
  Show({.text = "a", .stack = "one\n", .component = 8});
  m_widget->SetFocus();
  EXPECT_TRUE(Fields().hasFocus());
  Fields().clearSelection();
  Fields().topLevelItem(RowOf("Component"))->setSelected(true);
  QTest::keyClick(&Fields(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("Sql"));
  Fields().topLevelItem(RowOf("Stack"))->setSelected(true);
  QTest::keyClick(&Fields(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("Component: Sql\nStack: one\n"));
}

TEST_F(DetailsWidgetTest, TheMenuKeyOffersTheStepsOfTheFieldAndCopying) {
  Show({.text = "a", .component = 8});
  Fields().setCurrentItem(Fields().topLevelItem(RowOf("Component")));
  QContextMenuEvent asked(QContextMenuEvent::Keyboard, QPoint(1, 1),
                          Fields().mapToGlobal(QPoint(1, 1)));
  QApplication::sendEvent(&Fields(), &asked);
  const QPointer<QMenu> menu = Fields().findChild<QMenu*>("choices");
  ASSERT_TRUE(menu && menu->isVisible());
  QStringList texts;
  for (const QAction* action : menu->actions()) texts << action->text();
  EXPECT_EQ(texts.join('|').toStdString(),
            "&Copy\tCtrl+C|Copy &All||&Goto Source|&Only This Component \"Sql\"|"
            "&Hide This Component \"Sql\"");
  EXPECT_FALSE(menu->actions()[3]->isEnabled());
  QTest::keyClick(menu, Qt::Key_H);
  EXPECT_EQ(m_taken, std::vector<std::string>{"component != Sql"});
  EXPECT_TRUE(QTest::qWaitFor([&] { return !menu; }));
}

TEST_F(DetailsWidgetTest, TheKeysForCopyingAreClaimedBeforeTheCommandsOfTheWindow) {
  Show({.text = "a"});
  for (QWidget* const widget : {static_cast<QWidget*>(&Fields()), static_cast<QWidget*>(&Text())}) {
    QKeyEvent copy(QEvent::ShortcutOverride, Qt::Key_C, Qt::ControlModifier);
    copy.ignore();
    QApplication::sendEvent(widget, &copy);
    EXPECT_TRUE(copy.isAccepted());
    QKeyEvent find(QEvent::ShortcutOverride, Qt::Key_F, Qt::ControlModifier);
    find.ignore();
    QApplication::sendEvent(widget, &find);
    EXPECT_FALSE(find.isAccepted());
  }
}

TEST_F(DetailsWidgetTest, TabGoesFromTheFieldsToTheTextAndEscapeIsLeftToTheWindow) {
  Show({.text = "a"});
  m_widget->SetFocus();
  QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  QApplication::sendEvent(&Fields(), &escape);
  EXPECT_FALSE(escape.isAccepted());
  QTest::keyClick(&Fields(), Qt::Key_Tab);
  EXPECT_TRUE(Text().hasFocus());
  QKeyEvent again(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  QApplication::sendEvent(&Text(), &again);
  EXPECT_FALSE(again.isAccepted());
}

TEST_F(DetailsWidgetTest, TheFieldThatTheUserLooksAtStaysWhereItIs) {
  Show({.text = "a", .component = 8});
  Fields().setCurrentItem(Fields().topLevelItem(RowOf("Component")));
  Show({.text = "b"});
  EXPECT_EQ(Fields().currentIndex().row(), RowOf("Component"));
  EXPECT_EQ(Fields().currentItem()->text(1), QString());
}

TEST_F(DetailsWidgetTest, AssistiveTechnologyReadsFieldsAndText) {
  Show({.text = "the text", .component = 8});
  QAccessibleInterface* const fields = QAccessible::queryAccessibleInterface(&Fields());
  ASSERT_TRUE(fields && fields->tableInterface());
  EXPECT_EQ(fields->text(QAccessible::Name), QStringLiteral("Fields"));
  EXPECT_EQ(fields->tableInterface()->cellAt(RowOf("Component"), 1)->text(QAccessible::Name),
            QStringLiteral("Sql"));
  QAccessibleInterface* const text = QAccessible::queryAccessibleInterface(&Text());
  ASSERT_TRUE(text && text->textInterface());
  EXPECT_EQ(text->textInterface()->text(0, 8), QStringLiteral("the text"));
}

TEST_F(DetailsWidgetTest, AButtonItsLetterAndThePopUpOfTheTextShowJsonOnLinesOfItsOwn) {
  Show({.text = "plain"});
  EXPECT_FALSE(Pretty().isVisible());
  Show({.text = "{\"a\":1}"});
  ASSERT_TRUE(Pretty().isVisible());
  QTest::mouseClick(&Pretty(), Qt::LeftButton);
  const QString pretty = QStringLiteral("{\n  \"a\": 1\n}");
  EXPECT_EQ(Text().toPlainText(), pretty);
  EXPECT_TRUE(Pretty().isChecked());
  QTest::keyClick(&Fields(), Qt::Key_J, Qt::AltModifier);
  EXPECT_TRUE(
      QTest::qWaitFor([this] { return Text().toPlainText() == QStringLiteral("{\"a\":1}"); }));
  QContextMenuEvent asked(QContextMenuEvent::Keyboard, QPoint(1, 1), QPoint(1, 1));
  QApplication::sendEvent(Text().viewport(), &asked);
  const QPointer<QMenu> menu = Text().findChild<QMenu*>();
  ASSERT_TRUE(menu && menu->isVisible());
  EXPECT_FALSE(menu->actions().last()->isChecked());
  QTest::keyClick(menu, Qt::Key_J);
  EXPECT_EQ(Text().toPlainText(), pretty);
  EXPECT_TRUE(Pretty().isChecked());
  EXPECT_TRUE(QTest::qWaitFor([&] { return !menu; }));
  Show({.text = "plain"});
  EXPECT_FALSE(Pretty().isVisible());
}

TEST_F(DetailsWidgetTest, TabReachesTheButtonsWhichAreNamedInLettersOfBothSizes) {
  const std::string text = "{\"a\":\"" + std::string(9000, 'x') + "\"}";
  Show({.text = text.c_str()});
  Text().setFocus();
  QTest::keyClick(&Text(), Qt::Key_Tab);
  EXPECT_TRUE(Pretty().hasFocus());
  QTest::keyClick(&Pretty(), Qt::Key_Tab);
  EXPECT_TRUE(All().hasFocus());
  QTest::keyClick(&All(), Qt::Key_Tab);
  EXPECT_TRUE(Fields().hasFocus());
  QAccessibleInterface* const button = QAccessible::queryAccessibleInterface(&Pretty());
  EXPECT_EQ(button->text(QAccessible::Name), QStringLiteral("Pretty JSON"));
  EXPECT_TRUE(button->state().checkable);
  QFont large = Widget().font();
  large.setPointSizeF(large.pointSizeF() * 2);
  Widget().setFont(large);
  for (const QSize size : {QSize(700, 200), QSize(420, 400)}) {
    Widget().resize(size);
    QTest::qWait(0);
    EXPECT_GE(Pretty().width(), Pretty().sizeHint().width());
    EXPECT_GE(Text().viewport()->height(), Text().fontMetrics().lineSpacing());
    EXPECT_FALSE(Pretty().geometry().intersects(All().geometry()));
  }
}

TEST_F(DetailsWidgetTest, AHitIsTintedInTheText) {
  WhereError error;
  m_pane.m_filter.where = WhereProgram::Compile("text contains \"z\"", error);
  Show({.text = "\xC3\xA4\nz"});
  ASSERT_EQ(Text().extraSelections().size(), 1);
  EXPECT_EQ(Text().extraSelections()[0].cursor.selectedText(), QStringLiteral("z"));
  EXPECT_EQ(Text().extraSelections()[0].format.background().color(), HitColor(Text().palette()));
}

}  // namespace

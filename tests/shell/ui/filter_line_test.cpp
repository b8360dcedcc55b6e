// The line of filter text as a user has it: real windows, keys and focus.
#include "shell/filterline/ui/filter_line_widget.h"

#include <QAccessible>
#include <QClipboard>
#include <QLabel>

#include "shell/child_frame.h"
#include "shell_fixture.h"

namespace {

class FilterLineTest : public ShellTest {
 protected:
  // Traces "trace 0" ..., in turn of the components "Net" and "Job queue".
  void OpenTraces(int traces = 6) {
    TrcImage image;
    image.Name(7, "web").Name(8, "Net").Name(9, "Job queue");
    for (int i = 0; i < traces; ++i)
      image.Trace({.text = "trace " + std::to_string(i),
                   .machine = 7,
                   .component = static_cast<NameId>(i % 2 ? 9 : 8)});
    const std::string path = m_dir.File("web.trc");
    image.WriteTo(path);
    ASSERT_TRUE(Open(path));
  }
  FilterLineWidget* Line() {
    const auto all = Front()->findChildren<QWidget*>(QStringLiteral("filter line"));
    return all.isEmpty() ? nullptr : static_cast<FilterLineWidget*>(all.front());
  }
  FilterEdit& Edit() { return Line()->Edit(); }
  QWidget* Rows() {
    return static_cast<QWidget*>(
        dynamic_cast<QtControl*>(Frame().MDIGetActive()->GetActiveView()->Control())->Widget());
  }
  int RowCount() { return View(*Frame().MDIGetActive())->List().ItemCount(); }
  void Key(QWidget* at, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QTest::keyClick(at, static_cast<Qt::Key>(key), modifiers);
    Settle();
  }
  void CtrlL() {
    Key(QApplication::focusWidget() ? QApplication::focusWidget() : &Window(), Qt::Key_L,
        Qt::ControlModifier);
  }
  void Type(const char* text) {
    QTest::keyClicks(&Edit(), QString::fromLatin1(text));
    Settle();
  }
  bool IsListOpen() { return Line()->Completions() && Line()->Completions()->isVisible(); }
  std::string ListText() {
    std::string all;
    for (int row = 0; row < Line()->Completions()->count(); ++row)
      all += Line()
                 ->Completions()
                 ->item(row)
                 ->text()
                 .section(QStringLiteral("   "), 0, 0)
                 .toStdString() +
             "|";
    return all;
  }
};

}  // namespace

TEST_F(FilterLineTest, CtrlLShowsItAboveTheRowsWithTheFocusAndEscapePutsItAway) {
  Start();
  OpenTraces();
  EXPECT_FALSE(Line());
  const auto topOf = [this](const QWidget* widget) {
    return widget->mapTo(&Window(), QPoint(0, 0)).y();
  };
  const int top = topOf(Rows());
  CtrlL();
  ASSERT_TRUE(Line());
  EXPECT_TRUE(Edit().hasFocus());
  EXPECT_GE(topOf(Rows()), topOf(Line()) + Line()->height());
  EXPECT_GE(topOf(Line()), top);
  const QPointer<QWidget> gone = Line();
  Key(&Edit(), Qt::Key_Escape);
  EXPECT_TRUE(Until([&] { return !gone; })) << "what is put away has no widget";
  EXPECT_EQ(topOf(Rows()), top);
  EXPECT_TRUE(Rows()->hasFocus());
}

TEST_F(FilterLineTest, EnterAppliesAndCtrlLInTheLineBringsTheRowsBack) {
  Start();
  OpenTraces();
  CtrlL();
  Type("component == Net");
  EXPECT_EQ(RowCount(), 6);
  Key(&Edit(), Qt::Key_Return);
  EXPECT_EQ(RowCount(), 3);
  EXPECT_TRUE(Edit().hasFocus());
  Rows()->setFocus();
  CtrlL();
  EXPECT_TRUE(Edit().hasFocus());
  EXPECT_EQ(Edit().selectedText(), QStringLiteral("component == Net"));
  CtrlL();
  EXPECT_EQ(RowCount(), 6);
  CtrlL();
  EXPECT_EQ(Edit().text(), QStringLiteral("component == Net"));
  EXPECT_EQ(RowCount(), 6);
}

TEST_F(FilterLineTest, AnErrorIsUnderlinedWhereItStandsAndSaidInWords) {
  Start();
  OpenTraces();
  CtrlL();
  const auto red = [this] {
    const QImage image = Edit().grab().toImage();
    int least = image.width(), most = -1;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const QColor color = image.pixelColor(x, y);
        if (color.red() - std::max(color.green(), color.blue()) < 40) continue;
        least = std::min(least, x);
        most = std::max(most, x);
      }
    }
    return std::pair(least, most);
  };
  Type("verbose and ");
  const int from = Edit().CaretRect().left();
  Type("componet == Net");
  const QString message =
      QStringLiteral("Column 13: there is no field \"componet\"; did you mean \"component\"?");
  EXPECT_EQ(Line()->Message(), message);
  EXPECT_EQ(Edit().accessibleDescription(), message);
  const auto* const said = Line()->findChildren<QLabel*>().front();
  EXPECT_EQ(said->text(), message);
  const auto colourOn = [&](QColor window) {
    QPalette colors = Line()->palette();
    colors.setColor(QPalette::Window, window);
    Line()->setPalette(colors);
    return said->palette().color(QPalette::WindowText);
  };
  EXPECT_EQ(colourOn(Qt::white), FilterEdit::ErrorColor(Qt::white));
  EXPECT_EQ(colourOn(Qt::black), FilterEdit::ErrorColor(Qt::black)) << "beside a light edit";
  EXPECT_NE(FilterEdit::ErrorColor(Qt::white), FilterEdit::ErrorColor(Qt::black));
  const auto [least, most] = red();
  const int width = Edit().fontMetrics().horizontalAdvance(QStringLiteral("componet"));
  EXPECT_NEAR(least, from, width / 3);
  EXPECT_NEAR(most, from + width, width / 3);
  Key(&Edit(), Qt::Key_Return);
  EXPECT_EQ(RowCount(), 6);
  Edit().clear();
  Type("verbose");
  EXPECT_EQ(red().second, -1) << "no underline stays";
}

TEST_F(FilterLineTest, ATextThatIsNotInForceSaysSo) {
  Start();
  OpenTraces();
  CtrlL();
  Type("component == Net");
  Key(&Edit(), Qt::Key_Return);
  EXPECT_EQ(Line()->Message(), QStringLiteral("Applied."));
  Type(" and verbose");
  EXPECT_EQ(Line()->Message(), QStringLiteral("Enter applies this text."));
  EXPECT_EQ(Edit().accessibleDescription(), QStringLiteral("Enter applies this text."));
  EXPECT_EQ(RowCount(), 3);
}

TEST_F(FilterLineTest, CopyAndSelectAllAreTheLinesOwnKeysWhileItHasTheFocus) {
  Start();
  OpenTraces();
  CtrlL();
  Type("verbose");
  Key(&Edit(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(Edit().selectedText(), QStringLiteral("verbose"));
  Key(&Edit(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("verbose"));
  EXPECT_EQ(RowCount(), 6);
}

TEST_F(FilterLineTest, TheListOfALongTextStandsAtTheLineAndNotBesideIt) {
  Start();
  OpenTraces();
  Window().resize(1400, 700);
  Settle();
  CtrlL();
  QApplication::clipboard()->setText(QStringLiteral("verbose or ").repeated(30) +
                                     QStringLiteral("comp"));
  Edit().paste();  // the text is scrolled only when it is painted
  ASSERT_TRUE(IsListOpen());
  const int right = Edit().mapTo(Edit().window(), QPoint(Edit().width(), 0)).x();
  EXPECT_LE(Line()->Completions()->x(), right);
}

TEST_F(FilterLineTest, TypingOffersCompletionsAndTabTakesOne) {
  Start();
  OpenTraces();
  CtrlL();
  EXPECT_FALSE(IsListOpen()) << "not before something is typed";
  Type("comp");
  ASSERT_TRUE(IsListOpen());
  EXPECT_EQ(ListText(), "component|");
  EXPECT_TRUE(Edit().hasFocus());
  Key(&Edit(), Qt::Key_Tab);
  EXPECT_EQ(Edit().text(), QStringLiteral("component "));
  Type("== ");
  ASSERT_TRUE(IsListOpen());
  EXPECT_NE(ListText().find("\"Job queue\"|"), std::string::npos) << ListText();
  Key(&Edit(), Qt::Key_Down);
  Key(&Edit(), Qt::Key_Return);
  EXPECT_EQ(Edit().text(), QStringLiteral("component == \"Job queue\" "));
  Key(&Edit(), Qt::Key_Escape);
  EXPECT_FALSE(IsListOpen());
  ASSERT_TRUE(Line()) << "Escape closes the list first";
  Key(&Edit(), Qt::Key_Space, Qt::ControlModifier);
  EXPECT_TRUE(IsListOpen());
  Key(&Edit(), Qt::Key_Return);
  EXPECT_EQ(RowCount(), 3) << "with nothing selected in the list Enter applies";
  EXPECT_FALSE(IsListOpen());
}

TEST_F(FilterLineTest, TheListGoesWithTheFocusAndWithTheLine) {
  Start();
  OpenTraces();
  CtrlL();
  Type("comp");
  ASSERT_TRUE(IsListOpen());
  Rows()->setFocus();
  EXPECT_FALSE(IsListOpen());
  Edit().setFocus();
  Type("o");
  const QPointer<QWidget> list = Line()->Completions();
  Key(&Edit(), Qt::Key_Escape);
  Key(&Edit(), Qt::Key_Escape);
  EXPECT_FALSE(list);
}

TEST_F(FilterLineTest, UpAndDownWalkTheTextsThatWereApplied) {
  Start();
  OpenTraces();
  CtrlL();
  for (const char* const text : {"component == Net", "verbose"}) {
    Edit().clear();
    Type(text);
    Key(&Edit(), Qt::Key_Return);
  }
  Edit().clear();
  Type("half");
  Key(&Edit(), Qt::Key_Up);
  EXPECT_EQ(Edit().text(), QStringLiteral("verbose"));
  Key(&Edit(), Qt::Key_Up);
  EXPECT_EQ(Edit().text(), QStringLiteral("component == Net"));
  Key(&Edit(), Qt::Key_Down);
  Key(&Edit(), Qt::Key_Down);
  EXPECT_EQ(Edit().text(), QStringLiteral("half"));
}

TEST_F(FilterLineTest, AFilterIsSavedByNameFoundInANewWindowAndDeleted) {
  Start();
  OpenTraces();
  CtrlL();
  QMenu& menu = *Line()->Filters().menu();
  const auto item = [](QMenu& in, const char* text) -> QAction* {
    emit in.aboutToShow();
    for (QAction* action : in.actions()) {
      if (action->text() == QLatin1String(text)) return action;
    }
    return nullptr;
  };
  ASSERT_TRUE(item(menu, "&Save As..."));
  EXPECT_FALSE(item(menu, "&Save As...")->isEnabled()) << "there is no text";
  EXPECT_FALSE(item(menu, "&Delete")->isEnabled());
  Type("component == Net");
  Key(&Edit(), Qt::Key_Return);
  OnModal([](QWidget* dialog) {
    dialog->findChild<QLineEdit*>()->setText(QStringLiteral("Net & co"));
    static_cast<QDialog*>(dialog)->accept();
  });
  item(menu, "&Save As...")->trigger();
  ASSERT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  Settle();
  ASSERT_TRUE(Line());
  EXPECT_EQ(RowCount(), 6);
  QMenu& other = *Line()->Filters().menu();
  ASSERT_TRUE(item(other, "Net && co"));
  item(other, "Net && co")->trigger();
  EXPECT_EQ(RowCount(), 3);
  EXPECT_EQ(Edit().text(), QStringLiteral("component == Net"));
  ASSERT_EQ(item(other, "&Recent")->menu()->actions().size(), 1);
  EXPECT_EQ(item(other, "&Recent")->menu()->actions().front()->text(),
            QStringLiteral("component == Net"));
  item(other, "&Delete")->menu()->actions().front()->trigger();
  EXPECT_FALSE(item(other, "Net && co"));
}

TEST_F(FilterLineTest, AltLeftAndRightWalkTheStepsWhereverTheFocusIs) {
  Start();
  OpenTraces();
  CtrlL();
  Type("component == Net");
  Key(&Edit(), Qt::Key_Return);
  Key(&Edit(), Qt::Key_Left, Qt::AltModifier);
  EXPECT_EQ(RowCount(), 6);
  EXPECT_EQ(Edit().text(), QString());
  Rows()->setFocus();
  Key(Rows(), Qt::Key_Right, Qt::AltModifier);
  EXPECT_EQ(RowCount(), 3);
  EXPECT_TRUE(Rows()->hasFocus());
}

TEST_F(FilterLineTest, AWindowWithALineClosesWithIt) {
  Start();
  OpenTraces();
  CtrlL();
  Type("comp");
  ASSERT_TRUE(IsListOpen());
  Frame().OnCommand(ID_FILE_CLOSE);
  EXPECT_TRUE(Until([this] { return Frame().Children().empty(); }));
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST_F(FilterLineTest, TheMenuOpensATextInTheDialogAndTheDialogGivesItBack) {
  Start();
  OpenTraces();
  CtrlL();
  const auto item = [&] {
    QMenu& menu = *Line()->Filters().menu();
    emit menu.aboutToShow();
    for (QAction* const action : menu.actions())
      if (action->text() == QLatin1String("Open in Filter Dialo&g...")) return action;
    return static_cast<QAction*>(nullptr);
  };
  const auto runDialog = [&](const char* button, const std::function<void()>& open) {
    m_host.Post(MustRun([button] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window && QTest::qWaitForWindowActive(window));
      auto* const pressed = window->findChild<QPushButton*>(QLatin1String(button));
      EXPECT_TRUE(pressed);
      if (pressed) QTest::mouseClick(pressed, Qt::LeftButton);
      if (window->isVisible()) window->reject();
    }));
    open();
    Settle();
  };
  EXPECT_FALSE(item()->isEnabled());
  Type("text contains x");
  EXPECT_FALSE(item()->isEnabled());
  EXPECT_EQ(item()->toolTip(),
            QLatin1String("Column 1: the filter dialog cannot say \"text contains\""));
  Edit().selectAll();
  Type("component == Net");
  Key(&Edit(), Qt::Key_Return);
  ASSERT_TRUE(item()->isEnabled());
  runDialog("1", [&] { item()->trigger(); });
  EXPECT_EQ(Edit().text(), QString());
  EXPECT_EQ(RowCount(), 3);
  runDialog("1222", [&] { Frame().OnCommand(ID_VIEW_FILTER); });
  EXPECT_EQ(Edit().text(), QLatin1String("component == Net"));
  EXPECT_EQ(RowCount(), 3);
}

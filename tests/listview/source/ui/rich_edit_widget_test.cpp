// The text control on the screen: what it shows, where its caret is, what it finds.
#include "listview/source/ui/rich_edit_widget.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QFontInfo>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "listview/source/text_file.h"
#include "listview/source/ui/line_margin.h"
#include "support/qt_test_main.h"

namespace {

constexpr int kLines = 1000;

class RichEditWidget : public testing::Test, public RichEditOwner {
 protected:
  RichEditWidget() { m_edit.SetFormat({"Courier New", 8, false}); }
  void OnEditModified(bool modified) override { m_reported += modified ? "modified " : "clean "; }

  void Show(int widthPx = 400, int heightPx = 200) {
    m_edit.resize(widthPx, heightPx);
    m_edit.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_edit));
  }
  // "line 1\nline 2\n...".
  void SetLines() {
    std::string text;
    for (int line = 1; line <= kLines; ++line) text += "line " + std::to_string(line) + "\n";
    m_edit.SetText(text);
  }
  void GoToLine(int line) {
    const int index = m_edit.LineIndex(line - 1);
    m_edit.SetSel(index, index);
  }
  // Where the caret's line stands: 0 at the top of the window, 1 at its bottom.
  double CaretPlace() {
    return m_edit.cursorRect().center().y() / static_cast<double>(m_edit.viewport()->height());
  }
  int CaretLine() { return m_edit.textCursor().blockNumber() + 1; }

  QWidget& Margin() { return *m_edit.findChild<QWidget*>("margin"); }
  // The rows of the margin in which the arrow's colour stands.
  struct Rows {
    int first = -1, last = -1, count = 0;
  };
  Rows ArrowRows() {
    const QImage look = Margin().grab().toImage();
    const QRgb arrow = LineMargin::ArrowColor().rgb();
    Rows rows;
    for (int y = 0; y < look.height(); ++y) {
      bool has = false;
      for (int x = 0; x < look.width(); ++x) has |= look.pixel(x, y) == arrow;
      if (!has) continue;
      if (rows.first < 0) rows.first = y;
      rows.last = y;
      ++rows.count;
    }
    return rows;
  }

  std::string m_reported;
  QtRichEdit m_edit{*this};
};

// ---- the margin

TEST_F(RichEditWidget, EveryLineOnViewHasItsNumberBesideIt) {
  SetLines();
  Show();
  GoToLine(500);
  const std::vector<QtRichEdit::ShownLine> lines = m_edit.ShownLines();
  ASSERT_GT(lines.size(), 5u);
  bool caretSeen = false;
  for (const QtRichEdit::ShownLine& line : lines) {
    EXPECT_EQ(line.number, lines[0].number + static_cast<int>(&line - lines.data()));
    if (line.number + 1 != CaretLine()) continue;
    caretSeen = true;
    EXPECT_NEAR(line.place.center().y(), m_edit.cursorRect().center().y(), 2);
  }
  EXPECT_TRUE(caretSeen);
}

TEST_F(RichEditWidget, TheMarginHasRoomForTheLargestNumberAndTheTextBeginsAfterIt) {
  Show();
  m_edit.SetText("one line");
  const int few = Margin().width();
  SetLines();
  EXPECT_GT(Margin().width(), few);
  EXPECT_GE(Margin().width(), m_edit.fontMetrics().horizontalAdvance("1001") + 10);
  EXPECT_EQ(m_edit.viewport()->x(), Margin().geometry().right() + 1);
  EXPECT_EQ(Margin().height(), m_edit.viewport()->height());
}

TEST_F(RichEditWidget, AnArrowMarksTheLineUntilTheCaretMoves) {
  SetLines();
  Show();
  GoToLine(500);
  EXPECT_EQ(ArrowRows().count, 0);
  m_edit.MarkLine(499);
  const Rows arrow = ArrowRows();
  EXPECT_GT(arrow.count, 3);
  const QRect line = m_edit.cursorRect();
  EXPECT_GE(arrow.first, line.top());
  EXPECT_LE(arrow.last, line.bottom());
  EXPECT_FALSE(m_edit.HasSelection());
  QTest::keyClick(&m_edit, Qt::Key_Down);
  EXPECT_EQ(ArrowRows().count, 0);
}

TEST_F(RichEditWidget, ScrollingLeavesTheMarkBesideItsLine) {
  SetLines();
  Show();
  GoToLine(500);
  m_edit.MarkLine(499);
  const int before = ArrowRows().first;
  const int top = m_edit.cursorRect().top();
  m_edit.verticalScrollBar()->setValue(m_edit.verticalScrollBar()->value() + 2);
  EXPECT_EQ(ArrowRows().first - before, m_edit.cursorRect().top() - top);
  EXPECT_LT(m_edit.cursorRect().top(), top);
}

// ---- text

TEST_F(RichEditWidget, GivesBackTheTextThatItWasGiven) {
  for (const char* text :
       {"", "a", "a\n", "\n\n", "\tint a;\n\n}\n",
        "fixed\xC2\xA0"
        "blank",
        "line\xE2\x80\xA8sep\n", "form\ffeed", "\xF0\x9F\x98\x80 \xE4\xBD\xA0\n"}) {
    m_edit.SetText(text);
    EXPECT_EQ(m_edit.GetText(), text);
    EXPECT_FALSE(m_edit.document()->isModified());
  }
  EXPECT_EQ(m_reported, "");
}

TEST_F(RichEditWidget, HasAFixedFontOfTheControlsSizeThatIsNeitherBoldNorItalic) {
  EXPECT_TRUE(QFontInfo(m_edit.font()).fixedPitch());
  EXPECT_EQ(m_edit.font().pointSizeF(), QApplication::font().pointSizeF());
  EXPECT_FALSE(m_edit.font().bold());
  EXPECT_FALSE(m_edit.font().italic());
}

TEST_F(RichEditWidget, HasATabStopEveryEightCells) {
  const double cellPx = QFontMetricsF(m_edit.font()).horizontalAdvance(QLatin1Char('x'));
  EXPECT_DOUBLE_EQ(m_edit.tabStopDistance(), 8 * cellPx);
  m_edit.SetText("\tx\n12345678x\n1234567\tx\n");
  Show();
  QTextCursor cursor = m_edit.textCursor();
  int places[3];
  for (int line = 0; line < 3; ++line) {
    cursor.setPosition(m_edit.LineIndex(line) + (line == 0 ? 1 : 8));
    places[line] = m_edit.cursorRect(cursor).left();
  }
  EXPECT_EQ(places[0], places[1]);
  EXPECT_EQ(places[2], places[1]);
}

TEST_F(RichEditWidget, DoesNotWrap) {
  m_edit.SetText(std::string(1000, 'x') + "\nb\n");
  Show();
  EXPECT_EQ(m_edit.lineWrapMode(), QPlainTextEdit::NoWrap);
  EXPECT_GT(m_edit.horizontalScrollBar()->maximum(), 0);
}

TEST_F(RichEditWidget, ScrollBarsStandAlsoWithoutNeed) {
  m_edit.SetText("a");
  Show();
  EXPECT_TRUE(m_edit.verticalScrollBar()->isVisible());
  EXPECT_TRUE(m_edit.horizontalScrollBar()->isVisible());
}

TEST_F(RichEditWidget, KnowsWhereALineBegins) {
  m_edit.SetText("one\ntwo\n");
  EXPECT_EQ(m_edit.LineIndex(0), 0);
  EXPECT_EQ(m_edit.LineIndex(1), 4);
  EXPECT_EQ(m_edit.LineIndex(2), 8);
  EXPECT_EQ(m_edit.LineIndex(3), -1);
  EXPECT_EQ(m_edit.LineIndex(-2), -1);
  EXPECT_EQ(m_edit.LineIndex(0x7FFFFFFE), -1);
  m_edit.SetSel(6, 6);
  EXPECT_EQ(m_edit.LineIndex(-1), 4);
}

TEST_F(RichEditWidget, ASelectionBeyondTheTextEndsAtItsEnd) {
  m_edit.SetText("one");
  m_edit.SetSel(1, 100);
  EXPECT_EQ(m_edit.GetSelText(), "ne");
  m_edit.SetSel(100, 200);
  EXPECT_FALSE(m_edit.HasSelection());
}

TEST_F(RichEditWidget, TakingTheSelectionAwayLeavesTheCaret) {
  m_edit.SetText("one two");
  m_edit.SetSel(0, 3);
  m_edit.SetSel(-1, -1);
  EXPECT_FALSE(m_edit.HasSelection());
  EXPECT_EQ(m_edit.textCursor().position(), 3);
}

TEST_F(RichEditWidget, ASelectionOfSeveralLinesHasTheirEnds) {
  m_edit.SetText("one\ntwo\n");
  m_edit.SetSel(0, 7);
  EXPECT_EQ(m_edit.GetSelText(), "one\ntwo");
}

TEST_F(RichEditWidget, ALineFarAwayIsBroughtToTheMiddleWithItsCaretAtTheStart) {
  SetLines();
  Show();
  for (const int line : {500, 20, 900}) {
    GoToLine(line);
    EXPECT_EQ(CaretLine(), line);
    EXPECT_EQ(m_edit.textCursor().positionInBlock(), 0);
    EXPECT_FALSE(m_edit.HasSelection());
    EXPECT_GT(CaretPlace(), 0.3) << line;
    EXPECT_LT(CaretPlace(), 0.7) << line;
  }
}

TEST_F(RichEditWidget, TheFirstAndTheLastLineAreVisible) {
  SetLines();
  Show();
  for (const int line : {kLines, 1, kLines + 1}) {
    GoToLine(line);
    EXPECT_TRUE(m_edit.viewport()->rect().contains(m_edit.cursorRect())) << line;
  }
}

TEST_F(RichEditWidget, ALineOnViewDoesNotScroll) {
  SetLines();
  Show();
  GoToLine(500);
  const int top = m_edit.verticalScrollBar()->value();
  GoToLine(502);
  EXPECT_EQ(m_edit.verticalScrollBar()->value(), top);
}

TEST_F(RichEditWidget, AWindowThatFindsItsSizeLaterKeepsTheLineInTheMiddle) {
  SetLines();
  GoToLine(500);
  Show(400, 100);
  m_edit.resize(600, 500);
  QCoreApplication::processEvents();
  EXPECT_GT(CaretPlace(), 0.3);
  EXPECT_LT(CaretPlace(), 0.7);
}

TEST_F(RichEditWidget, OnceTheUserHasScrolledAResizeLeavesTheText) {
  SetLines();
  Show();
  GoToLine(500);
  m_edit.verticalScrollBar()->triggerAction(QScrollBar::SliderToMinimum);
  m_edit.resize(600, 300);
  QCoreApplication::processEvents();
  EXPECT_EQ(m_edit.verticalScrollBar()->value(), 0);
}

TEST_F(RichEditWidget, ALongLineIsShownFromItsStart) {
  m_edit.SetText(std::string(500, 'x') + "\nb\n");
  Show();
  m_edit.SetSel(500, 500);
  EXPECT_GT(m_edit.horizontalScrollBar()->value(), 0);
  GoToLine(2);
  EXPECT_EQ(m_edit.horizontalScrollBar()->value(), 0);
}

TEST_F(RichEditWidget, TypingTellsThatTheTextIsModifiedAndUndoThatItIsNot) {
  m_edit.SetText("one");
  Show();
  QTest::keyClick(&m_edit, Qt::Key_X);
  EXPECT_EQ(m_reported, "modified ");
  EXPECT_EQ(m_edit.GetText(), "xone");
  m_edit.undo();
  EXPECT_EQ(m_reported, "modified clean ");
}

TEST_F(RichEditWidget, ASavedTextIsCleanUntilTheNextChange) {
  m_edit.SetText("one");
  Show();
  QTest::keyClick(&m_edit, Qt::Key_X);
  m_edit.SetModify(false);
  QTest::keyClick(&m_edit, Qt::Key_Y);
  EXPECT_EQ(m_reported, "modified clean modified ");
}

TEST_F(RichEditWidget, FindWalksTheHitsAndBeginsAnew) {
  m_edit.SetText("one two ONE\n");
  ASSERT_TRUE(m_edit.FindText({"one", false, false}));
  EXPECT_EQ(m_edit.textCursor().selectionStart(), 0);
  ASSERT_TRUE(m_edit.FindText({"one", false, false}));
  EXPECT_EQ(m_edit.textCursor().selectionStart(), 8);
  ASSERT_TRUE(m_edit.FindText({"one", false, false}));
  EXPECT_EQ(m_edit.textCursor().selectionStart(), 0);
}

TEST_F(RichEditWidget, FindLooksAtCaseAndWordsWhenAsked) {
  m_edit.SetText("none ONE one\n");
  ASSERT_TRUE(m_edit.FindText({"one", true, true}));
  EXPECT_EQ(m_edit.textCursor().selectionStart(), 9);
  ASSERT_TRUE(m_edit.FindText({"ONE", true, false}));
  EXPECT_EQ(m_edit.textCursor().selectionStart(), 5);
}

TEST_F(RichEditWidget, WhatIsNotFoundLeavesTheSelection) {
  m_edit.SetText("one two");
  m_edit.SetSel(4, 7);
  EXPECT_FALSE(m_edit.FindText({"three", false, false}));
  EXPECT_FALSE(m_edit.FindText({"", false, false}));
  EXPECT_EQ(m_edit.GetSelText(), "two");
}

TEST_F(RichEditWidget, CopyPutsTheSelectionOnTheClipboard) {
  m_edit.SetText("one two");
  m_edit.SetSel(4, 7);
  m_edit.Copy();
  EXPECT_EQ(QGuiApplication::clipboard()->text(), QLatin1String("two"));
}

TEST_F(RichEditWidget, ItsPopUpNamesNoKeys) {
  m_edit.SetText("one");
  Show();
  QStringList texts;
  QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), m_edit.mapToGlobal(QPoint(5, 5)));
  QCoreApplication::sendEvent(m_edit.viewport(), &event);
  const QPointer<QMenu> menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_TRUE(menu);
  for (const QAction* action : menu->actions()) {
    texts.append(action->text());
    EXPECT_TRUE(action->shortcut().isEmpty());
  }
  menu->close();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !menu; }));
  EXPECT_GE(texts.size(), 5);
  for (const QString& text : texts)
    EXPECT_FALSE(text.contains(QLatin1Char('\t'))) << text.toStdString();
}

TEST_F(RichEditWidget, ACommandOfItsPopUpIsDone) {
  m_edit.SetText("one");
  Show();
  QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), m_edit.mapToGlobal(QPoint(5, 5)));
  QCoreApplication::sendEvent(m_edit.viewport(), &event);
  auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_TRUE(menu);
  menu->setActiveAction(menu->actions().back());  // Select All
  QTest::keyClick(menu, Qt::Key_Return);
  EXPECT_EQ(m_edit.GetSelText(), "one");
}

TEST_F(RichEditWidget, EnterEndsALineWithShiftToo) {
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
    m_edit.SetText(
        "on\xE2\x80\xA8"
        "e");
    Show();
    m_edit.SetSel(1, 1);
    QTest::keyClick(&m_edit, key, Qt::ShiftModifier);
    EXPECT_EQ(m_edit.GetText(),
              "o\nn\xE2\x80\xA8"
              "e");
    EXPECT_EQ(m_edit.textCursor().blockNumber(), 1);
    m_edit.undo();
    EXPECT_EQ(m_edit.GetText(),
              "on\xE2\x80\xA8"
              "e");
  }
}

TEST_F(RichEditWidget, TextThatIsDroppedIsInsertedAndFilesAreLeftToTheWindowAround) {
  m_edit.SetText("one");
  Show();
  const auto drop = [this](const QMimeData& data) {
    QDragEnterEvent enter(QPoint(2, 2), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(m_edit.viewport(), &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent dropped(QPointF(2, 2), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(m_edit.viewport(), &dropped);
    return true;
  };
  QMimeData files, page, text;
  files.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a.trc"))});
  files.setText(QStringLiteral("file:///tmp/a.trc"));
  EXPECT_FALSE(drop(files));
  EXPECT_EQ(m_edit.GetText(), "one");
  page.setUrls({QUrl(QStringLiteral("http://host/a"))});
  page.setText(QStringLiteral("http://host/a "));
  EXPECT_TRUE(drop(page));
  text.setText(QStringLiteral("more "));
  EXPECT_TRUE(drop(text));
  EXPECT_EQ(m_edit.GetText(), "more http://host/a one");
}

// The largest texts and the longest line that a file may have.
TEST_F(RichEditWidget, TheLargestTextIsShownInAMoment) {
  std::string text;
  while (text.size() < TextFile::kLargestBytes) text += "  if (a == b) return first(second);\n";
  QElapsedTimer clock;
  clock.start();
  m_edit.SetText(text);
  Show();
  GoToLine(400000);
  EXPECT_EQ(CaretLine(), 400000);
  m_edit.SetText(std::string(TextFile::kMostLines, '\n'));
  GoToLine(TextFile::kMostLines);
  EXPECT_EQ(CaretLine(), static_cast<int>(TextFile::kMostLines));
  m_edit.SetText(std::string(TextFile::kLongestLineBytes, 'x'));
  m_edit.grab();
  EXPECT_LT(clock.elapsed(), 60'000);
  RecordProperty("milliseconds", static_cast<int>(clock.elapsed()));
}

}  // namespace

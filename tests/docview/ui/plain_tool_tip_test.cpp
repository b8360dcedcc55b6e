#include "docview/ui/plain_tool_tip.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTest>
#include <QToolTip>
#include <QWidget>

namespace {

const QWidget* ShownToolTip() {
  for (const QWidget* const window : QApplication::topLevelWidgets())
    if (window->isVisible() && window->inherits("QTipLabel")) return window;
  return nullptr;
}

}  // namespace

TEST(PlainToolTip, ATextWithoutMarkupStaysAsItIs) {
  EXPECT_EQ(PlainToolTip(""), "");
  EXPECT_EQ(PlainToolTip("web & a < b"), "web & a < b");
  EXPECT_EQ(PlainToolTip("a\nb"), "a\nb");
}

TEST(PlainToolTip, ATextThatWouldBeTakenForMarkupIsWrittenOut) {
  const QString tip = PlainToolTip("<b>web</b> & <img src='x'>");
  EXPECT_TRUE(tip.contains("&lt;b&gt;web&lt;/b&gt; &amp; &lt;img src='x'&gt;"))
      << tip.toStdString();
}

TEST(PlainToolTip, LinesBreakAfterABlankElseAfterASlashElseAnywhere) {
  EXPECT_EQ(InLinesOf("one two three", 8), "one two\nthree");
  EXPECT_EQ(InLinesOf("one two three", 7), "one two\nthree");
  EXPECT_EQ(InLinesOf("/home/web/traces", 10), "/home/web/\ntraces");
  EXPECT_EQ(InLinesOf("abcdefghij", 4), "abcd\nefgh\nij");
  EXPECT_EQ(InLinesOf("short\nabcdef", 5), "short\nabcde\nf");
  EXPECT_EQ(InLinesOf(QString::fromUtf8("ab\xF0\x9F\x98\x80"), 3),
            QString::fromUtf8("ab\n\xF0\x9F\x98\x80"));
}

TEST(PlainToolTip, SixtyLettersStandInOneLineWithAndWithoutMarkup) {
  QWidget window;
  window.show();
  for (const QString& text : {QString(60, u'n'), "<b>" + QString(53, u'n') + "</b>"}) {
    QToolTip::showText(QPoint(20, 20), PlainToolTip(text), &window);
    ASSERT_TRUE(QTest::qWaitFor([] { return ShownToolTip() != nullptr; }));
    const QWidget* const tip = ShownToolTip();
    EXPECT_GE(tip->width(), tip->fontMetrics().horizontalAdvance(text));
    EXPECT_LT(tip->height(), tip->fontMetrics().lineSpacing() * 5 / 2);
    QToolTip::hideText();
    ASSERT_TRUE(QTest::qWaitFor([] { return ShownToolTip() == nullptr; }));
  }
}

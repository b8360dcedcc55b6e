#include <gtest/gtest.h>

#include <QHelpEvent>
#include <QToolTip>

#include "row_list_harness.h"

namespace {

QString TipAt(ShownList& s, QPoint at) {
  QToolTip::hideText();
  EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
  QHelpEvent event(QEvent::ToolTip, at, s.list.viewport()->mapToGlobal(at));
  QApplication::sendEvent(s.list.viewport(), &event);
  return QToolTip::isVisible() ? QToolTip::text() : QString();
}

QPoint Inside(ShownList& s, int row, Column column) {
  return s.list.CellRect(row, column).center();
}

}  // namespace

TEST(RowToolTip, ACutCellShowsItsWholeText) {
  ShownList s(5);
  s.owner.texts[{1, Column::Trace}] = "this text is much longer than its cell";
  EXPECT_EQ(TipAt(s, Inside(s, 1, Column::Trace)), "this text is much longer than its cell");
}

TEST(RowToolTip, ACellThatShowsWholeHasNone) {
  ShownList s(5);
  EXPECT_EQ(TipAt(s, Inside(s, 1, Column::Trace)), "");
}

TEST(RowToolTip, MarkupInATraceIsShownAsItIs) {
  ShownList s(5);
  s.owner.texts[{1, Column::Trace}] = "<b>bold</b> & <img src='x'> and more of it";
  const QString tip = TipAt(s, Inside(s, 1, Column::Trace));
  EXPECT_TRUE(tip.contains("&lt;b&gt;bold")) << tip.toStdString();
  EXPECT_FALSE(tip.contains("<img"));
}

TEST(RowToolTip, ATextOfSeveralLinesShowsThem) {
  ShownList s(5);
  s.owner.texts[{1, Column::Trace}] = "a\nb";
  EXPECT_EQ(TipAt(s, Inside(s, 1, Column::Trace)), "a\nb");
}

TEST(RowToolTip, BesideTheRowsAndOnTheIconThereIsNone) {
  ShownList s(2);
  EXPECT_EQ(TipAt(s, s.At(6)), "");
  EXPECT_EQ(TipAt(s, Inside(s, 1, Column::Sev)), "");
}

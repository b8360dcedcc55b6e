#include "support/report_list_contract.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QScrollBar>
#include <QTest>

#include "controls/report/ui/report_list_widget.h"
#include "support/qt_test_main.h"

namespace {

class QtReportHarness {
 public:
  explicit QtReportHarness(ReportListOwner& owner) : m_list(owner, "Traces") {
    m_list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list.resize(314, 200);
    m_list.show();
    m_list.activateWindow();
    m_list.setFocus();
    QApplication::processEvents();
  }
  ReportList& List() { return m_list; }
  QtReportList& Widget() { return m_list; }
  void SetPage(int rows) {
    const int around = m_list.height() - m_list.viewport()->height();
    m_list.resize(m_list.width(), around + rows * m_list.RowHeight());
    QApplication::processEvents();
  }
  void SetRoom(int roomPx) {
    const int bar = m_list.verticalScrollBar()->sizeHint().width();
    m_list.resize(roomPx + bar + 2 * m_list.frameWidth(), m_list.height());
    QApplication::processEvents();
  }
  void DragHeading(int column, int widthPx) {
    QWidget* const header = m_list.header()->viewport();
    const int edge = m_list.header()->sectionViewportPosition(column) + m_list.ColumnWidth(column);
    const QPoint from(edge - 1, header->height() / 2);
    const QPoint to = from + QPoint(widthPx - m_list.ColumnWidth(column), 0);
    QTest::mousePress(header, Qt::LeftButton, {}, from);
    QTest::mouseMove(header, from + QPoint(2, 0));
    QMouseEvent move(QEvent::MouseMove, to, header->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(header, &move);
    QTest::mouseRelease(header, Qt::LeftButton, {}, to);
  }
  void Click(int row, bool control = false) {
    QTest::mouseClick(m_list.viewport(), Qt::LeftButton,
                      control ? Qt::ControlModifier : Qt::NoModifier, At(row));
  }
  void DoubleClick(int row) {
    Click(row);
    QTest::mouseDClick(m_list.viewport(), Qt::LeftButton, {}, At(row));
  }
  void ClickHeading(int column) {
    QHeaderView* const header = m_list.header();
    QTest::mouseClick(
        header->viewport(), Qt::LeftButton, {},
        {header->sectionViewportPosition(column) + header->sectionSize(column) / 2, 5});
  }
  void PressHeadingKey(int column) {
    QTest::keyClick(&m_list, static_cast<Qt::Key>(Qt::Key_1 + column), Qt::ControlModifier);
  }
  void PressSelectAll() { QTest::keyClick(&m_list, Qt::Key_A, Qt::ControlModifier); }
  void Type(char letter) { QTest::keyClick(&m_list, letter); }

 private:
  QPoint At(int row) const {
    if (row < 0) return {10, m_list.viewport()->height() - 2};
    return m_list.visualRect(m_list.model()->index(row, 0)).center();
  }
  QtReportList m_list;
};

}  // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(OnTheScreen, ReportListContract, QtReportHarness);

TEST(ReportListWidget, OpensSortsAndSetsTenThousandRowsAtOnce) {
  constexpr int kRows = 10000, kOpenMs = 200, kSortMs = 100;
  RecordingReportOwner owner;
  owner.names.assign(kRows, "component");
  QElapsedTimer clock;
  clock.start();
  QtReportHarness harness(owner);
  harness.List().InsertColumn("Name");
  harness.List().InsertColumn("State");
  harness.List().SetItemCount(kRows);
  harness.Widget().grab();
  EXPECT_LT(clock.restart(), kOpenMs);
  harness.List().SetItemCount(kRows);
  harness.List().ShowSort(1, true);
  harness.Widget().grab();
  EXPECT_LT(clock.restart(), kSortMs);
  harness.List().SelectAll();
  EXPECT_EQ(harness.List().SelectedRows().size(), static_cast<std::size_t>(kRows));
  harness.List().Repaint();
  harness.Widget().grab();
  EXPECT_LT(clock.restart(), kSortMs);
}

TEST(ReportListWidget, TheHeadingShowsByWhichColumnTheRowsAreSorted) {
  RecordingReportOwner owner;
  QtReportHarness harness(owner);
  harness.List().InsertColumn("Name");
  harness.List().InsertColumn("State");
  harness.List().ShowSort(1, true);
  EXPECT_TRUE(harness.Widget().header()->isSortIndicatorShown());
  EXPECT_EQ(harness.Widget().header()->sortIndicatorSection(), 1);
  EXPECT_EQ(harness.Widget().header()->sortIndicatorOrder(), Qt::DescendingOrder);
  harness.List().ShowSort(0, false);
  EXPECT_EQ(harness.Widget().header()->sortIndicatorSection(), 0);
  EXPECT_EQ(harness.Widget().header()->sortIndicatorOrder(), Qt::AscendingOrder);
}

TEST(ReportListWidget, HasANameForScreenReaders) {
  RecordingReportOwner owner;
  QtReportHarness harness(owner);
  EXPECT_EQ(harness.Widget().accessibleName(), "Traces");
}

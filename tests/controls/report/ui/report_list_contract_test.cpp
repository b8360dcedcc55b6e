#include "support/report_list_contract.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QPaintEvent>
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
    QPalette palette;
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Highlight, Qt::blue);
    m_list.setPalette(palette);
    m_list.show();
    m_list.activateWindow();
    m_list.setFocus();
    QApplication::processEvents();
  }
  ReportList& List() { return m_list; }
  QtReportList& Widget() { return m_list; }
  void SetPage(int rows) {
    const int around = m_list.height() - m_list.viewport()->height();
    m_list.resize(m_list.width(), around + rows * Cell(0, 0).height());
    QApplication::processEvents();
  }
  void ScrollTo(int row) { m_list.verticalScrollBar()->setValue(row); }  // it scrolls by rows
  int Top() const { return m_list.indexAt({1, 1}).row(); }
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
  std::string Sort() const {
    const QHeaderView& header = *m_list.header();
    if (!header.isSortIndicatorShown()) return "";
    const bool down = header.sortIndicatorOrder() == Qt::DescendingOrder;
    return header.model()
               ->headerData(header.sortIndicatorSection(), Qt::Horizontal)
               .toString()
               .toStdString() +
           (down ? " down" : " up");
  }
  void Click(int row, bool control = false, int column = 0) {
    QTest::mouseClick(m_list.viewport(), Qt::LeftButton,
                      control ? Qt::ControlModifier : Qt::NoModifier, At(row, column));
  }
  // Most of the cell has the colour of a selection.
  bool LooksSelected(int row, int column) {
    const QImage image = m_list.viewport()->grab(Cell(row, column)).toImage();
    int blue = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) blue += image.pixelColor(x, y) == QColor(Qt::blue);
    return blue > image.width() * image.height() / 2;
  }
  // By the ink: the widget has no other colour than its paper's in an empty half.
  bool LooksRight(int row, int column) {
    const QImage image = m_list.viewport()->grab(Cell(row, column)).toImage();
    int left = 0, right = 0;
    for (int y = 2; y < image.height() - 2; ++y)
      for (int x = 2; x < image.width() - 2; ++x)
        if (image.pixelColor(x, y).lightness() < 128) ++(x < image.width() / 2 ? left : right);
    return left == 0 && right > 0;
  }
  // As Qt asks for a text that is not cut.
  bool LooksWhole(int row, int column) {
    const QSize cell = m_list.sizeHintForIndex(m_list.model()->index(row, column));
    return std::max(cell.width(), m_list.header()->sectionSizeHint(column)) <=
           m_list.columnWidth(column);
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
  QRect Cell(int row, int column) const {
    return m_list.visualRect(m_list.model()->index(row, column));
  }
  QPoint At(int row, int column = 0) const {
    if (row < 0) return {10, m_list.viewport()->height() - 2};
    return Cell(row, column).center();
  }
  QtReportList m_list;
};

// What of a widget has been painted.
class PaintWatch final : public QObject {
 public:
  explicit PaintWatch(QWidget& screen) { screen.installEventFilter(this); }
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) m_painted += static_cast<QPaintEvent*>(event)->region();
    return false;
  }
  bool Covers(const QRect& rect) const { return QRegion(rect).subtracted(m_painted).isEmpty(); }
  void Forget() { m_painted = {}; }

 private:
  QRegion m_painted;
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
  harness.PressSelectAll();
  EXPECT_EQ(harness.List().SelectedRows().size(), static_cast<std::size_t>(kRows));
  harness.List().Repaint();
  harness.Widget().grab();
  EXPECT_LT(clock.restart(), kSortMs);
}

TEST(ReportListWidget, RepaintPaintsAllRowsAgain) {
  RecordingReportOwner owner;
  QtReportHarness harness(owner);
  harness.List().InsertColumn("Name");
  harness.List().InsertColumn("State");
  harness.List().SetItemCount(4);
  QWidget& screen = *harness.Widget().viewport();
  PaintWatch watch(screen);
  screen.update();  // with all that is still to be painted
  ASSERT_TRUE(QTest::qWaitFor([&] { return watch.Covers(screen.rect()); }));
  QApplication::processEvents();
  watch.Forget();
  harness.List().Repaint();
  const QAbstractItemModel& rows = *harness.Widget().model();
  const QRect first = harness.Widget().visualRect(rows.index(0, 0)),
              last = harness.Widget().visualRect(rows.index(3, 1));
  ASSERT_TRUE(screen.rect().contains(last));
  EXPECT_TRUE(QTest::qWaitFor([&] { return watch.Covers(first | last); }));
}

TEST(ReportListWidget, HasANameForScreenReaders) {
  RecordingReportOwner owner;
  QtReportHarness harness(owner);
  EXPECT_EQ(harness.Widget().accessibleName(), "Traces");
}

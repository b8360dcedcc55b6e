// How the cells of a report list look.
#include "controls/report/ui/report_cells.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QHelpEvent>
#include <QTest>
#include <QToolTip>
#include <set>

#include "controls/report/ui/report_list_widget.h"

namespace {

class MarkedOwner final : public ReportListOwner {
 public:
  std::string ReportText(int row, int column) override {
    return column == 0 ? "name " + std::to_string(row) : mask;
  }
  std::vector<ReportMark> ReportMarks(int row, int column) override {
    if (column == 0) return {};
    return {{ReportMark::Tone::Info, false}, {ReportMark::Tone::Error, row == 1}};
  }
  std::string ReportEmptyText() override { return empty; }
  std::vector<int> ReportWidths(int) override { return {100, 100}; }
  void OnReportSelection() override {}
  void OnReportHeading(int) override {}
  void OnReportDoubleClick() override {}

  std::string mask = "x", empty = "no rows";
};

class ReportCellsTest : public testing::Test {
 protected:
  ReportCellsTest() {
    QPalette palette;
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Text, Qt::black);
    m_list.setPalette(palette);
    m_list.InsertColumn("Name", ReportAlign::Left);
    m_list.InsertColumn("Mask", ReportAlign::Left);
    m_list.SetItemCount(3);
    m_list.resize(300, 200);
    m_list.show();
    QApplication::processEvents();
  }
  ~ReportCellsTest() override { QToolTip::hideText(); }

  QRect Cell(int row, int column) const {
    return m_list.visualRect(m_list.model()->index(row, column));
  }
  // The colours in a cell.
  std::set<QRgb> Colors(int row, int column) {
    const QImage image =
        m_list.viewport()->grab(Cell(row, column)).toImage().convertToFormat(QImage::Format_RGB32);
    std::set<QRgb> colors;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) colors.insert(image.pixel(x, y));
    return colors;
  }
  static bool IsRed(QRgb color) { return qRed(color) > qGreen(color) + 100; }
  bool HasRed(int row) {
    const std::set<QRgb> colors = Colors(row, 1);
    return std::any_of(colors.begin(), colors.end(), IsRed);
  }
  QString ToolTipOf(int row, int column) {
    const QPoint at = Cell(row, column).center();
    QHelpEvent event(QEvent::ToolTip, at, m_list.viewport()->mapToGlobal(at));
    QApplication::sendEvent(m_list.viewport(), &event);
    return QToolTip::text();
  }

  MarkedOwner m_owner;
  QtReportList m_list{m_owner, "Traces"};
};

}  // namespace

TEST_F(ReportCellsTest, AMarkThatIsOnIsFilledInItsTone) {
  EXPECT_FALSE(HasRed(0));
  EXPECT_TRUE(HasRed(1));
}

TEST_F(ReportCellsTest, OnASelectedRowTheMarksHaveTheColorOfTheText) {
  QTest::mouseClick(m_list.viewport(), Qt::LeftButton, {}, Cell(1, 0).center());
  EXPECT_FALSE(HasRed(1));
}

TEST_F(ReportCellsTest, ARowWithoutAMarkThatIsOnHasAQuieterText) {
  m_owner.mask = "WWWW";
  const auto darkest = [this](int row) {
    int lightness = 255;
    for (const QRgb color : Colors(row, 1)) lightness = std::min(lightness, qGray(color));
    return lightness;
  };
  EXPECT_LT(darkest(1) + 40, darkest(0));
}

TEST_F(ReportCellsTest, TheFocusIsAFrameAndNoFilledRow) {
  m_list.activateWindow();
  m_list.setFocus();
  m_list.selectionModel()->setCurrentIndex(m_list.model()->index(2, 0),
                                           QItemSelectionModel::NoUpdate);
  ASSERT_TRUE(m_list.hasFocus());
  const QImage image = m_list.viewport()->grab(Cell(2, 0)).toImage();
  const auto at = [&image](int x, int y) { return image.pixelColor(x, y); };
  EXPECT_NE(at(50, 0), QColor(Qt::white)) << "the upper line";
  EXPECT_NE(at(0, image.height() / 2), QColor(Qt::white)) << "the left line";
  EXPECT_EQ(at(image.width() - 3, image.height() / 2), QColor(Qt::white)) << "the inside";
}

TEST_F(ReportCellsTest, OnlyATextThatIsCutHasAToolTip) {
  m_owner.mask = "Info, Warn, Error, Developer, Verbose, Location, Stack";
  EXPECT_EQ(ToolTipOf(0, 0), "");
  EXPECT_TRUE(ToolTipOf(0, 1).contains("Location, Stack")) << ToolTipOf(0, 1).toStdString();
  ToolTipOf(1, 0);
  EXPECT_TRUE(QTest::qWaitFor([] { return QToolTip::text().isEmpty(); })) << "it leaves";
}

TEST_F(ReportCellsTest, ANameWithLineEndsIsOneLine) {
  const int height = Cell(0, 0).height();
  m_owner.mask = "a\nb\x01";
  m_list.SetItemCount(1);
  EXPECT_EQ(Cell(0, 0).height(), height);
  EXPECT_EQ(m_list.model()->index(0, 1).data().toString(), QString("a%1b ").arg(QChar(0x23CE)));
}

TEST_F(ReportCellsTest, AnEmptyListSaysSoOnTheScreenAndToAScreenReader) {
  const auto picture = [this] { return m_list.viewport()->grab().toImage(); };
  m_owner.empty = "";
  m_list.SetItemCount(0);
  const QImage blank = picture();
  m_owner.empty = "no rows";
  m_list.SetItemCount(0);
  EXPECT_NE(picture(), blank);
  EXPECT_EQ(m_list.accessibleDescription(), "no rows");
  m_list.SetItemCount(1);
  EXPECT_EQ(m_list.accessibleDescription(), "");
}

#include "overview/window/ui/overview_widget.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>
#include <cmath>
#include <set>

#include "support/overview_contract.h"
#include "support/qt_test_main.h"

namespace {

class QtHarness : public OverviewOnShow {
 public:
  QtHarness() {
    m_strip.SetFace(&m_face);
    Widget().setParent(&m_window);
    m_window.resize(2000, 300);
    m_window.show();
    m_window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
    m_window.setFocusPolicy(Qt::StrongFocus);
    m_window.setFocus();
  }
  QtOverview& Face() { return m_face; }
  OverviewWidget& Widget() { return static_cast<OverviewWidget&>(*m_face.Widget()); }
  void ShowAt(int width) {
    Widget().setGeometry(0, 0, width, Widget().sizeHint().height());
    Widget().show();
  }
  // Where a pixel of the strip is in the widget.
  QPoint At(int px) {
    const int margin = (Widget().width() - m_strip.Scale().widthPx) / 2;
    return {margin + px, Widget().height() / 2};
  }
  void Click(int px) { QTest::mouseClick(&Widget(), Qt::LeftButton, {}, At(px)); }
  void DoubleClick(int px) { QTest::mouseDClick(&Widget(), Qt::LeftButton, {}, At(px)); }
  void Drag(int from, int to) {
    QTest::mousePress(&Widget(), Qt::LeftButton, {}, At(from));
    for (const int px : {(from + to) / 2, to}) {
      QMouseEvent move(QEvent::MouseMove, At(px), Widget().mapToGlobal(At(px)), Qt::NoButton,
                       Qt::LeftButton, {});
      QApplication::sendEvent(&Widget(), &move);
    }
    QTest::mouseRelease(&Widget(), Qt::LeftButton, {}, At(to));
  }
  // Half a notch at a time, as some devices send them.
  void Turn(int px, int notches) {
    for (int i = 0; i < 2 * std::abs(notches); ++i) {
      QWheelEvent wheel(At(px), Widget().mapToGlobal(At(px)), {}, {0, notches > 0 ? 60 : -60},
                        Qt::NoButton, {}, Qt::NoScrollPhase, false);
      QApplication::sendEvent(&Widget(), &wheel);
    }
  }
  void Press(OverviewStrip::Key key, bool shift) {
    using Key = OverviewStrip::Key;
    const std::map<Key, Qt::Key> keys = {
        {Key::Left, Qt::Key_Left},   {Key::Right, Qt::Key_Right},   {Key::Home, Qt::Key_Home},
        {Key::End, Qt::Key_End},     {Key::Enter, Qt::Key_Return},  {Key::Escape, Qt::Key_Escape},
        {Key::ZoomIn, Qt::Key_Plus}, {Key::ZoomOut, Qt::Key_Minus}, {Key::Far, Qt::Key_A}};
    QTest::keyClick(&Widget(), keys.at(key), shift ? Qt::ShiftModifier : Qt::NoModifier);
  }
  void OpenMenu() {
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, At(10), Widget().mapToGlobal(At(10)));
    QApplication::sendEvent(&Widget(), &menu);
  }
  QImage Picture() { return Widget().grab().toImage(); }

 protected:
  QWidget m_window;
  QtOverview m_face{m_strip};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, OverviewContract, QtHarness);

class OverviewWidgetTest : public testing::Test, protected QtHarness {
 protected:
  bool Has(const QImage& picture, const QColor& colour) {
    for (int y = 0; y < picture.height(); ++y)
      for (int x = 0; x < picture.width(); ++x)
        if (picture.pixelColor(x, y) == colour) return true;
    return false;
  }
  QPalette PaletteOn(const QColor& ground, const QColor& text) {
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Base, ground);
    palette.setColor(QPalette::Text, text);
    return palette;
  }
};

TEST_F(OverviewWidgetTest, BarsAndSignsOfErrorsArePaintedOnLightAndDarkGround) {
  ShowAt(900);
  Settle();
  for (const auto& [ground, text] :
       {std::pair(QColor(Qt::white), QColor(Qt::black)), {QColor(30, 30, 30), QColor(Qt::white)}}) {
    Widget().setPalette(PaletteOn(ground, text));
    const QImage picture = Picture();
    const OverviewColours colours = OverviewColoursOn(ground, text, Qt::blue);
    EXPECT_EQ(picture.pixelColor(1, 1), ground);
    EXPECT_TRUE(Has(picture, colours.severities[0]));
    EXPECT_TRUE(Has(picture, colours.severities[2]));
    // The signs stand in a row of their own at the top.
    EXPECT_TRUE(Has(picture.copy(0, 2, picture.width(), 2), colours.severities[2]));
    EXPECT_FALSE(Has(picture, colours.severities[1]));
  }
}

TEST_F(OverviewWidgetTest, ABiggerFontMakesItHigherAndNothingIsCut) {
  ShowAt(900);
  Settle();
  const int height = Widget().sizeHint().height();
  EXPECT_GE(height, 36);
  EXPECT_LE(height, 72);
  QFont font = Widget().font();
  font.setPointSizeF(font.pointSizeF() * 2);
  Widget().setFont(font);
  EXPECT_NEAR(Widget().sizeHint().height(), 2 * height, height / 5);
  ShowAt(900);
  const QImage picture = Picture();
  const OverviewColours colours = OverviewColoursOn(
      Widget().palette().color(QPalette::Base), Widget().palette().color(QPalette::Text), Qt::blue);
  EXPECT_TRUE(Has(picture, colours.severities[0]));
  // No letter reaches the lower edge.
  const QImage edge = picture.copy(0, picture.height() - 1, picture.width(), 1);
  for (int x = 0; x < edge.width(); ++x) ASSERT_EQ(edge.pixelColor(x, 0), colours.ground) << x;
}

TEST_F(OverviewWidgetTest, PaintsAtAnyWidth) {
  for (const int width : {1, 5, 20, 77, 2000}) {
    ShowAt(width);
    Settle();
    EXPECT_EQ(Picture().width(), width);
  }
}

TEST_F(OverviewWidgetTest, AssistiveTechnologyReadsWhatItShows) {
  ShowAt(900);
  Settle();
  QAccessibleInterface* const chart = QAccessible::queryAccessibleInterface(&Widget());
  ASSERT_TRUE(chart);
  EXPECT_EQ(chart->role(), QAccessible::Chart);
  EXPECT_EQ(chart->text(QAccessible::Name), QStringLiteral("Overview"));
  EXPECT_TRUE(
      chart->text(QAccessible::Description).startsWith(QStringLiteral("1,000 traces from ")));
  Face().SetFocus();
  Press(OverviewStrip::Key::End, false);
  EXPECT_TRUE(chart->text(QAccessible::Description).contains(QStringLiteral(". Here: ")));
}

TEST_F(OverviewWidgetTest, HoveringShowsTimeAndCounts) {
  ShowAt(900);
  Settle();
  QHelpEvent help(QEvent::ToolTip, At(100), Widget().mapToGlobal(At(100)));
  QApplication::sendEvent(&Widget(), &help);
  EXPECT_TRUE(QToolTip::text().contains(QStringLiteral(" traces from ")))
      << QToolTip::text().toStdString();
}

double Luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
         0.0722 * linear(colour.blueF());
}

TEST(OverviewColours, StandOutFromLightAndDarkGroundsAndFromOneAnother) {
  for (const QColor& ground :
       {QColor(Qt::white), QColor(0xf4, 0xf4, 0xf4), QColor(Qt::black), QColor(0x2a, 0x2a, 0x2e)}) {
    const OverviewColours colours = OverviewColoursOn(ground, Qt::gray, Qt::blue);
    std::set<QRgb> all;
    for (const QColor& colour :
         {colours.severities[0], colours.severities[1], colours.severities[2],
          colours.severities[3], colours.loss, colours.mark, colours.hit}) {
      const double a = Luminance(colour) + 0.05, b = Luminance(ground) + 0.05;
      EXPECT_GE(std::max(a, b) / std::min(a, b), 3.0)
          << colour.name().toStdString() << " on " << ground.name().toStdString();
      all.insert(colour.rgb());
    }
    EXPECT_EQ(all.size(), 7U);
  }
}

}  // namespace

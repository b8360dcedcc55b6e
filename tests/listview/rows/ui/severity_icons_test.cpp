#include "listview/rows/ui/severity_icons.h"

#include <gtest/gtest.h>

#include <QPainter>

#include "support/qt_test_main.h"

namespace {

QImage Icon(int icon, int side) {
  QImage image(side, side, QImage::Format_ARGB32);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  PaintSeverityIcon(painter, QRectF(0, 0, side, side), icon);
  return image;
}

}  // namespace

TEST(SeverityIcons, AreABlueARedAndAYellowSignAtEveryScale) {
  for (const int side : {16, 32, 24}) {
    const auto at = [side](int icon, double x, double y) {
      return Icon(icon, side).pixelColor(static_cast<int>(x * side), static_cast<int>(y * side));
    };
    EXPECT_GT(at(0, 0.25, 0.5).blue(), at(0, 0.25, 0.5).red() + 60) << side;
    EXPECT_GT(at(1, 0.25, 0.5).red(), at(1, 0.25, 0.5).blue() + 100) << side;
    EXPECT_GT(at(1, 0.25, 0.5).green(), at(1, 0.25, 0.5).blue() + 60) << side;
    EXPECT_GT(at(2, 0.5, 0.25).red(), at(2, 0.5, 0.25).green() + 100) << side;
    EXPECT_GT(at(0, 0.5, 0.6).lightness(), 220) << "a white i";
    EXPECT_LT(at(1, 0.5, 0.4).lightness(), 60) << "a black !";
    for (const int icon : {0, 1, 2}) EXPECT_EQ(at(icon, 0, 0).alpha(), 0) << "the corner is empty";
  }
}

TEST(SeverityIcons, AreRenderedAtTheScreensScale) {
  SeverityIcons icons;
  EXPECT_EQ(icons.Get(0, 1).width(), 16);
  EXPECT_EQ(icons.Get(0, 2).width(), 32);
  EXPECT_EQ(icons.Get(0, 2).deviceIndependentSize(), QSizeF(16, 16));
}

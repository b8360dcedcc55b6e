#include "shell/look/ui/clear_fusion.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>
#include <cmath>
#include <memory>

#include "support/qt_test_main.h"

namespace {

constexpr double kVisible = 3.0;  // the contrast that an edge needs to be seen by most people

double Luminance(QRgb colour) {
  const auto part = [](int value) {
    const double share = value / 255.0;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(qRed(colour)) + 0.7152 * part(qGreen(colour)) + 0.0722 * part(qBlue(colour));
}

QPalette Dark() {
  QPalette palette(QColor(0x39, 0x3b, 0x40), QColor(0x2b, 0x2d, 0x30));
  palette.setColor(QPalette::Base, QColor(0x1e, 0x1f, 0x22));
  palette.setColor(QPalette::WindowText, QColor(0xdf, 0xe1, 0xe5));
  palette.setColor(QPalette::Text, QColor(0xdf, 0xe1, 0xe5));
  palette.setColor(QPalette::Light, QColor(0x4e, 0x51, 0x57));
  palette.setColor(QPalette::Highlight, QColor(0x2e, 0x52, 0x8f));
  return palette;
}

QPalette Light() {
  return QPalette(QColor(0xef, 0xef, 0xef));
}

// The best contrast between the window's colour and a pixel inside `part`.
double BestContrast(const QImage& picture, const QRect& part, const QPalette& palette) {
  const double window = Luminance(palette.color(QPalette::Window).rgb());
  double best = 1;
  for (int y = part.top(); y <= part.bottom(); ++y) {
    for (int x = part.left(); x <= part.right(); ++x) {
      const double pixel = Luminance(picture.pixel(x, y));
      best = std::max(best, (std::max(pixel, window) + 0.05) / (std::min(pixel, window) + 0.05));
    }
  }
  return best;
}

class ClearFusionTest : public testing::Test {
 protected:
  template <class Paint>
  QImage Picture(const QPalette& palette, Paint paint) {
    QImage picture(200, 40, QImage::Format_RGB32);
    picture.fill(palette.color(QPalette::Window));
    QPainter painter(&picture);
    paint(painter);
    return picture;
  }
  QImage Box(const QStyle& style, const QPalette& palette) {
    QStyleOptionButton box;
    box.palette = palette;
    box.rect = QRect(10, 10, 14, 14);
    box.state = QStyle::State_Enabled | QStyle::State_Off;
    return Picture(palette, [&](QPainter& painter) {
      style.drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter);
    });
  }
  QImage Field(const QStyle& style, const QPalette& palette) {
    QStyleOptionFrame field;
    field.palette = palette;
    field.rect = QRect(10, 10, 100, 22);
    field.lineWidth = 1;
    field.state = QStyle::State_Enabled | QStyle::State_Sunken;
    return Picture(palette, [&](QPainter& painter) {
      style.drawPrimitive(QStyle::PE_PanelLineEdit, &field, &painter);
    });
  }
  // Of a child window without the focus; `close` is set to the place of its button.
  QImage TitleBar(const QStyle& style, const QPalette& palette, QRect& close) {
    QStyleOptionTitleBar bar;
    bar.palette = palette;
    bar.rect = QRect(0, 0, 200, 24);
    bar.titleBarFlags = Qt::SubWindow | Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
    bar.subControls = QStyle::SC_All;
    bar.state = QStyle::State_Enabled;
    close = style.subControlRect(QStyle::CC_TitleBar, &bar, QStyle::SC_TitleBarCloseButton);
    return Picture(palette, [&](QPainter& painter) {
      style.drawComplexControl(QStyle::CC_TitleBar, &bar, &painter);
    });
  }

  // `end` is set to the last pixels of its slider.
  QImage ScrollBar(const QStyle& style, const QPalette& palette, int rows, QRect& end) {
    QStyleOptionSlider bar;
    bar.palette = palette;
    bar.rect = QRect(0, 0, 200, 16);
    bar.orientation = Qt::Horizontal;
    bar.maximum = rows;
    bar.pageStep = 100;
    bar.subControls = QStyle::SC_All;
    bar.state = QStyle::State_Enabled | QStyle::State_Horizontal;
    end = style.subControlRect(QStyle::CC_ScrollBar, &bar, QStyle::SC_ScrollBarSlider);
    end.setLeft(end.right() - 2);
    end.adjust(0, 4, 0, -4);
    return Picture(palette, [&](QPainter& painter) {
      style.drawComplexControl(QStyle::CC_ScrollBar, &bar, &painter);
    });
  }

  const ClearFusion m_style;
  const std::unique_ptr<QStyle> m_plain{QStyleFactory::create(QStringLiteral("Fusion"))};
};

}  // namespace

TEST_F(ClearFusionTest, ACheckBoxHasAnEdgeThatIsSeenOnDarkColours) {
  const QRect box(10, 10, 14, 14);
  EXPECT_GE(BestContrast(Box(m_style, Dark()), box, Dark()), kVisible);
  EXPECT_LT(BestContrast(Box(*m_plain, Dark()), box, Dark()), kVisible);
}

TEST_F(ClearFusionTest, AFieldHasAnEdgeThatIsSeenOnDarkColours) {
  const QRect field(10, 10, 100, 22);
  EXPECT_GE(BestContrast(Field(m_style, Dark()), field, Dark()), kVisible);
  EXPECT_LT(BestContrast(Field(*m_plain, Dark()), field, Dark()), kVisible);
}

TEST_F(ClearFusionTest, TheButtonsOfAChildWindowWithoutTheFocusAreSeenOnDarkColours) {
  QRect close;
  const QImage bar = TitleBar(m_style, Dark(), close);
  ASSERT_TRUE(bar.rect().contains(close));
  EXPECT_GE(BestContrast(bar, close, Dark()), kVisible);
  EXPECT_LT(BestContrast(TitleBar(*m_plain, Dark(), close), close, Dark()), kVisible);
}

TEST_F(ClearFusionTest, ASliderIsSeenInItsGroove) {
  for (const QPalette& palette : {Light(), Dark()}) {
    QRect end;
    const QImage bar = ScrollBar(m_style, palette, 20, end);
    ASSERT_TRUE(bar.rect().contains(end));
    EXPECT_GE(BestContrast(bar, end, palette), kVisible);
    EXPECT_LT(BestContrast(ScrollBar(*m_plain, palette, 20, end), end, palette), kVisible);
    const QImage still = ScrollBar(m_style, palette, 0, end);
    EXPECT_EQ(still, ScrollBar(*m_plain, palette, 0, end)) << "nothing to scroll";
  }
}

TEST_F(ClearFusionTest, OnLightColoursNothingChanges) {
  QRect close;
  EXPECT_EQ(Box(m_style, Light()), Box(*m_plain, Light()));
  EXPECT_EQ(Field(m_style, Light()), Field(*m_plain, Light()));
  EXPECT_EQ(TitleBar(m_style, Light(), close), TitleBar(*m_plain, Light(), close));
}

TEST_F(ClearFusionTest, ATitleBeginsAtTheLeftInABarThatIsLowerThanFusions) {
  const QStyle& style = m_style;
  for (const QPalette& palette : {Light(), Dark()}) {
    for (const bool active : {true, false}) {
      QStyleOptionTitleBar bar;
      bar.palette = palette;
      bar.rect = QRect(0, 0, 200, 24);
      bar.titleBarFlags = Qt::SubWindow | Qt::WindowTitleHint | Qt::WindowSystemMenuHint;
      bar.subControls = QStyle::SC_TitleBarLabel;
      bar.state = QStyle::State_Enabled;
      if (active) bar.titleBarState = QStyle::State_Active;
      const auto draw = [&](QPainter& painter) {
        style.drawComplexControl(QStyle::CC_TitleBar, &bar, &painter);
      };
      const QImage empty = Picture(palette, draw);
      bar.text = QStringLiteral("web");
      const QImage titled = Picture(palette, draw);
      const int begin =
          style.subControlRect(QStyle::CC_TitleBar, &bar, QStyle::SC_TitleBarLabel).left();
      int first = 200, last = 0;
      for (int y = 0; y < 24; ++y) {
        for (int x = 0; x < 200; ++x) {
          if (titled.pixel(x, y) == empty.pixel(x, y)) continue;
          first = std::min(first, x);
          last = std::max(last, x);
        }
      }
      EXPECT_NEAR(first, begin + 4, 3) << active;
      EXPECT_LT(last, begin + 60) << active;
    }
  }
  EXPECT_LT(style.pixelMetric(QStyle::PM_TitleBarHeight),
            m_plain->pixelMetric(QStyle::PM_TitleBarHeight));
  EXPECT_GE(style.pixelMetric(QStyle::PM_TitleBarHeight),
            QFontMetrics(QApplication::font()).height() + 2);
}

TEST_F(ClearFusionTest, TheCloseButtonOfATabIsSeenAndHasNoColourOfItsOwn) {
  for (const QPalette& palette : {Light(), Dark()}) {
    QStyleOption button;
    button.palette = palette;
    button.rect = QRect(10, 10, 16, 16);
    button.state = QStyle::State_Enabled;
    const QStyle& style = m_style;
    const QImage picture = Picture(palette, [&](QPainter& painter) {
      style.drawPrimitive(QStyle::PE_IndicatorTabClose, &button, &painter);
    });
    EXPECT_GE(BestContrast(picture, button.rect, palette), kVisible);
    for (int y = 10; y < 26; ++y)
      for (int x = 10; x < 26; ++x)
        EXPECT_LT(picture.pixelColor(x, y).hslSaturation(), 40) << x << " " << y;
  }
}

TEST_F(ClearFusionTest, TheButtonsOfDialogsHaveNoPictures) {
  const QStyle& style = m_style;
  EXPECT_EQ(style.styleHint(QStyle::SH_DialogButtonBox_ButtonsHaveIcons), 0);
}

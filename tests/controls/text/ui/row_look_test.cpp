#include "controls/text/ui/row_look.h"

#include <gtest/gtest.h>

#include <vector>

#include "docview/ui/high_contrast.h"

namespace {

// As a theme for high contrast gives it: each ground is the same pure colour.
QPalette PureTheme(const QColor& ground, const QColor& text) {
  QPalette palette;
  for (const auto role :
       {QPalette::Base, QPalette::AlternateBase, QPalette::Window, QPalette::Button})
    palette.setColor(role, ground);
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
    palette.setColor(role, text);
  palette.setColor(QPalette::Highlight, text);
  palette.setColor(QPalette::HighlightedText, ground);
  return palette;
}

QPalette UsualTheme() {
  QPalette palette = PureTheme(Qt::white, Qt::black);
  palette.setColor(QPalette::Window, QColor(0xef, 0xef, 0xef));
  return palette;
}

std::vector<RowKind> KindsOfRows() {
  std::vector<RowKind> kinds;
  for (const bool selected : {false, true})
    for (const bool keyboard : {false, true})
      for (const bool stripe : {false, true})
        for (const RowTint tint : {RowTint::None, RowTint::Warn, RowTint::Error}) {
          kinds.push_back({selected, keyboard, stripe, tint});
          kinds.push_back({selected, keyboard, stripe, tint, RowColours{0x808080, 0x909090}});
        }
  return kinds;
}

}  // namespace

TEST(HighContrast, RatiosAreThoseOfTheStandard) {
  EXPECT_NEAR(ContrastOf(Qt::black, Qt::white), 21, 0.001);
  EXPECT_NEAR(ContrastOf(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.01);
}

TEST(HighContrast, IsKnownByGroundsOfOnePureColour) {
  EXPECT_TRUE(IsHighContrast(PureTheme(Qt::black, Qt::white)));
  EXPECT_TRUE(IsHighContrast(PureTheme(Qt::black, Qt::yellow))) << "a text need not be white";
  EXPECT_TRUE(IsHighContrast(PureTheme(Qt::white, Qt::black)));
  EXPECT_FALSE(IsHighContrast(UsualTheme())) << "white lists in a grey window";
  EXPECT_FALSE(IsHighContrast(PureTheme(Qt::black, QColor(0xb0, 0xb0, 0xb0)))) << "grey text";
  EXPECT_FALSE(IsHighContrast(PureTheme(QColor(0x1e, 0x1f, 0x22), Qt::white)));
}

TEST(HighContrast, EveryRowIsReadableWithoutTintsAndColourRules) {
  for (const QPalette& palette :
       {PureTheme(Qt::black, Qt::white), PureTheme(Qt::white, Qt::black)}) {
    const RowLook plain = LookOf(palette, {});
    const RowLook chosen = LookOf(palette, {true});
    EXPECT_NE(plain.background, chosen.background);
    for (const RowKind& kind : KindsOfRows()) {
      const RowLook look = LookOf(palette, kind);
      EXPECT_EQ(look.background, kind.selected ? chosen.background : plain.background);
      EXPECT_GE(ContrastOf(look.text, look.background), 7);
      EXPECT_GE(ContrastOf(look.soft, look.background), 7);
      EXPECT_GE(ContrastOf(look.hitText, look.hit), 7);
    }
  }
}

TEST(HighContrast, UsualColoursKeepTintsStripesAndRules) {
  const QColor plain = LookOf(UsualTheme(), {}).background;
  EXPECT_NE(LookOf(UsualTheme(), {.tint = RowTint::Error}).background, plain);
  EXPECT_NE(LookOf(UsualTheme(), {.stripe = true}).background, plain);
  EXPECT_EQ(LookOf(UsualTheme(), {.colours = RowColours{0, 0x123456}}).background,
            QColor(0x12, 0x34, 0x56));
}

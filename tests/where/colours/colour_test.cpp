// Colours as text, their contrast, and the sets that come with the program.
#include "where/colours/colour.h"

#include <gtest/gtest.h>

#include "where/colours/colour_program.h"
#include "where/colours/shipped_colours.h"

namespace {

constexpr Colour kBlack{}, kWhite{0xff, 0xff, 0xff};

TEST(Colour, IsReadAndWrittenAsSixHexadecimalDigits) {
  EXPECT_EQ(ColourOf("#01aBfF"), (Colour{0x01, 0xab, 0xff}));
  EXPECT_EQ(ColourText({0x01, 0xab, 0xff}), "#01abff");
  for (const char* wrong :
       {"", "#", "01abff", "#01abf", "#01abff0", "#01abfg", "#-1abff", "#+1abff", "# 1abff", "red"})
    EXPECT_FALSE(ColourOf(wrong)) << wrong;
}

// The values are those that the recommendation and its checkers give.
TEST(Colour, TheContrastIsThatOfTheRecommendation) {
  EXPECT_DOUBLE_EQ(Contrast(kBlack, kWhite), 21);
  EXPECT_DOUBLE_EQ(Contrast(kWhite, kBlack), 21);
  EXPECT_DOUBLE_EQ(Contrast(kWhite, kWhite), 1);
  EXPECT_NEAR(Contrast({0x76, 0x76, 0x76}, kWhite), 4.54, 0.005);
  EXPECT_NEAR(Contrast({0x77, 0x77, 0x77}, kWhite), 4.48, 0.005);
  EXPECT_NEAR(Contrast({0xff, 0, 0}, kWhite), 4.00, 0.005);
  EXPECT_NEAR(Contrast({0, 0, 0xff}, kWhite), 8.59, 0.005);
  EXPECT_NEAR(Luminance({0x0a, 0x0a, 0x0a}), 10 / 255.0 / 12.92, 1e-9) << "the linear part";
}

TEST(ShippedColours, CanBeReadOnTheirGroundsAndSayTheSameInLightAndInDark) {
  const ColourRules light = ShippedColours(ColourGround::Light);
  const ColourRules dark = ShippedColours(ColourGround::Dark);
  ASSERT_EQ(light.size(), dark.size());
  ASSERT_GE(light.size(), 5u);
  for (std::size_t i = 0; i < light.size(); ++i) {
    EXPECT_EQ(light[i].name, dark[i].name);
    EXPECT_EQ(light[i].where, dark[i].where);
    for (const ColourRule& rule : {light[i], dark[i]}) {
      EXPECT_GE(Contrast(rule.ink, rule.ground), kLeastContrast) << rule.name;
      EXPECT_TRUE(CheckColourRule(rule, nullptr)) << rule.name;
    }
    // All but the one that is to strike are a shade of the list.
    if (i == 0) continue;
    EXPECT_LT(Contrast(light[i].ground, kWhite), 1.5) << light[i].name;
    EXPECT_LT(Contrast(dark[i].ground, kBlack), 2.0) << dark[i].name;
  }
}

TEST(ShippedColours, HaveFilterTextsThatAreRight) {
  const ColourProgramPtr program = ColourProgram::Compile(ShippedColours(ColourGround::Dark));
  for (std::size_t i = 0; i < program->Rules().size(); ++i) {
    EXPECT_FALSE(program->ErrorOf(i)) << program->Rules()[i].where;
    EXPECT_TRUE(program->ProgramOf(i)) << program->Rules()[i].where;
  }
}

}  // namespace

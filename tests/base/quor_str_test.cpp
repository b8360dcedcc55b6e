#include "base/quor_str.h"

#include <gtest/gtest.h>

#include "support/comma_locale.h"

namespace {

TEST(NumToStr, WholeNumbersAreDecimalDigits) {
  EXPECT_EQ(QuorStr::NumToStr(0u), "0");
  EXPECT_EQ(QuorStr::NumToStr(4294967295u), "4294967295");
  EXPECT_EQ(QuorStr::NumToStr(-2147483647 - 1), "-2147483648");
  EXPECT_EQ(QuorStr::NumToStr(std::uint64_t{18446744073709551615u}), "18446744073709551615");
}

TEST(NumToStr, AFormatIsForOneLongDouble) {
  EXPECT_EQ(QuorStr::NumToStr(1.5, "%.3Lg"), "1.5");
  EXPECT_EQ(QuorStr::NumToStr(1234567.0, "%.3Lg"), "1.23e+06");
  EXPECT_EQ(QuorStr::NumToStr(0.0, "%.3Lg"), "0");
  EXPECT_EQ(QuorStr::NumToStr(1e300, "%.0Lf").size(), 301u);
}

TEST(NumToStr, TheDecimalPointIsAPointInEveryLocaleAndTheLocaleStaysWhatItWas) {
  const CommaLocale locale;
  EXPECT_EQ(QuorStr::NumToStr(0.25, "%.3Lg"), "0.25");
  EXPECT_EQ(CommaLocale::Printed(), "1,5");
}

}  // namespace

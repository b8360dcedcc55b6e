#include "base/quor_str.h"

#include <gtest/gtest.h>

#include <clocale>

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

// A locale whose decimal point is a comma, if the machine has one; "C" has its point anyway.
TEST(NumToStr, TheDecimalPointIsAPointInEveryLocaleAndTheLocaleStaysWhatItWas) {
  const std::string before = setlocale(LC_ALL, nullptr);
  for (const char* const name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8", "C"}) {
    if (!setlocale(LC_ALL, name)) continue;
    const std::string here = setlocale(LC_ALL, nullptr);
    EXPECT_EQ(QuorStr::NumToStr(0.25, "%.3Lg"), "0.25") << name;
    EXPECT_EQ(setlocale(LC_ALL, nullptr), here);
  }
  setlocale(LC_ALL, before.c_str());
}

}  // namespace

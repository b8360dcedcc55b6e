#include "config/document/app_names.h"

#include <gtest/gtest.h>

namespace {

TEST(AppNames, ThreeAreNamedAndTheRestIsCounted) {
  EXPECT_EQ(AppNames({}), "");
  EXPECT_EQ(AppNames({"a"}), "a");
  EXPECT_EQ(AppNames({"c", "a", "b"}), "a, b, c");
  EXPECT_EQ(AppNames({"a", "b", "c", "d"}), "a, b, c and 1 more");
  std::set<std::string> many;
  for (int app = 0; app < 2000; ++app) many.insert("x" + std::to_string(10000 + app));
  EXPECT_EQ(AppNames(many), "x10000, x10001, x10002 and 1,997 more");
}

TEST(AppNames, ALongNameIsCutBetweenItsCharactersAndLineEndsAreBlanks) {
  EXPECT_EQ(AppNames({std::string(40, 'x')}), std::string(40, 'x'));
  EXPECT_EQ(AppNames({std::string(39, 'x') + "\u00e4\u00e4"}), std::string(39, 'x') + "...");
  EXPECT_EQ(AppNames({"two\nlines\tand\r"}), "two lines and ");
}

}  // namespace

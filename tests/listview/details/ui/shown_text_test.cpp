// Places of a trace's text in what an edit shows.
#include "listview/details/ui/shown_text.h"

#include <gtest/gtest.h>

namespace {

std::string ShownOf(const std::string& text) {
  return ShownText(text).Text().toStdString();
}

// "1-3 4-6"
std::string Places(const std::string& text, const std::vector<HitRange>& hits) {
  std::string all;
  for (const HitRange& place : ShownText(text).PlacesOf(hits))
    all += (all.empty() ? "" : " ") + std::to_string(place.begin) + "-" + std::to_string(place.end);
  return all;
}

}  // namespace

TEST(ShownText, CarriageReturnsBeforeALineFeedAreNotShown) {
  EXPECT_EQ(ShownOf("one\r\ntwo"), "one\ntwo");
  EXPECT_EQ(ShownOf("one\r\r\n\r\ntwo\r\n"), "one\n\ntwo\n");
  EXPECT_EQ(ShownOf("a\rb\r"), "a\rb\r");
  EXPECT_EQ(ShownOf(""), "");
}

TEST(ShownText, PlacesCountLettersAndOneForALinesEnd) {
  EXPECT_EQ(Places("one\r\ntwo\r\nsix", {{0, 3}, {5, 8}, {10, 13}}), "0-3 4-7 8-11");
  EXPECT_EQ(Places("ü\r\nü", {{0, 2}, {4, 6}}), "0-1 2-3");
  EXPECT_EQ(Places("\xF0\x9F\x98\x80 up", {{5, 7}}), "3-5");
}

TEST(ShownText, PlacesStayInsideTheTextWhateverItsBytes) {
  for (const HitRange& place :
       ShownText("\xFF\xC3\r\n\xE4\xBD up").PlacesOf({{0, 1}, {1, 2}, {2, 3}, {3, 5}, {5, 9}}))
    EXPECT_LE(place.end, 9u);
}

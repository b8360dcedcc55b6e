// The places of the last search in a text.
#include "tree/find/find_hits.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class FindHitsTest : public testing::Test {
 protected:
  FindHitsTest() { FindSettings = {}; }
  ~FindHitsTest() override { FindSettings = {}; }

  // As the Find dialog's OK does.
  static void Prepare(const std::string& pattern, bool regular = false, bool ignoreCase = false,
                      bool word = false) {
    ASSERT_EQ(RegexPrepare(pattern.c_str(), ignoreCase, !regular, word, 0), 1);
    FindSettings = {pattern, ignoreCase, 0, regular, word};
  }
  // "[up] and [up]": the text with its hits in brackets.
  static std::string Marked(std::string text) { return Marked(FindHits(), std::move(text)); }
  static std::string Marked(FindHits&& made, std::string text) {
    const std::vector<HitRange> hits = made.In(text);
    for (auto hit = hits.rbegin(); hit != hits.rend(); ++hit) {
      text.insert(hit->end, "]");
      text.insert(hit->begin, "[");
    }
    return text;
  }
};

TEST_F(FindHitsTest, BeforeASearchThereAreNone) {
  RegexPrepare("up", 0, 1, 0, 0);
  EXPECT_EQ(Marked("up and up"), "up and up");
}

TEST_F(FindHitsTest, EveryPlaceOfTheTextIsGiven) {
  Prepare("up");
  EXPECT_EQ(Marked("up and up, Up, uup"), "[up] and [up], Up, u[up]");
  EXPECT_EQ(Marked(""), "");
  EXPECT_EQ(Marked("down"), "down");
}

TEST_F(FindHitsTest, HitsDoNotOverlap) {
  Prepare("aa");
  EXPECT_EQ(Marked("aaaaa"), "[aa][aa]a");
}

TEST_F(FindHitsTest, CaseAndWordsCountAsInTheSearch) {
  Prepare("up", false, true);
  EXPECT_EQ(Marked("up UP"), "[up] [UP]");
  Prepare("up", false, false, true);
  EXPECT_EQ(Marked("up uup up_ up"), "[up] uup up_ [up]");
}

TEST_F(FindHitsTest, ARegularExpressionsHitsAreGivenWhole) {
  Prepare("order [0-9]+", true);
  EXPECT_EQ(Marked("order 12, order 7; order"), "[order 12], [order 7]; order");
}

TEST_F(FindHitsTest, AnchorsHoldAtLinesOnly) {
  Prepare("^up", true);
  EXPECT_EQ(Marked("up up\nup\r\nno up\nup"), "[up] up\n[up]\r\nno up\n[up]");
  Prepare("up$", true);
  EXPECT_EQ(Marked("up up\nup"), "up [up]\n[up]");
}

TEST_F(FindHitsTest, EmptyHitsAreLeftOut) {
  Prepare("x*", true);
  EXPECT_EQ(Marked("axxb"), "a[xx]b");
}

TEST_F(FindHitsTest, ALaterPatternChangesNothingInThem) {
  Prepare("up");
  FindHits hits;
  Prepare("down");
  EXPECT_EQ(Marked(std::move(hits), "up down"), "[up] down");
  EXPECT_EQ(Marked("up down"), "up [down]");
}

TEST_F(FindHitsTest, OnlyThoseThatBeginInWhatIsShownAreGiven) {
  Prepare("up");
  EXPECT_EQ(FindHits().In("up up up", FindHits::kSteps, 4),
            (std::vector<HitRange>{{0, 2}, {3, 5}}));
  EXPECT_EQ(FindHits().In("up up up", FindHits::kSteps, 3), (std::vector<HitRange>{{0, 2}}));
}

TEST_F(FindHitsTest, AllHitsOfATextLiveOnTheSameSteps) {
  Prepare("a*a*b", true);
  const std::string one = std::string(100, 'a') + "b";
  const auto hits = [&](std::int64_t steps) {
    return FindHits().In(one + one + one, steps).size();
  };
  std::int64_t first = 1;
  while (hits(first) == 0) ++first;
  EXPECT_EQ(hits(first), 1U) << "nothing is left for the second";
  EXPECT_EQ(hits(3 * first + 3), 3U);
}

TEST_F(FindHitsTest, ASearchThatIsUnderWayGoesOnUndisturbed) {
  Prepare("\\(x*\\)\\(x*\\)\\1\\2y", true);
  const std::string text = std::string(400, 'x') + "zy";
  RegexAnswer answer = RegexBeginText(text, 1000);
  ASSERT_EQ(answer, RegexAnswer::Unfinished);
  EXPECT_EQ(Marked("a y"), "a [y]");
  while (answer == RegexAnswer::Unfinished) answer = RegexResumeText(text, 100000);
  EXPECT_EQ(answer, RegexAnswer::Yes);
}

TEST_F(FindHitsTest, ACostlyPatternAndALongTextHoldNothingUp) {
  const auto begin = std::chrono::steady_clock::now();
  Prepare("\\(x*\\)\\(x*\\)\\1\\2y", true);
  Marked(std::string(60000, 'x'));
  Prepare("x");
  EXPECT_EQ(FindHits().In(std::string(60000, 'x')).size(), FindHits::kHitsMax);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

}  // namespace

#include "statistics/text_pattern.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#include "base/text.h"
#include "where/text/where_parser.h"
#include "where/where_regex.h"

namespace {

std::string PatternOf(std::string_view text) {
  TextPattern pattern;
  return std::string(pattern.Of(text));
}

std::string Shown(std::string_view text) {
  return ShownPattern(PatternOf(text));
}

// The expression of the filter text of a pattern.
class Filter {
 public:
  explicit Filter(std::string_view pattern) {
    const std::optional<std::string> text = OnlyThisPattern(pattern);
    EXPECT_TRUE(text) << ShownPattern(pattern);
    WhereError error;
    const auto expr = text ? ParseWhere(*text, error) : std::nullopt;
    if (!expr) return;
    EXPECT_EQ(expr->op, WhereOperator::Matches);
    std::size_t place = 0;
    std::string why;
    m_regex = WhereRegex::Compile(expr->values.at(0).text, place, why);
    EXPECT_TRUE(m_regex) << why << " in " << *text;
  }
  bool LetsThrough(std::string_view text) {
    const bool found = m_regex && m_search.Finds(*m_regex, text);
    EXPECT_EQ(m_search.LimitsReached(), 0u);
    return found;
  }

 private:
  std::shared_ptr<const WhereRegex> m_regex;
  WhereRegexSearch m_search;
};

TEST(TextPattern, NumbersAreLeftOutWithSignPointGroupsAndExponent) {
  EXPECT_EQ(Shown("took 12 ms"), "took # ms");
  EXPECT_EQ(Shown("at -5, +3.25 and 1e-9, 2E+10"), "at #, # and #, #");
  EXPECT_EQ(Shown("1,234,567.89 bytes from 10.0.0.1"), "# bytes from #");
  EXPECT_EQ(Shown("12"), "#");
  EXPECT_EQ(Shown("1. 2"), "#. #");
}

TEST(TextPattern, ALineBehindAWordIsNoSign) {
  EXPECT_EQ(Shown("web-01"), "web-#");
  EXPECT_EQ(Shown("3-4"), "#-#");
  EXPECT_EQ(Shown("x=-4 (-4) --4"), "x=# (#) -#");
  EXPECT_EQ(Shown("- 4 -a"), "- # -a");
}

TEST(TextPattern, DigitsAreLeftOutWithinWords) {
  EXPECT_EQ(Shown("worker12 took 250ms"), "worker# took #ms");
  EXPECT_EQ(Shown("2026-11-23T09:41:07.123Z"), "#-#-#T#:#:#Z");
  EXPECT_EQ(Shown("1.5s"), "#s");
  EXPECT_EQ(Shown("user_7_x"), "user_#_x");
}

TEST(TextPattern, HexNumbersAreLeftOutWithPrefixAndAsWordsWithADigit) {
  EXPECT_EQ(Shown("at 0x7fFe12 of 0X1"), "at # of #");
  EXPECT_EQ(Shown("id 3fa9, a1"), "id #, #");
  EXPECT_EQ(Shown("dead beef face"), "dead beef face") << "words without a digit";
  EXPECT_EQ(Shown("0x 0xg1"), "#x #xg#");
  const std::string hash(64, 'a');
  EXPECT_EQ(Shown(hash.substr(1) + "1"), "#");
  EXPECT_EQ(Shown(hash + "1"), hash + "#") << "longer than any hash";
}

TEST(TextPattern, AUuidIsOneNumber) {
  EXPECT_EQ(Shown("order 550e8400-e29b-41d4-a716-446655440000 sent"), "order # sent");
  EXPECT_EQ(Shown("{deadbeef-dead-beef-dead-deadbeefdead}"), "{#}");
  EXPECT_EQ(Shown("deadbeef-dead-beef-dead-deadbeefdea"), "deadbeef-dead-beef-dead-deadbeefdea");
}

TEST(TextPattern, QuotedPartsAreLeftOutWithTheirEscapes) {
  EXPECT_EQ(Shown("open \"a b\" as 'c'"), "open \"...\" as '...'");
  EXPECT_EQ(Shown("say \"a \\\" 5\" now"), "say \"...\" now");
  EXPECT_EQ(Shown("\"\" and ''"), "\"...\" and '...'");
  EXPECT_EQ(Shown("path \"C:\\\\\" of 5"), "path \"...\" of #");
}

TEST(TextPattern, AQuoteThatNothingClosesGoesToTheEnd) {
  EXPECT_EQ(Shown("got \"abc 5"), "got \"...");
  EXPECT_EQ(Shown("got \"abc\\\""), "got \"...");
  EXPECT_EQ(Shown("got 'abc\\"), "got '...");
  EXPECT_NE(PatternOf("got \"a\""), PatternOf("got \"a"));
}

TEST(TextPattern, AnApostropheBehindAWordOpensNone) {
  EXPECT_EQ(Shown("don't wait for 5 users' work"), "don't wait for # users' work");
  EXPECT_EQ(Shown("\xc3\xa9's 5"), "\xc3\xa9's #");
}

TEST(TextPattern, CharactersBeyondAsciiStayAsTheyAre) {
  EXPECT_EQ(Shown("gr\xc3\xb6\xc3\x9f"
                  "e 5\xc2\xb5s"),
            "gr\xc3\xb6\xc3\x9f"
            "e #\xc2\xb5s");
  EXPECT_EQ(Shown("\xff\xfe 1"), "\xff\xfe #");
  EXPECT_EQ(Shown(""), "");
}

TEST(TextPattern, BytesOfATextThatLookLikeMarksAreNone) {
  EXPECT_EQ(Shown("a\x01"
                  "b\x08"),
            "a\x01"
            "b\x08");
  EXPECT_NE(PatternOf("a \x01"), PatternOf("a 1"));
  EXPECT_NE(PatternOf("a #"), PatternOf("a 1"));
}

TEST(TextPattern, ALongTextHasAPatternThatEnds) {
  std::string text;
  for (int i = 0; i < 9000; ++i) text += "word 5 ";
  const std::string pattern = PatternOf(text);
  EXPECT_LT(pattern.size(), kPatternBytes + 16);
  EXPECT_TRUE(ShownPattern(pattern).ends_with("..."));
  EXPECT_EQ(pattern, PatternOf(text + "and more"));
  EXPECT_LT(PatternOf(std::string(65535, 'x')).size(), kPatternBytes + 300);
  std::string alternating;
  for (int i = 0; i < 30000; ++i) alternating += "x1";
  EXPECT_LT(PatternOf(alternating).size(), kPatternBytes + 300);
  std::string characters;
  for (int i = 0; i < 20000; ++i) characters += "\xe2\x82\xac";
  EXPECT_TRUE(IsUtf8(PatternOf(characters)));
}

TEST(TextPattern, OnlyThisPatternLetsItsTextsThrough) {
  Filter filter(PatternOf("took 5 ms for \"a\" (id 3fa9)"));
  EXPECT_TRUE(filter.LetsThrough("took -1.5e3 ms for \"b c\" (id 12)"));
  EXPECT_FALSE(filter.LetsThrough("took 5 ms for \"a\" (id 3fa9) again"));
  EXPECT_FALSE(filter.LetsThrough("it took 5 ms for \"a\" (id 3fa9)"));
  EXPECT_FALSE(filter.LetsThrough("took # ms for \"a\" (id 3fa9)"));
  EXPECT_FALSE(Filter(PatternOf("a")).LetsThrough("a\n"));
  Filter behindLine(PatternOf("x -b1"));
  EXPECT_TRUE(behindLine.LetsThrough("x -c2"));
  EXPECT_FALSE(behindLine.LetsThrough("x -5")) << "there it is a sign";
  EXPECT_FALSE(OnlyThisPattern(PatternOf("\xff 5"))) << "no filter text can say that";
}

// What makes the difference between one pattern and another one, mixed at random.
const std::vector<std::string>& Pieces() {
  static const std::vector<std::string> pieces = {
      "1",        "23",       "a",     "b1",    "x",    "zz",
      " ",        " ",        "-",     "+",     ".",    ",",
      "e",        "E",        "e-",    "0x",    "'",    "\"",
      "\\",       "_",        "(",     "\n",    "\x01", "\x08",
      "\xc3\xa9", "deadbeef", "-1234", "-abcd", "9abc", "deadbeef-1234-1234-1234-123456789abc",
      "#"};
  return pieces;
}

std::string RandomText(std::mt19937& random, std::size_t most) {
  std::string text;
  for (std::size_t left = random() % (most + 1); left > 0; --left)
    text += Pieces()[random() % Pieces().size()];
  return text;
}

TEST(TextPattern, AFilterTextTellsTextsApartExactlyAsTheirPatternsDo) {
  std::mt19937 random(1);
  for (int round = 0; round < 400; ++round) {
    std::vector<std::string> texts;
    for (int i = 0; i < 40; ++i) {
      texts.push_back(RandomText(random, 7));
      // A neighbour: one piece more, fewer or other.
      std::string near = texts.back();
      const std::string& piece = Pieces()[random() % Pieces().size()];
      near.insert(random() % (near.size() + 1), piece);
      if (IsUtf8(near)) texts.push_back(near);
    }
    const std::string pattern = PatternOf(texts[random() % texts.size()]);
    Filter filter(pattern);
    for (const std::string& text : texts)
      ASSERT_EQ(filter.LetsThrough(text), PatternOf(text) == pattern)
          << "text <" << text << "> of pattern <" << Shown(text) << "> by the filter of <"
          << ShownPattern(pattern) << ">: " << *OnlyThisPattern(pattern);
  }
}

TEST(TextPattern, OtherNumbersInATextKeepItsPatternUnderItsFilter) {
  std::mt19937 random(2);
  std::map<std::string, std::vector<std::string>> byPattern;
  for (int i = 0; i < 60000; ++i) {
    std::string text = RandomText(random, 4);
    byPattern[PatternOf(text)].push_back(std::move(text));
  }
  std::size_t pairs = 0;
  for (const auto& [pattern, texts] : byPattern) {
    if (texts.size() < 2) continue;
    Filter filter(pattern);
    for (std::size_t i = 0; i < std::min<std::size_t>(texts.size(), 8); ++i, ++pairs)
      ASSERT_TRUE(filter.LetsThrough(texts[i])) << texts[i] << " of " << ShownPattern(pattern);
  }
  EXPECT_GT(pairs, 5000u);
}

TEST(TextPattern, TheFilterOfAPatternThatWasCutIsExactAsWell) {
  std::mt19937 random(3);
  const std::string stems[] = {std::string(1015, '.'), std::string(1240, 'x'),
                               std::string(1270, 'x'), std::string(1020, '.') + "word "};
  for (const std::string& stem : stems) {
    std::vector<std::string> texts;
    for (int i = 0; i < 150; ++i) texts.push_back(stem + RandomText(random, 12));
    for (int i = 0; i < 20; ++i) {
      const std::string pattern = PatternOf(texts[random() % texts.size()]);
      if (!IsUtf8(pattern)) continue;
      Filter filter(pattern);
      for (const std::string& text : texts)
        ASSERT_EQ(filter.LetsThrough(text), PatternOf(text) == pattern)
            << "text <" << text << "> by the filter of <" << ShownPattern(pattern) << ">";
    }
  }
}

}  // namespace

#include "where/where_regex.h"

#include <gtest/gtest.h>

#include <random>

#include "base/thread_time.h"
#include "where/plain_regex.h"
#include "where/where_program.h"

namespace {

bool Finds(std::string_view expression, std::string_view text, WhereRegexWay way = {}) {
  std::size_t place = 0;
  std::string why;
  const auto regex = WhereRegex::Compile(expression, place, why, way);
  EXPECT_TRUE(regex) << why;
  WhereRegexSearch search;
  const bool found = regex && search.Finds(*regex, text);
  EXPECT_EQ(search.LimitsReached(), 0u);
  return found;
}

TEST(WhereRegex, AWellFormedTextIsSearchedByItsCharacters) {
  EXPECT_TRUE(Finds("^.$", "\xc3\xa9"));
  EXPECT_TRUE(Finds("(?i)\xc3\xa9", "\xc3\x89"));
  EXPECT_TRUE(Finds("^\\w+$", "\xc3\xa9t\xc3\xa9"));
  EXPECT_TRUE(Finds("\\x{e9}", "\xc3\xa9"));
}

TEST(WhereRegex, ASetTakesCharactersAndNotTheirBytes) {
  EXPECT_TRUE(Finds("^[\xc3\xa9x]$", "\xc3\xa9"));
  EXPECT_FALSE(Finds("[\xc3\xa9x]", "\xc3\x84"));
  EXPECT_FALSE(Finds("[a-\xc3\xa9]", "\xe2\x82\xa9"));
}

TEST(WhereRegex, AMalformedTextIsSearchedByItsBytes) {
  EXPECT_TRUE(Finds("^..$", "\xff\xfe"));
  EXPECT_TRUE(Finds("\\xff", "a\xff"));
  EXPECT_TRUE(Finds("order [0-9]+", "\x80 order 12"));
  EXPECT_TRUE(Finds("\xc3\xa9", "\xff\xc3\xa9"));
}

TEST(WhereRegex, AnExpressionOfCharactersAloneBearsMalformedTexts) {
  EXPECT_TRUE(Finds("\\x{100}", "\xff\xc4\x80\xff"));
  EXPECT_FALSE(Finds("\\x{100}", "\xff\xc4"));
  EXPECT_TRUE(Finds("(*UTF)^.$", "\xc3\xa9"));
  EXPECT_FALSE(Finds("(*UTF)b", "\xff\xfe"));
}

TEST(WhereRegex, CapitalsMayCountAsSmallLettersAlsoThoseThatAreNoAscii) {
  constexpr WhereRegexWay kAnyCase{.ignoreCase = true};
  EXPECT_FALSE(Finds("order", "an ORDER"));
  EXPECT_TRUE(Finds("order", "an ORDER", kAnyCase));
  EXPECT_TRUE(Finds("\xc3\xa9", "\xc3\x89", kAnyCase));
  EXPECT_TRUE(Finds("[kx]", "\xe2\x84\xaa", kAnyCase)) << "the sign of the kelvin is a K";
  EXPECT_TRUE(Finds("ORDER", "\xff order", kAnyCase)) << "malformed";
}

TEST(WhereRegex, WholeWordsAreThoseOfTheTextsCharacters) {
  constexpr WhereRegexWay kWords{.words = true};
  EXPECT_TRUE(Finds("order|cart", "an order.", kWords));
  EXPECT_FALSE(Finds("rder|car", "an order, a cart", kWords));
  EXPECT_TRUE(Finds("order", "\xc3\xa9order"));
  EXPECT_FALSE(Finds("order", "\xc3\xa9order", kWords));
  EXPECT_TRUE(Finds("order", "\xff order \xff", kWords));
}

TEST(WhereRegex, AnExpressionThatIsNoUtf8MeansBytes) {
  EXPECT_TRUE(Finds("\xff+", "a\xff"));
  EXPECT_FALSE(Finds("^\xff", "\xc3\xa9"));
}

TEST(WhereRegex, AnExpressionThatRefusesTheFastMatcherFindsToo) {
  EXPECT_TRUE(Finds("(*NO_JIT)c.rt", "a cart"));
  EXPECT_FALSE(Finds("(*NO_JIT)c.rt", "a caart"));
  EXPECT_TRUE(Finds("(*NO_JIT)^.$", "\xc3\xa9"));
}

TEST(WhereRegex, AnEmptyTextAndAnEmptyExpressionMatch) {
  EXPECT_TRUE(Finds("", ""));
  EXPECT_TRUE(Finds("^$", std::string_view()));
  EXPECT_FALSE(Finds("x", std::string_view()));
}

TEST(WhereRegex, ASearchThatTriesAllWaysIsGivenUpAndCounted) {
  std::size_t place = 0;
  std::string why;
  for (const char* expression : {"(a+)+$", "(*NO_JIT)(a+)+$"}) {
    const auto regex = WhereRegex::Compile(expression, place, why);
    ASSERT_TRUE(regex) << why;
    WhereRegexSearch search;
    EXPECT_FALSE(search.Finds(*regex, std::string(60, 'a') + "b"));
    EXPECT_EQ(search.LimitsReached(), 1u);
    EXPECT_TRUE(search.Finds(*regex, "aa"));
    EXPECT_EQ(search.LimitsReached(), 1u);
  }
}

TEST(WhereRegex, ASearchThatIsSlowAtEachPlaceOfALongTextIsGivenUpAndCounted) {
  std::size_t place = 0;
  std::string why;
  const std::string text = std::string(65'000, 'a') + "!!b@";
  for (const char* expression : {"(?:a|a){15}b", "(?:\\w|-)+@", "(*NO_JIT)(?:a|a){13}b",
                                 "(*UTF)(?:a|a){15}b", "(?:a|a){15}\\Gb"}) {
    const auto regex = WhereRegex::Compile(expression, place, why);
    ASSERT_TRUE(regex) << why;
    WhereRegexSearch search;
    EXPECT_FALSE(search.Finds(*regex, text)) << expression;
    EXPECT_EQ(search.LimitsReached(), 1u) << expression;
    EXPECT_TRUE(search.Finds(*WhereRegex::Compile("a!+b@$", place, why), text));
  }
}

TEST(WhereRegex, ALongTextIsSearchedInPartsAsInOne) {
  std::mt19937 random(6);
  const auto one = [&](const std::vector<std::string>& of) { return of[random() % of.size()]; };
  const std::vector<std::string> parts = {"a",        "b",      ".",   "^",  "$",    "(?<=b)",
                                          "\\b",      "(?=a)",  "b+",  "a?", "[^a]", "(?m)^",
                                          "\xc3\xa9", "(?<!a)", "\\n", "\\K"};
  const std::vector<std::string> pieces = {"c", "c", "c", "\xc3\xa9", "\xe6\xbc\xa2", " ", "\n"};
  int found = 0, none = 0;
  for (int round = 0; round < 2000; ++round) {
    std::string expression, text;
    for (std::size_t i = 1 + random() % 4; i > 0; --i) expression += one(parts);
    const std::string filler = one(pieces);
    while (text.size() < 3000) text += filler;
    for (std::size_t i = random() % 4; i > 0; --i)
      text.insert(random() % 40 * 64 / filler.size() * filler.size(),
                  one({"a", "b", "ab", "ba", "\n"}));
    std::size_t place = 0;
    std::string why;
    const auto inParts = WhereRegex::Compile(expression, place, why);
    const auto whole = WhereRegex::Compile("(*NO_AUTO_POSSESS)" + expression, place, why);
    if (!inParts || !whole) continue;
    WhereRegexSearch search;
    const bool holds = search.Finds(*whole, text);
    ASSERT_EQ(search.Finds(*inParts, text), holds) << expression << " in " << text;
    ASSERT_EQ(search.LimitsReached(), 0u);
    (holds ? found : none) += 1;
  }
  EXPECT_GT(found, 300);
  EXPECT_GT(none, 300);
}

TEST(WhereRegex, PlainExpressionsMeanTheSameByBytesAndOthersAreNotTakenForPlain) {
  for (const char* plain : {"order [0-9]+|cart", "^hit.*rate [0-9]*$", "(?:a|b){2,3}c?", "a\\.b",
                            "(x.*)+y", "[a-z_.]+@"})
    EXPECT_TRUE(MeansTheSameByBytes(plain)) << plain;
  for (const char* other :
       {".",           "a.b",    ".+",    ".{3}",  ".*+",      "[^a]",     "\\w",
        "\\d",         "(a)\\1", "(?i)a", "(?=a)", "\xc3\xa9", "(*UTF)a",  "[\\d]",
        "[[:alpha:]]", "\\",     "[a",    "[]a]",  "\\x41",    "\\Qa.b\\E"})
    EXPECT_FALSE(MeansTheSameByBytes(other)) << other;
}

TEST(WhereRegex, RandomPlainExpressionsFindTheSameByCharactersAndByBytes) {
  std::mt19937 random(3);
  const auto one = [&](const std::vector<std::string>& of) { return of[random() % of.size()]; };
  const std::vector<std::string> parts = {"a",  "b",    ".*",     "[ab]", "(a|b)", "^",         "$",
                                          "b*", "a{2}", "(.*b)*", "|",    ".*?",   "(?:.*a){2}"};
  const std::vector<std::string> pieces = {"a", "b", "ab", "\xc3\xa9", "\xe6\xbc\xa2", "\n", ""};
  int found = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string plain, text;
    for (std::size_t i = random() % 5; i > 0; --i) plain += one(parts);
    for (std::size_t i = random() % 6; i > 0; --i) text += one(pieces);
    std::size_t place = 0;
    std::string why;
    // A group that is no group of numbers, so that the second is not taken for plain.
    const auto bytes = WhereRegex::Compile(plain, place, why);
    const auto characters = WhereRegex::Compile("(?-i)(?:" + plain + ")", place, why);
    if (!bytes || !characters) continue;
    ASSERT_TRUE(MeansTheSameByBytes(plain)) << plain;
    ASSERT_FALSE(MeansTheSameByBytes("(?-i)(?:" + plain + ")"));
    WhereRegexSearch search;
    const bool holds = search.Finds(*bytes, text);
    ASSERT_EQ(holds, search.Finds(*characters, text)) << plain << " in " << text;
    found += holds ? 1 : 0;
  }
  EXPECT_GT(found, 500);
}

TEST(WhereRegex, WhereTheEndMattersATextIsNotSearchedBeyondIt) {
  for (const char* blind : {"order [0-9]+|cart", "^hit.*rate [0-9]*", "(?:a|b){2,3}c?", "a\\.b"})
    EXPECT_TRUE(SeesNoEnd(blind)) << blind;
  for (const char* other :
       {"a$", "a|b$", "(a$)?", "a*+b", "a++", "a?+b", "(?:a|b){2}+", "a(?!b)", "\\ba", "a\\z"})
    EXPECT_FALSE(SeesNoEnd(other)) << other;
}

TEST(WhereRegex, InAFieldWithANulTheTextBeforeItIsSearchedAlone) {
  std::mt19937 random(5);
  const std::vector<std::string> parts = {"a",    "b",        ".*",   "[ab]",   "(a|b)", "^",
                                          "$",    "b*",       "a{2}", "(.*b)*", "|",     "[ab]*+",
                                          "a++b", "(a|ab)?+", "c?",   "(?!b)"};
  const std::string bytes("abc\0", 4);
  int found = 0, none = 0, beyond = 0;
  for (int round = 0; round < 40000; ++round) {
    std::string expression, field;
    for (std::size_t i = 1 + random() % 5; i > 0; --i) expression += parts[random() % parts.size()];
    for (std::size_t i = random() % 8; i > 0; --i) field += bytes[random() % bytes.size()];
    std::size_t place = 0;
    std::string why;
    const auto regex = WhereRegex::Compile(expression, place, why);
    if (!regex) continue;
    WhereRegexSearch search;
    const bool holds = search.Finds(*regex, std::string(field.c_str()));
    ASSERT_EQ(search.FindsInField(*regex, field.data(), field.size()), holds)
        << expression << " in " << field;
    ASSERT_EQ(search.LimitsReached(), 0u);
    (holds ? found : none) += 1;
    beyond += !holds && search.Finds(*regex, field) ? 1 : 0;
  }
  EXPECT_GT(found, 1000);
  EXPECT_GT(none, 1000);
  EXPECT_GT(beyond, 200);
}

TEST(WhereRegex, AFieldThatIsGivenUpBehindItsNulIsSearchedBeforeIt) {
  std::size_t place = 0;
  std::string why;
  const auto regex = WhereRegex::Compile("(a.*)+q|b", place, why);
  const std::string field = std::string("ab\0", 3) + std::string(500, 'a');
  const std::string none = std::string("ac\0", 3) + std::string(500, 'a');
  WhereRegexSearch search;
  EXPECT_TRUE(search.FindsInField(*regex, field.data(), field.size()));
  EXPECT_FALSE(search.FindsInField(*regex, none.data(), none.size()));
  EXPECT_EQ(search.LimitsReached(), 0u);
}

TEST(WhereRegex, ABeginningIsKnownOfExpressionsThatStandAtTheBeginning) {
  const std::pair<const char*, const char*> beginnings[] = {
      {"^order", "order"}, {"^order [0-9]+", "order "},
      {"^ab*c", "a"},      {"^ab?c", "a"},
      {"^ab{0,1}c", "a"},  {"^ab+c", "ab"},
      {"^", ""},           {"order", ""},
      {"^ab|cd", ""},      {"(^ab)", ""},
      {"^a.*", "a"},       {"^(ab)?", ""},
      {"^ab\\.c", "ab"},   {"(?i)^ab", ""},
      {"^\\d", ""},        {"^a$", "a"}};
  for (const auto& [expression, beginning] : beginnings)
    EXPECT_EQ(BeginningOf(expression), beginning) << expression;
}

TEST(WhereRegex, NothingIsFoundInATextWithoutTheBeginning) {
  std::mt19937 random(4);
  const std::vector<std::string> parts = {"a",  "b",    ".*", "[ab]", "(a|b)", "^",      "$",
                                          "b*", "a{2}", "c?", "|",    "a+",    "(.*b)*", "\\."};
  int passed = 0, refused = 0;
  for (int round = 0; round < 5000; ++round) {
    std::string plain = "^", text;
    for (std::size_t i = random() % 5; i > 0; --i) plain += parts[random() % parts.size()];
    for (std::size_t i = random() % 6; i > 0; --i) text += "abc."[random() % 4];
    std::size_t place = 0;
    std::string why;
    const auto regex = WhereRegex::Compile(plain, place, why);
    if (!regex) continue;
    const bool may = regex->MayBeginWith(text.data(), text.size());
    WhereRegexSearch search;
    ASSERT_TRUE(may || !search.Finds(*regex, text)) << plain << " in " << text;
    (may ? passed : refused) += 1;
  }
  EXPECT_GT(passed, 500);
  EXPECT_GT(refused, 500);
}

// The whole text, and what the error points to.
std::string Fault(const std::string& text) {
  WhereError error;
  EXPECT_FALSE(WhereProgram::Compile(text, error));
  EXPECT_LE(error.place + error.length, text.size());
  return text.substr(error.place, error.length) + "|" + error.reason.substr(0, 17);
}

TEST(WhereRegex, AWrongExpressionIsToldWithItsPlaceInTheText) {
  EXPECT_EQ(Fault("text matches \"a)b\""), ")|wrong expression:");
  EXPECT_EQ(Fault("severity == info and text matches \"(a\""), "\"|wrong expression:");
  EXPECT_EQ(Fault("component matches \"a\\Cb\""), "b|wrong expression:");
  WhereError error;
  ASSERT_FALSE(WhereProgram::Compile("text matches \"a)b\"", error));
  EXPECT_EQ(error.place, 15u);
}

TEST(WhereRegex, ABoundedSearchGivesUpLongTextsManyStepsAndAllAfterItsTime) {
  std::size_t place = 0;
  std::string why;
  const auto all = WhereRegex::Compile("(a+)+$", place, why),
             one = WhereRegex::Compile("b", place, why);
  WhereRegexSearch search;
  search.Bound({.steps = 1000, .textBytes = 10});
  EXPECT_TRUE(search.Finds(*one, "0123456b"));
  EXPECT_FALSE(search.Finds(*one, "01234567890b"));
  EXPECT_EQ(search.LimitsReached(), 1u);
  search.Bound({.steps = 1000, .textBytes = 100});
  EXPECT_TRUE(search.Finds(*one, "01234567890b"));
  EXPECT_FALSE(search.Finds(*all, "aaaaaaaaaaaaaaaaaaaaaaaaa!"));
  EXPECT_EQ(search.LimitsReached(), 2u);
  search.EndAt(ThreadNanoseconds());
  EXPECT_FALSE(search.Finds(*one, "b"));
  EXPECT_EQ(search.LimitsReached(), 3u);
  search.EndAt(ThreadNanoseconds() + 60'000'000'000);
  EXPECT_TRUE(search.Finds(*one, "b"));
  EXPECT_EQ(search.LimitsReached(), 3u);
}

TEST(WhereRegex, APlaceThatNeedsManyStepsHidesNoMatchBehindIt) {
  std::size_t place = 0;
  std::string why;
  const auto regex = WhereRegex::Compile("(?:a|aa)+$|found|\\p{Lu}", place, why);
  for (const int letters : {10, 16, 19, 22}) {
    WhereRegexSearch search;
    const std::string many = "--" + std::string(static_cast<std::size_t>(letters), 'a') + "!";
    EXPECT_TRUE(search.Finds(*regex, many + " found")) << letters;
    EXPECT_TRUE(search.Finds(*regex, many + "\xC3\x84")) << letters;
    EXPECT_FALSE(search.Finds(*regex, many)) << letters;
    EXPECT_EQ(search.LimitsReached(), 0u) << letters;
  }
}

// Each of its places takes nearly as many steps as one place may.
TEST(WhereRegex, AShortTextTakesNoLongerThanAFewPlacesOfIt) {
  std::size_t place = 0;
  std::string why;
  const auto time = [&](const std::string& expression, const std::string& text) {
    const auto regex = WhereRegex::Compile(expression, place, why);
    std::uint64_t least = ~std::uint64_t{0};
    for (int i = 0; i < 3; ++i) {
      WhereRegexSearch search;
      const std::uint64_t before = ThreadNanoseconds();
      EXPECT_FALSE(search.Finds(*regex, text));
      least = std::min(least, ThreadNanoseconds() - before);
    }
    return least;
  };
  const std::string text = std::string(1000, 'a') + "!";
  const std::uint64_t one = time("^(?:a+)+$", text);
  std::uint64_t most = 0;
  for (int optional = 12; optional <= 20; ++optional) {
    const std::string count = std::to_string(optional);
    most = std::max(most, time("(?:a?){" + count + "}[bc]", text));
    most = std::max(most, time("(?=(?:a?){" + count + "}[bc])\\w", text));
  }
  EXPECT_LT(most, 100 * one);
}

}  // namespace

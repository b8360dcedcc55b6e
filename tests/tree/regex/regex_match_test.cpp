// What a compiled pattern matches.
#include <gtest/gtest.h>

#include <string>

#include "tree/regex/regex.h"

namespace {

// Does the expression occur in the text?
bool Finds(const std::string& pattern, const std::string& text, bool ignoreCase = false) {
  EXPECT_EQ(RegexPrepare(pattern.c_str(), ignoreCase, 0, 0, 0), 1) << pattern;
  return RegexMatchText(text) != 0;
}
bool FindsWord(const std::string& pattern, const std::string& text) {
  EXPECT_EQ(RegexPrepare(pattern.c_str(), 0, 0, 1, 0), 1) << pattern;
  return RegexMatchText(text) != 0;
}
// What it matches first, "-" for nothing.
std::string Matched(const std::string& pattern, const std::string& text) {
  EXPECT_EQ(RegexPrepare(pattern.c_str(), 0, 0, 0, 0), 1) << pattern;
  const char *from = nullptr, *to = nullptr, *begin = text.data();
  if (!RegexFindIn(begin, begin, begin + text.size(), &from, &to)) return "-";
  return {from, to};
}

TEST(RegexMatch, ARunTakesAllAndGivesBack) {
  EXPECT_EQ(Matched("a.*c", "xabcabcx"), "abcabc");
  EXPECT_EQ(Matched("a*", "aaab"), "aaa");
  EXPECT_EQ(Matched("[0-9]+", "port 8080!"), "8080");
  EXPECT_EQ(Matched("x?y", "xxy"), "xy");
  EXPECT_EQ(Matched("a\\{2,3\\}", "aaaa"), "aaa");
  EXPECT_EQ(Matched("a\\{2\\}b", "aaab"), "aab");
}

TEST(RegexMatch, ThePlusCanGiveItsFirstByteBack) {
  EXPECT_TRUE(Finds("a+a", "a"));
  EXPECT_EQ(Matched("a+a", "a"), "a");
  EXPECT_FALSE(Finds("a+a", "b"));
  EXPECT_EQ(Matched("x.+y", "xy"), "xy") << "and so matches nothing at all";
  EXPECT_FALSE(Finds("x.+", "x")) << "but not at the text's end";
  EXPECT_TRUE(Finds("x.+", "x\n")) << "though before a line's end";
  EXPECT_FALSE(Finds("xa+", "xb"));
}

TEST(RegexMatch, WhatFollowsARunStandsAfterAByteOfItUnlessAPlusGivesThatByteBack) {
  const char* const expression = "[a-z]*[0-9]+[a-f]+[0-9]+";
  EXPECT_TRUE(Finds(expression, "client 12ab3"));
  EXPECT_FALSE(Finds(expression, "12 ab 3"));
  EXPECT_FALSE(Finds(expression, "12 ab3")) << "no digit before the letters";
  EXPECT_FALSE(Finds("[0-9]+[a-f]", "a"));
  EXPECT_TRUE(Finds("[0-9]+[a0-9]", "1")) << "the digit that the plus gives back";
  EXPECT_TRUE(Finds("[0-9]+[a0-9]b", "1b"));
  EXPECT_TRUE(Finds("[0-9]\\{1,\\}9b", "19b"));
  EXPECT_FALSE(Finds("[0-9]\\{1,\\}9b", "9b")) << "a range does not give its least bytes back";
}

TEST(RegexMatch, OnlyTheStarredNarrowSetsStopAtALinesEnd) {
  EXPECT_EQ(Matched("[^x]*", "ab\ncd"), "ab");
  EXPECT_EQ(Matched("[^x]+", "ab\ncd"), "ab\ncd");
  EXPECT_EQ(Matched("[^x]\\{1,9\\}", "ab\ncd"), "ab\ncd");
  EXPECT_EQ(Matched("[\\na-d]*", "ab\ncd"), "ab");
  EXPECT_EQ(Matched("[\\na-d]+", "ab\ncd"), "ab\ncd");
  EXPECT_EQ(Matched("[^x\xe9]*", "ab\ncd"), "ab\ncd") << "a wide set";
  EXPECT_EQ(Matched("a[^x]c", "a\nc"), "a\nc");
}

TEST(RegexMatch, APointMatchesNoLinesEnd) {
  EXPECT_FALSE(Finds("a.b", "a\nb"));
  EXPECT_FALSE(Finds("a.b", "a\rb"));
  EXPECT_EQ(Matched("a.*", "abc\ndef"), "abc");
  EXPECT_TRUE(Finds("a.b",
                    "a\xe9"
                    "b"));
}

TEST(RegexMatch, AcrossLinesAPointMatchesThem) {
  ASSERT_EQ(RegexPrepare("a.b", 0, 0, 0, 1), 1);
  EXPECT_TRUE(RegexMatchText("a\nb"));
  ASSERT_EQ(RegexPrepare("a[^x]*b", 0, 0, 0, 1), 1);
  EXPECT_TRUE(RegexMatchText("a\r\nb"));
}

TEST(RegexMatch, AMaximumOf255IsNoneButStopsAfter20010) {
  EXPECT_EQ(Matched("a\\{1,255\\}", std::string(300, 'a')).size(), 300u);
  EXPECT_EQ(Matched("a\\{1,254\\}", std::string(300, 'a')).size(), 254u);
  EXPECT_EQ(Matched("a\\{0,\\}", std::string(30000, 'a')).size(), 20010u);
  EXPECT_EQ(Matched("a\\{7,\\}", std::string(30000, 'a')).size(), 20017u);
}

TEST(RegexMatch, WordSearchWantsNoWordByteOnEitherSide) {
  EXPECT_FALSE(FindsWord("foo", "foobar"));
  EXPECT_FALSE(FindsWord("foo", "xfoo"));
  EXPECT_FALSE(FindsWord("foo", "_foo"));
  EXPECT_FALSE(FindsWord("foo", "foo1"));
  EXPECT_TRUE(FindsWord("foo", "a foo."));
  EXPECT_TRUE(FindsWord("foo", "foo"));
  EXPECT_TRUE(FindsWord("foo", "foobar foo"));
  EXPECT_TRUE(FindsWord("foo",
                        "\xe9"
                        "foo\xe9"))
      << "bytes from 128 on are no letters";
}

TEST(RegexMatch, UnderWordSearchDollarNeverMatchesBeforeAWordAndCaretIsItself) {
  EXPECT_FALSE(FindsWord("$foo", "foo"));
  EXPECT_FALSE(FindsWord("$foo", "\nfoo"));
  EXPECT_FALSE(FindsWord("^foo", "foo"));
  EXPECT_TRUE(FindsWord("^foo", "a ^foo b"));
  EXPECT_TRUE(FindsWord("foo$", "a foo"));
}

TEST(RegexMatch, UnderWordSearchTheFirstRunGivesBackForTheWordsEnd) {
  EXPECT_TRUE(FindsWord("a.*b", "a b bc")) << "the greedy match ends in a word; it gives back";
  EXPECT_FALSE(FindsWord("a.*b", "a bc"));
  // Kept: a run inside does not.
  EXPECT_FALSE(FindsWord("x*a.*b", "a b bc"));
}

// Elsewhere the run of a back-reference with a plus gives nothing back.
TEST(RegexMatch, UnderWordSearchAFirstRunOfABackReferenceGivesBackForTheWordsEnd) {
  const char* const expression = "\\(-a\\)\\1+";
  EXPECT_TRUE(FindsWord(expression, "-a-a-ab"));
  EXPECT_FALSE(FindsWord(expression, "-ab")) << "the word would end in the middle of it";
  EXPECT_EQ(Matched(expression, "-a-a-ab"), "-a-a-a");
  EXPECT_FALSE(Finds("\\(-a\\)\\1+-ab", "-a-a-ab"));
}

TEST(RegexMatch, AnEmptyPatternMatchesAtTheStartOfEveryText) {
  EXPECT_TRUE(Finds("", ""));
  EXPECT_EQ(Matched("", "abc"), "");
  EXPECT_TRUE(FindsWord("", ""));
  EXPECT_FALSE(FindsWord("", "a"));
  const std::string text = "a  b";
  EXPECT_TRUE(FindsWord("", text));
  EXPECT_EQ(RegexState.matchStart - text.data(), 2) << "the first place without a word beside it";
  EXPECT_EQ(RegexState.matchEnd, RegexState.matchStart);
}

TEST(RegexMatch, ADollarHoldsBeforeALinesEndAZeroAndTheTextsEnd) {
  EXPECT_TRUE(Finds("a$", "ba"));
  EXPECT_TRUE(Finds("a$", "a\nb"));
  EXPECT_TRUE(Finds("a$", "a\r\nb"));
  EXPECT_TRUE(Finds("a$", std::string("a\0b", 3)));
  EXPECT_FALSE(Finds("a$", "ab"));
}

TEST(RegexMatch, AnAnchorHoldsAtTheStartOfTheTextAndOfEachFurtherLine) {
  EXPECT_TRUE(Finds("^abc", "abc"));
  EXPECT_FALSE(Finds("^abc", "xabc"));
  EXPECT_TRUE(Finds("^abc", "x\nabc"));
  EXPECT_TRUE(Finds("^abc", "x\r\nabc"));
  EXPECT_TRUE(Finds("^abc", "x\n\rabc"));
  EXPECT_TRUE(Finds("^abc", "one\ntwo\nthree\nabcd"));
  EXPECT_FALSE(Finds("^abc", "x\n"));
  EXPECT_FALSE(Finds("^abc", "x\r\n"));
}

TEST(RegexMatch, AnAnchorDoesNotSeeALinesEndAtTheFailedPlaceItself) {
  EXPECT_FALSE(Finds("^abc", "\nabc"));
  EXPECT_TRUE(Finds("^$", "x\n\ny"));
  EXPECT_FALSE(Finds("^abc", "x\n\nabc"));
  EXPECT_TRUE(Finds("^abc", "x\n\n\nabc"));
}

TEST(RegexMatch, AnAnchoredPatternNeverMatchesAnEmptyText) {
  EXPECT_FALSE(Finds("^", ""));
  EXPECT_FALSE(Finds("^a*", ""));
  EXPECT_TRUE(Finds("^", "a"));
}

TEST(RegexMatch, BackReferencesAreExactEvenIgnoringCase) {
  EXPECT_TRUE(Finds("\\([a-z]+\\) \\1", "again again"));
  EXPECT_FALSE(Finds("\\([a-z]+\\)-\\1!", "again-Again!"));
  EXPECT_FALSE(Finds("\\([a-z]+\\)-\\1!", "again-Again!", true));
  EXPECT_TRUE(Finds("\\(AGAIN\\)-\\1!", "again-again!", true));
}

TEST(RegexMatch, ARunOfABackReferenceMayBeEmptyAndOnlyTheStarGivesBack) {
  EXPECT_EQ(Matched("\\(ab\\)\\1*", "ababab"), "ababab");
  EXPECT_EQ(Matched("\\(ab\\)\\1+c", "abc"), "abc") << "no occurrence is wanted";
  EXPECT_EQ(Matched("\\(ab\\)\\1*abc", "abababc"), "abababc") << "the star gives back";
  EXPECT_EQ(Matched("x\\(ab\\)\\1+abc", "xabababc"), "-") << "the plus does not";
  EXPECT_FALSE(Finds("\\(a\\)\\1+a", "aaa"));
}

// A failure at one place of a leading run says nothing of the others when a group holds the run.
TEST(RegexMatch, ALeadingRunInAGroupIsTriedFromEachOfItsPlaces) {
  EXPECT_TRUE(Finds("\\(a*\\)b\\1c", "aabac"));
  EXPECT_TRUE(Finds("\\(a+\\)b\\1c", "aaaabaac"));
  EXPECT_FALSE(Finds("\\(a+\\)b\\1c", "aabc"));
}

TEST(RegexMatch, AnEmptyCaptureThatRepeatsEnds) {
  EXPECT_TRUE(Finds("\\(a*\\)\\1*b", "b"));
  EXPECT_FALSE(Finds("\\(a*\\)\\1*c", "b"));
  EXPECT_TRUE(Finds("\\(a*\\)\\1+b", "b"));
  EXPECT_FALSE(FindsWord("\\(a*\\)\\1*", "bb"));
}

TEST(RegexMatch, NarrowSetsAndHighBytes) {
  EXPECT_TRUE(Finds("[^a]", "\xe9"));
  EXPECT_FALSE(Finds("[a]", "\xe1"));
  EXPECT_TRUE(Finds("[\xe9]", "\xe9"));
  EXPECT_FALSE(Finds("[^\xe9]", "\xe9"));
  EXPECT_TRUE(Finds("[^\xe9]", "\xe8"));
  EXPECT_FALSE(Finds("[^a]", "")) << "the text's end is no byte";
  EXPECT_FALSE(Finds("[^\xe9]", ""));
}

TEST(RegexMatch, IgnoringCaseIsOfAsciiLettersAlone) {
  EXPECT_TRUE(Finds("error", "ERROR", true));
  EXPECT_TRUE(Finds("ERR[a-z]R", "error", true));
  EXPECT_TRUE(Finds("[a-c]+$", "ABC", true));
  EXPECT_FALSE(Finds("\xc3\xa9", "\xc3\x89", true));
  EXPECT_FALSE(Finds("\\[@", "{`", true)) << "what lies beside the letters has no case";
}

TEST(RegexMatch, RegexFindInLeavesItsOutputsOnFailure) {
  ASSERT_EQ(RegexPrepare("x", 0, 1, 0, 0), 1);
  const std::string text = "abc";
  const char marker = 0;
  const char *from = &marker, *to = &marker, *begin = text.data();
  EXPECT_EQ(RegexFindIn(begin, begin, begin + 3, &from, &to), 0);
  EXPECT_EQ(from, &marker);
  EXPECT_EQ(to, &marker);
}

TEST(RegexMatch, RegexSearchBeginsWhereItIsAsked) {
  ASSERT_EQ(RegexPrepare("a[0-9]", 0, 0, 0, 0), 1);
  const std::string text = "a1 a2";
  const char* const begin = text.data();
  EXPECT_EQ(RegexSearch(begin + 1, begin, begin + 5, RegexState.program), 1);
  EXPECT_EQ(RegexState.matchStart - begin, 3);
  EXPECT_EQ(RegexState.matchEnd - begin, 5);
  EXPECT_EQ(RegexSearch(begin + 4, begin, begin + 5, RegexState.program), 0);
}

TEST(RegexMatch, RegexMatchHereTriesOnePlace) {
  ASSERT_EQ(RegexPrepare("\\(b\\)c", 0, 0, 0, 0), 1);
  const std::string text = "abcd";
  const char* const begin = text.data();
  EXPECT_EQ(RegexMatchHere(begin, begin, begin + 4, RegexState.program, 0), 0);
  EXPECT_EQ(RegexMatchHere(begin + 1, begin, begin + 4, RegexState.program, 0), 1);
  EXPECT_EQ(RegexState.matchEnd - begin, 3);
  EXPECT_EQ(RegexState.groupStart[0] - begin, 1);
  EXPECT_EQ(RegexState.groupEnd[0] - begin, 2);
  EXPECT_EQ(RegexMatchHere(begin + 1, begin, begin + 4, RegexState.program, 1), 0)
      << "a letter stands before it";
  EXPECT_EQ(RegexMatchHere(begin + 1, begin + 1, begin + 3, RegexState.program, 1), 1)
      << "start and end of the text are boundaries";
}

TEST(RegexMatch, BytesThatAreNoOpcodesAreSkipped) {
  const unsigned char program[] = {1, 5, 6, 7, 8, 'a', 25, 26, 27, 29, 44, 255, 8, 'b', 33, 39, 28};
  const std::string text = "xab";
  const char* const begin = text.data();
  RegexState.anchored = RegexState.wordSearch = 0;
  EXPECT_EQ(RegexSearch(begin, begin, begin + 3, program), 1);
  EXPECT_EQ(RegexState.matchStart - begin, 1);
}

TEST(RegexMatch, APatternThatFailedRunsAsFarAsItWasCompiled) {
  ASSERT_EQ(RegexPrepare("zzzzzzzzzz", 0, 1, 0, 0), 1);
  ASSERT_EQ(RegexPrepare("[q", 0, 0, 0, 0), 0);
  // After the set stand the last bytes of the pattern before: a "z" and the end.
  EXPECT_EQ(RegexMatchText("aqb"), 0);
  EXPECT_EQ(RegexMatchText("aqz"), 1);
  ASSERT_EQ(RegexPrepare("\\(q", 0, 0, 0, 0), 0);
  EXPECT_EQ(RegexMatchText("aqb"), 1) << "whole but for the group's end";
}

TEST(RegexMatch, APathologicalPatternStopsAfterItsStepsAndGoesOn) {
  ASSERT_EQ(RegexPrepare("\\(x*\\)\\(x*\\)\\1\\2y", 0, 0, 0, 0), 1);
  const std::string text = std::string(400, 'x') + "zy";
  EXPECT_EQ(RegexBeginText(text, 1000), RegexAnswer::Unfinished);
  RegexAnswer answer = RegexAnswer::Unfinished;
  int parts = 0;
  for (; answer == RegexAnswer::Unfinished; ++parts) answer = RegexResumeText(text, 100000);
  EXPECT_EQ(answer, RegexAnswer::Yes) << "four empty captures before the y";
  EXPECT_GT(parts, 3);
}

TEST(RegexMatch, ANewPatternEndsWhatWasUnfinished) {
  ASSERT_EQ(RegexPrepare("\\(x*\\)\\(x*\\)\\1\\2y", 0, 0, 0, 0), 1);
  const std::string text = std::string(400, 'x') + "zy";
  ASSERT_EQ(RegexBeginText(text, 1000), RegexAnswer::Unfinished);
  ASSERT_EQ(RegexPrepare("x", 0, 1, 0, 0), 1);
  EXPECT_EQ(RegexResumeText(text, 1000), RegexAnswer::No);
}

}  // namespace

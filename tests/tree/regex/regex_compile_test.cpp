// What a pattern compiles to, and which patterns are none.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tree/regex/regex.h"

namespace {

using Program = std::vector<int>;

// What a pattern compiles to.
Program Compiled(const std::string& pattern, bool ignoreCase = false, bool literal = false) {
  unsigned char buffer[kRegexProgramBytes + kRegexSlackBytes] = {};
  const unsigned char* const end =
      RegexCompile(pattern.c_str(), buffer, buffer + kRegexProgramBytes, 0, literal, ignoreCase);
  return {buffer, buffer + (end - buffer)};
}

// The code that a pattern raises, 0 for none.
int Raised(const std::string& pattern) {
  RegexState.wordSearch = 0;
  try {
    Compiled(pattern);
  } catch (const std::string& text) {
    const std::string before = "Regular expression parser error: ";
    EXPECT_EQ(text.substr(0, before.size()), before);
    EXPECT_EQ(RegexPrepare(pattern.c_str(), 0, 0, 0, 0), 0) << pattern;
    return std::stoi(text.substr(before.size()));
  }
  EXPECT_EQ(RegexPrepare(pattern.c_str(), 0, 0, 0, 0), 1) << pattern;
  return 0;
}

// A bitmap's bytes with the bits of these characters.
Program Bits(const std::string& members, std::size_t bytes = kRegexSetBytes) {
  Program map(bytes, 0);
  for (const char c : members) {
    const auto byte = static_cast<unsigned char>(c);
    map[byte / 8] |= 1 << (byte % 8);
  }
  return map;
}

Program operator+(Program a, const Program& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

class RegexCompileTest : public testing::Test {
 protected:
  RegexCompileTest() { RegexState.wordSearch = 0; }
};

TEST_F(RegexCompileTest, TheExamplesCompileToTheirExactBytes) {
  EXPECT_EQ(Compiled("^ab*\\(c\\)\\1$"),
            (Program{8, 'a', 9, 'b', 4, 0, 8, 'c', 32, 0, 36, 0, 24, 28}));
  EXPECT_EQ(RegexState.anchored, 1);
  EXPECT_EQ(Compiled("x?"), (Program{11, 'x', 0, 1, 28}));
  EXPECT_EQ(RegexState.anchored, 0);
  EXPECT_EQ(Compiled("[a-c]\\{2,5\\}"), Program{19} + Bits("abc") + (Program{2, 5, 28}));
  EXPECT_EQ(Compiled("aB1", true),
            Program{16} + Bits("aA") + Program{16} + Bits("bB") + (Program{8, '1', 28}));
}

TEST_F(RegexCompileTest, AnErrorIsAStringWithItsCode) {
  try {
    RegexRaise(42);
  } catch (const std::string& text) {
    EXPECT_EQ(text, "Regular expression parser error: 42");
    return;
  }
  FAIL() << "nothing is thrown";
}

TEST_F(RegexCompileTest, AnEmptyPatternIsTheEndAlone) {
  EXPECT_EQ(Compiled(""), Program{28});
  EXPECT_EQ(Compiled("", false, true), Program{28});
}

TEST_F(RegexCompileTest, ASecondMarkAfterARepetitionIsAPlainCharacter) {
  EXPECT_EQ(Compiled("a**"), (Program{9, 'a', 8, '*', 28}));
  EXPECT_EQ(Compiled("a+*"), (Program{10, 'a', 8, '*', 28}));
  EXPECT_EQ(Compiled("a?+"), (Program{11, 'a', 0, 1, 8, '+', 28}));
}

TEST_F(RegexCompileTest, AMarkWithNothingToRepeatIsAPlainCharacter) {
  EXPECT_EQ(Compiled("*abc"), (Program{8, '*', 8, 'a', 8, 'b', 8, 'c', 28}));
  EXPECT_EQ(Compiled("^*a"), (Program{8, '*', 8, 'a', 28}));
  EXPECT_EQ(Compiled("\\(*a\\)"), (Program{4, 0, 8, '*', 8, 'a', 32, 0, 28}));
  EXPECT_EQ(Compiled("\\(a\\)*"), (Program{4, 0, 8, 'a', 32, 0, 8, '*', 28}));
  EXPECT_EQ(Compiled("\\{2"), (Program{8, '{', 8, '2', 28}));
}

TEST_F(RegexCompileTest, APlainMarkIsNotTheLastItem) {
  EXPECT_EQ(Compiled("**"), (Program{8, '*', 8, '*', 28}));
  EXPECT_EQ(Compiled("a***"), (Program{9, 'a', 8, '*', 8, '*', 28}));
}

TEST_F(RegexCompileTest, ARangeAfterAGroupOrABackReferenceCompilesToNoOpcode) {
  EXPECT_EQ(Compiled("\\(\\{1,2\\}a\\)"), (Program{7, 0, 1, 2, 8, 'a', 32, 0, 28}));
  EXPECT_EQ(Compiled("\\(a\\)\\{3\\}"), (Program{4, 0, 8, 'a', 35, 0, 3, 3, 28}));
  EXPECT_EQ(Compiled("\\(a\\)\\1\\{3\\}"), (Program{4, 0, 8, 'a', 32, 0, 39, 0, 3, 3, 28}));
  EXPECT_EQ(Compiled("\\(a\\)\\1?"), (Program{4, 0, 8, 'a', 32, 0, 39, 0, 0, 1, 28}));
}

TEST_F(RegexCompileTest, GroupsAndBackReferences) {
  EXPECT_EQ(Compiled("\\(a\\)\\(b\\)"), (Program{4, 0, 8, 'a', 32, 0, 4, 1, 8, 'b', 32, 1, 28}));
  EXPECT_EQ(Compiled("\\(a\\)\\1*\\1+"), (Program{4, 0, 8, 'a', 32, 0, 37, 0, 38, 0, 28}));
  EXPECT_EQ(Raised("\\(a\\(b\\)\\)"), 42);
  EXPECT_EQ(Raised("\\)"), 42);
  EXPECT_EQ(Raised("\\1\\(a\\)"), 25);
  EXPECT_EQ(Raised("\\(a\\1\\)"), 25);
}

TEST_F(RegexCompileTest, AnOpenGroupFailsAfterTheEndOfTheProgram) {
  EXPECT_EQ(Raised("\\(a"), 42);
  EXPECT_EQ(std::vector<int>(RegexState.program, RegexState.program + 5),
            (Program{4, 0, 8, 'a', 28}));
}

TEST_F(RegexCompileTest, NineGroupsCompileAndTheTenthIsOneTooMany) {
  std::string groups;
  for (int i = 0; i < 9; ++i) groups += "\\(a\\)";
  EXPECT_EQ(Raised(groups), 0);
  EXPECT_EQ(Raised(groups + "\\("), 43);
}

TEST_F(RegexCompileTest, RangesAndTheirErrors) {
  EXPECT_EQ(Compiled("a\\{3\\}"), (Program{11, 'a', 3, 3, 28}));
  EXPECT_EQ(Compiled("a\\{3,\\}"), (Program{11, 'a', 3, 255, 28}));
  EXPECT_EQ(Compiled("a\\{1,255\\}"), (Program{11, 'a', 1, 255, 28}));
  EXPECT_EQ(Compiled("a\\{007,010\\}"), (Program{11, 'a', 7, 10, 28}));
  EXPECT_EQ(Raised("a\\{256\\}"), 11);
  EXPECT_EQ(Raised("a\\{99999999999999999999\\}"), 11);
  EXPECT_EQ(Raised("a\\{1,2,3\\}"), 44);
  EXPECT_EQ(Raised("a\\{1,,2\\}"), 16);
  EXPECT_EQ(Raised("a\\{,5\\}"), 16);
  EXPECT_EQ(Raised("a\\{x\\}"), 16);
  EXPECT_EQ(Raised("a\\{\\}"), 16);
  EXPECT_EQ(Raised("a\\{3,2\\}"), 46);
  EXPECT_EQ(Raised("a\\{2"), 16);
  EXPECT_EQ(Raised("a\\{2\\x"), 45);
  EXPECT_EQ(Raised("a\\{2\\"), 45);
}

TEST_F(RegexCompileTest, ASecondRangeIsPlainText) {
  EXPECT_EQ(Compiled("a\\{2\\}\\{3\\}"), (Program{11, 'a', 2, 2, 8, '{', 8, '3', 8, '}', 28}));
}

TEST_F(RegexCompileTest, Sets) {
  EXPECT_EQ(Compiled("[]a]"), Program{16} + Bits("]a") + Program{28});
  EXPECT_EQ(Compiled("[\\]]"), Program{16} + Bits("]") + Program{28});
  EXPECT_EQ(Compiled("[a-]"), Program{16} + Bits("a-") + Program{28});
  EXPECT_EQ(Compiled("[-a]"), Program{16} + Bits("a-") + Program{28});
  EXPECT_EQ(Compiled("[a-c-e]"), Program{16} + Bits("abcde") + Program{28});
  EXPECT_EQ(Compiled("[\\t\\-]"), Program{16} + Bits("\t-") + Program{28});
  EXPECT_EQ(Compiled("[c-a]"), Program{16} + Bits("ca") + Program{28}) << "only the end points";
  EXPECT_EQ(Compiled("[a-c]", true), Program{16} + Bits("abcABC") + Program{28});
}

TEST_F(RegexCompileTest, AnEscapedHyphenIsARangeAllTheSame) {
  EXPECT_EQ(Compiled("[a\\-e]"), Program{16} + Bits("abcde") + Program{28});
}

TEST_F(RegexCompileTest, TheEndOfARangeIsTakenAsItStands) {
  EXPECT_EQ(Compiled("[Y-\\]"), Program{16} + Bits("YZ[\\") + Program{28});
}

TEST_F(RegexCompileTest, ANegatedSetTakesNoZero) {
  EXPECT_EQ(Compiled("[^a]"), Program{40} + Bits(std::string("a\0", 2)) + Program{28});
  EXPECT_EQ(Compiled("[^]a]"), Program{40} + Bits(std::string("]a\0", 3)) + Program{28});
}

TEST_F(RegexCompileTest, ASetWithAByteFrom128OnIsWide) {
  EXPECT_EQ(Compiled("[a\xe9]"), Program{20} + Bits("a\xe9", kRegexWideSetBytes) + Program{28});
  Program inverted = Bits("a\xe9", kRegexWideSetBytes);
  for (int& byte : inverted) byte ^= 0xFF;
  inverted[0] &= 0xFE;
  EXPECT_EQ(Compiled("[^a\xe9]"), Program{20} + inverted + Program{28});
}

TEST_F(RegexCompileTest, ARangeThatEndsAt128OrAboveHoldsItsEndPointsAlone) {
  EXPECT_EQ(Compiled("[a-\xe9]"), Program{20} + Bits("a\xe9", kRegexWideSetBytes) + Program{28});
}

TEST_F(RegexCompileTest, ASetThatIsNotClosed) {
  EXPECT_EQ(Raised("[abc"), 49);
  EXPECT_EQ(Raised("["), 49);
  EXPECT_EQ(Raised("[^"), 49);
  EXPECT_EQ(Raised("[]"), 49);
  EXPECT_EQ(Raised("[a\\"), 49);
}

TEST_F(RegexCompileTest, ThePatternsEndIsNeverPassed) {
  EXPECT_EQ(Raised("a\\"), 49) << "a backslash before the end";
  EXPECT_EQ(Raised("[a-"), 49) << "the end behind a hyphen in a set";
}

TEST_F(RegexCompileTest, Escapes) {
  EXPECT_EQ(Compiled("\\a\\f\\n\\r\\t\\v"), (Program{8, 7, 8, 12, 8, 10, 8, 13, 8, 9, 8, 11, 28}));
  EXPECT_EQ(Compiled("\\*\\.\\[\\\\\\0\\}\\z"),
            (Program{8, '*', 8, '.', 8, '[', 8, '\\', 8, '0', 8, '}', 8, 'z', 28}));
  EXPECT_EQ(Compiled("\\z", true), Program{16} + Bits("zZ") + Program{28});
}

TEST_F(RegexCompileTest, ADollarEndsALineOnlyAtTheEndOfThePattern) {
  EXPECT_EQ(Compiled("a$b"), (Program{8, 'a', 8, '$', 8, 'b', 28}));
  EXPECT_EQ(Compiled("a$"), (Program{8, 'a', 24, 28}));
  EXPECT_EQ(Compiled("a^"), (Program{8, 'a', 8, '^', 28}));
}

TEST_F(RegexCompileTest, UnderWordSearchDollarEndsALineEverywhereAndCaretIsPlain) {
  RegexState.wordSearch = 1;
  EXPECT_EQ(Compiled("$foo"), (Program{24, 8, 'f', 8, 'o', 8, 'o', 28}));
  EXPECT_EQ(Compiled("^foo"), (Program{8, '^', 8, 'f', 8, 'o', 8, 'o', 28}));
  EXPECT_EQ(RegexState.anchored, 0);
}

TEST_F(RegexCompileTest, PlainTextHasNoSpecialCharacters) {
  EXPECT_EQ(Compiled("^a*\\(", false, true),
            (Program{8, '^', 8, 'a', 8, '*', 8, '\\', 8, '(', 28}));
  EXPECT_EQ(RegexState.anchored, 0);
  EXPECT_EQ(Compiled("a\xe9", true, true), Program{16} + Bits("aA") + (Program{8, 0xe9, 28}));
}

TEST_F(RegexCompileTest, AProgramThatDoesNotFit) {
  EXPECT_EQ(Raised(std::string(511, 'a')), 0);
  EXPECT_EQ(Raised(std::string(512, 'a')), 50) << "no room is left for the end";
  EXPECT_EQ(Raised(std::string(5000, 'a')), 50);
  EXPECT_EQ(RegexPrepare(std::string(512, 'a').c_str(), 0, 1, 0, 0), 0);
  EXPECT_EQ(RegexPrepare(std::string(60, 'a').c_str(), 1, 1, 0, 0), 1);
  EXPECT_EQ(RegexPrepare(std::string(61, 'a').c_str(), 1, 1, 0, 0), 0) << "sets of 17 bytes";
}

TEST_F(RegexCompileTest, RoomIsAskedForOncePerItem) {
  EXPECT_EQ(Raised(std::string(504, 'a') + "[b]"), 50);
  EXPECT_EQ(Raised(std::string(503, 'a') + "[b]"), 0);
  EXPECT_EQ(Raised(std::string(496, 'a') + "[\xe9]"), 50);
  EXPECT_EQ(Raised(std::string(495, 'a') + "[\xe9]"), 0);
  // The last item may write a little over the end; there is slack after it.
  EXPECT_EQ(Raised(std::string(511, 'a') + ".a"), 50);
}

TEST_F(RegexCompileTest, AnotherDelimiterEndsThePatternToo) {
  unsigned char buffer[kRegexProgramBytes + kRegexSlackBytes] = {};
  unsigned char* end = RegexCompile("a/b", buffer, buffer + kRegexProgramBytes, '/', 0, 0);
  EXPECT_EQ(Program(buffer, end), (Program{8, 'a', 28}));
  EXPECT_THROW(RegexCompile("ab", buffer, buffer + kRegexProgramBytes, '/', 0, 0), std::string);
  EXPECT_THROW(RegexCompile("ab", buffer, buffer + kRegexProgramBytes, '/', 1, 0), std::string);
}

}  // namespace

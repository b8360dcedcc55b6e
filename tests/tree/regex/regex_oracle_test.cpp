// The fast matcher against the slow, obvious one, on patterns and texts made at random.
#include "support/regex_oracle.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tree/regex/regex.h"

namespace {

class Random {
 public:
  explicit Random(unsigned seed) : m_engine(seed) {}
  std::size_t Below(std::size_t count) { return m_engine() % count; }
  template <std::size_t N>
  const char* OneOf(const char* const (&choices)[N]) {
    return choices[Below(N)];
  }

 private:
  std::mt19937 m_engine;
};

// Few different bytes, so that patterns match often.
std::string RandomText(Random& random) {
  static constexpr char kBytes[] = {'a', 'b', 'c',  'A',  'B',    'x',    '1',  '_',
                                    ' ', '.', '\n', '\r', '\xc3', '\xa9', '\0', '-'};
  std::string text;
  // Longer than a block of the scans now and then.
  for (std::size_t left = random.Below(random.Below(4) == 0 ? 80 : 12); left > 0; --left) {
    const std::size_t common = random.Below(3);
    text += kBytes[random.Below(common == 0 ? sizeof kBytes : 3)];
  }
  return text;
}

std::string RandomPattern(Random& random) {
  static constexpr const char* kItems[] = {
      "a",    "b",       "c",     "ab",         "abc",     "x",   "1",   ".",       "[ab]",
      "[^a]", "[a-c]",   "[^\n]", "[\xc3\xa9]", "[^\xc3]", "$",   "^",   "\\(a\\)", "\\(b*\\)",
      "\\1",  "\\2",     "\\(",   "\\)",        "_",       " ",   "\\n", "\\r",     "\\(.*\\)",
      "[]a]", "[a\\-c]", "\\.",   "\xc3",       "-",       "[^]", "A",   "[-1]",    "\\{"};
  static constexpr const char* kMarks[] = {
      "",          "",        "",         "*",          "+",          "?",         "*",
      "\\{1,2\\}", "\\{2\\}", "\\{0,\\}", "\\{4,36\\}", "\\{9,28\\}", "\\{1,9\\}", "\\{32,33\\}"};
  std::string pattern = random.Below(8) == 0 ? "^" : "";
  for (std::size_t left = 1 + random.Below(6); left > 0; --left) {
    pattern += random.OneOf(kItems);
    pattern += random.OneOf(kMarks);
  }
  return pattern;
}

std::string Printable(const std::string& bytes) {
  std::string shown;
  for (const char c : bytes)
    shown += c >= ' ' && c <= '~' ? std::string(1, c)
                                  : "<" + std::to_string(static_cast<unsigned char>(c)) + ">";
  return shown;
}

struct Tally {
  int hits = 0, misses = 0, gaveUp = 0;
};

// Both must give the same answer, and the same match.
void Compare(const std::string& text, const std::string& what, Tally& tally) {
  RegexOracle oracle(text);
  const auto wanted = oracle.SearchText();
  const int found = RegexMatchText(text);
  if (oracle.GaveUp()) {
    ++tally.gaveUp;
    return;
  }
  ++(wanted ? tally.hits : tally.misses);
  ASSERT_EQ(found, wanted ? 1 : 0) << what << " on " << Printable(text);
  const char* const begin = text.data();
  if (wanted) {
    EXPECT_EQ(RegexState.matchStart - begin, static_cast<std::ptrdiff_t>(wanted->start))
        << what << " on " << Printable(text);
    EXPECT_EQ(RegexState.matchEnd - begin, static_cast<std::ptrdiff_t>(wanted->end))
        << what << " on " << Printable(text);
  }
  // The prescribed operation that tries each place in turn.
  const char *from = nullptr, *to = nullptr;
  RegexOracle again(text);
  const auto first = again.Search(0);
  if (again.GaveUp()) return;
  ASSERT_EQ(RegexFindIn(begin, begin, begin + text.size(), &from, &to), first ? 1 : 0)
      << what << " on " << Printable(text);
  if (!first) return;
  EXPECT_EQ(from - begin, static_cast<std::ptrdiff_t>(first->start)) << what;
  EXPECT_EQ(to - begin, static_cast<std::ptrdiff_t>(first->end)) << what;
}

// In small parts the answer is the same.
void CompareInParts(const std::string& text, const std::string& what) {
  const int whole = RegexMatchText(text);
  RegexAnswer answer = RegexBeginText(text, 0);
  while (answer == RegexAnswer::Unfinished) {
    const std::string moved = text;  // the text may lie elsewhere the next time
    answer = RegexResumeText(moved, 0);
  }
  EXPECT_EQ(answer == RegexAnswer::Yes, whole == 1) << what << " on " << Printable(text);
}

void Play(unsigned seed, int rounds, Tally& tally) {
  Random random(seed);
  for (int round = 0; round < rounds && !testing::Test::HasFatalFailure(); ++round) {
    const std::string pattern = RandomPattern(random);
    const int ignoreCase = random.Below(3) == 0, literal = random.Below(10) == 0,
              word = random.Below(4) == 0;
    // One that is no pattern leaves its first part over the remains of the one before: that runs.
    RegexPrepare(pattern.c_str(), ignoreCase, literal, word, random.Below(20) == 0);
    const std::string what = "pattern " + Printable(pattern) +
                             (ignoreCase ? " ignoring case" : "") + (literal ? " literal" : "") +
                             (word ? " word" : "");
    for (int i = 0; i < 12 && !testing::Test::HasFatalFailure(); ++i) {
      const std::string text = RandomText(random);
      Compare(text, what, tally);
      if (i == 0) CompareInParts(text, what);
    }
  }
}

}  // namespace

TEST(RegexOracle, RandomPatternsOnRandomTextsGiveTheSameMatchesAsTheSlowMatcher) {
  Tally tally;
  Play(1, 20000, tally);
  EXPECT_GT(tally.hits, 20000);
  EXPECT_GT(tally.misses, 20000);
  EXPECT_LT(tally.gaveUp, 200);
}

TEST(RegexOracle, AnyBytesAsAProgramGiveTheSameMatchesAsTheSlowMatcher) {
  static constexpr unsigned char kOften[] = {
      RX_CHAR,         RX_CHAR_STAR,   RX_ANY_PLUS, RX_SET,
      RX_GROUP_OPEN,   RX_GROUP_CLOSE, RX_BACKREF,  RX_BACKREF_PLUS,
      RX_NEG_SET_STAR, RX_END,         0,           1};
  Random random(7);
  Tally tally;
  for (int round = 0; round < 3000 && !HasFatalFailure(); ++round) {
    RegexPrepare("", 0, 0, random.Below(3) == 0, 0);
    const std::size_t bytes = random.Below(60);
    for (std::size_t i = 0; i < bytes; ++i)
      RegexState.program[i] = random.Below(2) == 0 ? kOften[random.Below(sizeof kOften)]
                                                   : static_cast<unsigned char>(random.Below(48));
    RegexState.program[bytes] = RX_END;
    const std::string text = RandomText(random);
    RegexOracle oracle(text);
    const auto wanted = oracle.Search(0);
    if (oracle.GaveUp()) continue;
    const char *begin = text.data(), *from = nullptr, *to = nullptr;
    ASSERT_EQ(RegexFindIn(begin, begin, begin + text.size(), &from, &to), wanted ? 1 : 0) << round;
    ++(wanted ? tally.hits : tally.misses);
    if (!wanted) continue;
    EXPECT_EQ(from - begin, static_cast<std::ptrdiff_t>(wanted->start)) << round;
    EXPECT_EQ(to - begin, static_cast<std::ptrdiff_t>(wanted->end)) << round;
  }
  EXPECT_GT(tally.hits, 300);
  EXPECT_GT(tally.misses, 300);
}

#include "import/lines/regex_lines.h"

#include <gtest/gtest.h>

#include "shown_import.h"

namespace {

class ImportRegex : public testing::Test {
 protected:
  std::string Read(const std::string& expression, std::string_view line) {
    std::string why;
    m_lines = RegexLines::Make(expression, m_fields, &why);
    return m_lines ? ReadOf(*m_lines, line) : why;
  }

  ImportClock m_clock{{.zone = ImportZone(0), .format = {}}};
  ImportFields m_fields{{}, m_clock};
  std::unique_ptr<RegexLines> m_lines;
};

constexpr const char* kUsual =
    R"(^(?<time>\S+ \S+) \[(?<tid>[^\]]*)\] (?<level>\w+) +(?<logger>\S+) - (?<text>.*)$)";

TEST_F(ImportRegex, ItsNamedGroupsAreTheFields) {
  EXPECT_EQ(Read(kUsual, "2026-11-21 09:41:07,123 [main] WARN  com.acme.Shop - low stock"),
            "2026-11-21 09:41:07.123 [Warn] component=com category=acme.Shop tid=main 'low stock'");
  EXPECT_EQ(Read("(?P<location>[^ ]+) (?<text>.*)", "a/b.cpp:42 x"),
            "no time [Info] file=a/b.cpp line=42 'x'");
  EXPECT_EQ(Read("(?<machine>.),(?<application>.),(?<pid>.),(?<file>.),(?<line>.),(?<stack>.)",
                 "m,a,p,f,5,s"),
            "no time [Info] machine=m app=a pid=p file=f line=5 'm,a,p,f,5,s' stack 's'");
}

TEST_F(ImportRegex, WithoutAGroupForTheTextItIsTheWholeLine) {
  EXPECT_EQ(Read(R"((?<level>ERROR|INFO))", "x ERROR y"), "no time [Error] 'x ERROR y'");
}

TEST_F(ImportRegex, AGroupThatTookNoPartIsMissing) {
  EXPECT_EQ(Read("^(?:pid (?<pid>[0-9]+) )?(?<text>.*)", "hello"), "no time [Info] 'hello'");
}

TEST_F(ImportRegex, AValueThatItsFieldCannotHaveStandsBehindTheText) {
  EXPECT_EQ(Read("^(?<level>\\w+) (?<line>\\w+) (?<text>.*)", "BANANA x9 t"),
            "no time [Info] 't level=BANANA line=x9'");
  EXPECT_EQ(m_fields.StrangeLevels(), 1u);
}

TEST_F(ImportRegex, ALineThatDoesNotMatchOrHasNoGoodTimeIsNotUnderstood) {
  EXPECT_EQ(Read(kUsual, "java.lang.Exception"), "not understood");
  EXPECT_EQ(Read(kUsual, "soon or [main] WARN a - b"), "not understood");
}

TEST_F(ImportRegex, BytesThatAreNotUtf8AndNulBytesMatchAsTheyAre) {
  EXPECT_EQ(Read("^(?<level>\\w+) (?<text>.*)$", std::string_view("INFO a\xFF\0b", 9)),
            std::string("no time [Info] 'a\xFF\0b'", 21));
}

TEST_F(ImportRegex, AnExpressionThatTriesAllWaysIsGivenUp) {
  const std::string line(60, 'a');
  EXPECT_EQ(Read("^(?<text>(a|aa)+)$", line + "b"), "not understood");
  EXPECT_EQ(m_lines->Notes(),
            std::vector<std::string>{"of these the search in 1 line was given up: the expression "
                                     "takes too many steps or too much memory"});
}

TEST_F(ImportRegex, ALongLineMatchesAsAShortOneDoes) {
  for (const std::size_t words : {10, 1'000, 100'000}) {
    std::string text;
    for (std::size_t word = 0; word < words; ++word) text += "ab ";
    EXPECT_EQ(Read(R"(^(?<level>\w+) (?<text>(?:.|\s)*)$)", "WARN " + text),
              "no time [Warn] '" + text + "'");
    EXPECT_TRUE(m_lines->Notes().empty());
  }
}

TEST_F(ImportRegex, InAnExpressionOfCharactersMalformedBytesMatchAsTheyAre) {
  EXPECT_EQ(Read("(*UTF)^(?<level>\\w+) (?<text>.)", "INFO \xC3\xA9."),
            "no time [Info] '\xC3\xA9'");
  EXPECT_EQ(Read("(*UTF)^(?<level>\\w+) (?<text>.*)", "INFO a.\xFF"), "no time [Info] 'a.'");
}

TEST_F(ImportRegex, AWrongExpressionIsRefusedWithItsPlace) {
  EXPECT_EQ(Read("(?<time>x", ""),
            "wrong expression: missing closing parenthesis (at character 10)");
  EXPECT_EQ(Read("(?<lvl>x)", ""), "\"lvl\" is no field");
  EXPECT_EQ(Read("(?<tme>x)", ""), "\"tme\" is no field; did you mean \"time\"?");
  EXPECT_EQ(Read("x", ""),
            "the expression has no named group, such as (?<time>...) or (?<text>...)");
}

}  // namespace

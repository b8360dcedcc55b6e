// JSON in texts on lines of its own.
#include "base/json/pretty_json.h"

#include <gtest/gtest.h>

#include <random>

namespace {

std::string Pretty(std::string_view text) {
  const std::optional<PrettyJson> pretty = PrettyJsonOf(text);
  return pretty ? pretty->text : "none";
}

bool IsSpace(std::string_view text, std::size_t begin, std::size_t end) {
  return text.substr(begin, end - begin).find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

TEST(PrettyJson, EachMemberHasALineAndEachLevelTwoSpaces) {
  EXPECT_EQ(Pretty(R"({"a":1,"b":[true,null,{"c":"x y"}],"d":{},"e":[ ]})"),
            "{\n  \"a\": 1,\n  \"b\": [\n    true,\n    null,\n    {\n      \"c\": \"x y\"\n    }\n"
            "  ],\n  \"d\": {},\n  \"e\": []\n}");
}

TEST(PrettyJson, WhatIsPrettyAlreadyStaysSo) {
  const std::string once = Pretty(R"({"a":[1,2],"b":{"c":[]}})");
  EXPECT_EQ(Pretty(once), once);
}

TEST(PrettyJson, WhatStandsAroundItStaysOnLinesOfItsOwn) {
  EXPECT_EQ(Pretty(R"(answer: {"a":1} in 3 ms)"), "answer: \n{\n  \"a\": 1\n}\n in 3 ms");
  EXPECT_EQ(Pretty("\n {\"a\":1}\n"), "{\n  \"a\": 1\n}");
  EXPECT_EQ(Pretty("{\"a\":1}\n{\"b\":2}"), "{\n  \"a\": 1\n}\n{\n  \"b\": 2\n}");
}

TEST(PrettyJson, NumbersDoubledNamesAndEscapesStandAsTheyDo) {
  const char* const text =
      R"({"a":1e999,"a":-0.10E+007,"n":123456789012345678901234567890,"s":"\u00e4\"\\/"})";
  EXPECT_EQ(Pretty(text),
            "{\n  \"a\": 1e999,\n  \"a\": -0.10E+007,\n  \"n\": 123456789012345678901234567890,\n"
            "  \"s\": \"\\u00e4\\\"\\\\/\"\n}");
}

TEST(PrettyJson, BytesThatAreNoUtf8AndWrittenRightToLeftAreKept) {
  EXPECT_EQ(Pretty("{\"\xFF\x80\":\"\xD7\xA9\xD7\x9C \xE2\x80\xAE\"}"),
            "{\n  \"\xFF\x80\": \"\xD7\xA9\xD7\x9C \xE2\x80\xAE\"\n}");
}

TEST(PrettyJson, WhatIsNotWellFormedStaysAsItIs) {
  for (const char* const text : {"",
                                 "plain",
                                 "{",
                                 "{}",
                                 "[]",
                                 "{\"a\":1",
                                 "{\"a\":1,}",
                                 "{\"a\" 1}",
                                 "{a:1}",
                                 "[1,]",
                                 "{\"a\":01}",
                                 "{\"a\":1.}",
                                 "{\"a\":+1}",
                                 "{\"a\":.5}",
                                 "{\"a\":NaN}",
                                 "{\"a\":\"\x01\"}",
                                 "{\"a\":\"\\x\"}",
                                 "{\"a\":\"\\u12g4\"}",
                                 "{\"a\":1]",
                                 "[\"a\"}",
                                 "{\"a\":1e}",
                                 "{1:2}",
                                 "{\"a\",1}",
                                 "[1,,2]",
                                 "{\"a\":,}",
                                 "[,\"a\"]",
                                 "{\"a\":\"b}",
                                 "[true false]",
                                 "[tru]",
                                 "{,}",
                                 "[\"a\":1]"})
    EXPECT_EQ(Pretty(text), "none") << text;
}

TEST(PrettyJson, TagsInBracketsAreNoJsonUnlessTheyAreAllThereIs) {
  EXPECT_EQ(Pretty("[4711] started"), "none");
  EXPECT_EQ(Pretty("[12:30:01] [main] {\"a\":1}"), "[12:30:01] [main] \n{\n  \"a\": 1\n}");
  EXPECT_EQ(Pretty("[1,2]"), "[\n  1,\n  2\n]");
  EXPECT_EQ(Pretty("items [\"x\"]"), "items \n[\n  \"x\"\n]");
}

TEST(PrettyJson, OneThatIsTooDeepStaysAsItIs) {
  const auto nested = [](int depth) {
    const auto levels = static_cast<std::size_t>(depth);
    return std::string(levels, '[') + "\"x\"" + std::string(levels, ']');
  };
  EXPECT_NE(Pretty(nested(PrettyJson::kDeepest)), "none");
  EXPECT_EQ(Pretty("{\"a\":" + nested(PrettyJson::kDeepest) + "}"), "none");
  EXPECT_EQ(Pretty(nested(30'000)), "none");
}

TEST(PrettyJson, OneThatWouldBeTooLargeStaysAsItIs) {
  std::string text(60, '[');
  for (int i = 0; i < 40'000; ++i) text += "\"\",";
  text += "1" + std::string(60, ']');
  EXPECT_EQ(Pretty(text), "none");
}

TEST(PrettyJson, RandomDocumentsLoseNothingAndTellWhereEachByteStands) {
  std::mt19937 random(7);
  const char* const parts[] = {"{",     "}",       "[", "]",      ",",    ":",
                               "\"a\"", "\"b c\"", "1", "-2.5e3", "true", "null",
                               " ",     "\n",      "x", "\"",     "\\",   "\xFF"};
  int pretty = 0;
  for (int round = 0; round < 200'000; ++round) {
    std::string text = round % 2 ? "{\"k\":[" : "";
    for (unsigned count = random() % 12; count > 0; --count) text += parts[random() % 18];
    if (round % 2) text += "]}";
    const std::optional<PrettyJson> made = PrettyJsonOf(text);
    if (!made) continue;
    ++pretty;
    std::size_t from = 0, to = 0;
    for (const MovedBytes& moved : made->moved) {
      ASSERT_TRUE(IsSpace(text, from, moved.from)) << text;
      ASSERT_TRUE(IsSpace(made->text, to, moved.to)) << text;
      ASSERT_EQ(made->text.substr(moved.to, moved.length), text.substr(moved.from, moved.length));
      ASSERT_EQ(made->PlaceOf(moved.from), moved.to);
      ASSERT_EQ(made->EndOf(moved.from + moved.length), moved.to + moved.length);
      from = moved.from + moved.length;
      to = moved.to + moved.length;
    }
    ASSERT_TRUE(IsSpace(text, from, text.size())) << text;
    ASSERT_EQ(to, made->text.size()) << text;
  }
  EXPECT_GT(pretty, 5'000);
}

TEST(PrettyJson, ARangeOfTheTextIsFoundAgain) {
  const std::string text = R"({"a":1,"name":"two words"})";
  const PrettyJson pretty = PrettyJsonOf(text).value();
  const auto found = [&](const std::string& what) {
    const std::size_t at = text.find(what);
    const std::size_t from = pretty.PlaceOf(at), to = pretty.EndOf(at + what.size());
    return pretty.text.substr(from, to - from);
  };
  EXPECT_EQ(found("two words"), "two words");
  EXPECT_EQ(found("o w"), "o w");
  EXPECT_EQ(found("1,\"na"), "1,\n  \"na") << "it goes on with the next line";
  EXPECT_EQ(found("{"), "{");
  EXPECT_EQ(found("}"), "}");
}

#include "import/json/json_pull.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

// A file in memory with these bytes.
class Bytes {
 public:
  explicit Bytes(const std::string& bytes) : m_descriptor(memfd_create("json", MFD_CLOEXEC)) {
    for (std::size_t at = 0; at < bytes.size();) {
      const auto written = write(m_descriptor, bytes.data() + at, bytes.size() - at);
      if (written <= 0) break;
      at += static_cast<std::size_t>(written);
    }
    lseek(m_descriptor, 0, SEEK_SET);
  }
  ~Bytes() { close(m_descriptor); }
  int Descriptor() const { return m_descriptor; }

 private:
  int m_descriptor;
};

// "{a:1 [ s'x' ] }" for {"a":1,[...]}; what is bad ends it with its reason.
std::string PartsOf(const std::string& bytes) {
  const Bytes file(bytes);
  LineReader reader(file.Descriptor(), [] { return true; });
  JsonPull pull(reader);
  std::string shown;
  for (;;) {
    const JsonPart part = pull.Next();
    if (part == JsonPart::End) return shown;
    if (part == JsonPart::Bad) return shown + "bad: " + pull.Why() + (pull.IsCut() ? " (cut)" : "");
    constexpr std::string_view kSigns[] = {"{ ", "} ", "[ ", "] "};
    const std::string text(pull.Text());
    if (part == JsonPart::Key) shown += text + ":";
    if (part == JsonPart::String) shown += "'" + text + "' ";
    if (part == JsonPart::Number) shown += text + " ";
    if (part == JsonPart::True) shown += "true ";
    if (part == JsonPart::False) shown += "false ";
    if (part == JsonPart::Null) shown += "null ";
    if (part < JsonPart::Key) shown += kSigns[static_cast<int>(part)];
  }
}

}  // namespace

TEST(JsonPull, GivesThePartsOfValuesThatFollowEachOther) {
  EXPECT_EQ(PartsOf(R"({"a":1,"b":["x",true,false,null,-2.5e3]}
[] {} "s" 7)"),
            "{ a:1 b:[ 'x' true false null -2.5e3 ] } [ ] { } 's' 7 ");
  EXPECT_EQ(PartsOf(" \n"), "");
}

TEST(JsonPull, ReadsEscapesAndHalvesOfPairs) {
  EXPECT_EQ(PartsOf(R"("\"\\\/\b\f\n\r\t\u00e4\u20AC\uD83D\uDE00")"),
            "'\"\\/\b\f\n\r\t\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80' ");
  EXPECT_EQ(PartsOf(R"("\uD800x\uD800\n\uDC00\uD800\uD83D\uDE00")"),
            "'\xEF\xBF\xBDx\xEF\xBF\xBD\n\xEF\xBF\xBD\xEF\xBF\xBD\xF0\x9F\x98\x80' ");
}

TEST(JsonPull, ReadsWhatIsNearlyRight) {
  EXPECT_EQ(PartsOf("[1,]"), "[ 1 ] ");
  EXPECT_EQ(PartsOf("{\"a\":NaN,\"b\":-Infinity,}"), "{ a:NaN b:-Infinity } ");
  EXPECT_EQ(PartsOf("\"a\tb\xFF\""), "'a\tb\xFF' ");
}

TEST(JsonPull, TellsTheLineAndTheByteOfWhatIsWrong) {
  EXPECT_EQ(PartsOf("{\n\"a\" 1}"), "{ bad: line 2, byte 6: a colon is missing");
  EXPECT_EQ(PartsOf("[1 2]"), "[ 1 bad: line 1, byte 3: a comma or a closing bracket is missing");
  EXPECT_EQ(PartsOf("[}"), "[ bad: line 1, byte 1: a closing bracket that fits none");
  EXPECT_EQ(PartsOf("[\"a\nb\"]"), "[ bad: line 1, byte 3: a line ends within a text");
  EXPECT_EQ(PartsOf("[x]"), "[ bad: line 1, byte 1: no value begins so");
  EXPECT_EQ(PartsOf("{1:2}"), "{ bad: line 1, byte 1: a name in quotes is missing");
}

TEST(JsonPull, RefusesWhatIsNestedTooDeep) {
  const std::string deep = PartsOf(std::string(1'000'000, '['));
  EXPECT_NE(deep.find("byte 100: nested deeper than 100 brackets"), deep.npos);
}

TEST(JsonPull, TellsThatAValueIsCutAtAnyByte) {
  const std::string whole = R"({"a":["x\u00e4\n",-12.5,true,null],"b":{"c":false}})";
  const std::string parts = PartsOf(whole);
  for (std::size_t length = 1; length < whole.size(); ++length) {
    const std::string cut = PartsOf(whole.substr(0, length));
    const std::size_t bad = cut.find("bad: ");
    ASSERT_NE(bad, cut.npos) << length;
    EXPECT_TRUE(cut.ends_with("byte " + std::to_string(length) +
                              ": the input ends here, within a value (cut)"))
        << cut;
    EXPECT_TRUE(parts.starts_with(cut.substr(0, bad))) << cut;
  }
}

TEST(JsonPull, GivesTextsWholeThatLieAcrossTheBlocksOfReading) {
  for (const std::size_t before : {262'130u, 262'140u, 262'143u, 262'144u, 524'280u}) {
    const std::string space(before, ' ');
    EXPECT_EQ(PartsOf(space + R"({"long key":"a\u20ACb\uD83D\uDE00c","n":123456789012})"),
              "{ long key:'a\xE2\x82\xAC"
              "b\xF0\x9F\x98\x80"
              "c' n:123456789012 } ");
  }
  const std::string text(1'000'000, 'x');
  EXPECT_EQ(PartsOf("\"" + text + "\""), "'" + text + "' ");
}

TEST(JsonPull, RefusesATextThatIsTooLong) {
  const std::string bad = PartsOf("\"" + std::string(JsonPull::kTextBytesMax + 1, 'x') + "\"");
  EXPECT_NE(bad.find("a text of more than 16 MiB"), bad.npos);
}

TEST(JsonPull, SkipsAValueAndGoesOnAtTheNextLineAfterAMistake) {
  const Bytes file("{\"a\":{\"b\":[1,{}]},\"c\":1}\n{\"bad\n{\"d\":2}\n");
  LineReader reader(file.Descriptor(), [] { return true; });
  JsonPull pull(reader);
  EXPECT_EQ(pull.Next(), JsonPart::BeginObject);
  EXPECT_EQ(pull.Next(), JsonPart::Key);
  EXPECT_TRUE(pull.Skip(pull.Next()));
  EXPECT_EQ(pull.Next(), JsonPart::Key);
  EXPECT_EQ(pull.Text(), "c");
  EXPECT_EQ(pull.Next(), JsonPart::Number);
  EXPECT_EQ(pull.Next(), JsonPart::EndObject);
  EXPECT_EQ(pull.Next(), JsonPart::BeginObject);
  EXPECT_EQ(pull.Next(), JsonPart::Bad);
  EXPECT_TRUE(pull.NextLine());
  EXPECT_EQ(pull.Next(), JsonPart::BeginObject);
  EXPECT_EQ(pull.Next(), JsonPart::Key);
}

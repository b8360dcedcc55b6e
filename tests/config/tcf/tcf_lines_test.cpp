#include "config/tcf/tcf_lines.h"

#include <gmock/gmock.h>

#include <sstream>

namespace {

// What the five functions say about a text, a line each; the last line is "end" or "bad: WHY".
std::string Parsed(const std::string& text) {
  std::istringstream in(text);
  std::string parsed, name, options, why;
  int type = -1;
  while (_trc_GetCfgLineType(in, &type, &why)) {
    unsigned char sink = 99;
    unsigned short settings = 0;
    const bool good = type == CfgLineApp ? _trc_GetCfgLineAppName(in, &name, &why)
                      : type == CfgLineSink
                          ? _trc_GetCfgLineSink(in, &sink, &name, &options, &why)
                          : _trc_GetCfgLineTrace(in, &name, &options, &settings, &why);
    if (!good) return parsed + "bad: " + why;
    parsed += type == CfgLineApp    ? "app [" + name
              : type == CfgLineSink ? "sink " + std::to_string(sink) + " [" + name + "|" + options
                                    : "trace [" + name + "|" + options;
    parsed += "]" + (type == CfgLineTrace ? " " + std::to_string(settings) : "") + "\n";
  }
  return parsed + (in.eof() ? "end" : "bad: " + why);
}

constexpr char kNoKeyword[] = "bad: the line begins with none of APP:, SINK: and TRACE:";
constexpr char kBadApp[] = "bad: APP: takes one name in quotes";
constexpr char kBadSink[] = "bad: SINK: takes File or Socket, then a name and options in quotes";
constexpr char kBadTrace[] = "bad: TRACE: takes a component and a category in quotes";

std::string Version(const std::string& text) {
  std::istringstream in(text);
  std::string version;
  return _trc_GetCfgLineVersion(in, &version) ? "[" + version + "]" : "none";
}

TEST(TcfLines, TheFirstLineIsGivenAsItIsWithoutItsEndBlanksThereAndAByteOrderMark) {
  EXPECT_EQ(Version("TCF Version 3.2\nAPP: \"a\"\n"), "[TCF Version 3.2]");
  EXPECT_EQ(Version("TCF Version 3.2"), "[TCF Version 3.2]");
  EXPECT_EQ(Version("TCF Version 3.2\r\n"), "[TCF Version 3.2]");
  EXPECT_EQ(Version("TCF Version 3.2 \t\n"), "[TCF Version 3.2]") << "blanks may end any line";
  EXPECT_EQ(Version(" TCF Version 3.2\n"), "[ TCF Version 3.2]");
  EXPECT_EQ(Version("TCF Version 3.2 x\n"), "[TCF Version 3.2 x]");
  EXPECT_EQ(Version("\xEF\xBB\xBFTCF Version 3.2\n"), "[TCF Version 3.2]");
  EXPECT_EQ(Version("tcf version 3.2\n"), "[tcf version 3.2]");
  EXPECT_EQ(Version("\nTCF Version 3.2\n"), "[]") << "no line in front of it is passed over";
  EXPECT_EQ(Version(""), "none");
}

TEST(TcfLines, EachKindOfLineIsRead) {
  EXPECT_EQ(Parsed("APP: \"orders\"\n"
                   "SINK: File \"c:\\\\logs\\\\orders.trc\" \"flush=1;maxfiles=10;maxsize=5;\"\n"
                   "TRACE: \"Net\" \"Connect\" Info Warn Error Developer\n"
                   "APP: \"billing\"\n"
                   "SINK: Socket \"localhost\" \"\"\n"),
            "app [orders]\n"
            "sink 0 [c:\\logs\\orders.trc|flush=1;maxfiles=10;maxsize=5;]\n"
            "trace [Net|Connect] 15\n"
            "app [billing]\n"
            "sink 1 [localhost|]\n"
            "end");
}

TEST(TcfLines, ALastLineWithoutALineEndIsReadLikeAnyOther) {
  EXPECT_EQ(Parsed("APP: \"a\""), "app [a]\nend");
  EXPECT_EQ(Parsed("SINK: File \"a\" \"b\""), "sink 0 [a|b]\nend");
  EXPECT_EQ(Parsed("TRACE: \"a\" \"b\" Stack"), "trace [a|b] 512\nend");
  EXPECT_EQ(Parsed("APP: \"a\"\n  "), "app [a]\nend");
}

TEST(TcfLines, ABadLastLineWithoutALineEndIsBadAndNoEnd) {
  for (const char* const cut : {"A", "APP", "APP:", "TRACE", "SINK:", "x"}) {
    std::istringstream in(cut);
    int type = 0;
    EXPECT_FALSE(_trc_GetCfgLineType(in, &type)) << cut;
    EXPECT_FALSE(in.eof()) << cut;
  }
  EXPECT_EQ(Parsed("APP: "), kBadApp);
  EXPECT_EQ(Parsed("APP: \"a"), kBadApp);
}

TEST(TcfLines, TheEndOfTheFileIsReportedByItsState) {
  for (const char* const text : {"", "\n", "  \n\t\n", "\r\n", "   "}) {
    std::istringstream in(text);
    int type = 0;
    EXPECT_FALSE(_trc_GetCfgLineType(in, &type));
    EXPECT_TRUE(in.eof()) << text;
  }
}

TEST(TcfLines, BlankLinesAndLineEndsOfOtherSystemsAreReadOver) {
  EXPECT_EQ(Parsed("\n  \nAPP: \"a\"\r\n\r\n\t\r\nTRACE: \"b\" \"c\" Info\r\n"),
            "app [a]\ntrace [b|c] 1\nend");
}

TEST(TcfLines, FieldsStandAnyNumberOfBlanksApart) {
  EXPECT_EQ(Parsed("APP: \t \"a\" \t \r\n"
                   "SINK:\tFile \t\"b\"\t \"c\" \n"
                   "TRACE:   \"d\"  \"e\"   Info \t Warn  \n"),
            "app [a]\nsink 0 [b|c]\ntrace [d|e] 3\nend");
}

TEST(TcfLines, FlagWordsComeInAnyOrderAndRepeatsAreHarmless) {
  EXPECT_EQ(Parsed("TRACE: \"a\" \"b\" Stack Location Verbose Developer Error Warn Info Info\n"),
            "trace [a|b] 799\nend");
  EXPECT_EQ(Parsed("TRACE: \"a\" \"b\"\n"), "trace [a|b] 0\nend");
}

TEST(TcfLines, UnknownWordsAreBad) {
  EXPECT_EQ(Parsed("TRACE: \"a\" \"b\" info\n"), "bad: \"info\" is no setting");
  EXPECT_EQ(Parsed("TRACE: \"a\" \"b\" Info,Warn\n"), "bad: \"Info,Warn\" is no setting");
  EXPECT_EQ(Parsed("SINK: Pipe \"a\" \"b\"\n"), kBadSink);
  EXPECT_EQ(Parsed("SINK: file \"a\" \"b\"\n"), kBadSink);
  EXPECT_EQ(Parsed("app: \"a\"\n"), kNoKeyword);
  EXPECT_EQ(Parsed("APPS: \"a\"\n"), kNoKeyword);
  EXPECT_EQ(Parsed("APP:\"a\"\n"), kNoKeyword);
  EXPECT_EQ(Parsed("APP\n"), kNoKeyword);
  EXPECT_EQ(Parsed(" APP: \"a\"\n"), "bad: a blank stands in front of the keyword");
}

TEST(TcfLines, MissingAndSurplusFieldsAreBad) {
  EXPECT_EQ(Parsed("APP: orders\n"), kBadApp);
  EXPECT_EQ(Parsed("APP: \"\n"), kBadApp);
  EXPECT_EQ(Parsed("APP: \"a\" Info\n"), kBadApp);
  EXPECT_EQ(Parsed("SINK: File\n"), kBadSink);
  EXPECT_EQ(Parsed("SINK: File \"a\"\n"), kBadSink);
  EXPECT_EQ(Parsed("SINK: File \"a\" \"\n"), kBadSink);
  EXPECT_EQ(Parsed("SINK: File \"a\" \"b\" c\n"), kBadSink);
  EXPECT_EQ(Parsed("SINK: \"a\" \"b\"\n"), kBadSink);
  EXPECT_EQ(Parsed("TRACE: \"a\"\n"), kBadTrace);
  EXPECT_EQ(Parsed("TRACE: \"a\" b\n"), kBadTrace);
  EXPECT_EQ(Parsed("TRACE: \"a\" \"b\"Info\n"), "bad: no blank after the category");
}

TEST(TcfLines, AQuoteInsideAFieldStandsAsItIs) {
  EXPECT_EQ(Parsed("APP: \"a\"b\"\n"), "app [a\"b]\nend");
  EXPECT_EQ(Parsed("APP: \"\"\"\n"), "app [\"]\nend");
  EXPECT_EQ(Parsed("SINK: File \"a\"b\"c\" \"d\"e\"\n"), "sink 0 [a\"b\"c|d\"e]\nend");
  EXPECT_EQ(Parsed("TRACE: \"a\"\" \"\"b\" Warn\n"), "trace [a\"|\"b] 2\nend");
  // The one form that cannot be told from two fields.
  EXPECT_EQ(Parsed("TRACE: \"a\" \"b\" \"c\" Warn\n"), "trace [a|b\" \"c] 2\nend");
}

TEST(TcfLines, ADoubledBackslashIsOneAndALoneOneStays) {
  EXPECT_EQ(Parsed(R"(APP: "a\\b\c\\\d\\")"
                   "\n"),
            R"(app [a\b\c\\d\])"
            "\nend");
  EXPECT_EQ(Parsed("APP: \"\\\"\n"), "app [\\]\nend")
      << "a backslash before the quote is no escape";
}

TEST(TcfLines, EmptyFieldsAreTwoQuotes) {
  EXPECT_EQ(Parsed("APP: \"\"\nSINK: File \"\" \"\"\nTRACE: \"\" \"\" Error\n"),
            "app []\nsink 0 [|]\ntrace [|] 4\nend");
}

TEST(TcfLines, BytesAreNotConverted) {
  const std::string name("\0\xFF\xC3\x28\x80", 5);
  EXPECT_EQ(Parsed("APP: \"" + name + "\"\n"), "app [" + name + "]\nend");
  EXPECT_EQ(Parsed(std::string("\0APP: \"a\"\n", 10)), kNoKeyword);
}

TEST(TcfLines, EveryLineCutAtEveryByteIsReadOrBadAndNeverTheEnd) {
  const std::string lines[] = {"APP: \"or\\\\ders\"", "SINK: Socket \"web\" \"node=x;\"",
                               "TRACE: \"Net\" \"Connect\" Info Location"};
  for (const std::string& line : lines) {
    for (std::size_t length = 1; length < line.size(); ++length) {
      const std::string parsed = Parsed("APP: \"a\"\n" + line.substr(0, length));
      const bool read =
          parsed.find("\nend") != parsed.npos && parsed.find('\n') + 4 < parsed.size();
      EXPECT_NE(read, parsed.find("bad: ") != parsed.npos)
          << line.substr(0, length) << ": " << parsed;
    }
  }
}

TEST(TcfLines, AQuotePutAnywhereIsReadAsPartOfAFieldOrBad) {
  const std::string line = "TRACE: \"Net\" \"Connect\" Info";
  int read = 0, bad = 0;
  for (std::size_t at = 0; at <= line.size(); ++at) {
    std::string quoted = line;
    std::string parsed = Parsed(quoted.insert(at, 1, '"'));
    if (parsed.starts_with("bad: ") && ++bad) continue;
    std::erase_if(parsed, [](char byte) { return byte == '"' || byte == ' '; });
    // After the last word it makes the words a part of the category.
    EXPECT_THAT(parsed, testing::AnyOf("trace[Net|Connect]1\nend", "trace[Net|ConnectInfo]0\nend"))
        << quoted;
    ++read;
  }
  EXPECT_GT(read, 10);
  EXPECT_GT(bad, 10);
}

TEST(TcfLines, ALineOfAMegabyteIsReadAndALongerOneIsBad) {
  const std::string name(kLongestTcfLineBytes - 100, 'x');
  EXPECT_EQ(Parsed("APP: \"" + name + "\"\nAPP: \"b\"\n"), "app [" + name + "]\napp [b]\nend");
  for (const char filler : {'x', '"', ' ', '\\', '\0'})
    EXPECT_EQ(Parsed("APP: " + std::string(kLongestTcfLineBytes + 5000, filler)),
              "bad: the line is too long");
}

// Such a piece fills the buffer of one read to its last byte.
TEST(TcfLines, LinesAroundTheSizeOfAPieceAreReadWhole) {
  for (std::size_t length = 1010; length < 1034; ++length) {
    const std::string name(length, 'n');
    EXPECT_EQ(Parsed("APP: \"" + name + "\"\nAPP: \"b\""), "app [" + name + "]\napp [b]\nend");
    EXPECT_EQ(Parsed("APP: \"" + name + "\""), "app [" + name + "]\nend");
  }
}

}  // namespace

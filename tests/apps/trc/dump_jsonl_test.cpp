#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

const TraceFields kFullTrace = {.text = "up and running",
                                .stack = "Start (a.cpp:1)\nmain",
                                .count = 4294967294u,
                                .machine = 1,
                                .app = 2,
                                .component = 3,
                                .category = 4,
                                .date = PackDate(2026, 3, 9),
                                .time = PackTime(23, 59, 58, 7),
                                .tic = 0xFF00000000000001u,
                                .pid = 5,
                                .tid = 6,
                                .attributes = 0xFFFF,
                                .file = 7,
                                .line = 4000000000u};

TrcImage NamedImage() {
  TrcImage image;
  image.Name(1, "web").Name(2, "shop").Name(3, "Http").Name(4, "Request");
  image.Name(5, "4312").Name(6, "4313").Name(7, "a.cpp");
  return image;
}

// The one trace of an image.
json OnlyTrace(const TrcImage& image) {
  const TempDir directory;
  const auto traces = DumpedTraces(image.WriteTo(directory.File("one.trc")));
  EXPECT_EQ(traces.size(), 1u);
  return traces.empty() ? json() : traces[0];
}

json TextOf(const std::string& text) {
  return OnlyTrace(TrcImage().Trace(text)).at("text");
}

TEST(TrcDumpJsonl, EveryFieldIsAsTheFileHasIt) {
  EXPECT_EQ(OnlyTrace(NamedImage().Trace(kFullTrace)),
            json({{"i", 0},
                  {"count", 4294967294u},
                  {"time", "2026-03-09T23:59:58.007000Z"},
                  {"tic", 0xFF00000000000001u},
                  {"machine", "web"},
                  {"application", "shop"},
                  {"component", "Http"},
                  {"category", "Request"},
                  {"pid", "4312"},
                  {"tid", "4313"},
                  {"attributes", 65535},
                  {"file", "a.cpp"},
                  {"line", 4000000000u},
                  {"text", "up and running"},
                  {"stack", "Start (a.cpp:1)\nmain"}}));
}

TEST(TrcDumpJsonl, TheKeysStandInAFixedOrder) {
  const TempDir directory;
  const std::string path = NamedImage().Trace(kFullTrace).WriteTo(directory.File("a.trc"));
  const TrcRun run = RunTrc({"dump", path, "--format", "jsonl"});
  std::size_t place = 0;
  for (const char* key :
       {"i", "count", "time", "tic", "machine", "application", "component", "category", "pid",
        "tid", "attributes", "file", "line", "text", "stack"}) {
    const std::size_t found = run.out.find("\"" + std::string(key) + "\":", place);
    ASSERT_NE(found, std::string::npos) << key;
    place = found;
  }
}

TEST(TrcDumpJsonl, DateAndTimeAreAsStoredEvenWhereTheyAreNone) {
  const json trace = OnlyTrace(TrcImage().Trace({.date = 0xFFFFFFFF, .time = 0xFFFFFFFF}));
  EXPECT_EQ(trace.at("date"), json({2097151, 31, 63}));
  EXPECT_EQ(trace.at("time"), json({127, 127, 127, 2047}));
}

TEST(TrcDumpJsonl, InUtcTheZoneOfTheMachineChangesNothing) {
  const TempDir directory;
  const std::string path = NamedImage().Trace(kFullTrace).WriteTo(directory.File("a.trc"));
  const TrcRun there = RunTrc(
      {.arguments = {"dump", path, "--format", "jsonl", "--utc"}, .environment = {"TZ=XST-5"}});
  const TrcRun utc = RunTrc({"dump", path, "--format", "jsonl", "--utc"});
  EXPECT_EQ(there.status, 0);
  EXPECT_EQ(utc.status, 0);
  EXPECT_EQ(there.out, utc.out);
}

TEST(TrcDumpJsonl, ANameThatTheFileLacksIsNull) {
  const json trace = OnlyTrace(TrcImage().Name(2, "").Trace({.machine = 9, .app = 2}));
  EXPECT_EQ(trace.at("machine"), nullptr);
  EXPECT_EQ(trace.at("application"), "");
  for (const char* key : {"component", "category", "pid", "tid", "file"}) {
    EXPECT_EQ(trace.at(key), nullptr) << key;
  }
}

TEST(TrcDumpJsonl, ANameThatComesAfterItsTraceIsUsed) {
  EXPECT_EQ(OnlyTrace(TrcImage().Trace({.machine = 9}).Name(9, "late")).at("machine"), "late");
}

TEST(TrcDumpJsonl, OfTwoNamesForOneIdTheLaterIsUsed) {
  EXPECT_EQ(OnlyTrace(TrcImage().Name(9, "a").Name(9, "b").Trace({.machine = 9})).at("machine"),
            "b");
}

TEST(TrcDumpJsonl, ANumber0xFFFFFFFFIsPrintedAsItStands) {
  EXPECT_EQ(OnlyTrace(TrcImage().Trace({.count = 0xFFFFFFFF})).at("count"), 0xFFFFFFFF);
}

TEST(TrcDumpJsonl, EveryControlCharacterIsEscaped) {
  for (int byte = 1; byte < 0x20; ++byte) {
    const std::string text = std::string("a") + static_cast<char>(byte) + "b";
    EXPECT_EQ(TextOf(text), text) << byte;
  }
  EXPECT_EQ(TextOf("\x7F"), "\x7F");
}

TEST(TrcDumpJsonl, QuotesAndBackslashesAreEscaped) {
  EXPECT_EQ(TextOf("say \"C:\\temp\\\" / now"), "say \"C:\\temp\\\" / now");
}

TEST(TrcDumpJsonl, Utf8PassesUnchanged) {
  for (const std::string text : {"Grüße", "支払い済み", "\U0001F600", "\u0085\u2028", "\uFFFD"}) {
    EXPECT_EQ(TextOf(text), text);
  }
}

TEST(TrcDumpJsonl, BytesThatAreNotUtf8AreHex) {
  EXPECT_EQ(TextOf("ab\xFFz"), json({{"hex", "6162ff7a"}}));
  EXPECT_EQ(TextOf("\xC3"), json({{"hex", "c3"}}));
  EXPECT_EQ(TextOf("\"\xC0\x80\n"), json({{"hex", "22c0800a"}}));
}

TEST(TrcDumpJsonl, ALoneSurrogateIsHex) {
  EXPECT_EQ(TextOf("\xED\xA0\x80"), json({{"hex", "eda080"}}));
}

TEST(TrcDumpJsonl, NamesAndStacksThatAreNotUtf8AreHexToo) {
  const json trace = OnlyTrace(TrcImage().Name(3, "\x80").Trace({.stack = "\xFE", .component = 3}));
  EXPECT_EQ(trace.at("component"), json({{"hex", "80"}}));
  EXPECT_EQ(trace.at("stack"), json({{"hex", "fe"}}));
}

TEST(TrcDumpJsonl, ATextWithANulByteInsideShowsOnlyWhatComesBeforeIt) {
  const TempDir directory;
  TrcImage image;
  image.Trace({.text = std::string("before\0behind", 13), .stack = std::string("a\0b", 3)});
  image.Trace("next");
  const auto traces = DumpedTraces(image.WriteTo(directory.File("nul.trc")));
  ASSERT_EQ(traces.size(), 2u);
  EXPECT_EQ(traces[0].at("text"), "before");
  EXPECT_EQ(traces[0].at("stack"), "a");
  EXPECT_EQ(traces[1].at("text"), "next");
}

TEST(TrcDumpJsonl, ATextOf65535BytesIsWhole) {
  EXPECT_EQ(TextOf(std::string(65535, 'x')), std::string(65535, 'x'));
}

TEST(TrcDumpJsonl, FromAndCountChooseTracesAndKeepTheirIndexes) {
  const TempDir directory;
  TrcImage image;
  for (int i = 0; i < 10; ++i) image.Trace(std::to_string(i));
  const std::string path = image.WriteTo(directory.File("ten.trc"));
  const auto indexes = [&path](std::vector<std::string> options) {
    std::vector<int> list;
    for (const json& trace : DumpedTraces(path, options)) {
      EXPECT_EQ(trace.at("text"), std::to_string(trace.at("i").get<int>()));
      list.push_back(trace.at("i"));
    }
    return list;
  };
  EXPECT_EQ(indexes({"--from", "7"}), (std::vector<int>{7, 8, 9}));
  EXPECT_EQ(indexes({"--count", "2"}), (std::vector<int>{0, 1}));
  EXPECT_EQ(indexes({"-b", "4", "-n", "3"}), (std::vector<int>{4, 5, 6}));
  EXPECT_EQ(indexes({"--from", "9", "--count", "18446744073709551615"}), (std::vector<int>{9}));
  EXPECT_EQ(indexes({"--from", "10"}), std::vector<int>());
  EXPECT_EQ(indexes({"--from", "18446744073709551615"}), std::vector<int>());
  EXPECT_EQ(indexes({"--count", "0"}), std::vector<int>());
}

TEST(TrcDumpJsonl, AFileOfItsHeaderOnlyGivesNothing) {
  const TempDir directory;
  const TrcRun run =
      RunTrc({"dump", TrcImage().WriteTo(directory.File("empty.trc")), "--format", "jsonl"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
}

TEST(TrcDumpJsonl, AFileCutAtAnyByteOfItsLastTraceGivesTheOthersAndADefinedLastOne) {
  const TempDir directory;
  const TraceFields last = {.text = "last", .stack = "s", .machine = 1};
  const std::size_t record = 45 + 4 + 1;
  for (std::size_t cut = 1; cut < record; ++cut) {
    TrcImage image;
    image.Name(1, "web").Trace("first").Trace(last).Cut(cut);
    const std::string path = image.WriteTo(directory.File("cut.trc"));
    const auto traces = JsonLinesOf(RunTrc({"dump", path, "-f", "jsonl"}).out);
    ASSERT_EQ(traces.size(), 2u) << cut;
    EXPECT_EQ(traces[0].at("text"), "first");
    const std::size_t left = record - cut, head = 43;
    EXPECT_EQ(traces[1].at("text"), std::string("last").substr(0, left > head ? left - head : 0))
        << cut;
  }
}

TEST(TrcDumpJsonl, AByteThatBelongsToNoRecordIsSkipped) {
  const TempDir directory;
  const std::string path = TrcImage().Raw(12).Trace("up").Raw(0).WriteTo(directory.File("a.trc"));
  const auto traces = JsonLinesOf(RunTrc({"dump", path, "-f", "jsonl"}).out);
  ASSERT_EQ(traces.size(), 1u);
  EXPECT_EQ(traces[0].at("text"), "up");
}

}  // namespace

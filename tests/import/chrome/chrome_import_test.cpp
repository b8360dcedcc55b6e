#include "import/chrome/chrome_import.h"

#include <gmock/gmock.h>

#include "../imported_file.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

ImportedFile Import(const std::string& bytes, std::size_t heldBytes = ChromeImport::kHeldBytes) {
  return ImportBytes<ChromeImport>(bytes, {}, heldBytes);
}

std::vector<std::string> TracesOf(const std::string& bytes) {
  return Import(bytes).walked.traces;
}

// An event of process 1 and thread 2 at so many milliseconds.
std::string At(int ms, const std::string& phase, const std::string& name,
               const std::string& more = "") {
  return R"({"ph":")" + phase + R"(","pid":1,"tid":2,"cat":"net","name":")" + name + R"(","ts":)" +
         std::to_string(ms * 1000) + more + "}";
}

TEST(ChromeImport, ACompleteEventIsABeginAndAnEndThatNest) {
  const auto traces =
      TracesOf("[" + At(3, "X", "inner", R"(,"dur":2000)") + "," +
               At(1, "X", "outer", R"(,"dur":9000,"args":{"n":1,"s":"a b"})") + "]");
  EXPECT_THAT(traces, ElementsAre(R"(1 net/Span  1 2 Begin: outer n=1 s="a b")",
                                  "3 net/Span  1 2 Begin: inner", "5 net/Span  1 2 End: inner",
                                  "10 net/Span  1 2 End: outer"));
}

TEST(ChromeImport, CompleteEventsThatOverlapAreOnTwoLanes) {
  const auto traces = TracesOf("[" + At(1, "X", "a", R"(,"dur":4000)") + "," +
                               At(3, "X", "b", R"(,"dur":9000)") + "]");
  EXPECT_THAT(traces, ElementsAre("1 net/Span  1 2 Begin: a", "3 net/Span  1 2 lane 2 Begin: b",
                                  "5 net/Span  1 2 End: a", "12 net/Span  1 2 lane 2 End: b"));
}

TEST(ChromeImport, AnEndNeedsNoNameAndMaySayMore) {
  const auto traces = TracesOf("[" + At(1, "B", "work") + "," + At(2, "i", "tick") +
                               R"(,{"ph":"E","pid":1,"tid":2,"ts":4000.5,"args":{"rows":7}}])");
  EXPECT_THAT(traces, ElementsAre("1 net/Span  1 2 Begin: work", "2 net/Event  1 2 tick",
                                  "4 net/Span  1 2 End: work rows=7"));
}

TEST(ChromeImport, BeginsAndEndsPairByTheirTimesAndNotByTheirPlaces) {
  const auto traces = TracesOf("[" + At(4, "E", "a") + "," + At(3, "E", "b") + "," +
                               At(1, "B", "a") + "," + At(2, "B", "b") + "]");
  EXPECT_THAT(traces, ElementsAre("1 net/Span  1 2 Begin: a", "2 net/Span  1 2 Begin: b",
                                  "3 net/Span  1 2 End: b", "4 net/Span  1 2 End: a"));
}

TEST(ChromeImport, ABeginWithoutAnEndStaysOpenAndAnEndWithoutABeginIsSaid) {
  const auto traces = TracesOf("[" + At(1, "E", "lost") + "," + At(2, "B", "open") + "," +
                               At(3, "X", "in", R"(,"dur":1000)") + "]");
  EXPECT_THAT(traces, ElementsAre("1 net/Span  1 2 End without a begin: lost",
                                  "2 net/Span  1 2 Begin: open", "3 net/Span  1 2 Begin: in",
                                  "4 net/Span  1 2 End: in"));
}

TEST(ChromeImport, AsynchronousEventsPairByTheirIds) {
  const auto traces = TracesOf(
      "[" + At(1, "b", "load", R"(,"id":"0x1")") + "," + At(2, "b", "load", R"(,"id":"0x2")") +
      "," + At(3, "n", "half", R"(,"id":"0x1")") + "," + At(4, "e", "load", R"(,"id":"0x1")") +
      "," + At(5, "e", "load", R"(,"id":"0x2")") + "]");
  EXPECT_THAT(traces,
              ElementsAre("1 net/Async  1 async net Begin: load",
                          "2 net/Async  1 async net lane 2 Begin: load",
                          "3 net/Async  1 async net half", "4 net/Async  1 async net End: load",
                          "5 net/Async  1 async net lane 2 End: load"));
}

TEST(ChromeImport, NamesOfProcessesAndThreadsCountWhereverTheyStand) {
  const auto traces = TracesOf(
      R"({"displayTimeUnit":"ns","traceEvents":[)" + At(1, "C", "heap", R"(,"args":{"used":5})") +
      R"(,{"ph":"M","name":"process_name","pid":1,"args":{"name":"Browser"}},)"
      R"({"ph":"M","name":"thread_name","pid":"1","tid":"2","args":{"name":"Main"}}],"x":[{}]})");
  EXPECT_THAT(traces, ElementsAre("1 net/Counter Browser 1 Main (2) heap used=5"));
}

TEST(ChromeImport, FractionsOfAMicrosecondAreKeptInTheTicCounts) {
  const ImportedFile file = Import(
      R"([{"ph":"i","name":"a","ts":1700000000000000.123},{"ph":"i","name":"b","ts":"1700000000000000.5"}])");
  ASSERT_THAT(file.walked.tics, SizeIs(2));
  EXPECT_EQ(file.walked.tics[0], 86'400'000'000'000'000u);
  EXPECT_EQ(file.walked.tics[1] - file.walked.tics[0], 377'000u);
}

TEST(ChromeImport, AnArrayWithoutItsBracketIsWhole) {
  for (const char* end : {"", ",", "\n", ",\n"}) {
    const ImportedFile file = Import("[" + At(1, "i", "a") + end);
    EXPECT_THAT(file.walked.traces, SizeIs(1)) << end;
    EXPECT_TRUE(file.isWhole) << end;
    EXPECT_THAT(file.texts, IsEmpty()) << end;
  }
}

TEST(ChromeImport, CutAtAnyByteWhatIsWholeIsKept) {
  const std::string first = "[" + At(1, "i", "a");
  const std::string whole =
      first + "," + At(2, "X", "b", R"(,"dur":1,"args":{"t":"\u00e9"})") + "]";
  for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
    const ImportedFile file = Import(whole.substr(0, bytes));
    const std::size_t expected = bytes < first.size() ? 0 : bytes < whole.size() - 1 ? 1 : 3;
    EXPECT_THAT(file.walked.traces, SizeIs(expected)) << bytes;
    const bool isBetween = bytes == 1 || bytes == first.size() || bytes == first.size() + 1 ||
                           bytes == whole.size() - 1;
    EXPECT_EQ(file.isWhole, isBetween) << bytes;
  }
}

TEST(ChromeImport, DamageIsToldWithItsPlace) {
  const ImportedFile file = Import("[" + At(1, "i", "a") + ",\n{\"ph\":x}]");
  EXPECT_THAT(file.walked.traces, SizeIs(1));
  EXPECT_FALSE(file.isWhole);
  EXPECT_THAT(file.texts, ElementsAre(HasSubstr("in: line 2, byte ")));
  const std::string deep(1000, '[');
  EXPECT_THAT(Import(R"([{"args":)" + deep).texts, ElementsAre(HasSubstr("nested deeper")));
  EXPECT_THAT(Import("7").texts, ElementsAre(HasSubstr("no array of events")));
  EXPECT_THAT(Import("{}").texts, ElementsAre(HasSubstr("no array of events")));
}

TEST(ChromeImport, WhatIsNotCarriedOverIsCounted) {
  const ImportedFile file =
      Import("[" + At(1, "s", "flow") + "," + At(2, "f", "flow") + "," + At(3, "N", "object") +
             R"(,{"ph":"i","name":"untimed"},7,{"ph":"i","ts":1e300},{"ph":"i","ts":1e3}])");
  EXPECT_THAT(file.walked.traces, ElementsAre("1 Trace/Event    "));
  EXPECT_THAT(file.texts, ElementsAre("1 event was not understood, and left out",
                                      "2 events have no time, and were left out",
                                      "2 flow events are not carried over",
                                      "1 event of other kinds is not carried over: N"));
}

TEST(ChromeImport, WithLittleMemoryAllIsThereAndBeginsAndEndsNest) {
  std::string bytes = "[" + At(0, "B", "all");
  for (int ms = 1; ms < 200; ++ms) bytes += "," + At(ms, "X", "x", R"(,"dur":900)");
  bytes += "," + At(200, "E", "all") + "]";
  const ImportedFile file = Import(bytes, 10'000);
  EXPECT_THAT(file.walked.traces, SizeIs(400));
  EXPECT_TRUE(file.isWhole);
  std::map<std::string, std::vector<std::string>> open;
  for (const std::string& trace : file.walked.traces) {
    const std::string thread = trace.substr(trace.find(' '), trace.rfind(':') - trace.find(' '));
    const bool isBegin = trace.find("Begin: ") != trace.npos;
    const std::string name = trace.substr(trace.rfind(' '));
    std::vector<std::string>& names = open[thread.substr(0, thread.rfind(' '))];
    if (isBegin) {
      names.push_back(name);
      continue;
    }
    ASSERT_FALSE(names.empty()) << trace;
    EXPECT_EQ(names.back(), name);
    names.pop_back();
  }
  for (const auto& [thread, names] : open) EXPECT_THAT(names, IsEmpty()) << thread;
}

TEST(ChromeImport, BeginsWithoutEndsDoNotFillTheMemory) {
  std::string bytes = "[" + At(0, "B", "x");
  for (int ms = 1; ms < 500; ++ms) bytes += "," + At(ms, "B", "x");
  EXPECT_THAT(Import(bytes, 10'000).walked.traces, SizeIs(500));
}

TEST(ReadMicroseconds, ReadsEachDigitOfATimeSince1970) {
  const auto read = [](std::string_view text) {
    std::int64_t ns = -1;
    return ReadMicroseconds(text, ns) ? std::to_string(ns) : "no";
  };
  EXPECT_EQ(read("1795305600000000.123"), "1795305600000000123");
  EXPECT_EQ(read("1.0009"), "1000");
  EXPECT_EQ(read("-1.5"), "-1500");
  EXPECT_EQ(read("2.5e3"), "2500000");
  for (const char* bad : {"", "x", "1x", "NaN", "Infinity", "1e99", "99999999999999999999", "--1"})
    EXPECT_EQ(read(bad), "no") << bad;
}

}  // namespace

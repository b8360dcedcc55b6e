#include <algorithm>
#include <map>
#include <set>

#include "records/trc_walk.h"
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

void Generate(const std::string& path, std::vector<std::string> options) {
  options.insert(options.begin(), "gen");
  options.push_back(path);
  const TrcRun run = RunTrc(options);
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "");
}

// One sample for the tests that look at its content.
const std::vector<json>& Sample() {
  static const std::vector<json> traces = [] {
    const TempDir directory;
    const std::string path = directory.File("sample.trc");
    Generate(path, {"--records", "20000"});
    return DumpedTraces(path);
  }();
  return traces;
}

std::set<json> ValuesOf(const char* key) {
  std::set<json> values;
  for (const json& trace : Sample()) values.insert(trace.at(key));
  return values;
}

TEST(TrcGen, WritesAsManyTracesAsAskedFor) {
  const TempDir directory;
  for (const int records : {0, 1, 2, 3, 1000}) {
    const std::string path = directory.File("a.trc");
    Generate(path, {"--records", std::to_string(records)});
    const json info = InfoOf(path);
    EXPECT_EQ(info.at("traces"), records);
    EXPECT_EQ(info.at("skippedBytes"), 0);
  }
  EXPECT_EQ(Sample().size(), 20000u);
}

TEST(TrcGen, NoTracesAreAFileOfItsHeader) {
  const TempDir directory;
  Generate(directory.File("a.trc"), {"-n", "0"});
  EXPECT_EQ(ReadAll(directory.File("a.trc")), TrcImage().Bytes());
}

TEST(TrcGen, TheSameSeedGivesTheSameBytesAndAnotherSeedOthers) {
  const TempDir directory;
  const auto bytes = [&directory](std::vector<std::string> options) {
    Generate(directory.File("a.trc"), options);
    return ReadAll(directory.File("a.trc"));
  };
  const std::string once = bytes({"-n", "500", "--seed", "7"});
  EXPECT_EQ(bytes({"-n", "500", "-s", "7"}), once);
  EXPECT_NE(bytes({"-n", "500", "-s", "8"}), once);
  EXPECT_EQ(bytes({"-n", "500"}), bytes({"-n", "500", "--seed", "1"}));
}

TEST(TrcGen, AnExistingFileIsReplaced) {
  const TempDir directory;
  const std::string path = directory.File("a.trc", std::string(100000, 'x'));
  Generate(path, {"-n", "1"});
  EXPECT_EQ(DumpedTraces(path).size(), 1u);
}

TEST(TrcGen, ThereAreSeveralOfEachKindOfName) {
  for (const char* key :
       {"machine", "application", "component", "category", "pid", "tid", "file"}) {
    const std::set<json> values = ValuesOf(key);
    EXPECT_GE(values.size(), 3u) << key;
    EXPECT_EQ(values.count(nullptr), 0u) << key;
    EXPECT_EQ(values.count(""), 0u) << key;
  }
}

// "2026-03-28T07:00:00.011": the microseconds of two processes are not compared.
std::string ToMilliseconds(const json& trace) {
  return trace.at("time").get<std::string>().substr(0, 23);
}

TEST(TrcGen, CountsRiseAndTimesNeverFallBack) {
  const auto& traces = Sample();
  for (std::size_t i = 1; i < traces.size(); ++i) {
    EXPECT_LT(traces[i - 1].at("count"), traces[i].at("count"));
    EXPECT_LE(ToMilliseconds(traces[i - 1]), ToMilliseconds(traces[i]));
  }
}

TEST(TrcGen, TicCountsArePicosecondsThatAgreeWithTheTime) {
  std::map<std::string, std::pair<std::uint64_t, std::int64_t>> first;  // by machine: tic, ms
  std::size_t without = 0;
  for (const json& trace : Sample()) {
    const std::uint64_t tic = trace.at("tic");
    without += tic == 0;
    if (tic == 0) continue;
    const std::string time = ToMilliseconds(trace);
    const auto part = [&](std::size_t at, std::size_t digits) -> std::int64_t {
      return std::stoi(time.substr(at, digits));
    };
    const std::int64_t ms =
        ((part(11, 2) * 60 + part(14, 2)) * 60 + part(17, 2)) * 1000 + part(20, 3);
    const auto [start, added] = first.try_emplace(trace.at("machine"), tic, ms);
    ASSERT_GE(tic, start->second.first);
    const auto passed = static_cast<std::int64_t>((tic - start->second.first) / 1'000'000'000);
    EXPECT_NEAR(static_cast<double>(passed), static_cast<double>(ms - start->second.second), 1.0);
  }
  EXPECT_GE(first.size(), 3u);
  EXPECT_GT(without, 0u);  // there are applications without a fine clock
}

TEST(TrcGen, BlocksNestPerThreadAndAllEnd) {
  std::map<std::vector<json>, std::vector<std::string>> open;
  std::size_t blocks = 0, deepest = 0;
  for (const json& trace : Sample()) {
    auto& stack =
        open[{trace.at("machine"), trace.at("application"), trace.at("pid"), trace.at("tid")}];
    const std::string text = trace.at("text");
    if (text.rfind("Begin: ", 0) == 0) {
      stack.push_back(text.substr(7));
      ++blocks;
    } else if (text.rfind("End: ", 0) == 0) {
      ASSERT_FALSE(stack.empty());
      EXPECT_EQ(stack.back(), text.substr(5));
      stack.pop_back();
    }
    deepest = std::max(deepest, stack.size());
  }
  for (const auto& [thread, stack] : open) EXPECT_TRUE(stack.empty());
  EXPECT_GT(blocks, 1000u);
  EXPECT_GE(deepest, 3u);
}

TEST(TrcGen, AllSeveritiesAndBothAttributesOccurAndEachTraceHasOneSeverity) {
  int seen = 0;
  for (const json& trace : Sample()) {
    const int attributes = trace.at("attributes");
    seen |= attributes;
    const int severity = attributes & kSeverityMask;
    EXPECT_TRUE(severity == 1 || severity == 2 || severity == 4) << attributes;
  }
  EXPECT_EQ(seen, 31);
}

TEST(TrcGen, TextsAreUtf8OfAbout100BytesAndSomeAreNotAscii) {
  std::size_t bytes = 0, foreign = 0;
  for (const json& trace : Sample()) {
    const std::string text = trace.at("text");  // an object if it were not UTF-8
    bytes += text.size();
    foreign += std::any_of(text.begin(), text.end(), [](char byte) { return byte < 0; });
    EXPECT_FALSE(text.empty());
  }
  const double average = static_cast<double>(bytes) / static_cast<double>(Sample().size());
  EXPECT_GT(average, 80);
  EXPECT_LT(average, 120);
  EXPECT_GT(foreign, Sample().size() / 50);
}

TEST(TrcGen, SomeTracesHaveAStackWithTheNewestFrameFirst) {
  std::size_t stacks = 0, deep = 0;
  for (const json& trace : Sample()) {
    const std::string stack = trace.at("stack");
    if (stack.empty()) continue;
    ++stacks;
    const auto frames = LinesOf(stack);
    ASSERT_GE(frames.size(), 2u);
    const std::string place = trace.at("file").get<std::string>() + ":" +
                              std::to_string(trace.at("line").get<unsigned>());
    EXPECT_NE(frames.front().find(place), std::string::npos);
    EXPECT_EQ(frames.back(), "main");
    deep += frames.size() > 2;
  }
  EXPECT_GT(stacks, 50u);
  EXPECT_LT(stacks, Sample().size() / 4);
  EXPECT_GT(deep, 10u);
}

TEST(TrcGen, ANameRecordStandsBeforeItsFirstUseAndOnlyOnce) {
  struct Sink {
    void OnName(NameId id, std::string_view) { EXPECT_TRUE(names.insert(id).second); }
    void OnTrace(const std::uint8_t* record) {
      const RawTrace trace(record);
      for (const NameId id :
           {trace.MachineId(), trace.AppId(), trace.ComponentId(), trace.CategoryId(),
            trace.PidId(), trace.TidId(), trace.SourceFileId()}) {
        EXPECT_TRUE(names.count(id)) << id;
      }
    }
    void OnUnknownTag(std::uint64_t) { ADD_FAILURE(); }
    bool OnProgress(std::uint64_t) { return true; }
    std::set<NameId> names;
  } sink;
  const TempDir directory;
  const std::string path = directory.File("a.trc");
  Generate(path, {"-n", "3000"});
  const GuardedBytes bytes(ReadAll(path));
  EXPECT_EQ(WalkTrc(bytes.View(), sink), bytes.View().size());
}

TEST(TrcGen, AFolderThatIsNotThereIsReportedWithTheReason) {
  const TrcRun run = RunTrc({"gen", "-n", "1", "/nowhere/at/all.trc"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: /nowhere/at/all.trc: No such file or directory\n");
}

TEST(TrcGen, MoreThanATraceFileHoldsIsRefusedAndTheOldFileStays) {
  const TempDir directory;
  const std::string path = directory.File("a.trc", "old");
  const TrcRun run = RunTrc({"gen", "--records", "100000000", path});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("smaller than 4 GiB"), std::string::npos) << run.err;
  EXPECT_EQ(ReadAll(path), "old");
}

TEST(TrcGen, AFullDiskIsReportedAlsoWhenItShowsOnlyAtTheEnd) {
  for (const char* records : {"1", "100000"}) {
    const TrcRun run = RunTrc({"gen", "--records", records, "/dev/full"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "trc: /dev/full: Error writing to file. No space left on device\n");
  }
}

}  // namespace

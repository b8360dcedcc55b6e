// trc stats: how many traces have a value.
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

class TrcStats : public testing::Test {
 protected:
  TrcStats() {
    TrcImage image;
    image.Name(1, "desk").Name(2, "shop").Name(3, "100").Name(4, "one").Name(5, "Net").Name(6,
                                                                                            "Db");
    for (unsigned second = 0; second < 10; ++second)
      image.Trace({.text = second < 8 ? "took " + std::to_string(second) + " ms" : "slow \"x\"",
                   .machine = 1,
                   .app = 2,
                   .component = static_cast<NameId>(second < 6 ? 6 : 5),
                   .category = 5,
                   .time = PackTime(9, 41, second, 0),
                   .pid = 3,
                   .tid = 4,
                   .attributes = second == 9 ? std::uint16_t{kAttributeError}
                                             : std::uint16_t{kAttributeInfo}});
    m_file = image.WriteTo(m_directory.File("in.trc"));
  }
  std::string Stats(std::vector<std::string> more) {
    more.insert(more.begin(), {"stats", m_file, "--utc"});
    const TrcRun run = RunTrc(more);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    return run.out;
  }
  std::string Refused(std::vector<std::string> more) {
    more.insert(more.begin(), {"stats", m_file});
    const TrcRun run = RunTrc(more);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    return run.err;
  }

  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcStats, ATableHasCountShareRateFirstAndLastOfEachValue) {
  EXPECT_EQ(
      Stats({"--by", "component"}),
      "Count   Share  Per Second  First                    Last                     Component\n"
      "    6  60.0 %        1.00  2026-11-21 09:41:00.000  2026-11-21 09:41:05.000  Db\n"
      "    4  40.0 %        1.00  2026-11-21 09:41:06.000  2026-11-21 09:41:09.000  Net\n");
}

TEST_F(TrcStats, PatternsLeaveOutNumbersAndQuotedParts) {
  const std::vector<std::string> lines = LinesOf(Stats({"--by", "pattern"}));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_TRUE(lines[1].ends_with("  took # ms")) << lines[1];
  EXPECT_TRUE(lines[2].ends_with("  slow \"...\"")) << lines[2];
  EXPECT_EQ(lines[1].substr(0, 15), "    8  80.0 %  ");
}

TEST_F(TrcStats, AllFieldsAreCountedWithoutBy) {
  const std::string all = Stats({});
  for (const char* const heading : {"  Component\n", "  Category\n", "  Application\n",
                                    "  Thread\n", "  Severity\n", "  Pattern\n"})
    EXPECT_NE(all.find(heading), std::string::npos) << heading;
  EXPECT_NE(all.find("  desk/100/one\n"), std::string::npos) << all;
  EXPECT_EQ(Stats({"--by", " Severity , component"}),
            Stats({"--by", "severity"}) + "\n" + Stats({"--by", "component"}));
}

TEST_F(TrcStats, TheSharedOptionsChooseWhatIsCounted) {
  const auto count = [this](std::vector<std::string> more) {
    more.insert(more.begin(), {"--by", "application", "--json"});
    const std::vector<json> rows = JsonLinesOf(Stats(more));
    return rows.empty() ? 0 : rows.at(0).at("count").get<int>();
  };
  EXPECT_EQ(count({}), 10);
  EXPECT_EQ(count({"--component", "net"}), 4);
  EXPECT_EQ(count({"--where", "text contains slow and severity != info"}), 1);
  EXPECT_EQ(count({"--from", "7"}), 3);
  EXPECT_EQ(count({"--from", "7", "--component", "net"}), 3);
  EXPECT_EQ(count({"--tail", "2", "--severity", "info"}), 2);
  EXPECT_EQ(count({"--count", "4"}), 4);
  EXPECT_EQ(count({"--since", "2026-11-22"}), 0);
}

TEST_F(TrcStats, WhatTopLeavesOutIsSaid) {
  const std::vector<std::string> lines = LinesOf(Stats({"--by", "component", "--top", "1"}));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[2], "and 1 more with 4 of 10 traces");
  EXPECT_EQ(JsonLinesOf(Stats({"--by", "component", "--top", "1", "--json"})).size(), 1u);
  EXPECT_EQ(Stats({"--by", "component", "--top", "0"}), Stats({"--by", "component"}));
}

TEST_F(TrcStats, TheOrderIsThatOfAnyColumn) {
  const auto first = [this](const char* column) {
    return JsonLinesOf(Stats({"--by", "component", "--json", "--sort", column})).at(0).at("value");
  };
  EXPECT_EQ(first("count"), "Db");
  EXPECT_EQ(first("value"), "Db");
  EXPECT_EQ(first("first"), "Db");
  EXPECT_EQ(JsonLinesOf(Stats({"--by", "pattern", "--json", "-s", "value"})).at(0).at("value"),
            "slow \"...\"");
}

// What a program gets is exact, and its filter text finds the same traces.
TEST_F(TrcStats, JsonHasTheFilterTextOfEachValue) {
  const std::vector<json> rows = JsonLinesOf(Stats({"--json"}));
  EXPECT_GT(rows.size(), 8u);
  for (const json& row : rows) {
    const std::vector<json> found = DumpedTraces(m_file, {"--where", row.at("where")});
    ASSERT_EQ(found.size(), row.at("count")) << row;
    EXPECT_EQ(found.front().at("time"), row.at("first"));
    EXPECT_EQ(found.back().at("time"), row.at("last"));
    EXPECT_DOUBLE_EQ(row.at("share").get<double>(), static_cast<double>(found.size()) / 10);
  }
  EXPECT_EQ(rows.at(0).at("by"), "component");
  EXPECT_EQ(rows.at(0).at("perSecond"), 1);
}

TEST_F(TrcStats, TimesAreThoseOfTheZone) {
  const TrcRun run =
      RunTrc({.arguments = {"stats", m_file, "--by", "application"}, .environment = {"TZ=CET-1"}});
  EXPECT_NE(run.out.find("2026-11-21 10:41:00.000"), std::string::npos) << run.out;
}

TEST_F(TrcStats, AFileWithoutTracesHasHeadingsOnly) {
  const std::string empty = TrcImage().Name(1, "desk").WriteTo(m_directory.File("empty.trc"));
  const TrcRun run = RunTrc({"stats", empty, "--by", "severity"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "Count  Share  Per Second  First  Last  Severity\n");
}

TEST_F(TrcStats, WrongWordsAreNamedWithWhatIsNear) {
  EXPECT_NE(Refused({"--by", "componet"}).find("by \"componet\"; did you mean \"component\"?"),
            std::string::npos);
  EXPECT_NE(Refused({"--by", ""}).find("--by: traces are not counted by \"\""), std::string::npos);
  EXPECT_NE(Refused({"--sort", "size"}).find("--sort: "), std::string::npos);
}

TEST_F(TrcStats, SlicesOfTimeHaveTheTracesOfEachBySeverity) {
  EXPECT_EQ(Stats({"--over-time", "5"}),
            "From                     To                       Traces  Error  Warn  Info  (none)  "
            "Losses\n"
            "2026-11-21 09:41:00.000  2026-11-21 09:41:02.000       2      0     0     2       0  "
            "     0\n"
            "2026-11-21 09:41:02.000  2026-11-21 09:41:04.000       2      0     0     2       0  "
            "     0\n"
            "2026-11-21 09:41:04.000  2026-11-21 09:41:06.000       2      0     0     2       0  "
            "     0\n"
            "2026-11-21 09:41:06.000  2026-11-21 09:41:08.000       2      0     0     2       0  "
            "     0\n"
            "2026-11-21 09:41:08.000  2026-11-21 09:41:10.000       2      1     0     1       0  "
            "     0\n");
}

// What a program gets is exact, and a filter text finds the same traces.
TEST_F(TrcStats, SlicesAsJsonAreTheTracesBetweenTheirTimes) {
  for (const char* const most : {"2", "3", "10", "2048"}) {
    const std::vector<json> slices = JsonLinesOf(Stats({"--over-time", most, "--json"}));
    ASSERT_LE(slices.size(), std::stoul(most));
    std::size_t all = 0;
    for (const json& slice : slices) {
      const std::string from = slice.at("from"), to = slice.at("to");
      const std::string where = "time >= \"" + from + "\" and time < \"" + to + "\"";
      const std::vector<json> found = DumpedTraces(m_file, {"--where", where});
      EXPECT_EQ(found.size(), slice.at("traces")) << slice;
      EXPECT_EQ(slice.at("error").get<int>() + slice.at("info").get<int>(), slice.at("traces"));
      all += found.size();
    }
    EXPECT_EQ(all, 10u);
  }
}

TEST_F(TrcStats, SlicesAreThoseOfTheChosenTraces) {
  const std::vector<json> slices =
      JsonLinesOf(Stats({"--over-time", "3", "--json", "--component", "net"}));
  ASSERT_EQ(slices.size(), 2u);
  EXPECT_EQ(slices[0].at("from"), "2026-11-21T09:41:06.000000Z");
  EXPECT_EQ(slices[1].at("traces"), 2);
  EXPECT_EQ(LinesOf(Stats({"--over-time", "4", "--where", "text == none"})).size(), 1u);
}

TEST_F(TrcStats, FarTimesTracesWithoutOneAndReportsOfLossesAreToldApart) {
  TrcImage image;
  image.Name(1, "Quor").Name(2, "Loss");
  for (unsigned second = 0; second < 40; ++second)
    image.Trace({.text = "x",
                 .component = static_cast<NameId>(1 + second % 2),
                 .category = 2,
                 .time = PackTime(9, 41, second, 0)});
  image.Trace({.text = "unset", .date = PackDate(1970, 1, 1)}).Trace({.text = "no", .date = 0});
  m_file = image.WriteTo(m_directory.File("far.trc"));
  const std::vector<json> slices = JsonLinesOf(Stats({"--over-time", "2", "--json"}));
  ASSERT_EQ(slices.size(), 3u);
  EXPECT_EQ(slices[0].at("losses").get<int>() + slices[1].at("losses").get<int>(), 20);
  EXPECT_EQ(slices[2], (json{{"before", 1}, {"behind", 0}, {"withoutTime", 1}}));
  EXPECT_EQ(LinesOf(Stats({"--over-time", "2"})).back(),
            "and 1 long before, 0 long behind, 1 without a time");
}

TEST_F(TrcStats, ANumberOfSlicesThatCannotBeIsRefused) {
  EXPECT_NE(Refused({"--over-time", "1"}).find("--over-time: "), std::string::npos);
  EXPECT_NE(Refused({"--over-time", "2049"}).find("--over-time: "), std::string::npos);
  EXPECT_NE(Refused({"--over-time", "9", "--by", "component"}).find("--over-time"),
            std::string::npos);
}

}  // namespace

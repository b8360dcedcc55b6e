// --uncheck and --check over live traces.
#include "live_fixture.h"

namespace {

using nlohmann::json;

TEST_F(LiveProgramsTest, TailLeavesOutWhatAStepHidesAndCountsWhatItPrints) {
  StartService();
  const TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  const TrcRun tail = RunTrc({"tail", "-f", "jsonl", "-n", "50", "--uncheck", "All Components",
                              "--check", "All Components/Db"});
  EXPECT_EQ(tail.status, 0) << tail.err;
  EXPECT_EQ(tail.err, "");
  const auto lines = LinesOf(tail.out);
  ASSERT_EQ(lines.size(), 50u);
  for (const std::string& line : lines) EXPECT_EQ(json::parse(line)["component"], "Db") << line;
}

TEST_F(LiveProgramsTest, CaptureWritesWhatPassesAndTellsOfNamesThatNeverCame) {
  StartService();
  const TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  const std::string file = m_dir.File("out.trc");
  const TrcRun run = RunTrc({"capture", "-o", file, "-n", "30", "--uncheck", "All Components/Net",
                             "--uncheck", "All Components/Nothing"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "30 taken, 0 lost\n");
  EXPECT_EQ(run.err, "trc: no name came for the path \"All Components/Nothing\"\n");
  const auto traces = DumpedTraces(file);
  ASSERT_EQ(traces.size(), 30u);
  for (const json& trace : traces) EXPECT_EQ(trace["component"], "Db");
}

TEST_F(LiveProgramsTest, ATextChoosesLiveTraces) {
  StartService();
  const TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  const TrcRun tail = RunTrc({"tail", "-f", "jsonl", "-n", "50", "--where",
                              "component == Db and application == orders and not text == \"\""});
  EXPECT_EQ(tail.status, 0) << tail.err;
  EXPECT_EQ(tail.err, "");
  const auto lines = LinesOf(tail.out);
  ASSERT_EQ(lines.size(), 50u);
  for (const std::string& line : lines) EXPECT_EQ(json::parse(line)["component"], "Db") << line;
  const std::string file = m_dir.File("out.trc");
  const TrcRun run = RunTrc({"capture", "-o", file, "-n", "30", "--where", "component == Net"});
  EXPECT_EQ(run.status, 0) << run.err;
  const auto traces = DumpedTraces(file);
  ASSERT_EQ(traces.size(), 30u);
  for (const json& trace : traces) EXPECT_EQ(trace["component"], "Net");
}

TEST_F(LiveProgramsTest, TheSharedOptionsChooseLiveTracesWithTheirNeighbours) {
  StartService();
  const TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  const TrcRun tail = RunTrc({"tail", "-f", "jsonl", "-n", "20", "--component", "db", "--component",
                              "Nothing", "--since", "1m ago", "--context", "1", "--utc"});
  EXPECT_EQ(tail.status, 0) << tail.err;
  EXPECT_EQ(tail.err, "trc: no trace came of the component \"Nothing\"\n");
  std::size_t chosen = 0;
  json before;
  for (const std::string& line : LinesOf(tail.out)) {
    const json trace = json::parse(line);
    if (trace.contains("context")) {
      EXPECT_TRUE(trace["component"] == "Net" || chosen == 20) << line;
    } else {
      ++chosen;
      EXPECT_EQ(trace["component"], "Db") << line;
    }
    EXPECT_EQ(trace["time"].get<std::string>().size(), 27u) << line;
    if (!before.is_null()) {
      EXPECT_GT(trace["count"], before["count"]) << "each comes once, in order";
    }
    before = trace;
  }
  EXPECT_EQ(chosen, 20u);
  EXPECT_TRUE(before.contains("context")) << "what stands behind the last is waited for";
}

TEST_F(LiveProgramsTest, UntilEndsATailAtItsTime) {
  StartService();
  const TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "100"}});
  const TrcRun tail = RunTrc({"tail", "--until", "now", "--severity", "other"});
  EXPECT_EQ(tail.status, 0) << tail.err;
  EXPECT_EQ(tail.out, "");
}

}  // namespace

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

TEST_F(LiveProgramsTest, AtTheSourceWhatATextHidesIsWithheldAndCounted) {
  StartService();
  const std::string file = m_dir.File("out.trc");
  TrcProcess capture({.arguments = {"capture", "-o", file, "--where", "component == Db", "--where",
                                    "time > 2026-01-01", "--at-source"}});
  TrcProcess tail({.arguments = {"tail", "-f", "jsonl", "--where", "text contains \"trace 4\"",
                                 "--at-source", "-n", "111"}});
  const auto connections = [this] {
    int count = 0;
    const std::string all = Log();
    for (std::size_t at = 0; (at = all.find("has connected", at)) != all.npos; ++at) ++count;
    return count;
  };
  ASSERT_TRUE(Eventually([&] { return connections() == 2; })) << Log();
  EXPECT_EQ(RunTrc({"emit", "--app", "orders", "--count", "1000", "--rate", "2000"}).status, 0);
  const TrcRun lines = tail.Finish();
  EXPECT_EQ(lines.status, 0);
  for (const std::string& line : LinesOf(lines.out))
    EXPECT_NE(json::parse(line)["text"].get<std::string>().find("trace 4"), std::string::npos);
  EXPECT_EQ(Reported(lines.err, "lost"), 0u) << lines.err;
  EXPECT_EQ(Reported(lines.err, "delivered,"), 111u) << lines.err;
  EXPECT_GT(Reported(lines.err, "withheld,"), 0u);
  capture.Interrupt();
  const TrcRun run = capture.Finish();
  const std::uint64_t taken = Reported(run.out, "taken");
  EXPECT_EQ(Reported(run.out, "delivered,"), taken);
  EXPECT_EQ(Reported(run.out, "withheld,"), 1000 - taken) << run.out;
  const auto traces = DumpedTraces(file);
  EXPECT_EQ(traces.size(), taken);
  for (const json& trace : traces) EXPECT_EQ(trace["component"], "Db");
}

TEST_F(LiveProgramsTest, WhatTheReaderOfAPipeDidNotGetDoesNotCountAsDelivered) {
  StartService();
  TrcProcess tail(
      {.arguments = {"tail", "-f", "jsonl", "--where", "severity >= info", "--at-source"}});
  ASSERT_TRUE(Eventually([&] { return Log().find("has connected") != std::string::npos; }));
  // Much more than a pipe holds, and nobody reads it.
  EXPECT_EQ(RunTrc({"emit", "--app", "orders", "--count", "20000", "--rate", "20000"}).status, 0);
  tail.Interrupt();
  const TrcRun run = tail.Finish();
  std::uint64_t printed = 0;
  for (const std::string& line : LinesOf(run.out))
    if (json::parse(line)["count"] != kNoSequenceNumber) ++printed;
  EXPECT_EQ(Reported(run.err, "delivered,"), printed) << run.err;
  EXPECT_GT(Reported(run.err, "not printed\n"), 1000u) << run.err;
  EXPECT_LE(printed + Reported(run.err, "not printed\n"), 20000u) << run.err;
}

// What is closed would otherwise be the number of the connection, which would get what is printed.
TEST_F(LiveProgramsTest, ACaptureWithoutAStandardOutputSaysSoAndKeepsWhatItHas) {
  StartService();
  const TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  const std::string file = m_dir.File("out.trc");
  const TrcRun run =
      RunTrc({.arguments = {"capture", "-o", file, "-n", "30"}, .closed = STDOUT_FILENO});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: cannot write the output: Bad file descriptor\n");
  EXPECT_EQ(DumpedTraces(file).size(), 30u);
}

TEST_F(LiveProgramsTest, AtTheSourceATextThatOnlyAMonitorCanAskIsRefused) {
  const TrcRun delta = RunTrc({"tail", "--where", "pid == 1 and delta > 1s", "--at-source"});
  EXPECT_EQ(delta.status, 2);
  EXPECT_EQ(delta.err.substr(0, delta.err.find("Try")),
            "trc: --at-source: the source does not know the trace before: \"delta\" works in the "
            "window only\n  pid == 1 and delta > 1s\n               ^~~~~~~~~~\n");
  EXPECT_EQ(RunTrc({"tail", "--at-source"}).err.substr(0, 35),
            "trc: --at-source: needs --where\nTry");
  EXPECT_EQ(RunTrc({"tail", "--where", "pid == 1", "--at-source", "--context", "1"}).status, 2);
}

}  // namespace

// trc's live commands with a real service and a real application.
#include <poll.h>

#include <sstream>

#include "live_fixture.h"

namespace {

using nlohmann::json;

// How many traces at the end of the file are of the one point that was left switched on.
std::size_t TracesAsSetAtEnd(const std::string& path) {
  const auto traces = DumpedTraces(path);
  const auto isOther = [](const json& trace) {
    return trace["component"] != "Db" || trace["category"] != "Close" || trace["attributes"] != 4;
  };
  return static_cast<std::size_t>(std::find_if(traces.rbegin(), traces.rend(), isOther) -
                                  traces.rbegin());
}

TEST_F(LiveProgramsTest, TailPrintsWhatAnApplicationTraces) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "500"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const TrcRun tail = RunTrc({"tail", "--format", "jsonl", "--count", "100"});
  emit.Interrupt();
  const TrcRun emitted = emit.Finish();
  EXPECT_EQ(tail.status, 0) << tail.err;
  EXPECT_EQ(tail.err, "");
  const auto lines = LinesOf(tail.out);
  ASSERT_EQ(lines.size(), 100u);
  std::uint64_t index = 0, count = 0;
  for (const std::string& line : lines) {
    const json trace = json::parse(line);
    EXPECT_EQ(trace["i"], index++);
    EXPECT_EQ(trace["application"], "orders");
    EXPECT_EQ(trace["machine"], _trc_GetHostName());
    EXPECT_TRUE(trace["component"] == "Net" || trace["component"] == "Db");
    EXPECT_EQ(trace["text"].get<std::string>().size(), 40u);
    EXPECT_GT(trace["tic"], 0);
    if (index > 1) {
      EXPECT_EQ(trace["count"], count + 1);
    }
    count = trace["count"];
  }
  EXPECT_EQ(emitted.status, 0);
  EXPECT_EQ(Reported(emitted.out, "lost"), 0u);
  EXPECT_GE(Reported(emitted.out, "traced"), 100u);
}

TEST_F(LiveProgramsTest, TailAsTextHasTheChosenColumnsAndEndsWithItsTime) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "100", "-c", "Net"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const TrcRun tail = RunTrc({"tail", "--columns", "Component,Trace", "--for", "1"});
  EXPECT_EQ(tail.status, 0) << tail.err;
  const auto lines = LinesOf(tail.out);
  ASSERT_GE(lines.size(), 3u);
  EXPECT_EQ(lines[0], "Component  Trace");
  EXPECT_EQ(lines[1].rfind("Net        thread 0 trace ", 0), 0u) << lines[1];
}

// Voluntary context switches of the main thread of a process, from its start.
long Wakes(pid_t pid) {
  std::istringstream status(ReadAll("/proc/" + std::to_string(pid) + "/status"));
  const std::string key = "voluntary_ctxt_switches:";
  for (std::string line; std::getline(status, line);)
    if (line.starts_with(key)) return std::stol(line.substr(key.size()));
  return -1;
}

TEST_F(LiveProgramsTest, ATailWithoutTracesSleepsAndEndsAtOnceWhenInterrupted) {
  StartService();
  TrcProcess tail({.arguments = {"tail"}});
  ASSERT_TRUE(Eventually([&] { return Log().find("has disconnected") != std::string::npos; }))
      << "it has asked why nothing comes";
  const long before = Wakes(tail.Id());
  poll(nullptr, 0, 2000);
  const long wakes = Wakes(tail.Id()) - before;
  EXPECT_GE(before, 1);
  EXPECT_GE(wakes, 0);
  EXPECT_LE(wakes, 10);
  const auto start = std::chrono::steady_clock::now();
  tail.Interrupt();
  EXPECT_EQ(tail.Finish().status, 0);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(700));
}

TEST_F(LiveProgramsTest, AnEmptyTailSaysWhy) {
  StartService();
  const std::string words = "trc: no traces come: ";
  TrcProcess none({.arguments = {"tail"}});
  EXPECT_EQ(none.ReadErrUntil("\n"), words + "no application that traces runs\n");
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "100"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  ASSERT_EQ(RunTrc({"set", "orders", "--all", "off"}).status, 0);
  // Earlier traces may still be on their way at the first try.
  EXPECT_TRUE(Eventually([&] {
    return RunTrc({"tail", "--for", "2"}).err ==
           words + "all traces are off; switch them on with trc set APP --all support\n";
  }));
}

TEST_F(LiveProgramsTest, TailEndsWellWhenItsReaderGoesAndAtAnInterrupt) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "1000"}});
  TrcProcess read({.arguments = {"tail"}});
  read.ReadOut(100);
  read.CloseOut();
  EXPECT_EQ(read.Finish().status, 0);
  TrcProcess interrupted({.arguments = {"tail"}});
  interrupted.ReadOut(100);
  interrupted.Interrupt();
  EXPECT_EQ(interrupted.Finish().status, 0);
}

TEST_F(LiveProgramsTest, ACaptureHoldsEveryTraceOfABurst) {
  StartService();
  const std::string path = m_dir.File("now.trc");
  TrcProcess capture({.arguments = {"capture", "-o", path, "--count", "20000"}});
  ASSERT_TRUE(Eventually([&] { return std::filesystem::exists(path); }));
  const TrcRun emit = RunTrc(
      {"emit", "--app", "burst", "--count", "20000", "--threads", "4", "--blocks", "--seed", "7"});
  EXPECT_EQ(emit.out, "20000 traced, 0 lost\n");
  EXPECT_EQ(emit.status, 0);
  const TrcRun run = capture.Finish();
  EXPECT_EQ(run.out, "20000 taken, 0 lost\n");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(InfoOf(path)["traces"], 20000);
  std::map<std::string, std::vector<std::string>> open;
  for (const json& trace : DumpedTraces(path)) {
    const std::string text = trace["text"];
    auto& blocks = open[trace["tid"]];
    if (text.rfind("Begin: ", 0) == 0) blocks.push_back(text.substr(7));
    if (text.rfind("End: ", 0) != 0) continue;
    ASSERT_FALSE(blocks.empty());
    EXPECT_EQ(blocks.back(), text.substr(5));
    blocks.pop_back();
  }
  EXPECT_EQ(open.size(), 4u);
  for (const auto& [thread, blocks] : open) EXPECT_TRUE(blocks.empty()) << thread;
}

TEST_F(LiveProgramsTest, ACaptureEndsCleanlyAtAnInterrupt) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "2000"}});
  const std::string path = m_dir.File("now.trc");
  TrcProcess capture({.arguments = {"capture", "-o", path}});
  ASSERT_TRUE(Eventually([&] {
    std::error_code error;
    return std::filesystem::file_size(path, error) > 10000 && !error;
  }));
  capture.Interrupt();
  const TrcRun run = capture.Finish();
  EXPECT_EQ(run.status, 0) << run.err;
  const json info = InfoOf(path);
  EXPECT_EQ(info["traces"], Reported(run.out, "taken"));
  EXPECT_EQ(info["skippedBytes"], 0);
}

TEST_F(LiveProgramsTest, AFullCaptureIsRenamedWithANumberAndEachFileCanBeOpenedByItself) {
  StartService();
  const std::string path = m_dir.File("now.trc");
  TrcProcess capture({.arguments = {"capture", "-o", path, "--count", "6000", "--max-size", "1",
                                    "--max-files", "2"}});
  ASSERT_TRUE(Eventually([&] { return std::filesystem::exists(path); }));
  EXPECT_EQ(
      RunTrc({"emit", "--app", "big", "--count", "6000", "--text-bytes", "1000", "--rate", "20000"})
          .status,
      0);
  EXPECT_EQ(capture.Finish().status, 0);
  for (const std::string name : {"now.2.trc", "now.1.trc", "now.trc"}) {
    EXPECT_LE(std::filesystem::file_size(m_dir.File(name)), 1024u * 1024u);
    const auto traces = DumpedTraces(m_dir.File(name));
    ASSERT_FALSE(traces.empty());
    for (const json& trace : traces) ASSERT_EQ(trace["application"], "big");
  }
  EXPECT_FALSE(std::filesystem::exists(m_dir.File("now.3.trc")));
  EXPECT_EQ(DumpedTraces(m_dir.File("now.2.trc")).back()["count"].get<int>() + 1,
            DumpedTraces(m_dir.File("now.1.trc")).front()["count"]);
}

TEST_F(LiveProgramsTest, ACaptureThatCannotBeBegunLeavesNoFile) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "1000"}});
  const std::string path = m_dir.File("now.trc");
  const TrcRun run =
      RunTrc({.arguments = {"capture", "-o", path, "--max-size", "1"}, .fileBytesMax = 8});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.out.find("0 taken, "), std::string::npos) << run.out;
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(LiveProgramsTest, ACaptureThatCannotBeWrittenSaysSo) {
  StartService();
  const TrcRun run = RunTrc({"capture", "-o", m_dir.File("no/such/folder.trc"), "--for", "1"});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("No such file or directory"), std::string::npos) << run.err;
}

TEST_F(LiveProgramsTest, SettingsSwitchARunningApplication) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "1000"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  EXPECT_EQ(RunTrc({"apps"}).out, "orders\n");
  EXPECT_EQ(json::parse(RunTrc({"apps", "--json"}).out),
            json::parse(R"([{"application": "orders", "running": true, "instances": 1}])"));
  EXPECT_EQ(RunTrc({"set", "orders", "Net", "off"}).status, 0);
  EXPECT_EQ(RunTrc({"set", "localhost", "orders", "Db/Close", "off"}).status, 0);
  EXPECT_EQ(RunTrc({"set", "orders", "Db/Connect", "Warn", "Error", "Stack"}).status, 0);
  const json shown = json::parse(RunTrc({"show", "orders", "--json"}).out);
  std::map<std::string, int> settings;
  for (const json& component : shown["components"])
    for (const json& category : component["categories"])
      settings[component["name"].get<std::string>() + "/" + category["name"].get<std::string>()] =
          category["settings"];
  EXPECT_EQ(settings, (std::map<std::string, int>{{"Db/Close", 0},
                                                  {"Db/Connect", 0x206},
                                                  {"Db/Request", 7},
                                                  {"Net/Close", 0},
                                                  {"Net/Connect", 0},
                                                  {"Net/Request", 0}}));
  EXPECT_TRUE(Eventually([&] {
    const TrcRun tail = RunTrc({"tail", "--format", "jsonl", "--count", "50"});
    bool stacks = false;
    for (const std::string& line : LinesOf(tail.out)) {
      const json trace = json::parse(line);
      if (trace["component"] != "Db" || trace["category"] == "Close") return false;
      if (trace["category"] == "Connect") stacks = stacks || trace["stack"] != "";
      if (trace["category"] == "Connect" && trace["attributes"] == 1) return false;
    }
    return stacks;
  }));
  EXPECT_EQ(RunTrc({"set", "orders", "--all", "support"}).status, 0);
  EXPECT_NE(RunTrc({"show", "orders"}).out.find("Net/Close    Info, Warn, Error\n"),
            std::string::npos);
}

TEST_F(LiveProgramsTest, TheSinkIsShownAndAFileSinkIsWrittenByTheApplication) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "1000"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const std::string path = m_dir.File("own.trc");
  EXPECT_EQ(
      RunTrc({"sink", "orders", "--file", path, "--flush", "--max-files", "3", "--max-size", "5"})
          .status,
      0);
  const json sink = json::parse(RunTrc({"show", "orders", "--json"}).out)["sink"];
  EXPECT_EQ(sink,
            (json{{"type", "file"}, {"name", path}, {"options", "flush=1;maxfiles=3;maxsize=5;"}}));
  EXPECT_TRUE(Eventually([&] {
    std::error_code error;
    return std::filesystem::file_size(path, error) > 1000 && !error;
  }));
  EXPECT_EQ(RunTrc({"sink", "orders", "--server", "localhost"}).status, 0);
  EXPECT_EQ(RunTrc({"tail", "--count", "10"}).status, 0);
  EXPECT_EQ(DumpedTraces(path).front()["application"], "orders");
}

TEST_F(LiveProgramsTest, WhatIsSetForAnApplicationThatDoesNotRunIsReceivedByItsNextInstance) {
  StartService();
  {
    TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "1000"}});
    ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
    emit.Interrupt();
    ASSERT_EQ(emit.Finish().status, 0);
  }
  ASSERT_TRUE(Eventually([&] { return RunTrc({"apps"}).out.empty(); }));
  const std::string path = m_dir.File("next.trc");
  EXPECT_EQ(RunTrc({"set", "orders", "--all", "off"}).status, 0);
  EXPECT_EQ(RunTrc({"set", "orders", "Db/Close", "Error"}).status, 0);
  EXPECT_EQ(RunTrc({"sink", "orders", "--file", path}).status, 0);
  EXPECT_EQ(RunTrc({"apps"}).out, "orders  (does not run; settings wait for its next instance)\n");
  {
    TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "5000"}});
    // The traces from before its link to the service come first.
    ASSERT_TRUE(Eventually([&] {
      constexpr auto kOver = std::filesystem::copy_options::overwrite_existing;
      std::error_code error;
      if (std::filesystem::file_size(path, error) < 1000 || error) return false;
      std::filesystem::copy_file(path, m_dir.File("copy.trc"), kOver, error);
      return !error && TracesAsSetAtEnd(m_dir.File("copy.trc")) >= 10;
    }));
    emit.Interrupt();
    emit.Finish();
  }
  EXPECT_GE(TracesAsSetAtEnd(path), TracesAsSetAtEnd(m_dir.File("copy.trc")));
  // The settings were for that instance only.
  ASSERT_TRUE(Eventually([&] { return RunTrc({"apps"}).out.empty(); }));
  const json shown = json::parse(RunTrc({"show", "orders", "--json"}).out);
  EXPECT_EQ(shown["sink"]["type"], "socket");
  EXPECT_EQ(shown["components"][0]["categories"][0]["settings"], 7);
}

TEST_F(LiveProgramsTest, ASinkForAnApplicationThatWasNeverSeenIsReceivedByItsFirstInstance) {
  StartService();
  const std::string path = m_dir.File("first.trc");
  EXPECT_EQ(RunTrc({"sink", "new", "--file", path}).status, 0);
  EXPECT_EQ(RunTrc({"emit", "--app", "new", "--count", "2000", "--rate", "5000"}).status, 0);
  EXPECT_TRUE(Eventually([&] {
    std::error_code error;
    return std::filesystem::file_size(path, error) > 1000 && !error;
  }));
  EXPECT_EQ(DumpedTraces(path).front()["application"], "new");
}

TEST_F(LiveProgramsTest, AnApplicationThatIsHeldAndDoesNotRunIsListedAsSuch) {
  StartService();
  const QuorPtr<trace_App_i> held = trace_App_i::Create("localhost", "orders");
  ASSERT_TRUE(held);
  EXPECT_EQ(json::parse(RunTrc({"apps", "--json"}).out),
            json::parse(R"([{"application": "orders", "running": false, "instances": 0}])"));
  TrcProcess one({.arguments = {"emit", "--app", "orders"}});
  TrcProcess two({.arguments = {"emit", "--app", "orders"}});
  EXPECT_TRUE(Eventually([&] {
    return json::parse(RunTrc({"apps", "--json"}).out)[0]["instances"] == 2;
  }));
}

TEST_F(LiveProgramsTest, WhatIsNotThereIsAnswerNo) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "10"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  EXPECT_EQ(RunTrc({"show", "nobody"}).status, 1);
  EXPECT_EQ(RunTrc({"set", "nobody", "--all", "off"}).status, 1);
  const TrcRun run = RunTrc({"set", "orders", "Net/Nothing", "off"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "trc: \"orders\" has no trace \"Net/Nothing\"\n");
}

TEST_F(LiveProgramsTest, WhatIsNearlyThereIsNamed) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "10"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const std::string noApp = "trc: there is no application \"Order\"; did you mean \"orders\"?\n";
  EXPECT_EQ(RunTrc({"show", "Order"}).err, noApp);
  EXPECT_EQ(RunTrc({"set", "Order", "--all", "off"}).err, noApp);
  EXPECT_EQ(RunTrc({"set", "orders", "net/conect", "Info"}).err,
            "trc: \"orders\" has no trace \"net/conect\"; did you mean \"Net/Connect\"?\n");
  EXPECT_EQ(RunTrc({"set", "orders", "Nte", "Info"}).err,
            "trc: \"orders\" has no trace \"Nte\"; did you mean \"Net\"?\n");
  EXPECT_EQ(RunTrc({"set", "orders", "Net=off;Nte=Info"}).err,
            "trc: \"orders\" has no trace \"Nte\"; did you mean \"Net\"?\n");
  // Read as machine "127.0.0.1:1", application "orders", component "inffo".
  const TrcRun run = RunTrc({"set", "127.0.0.1:1", "orders", "inffo", "Warn"});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("; \"inffo\" is no setting; did you mean \"Info\"?\n"), run.err.npos)
      << run.err;
}

TEST_F(LiveProgramsTest, WithoutAServiceEveryCommandSaysWhereItLooked) {
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"tail"},
                                             {"apps"},
                                             {"show", "a"},
                                             {"set", "a", "--all", "off"},
                                             {"sink", "a", "-s", "b"},
                                             {"capture", "-o", m_dir.File("x.trc")}}) {
    const TrcRun run = RunTrc(command);
    EXPECT_EQ(run.status, 2) << command[0];
    EXPECT_EQ(run.err, "trc: no trace service runs here; start it with quord (" +
                           m_dir.File("quor/quord.sock") + ": No such file or directory)\n");
  }
}

TEST_F(LiveProgramsTest, TheFirstClientStartsTheService) {
  const TrcRun run =
      RunTrc({.arguments = {"apps"},
              .environment = {"QUOR_AUTOSTART=1", "QUOR_QUORD=" + std::string(getenv("QUORD"))}});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "");
  const pid_t service = ServicePid();
  ASSERT_GT(service, 0);
  kill(service, SIGTERM);
  EXPECT_TRUE(Eventually([&] { return kill(service, 0) != 0; }));
}

TEST_F(LiveProgramsTest, SetRefusesWhatItCannotRead) {
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"set", "orders"},
                                             {"set", "orders", "Net"},
                                             {"set", "orders", "Net", "Loud"},
                                             {"set", "a", "b", "c", "d", "off"},
                                             {"set", "--all", "off"},
                                             {"sink", "orders"},
                                             {"sink", "orders", "-s", "x", "--max-size", "1"},
                                             {"emit", "--app", "x", "--threads", "0"},
                                             {"emit", "--app", "x", "--text-bytes", "65536"},
                                             {"tail", "--format", "jsonl", "--columns", "Time"}}) {
    const TrcRun run = RunTrc(command);
    EXPECT_EQ(run.status, 2) << command[1];
    EXPECT_NE(run.err, "") << command[1];
    EXPECT_EQ(run.err.find("quord.sock"), std::string::npos) << "it went on to look for a service";
  }
}

}  // namespace

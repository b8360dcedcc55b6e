// The written form of settings and sinks, with a real service and real programs.
#include <quor/quor.h>

#include <deque>

#include "live_fixture.h"
#include "support/traced_child.h"

namespace {

using nlohmann::json;
using Settings = std::map<std::string, unsigned>;

class LiveSettingsTest : public LiveProgramsTest {
 protected:
  // By "COMPONENT/CATEGORY".
  static Settings SettingsOfApp(const std::string& app) {
    Settings settings;
    const TrcRun run = RunTrc({"show", app, "--json"});
    EXPECT_EQ(run.status, 0) << run.err;
    if (run.status != 0) return settings;
    const json shown = json::parse(run.out);
    for (const json& component : shown["components"])
      for (const json& category : component["categories"])
        settings[component["name"].get<std::string>() + "/" + category["name"].get<std::string>()] =
            category["settings"];
    return settings;
  }
};

TEST_F(LiveSettingsTest, RulesSetSeveralTracesAtOnceAndTheMostExactHolds) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "10"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const TrcRun run =
      RunTrc({"set", "orders", "net=Max;*=off", "DB/close=info+Stack;Net/Close=off"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(SettingsOfApp("orders"), (Settings{{"Db/Close", 0x201},
                                               {"Db/Connect", 0},
                                               {"Db/Request", 0},
                                               {"Net/Close", 0},
                                               {"Net/Connect", 799},
                                               {"Net/Request", 799}}));
  // What no rule is for stays as it is.
  EXPECT_EQ(RunTrc({"set", "localhost", "orders", "Db=support"}).status, 0);
  EXPECT_EQ(SettingsOfApp("orders").at("Net/Connect"), 799u);
  EXPECT_EQ(SettingsOfApp("orders").at("Db/Close"), 7u);
  EXPECT_EQ(RunTrc({"set", "orders", "net/connect", "info", "STACK"}).status, 0);
  EXPECT_EQ(SettingsOfApp("orders").at("Net/Connect"), 0x201u);
}

TEST_F(LiveSettingsTest, ASinkIsOneWordToo) {
  StartService();
  TrcProcess emit({.arguments = {"emit", "--app", "orders", "--rate", "10"}});
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const std::string path = m_dir.File("own.trc");
  EXPECT_EQ(RunTrc({"sink", "orders", "file:" + path + "?maxsize=5&flush=1"}).status, 0);
  EXPECT_EQ(json::parse(RunTrc({"show", "orders", "--json"}).out)["sink"],
            (json{{"type", "file"}, {"name", path}, {"options", "maxsize=5;flush=1;"}}));
  EXPECT_TRUE(Eventually([&] { return std::filesystem::exists(path); }));
  EXPECT_EQ(RunTrc({"sink", "orders", "socket:localhost"}).status, 0);
  EXPECT_EQ(json::parse(RunTrc({"show", "orders", "--json"}).out)["sink"]["type"], "socket");
}

// trc emit is a traced program.
TrcStart EmitWith(const std::vector<std::string>& environment,
                  const std::vector<std::string>& more = {"--rate", "10"}) {
  TrcStart start{.arguments = {"emit", "--app", "orders"}, .environment = environment};
  start.arguments.insert(start.arguments.end(), more.begin(), more.end());
  return start;
}

TEST_F(LiveSettingsTest, WhatTheEnvironmentSetsIsInForceAndShownAsSuch) {
  StartService();
  const std::string rules = "Net=max;Db/Close=off;Db/Query=Inffo";
  TrcProcess emit(EmitWith({"QUOR_SETTINGS=" + rules}, {"--rate", "10"}));
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  const std::string process = "Process " + std::to_string(emit.Id()) + "  QUOR_SETTINGS";
  EXPECT_EQ(RunTrc({"show", "orders"}).out,
            "Application  orders\n"
            "Sink         socket \"localhost\"\n" +
                process + "=" + rules + "\n" + process +
                ": \"Inffo\" is no setting; did you mean \"Info\"? (in \"Db/Query=Inffo\")\n"
                "Net/Connect  Info, Warn, Error, Developer, Verbose, Location, Stack  from "
                "QUOR_SETTINGS\n"
                "Net/Request  Info, Warn, Error, Developer, Verbose, Location, Stack  from "
                "QUOR_SETTINGS\n"
                "Net/Close    Info, Warn, Error, Developer, Verbose, Location, Stack  from "
                "QUOR_SETTINGS\n"
                "Db/Connect   Info, Warn, Error\n"
                "Db/Request   Info, Warn, Error\n"
                "Db/Close     Off  from QUOR_SETTINGS\n");
  const json shown = json::parse(RunTrc({"show", "orders", "--json"}).out);
  EXPECT_EQ(shown["start"][0], (json{{"process", emit.Id()}, {"text", "QUOR_SETTINGS=" + rules}}));
  EXPECT_EQ(shown["components"][0]["categories"][0]["from"], "QUOR_SETTINGS");
  EXPECT_FALSE(shown["components"][1]["categories"][0].contains("from"));
}

TEST_F(LiveSettingsTest, WhatIsSetLaterWinsAndStaysOverARestartOfTheService) {
  StartService();
  TrcProcess emit(EmitWith({"QUOR_SETTINGS=Net=max;Db=off"}, {"--rate", "1000"}));
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  ASSERT_EQ(RunTrc({"set", "orders", "Net/Close=Info;Db=Error"}).status, 0);
  const Settings wanted = {{"Db/Close", 4},  {"Db/Connect", 4},    {"Db/Request", 4},
                           {"Net/Close", 1}, {"Net/Connect", 799}, {"Net/Request", 799}};
  EXPECT_EQ(SettingsOfApp("orders"), wanted);
  for (const int signal : {SIGTERM, SIGKILL}) {
    StopService(signal);
    StartService();
    EXPECT_TRUE(Eventually([&] { return IsHere("orders") && SettingsOfApp("orders") == wanted; }));
  }
  const std::string text = RunTrc({"show", "orders"}).out;
  EXPECT_NE(text.find("Net/Close    Info\n"), text.npos) << text;
  EXPECT_NE(text.find("Verbose, Location, Stack  from QUOR_SETTINGS\n"), text.npos) << text;
  // The application has them, too.
  const TrcRun tail = RunTrc({"tail", "--format", "jsonl", "--count", "200"});
  for (const json& trace : JsonLinesOf(tail.out)) {
    EXPECT_EQ(trace["component"] == "Db" ? trace["attributes"] : json(4), 4) << trace;
    EXPECT_EQ(trace["stack"] != "", trace["component"] == "Net" && trace["category"] != "Close");
  }
}

// They begin with what the environment says, whatever was prepared for the next instance.
TEST_F(LiveSettingsTest, TheEnvironmentWinsOverWhatWasSetBeforeTheStart) {
  StartService();
  {
    TrcProcess emit(EmitWith({}));
    ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  }
  ASSERT_TRUE(Eventually([&] { return RunTrc({"apps"}).out.empty(); }));
  ASSERT_EQ(RunTrc({"set", "orders", "*=off"}).status, 0);
  TrcProcess emit(EmitWith({"QUOR_SETTINGS=Net=developer"}));
  EXPECT_TRUE(Eventually([&] {
    const Settings settings = SettingsOfApp("orders");
    return settings.at("Net/Close") == 15 && settings.at("Db/Close") == 0;
  }));
}

TEST_F(LiveSettingsTest, OfTwoInstancesEachHasItsOwn) {
  StartService();
  TrcProcess first(EmitWith({"QUOR_SETTINGS=Net=max;Db=off"}));
  TrcProcess second(EmitWith({"QUOR_SETTINGS=Net=Info;Db=off"}));
  ASSERT_TRUE(Eventually([&] {
    const TrcRun run = RunTrc({"apps", "--json"});
    return run.out.find("\"instances\":2") != run.out.npos && IsHere("orders");
  }));
  // What they agree in is shown; for the rest what holds for others.
  EXPECT_EQ(SettingsOfApp("orders").at("Db/Close"), 0u);
  EXPECT_EQ(SettingsOfApp("orders").at("Net/Close"), 7u);
  const std::string text = RunTrc({"show", "orders"}).out;
  for (const TrcProcess* one : {&first, &second})
    EXPECT_NE(text.find("Process " + std::to_string(one->Id()) + "  QUOR_SETTINGS=Net="), text.npos)
        << text;
}

TEST_F(LiveSettingsTest, ASinkOfTheEnvironmentIsShownAndHoldsUntilAnotherIsSet) {
  StartService();
  const std::string path = m_dir.File("own.trc");
  TrcProcess emit(EmitWith({"QUOR_SINK=file:" + path + "?flush=1&maxsize=5"}, {"--rate", "1000"}));
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  for (const int signal : {0, SIGTERM, SIGKILL}) {
    if (signal != 0) {
      StopService(signal);
      StartService();
      ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
    }
    EXPECT_EQ(json::parse(RunTrc({"show", "orders", "--json"}).out)["sink"],
              (json{{"type", "file"},
                    {"name", path},
                    {"options", "flush=1;maxsize=5;"},
                    {"from", "QUOR_SINK"}}));
  }
  const auto size = std::filesystem::file_size(path);
  EXPECT_TRUE(Eventually([&] { return std::filesystem::file_size(path) > size; }));
  EXPECT_EQ(RunTrc({"sink", "orders", "socket:localhost"}).status, 0);
  EXPECT_EQ(RunTrc({"tail", "--count", "10"}).status, 0);
  EXPECT_FALSE(json::parse(RunTrc({"show", "orders", "--json"}).out)["sink"].contains("from"));
  emit.Interrupt();
  EXPECT_EQ(emit.Finish().status, 0);
  EXPECT_EQ(DumpedTraces(path).front()["category"], "Settings");
}

TEST_F(LiveSettingsTest, AMachineThatCannotBeReachedIsToldWithTheSink) {
  StartService();
  TrcProcess emit(EmitWith({"QUOR_SINK=socket:127.0.0.1:1"}));
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  EXPECT_TRUE(Eventually([] {
    return RunTrc({"show", "orders"}).out.find("\n             cannot be reached: ") !=
           std::string::npos;
  })) << RunTrc({"show", "orders"}).out;
  const json why = json::parse(RunTrc({"show", "orders", "--json"}).out)["sinkTrouble"];
  EXPECT_NE(why, "");
  EXPECT_EQ(RunTrc({"apps"}).out,
            "orders  (\"127.0.0.1:1\" cannot be reached: " + why.get<std::string>() + ")\n");
  EXPECT_EQ(json::parse(RunTrc({"apps", "--json"}).out), (json::array({{{"application", "orders"},
                                                                        {"running", true},
                                                                        {"instances", 1},
                                                                        {"sinkTrouble", why}}})));
  EXPECT_EQ(RunTrc({"sink", "orders", "socket:localhost"}).status, 0);
  EXPECT_EQ(RunTrc({"apps"}).out, "orders\n");
  EXPECT_FALSE(json::parse(RunTrc({"show", "orders", "--json"}).out).contains("sinkTrouble"));
}

// A program with the rights of its file's owner is not to be steered by who starts it. The owner is
// root: the leak checker of a build with sanitizers needs its rights.
TEST_F(LiveSettingsTest, ASetUserIdProgramIgnoresBoth) {
  constexpr uid_t kNobody = 65534;
  const std::string path = m_dir.File("own.trc"), copy = m_dir.File("copy");
  std::filesystem::permissions(m_dir.Path(), std::filesystem::perms::all);
  std::filesystem::copy_file(getenv("TRC"), copy);
  const auto run = [&](bool asNobody) {
    const pid_t pid = fork();
    if (pid == 0) {
      setenv("QUOR_SINK", ("file:" + path + "?flush=1").c_str(), 1);
      const int null = open("/dev/null", O_WRONLY);
      dup2(null, STDOUT_FILENO);
      if (asNobody && setuid(kNobody) != 0) _exit(126);
      execl(copy.c_str(), "trc", "emit", "--app", "x", "--count", "1", nullptr);
      _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000;
  };
  EXPECT_EQ(run(false), 0);
  EXPECT_TRUE(std::filesystem::remove(path));
  // Only root can start a program as somebody else.
  if (geteuid() != 0) return;
  ASSERT_EQ(chmod(copy.c_str(), 04755), 0);
  const bool wasThere = std::filesystem::exists("/tmp/quor-0");
  EXPECT_EQ(run(true), 0);
  EXPECT_FALSE(std::filesystem::exists(path));
  if (!wasThere) std::filesystem::remove_all("/tmp/quor-0");
}

// How many of 60 traces of one component its settings let pass.
std::uint64_t TracedBy(const std::string& app, const std::string& component = "Net") {
  const TrcRun run =
      RunTrc({.arguments = {"emit", "--app", app, "--count", "60", "--components", component},
              .environment = {"QUOR_WAIT=10000"}});
  EXPECT_EQ(run.status, 0) << run.err;
  return std::stoull(run.out + run.err);
}

TEST_F(LiveSettingsTest, WhatIsKeptHoldsFromTheFirstTraceOfEachLaterInstance) {
  StartService();
  EXPECT_EQ(RunTrc({"set", "--persist", "orders", "--all", "off"}).status, 0);
  EXPECT_EQ(RunTrc({"apps"}).out, "orders  (does not run; kept: *=off)\n");
  EXPECT_EQ(json::parse(RunTrc({"apps", "--json"}).out),
            json::parse(R"([{"application": "orders", "running": false, "instances": 0,
                            "kept": "*=off", "prepared": false}])"));
  for (int run = 0; run < 5; ++run) EXPECT_EQ(TracedBy("orders"), 0u);
  EXPECT_EQ(TracedBy("others"), 60u);
  // It is added to what is kept, also over a restart.
  EXPECT_EQ(RunTrc({"set", "-p", "orders", "db=support"}).status, 0);
  StopService(SIGKILL);
  StartService();
  EXPECT_EQ(RunTrc({"apps"}).out, "orders  (does not run; kept: *=off;db=support)\n");
  EXPECT_EQ(TracedBy("orders", "Db"), 60u);
  EXPECT_EQ(TracedBy("orders"), 0u);
  ASSERT_TRUE(Eventually([] { return RunTrc({"apps"}).out != "orders\n"; }));
  EXPECT_EQ(RunTrc({"forget", "orders"}).status, 0);
  EXPECT_EQ(TracedBy("orders"), 60u);
  const TrcRun again = RunTrc({"forget", "orders"});
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(again.err, "trc: \"orders\": nothing is kept for such an application\n");
}

// A point that is declared when the program has traced long since, and its settings at that moment.
std::uint32_t SettingsOfNewPoint() {
  struct Named {
    std::string category;
    quor_point point;
  };
  static std::deque<Named> points;
  Named& named = points.emplace_back();
  named.category = "Number " + std::to_string(points.size());
  named.point = QUOR_POINT_INIT("Late", named.category.c_str());
  quor_register(&named.point);
  return __atomic_load_n(&named.point.settings, __ATOMIC_RELAXED);  // its link writes it
}

std::uint64_t NewPointsWith(std::uint32_t settings) {
  std::uint64_t with = 0;
  for (int i = 0; i < 100; ++i) with += SettingsOfNewPoint() == settings ? 1 : 0;
  return with;
}

TEST_F(LiveSettingsTest, WhatIsKeptHoldsForPointsThatAreDeclaredLater) {
  TracedChild app([](TracedChild& self) {
    self.AwaitGo();
    setenv("QUOR_WAIT", "10000", 1);
    quor_application("orders");
    static quor_point first = QUOR_POINT_INIT("Net", "Connect");
    quor_register(&first);
    self.Report(NewPointsWith(0));
    for (const std::uint32_t settings : {799u, 7u}) {
      self.AwaitGo();
      // The change is on its way to this process.
      EXPECT_TRUE(WaitFor([&] { return SettingsOfNewPoint() == settings; }));
      self.Report(NewPointsWith(settings));
    }
    return 0;
  });
  StartService();
  EXPECT_EQ(RunTrc({"set", "--persist", "orders", "Late=off"}).status, 0);
  app.Go();
  EXPECT_EQ(app.Reported(), 100u);
  EXPECT_EQ(RunTrc({"set", "--persist", "orders", "Late=max"}).status, 0);
  app.Go();
  EXPECT_EQ(app.Reported(), 100u);
  EXPECT_EQ(RunTrc({"forget", "orders"}).status, 0);
  app.Go();
  EXPECT_EQ(app.Reported(), 100u);
  EXPECT_EQ(app.Wait(), 0);
}

TEST_F(LiveSettingsTest, WhatIsKeptIsInForceInARunningInstanceToo) {
  StartService();
  TrcProcess emit(EmitWith({"QUOR_SETTINGS=Db=max"}));
  ASSERT_TRUE(Eventually([&] { return IsHere("orders"); }));
  EXPECT_EQ(RunTrc({"set", "--persist", "orders", "DB/close", "info", "Stack"}).status, 0);
  EXPECT_EQ(RunTrc({"apps"}).out, "orders\n");
  EXPECT_NE(RunTrc({"show", "orders"}).out.find("\nKept         DB/close=info+Stack\n"),
            std::string::npos)
      << RunTrc({"show", "orders"}).out;
  EXPECT_EQ(json::parse(RunTrc({"show", "orders", "--json"}).out)["kept"], "DB/close=info+Stack");
  EXPECT_EQ(SettingsOfApp("orders").at("Db/Close"), 0x201u);
  EXPECT_EQ(SettingsOfApp("orders").at("Db/Connect"), 799u);
  EXPECT_EQ(RunTrc({"forget", "orders"}).status, 0);
  EXPECT_EQ(SettingsOfApp("orders").at("Db/Close"), 0x201u) << "to the end of the instance";
  EXPECT_FALSE(json::parse(RunTrc({"show", "orders", "--json"}).out).contains("kept"));
}

TEST_F(LiveSettingsTest, WhatWaitsForTheNextInstanceIsListedAndTakenBack) {
  StartService();
  EXPECT_EQ(TracedBy("orders"), 60u);
  ASSERT_TRUE(Eventually([&] { return RunTrc({"apps"}).out.empty(); }));
  EXPECT_EQ(RunTrc({"set", "orders", "*=off"}).status, 0);
  EXPECT_EQ(RunTrc({"apps"}).out, "orders  (does not run; settings wait for its next instance)\n");
  EXPECT_EQ(RunTrc({"forget", "orders"}).status, 0);
  EXPECT_EQ(RunTrc({"apps"}).out, "");
  EXPECT_EQ(TracedBy("orders"), 60u);
}

}  // namespace

// trc setup with a real service and real applications on this machine.
#include "live_fixture.h"

namespace {

class LiveSetupTest : public LiveProgramsTest {
 protected:
  void SetUp() override { StartService(); }
  static TrcRun Setup(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "setup");
    return RunTrc(std::move(arguments));
  }
  // With the traces Net and Db, each Connect, Close and Request.
  static TrcStart Emit(const std::string& app) {
    return {.arguments = {"emit", "--app", app, "--rate", "200"}};
  }
  bool IsTraced(const std::string& app) {
    return Eventually([&] {
      const TrcRun run = RunTrc({"show", app});
      return run.status == 0 && LinesOf(run.out).size() == 8;
    });
  }
  std::string File(const std::string& lines) {
    return m_dir.File("a.tcf", "TCF Version 3.2\n" + lines);
  }
  static std::string Shown(const std::string& app) { return RunTrc({"show", app}).out; }
  // The line of an application on this machine.
  static std::string Line(const std::string& app, const std::string& what) {
    return _trc_GetHostName() + ": \"" + app + "\": " + what + "\n";
  }
  static std::string Fault(const std::string& what) {
    return "trc: " + _trc_GetHostName() + ": " + what + "\n";
  }
};

TEST_F(LiveSetupTest, APresetGoesToEveryTraceOfEveryApplicationOfThisMachine) {
  TrcProcess orders(Emit("orders")), billing(Emit("billing"));
  ASSERT_TRUE(IsTraced("orders") && IsTraced("billing"));
  const std::pair<std::string, std::string> presets[] = {
      {"max", "Info, Warn, Error, Developer, Verbose, Location, Stack"},
      {"developer", "Info, Warn, Error, Developer"},
      {"support", "Info, Warn, Error"},
      {"off", "Off"}};
  for (const auto& [preset, words] : presets) {
    const TrcRun run = Setup({"--preset", preset});
    const std::string what =
        preset == "off" ? "6 traces, 0 on, 6 changed" : "6 traces, 6 on, 6 changed";
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, Line("billing", what) + Line("orders", what));
    EXPECT_EQ(run.err, "");
    for (const std::string app : {"orders", "billing"})
      EXPECT_NE(Shown(app).find("Net/Request  " + words + "\n"), std::string::npos) << Shown(app);
  }
}

TEST_F(LiveSetupTest, WithoutAPresetOrAFileTheSettingsStayAndAreSubmitted) {
  TrcProcess orders(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  ASSERT_EQ(RunTrc({"set", "orders", "Net/Close", "Warn"}).status, 0);
  ASSERT_EQ(RunTrc({"set", "orders", "Db", "off"}).status, 0);
  const std::string before = Shown("orders");
  const TrcRun run = Setup({});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, Line("orders", "6 traces, 3 on, 0 changed"));
  EXPECT_EQ(Shown("orders"), before);
}

TEST_F(LiveSetupTest, NamedApplicationsAloneAreConfiguredHoweverOftenTheyAreNamed) {
  TrcProcess orders(Emit("orders")), billing(Emit("billing"));
  ASSERT_TRUE(IsTraced("orders") && IsTraced("billing"));
  const std::string before = Shown("billing");
  const TrcRun run = Setup({"-a", "orders", "--app", "orders", "-p", "off"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, Line("orders", "6 traces, 0 on, 6 changed"));
  EXPECT_EQ(Shown("billing"), before);
}

TEST_F(LiveSetupTest, AnApplicationThatIsNotThereDoesNotStopTheOthersAndTheStatusSaysSo) {
  TrcProcess orders(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  TrcRun run = Setup({"--app", "order", "--app", "orders", "--preset", "off"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, Line("orders", "6 traces, 0 on, 6 changed"));
  EXPECT_EQ(run.err, Fault("there is no application \"order\"; did you mean \"orders\"?"));
  // The names of the library are bytes.
  run = Setup({"--app", "Orders", "--preset", "max"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
}

TEST_F(LiveSetupTest, WithoutAnApplicationThereIsNothingToDo) {
  const TrcRun run = Setup({"--preset", "max"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, Fault("there is no application to configure"));
}

TEST_F(LiveSetupTest, AFileChoosesItsApplicationsAndGivesThemItsSettingsButNotItsSinks) {
  TrcProcess orders(Emit("orders")), billing(Emit("billing"));
  ASSERT_TRUE(IsTraced("orders") && IsTraced("billing"));
  const std::string before = Shown("billing");
  const std::string path = File(
      "APP: \"orders\"\nSINK: File \"/nowhere/own.trc\" \"\"\n"
      "TRACE: \"Net\" \"Close\" Warn Stack\nTRACE: \"Db\" \"Close\" Info\n");
  const TrcRun run = Setup({path});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, Line("orders", "6 traces, 2 on, 6 changed"));
  const std::string saved = m_dir.File("saved.tcf");
  ASSERT_EQ(RunTrc({"config", "save", saved, "orders"}).status, 0);
  EXPECT_EQ(RunTrc({"config", "diff", saved, path}).out,
            "  APP: \"orders\"\n- SINK: Socket \"localhost\" \"\"\n"
            "+ SINK: File \"/nowhere/own.trc\" \"\"\n");
  EXPECT_EQ(Shown("billing"), before);
}

TEST_F(LiveSetupTest, ANameTwiceInAFileStartsAfreshAndOnlyNamedOnesOfAFileAreTaken) {
  TrcProcess orders(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  const std::string path = File(
      "APP: \"orders\"\nTRACE: \"Net\" \"Close\" Warn\nAPP: \"billing\"\n"
      "APP: \"orders\"\nTRACE: \"Db\" \"Close\" Info\n");
  TrcRun run = Setup({path, "--app", "orders"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, Line("orders", "6 traces, 1 on, 6 changed"));
  EXPECT_NE(Shown("orders").find("Db/Close     Info\n"), std::string::npos) << Shown("orders");
  EXPECT_EQ(RunTrc({"apps"}).out, "orders\n");
  run = Setup({path, "--app", "shop"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "trc: " + path + ": there is no application \"shop\"\n");
}

TEST_F(LiveSetupTest, TracesThatTheApplicationDoesNotHaveAreToldAndTheStatusSaysSo) {
  TrcProcess orders(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  std::string lines = "APP: \"orders\"\nTRACE: \"Net\" \"Close\" Info\n";
  for (int i = 10; i < 22; ++i) lines += "TRACE: \"Old\" \"" + std::to_string(i) + "\" Info\n";
  const TrcRun run = Setup({File(lines)});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, Line("orders", "6 traces, 1 on, 6 changed"));
  const std::vector<std::string> told = LinesOf(run.err);
  ASSERT_EQ(told.size(), 11U) << run.err;
  EXPECT_EQ(told.front() + "\n", Fault("\"orders\": unknown trace \"Old/10\", passed over"));
  EXPECT_EQ(told.back() + "\n", Fault("\"orders\": and 2 more unknown traces, passed over"));
}

TEST_F(LiveSetupTest, AFileThatCannotBeHadIsToldInTheWindowsWordsAndChangesNothing) {
  TrcProcess orders(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  const std::string before = Shown("orders"), pipe = m_dir.File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto expect = [&](const std::string& path, const std::string& words, int status = 2) {
    const TrcRun run = Setup({path});
    EXPECT_EQ(run.status, status) << path;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "trc: " + path + ": " + words + "\n");
  };
  expect(m_dir.File("none.tcf"), "Error opening file. (No such file or directory)");
  expect(pipe, "Error opening file. (Is a pipe)");
  expect(m_dir.Path(), "Error opening file. (Is a directory)");
  expect(File("APP: \"orders\"\nTRACE: \"Net\" \"Close\" Wran\n"),
         "Invalid format. (line 3: \"Wran\" is no setting: TRACE: \"Net\" \"Close\" Wran)");
  expect(File("APP: \"orders\"\nTRACE: \"Net\" \"Close\" Info\nTRACE: \"Net\" \"*\" Info\n"),
         "Wildcards in component and category names are not supported by Tessera");
  expect(File(""), "there is no application to configure", 1);
  // A terminal would obey it.
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{m_dir.File("a\x1b[2J.tcf")},
        {"--app", "x", m_dir.File("b\x1b[2J.tcf", "bad")}}) {
    const TrcRun run = Setup(words);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err.find('\x1b'), std::string::npos) << run.err;
  }
  EXPECT_EQ(Shown("orders"), before);
}

// Not even the service's memory of who holds an application.
TEST_F(LiveSetupTest, ADryRunSaysTheSameAndChangesNothing) {
  TrcProcess orders(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  ASSERT_EQ(RunTrc({"set", "orders", "Net/Close", "Info"}).status, 0);
  const std::string path = File(
      "APP: \"orders\"\nTRACE: \"Net\" \"Close\" Info\nTRACE: \"N\" \"x\" Info\nAPP: \"nobody\"\n");
  const auto before = State();
  ASSERT_FALSE(before.empty());
  const TrcRun preset = Setup({"--preset", "max", "--dry-run", "--monitor"});
  const TrcRun file = Setup({path, "-n"});
  const TrcRun none = Setup({"--dry-run", "--same"});
  EXPECT_TRUE(State() == before);
  EXPECT_EQ(preset.status, 0) << preset.err;
  EXPECT_EQ(preset.out, Line("orders", "6 traces, 6 on, 6 would change"));
  EXPECT_EQ(file.status, 1);
  EXPECT_EQ(file.out, Line("nobody", "0 traces, 0 on, 0 would change") +
                          Line("orders", "6 traces, 1 on, 5 would change"));
  EXPECT_EQ(file.err, Fault("\"orders\": unknown trace \"N/x\", passed over"));
  EXPECT_EQ(none.out, Line("orders", "6 traces, 6 on, 0 would change"));
  const TrcRun done = Setup({path});
  EXPECT_EQ(done.status, file.status);
  EXPECT_EQ(done.out, Line("nobody", "0 traces, 0 on, 0 changed") +
                          Line("orders", "6 traces, 1 on, 5 changed"));
  EXPECT_FALSE(State() == before) << "the comparison sees no change at all";
}

TEST_F(LiveSetupTest, ADryRunStartsNoService) {
  StopService(SIGTERM);
  const TrcRun run =
      RunTrc({.arguments = {"setup", "--dry-run"}, .environment = {"QUOR_AUTOSTART=1"}});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "trc: Error trying to connect to local configuration server. (no trace service runs "
            "here; start it with quord (" +
                m_dir.File("quor/quord.sock") + ": No such file or directory))\n");
  EXPECT_EQ(ServicePid(), 0);
}

TEST_F(LiveSetupTest, AnApplicationWithoutTracesHasNoneToSet) {
  const QuorPtr<trace_App_i> held = trace_App_i::Create("", "early");
  ASSERT_TRUE(held);
  const TrcRun run = Setup({"--preset", "max"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, Line("early", "0 traces, 0 on, 0 changed"));
  EXPECT_EQ(run.err, Fault("\"early\" has no traces yet"));
  EXPECT_EQ(Setup({}).status, 0) << "nothing was asked for";
}

// What a user types to watch an application that is restarted meanwhile.
TEST_F(LiveSetupTest, AMonitorPrintsTheTracesAndHoldsTheSettingsUntilItIsInterrupted) {
  std::optional<TrcProcess> orders(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  TrcProcess monitor({.arguments = {"setup", "--app", "orders", "--preset", "max", "--monitor"}});
  const std::string line = Line("orders", "6 traces, 6 on, 6 changed");
  EXPECT_EQ(monitor.ReadOut(line.size() + 400).substr(0, line.size()), line);
  orders.reset();
  ASSERT_TRUE(Eventually([] {
    return RunTrc({"apps", "--json"}).out.find("\"instances\":0") != std::string::npos;
  }));
  orders.emplace(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  EXPECT_NE(Shown("orders").find("Stack\n"), std::string::npos) << Shown("orders");
  monitor.Interrupt();
  const TrcRun run = monitor.Finish();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  orders.reset();
  ASSERT_TRUE(Eventually([] { return RunTrc({"apps"}).out.empty(); }));
  orders.emplace(Emit("orders"));
  ASSERT_TRUE(IsTraced("orders"));
  EXPECT_EQ(Shown("orders").find("Stack\n"), std::string::npos) << "the settings have ended";
}

TEST_F(LiveSetupTest, SettingsWaitForAnApplicationThatDoesNotRun) {
  {
    TrcProcess orders(Emit("orders"));
    ASSERT_TRUE(IsTraced("orders"));
  }
  ASSERT_TRUE(Eventually([] { return RunTrc({"apps"}).out.empty(); }));
  ASSERT_EQ(Setup({File("APP: \"orders\"\nTRACE: \"Db\" \"Close\" Error\n")}).status, 0);
  TrcProcess orders(Emit("orders"));
  ASSERT_TRUE(Eventually([&] { return RunTrc({"apps"}).out == "orders\n"; }));
  EXPECT_NE(Shown("orders").find("Db/Close     Error\n"), std::string::npos) << Shown("orders");
}

TEST_F(LiveSetupTest, MoreApplicationsThanHandlesAreAllConfigured) {
  std::string lines;
  for (int i = 0; i < 1100; ++i) lines += "APP: \"app " + std::to_string(i) + "\"\n";
  const std::string path = File(lines);
  TrcRun run = Setup({path});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(LinesOf(run.out).size(), 1100U);
  TrcProcess monitor({.arguments = {"setup", path, "--monitor"}});
  ASSERT_EQ(monitor.ReadOut(run.out.size()), run.out);
  monitor.ReadErrUntil("no traces come");
  monitor.Interrupt();
  run = monitor.Finish();
  EXPECT_EQ(run.status, 0) << run.err;
}

TEST_F(LiveSetupTest, AnInterruptEndsItBetweenTwoApplications) {
  std::string lines;
  for (int i = 0; i < 3000; ++i) lines += "APP: \"app " + std::to_string(i) + "\"\n";
  TrcProcess setup({.arguments = {"setup", File(lines)}});
  setup.ReadOut(1);
  setup.Interrupt();
  const TrcRun run = setup.Finish();
  EXPECT_EQ(run.status, 130);
  EXPECT_EQ(run.err, "trc: interrupted: only the applications that have a line were configured\n");
  EXPECT_LT(LinesOf(run.out).size(), 3000U);
  EXPECT_EQ(run.out.back(), '\n');
}

TEST_F(LiveSetupTest, AServiceThatDiesInTheMiddleIsToldOnceAndSoonGivenUp) {
  std::string lines;
  for (int i = 0; i < 3000; ++i) lines += "APP: \"app " + std::to_string(i) + "\"\n";
  TrcProcess setup({.arguments = {"setup", File(lines)}});
  setup.ReadOut(1);
  const auto began = std::chrono::steady_clock::now();
  StopService(SIGKILL);
  const TrcRun run = setup.Finish();
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(20));
  EXPECT_EQ(run.status, 2);
  const std::vector<std::string> told = LinesOf(run.err);
  ASSERT_EQ(told.size(), 2U) << run.err;
  EXPECT_NE(told[1].find(": the machine does not answer, and "), std::string::npos) << run.err;
  EXPECT_NE(told[1].find(" more applications could not be configured"), std::string::npos);
}

TEST_F(LiveSetupTest, WrongUseIsRefusedWithTheHelpOfTheCommand) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"--preset", "loud"}, "--preset: \"loud\" is none of off, support, developer, max"},
      {{"--preset", "Max"}, "did you mean \"max\"?"},
      {{"a.tcf", "--preset", "max"}, "FILE excludes --preset"},
      {{"a.tcf", "b.tcf"}, "\"b.tcf\" is one argument too many"},
      {{""}, "setup: the name of the file is empty"},
      {{"--machine", ""}, "setup: the name of a machine is empty"}};
  for (const auto& [arguments, words] : cases) {
    const TrcRun run = Setup(arguments);
    EXPECT_EQ(run.status, 2) << words;
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find(words), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("Try 'trc setup --help'.\n"), std::string::npos) << run.err;
  }
}

}  // namespace

// trc setup with this machine and others.
#include "quor/client/trace_config.h"
#include "quor/client/trace_thread.h"
#include "quor/live/fleet.h"

namespace {

class SetupMachinesTest : public testing::Test {
 protected:
  void SetUp() override { m_fleet.Start(); }
  // For these machines, by their numbers.
  TrcRun Setup(const std::vector<int>& machines, const std::vector<std::string>& more,
               const std::vector<std::string>& environment = {}) {
    return RunTrc({.arguments = Line(machines, more), .environment = environment});
  }
  std::vector<std::string> Line(const std::vector<int>& machines,
                                const std::vector<std::string>& more) {
    std::vector<std::string> words = {"setup"};
    for (const int machine : machines) {
      words.emplace_back("--machine");
      words.push_back(m_fleet.Name(machine));
    }
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }
  std::string Told(int machine, const std::string& app, const std::string& what) {
    return m_fleet.Name(machine) + ": \"" + app + "\": " + what + "\n";
  }
  std::string File(const std::string& lines) {
    return m_folder.File("a.tcf", "TCF Version 3.2\n" + lines);
  }
  std::string ManyApps(int count) {
    std::string lines;
    for (int i = 0; i < count; ++i) lines += "APP: \"app " + std::to_string(i) + "\"\n";
    return File(lines);
  }
  static std::size_t LinesWith(const std::string& text, const std::string& words) {
    const std::vector<std::string> lines = LinesOf(text);
    return static_cast<std::size_t>(std::count_if(
        lines.begin(), lines.end(),
        [&](const std::string& line) { return line.find(words) != std::string::npos; }));
  }

  const TempDir m_folder;
  Fleet m_fleet;
};

}  // namespace

TEST_F(SetupMachinesTest, EachMachineIsConfiguredInTheOrderOfTheirNames) {
  TrcProcess here(m_fleet.Emit(0, "orders")), one(m_fleet.Emit(1, "orders")),
      two(m_fleet.Emit(2, "billing"));
  ASSERT_TRUE(m_fleet.IsTraced(0, "orders") && m_fleet.IsTraced(1, "orders") &&
              m_fleet.IsTraced(2, "billing"));
  const TrcRun run = Setup({2, 0, 1}, {"--preset", "off"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, Told(1, "orders", "6 traces, 0 on, 6 changed") +
                         Told(2, "billing", "6 traces, 0 on, 6 changed") +
                         Told(0, "orders", "6 traces, 0 on, 6 changed"));
  EXPECT_EQ(m_fleet.Shown().find("Info"), std::string::npos) << m_fleet.Shown();
}

TEST_F(SetupMachinesTest, AMachineThatIsAwayIsToldInTheWindowsWordsAndTheOthersGoOn) {
  TrcProcess one(m_fleet.Emit(1, "orders"));
  ASSERT_TRUE(m_fleet.IsTraced(1, "orders"));
  m_fleet.Service(2).Stop();
  const TrcRun run = Setup({2, 1}, {"--preset", "off"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, Told(1, "orders", "6 traces, 0 on, 6 changed"));
  const std::string words = "trc: Error trying to connect to configuration server on " +
                            m_fleet.Name(2) + " (" + m_fleet.Name(2) + ": Connection refused";
  EXPECT_EQ(run.err.substr(0, words.size()), words);
  EXPECT_EQ(LinesOf(run.err).size(), 1U) << run.err;
  EXPECT_EQ(Setup({2}, {}).out, "");
}

TEST_F(SetupMachinesTest, ANameTwiceIsToldInTheWindowsWordsAndTakenOnce) {
  TrcProcess here(m_fleet.Emit(0, "orders"));
  ASSERT_TRUE(m_fleet.IsTraced(0, "orders"));
  const TrcRun run = Setup({0}, {"-m", "LocalHost", "-m", "localhost", "--preset", "off"});
  EXPECT_EQ(run.status, 0) << "the machine was configured";
  EXPECT_EQ(run.out, Told(0, "orders", "6 traces, 0 on, 6 changed"));
  EXPECT_EQ(run.err,
            "trc: LocalHost: Duplicate entry!  Machine not added.\n"
            "trc: localhost: Duplicate entry!  Machine not added.\n");
}

TEST_F(SetupMachinesTest, ARoleThatMayNotConfigureChangesNothingThere) {
  TrcProcess here(m_fleet.Emit(0, "orders")), one(m_fleet.Emit(1, "orders"));
  ASSERT_TRUE(m_fleet.IsTraced(0, "orders") && m_fleet.IsTraced(1, "orders"));
  const std::string before = m_fleet.Shown(1, "orders");
  const TrcRun run = Setup({0, 1}, {"--preset", "off"}, {"QUOR_KEYS=" + m_fleet.Keys("monitor")});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, Told(0, "orders", "6 traces, 0 on, 6 changed"));
  EXPECT_NE(run.err.find("Error trying to connect to configuration server on " + m_fleet.Name(1)),
            std::string::npos)
      << run.err;
  EXPECT_NE(run.err.find("the certificate does not allow to configure"), std::string::npos);
  EXPECT_EQ(m_fleet.Shown(1, "orders"), before);
}

TEST_F(SetupMachinesTest, AnApplicationThatOnlyOneMachineHasIsToldForTheOthers) {
  TrcProcess one(m_fleet.Emit(1, "orders")), two(m_fleet.Emit(2, "billing"));
  ASSERT_TRUE(m_fleet.IsTraced(1, "orders") && m_fleet.IsTraced(2, "billing"));
  const TrcRun run = Setup({1, 2, 0}, {"--app", "orders", "--preset", "off"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, Told(1, "orders", "6 traces, 0 on, 6 changed"));
  EXPECT_EQ(run.err, "trc: " + m_fleet.Name(2) + ": there is no application \"orders\"\n" +
                         "trc: localhost: there is no application to configure\n");
}

// The traces of an application have other numbers where they come in another order.
TEST_F(SetupMachinesTest, TheSameGoesToTheTracesOfTheSameNames) {
  TrcProcess one(m_fleet.Emit(1, "orders", "Net,Db")), two(m_fleet.Emit(2, "orders", "Db,Net"));
  ASSERT_TRUE(m_fleet.IsTraced(1, "orders") && m_fleet.IsTraced(2, "orders"));
  ASSERT_EQ(RunTrc({"set", m_fleet.Name(1), "orders", "Net/Close", "max"}).status, 0);
  ASSERT_EQ(RunTrc({"set", m_fleet.Name(1), "orders", "Db", "off"}).status, 0);
  ASSERT_EQ(RunTrc({"sink", m_fleet.Name(1), "orders", "--server", m_fleet.Name(1)}).status, 0);
  const std::vector<std::string> dry = {"--same", "--dry-run"};
  const TrcRun would = Setup({2, 1}, dry);
  EXPECT_EQ(would.status, 0) << would.err;
  EXPECT_EQ(would.out, Told(1, "orders", "6 traces, 3 on, 0 would change") +
                           Told(2, "orders",
                                "6 traces, 3 on, 4 would change, sink would be socket \"" +
                                    m_fleet.Name(1) + "\""));
  const TrcRun run = Setup({2, 1}, {"--same"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            Told(1, "orders", "6 traces, 3 on, 0 changed") +
                Told(2, "orders",
                     "6 traces, 3 on, 4 changed, sink now socket \"" + m_fleet.Name(1) + "\""));
  std::vector<std::string> first = LinesOf(m_fleet.Shown(1, "orders")),
                           second = LinesOf(m_fleet.Shown(2, "orders"));
  std::sort(first.begin(), first.end());
  std::sort(second.begin(), second.end());
  EXPECT_EQ(first, second);
}

TEST_F(SetupMachinesTest, TracesThatTheFirstMachineDoesNotKnowAreOffOnTheOthersAndTold) {
  TrcProcess one(m_fleet.Emit(1, "orders", "Net")), two(m_fleet.Emit(2, "orders", "Net,Db")),
      other(m_fleet.Emit(2, "shop", "Net"));
  ASSERT_TRUE(m_fleet.IsTraced(1, "orders", 3) && m_fleet.IsTraced(2, "orders") &&
              m_fleet.IsTraced(2, "shop", 3));
  const TrcRun run = Setup({1, 2}, {"--same", "--preset", "max"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, Told(1, "orders", "3 traces, 3 on, 3 changed") +
                         Told(1, "shop", "0 traces, 0 on, 0 changed") +
                         Told(2, "orders", "6 traces, 3 on, 6 changed") +
                         Told(2, "shop", "3 traces, 0 on, 3 changed"));
  EXPECT_EQ(
      run.err,
      "trc: " + m_fleet.Name(1) + ": \"shop\" has no traces yet\n" + "trc: " +
          Told(2, "orders", "3 traces off, because " + m_fleet.Name(1) + " does not know them") +
          "trc: " +
          Told(2, "shop", "3 traces off, because " + m_fleet.Name(1) + " does not know them"));
}

TEST_F(SetupMachinesTest, AFileGoesToEachMachine) {
  TrcProcess here(m_fleet.Emit(0, "orders")), one(m_fleet.Emit(1, "orders", "Db,Net"));
  ASSERT_TRUE(m_fleet.IsTraced(0, "orders") && m_fleet.IsTraced(1, "orders"));
  const std::string path =
      File("APP: \"orders\"\nSINK: Socket \"localhost\" \"\"\nTRACE: \"Net\" \"Close\" Warn\n");
  for (const std::vector<std::string>& more :
       {std::vector<std::string>{path}, std::vector<std::string>{path, "--same"}}) {
    ASSERT_EQ(RunTrc({"set", "orders", "--all", "support"}).status, 0);
    const TrcRun run = Setup({0, 1}, more);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(LinesOf(run.out).back() + "\n", Told(0, "orders", "6 traces, 1 on, 6 changed"));
    EXPECT_EQ(RunTrc({"config", "diff", m_fleet.Name(0), path}).out, "");
    EXPECT_EQ(RunTrc({"config", "diff", m_fleet.Name(1), path}).out, "");
  }
}

TEST_F(SetupMachinesTest, AMachineThatDiesInTheMiddleDoesNotStopTheOthers) {
  constexpr int kApps = 900;
  TrcProcess setup({.arguments = Line({0, 1, 2}, {ManyApps(kApps)})});
  setup.ReadOut(1);  // all machines are connected, and the first one is configured
  m_fleet.Service(2).Kill();
  const TrcRun run = setup.Finish();
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(LinesWith(run.out, m_fleet.Name(1) + ": "), kApps + 0U);
  EXPECT_LT(LinesWith(run.out, m_fleet.Name(2) + ": "), kApps + 0U);
  EXPECT_EQ(LinesWith(run.out, "localhost: "), kApps + 0U);
  EXPECT_EQ(LinesWith(run.err, "Error trying to connect to configuration server.") +
                LinesWith(run.err, "the machine has not accepted the change of"),
            1U)
      << run.err;
  EXPECT_LE(LinesOf(run.err).size(), 2U) << run.err;
}

TEST_F(SetupMachinesTest, AMachineThatStandsStillIsGivenUpAfterItsDeadline) {
  TrcProcess here(m_fleet.Emit(0, "orders"));
  ASSERT_TRUE(m_fleet.IsTraced(0, "orders"));
  kill(m_fleet.Service(1).Pid(), SIGSTOP);
  const auto began = std::chrono::steady_clock::now();
  const TrcRun run = Setup({1, 0}, {"--preset", "off"});
  kill(m_fleet.Service(1).Pid(), SIGCONT);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, Told(0, "orders", "6 traces, 0 on, 6 changed"));
  EXPECT_NE(run.err.find("Error trying to connect to configuration server on " + m_fleet.Name(1)),
            std::string::npos)
      << run.err;
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(20));
}

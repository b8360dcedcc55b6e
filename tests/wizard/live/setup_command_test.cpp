// The wizard over real services, and trc setup with the same choices: both leave the same behind.
#include <filesystem>
#include <map>
#include <tuple>

#include "quor/live/fleet.h"
#include "support/wizard_fixture.h"

namespace {

class SetupCommandTest : public WizardFixture {
 protected:
  SetupCommandTest() { m_program.m_client = ConfigClient{}; }
  ~SetupCommandTest() override { std::filesystem::current_path(m_folderBefore); }

  void SetUp() override {
    m_fleet.Start();
    for (const auto& [machine, app, components] : m_apps)
      m_running.push_back(std::make_unique<TrcProcess>(m_fleet.Emit(machine, app, components)));
    for (const auto& [machine, app, components] : m_apps) {
      const auto commas = std::count(components.begin(), components.end(), ',');
      ASSERT_TRUE(m_fleet.IsTraced(machine, app, 3 * (1 + static_cast<std::size_t>(commas))));
    }
    Begin();
    m_before = Shown();
  }
  // All that runs.
  std::string Shown() {
    std::string text;
    for (const auto& [machine, app, components] : m_apps)
      text += m_fleet.Name(machine) + "\n" + m_fleet.Shown(machine, app);
    return text;
  }
  // What all machines have before somebody configures them.
  void Begin() {
    for (int machine = 0; machine < 3; ++machine) {
      const std::string name = m_fleet.Name(machine);
      ASSERT_EQ(RunTrc({"set", name, "orders", "--all", "Warn", "Stack"}).status, 0);
      ASSERT_EQ(RunTrc({"set", name, "orders", "Net/Close", "Error"}).status, 0);
      ASSERT_EQ(RunTrc({"sink", name, "orders", "--server", name}).status, 0);
    }
    ASSERT_EQ(RunTrc({"set", "billing", "--all", "off"}).status, 0);
    ASSERT_EQ(RunTrc({"set", m_fleet.Name(2), "shop", "--all", "support"}).status, 0);
  }
  // "AA" and "BB" in the words stand for the other machines.
  std::string Named(std::string words) {
    for (const auto& [mark, machine] : {std::pair{"AA", 1}, {"BB", 2}})
      for (std::size_t at; (at = words.find(mark)) != std::string::npos;)
        words.replace(at, 2, m_fleet.Name(machine));
    return words;
  }
  void Set(unsigned settings) {
    FakeReportList& rows = Window().traces.Rows();
    for (int row = 0; row < rows.ItemCount(); ++row) rows.Click(row, row > 0);
    Window().traces.PressPreset(settings);
  }
  // Gives each row of the page in front the settings of its line, or none.
  void Set(const std::map<std::string, unsigned>& lines) {
    FakeReportList& rows = Window().traces.Rows();
    for (int row = 0; row < rows.ItemCount(); ++row) {
      const std::string text = rows.Text(row);
      const auto line = lines.find(text.substr(0, text.rfind('|')));
      rows.Click(row);
      Window().traces.PressPreset(line == lines.end() ? 0 : line->second);
    }
  }
  // What the machines have after the wizard's Finish. Its windows are closed then.
  std::string AfterFinish() {
    Walk("finish");
    EXPECT_EQ(Where(), "ended");
    EXPECT_EQ(Boxes(), "");
    const std::string shown = Shown();
    Close();
    for (std::size_t at = 0; at < m_program.Configs(); ++at)
      m_program.Config(at).GetApplications()->m_apps.clear();
    return shown;
  }
  // What they have after this command, from the same beginning.
  std::string AfterSetup(const std::string& words, int status = 0) {
    Begin();
    EXPECT_EQ(Shown(), m_before);
    std::vector<std::string> arguments = {"setup"};
    std::istringstream in(Named(words));
    for (std::string word; in >> word;) arguments.push_back(word);
    const TrcRun run = RunTrc(arguments);
    EXPECT_EQ(run.status, status) << run.err;
    return Shown();
  }

  // Machine, name and components. The same ones stand in another order on another machine.
  const std::tuple<int, std::string, std::string> m_apps[5] = {{0, "orders", "Net,Db"},
                                                               {0, "billing", "Db"},
                                                               {1, "orders", "Net,Db"},
                                                               {2, "orders", "Db,Net,Disk"},
                                                               {2, "shop", "Cart"}};
  const std::filesystem::path m_folderBefore = std::filesystem::current_path();
  Fleet m_fleet;
  std::vector<std::unique_ptr<TrcProcess>> m_running;
  std::string m_before;
};

}  // namespace

TEST_F(SetupCommandTest, OneApplicationOfThisMachineAtEachPreset) {
  for (const auto& [preset, settings] :
       {std::pair{"off", 0U}, {"support", 7U}, {"developer", 15U}, {"max", 799U}}) {
    Close();
    Walk("next next local next pick:orders next");
    Set(settings);
    Walk("next");
    const std::string finished = AfterFinish();
    EXPECT_NE(finished, m_before);
    EXPECT_EQ(AfterSetup("--app orders --preset " + std::string(preset)), finished);
  }
}

TEST_F(SetupCommandTest, AllApplicationsOfThisMachineAsTheyAre) {
  Walk("next next local next pick:billing,orders next next next");
  const std::string finished = AfterFinish();
  EXPECT_EQ(finished, m_before);
  EXPECT_EQ(AfterSetup(""), finished);
}

TEST_F(SetupCommandTest, SeveralMachinesEachWithItsOwn) {
  Walk(Named("next next remote next add:AA add:BB each next pick:orders next"));
  Set(799);
  Walk("next pick:orders next");
  Set(799);
  Walk("next");
  const std::string finished = AfterFinish();
  EXPECT_NE(finished, m_before);
  EXPECT_EQ(AfterSetup("--machine AA --machine BB --app orders --preset max"), finished);
}

// The traces of the second machine have other numbers, and it has more of them.
TEST_F(SetupCommandTest, SeveralMachinesConfiguredTheSame) {
  Walk(Named("next next remote next add:BB add:AA same next pick:orders,shop next next next"));
  const std::string finished = AfterFinish();
  EXPECT_NE(finished, m_before);
  EXPECT_EQ(AfterSetup("--same --machine AA --machine BB", 1), finished);
}

TEST_F(SetupCommandTest, AFileWithItsSettingsChosenOnThePageOfTraces) {
  const std::string path = m_folder.File("a.tcf",
                                         "TCF Version 3.2\nAPP: \"orders\"\n"
                                         "SINK: File \"/nowhere/own.trc\" \"\"\n"
                                         "TRACE: \"Net\" \"Close\" Info\n"
                                         "TRACE: \"Db\" \"Connect\" Warn Stack\n");
  std::filesystem::current_path(m_folder.Path());  // as the dialog leaves it
  Walk(Named("next next remote next add:AA add:localhost each next"));
  for (int machine = 0; machine < 2; ++machine) {
    m_host.AnswerFileDialog(path);
    Sheet().ApplicationPage().OnLoad();
    m_host.RunPosted();
    EXPECT_EQ(FakeWizard::Shown(Window().applications), "*orders");
    Walk("next");
    Set({{"Net|Close", 1}, {"Db|Connect", 0x202}});
    Walk("next");
  }
  const std::string finished = AfterFinish();
  EXPECT_NE(finished, m_before);
  EXPECT_EQ(AfterSetup("--machine localhost --machine AA " + path), finished);
}

// The wizard's window over real services: whole walks, and what happens when a machine refuses or
// dies, or the user leaves.
#include <filesystem>
#include <string>
#include <vector>

#include "apps/demo/demo_process.h"
#include "wizard/ui/live/wizard_live_fixture.h"

namespace {

class WizardLiveTest : public WizardLive {
 protected:
  // The services' keys are those of the first; the user's certificate may configure.
  void MakeKeys() {
    ASSERT_EQ(m_quords[0].Run({"keys", "init", "--host", "here"}), 0);
    m_keys = m_quords[0].Folder().File("ada");
    ASSERT_EQ(m_quords[0].Run({"keys", "issue", "ada", "--role", "configure", "--out", m_keys}), 0);
    for (const std::size_t other : {1U, 2U})
      std::filesystem::copy(m_quords[0].KeysFolder(), m_quords[other].KeysFolder());
  }
  // Starts a service and an application of this name on it. The environment is this machine's.
  void Run(std::size_t number, const std::string& app) {
    QuordProcess& quord = m_quords[number];
    setenv("QUOR_SOCKET", quord.SocketPath().c_str(), 1);
    quord.Start(number == 0 ? std::vector<std::string>{}
                            : std::vector<std::string>{"--listen", "127.0.0.1:0"});
    m_demos.push_back(
        std::make_unique<DemoProcess>(std::vector<std::string>{"--name", app, "--rate", "200"}));
    setenv("QUOR_SOCKET", m_quords[0].SocketPath().c_str(), 1);
    if (!m_keys.empty()) setenv("QUOR_KEYS", m_keys.c_str(), 1);
    ASSERT_TRUE(Until([&] { return Settings(Machine(number), app) != ""; }));
  }
  std::string Machine(std::size_t number) const {
    return number == 0 ? "localhost" : "127.0.0.1:" + m_quords[number].Port();
  }
  // "7 7 7": the settings of the application, as another client sees them; it opens nothing.
  static std::string Settings(const std::string& machine, const std::string& app) {
    const QuorPtr<trace_App_i> other = trace_App_i::Look(machine, app);
    std::string text;
    if (!other) return text;
    for (const trace_Component_t& component : other->GetTraceMap())
      for (const trace_Category_t& trace : component.categories)
        text += (text.empty() ? "" : " ") + std::to_string(other->GetSettings(trace.traceId));
    return text;
  }
  static bool AllAre(const std::string& machine, const std::string& app, unsigned settings) {
    const std::string word = std::to_string(settings);
    std::string text = Settings(machine, app), rest = text;
    for (std::size_t at; (at = rest.find(word)) != rest.npos;) rest.erase(at, word.size());
    return !text.empty() && rest.find_first_not_of(' ') == rest.npos;
  }
  // All that the machine says of itself.
  static std::string State(const std::string& machine) {
    const QuorPtr<trace_Config_i> config = trace_Config_i::Create(machine);
    std::string text;
    if (!config) return text;
    for (const std::string& app : config->GetAppList()) {
      trc_SinkTypes_e type{};
      std::string name, options;
      if (const QuorPtr<trace_App_i> look = trace_App_i::Look(machine, app))
        look->GetSink(type, name, options);
      text += app + " " + std::to_string(config->GetInstances(app)) + " " + std::to_string(type) +
              name + options + ": " + Settings(machine, app) + "\n";
    }
    return text;
  }
  // The wizard, whose user calls the machines "m0", "m1" and "m2".
  void RunWizard(const std::function<void(WizardUser&)>& act) {
    WizardLive::RunWizard([&](WizardUser& user) {
      for (const std::size_t number : {0U, 1U, 2U})
        if (m_quords[number].Pid() > 0) user.Call("m" + std::to_string(number), Machine(number));
      act(user);
    });
  }
  // On each of so many machines in turn: all applications, and these settings for all traces.
  static void Configure(WizardUser& user, const std::vector<std::string>& presets) {
    for (const std::string& preset : presets) {
      user.Do("pick:" + user.Items("applications") + " next");
      user.Do("give:" + preset + " next");
    }
  }

  QuordProcess m_quords[3];
  std::string m_keys;
  std::vector<std::unique_ptr<DemoProcess>> m_demos;
};

TEST_F(WizardLiveTest, TheLocalWalkEndsWithAConfigurationAndAMonitorOfThisMachine) {
  Run(0, "orders");
  Start();
  RunWizard([](WizardUser& user) {
    user.Do("next next next");
    EXPECT_TRUE(user.Sees("Applications on THIS"));
    EXPECT_FALSE(user.CanPress(SheetButton::Next));
    user.Do("pick:orders next");
    EXPECT_TRUE(user.Sees("Traces for orders"));
    user.Do("give:max");
    EXPECT_FALSE(AllAre("localhost", "orders", 799)) << "nothing goes to a machine before Finish";
    user.Do("next");
    EXPECT_TRUE(user.Sees("Finish"));
    user.Do("finish");
  });
  EXPECT_TRUE(Until([] { return AllAre("localhost", "orders", 799); }));
  EXPECT_EQ(Windows(), (std::vector<std::string>{"Configuration on " + _trc_GetHostName(),
                                                 "Traces sent to " + _trc_GetHostName()}));
  ASSERT_EQ(Frame().Children().size(), 2U);
  EXPECT_TRUE(Until([this] { return View(*Frame().Children()[1])->List().ItemCount() > 0; }));
}

TEST_F(WizardLiveTest, ThreeMachinesGetWhatWasChosenForEachAndARefusingOneIsNotAdded) {
  ASSERT_NO_FATAL_FAILURE(MakeKeys());
  for (const std::size_t number : {0U, 1U, 2U}) Run(number, "app" + std::to_string(number));
  Start();
  RunWizard([](WizardUser& user) {
    user.Do("next next remote next");
    EXPECT_FALSE(user.CanPress(SheetButton::Next));
    user.Do("add:m0 add:m1 add:m2 add:127.0.0.1:1");
    EXPECT_EQ(user.Boxes(), "Error trying to connect to configuration server on 127.0.0.1:1");
    user.Do("add:m1");
    EXPECT_EQ(user.Boxes(), "Duplicate entry!  Machine not added.");
    EXPECT_EQ(user.Items("machines").find("127.0.0.1:1"), std::string::npos);
    user.Do("next");
    Configure(user, {"developer", "max", "developer"});
    EXPECT_TRUE(user.Sees("Finish"));
    user.Do("finish");
  });
  EXPECT_EQ(Windows().size(), 4U) << "three configurations and a monitor";
  std::vector<std::string> machines = {Machine(0), Machine(1), Machine(2)}, ordered = machines;
  std::sort(ordered.begin(), ordered.end());
  for (std::size_t number = 0; number < 3; ++number) {
    const unsigned wanted = machines[number] == ordered[1] ? 799 : 15;
    EXPECT_TRUE(Until([&] {
      return AllAre(machines[number], "app" + std::to_string(number), wanted);
    })) << machines[number]
        << ": " << State(machines[number]);
  }
}

TEST_F(WizardLiveTest, AMachineThatDiesBetweenTwoPagesIsToldAndTheOthersAreConfigured) {
  ASSERT_NO_FATAL_FAILURE(MakeKeys());
  for (const std::size_t number : {0U, 1U}) Run(number, "app" + std::to_string(number));
  Start();
  RunWizard([this](WizardUser& user) {
    user.Do("next next remote next add:m0 add:m1 next");
    Configure(user, {"max", "max"});
    EXPECT_TRUE(user.Sees("Finish"));
    m_quords[1].Kill();
    user.Do("finish");
    EXPECT_EQ(user.Boxes(), "Error trying to connect to configuration server.");
  });
  EXPECT_TRUE(Until([] { return AllAre("localhost", "app0", 799); }));
  EXPECT_EQ(Windows(), (std::vector<std::string>{"Configuration on localhost",
                                                 "Traces sent to " + _trc_GetHostName()}));
}

TEST_F(WizardLiveTest, CancelOnEachPageLeavesAllMachinesAndWindowsAsTheyWere) {
  ASSERT_NO_FATAL_FAILURE(MakeKeys());
  for (const std::size_t number : {0U, 1U, 2U}) Run(number, "app" + std::to_string(number));
  Start();
  const auto all = [this] { return State(Machine(0)) + State(Machine(1)) + State(Machine(2)); };
  const std::string before = all();
  std::string last;
  for (int pages = 0; pages < 11; ++pages) {
    std::string left;
    RunWizard([&](WizardUser& user) {
      for (int page = 0; page < pages; ++page) {
        if (user.Where() == "Networking") user.Do("remote");
        if (user.Where() == "Machines") user.Do("add:m0 add:m1 add:m2");
        if (user.Where().starts_with("Applications")) user.Do("pick:" + user.Items("applications"));
        if (user.Where().starts_with("Traces")) user.Do("give:max");
        user.Do("next");
      }
      left = user.Where();
      user.Do("cancel");
      EXPECT_EQ(user.Where(), "cancelled");
    });
    EXPECT_TRUE(Until([&] { return all() == before; })) << left << "\n" << all() << before;
    EXPECT_TRUE(Windows().empty()) << left;
    last = left;
  }
  EXPECT_EQ(last, "Finish");
}

}  // namespace

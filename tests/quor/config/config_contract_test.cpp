// The configuration's contracts for the fake machine, and for the real classes with a real service
// and a real application; and what only the real ones do.
#include "support/config_contract.h"

#include <quor/quor.h>

#include <array>
#include <future>
#include <memory>
#include <utility>

#include "apps/quord/quord_process.h"
#include "support/config_life_contract.h"
#include "support/fake_machine.h"

namespace {

class FakeMachineHarness {
 public:
  QuorPtr<trace_Config_i> Connect(std::string* why = nullptr) {
    return QuorPtr<trace_Config_i>(m_machine.Connect("localhost", why));
  }
  QuorPtr<trace_App_i> Open(const std::string& app, std::string* why = nullptr) {
    return QuorPtr<trace_App_i>(m_machine.Open(app, why));
  }
  QuorPtr<trace_App_i> Look(const std::string& app, std::string* why = nullptr) {
    return QuorPtr<trace_App_i>(m_machine.Look(app, why));
  }
  void Start() {
    if (m_machine.m_apps.contains("orders")) return m_machine.Begin("orders");
    m_machine.Run("orders", {"Net/Connect", "Net/Close", "Db/Query"}, 7);
  }
  void AddTrace() { m_machine.Run("orders", {"Db/Late"}, 7); }
  void End() { m_machine.End("orders"); }
  void TakeAway() { m_machine.m_away = true; }
  void BringBack() { m_machine.m_away = false; }

 private:
  FakeMachine m_machine;
};

quor_point connect_point = QUOR_POINT_INIT("Net", "Connect");
quor_point close_point = QUOR_POINT_INIT("Net", "Close");
quor_point query_point = QUOR_POINT_INIT("Db", "Query");
quor_point late_point = QUOR_POINT_INIT("Db", "Late");

int RunOrders(TracedChild& self) {
  self.AwaitGo();
  for (quor_point* const point : {&connect_point, &close_point, &query_point}) quor_declare(point);
  // The service lists an instance that it has found before that one has its settings. An instance
  // that is killed between leaves them to the next.
  setenv("QUOR_WAIT", "10000", 1);
  quor_application("orders");
  quor_register(&connect_point);
  self.Report(1);
  self.AwaitGo();
  quor_register(&late_point);
  self.AwaitGo();
  return 0;
}

// Its applications are forked while this process has no threads: a child of a process with threads
// is one that ThreadSanitizer does not support.
class RealMachine {
 public:
  RealMachine() {
    for (auto& waiting : m_waiting) waiting = std::make_unique<TracedChild>(RunOrders);
    m_service.Start();
  }

  QuorPtr<trace_Config_i> Connect(std::string* why = nullptr) {
    return QuorPtr<trace_Config_i>(trace_Config_i::Create("localhost", why));
  }
  QuorPtr<trace_App_i> Open(const std::string& app, std::string* why = nullptr) {
    return QuorPtr<trace_App_i>(trace_App_i::Create("localhost", app, why));
  }
  QuorPtr<trace_App_i> Look(const std::string& app, std::string* why = nullptr) {
    return QuorPtr<trace_App_i>(trace_App_i::Look("localhost", app, why));
  }
  void Start() {
    m_app = std::move(m_waiting.at(m_started++));
    m_app->Go();
    EXPECT_EQ(m_app->Reported(), 1u);
    AwaitOrders(1, 3);
  }
  void AddTrace() {
    m_app->Go();
    AwaitOrders(1, 4);
  }
  void End() {
    m_app->Kill();
    m_app.reset();
    AwaitOrders(0, 3);
  }
  void TakeAway() { m_service.Kill(); }
  void BringBack() {
    m_service.Start();
    if (m_app) AwaitOrders(1, 3);
  }
  QuordProcess& Service() { return m_service; }

 private:
  void AwaitOrders(unsigned instances, std::size_t least) {
    const QuorPtr<trace_Config_i> config = Connect();
    ASSERT_TRUE(config);
    EXPECT_TRUE(WaitFor([&] {
      config->GetAppList();
      const auto app = Look("orders");
      std::size_t traces = 0;
      if (app)
        for (const trace_Component_t& component : app->GetTraceMap())
          traces += component.categories.size();
      return config->GetInstances("orders") == instances && traces >= least;
    }));
  }

  QuordProcess m_service;
  std::array<std::unique_ptr<TracedChild>, 2> m_waiting;
  std::size_t m_started = 0;
  std::unique_ptr<TracedChild> m_app;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ConfigContract, FakeMachineHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Real, ConfigContract, RealMachine);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, ConfigLifeContract, FakeMachineHarness);
INSTANTIATE_TYPED_TEST_SUITE_P(Real, ConfigLifeContract, RealMachine);

class RealConfig : public testing::Test {
 protected:
  RealMachine m_machine;
};

TEST_F(RealConfig, ASubmitThatBeganWhileTheServiceWasAwayIsSentToTheNextOne) {
  m_machine.Start();
  const auto app = m_machine.Open("orders");
  ASSERT_TRUE(app);
  m_machine.TakeAway();
  app->SetAllTraces(1);
  auto submitted = std::async(std::launch::async, [&] { return app->Submit(); });
  m_machine.Service().Start();
  EXPECT_TRUE(submitted.get());
  const auto there = m_machine.Look("orders");
  ASSERT_TRUE(there);
  EXPECT_EQ(there->GetSettings(there->GetTraceId("Net", "Close")), 1u);
}

// A service that is stopped keeps its connection: only the deadline tells.
TEST_F(RealConfig, AServiceThatStandsStillHoldsNobodyForLongerThanItsDeadline) {
  m_machine.Start();
  const auto config = m_machine.Connect();
  const auto app = m_machine.Open("orders");
  ASSERT_TRUE(config && app);
  kill(m_machine.Service().Pid(), SIGSTOP);
  app->SetAllTraces(1);
  const auto began = std::chrono::steady_clock::now();
  EXPECT_FALSE(app->Submit());
  const auto took = std::chrono::steady_clock::now() - began;
  EXPECT_GE(took, std::chrono::milliseconds(4900));
  EXPECT_LT(took, std::chrono::seconds(8));
  EXPECT_TRUE(config->GetAppList().empty());
  EXPECT_FALSE(config->WasAnswered());
  EXPECT_FALSE(config->IsUp());
  kill(m_machine.Service().Pid(), SIGCONT);
  EXPECT_TRUE(app->Submit());
  EXPECT_TRUE(config->IsUp());
  EXPECT_EQ(config->GetAppList(), (std::list<std::string>{"orders"}));
  EXPECT_TRUE(config->WasAnswered());
}

TEST(RealConfigRole, ARoleThatMayNotConfigureGetsNeitherTheConnectionNorAHandle) {
  QuordProcess service;
  ASSERT_EQ(service.Run({"keys", "init"}), 0);
  ASSERT_EQ(service.Run({"keys", "issue", "eye", "--role", "monitor", "--out",
                         service.Folder().File("eye")}),
            0);
  service.Start({"--listen", "127.0.0.1:0"});
  setenv("QUOR_KEYS", service.Folder().File("eye").c_str(), 1);
  const std::string there = "127.0.0.1:" + service.Port();
  const std::string words = "the certificate does not allow to configure";
  std::string why;
  EXPECT_FALSE(QuorPtr<trace_Config_i>(trace_Config_i::Create(there, &why)));
  EXPECT_NE(why.find(words), why.npos) << why;
  EXPECT_FALSE(QuorPtr<trace_App_i>(trace_App_i::Create(there, "orders", &why)));
  EXPECT_NE(why.find(words), why.npos) << why;
  EXPECT_FALSE(QuorPtr<trace_App_i>(trace_App_i::Look(there, "orders", &why)));
  EXPECT_NE(why.find(words), why.npos) << why;
}

}  // namespace

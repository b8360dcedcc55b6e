// The applications that the wizard reads from a real service, which stands still, dies and returns
// between two of its pages.
#include <set>

#include <quor/quor.h>

#include "apps/quord/quord_process.h"
#include "support/wait_for.h"
#include "support/wizard_table_text.h"
#include "wizard/tables/app_traces.h"

namespace {

using Clock = std::chrono::steady_clock;

quor_point g_point = QUOR_POINT_INIT("Net", "Open");

class AppTracesLiveTest : public testing::Test {
 protected:
  AppTracesLiveTest() {
    m_quord.Start();
    m_machine.m_pConfig = trace_Config_i::Create("localhost");
    for (const std::string& name : All()) m_machine.m_apps[name];
  }
  static int RunOrders(TracedChild& child) {
    child.AwaitGo();
    quor_application("orders");
    quor_register(&g_point);
    for (;;) child.AwaitGo();
  }
  static std::set<std::string> All() {
    return {"billing", "cash", "lager", "mail", "orders", "print", "shop", "zoll"};
  }
  // The machine knows the application, and its trace.
  static bool IsThere() {
    const QuorPtr<trace_App_i> app = trace_App_i::Look("localhost", "orders");
    return app && !app->GetTraceMap().empty();
  }
  // Another client sets the trace.
  static void Set(unsigned settings) {
    const QuorPtr<trace_App_i> other = trace_App_i::Create("localhost", "orders");
    ASSERT_TRUE(other);
    other->SetAllTraces(settings);
    ASSERT_TRUE(other->Submit());
  }
  bool Read(const std::set<std::string>& names) {
    for (auto& [name, app] : m_machine.m_apps) app.m_bSelected = names.contains(name);
    return ReadSelected(m_machine, [](const std::string& host, const std::string& app) {
      return trace_App_i::Create(host, app);
    });
  }
  std::string Orders() const { return TableText({*m_machine.m_apps.find("orders")}); }
  // How many are selected, and how many of these have a handle.
  std::string Selected() const {
    int selected = 0, handles = 0;
    for (const auto& [name, app] : m_machine.m_apps) {
      selected += app.m_bSelected;
      handles += app.m_bSelected && app.m_app;
    }
    return std::to_string(selected) + " " + std::to_string(handles);
  }

  QuordProcess m_quord;
  // Forked before the connection has threads: ThreadSanitizer does not support children of a
  // process with threads.
  TracedChild m_orders{RunOrders};
  WizMachine m_machine;
};

}  // namespace

TEST_F(AppTracesLiveTest, EachReadShowsWhatTheMachineHasThen) {
  m_orders.Go();
  ASSERT_TRUE(WaitFor(IsThere));
  EXPECT_TRUE(Read({"orders"}));
  EXPECT_EQ(Orders(), "orders* open Net/Open=7\n");
  Set(TRC_SET_WARN);
  EXPECT_TRUE(Read({"orders"}));
  EXPECT_EQ(Orders(), "orders* open Net/Open=2\n");
}

// The answer to each of the eight questions would be waited for 5 seconds.
TEST_F(AppTracesLiveTest, AServiceThatStandsStillIsWaitedForOnce) {
  m_orders.Go();
  ASSERT_TRUE(WaitFor(IsThere));
  ASSERT_TRUE(Read({"orders"}));
  kill(m_quord.Pid(), SIGSTOP);
  const Clock::time_point began = Clock::now();
  EXPECT_FALSE(Read(All()));
  EXPECT_LT(Clock::now() - began, std::chrono::seconds(20));
  EXPECT_EQ(Selected(), "1 1");
  EXPECT_EQ(Orders(), "orders* open Net/Open=7\n");
  kill(m_quord.Pid(), SIGCONT);
  EXPECT_TRUE(WaitFor([this] { return m_machine.m_pConfig->IsUp(); }));
  EXPECT_TRUE(Read(All()));
  EXPECT_EQ(Selected(), "8 8");
}

TEST_F(AppTracesLiveTest, AServiceThatDiedIsReadAgainWhenItHasReturned) {
  m_orders.Go();
  ASSERT_TRUE(WaitFor(IsThere));
  m_quord.Kill();
  ASSERT_TRUE(WaitFor([this] { return !m_machine.m_pConfig->IsUp(); }));
  const Clock::time_point began = Clock::now();
  EXPECT_FALSE(Read(All()));
  EXPECT_LT(Clock::now() - began, std::chrono::seconds(20));
  EXPECT_EQ(Selected(), "0 0");
  m_quord.Start();
  ASSERT_TRUE(WaitFor(IsThere));
  EXPECT_TRUE(Read(All()));
  EXPECT_EQ(Selected(), "8 8");
  EXPECT_EQ(Orders(), "orders* open Net/Open=7\n");
}

#include "wizard/tables/configure_app.h"

#include <gtest/gtest.h>

#include "support/fake_machine.h"

namespace {

// Writes down the calls that set something.
class RecordingApp final : public trace_App_i {
 public:
  const std::string& GetAppName() const override { return m_name; }
  const std::list<trace_Component_t>& GetTraceMap() const override { return m_map; }
  unsigned GetSettings(unsigned) const override { return 0; }
  void SetSettings(unsigned id, unsigned settings) override {
    m_log += "set " + std::to_string(id) + "=" + std::to_string(settings) + "\n";
  }
  void SetAllTraces(unsigned settings) override {
    m_log += "all " + std::to_string(settings) + "\n";
  }
  unsigned GetTraceId(const std::string& component, const std::string&) const override {
    return component == "Net" ? 5 : TRC_NO_TRACE_ID;
  }
  void GetSink(trc_SinkTypes_e& type, std::string& name, std::string& options) const override {
    type = trc_SinkFile;
    name = "/tmp/a.trc";
    options = "flush=1;";
    m_log += "ask sink\n";
  }
  void SetSink(trc_SinkTypes_e type, const std::string& name, const std::string& options) override {
    m_log += "sink " + std::to_string(type) + " " + name + " " + options + "\n";
  }
  bool Submit() const override {
    m_log += "submit\n";
    return m_takes;
  }
  bool Refresh() override { return true; }

  mutable std::string m_log;
  bool m_takes = true;

 private:
  std::string m_name = "orders";
  std::list<trace_Component_t> m_map;
};

}  // namespace

TEST(ConfigureApp, SetsTheSinkThenSwitchesAllOffThenSetsTheTracesThenSubmits) {
  const QuorPtr<RecordingApp> chosen = new RecordingApp, made = new RecordingApp;
  ChosenApp app{"orders", SinkOf(*chosen), {}, chosen.Get()};
  app.traces[{"Net", "Open"}] = {5, 7};
  app.traces[{"Disk", "Read"}] = {WizTrace::kNotLookedUp, 4};
  EXPECT_TRUE(ConfigureApp(app, *made));
  EXPECT_EQ(chosen->m_log, "ask sink\n") << "nothing is set on the wizard's own handle";
  EXPECT_EQ(made->m_log, "sink 0 /tmp/a.trc flush=1;\nall 0\nset 65535=4\nset 5=7\nsubmit\n")
      << "a trace that the application does not know goes with the id that it returned";
  made->m_takes = false;
  EXPECT_FALSE(ConfigureApp(app, *made));
}

TEST(ConfigureApp, ATraceThatTheApplicationDoesNotKnowIsIgnored) {
  FakeMachine machine;
  machine.Run("orders", {"Net/Open"}, 3);
  const QuorPtr<trace_App_i> app = machine.Open("orders", nullptr);
  ChosenApp chosen{"orders", SinkOf(*app), {}, app};
  chosen.traces[{"Disk", "Read"}] = {WizTrace::kNotLookedUp, 4};
  EXPECT_TRUE(ConfigureApp(chosen, *app));
  EXPECT_EQ(machine.InForce("orders"), "Net/Open=0");
}

// Each machine numbers its traces as they come.
TEST(ConfigureApp, OnAnotherMachineTheTracesAreFoundByTheirNames) {
  FakeMachine first, second;
  first.Run("orders", {"Net/Open", "Disk/Read"});
  second.Run("orders", {"Disk/Read", "Net/Open", "Disk/Write"});
  first.m_apps["orders"].sinkName = "mars";
  const QuorPtr<trace_App_i> handle = first.Open("orders", nullptr);
  const QuorPtr<trace_App_i> made = second.Open("orders", nullptr);
  ChosenApp chosen{"orders", SinkOf(*handle), {}, handle};
  chosen.traces[{"Net", "Open"}] = {1, 7};
  chosen.traces[{"Disk", "Read"}] = {2, 4};
  chosen.traces[{"Old", "Gone"}] = {3, 15};  // 3 is another trace there
  EXPECT_TRUE(ConfigureApp(chosen, *made));
  EXPECT_EQ(second.InForce("orders"), "Disk/Read=4 Net/Open=7 Disk/Write=0");
  EXPECT_EQ(second.m_apps["orders"].sinkName, "mars") << "the sink is copied as it is";
  EXPECT_EQ(first.InForce("orders"), "Net/Open=0 Disk/Read=0");
}

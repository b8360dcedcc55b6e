#include "wizard/tables/machine_apps.h"

#include <gtest/gtest.h>

#include "support/fake_machine.h"

namespace {

std::string Names(const WizMachine& machine) {
  std::string names;
  for (const auto& [name, app] : machine.m_apps) names += name + " ";
  return names;
}

}  // namespace

TEST(MachineApps, IdenticalMachinesHaveTheUnionOfTheNames) {
  WizMachines machines;
  machines["a"].m_apps["orders"].m_bSelected = true;
  machines["b"].m_apps["billing"];
  machines["c"];
  MakeNamesIdentical(machines);
  for (const auto& [name, machine] : machines) EXPECT_EQ(Names(machine), "billing orders ") << name;
  EXPECT_TRUE(machines["a"].m_apps["orders"].m_bSelected) << "an entry that is there stays";
  EXPECT_FALSE(machines["b"].m_apps["orders"].m_bSelected);
}

TEST(MachineApps, AnApplicationOfAnOpenWindowReplacesWhatWasChosenForItsName) {
  FakeMachine server;
  server.Run("orders", {"Net/Open"});
  const QuorPtr<trace_App_i> open(server.Open("orders", nullptr));
  WizMachine machine;
  machine.m_apps["billing"].m_bSelected = true;
  WizApp& chosen = machine.m_apps["orders"];
  chosen.m_bSelected = true;
  chosen.m_app = QuorPtr<trace_App_i>(server.Look("orders", nullptr));
  chosen.m_traces[{"Net", "Open"}].m_nSettings = 4;
  for (const bool unsent : {true, false}) {
    EnterOpenApps(machine, {open, nullptr},
                  unsent ? std::set<std::string>{"orders"} : std::set<std::string>{"billing"});
    EXPECT_EQ(Names(machine), "billing orders ");
    const WizApp& entered = machine.m_apps["orders"];
    EXPECT_FALSE(entered.m_bSelected);
    EXPECT_TRUE(entered.m_traces.empty());
    EXPECT_TRUE(entered.m_app.Get() == open.Get());
    EXPECT_EQ(entered.m_bUnsent, unsent);
    EXPECT_TRUE(machine.m_apps["billing"].m_bSelected);
    EXPECT_FALSE(machine.m_apps["billing"].m_bUnsent);
  }
}

TEST(WizPlace, IsAtTheEndWhenItsKeyHasGoneAndFollowsItIntoANewTable) {
  WizMachines machines;
  machines["a"], machines["b"];
  WizPlace<WizMachines> place;
  EXPECT_EQ(place.In(machines), machines.end());
  place.Set(machines, machines.begin());
  machines.clear();
  EXPECT_EQ(place.In(machines), machines.end());
  machines["a"];
  EXPECT_EQ(place.In(machines), machines.begin());
  place.Set(machines, machines.end());
  EXPECT_EQ(place.In(machines), machines.end());
}

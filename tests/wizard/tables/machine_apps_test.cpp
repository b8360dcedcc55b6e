#include "wizard/tables/machine_apps.h"

#include <gtest/gtest.h>

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

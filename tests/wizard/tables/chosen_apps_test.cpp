#include "wizard/tables/chosen_apps.h"

#include <gtest/gtest.h>

#include "support/fake_machine.h"

namespace {

std::string Names(const ChosenApps& apps) {
  std::string names;
  for (const ChosenApp& app : apps) names += app.name + (app.handle ? "* " : " ");
  return names;
}

}  // namespace

TEST(TakeChosen, TheTablesHoldNoHandleAfterwardsAndTheUnselectedOnesAreGivenBack) {
  FakeMachine db, web;
  db.Run("orders", {"Net/Open"}).sinkName = "mars";
  WizMachines machines;
  machines["web"].m_apps["shop"] = {web.Open("shop", nullptr), {}, true};
  WizApps& apps = machines["db"].m_apps;
  apps["orders"] = {db.Open("orders", nullptr), {}, true};
  apps["orders"].m_traces[{"Net", "Open"}] = {1, 7};
  apps["other"] = {db.Open("other", nullptr), {}, false};
  apps["never"] = {nullptr, {}, true};
  const auto chosen = TakeChosen(machines);
  EXPECT_EQ(chosen.size(), 2U);
  EXPECT_EQ(Names(chosen.at("db")), "orders* ");
  EXPECT_EQ(chosen.at("db")[0].sink.name, "mars");
  EXPECT_EQ(chosen.at("db")[0].traces.at({"Net", "Open"}).m_nSettings, 7U);
  EXPECT_EQ(Names(chosen.at("web")), "shop* ");
  EXPECT_EQ(db.m_handles, 1);
  EXPECT_FALSE(apps["orders"].m_app);
}

TEST(TakeChosen, AHandleThatMachinesShareIsHeldByTheFirstOfThem) {
  FakeMachine db;
  WizMachines machines;
  const QuorPtr<trace_App_i> shared = db.Open("orders", nullptr);
  for (const char* const name : {"db", "mars", "web"})
    machines[name].m_apps["orders"] = {shared, {}, true};
  const auto chosen = TakeChosen(machines);
  EXPECT_EQ(Names(chosen.at("db")), "orders* ");
  EXPECT_EQ(Names(chosen.at("mars")), "orders ");
  EXPECT_EQ(Names(chosen.at("web")), "orders ");
}

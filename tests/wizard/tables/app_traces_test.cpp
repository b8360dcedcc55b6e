#include "wizard/tables/app_traces.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/fake_machine.h"
#include "support/wizard_table_text.h"

namespace {

class AppTracesTest : public testing::Test {
 protected:
  AppTracesTest() {
    m_fake.Run("orders", {"Net/Open", "Net/Close", "Disk/Read"}, 7);
    m_fake.Run("billing", {"Net/Open"}, 1);
    m_machine.m_pConfig = m_fake.Connect("web", nullptr);
    for (const char* const name : {"billing", "orders"}) m_machine.m_apps[name];
    m_fake.m_log.clear();
  }
  WizApp& Orders() { return m_machine.m_apps["orders"]; }
  // Chooses all applications, and takes them.
  bool Read() {
    for (auto& [name, app] : m_machine.m_apps) app.m_bSelected = true;
    return ReadSelected(m_machine, m_open);
  }
  std::string Table() const { return TableText(m_machine.m_apps); }
  std::string Asked() { return std::exchange(m_fake.m_log, ""); }

  FakeMachine m_fake;
  WizMachine m_machine;
  const WizOpenApp m_open = [this](const std::string& host, const std::string& app) {
    EXPECT_EQ(host, "web");
    return m_fake.Open(app, nullptr);
  };
};

}  // namespace

TEST_F(AppTracesTest, CollectingEntersEveryTraceWithItsId) {
  Orders().m_app = m_fake.Open("orders", nullptr);
  CollectTraces(Orders());
  EXPECT_EQ(Table(), "billing\norders open Disk/Read=? Net/Close=? Net/Open=?\n");
  EXPECT_EQ((Orders().m_traces[{"Net", "Close"}].m_nId), m_fake.m_apps["orders"].traces[1].id);
}

TEST_F(AppTracesTest, CollectingLeavesTheIdOfAnEntryThatIsThereAndForgetsItsSettings) {
  Orders().m_app = m_fake.Open("orders", nullptr);
  Orders().m_traces[{"Net", "Open"}] = {77, 15};
  Orders().m_traces[{"Old", "One"}] = {WizTrace::kNotLookedUp, 15};
  CollectTraces(Orders());
  EXPECT_EQ(Table(), "billing\norders open Disk/Read=? Net/Close=? Net/Open=? Old/One=15\n");
  EXPECT_EQ((Orders().m_traces[{"Net", "Open"}].m_nId), 77);
}

TEST_F(AppTracesTest, ReadingLooksUpOnlyIdsThatAreNotKnownYet) {
  Orders().m_app = m_fake.Open("orders", nullptr);
  m_fake.m_apps["orders"].traces[2].settings = 8;
  Orders().m_app->Refresh();
  Orders().m_traces[{"Disk", "Read"}];
  const unsigned open = m_fake.m_apps["orders"].traces[0].id;
  Orders().m_traces[{"Disk", "Write"}].m_nId = static_cast<std::uint16_t>(open);
  Orders().m_traces[{"Net", "Open"}] = {WizTrace::kNotLookedUp, 15};
  ReadSettings(Orders());
  EXPECT_EQ(Table(), "billing\norders open Disk/Read=8 Disk/Write=7 Net/Open=15\n");
  EXPECT_EQ((Orders().m_traces[{"Disk", "Read"}].m_nId), m_fake.m_apps["orders"].traces[2].id);
  EXPECT_EQ((Orders().m_traces[{"Net", "Open"}].m_nId), WizTrace::kNotLookedUp);
}

TEST_F(AppTracesTest, OnlySelectedApplicationsAreOpenedAndRead) {
  Orders().m_bSelected = true;
  EXPECT_TRUE(ReadSelected(m_machine, m_open));
  EXPECT_EQ(Table(), "billing\norders* open Disk/Read=7 Net/Close=7 Net/Open=7\n");
  EXPECT_EQ(Asked(), "open orders\n");
}

TEST_F(AppTracesTest, WhatTheMachineHasReplacesWhatAFileOrTheUserHasSet) {
  Orders().m_traces[{"Net", "Open"}] = {WizTrace::kNotLookedUp, 31};
  Orders().m_traces[{"Old", "One"}] = {WizTrace::kNotLookedUp, 31};
  EXPECT_TRUE(Read());
  EXPECT_EQ(TableText({*m_machine.m_apps.find("orders")}),
            "orders* open Disk/Read=7 Net/Close=7 Net/Open=7 Old/One=31\n");
  EXPECT_EQ((Orders().m_traces[{"Net", "Open"}].m_nId), m_fake.m_apps["orders"].traces[0].id);
}

TEST_F(AppTracesTest, ASecondTimeShowsWhatTheMachineHasThen) {
  Read();
  for (FakeMachine::Trace& trace : m_fake.m_apps["orders"].traces) trace.settings = 8;
  m_fake.m_apps["orders"].traces.push_back({"Net", "Late", 900, 4});
  Orders().m_traces[{"Net", "Open"}].m_nSettings = 31;
  Asked();
  EXPECT_TRUE(Read());
  EXPECT_EQ(TableText({*m_machine.m_apps.find("orders")}),
            "orders* open Disk/Read=8 Net/Close=8 Net/Late=4 Net/Open=8\n");
  EXPECT_EQ(Asked(), "refresh billing\nrefresh orders\n");
}

TEST_F(AppTracesTest, AnApplicationThatCannotBeReachedIsNotSelectedAnyMore) {
  m_fake.m_refusesOpen = true;
  EXPECT_FALSE(Read());
  EXPECT_EQ(Table(), "billing\norders\n");
  EXPECT_EQ(Asked(), "open billing\nopen orders\n") << "the machine answers, so each is tried";
}

TEST_F(AppTracesTest, AMachineThatGivesNoMoreHandlesIsNotAskedForThousands) {
  for (int app = 0; app < 3000; ++app) m_machine.m_apps["orders" + std::to_string(app)];
  m_fake.m_openMax = 20;
  EXPECT_FALSE(Read());
  const std::string asked = Asked();
  EXPECT_EQ(std::count(asked.begin(), asked.end(), '\n'), 20 + 8);
  std::size_t selected = 0;
  for (const auto& [name, app] : m_machine.m_apps) {
    EXPECT_EQ(app.m_bSelected, static_cast<bool>(app.m_app)) << name;
    selected += app.m_bSelected;
  }
  EXPECT_EQ(selected, 20U);
}

TEST_F(AppTracesTest, TheOthersAreReadWhenOneCannotBeReached) {
  m_machine.m_apps["billing"].m_app = m_fake.Open("billing", nullptr);
  m_fake.m_refusesOpen = true;
  EXPECT_FALSE(Read());
  EXPECT_EQ(Table(), "billing* open Net/Open=1\norders\n");
}

TEST_F(AppTracesTest, AMachineThatIsAwayIsAskedOnceNotForEachApplication) {
  m_fake.m_away = true;
  EXPECT_FALSE(Read());
  EXPECT_EQ(Asked(), "open billing\n");
  EXPECT_EQ(Table(), "billing\norders\n");
}

TEST_F(AppTracesTest, OfAMachineThatWentAwayTheHandlesKeepTheirStateAndItIsAskedOnce) {
  Read();
  m_fake.m_away = true;
  Orders().m_traces[{"Net", "Open"}].m_nSettings = 31;
  Asked();
  EXPECT_TRUE(Read());
  EXPECT_EQ(Asked(), "refresh billing\n");
  EXPECT_EQ(TableText({*m_machine.m_apps.find("orders")}),
            "orders* open Disk/Read=7 Net/Close=7 Net/Open=7\n");
}

TEST(NextSelected, IsThePlaceItselfOrALaterOneOrTheEnd) {
  WizApps apps;
  apps["b"].m_bSelected = apps["d"].m_bSelected = true;
  apps["a"], apps["c"], apps["e"];
  EXPECT_EQ(NextSelected(apps, apps.begin())->first, "b");
  EXPECT_EQ(NextSelected(apps, apps.find("b"))->first, "b");
  EXPECT_EQ(NextSelected(apps, apps.find("c"))->first, "d");
  EXPECT_EQ(NextSelected(apps, apps.find("e")), apps.end());
}

TEST(CopyToOthers, GivesThemConnectionApplicationsAndFileName) {
  FakeMachine fake;
  {
    WizMachines machines;
    for (const char* const name : {"a", "b", "c"}) {
      machines[name].m_pConfig = fake.Connect(name, nullptr);
      machines[name].m_apps[name];
    }
    machines["b"].m_strConfigFile = "b.tcf";
    machines["b"].m_apps["b"].m_traces[{"Net", "Open"}] = {5, 7};
    machines["b"].m_apps["b"].m_app = fake.Open("b", nullptr);
    CopyToOthers(machines, machines.find("b"));
    for (const auto& [name, machine] : machines) {
      EXPECT_EQ(machine.m_pConfig->GetHostName(), "b") << name;
      EXPECT_EQ(TableText(machine.m_apps), "b open Net/Open=7\n") << name;
      EXPECT_EQ(machine.m_strConfigFile, "b.tcf") << name;
    }
    EXPECT_EQ(fake.m_handles, 2) << "those of the others are released";
  }
  EXPECT_EQ(fake.m_handles, 0);
}

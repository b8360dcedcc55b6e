// Machines that are configured the same, and differently afterwards.
#include "support/wizard_fixture.h"

namespace {

class SameMachinesTest : public WizardFixture {
 protected:
  SameMachinesTest() {
    m_program.Machine("a").Run("orders", {"Net/Open", "Only/A"}, 1);
    m_program.Machine("b").Run("orders", {"Disk/Read", "Net/Open"}, 2);
    m_program.Machine("c").Run("orders", {"Cart/Add", "Net/Close", "Net/Open"}, 4);
    for (const std::string name : {"a", "b", "c"}) {
      m_program.Machine(name).Run("shop", {"Cart/Add"});
      m_program.Machine(name).m_apps["orders"].sinkName = "sink of " + name;
    }
  }
  // To the last page with all machines the same, and back to the page of machines.
  void BeTheSame() {
    Walk("next next remote next add:a add:b add:c same next pick:orders next next");
    EXPECT_EQ(Where(), "Finish");
    EXPECT_EQ(Hosts(), "a:a b:a c:a ") << "the connection is copied, too";
    Walk("back back back");
    EXPECT_EQ(Where(), "Machines");
  }
  // Goes on; where that ends, with the traces if these are shown.
  std::string Next() {
    Walk("next");
    const std::string where = Where();
    return where + (where.starts_with("Traces") ? ": " + Window().traces.Shown() : "");
  }
  // Whose connection each machine has.
  std::string Hosts() {
    std::string hosts;
    for (const auto& [name, machine] : Sheet().m_machines)
      hosts += name + ":" + machine.m_pConfig->GetHostName() + " ";
    return hosts;
  }
  std::string Orders(const std::string& machine) {
    return m_program.Machine(machine).InForce("orders") + " to " +
           m_program.Machine(machine).m_apps["orders"].sinkName;
  }
};

}  // namespace

TEST_F(SameMachinesTest, EachIsReadAndConfiguredByItselfWhenTheyAreDifferentAgain) {
  BeTheSame();
  Walk("each");
  EXPECT_EQ(Next(), "Applications on a");
  EXPECT_EQ(Hosts(), "a:a b:b c:c ");
  EXPECT_EQ(Next(), "Traces for orders on a: Net|Open|Info Only|A|Info");
  EXPECT_EQ(Next(), "Applications on b");
  EXPECT_EQ(Offered("b"), "*orders shop") << "names and what is selected stay";
  EXPECT_EQ(Next(), "Traces for orders on b: Disk|Read|Warn Net|Open|Warn");
  EXPECT_EQ(Next(), "Applications on c");
  EXPECT_EQ(Next(), "Traces for orders on c: Cart|Add|Error Net|Close|Error Net|Open|Error");
  EXPECT_EQ(Next(), "Finish");
  Walk("finish");
  EXPECT_EQ(Orders("a"), "Net/Open=1 Only/A=1 to sink of a");
  EXPECT_EQ(Orders("b"), "Disk/Read=2 Net/Open=2 to sink of b");
  EXPECT_EQ(Orders("c"), "Cart/Add=4 Net/Close=4 Net/Open=4 to sink of c");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(SameMachinesTest, TheyCanBeTheSameOnceMore) {
  BeTheSame();
  Walk("each next next next next next next next");
  EXPECT_EQ(Where(), "Finish");
  Walk("back back back back back back back back");
  EXPECT_EQ(Where(), "Applications on a");
  Walk("back same");
  EXPECT_EQ(Next(), "Applications");
  EXPECT_EQ(Next(), "Traces for orders: Net|Open|Info Only|A|Info");
  EXPECT_EQ(Next(), "Finish");
  EXPECT_EQ(Hosts(), "a:a b:a c:a ");
  Walk("finish");
  EXPECT_EQ(Orders("b"), "Disk/Read=0 Net/Open=1 to sink of a");
  EXPECT_EQ(Orders("c"), "Cart/Add=0 Net/Close=0 Net/Open=1 to sink of a");
}

TEST_F(SameMachinesTest, WhenTheFirstHasDiedAndIsDeletedTheNextOneIsReadByItself) {
  BeTheSame();
  Walk("away:a del:a");
  EXPECT_EQ(Next(), "Applications");
  EXPECT_EQ(Hosts(), "b:b c:a ") << "c gets a copy of b's";
  EXPECT_EQ(Next(), "Traces for orders: Disk|Read|Warn Net|Open|Warn");
  EXPECT_EQ(Next(), "Finish");
  EXPECT_EQ(Hosts(), "b:b c:b ");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(SameMachinesTest, OneThatCannotBeReachedByItselfIsNamedAndThePageStays) {
  BeTheSame();
  Walk("each away:b");
  EXPECT_EQ(Next(), "Machines");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to configuration server on b"));
  EXPECT_EQ(m_host.WaitCursors(), 0);
  m_program.Machine("b").m_away = false;
  EXPECT_EQ(Next(), "Applications on a");
  EXPECT_EQ(Hosts(), "a:a b:b c:c ");
}

TEST_F(SameMachinesTest, OneWithAnOpenConfigurationGetsThatConnectionAndThoseHandles) {
  CConfigDoc& open = m_program.OpenConfig("B");
  trace_App_i* const orders = open.AddApplication("orders");
  BeTheSame();
  Walk("each");
  EXPECT_EQ(Next(), "Applications on a");
  EXPECT_EQ(Sheet().m_machines.at("b").m_pConfig, open.GetConfig());
  EXPECT_EQ(Sheet().m_machines.at("b").m_apps.at("orders").m_app, orders);
}

TEST_F(SameMachinesTest, OneWhoseOpenConfigurationHasLostItsMachineIsNamedToo) {
  m_program.OpenConfig("b");
  BeTheSame();
  Walk("each away:b");
  EXPECT_EQ(Next(), "Machines");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to configuration server on b"));
}

TEST_F(SameMachinesTest, ThisMachineKeepsItsConnectionByAnotherName) {
  Walk("next next local next back remote next add:a each next");
  m_program.Machine("localhost").m_log.clear();
  EXPECT_EQ(Sheet().m_machines.at(_trc_GetHostName()).m_pConfig->GetHostName(), "localhost");
  EXPECT_EQ(m_program.Machine("localhost").m_log, "");
}

TEST_F(SameMachinesTest, WhatAFileHasSetStaysUnlessTheOtherMachineKnewTheTrace) {
  BeTheSame();
  WizApp& orders = Sheet().m_machines.at("b").m_apps.at("orders");
  orders.m_traces[{"Of", "File"}] = {7, 15};
  Walk("each next");
  EXPECT_FALSE(orders.m_app);
  ASSERT_EQ(orders.m_traces.size(), 1U);
  EXPECT_EQ(orders.m_traces.begin()->first.first, "Of");
  EXPECT_EQ(orders.m_traces.begin()->second.m_nSettings, 15U);
  EXPECT_EQ(orders.m_traces.begin()->second.m_nId, WizTrace::kNotLookedUp);
}

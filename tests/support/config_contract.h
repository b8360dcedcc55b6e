// What the classes of a machine's configuration do with its values, whoever made them: run for the
// fake machine and for the real classes with a real service and a real application, which
// support/config_contract_fixture.h describes.
#pragma once

#include <gtest/gtest.h>

#include <list>
#include <set>
#include <string>
#include <utility>

#include "support/config_contract_fixture.h"
#include "support/wait_for.h"

template <class Machine>
class ConfigContract : public ConfigContractFixture<Machine> {};
TYPED_TEST_SUITE_P(ConfigContract);

TYPED_TEST_P(ConfigContract, TheListNamesWhatRunsAndWhatIsHeldInOrder) {
  const auto config = this->m_machine.Connect();
  EXPECT_EQ(config->GetAppList(), std::list<std::string>());
  EXPECT_TRUE(config->WasAnswered());
  EXPECT_TRUE(config->IsUp());
  this->m_machine.Start();
  const auto held = this->m_machine.Open("held"), again = this->m_machine.Open("held"),
             more = this->m_machine.Open("a");
  // It traces already, but the service may not have seen it yet.
  const std::list<std::string> all = {"a", "held", "orders"};
  EXPECT_TRUE(WaitFor([&] { return config->GetAppList() == all; }));
  EXPECT_EQ(config->GetInstances("orders"), 1u);
  EXPECT_EQ(config->GetInstances("held"), 0u);
  EXPECT_EQ(config->GetInstances("nobody"), 0u);
}

TYPED_TEST_P(ConfigContract, AnApplicationIsHeldAsLongAsOneOfItsHandlesLives) {
  auto one = this->m_machine.Open("held"), two = this->m_machine.Open("held");
  one = nullptr;
  EXPECT_EQ(this->Apps(), (std::list<std::string>{"held"}));
  two = nullptr;
  EXPECT_TRUE(WaitFor([&] { return this->Apps().empty(); }));
}

TYPED_TEST_P(ConfigContract, AnUnknownApplicationHasAnEmptyMapAndTheLocalServiceAsItsSink) {
  const auto app = this->m_machine.Open("nobody");
  EXPECT_EQ(app->GetAppName(), "nobody");
  EXPECT_EQ(this->Map(*app), "");
  EXPECT_EQ(this->Sink(*app), "1 localhost ");
  EXPECT_TRUE(this->IsNone(app->GetTraceId("Net", "Connect")));
  app->SetAllTraces(7);
  EXPECT_TRUE(app->Submit());
  EXPECT_TRUE(app->Refresh());
}

TYPED_TEST_P(ConfigContract, TheMapHasEveryTraceWithAnIdOfItsOwn) {
  this->m_machine.Start();
  const auto app = this->m_machine.Open(this->kOrders);
  EXPECT_EQ(this->Map(*app), "Db/Query=7 Net/Close=7 Net/Connect=7");
  const std::set<unsigned> ids = {this->Id(*app, "Net", "Connect"), this->Id(*app, "Net", "Close"),
                                  this->Id(*app, "Db", "Query")};
  EXPECT_EQ(ids.size(), 3u);
  for (const auto& [component, category] : {std::pair("Db", "Connect"), std::pair("net", "Close"),
                                            std::pair("Net", ""), std::pair("", "")})
    EXPECT_TRUE(this->IsNone(app->GetTraceId(component, category))) << component;
}

TYPED_TEST_P(ConfigContract, WhatIsSetIsLocalUntilSubmit) {
  this->m_machine.Start();
  const auto app = this->m_machine.Open(this->kOrders);
  const unsigned close = this->Id(*app, "Net", "Close");
  app->SetSettings(close, 0x204);
  app->SetSettings(0x1234, 7);
  app->SetSink(trc_SinkFile, "/a \"b\"\\c.trc", "flush=1;maxfiles=2;maxsize=3;");
  EXPECT_EQ(app->GetSettings(close), 0x204u);
  EXPECT_EQ(app->GetSettings(0x1234), 0u) << "no such trace";
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=7 Net/Connect=7");
  EXPECT_EQ(this->Sink(*this->m_machine.Look(this->kOrders)), "1 localhost ");
  EXPECT_TRUE(app->Submit());
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=516 Net/Connect=7");
  EXPECT_EQ(this->Sink(*this->m_machine.Look(this->kOrders)),
            "0 /a \"b\"\\c.trc flush=1;maxfiles=2;maxsize=3;");
}

TYPED_TEST_P(ConfigContract, AllTracesTakeOneWord) {
  this->m_machine.Start();
  const auto app = this->m_machine.Open(this->kOrders);
  app->SetAllTraces(799);
  EXPECT_EQ(this->Map(*app), "Db/Query=799 Net/Close=799 Net/Connect=799");
  EXPECT_TRUE(app->Submit());
  EXPECT_EQ(this->MapThere(), "Db/Query=799 Net/Close=799 Net/Connect=799");
}

TYPED_TEST_P(ConfigContract, RefreshDropsWhatWasNotSubmittedAndReadsAnew) {
  this->m_machine.Start();
  const auto app = this->m_machine.Open(this->kOrders), other = this->m_machine.Open(this->kOrders);
  app->SetAllTraces(0);
  app->SetSink(trc_SinkFile, "x", "");
  other->SetSettings(this->Id(*other, "Db", "Query"), 1);
  EXPECT_TRUE(other->Submit());
  EXPECT_TRUE(app->Refresh());
  EXPECT_EQ(this->Map(*app), "Db/Query=1 Net/Close=7 Net/Connect=7");
  EXPECT_EQ(this->Sink(*app), "1 localhost ");
  EXPECT_TRUE(app->Submit());
  EXPECT_EQ(this->MapThere(), "Db/Query=1 Net/Close=7 Net/Connect=7");
}

TYPED_TEST_P(ConfigContract, SubmitSendsOnlyWhatThisHandleChanged) {
  this->m_machine.Start();
  const auto one = this->m_machine.Open(this->kOrders), two = this->m_machine.Open(this->kOrders);
  one->SetSettings(this->Id(*one, "Net", "Close"), 0);
  two->SetSettings(this->Id(*two, "Net", "Connect"), 3);
  two->SetSink(trc_SinkSocket, "web", "");
  EXPECT_TRUE(two->Submit());
  EXPECT_TRUE(one->Submit());
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=0 Net/Connect=3");
  EXPECT_EQ(this->Sink(*this->m_machine.Look(this->kOrders)), "1 web ");
}

TYPED_TEST_P(ConfigContract, ARefusedSubmitChangesNothingAndStaysHeld) {
  this->m_machine.Start();
  const auto app = this->m_machine.Open(this->kOrders);
  app->SetAllTraces(0);
  app->SetSink(trc_SinkFile, std::string(1 << 16, 'x'), "");
  EXPECT_FALSE(app->Submit());
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=7 Net/Connect=7");
  app->SetSink(trc_SinkSocket, "web", "");
  EXPECT_TRUE(app->Submit());
  EXPECT_EQ(this->MapThere(), "Db/Query=0 Net/Close=0 Net/Connect=0");
}

TYPED_TEST_P(ConfigContract, ALookHoldsNothingAndSubmitsOnlyWhatSomebodyHolds) {
  EXPECT_EQ(this->Map(*this->m_machine.Look("nobody")), "");
  const auto look = this->m_machine.Look(this->kOrders);
  EXPECT_EQ(this->Apps(), std::list<std::string>());
  look->SetSink(trc_SinkSocket, "web", "");
  EXPECT_FALSE(look->Submit());
  EXPECT_EQ(this->Sink(*this->m_machine.Look(this->kOrders)), "1 localhost ");
}

REGISTER_TYPED_TEST_SUITE_P(ConfigContract, TheListNamesWhatRunsAndWhatIsHeldInOrder,
                            AnApplicationIsHeldAsLongAsOneOfItsHandlesLives,
                            AnUnknownApplicationHasAnEmptyMapAndTheLocalServiceAsItsSink,
                            TheMapHasEveryTraceWithAnIdOfItsOwn, WhatIsSetIsLocalUntilSubmit,
                            AllTracesTakeOneWord, RefreshDropsWhatWasNotSubmittedAndReadsAnew,
                            SubmitSendsOnlyWhatThisHandleChanged,
                            ARefusedSubmitChangesNothingAndStaysHeld,
                            ALookHoldsNothingAndSubmitsOnlyWhatSomebodyHolds);

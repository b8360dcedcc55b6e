// What the classes of a machine's configuration do, whoever made them: run for the fake machine and
// for the real classes with a real service and a real application.
//
// To run it, write a rig and instantiate the suite:
//
//   struct MyRig {
//     QuorPtr<trace_Config_i> Connect(std::string* why = nullptr);
//     QuorPtr<trace_App_i> Open(const std::string& app, std::string* why = nullptr);
//     QuorPtr<trace_App_i> Look(const std::string& app, std::string* why = nullptr);
//     void Start();      // an instance of "orders" with Net/Connect, Net/Close and Db/Query
//     void AddTrace();   // it gains Db/Late
//     void End();        // of that instance
//     void TakeAway();   // the service ends,
//     void BringBack();  // and another one takes its place
//   };
//
// Each of the last five returns when the machine knows it. A trace begins with the settings 7.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <list>
#include <set>
#include <string>
#include <vector>

#include "quor/client/trace_config.h"
#include "support/wait_for.h"

template <class Machine>
class ConfigContract : public testing::Test {
 protected:
  static constexpr char kOrders[] = "orders";

  // "Db/Query=7 Net/Close=7 Net/Connect=7", by name.
  static std::string Map(const trace_App_i& app) {
    std::set<std::string> traces;
    for (const trace_Component_t& component : app.GetTraceMap())
      for (const trace_Category_t& category : component.categories)
        traces.insert(component.name + "/" + category.name + "=" +
                      std::to_string(app.GetSettings(category.traceId)));
    std::string text;
    for (const std::string& trace : traces) text += (text.empty() ? "" : " ") + trace;
    return text;
  }
  std::string MapThere() { return Map(*m_machine.Look(kOrders)); }
  static std::string Sink(const trace_App_i& app) {
    trc_SinkTypes_e type{};
    std::string name, options;
    app.GetSink(type, name, options);
    return std::to_string(static_cast<unsigned>(type)) + " " + name + " " + options;
  }
  static bool IsNone(unsigned traceId) { return (traceId & TRC_NO_TRACE_ID) == TRC_NO_TRACE_ID; }
  static unsigned Id(const trace_App_i& app, const char* component, const char* category) {
    const unsigned id = app.GetTraceId(component, category);
    EXPECT_FALSE(IsNone(id)) << component << "/" << category;
    return id;
  }
  std::list<std::string> Apps() { return m_machine.Connect()->GetAppList(); }

  Machine m_machine;
};

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

TYPED_TEST_P(ConfigContract, AnApplicationThatEndsKeepsItsStateForItsHandle) {
  this->m_machine.Start();
  const auto config = this->m_machine.Connect();
  auto app = this->m_machine.Open(this->kOrders);
  app->SetAllTraces(1);
  EXPECT_TRUE(app->Submit());
  this->m_machine.End();
  EXPECT_TRUE(app->Refresh());
  EXPECT_EQ(this->Map(*app), "Db/Query=1 Net/Close=1 Net/Connect=1");
  EXPECT_EQ(config->GetAppList(), (std::list<std::string>{"orders"}));
  EXPECT_EQ(config->GetInstances("orders"), 0u);
  // With the last handle what it first had returns.
  app = nullptr;
  EXPECT_TRUE(WaitFor([&] { return config->GetAppList().empty(); }));
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=7 Net/Connect=7");
}

TYPED_TEST_P(ConfigContract, WhatIsSubmittedBeforeAnApplicationBeginsWaitsForIt) {
  this->m_machine.Start();
  this->m_machine.End();
  auto app = this->m_machine.Open(this->kOrders);
  app->SetSettings(this->Id(*app, "Net", "Close"), 0);
  EXPECT_TRUE(app->Submit());
  app = nullptr;
  EXPECT_TRUE(WaitFor([&] { return this->Apps().empty(); }));
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=0 Net/Connect=7");
  this->m_machine.Start();
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=0 Net/Connect=7");
  this->m_machine.End();
  EXPECT_TRUE(WaitFor([&] { return this->MapThere().find("Net/Close=7") != std::string::npos; }));
}

TYPED_TEST_P(ConfigContract, AnApplicationThatBeginsShowsItsTracesAfterRefresh) {
  const auto app = this->m_machine.Open(this->kOrders);
  EXPECT_EQ(this->Map(*app), "");
  this->m_machine.Start();
  EXPECT_EQ(this->Map(*app), "");
  EXPECT_TRUE(app->Refresh());
  EXPECT_EQ(this->Map(*app), "Db/Query=7 Net/Close=7 Net/Connect=7");
}

TYPED_TEST_P(ConfigContract, ATraceThatComesLateIsThereAfterRefreshAndTheOthersKeepTheirIds) {
  this->m_machine.Start();
  const auto app = this->m_machine.Open(this->kOrders);
  const unsigned close = this->Id(*app, "Net", "Close");
  this->m_machine.AddTrace();
  EXPECT_EQ(this->Map(*app), "Db/Query=7 Net/Close=7 Net/Connect=7");
  EXPECT_TRUE(this->IsNone(app->GetTraceId("Db", "Late")));
  EXPECT_TRUE(app->Refresh());
  EXPECT_EQ(this->Map(*app), "Db/Late=7 Db/Query=7 Net/Close=7 Net/Connect=7");
  EXPECT_EQ(app->GetTraceId("Net", "Close"), close);
  app->SetSettings(this->Id(*app, "Db", "Late"), 0);
  EXPECT_TRUE(app->Submit());
  EXPECT_EQ(this->MapThere(), "Db/Late=0 Db/Query=7 Net/Close=7 Net/Connect=7");
}

// Each question ends after five seconds; the state that a handle has stays to be read.
TYPED_TEST_P(ConfigContract, AServiceThatIsAwayIsToldByEveryQuestionAndComesBack) {
  this->m_machine.Start();
  const auto config = this->m_machine.Connect();
  const auto app = this->m_machine.Open(this->kOrders);
  this->m_machine.TakeAway();
  EXPECT_TRUE(WaitFor([&] { return !config->IsUp(); }));
  app->SetAllTraces(3);
  std::string why;
  const std::vector<std::function<bool()>> questions = {
      [&] { return app->Submit(); },
      [&] { return !config->GetAppList().empty() || config->WasAnswered(); },
      [&] { return this->m_machine.Open("other", &why) != nullptr; }};
  for (const auto& question : questions) {
    const auto began = std::chrono::steady_clock::now();
    EXPECT_FALSE(question());
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(8));
  }
  EXPECT_NE(why, "");
  EXPECT_EQ(this->Map(*app), "Db/Query=3 Net/Close=3 Net/Connect=3");
  this->m_machine.BringBack();
  EXPECT_TRUE(WaitFor([&] { return config->IsUp(); }));
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=7 Net/Connect=7");
  EXPECT_TRUE(app->Submit()) << "what was held is sent";
  EXPECT_EQ(this->MapThere(), "Db/Query=3 Net/Close=3 Net/Connect=3");
  // It is held again too.
  this->m_machine.End();
  EXPECT_EQ(config->GetAppList(), (std::list<std::string>{"orders"}));
  EXPECT_TRUE(config->WasAnswered());
}

REGISTER_TYPED_TEST_SUITE_P(ConfigContract, TheListNamesWhatRunsAndWhatIsHeldInOrder,
                            AnApplicationIsHeldAsLongAsOneOfItsHandlesLives,
                            AnUnknownApplicationHasAnEmptyMapAndTheLocalServiceAsItsSink,
                            TheMapHasEveryTraceWithAnIdOfItsOwn, WhatIsSetIsLocalUntilSubmit,
                            AllTracesTakeOneWord, RefreshDropsWhatWasNotSubmittedAndReadsAnew,
                            SubmitSendsOnlyWhatThisHandleChanged,
                            ARefusedSubmitChangesNothingAndStaysHeld,
                            ALookHoldsNothingAndSubmitsOnlyWhatSomebodyHolds,
                            AnApplicationThatEndsKeepsItsStateForItsHandle,
                            WhatIsSubmittedBeforeAnApplicationBeginsWaitsForIt,
                            AnApplicationThatBeginsShowsItsTracesAfterRefresh,
                            ATraceThatComesLateIsThereAfterRefreshAndTheOthersKeepTheirIds,
                            AServiceThatIsAwayIsToldByEveryQuestionAndComesBack);

// What the classes of a machine's configuration do when an application or the service comes or
// goes, whoever made them: run for the machines that support/config_contract_fixture.h describes.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <list>
#include <string>
#include <vector>

#include "support/config_contract_fixture.h"
#include "support/wait_for.h"

template <class Machine>
class ConfigLifeContract : public ConfigContractFixture<Machine> {};
TYPED_TEST_SUITE_P(ConfigLifeContract);

TYPED_TEST_P(ConfigLifeContract, AnApplicationThatEndsKeepsItsStateForItsHandle) {
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

TYPED_TEST_P(ConfigLifeContract, WhatIsSubmittedBeforeAnApplicationBeginsWaitsForIt) {
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

TYPED_TEST_P(ConfigLifeContract, AnApplicationThatBeginsShowsItsTracesAfterRefresh) {
  const auto app = this->m_machine.Open(this->kOrders);
  EXPECT_EQ(this->Map(*app), "");
  this->m_machine.Start();
  EXPECT_EQ(this->Map(*app), "");
  EXPECT_TRUE(app->Refresh());
  EXPECT_EQ(this->Map(*app), "Db/Query=7 Net/Close=7 Net/Connect=7");
}

TYPED_TEST_P(ConfigLifeContract, ATraceThatComesLateIsThereAfterRefreshAndTheOthersKeepTheirIds) {
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
TYPED_TEST_P(ConfigLifeContract, AServiceThatIsAwayIsToldByEveryQuestionAndComesBack) {
  this->m_machine.Start();
  const auto config = this->m_machine.Connect();
  const auto app = this->m_machine.Open(this->kOrders);
  this->m_machine.TakeAway();
  EXPECT_TRUE(WaitFor([&] { return !config->IsUp(); }));
  EXPECT_FALSE(config->IsSilent()) << "nothing was asked yet";
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
    EXPECT_TRUE(config->IsSilent());
  }
  EXPECT_NE(why, "");
  EXPECT_EQ(this->Map(*app), "Db/Query=3 Net/Close=3 Net/Connect=3");
  this->m_machine.BringBack();
  EXPECT_TRUE(WaitFor([&] { return config->IsUp(); }));
  EXPECT_FALSE(config->IsSilent());
  EXPECT_EQ(this->MapThere(), "Db/Query=7 Net/Close=7 Net/Connect=7");
  EXPECT_TRUE(app->Submit()) << "what was held is sent";
  EXPECT_EQ(this->MapThere(), "Db/Query=3 Net/Close=3 Net/Connect=3");
  // It is held again too.
  this->m_machine.End();
  EXPECT_EQ(config->GetAppList(), (std::list<std::string>{"orders"}));
  EXPECT_TRUE(config->WasAnswered());
}

REGISTER_TYPED_TEST_SUITE_P(ConfigLifeContract, AnApplicationThatEndsKeepsItsStateForItsHandle,
                            WhatIsSubmittedBeforeAnApplicationBeginsWaitsForIt,
                            AnApplicationThatBeginsShowsItsTracesAfterRefresh,
                            ATraceThatComesLateIsThereAfterRefreshAndTheOthersKeepTheirIds,
                            AServiceThatIsAwayIsToldByEveryQuestionAndComesBack);

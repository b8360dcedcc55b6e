// Applications that leave a configuration: deleted, closed with it, or in a quick close.
#include "config_doc_fixture.h"

namespace {

using ConfigRemoveTest = ConfigDocTest;

TEST_F(ConfigRemoveTest, RemovingAnApplicationWhoseTracesAreAllOffAsksNothing) {
  m_machine.Run("orders", {"Net/Connect", "Net/Close"}, 0);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("orders");
  doc->SetModifiedFlag(false);
  HintedView view(*doc);
  EXPECT_TRUE(doc->RemoveApplication(app));
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Names(*doc), "");
  EXPECT_TRUE(doc->IsModified());
  EXPECT_EQ(view.m_hints, 1);
  EXPECT_EQ(m_machine.m_open.size(), 0u) << "the document's reference is dropped";
}

TEST_F(ConfigRemoveTest, YesTurnsActiveTracesOffAndRemoves) {
  m_machine.Run("orders", {"Net/Connect", "Net/Close"}, 0).traces[1].settings = 7;
  const auto doc = Connected();
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(doc->RemoveApplication(doc->AddApplication("orders")));
  EXPECT_EQ(Boxes(), Question("orders", "Yes"));
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=0 Net/Close=0");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigRemoveTest, RemovingAndAQuickCloseTakePlaceUnderAWaitCursor) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("orders");
  Shown();
  m_host.AnswerBox(BoxAnswer::Yes);
  doc->RemoveApplication(app);
  EXPECT_EQ(Shown(), "wait cursor on\n" + Question("orders", "Yes") + "wait cursor off\n");
  doc->AddApplication("billing");
  Shown();
  g_quickClose = true;
  doc->SaveModified();
  EXPECT_EQ(Shown(), kWaited);
}

TEST_F(ConfigRemoveTest, NoLeavesTheTracesRunningWhileItDisappears) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_TRUE(doc->RemoveApplication(doc->AddApplication("orders")));
  EXPECT_EQ(Boxes(), Question("orders", "No"));
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=7");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigRemoveTest, YesThatTheMachineHasNotTakenIsKeptUntilTheApplicationIsAddedAgain) {
  for (const bool silent : {true, false}) {
    m_machine.Run("a", {"Net/Connect"}, 7);
    const auto doc = Connected();
    trace_App_i* const app = doc->AddApplication("a");
    m_machine.m_away = silent;
    m_machine.m_refuses = !silent;
    doc->NoteSubmit(*app, false);
    m_host.AnswerBox(BoxAnswer::Yes);
    EXPECT_TRUE(doc->RemoveApplication(app));
    EXPECT_EQ(doc->MayBeOn(), std::set<std::string>{"a"}) << silent;
    EXPECT_EQ(doc->NotInForce(), std::set<std::string>{}) << "told once";
    EXPECT_EQ(Boxes(), Question("a", "Yes")) << "no further box";
    m_machine.m_away = m_machine.m_refuses = false;
    doc->AddApplication("a");
    EXPECT_EQ(doc->MayBeOn(), std::set<std::string>{});
    m_host.AnswerBox(BoxAnswer::Yes);
    doc->DeleteContents();
    EXPECT_EQ(doc->MayBeOn(), std::set<std::string>{}) << "taken";
    Boxes();
  }
}

TEST_F(ConfigRemoveTest, TracesThatAreOffInTheHandleOnlyStayNotInForceAfterItIsRemoved) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("a");
  m_machine.m_refuses = true;
  app->SetAllTraces(0);
  doc->NoteSubmit(*app, app->Submit());
  EXPECT_TRUE(doc->RemoveApplication(app));
  EXPECT_EQ(Boxes(), "") << "its traces are off as far as the handle knows";
  EXPECT_EQ(m_machine.InForce("a"), "Net/Connect=7");
  EXPECT_EQ(doc->NotInForce(), std::set<std::string>{"a"});
  doc->AddApplication("a");
  EXPECT_EQ(doc->NotInForce(), std::set<std::string>{}) << "the handle is what the machine holds";
}

TEST_F(ConfigRemoveTest, WhatMayBeOnIsThatOfTheLastEmptying) {
  for (const char* const name : {"a", "b"}) m_machine.Run(name, {"Net/Connect"}, 7);
  const auto doc = Connected();
  m_machine.m_refuses = true;
  for (const char* const name : {"a", "b"}) {
    doc->AddApplication(name);
    m_host.AnswerBox(BoxAnswer::Yes);
    doc->DeleteContents();
    EXPECT_EQ(doc->MayBeOn(), std::set<std::string>{name});
  }
  doc->DeleteContents();
  EXPECT_EQ(doc->MayBeOn(), std::set<std::string>{});
}

TEST_F(ConfigRemoveTest, CancelLeavesEverythingAsItWas) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("orders");
  doc->SetModifiedFlag(false);
  m_host.AnswerBox(BoxAnswer::Cancel);
  EXPECT_FALSE(doc->RemoveApplication(app));
  EXPECT_EQ(Names(*doc), "orders ");
  EXPECT_FALSE(doc->IsModified());
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=7");
}

TEST_F(ConfigRemoveTest, AnApplicationThatIsNotInTheListIsNotRemoved) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  const QuorPtr<trace_App_i> other = m_machine.Open("orders", nullptr);
  EXPECT_FALSE(doc->RemoveApplication(other.Get()));
  doc->AddApplication("orders");
  EXPECT_FALSE(doc->RemoveApplication(other.Get()));
  EXPECT_FALSE(doc->RemoveApplication(nullptr));
  EXPECT_EQ(Boxes(), "");
}

TEST_F(ConfigRemoveTest, ClosingAsksForEachApplicationInListOrderAndCancelBringsTheQuestionBack) {
  m_machine.Run("b", {"Net/Connect"}, 7);
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("b");
  doc->AddApplication("a");
  for (const BoxAnswer answer :
       {BoxAnswer::Cancel, BoxAnswer::Cancel, BoxAnswer::No, BoxAnswer::Yes})
    m_host.AnswerBox(answer);
  doc->DeleteContents();
  EXPECT_EQ(Boxes(), Question("b", "Cancel") + Question("b", "Cancel") + Question("b", "No") +
                         Question("a", "Yes"));
  EXPECT_EQ(m_machine.InForce("b") + m_machine.InForce("a"), "Net/Connect=7Net/Connect=0");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigRemoveTest, AnEndOfTheProgramEndsTheQuestionsThatCannotBeEscaped) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("a");
  m_host.m_duringBox = [] { g_quickClose = true; };
  m_host.AnswerBox(BoxAnswer::Cancel);
  doc->DeleteContents();
  EXPECT_EQ(Boxes(), Question("a", "Cancel"));
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigRemoveTest, AQuickCloseTurnsAllTracesOffAsksNothingAndWritesNoFile) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  m_machine.Run("b", {"Net/Connect", "Db/Query"}, 799);
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("b");
  doc->SetPathName(m_folder.File("web.tcf"), false);
  g_quickClose = true;
  EXPECT_TRUE(doc->SaveModified());
  doc->DeleteContents();
  EXPECT_EQ(m_machine.InForce("a") + " " + m_machine.InForce("b"),
            "Net/Connect=0 Net/Connect=0 Db/Query=0");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Names(*doc), "");
  EXPECT_FALSE(std::filesystem::exists(m_folder.File("web.tcf")));
}

TEST_F(ConfigRemoveTest, AQuickCloseWaitsOnceForAMachineThatIsAway) {
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("b");
  m_machine.m_away = true;
  m_machine.m_log.clear();
  g_quickClose = true;
  EXPECT_TRUE(doc->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\n");
  m_machine.m_away = false;
  m_machine.m_refuses = true;
  EXPECT_TRUE(doc->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\nrefresh a\nsubmit a\nrefresh b\nsubmit b\n")
      << "one that refuses is there";
}

TEST_F(ConfigRemoveTest, AQuickCloseOfSeveralWindowsWaitsOnceForTheirMachine) {
  const auto one = Connected(), two = Connected();
  one->AddApplication("a");
  two->AddApplication("b");
  m_machine.m_away = true;
  m_machine.m_log.clear();
  g_quickClose = true;
  EXPECT_TRUE(one->SaveModified());
  EXPECT_TRUE(two->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\n");
  m_machine.m_away = false;
  EXPECT_TRUE(two->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\nrefresh b\nsubmit b\n") << "it is back";
}

TEST_F(ConfigRemoveTest, YesWaitsOnceForAMachineThatIsAway) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  m_machine.Run("b", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("b");
  m_machine.m_away = true;
  m_machine.m_log.clear();
  m_host.AnswerBox(BoxAnswer::Yes);
  m_host.AnswerBox(BoxAnswer::Yes);
  doc->DeleteContents();
  EXPECT_EQ(m_machine.m_log, "refresh a\n");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigRemoveTest, AQuickCloseTurnsOffWhatTheHandleHasNotReadYet) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("late");
  m_machine.Run("a", {"Net/Late"}, 7);
  m_machine.Run("late", {"Db/Query"}, 7);
  g_quickClose = true;
  EXPECT_TRUE(doc->SaveModified());
  EXPECT_EQ(m_machine.InForce("a") + " " + m_machine.InForce("late"),
            "Net/Connect=0 Net/Late=0 Db/Query=0");
}

TEST_F(ConfigRemoveTest, YesTurnsOffWhatTheHandleHasNotReadYet) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("a");
  // Another handle keeps what is in force.
  const QuorPtr<trace_App_i> other = m_machine.Open("a", nullptr);
  m_machine.Run("a", {"Net/Late"}, 7);
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(doc->RemoveApplication(app));
  EXPECT_EQ(m_machine.InForce("a"), "Net/Connect=0 Net/Late=0");
}

}  // namespace

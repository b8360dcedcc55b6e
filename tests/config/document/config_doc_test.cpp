// The document of a configuration window: its connection, its name, its list, Clear.
#include <gmock/gmock.h>

#include "config_doc_fixture.h"
#include "docview/commands/command_ids.h"

namespace {

using testing::HasSubstr;

TEST_F(ConfigDocTest, AConnectionNamesTheWindowByItsMachine) {
  const auto doc = Connected();
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  EXPECT_EQ(doc->GetPathName(), "Configuration on web");
  EXPECT_EQ(doc->GetMachineName(), "web");
  EXPECT_TRUE(doc->IsLive());
  EXPECT_FALSE(doc->IsModified());
  EXPECT_EQ(Boxes(), "");
}

TEST_F(ConfigDocTest, ConnectingAndAddingTakePlaceUnderAWaitCursorThatIsGoneBeforeABox) {
  const auto doc = Connected();
  EXPECT_EQ(Shown(), kWaited);
  doc->AddApplication("orders");
  EXPECT_EQ(Shown(), kWaited);
  m_machine.m_away = true;
  doc->AddApplication("billing");
  EXPECT_EQ(Shown(), kWaited + Error(kNoConnection));
  EXPECT_FALSE(Document()->ConnectToMachine("web"));
  EXPECT_EQ(Shown(), kWaited + Error(kNoConnection));
}

TEST_F(ConfigDocTest, AMachineThatCannotBeReachedIsReportedAndLeavesNoConnection) {
  m_machine.m_away = true;
  const auto doc = Document();
  HintedView view(*doc);
  EXPECT_FALSE(doc->ConnectToMachine("web"));
  EXPECT_EQ(Boxes(), Error(kNoConnection));
  EXPECT_EQ(view.m_hints, 1) << "DeleteContents tells its views";
  EXPECT_FALSE(doc->GetConfig());
  EXPECT_FALSE(doc->IsLive());
}

TEST_F(ConfigDocTest, TheTitleStaysTheMachinesAfterAFileWasNamed) {
  const auto doc = Connected();
  doc->SetPathName("/tmp/web.tcf", false);
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  EXPECT_EQ(doc->GetPathName(), "/tmp/web.tcf");
}

TEST_F(ConfigDocTest, AnAddedApplicationStandsLastAndNothingIsSubmitted) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  HintedView view(*doc);
  doc->AddApplication("orders");
  const trace_App_i* const added = doc->AddApplication("billing");
  ASSERT_TRUE(added);
  EXPECT_EQ(added->GetAppName(), "billing");
  EXPECT_EQ(Names(*doc), "orders billing ");
  EXPECT_TRUE(doc->IsModified());
  EXPECT_EQ(view.m_hints, 2);
  EXPECT_EQ(m_machine.m_log, "connect web\non web open orders\non web open billing\n");
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=7");
}

TEST_F(ConfigDocTest, AnApplicationThatCannotBeReachedIsReportedAndNotAdded) {
  const auto doc = Connected();
  m_machine.m_away = true;
  EXPECT_FALSE(doc->AddApplication("orders"));
  EXPECT_EQ(Boxes(), Error(kNoConnection));
  EXPECT_EQ(Names(*doc), "");
  EXPECT_FALSE(doc->IsModified());
}

TEST_F(ConfigDocTest, AModifiedDocumentAsksToSaveByItsTitle) {
  const auto doc = Connected();
  EXPECT_TRUE(doc->SaveModified());
  doc->SetModifiedFlag(true);
  m_host.AnswerBox(BoxAnswer::Cancel);
  EXPECT_FALSE(doc->SaveModified());
  EXPECT_THAT(Boxes(), HasSubstr("\"Save changes to Configuration on web?\" (Yes, No, Cancel)"));
}

TEST_F(ConfigDocTest, ClearIsForAListThatIsNotEmptyAndAsksAboutActiveTracesWithoutChangesToo) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  CCmdUI empty(ID_EDIT_CLEAR_ALL, true, false);
  EXPECT_TRUE(doc->OnUpdateCommand(empty));
  EXPECT_FALSE(empty.IsEnabled());
  doc->AddApplication("a");
  CCmdUI filled(ID_EDIT_CLEAR_ALL, false, false);
  doc->OnUpdateCommand(filled);
  EXPECT_TRUE(filled.IsEnabled());
  doc->SetModifiedFlag(false);
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_TRUE(doc->OnCommand(ID_EDIT_CLEAR_ALL));
  EXPECT_EQ(Boxes(), Question("a", "No"));
  EXPECT_EQ(Names(*doc) + doc->GetPathName(), "");
  EXPECT_FALSE(doc->IsModified());
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  EXPECT_TRUE(doc->GetConfig());
}

TEST_F(ConfigDocTest, ClearOfAChangedDocumentMayBeCancelled) {
  const auto doc = Connected();
  doc->AddApplication("a");
  m_host.AnswerBox(BoxAnswer::Cancel);
  doc->OnCommand(ID_EDIT_CLEAR_ALL);
  EXPECT_EQ(Names(*doc), "a ");
}

TEST_F(ConfigDocTest, ReferencesAreDroppedWithTheDocument) {
  auto doc = Connected();
  doc->AddApplication("a");
  QuorPtr<trace_Config_i> config = doc->GetConfig();
  const QuorPtr<trace_AppList_i> list = doc->GetApplications();
  doc.reset();
  EXPECT_EQ(m_machine.m_handles, 2) << "ours";
  list->m_apps.clear();
  config = nullptr;
  EXPECT_EQ(m_machine.m_handles, 0);
}

}  // namespace

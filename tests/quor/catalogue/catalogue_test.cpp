// What is configured, and how long it is in force.
#include "quor/catalogue/catalogue.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "quor/catalogue/catalogue_store.h"
#include "support/temp_dir.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const auto kMe = static_cast<std::uint32_t>(getpid());
constexpr std::uint32_t kNobody = 0x3FFFFFF;  // beyond the kernel's largest process id

class CatalogueTest : public ::testing::Test {
 protected:
  std::unique_ptr<Catalogue> Begin() {
    std::string why;
    auto store = CatalogueStore::Open(m_folder.File("state.db"), &why);
    EXPECT_NE(store, nullptr) << why;
    return std::make_unique<Catalogue>(std::move(store), kDefaultSettings);
  }
  static std::uint32_t Word(Catalogue& catalogue, const std::string& app, std::uint32_t id) {
    return catalogue.Find(app)->traces[id].settings;
  }
  TempDir m_folder;
};

TEST_F(CatalogueTest, ANewApplicationStartsWithSupportAndASocketSinkToTheLocalService) {
  const auto catalogue = Begin();
  CatalogueApp* const app = catalogue->Enter("orders");
  const std::uint32_t id = catalogue->EnterTrace(*app, "Net", "Connect");
  EXPECT_EQ(Word(*catalogue, "orders", id), 7u);
  EXPECT_EQ(app->sink.kind, SinkKind::Socket);
  EXPECT_EQ(app->sink.name, "localhost");
  EXPECT_EQ(app->sink.options, "");
}

TEST_F(CatalogueTest, TraceIdsAreStableOverRestartsAndTheMapIsRemembered) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    EXPECT_EQ(catalogue->EnterTrace(*app, "Net", "Connect"), 0u);
    EXPECT_EQ(catalogue->EnterTrace(*app, "Db", "Query"), 1u);
    EXPECT_EQ(catalogue->EnterTrace(*app, "Net", "Connect"), 0u);
  }
  const auto catalogue = Begin();
  CatalogueApp* const app = catalogue->Find("orders");
  ASSERT_NE(app, nullptr);
  EXPECT_EQ(catalogue->EnterTrace(*app, "Db", "Query"), 1u);
  EXPECT_EQ(catalogue->EnterTrace(*app, "Db", "Commit"), 2u);
  EXPECT_THAT(catalogue->Registered(), IsEmpty());  // known, and neither running nor held
}

TEST_F(CatalogueTest, WhatWasSubmittedIsInForceAsLongAsAnInstanceRuns) {
  const auto catalogue = Begin();
  catalogue->EndGrace();
  CatalogueApp* const app = catalogue->Enter("orders");
  catalogue->EnterTrace(*app, "Net", "Connect");
  catalogue->BeginInstance(*app, kMe);
  catalogue->BeginInstance(*app, kMe);
  catalogue->Submit(*app, {{{0, 0x1F}}, LinkSink{SinkKind::File, "/tmp/a.trc", "flush=1;"}});
  catalogue->EndInstance(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
  EXPECT_EQ(app->sink.kind, SinkKind::File);
  catalogue->EndInstance(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
  EXPECT_EQ(app->sink.kind, SinkKind::Socket);
}

TEST_F(CatalogueTest, AnOpenHandleKeepsItInForceAndIsRegistered) {
  const auto catalogue = Begin();
  catalogue->EndGrace();
  CatalogueApp* const app = catalogue->Enter("orders");
  catalogue->EnterTrace(*app, "Net", "Connect");
  catalogue->OpenHandle(*app, kMe);
  catalogue->Submit(*app, {{{0, 0}}, {}});
  EXPECT_THAT(catalogue->Registered(), ElementsAre("orders"));
  catalogue->BeginInstance(*app, kMe);
  catalogue->EndInstance(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0u);
  catalogue->CloseHandle(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
  EXPECT_THAT(catalogue->Registered(), IsEmpty());
}

TEST_F(CatalogueTest, WhatWasSubmittedWhileNoInstanceRanWaitsForTheNextOneAlsoOverARestart) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    catalogue->EnterTrace(*app, "Net", "Connect");
    catalogue->OpenHandle(*app, kMe);
    catalogue->Submit(*app, {{{0, 0x1F}}, LinkSink{SinkKind::Socket, "other", ""}});
    catalogue->CloseHandle(*app, kMe);
    catalogue->EndGrace();
    EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
    EXPECT_THAT(catalogue->Registered(), IsEmpty());
  }
  const auto catalogue = Begin();
  catalogue->EndGrace();
  CatalogueApp* const app = catalogue->Find("orders");
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
  EXPECT_EQ(app->sink.name, "other");
  catalogue->BeginInstance(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
  catalogue->EndInstance(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
  EXPECT_EQ(app->sink.name, "localhost");
}

TEST_F(CatalogueTest, WhatWasPreparedAndReceivedDoesNotComeBackAfterARestart) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    catalogue->EnterTrace(*app, "Net", "Connect");
    catalogue->OpenHandle(*app, kMe);
    catalogue->Submit(*app, {{{0, 0x1F}}, {}});
    catalogue->CloseHandle(*app, kMe);
    catalogue->BeginInstance(*app, kNobody);
  }
  const auto catalogue = Begin();
  EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
}

TEST_F(CatalogueTest, ItSurvivesARestartWhileAHolderLives) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    catalogue->EnterTrace(*app, "Net", "Connect");
    catalogue->BeginInstance(*app, kMe);
    catalogue->Submit(*app, {{{0, 0x1F}}, LinkSink{SinkKind::Socket, "other", "node=x;"}});
  }
  const auto catalogue = Begin();
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
  EXPECT_EQ(catalogue->Find("orders")->sink.options, "node=x;");
  // The instance comes back, and it stays behind the time of grace.
  catalogue->BeginInstance(*catalogue->Find("orders"), kMe);
  catalogue->EndGrace();
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
}

TEST_F(CatalogueTest, WhoeverDoesNotComeBackAfterARestartHoldsNothing) {
  for (const std::uint32_t holder : {kMe, kNobody}) {
    {
      const auto catalogue = Begin();
      CatalogueApp* const app = catalogue->Enter("orders");
      catalogue->EnterTrace(*app, "Net", "Connect");
      catalogue->BeginInstance(*app, holder);
      catalogue->Submit(*app, {{{0, 0x1F}}, {}});
    }
    const auto catalogue = Begin();
    // One that has died meanwhile is known to be gone at once.
    EXPECT_EQ(Word(*catalogue, "orders", 0), holder == kMe ? 0x1Fu : 7u);
    catalogue->EndGrace();
    EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
  }
}

TEST_F(CatalogueTest, AnUnknownIdIsIgnored) {
  const auto catalogue = Begin();
  CatalogueApp* const app = catalogue->Enter("orders");
  catalogue->EnterTrace(*app, "Net", "Connect");
  catalogue->Submit(*app, {{{1, 3}, {0xFFFF, 3}, {0xFFFFFFFF, 3}}, {}});
  EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
  EXPECT_EQ(app->traces.size(), 1u);
}

TEST_F(CatalogueTest, AnApplicationOfWhichOnlyTheNameIsKnownIsForgottenWithItsHandle) {
  const auto catalogue = Begin();
  CatalogueApp* const app = catalogue->Enter("never started");
  catalogue->OpenHandle(*app, kMe);
  catalogue->CloseHandle(*app, kMe);
  EXPECT_EQ(catalogue->Find("never started"), nullptr);
}

TEST_F(CatalogueTest, NamesOfAnyBytesAreKept) {
  const std::string odd("od\"d'; DROP\0 x\xff", 16);
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter(odd);
    catalogue->EnterTrace(*app, odd + "c", "");
  }
  const auto catalogue = Begin();
  ASSERT_NE(catalogue->Find(odd), nullptr);
  EXPECT_EQ(catalogue->Find(odd)->traces[0].component, odd + "c");
}

TEST_F(CatalogueTest, ATraceMapStaysWithinOneFrame) {
  const auto catalogue = Begin();
  CatalogueApp* const app = catalogue->Enter("orders");
  std::uint32_t id = 0;
  for (int i = 0; i < 1000 && id != kNoTraceId; ++i)
    id = catalogue->EnterTrace(*app, std::to_string(i) + std::string(10000, 'c'), "x");
  EXPECT_EQ(id, kNoTraceId);
}

TEST_F(CatalogueTest, ASecondServiceOnTheSameStateIsRefused) {
  const auto catalogue = Begin();
  std::string why;
  EXPECT_EQ(CatalogueStore::Open(m_folder.File("state.db"), &why), nullptr);
  EXPECT_THAT(why, ::testing::HasSubstr("another quord uses it"));
}

TEST_F(CatalogueTest, ADamagedStateIsPutAsideAndANewOneBegun) {
  m_folder.File("state.db", std::string(8192, 'x'));
  const auto catalogue = Begin();
  EXPECT_NE(catalogue->Enter("orders"), nullptr);
  EXPECT_EQ(ReadAll(m_folder.File("state.db.damaged")), std::string(8192, 'x'));
}

}  // namespace

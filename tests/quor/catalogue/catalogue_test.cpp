// What is configured, and how long it is in force.
#include "quor/catalogue/catalogue.h"
#include <filesystem>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <unistd.h>

#include "quor/catalogue/catalogue_store.h"
#include "support/file_limit.h"
#include "support/temp_dir.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const auto kMe = static_cast<std::uint32_t>(getpid());
constexpr std::uint32_t kNobody = 0x3FFFFFF;  // beyond the kernel's largest process id

std::uint32_t Word(Catalogue& catalogue, const std::string& app, std::uint32_t id) {
  return catalogue.Find(app)->traces[id].settings;
}

class CatalogueTest : public ::testing::Test {
 protected:
  std::unique_ptr<Catalogue> Begin() {
    std::string why;
    auto store = CatalogueStore::Open(m_folder.File("state.db"), &why);
    EXPECT_NE(store, nullptr) << why;
    return std::make_unique<Catalogue>(std::move(store), kDefaultSettings);
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

// A change of its own for each of thousands would hold up the service for seconds.
TEST_F(CatalogueTest, ManyTracesAtOnceAreStoredInOneChange) {
  constexpr std::uint32_t kMany = 2000;
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    EXPECT_EQ(catalogue->EnterTrace(*app, "Net", "Connect"), 0u);
    for (std::uint32_t i = 1; i <= kMany; ++i)
      EXPECT_EQ(catalogue->AddTrace(*app, "Net", std::to_string(i)), i);
    catalogue->StoreTraces(*app, 1);
    EXPECT_LT(std::filesystem::file_size(m_folder.File("state.db-wal")), 1u << 20);
  }
  const auto catalogue = Begin();
  ASSERT_EQ(catalogue->Find("orders")->traces.size(), kMany + 1);
  EXPECT_EQ(catalogue->Find("orders")->traces[7].category, "7");
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

TEST_F(CatalogueTest, WhoIsOnlyFoundUsesNothingUpThatWasPrepared) {
  const auto catalogue = Begin();
  catalogue->EndGrace();
  CatalogueApp* const app = catalogue->Enter("orders");
  catalogue->EnterTrace(*app, "Net", "Connect");
  catalogue->FindInstance(*app, kMe);
  EXPECT_THAT(catalogue->Registered(), ElementsAre("orders"));
  catalogue->Submit(*app, {{{0, 0x1F}}, {}});
  catalogue->EndFound(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
  catalogue->FindInstance(*app, kMe);
  catalogue->BeginInstance(*app, kMe);
  EXPECT_EQ(app->Instances(), 1u);
  catalogue->EndInstance(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
}

TEST_F(CatalogueTest, WhoIsOnlyFoundHoldsWhatIsInForceOverARestart) {
  {
    const auto catalogue = Begin();
    catalogue->EndGrace();
    CatalogueApp* const app = catalogue->Enter("orders");
    catalogue->EnterTrace(*app, "Net", "Connect");
    catalogue->BeginInstance(*app, kMe);
    catalogue->FindInstance(*app, kMe);
    catalogue->Submit(*app, {{{0, 0x1F}}, {}});
    catalogue->EndInstance(*app, kMe);
  }
  const auto catalogue = Begin();
  EXPECT_EQ(Word(*catalogue, "orders", 0), 0x1Fu);
  catalogue->EndGrace();
  EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
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
  // The instance comes back, and the settings stay after the time of grace.
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
    // The end of one that has died meanwhile is noticed immediately.
    EXPECT_EQ(Word(*catalogue, "orders", 0), holder == kMe ? 0x1Fu : 7u);
    catalogue->EndGrace();
    EXPECT_EQ(Word(*catalogue, "orders", 0), 7u);
  }
}

TEST_F(CatalogueTest, WhatIsKeptIsWithWhatEveryInstanceBeginsAlsoOverARestart) {
  {
    const auto catalogue = Begin();
    std::vector<std::uint32_t> traces;
    CatalogueApp* const app = catalogue->Enter("orders");
    EXPECT_TRUE(catalogue->Keep(*app, SettingsText::Read("Net=max;*=off"), &traces));
    EXPECT_THAT(traces, IsEmpty()) << "it was never seen";
  }
  for (int run = 0; run < 3; ++run) {
    const auto catalogue = Begin();
    ASSERT_EQ(catalogue->Waiting().size(), 1u);
    EXPECT_EQ(catalogue->Waiting()[0]->kept.Written(), "Net=max;*=off");
    CatalogueApp* const app = catalogue->Enter("orders");
    catalogue->BeginInstance(*app, kMe);
    EXPECT_THAT(catalogue->Waiting(), IsEmpty()) << "it runs";
    const std::uint32_t net = catalogue->EnterTrace(*app, "Net", "Connect");
    const std::uint32_t db = catalogue->EnterTrace(*app, "Db", "Query");
    EXPECT_EQ(Word(*catalogue, "orders", net), 799u);
    EXPECT_EQ(Word(*catalogue, "orders", db), 0u);
    // What is set for this instance ends with it.
    catalogue->Submit(*app, {{{net, 1}, {db, 1}}, {}});
    catalogue->EndInstance(*app, kMe);
    EXPECT_EQ(Word(*catalogue, "orders", net), 799u);
    EXPECT_EQ(Word(*catalogue, "orders", db), 0u);
  }
}

TEST_F(CatalogueTest, WhatIsKeptCanBeTakenBackAndARunningInstanceHasItToItsEnd) {
  const auto catalogue = Begin();
  std::vector<std::uint32_t> traces;
  CatalogueApp* const app = catalogue->Enter("orders");
  EXPECT_FALSE(catalogue->ForgetWaiting(*app));
  catalogue->BeginInstance(*app, kMe);
  const std::uint32_t net = catalogue->EnterTrace(*app, "Net", "Connect");
  EXPECT_TRUE(catalogue->Keep(*app, SettingsText::Read("Net=max"), &traces));
  EXPECT_THAT(traces, ElementsAre(net));
  EXPECT_TRUE(catalogue->ForgetWaiting(*app));
  EXPECT_EQ(Word(*catalogue, "orders", net), 799u);
  catalogue->EndInstance(*app, kMe);
  EXPECT_EQ(Word(*catalogue, "orders", net), 7u);
  EXPECT_THAT(catalogue->Waiting(), IsEmpty());
  // And while it does not run.
  EXPECT_TRUE(catalogue->Keep(*app, SettingsText::Read("Net=off"), &traces));
  EXPECT_EQ(Word(*catalogue, "orders", net), 0u);
  EXPECT_TRUE(catalogue->ForgetWaiting(*app));
  EXPECT_EQ(Word(*catalogue, "orders", net), 7u);
}

TEST_F(CatalogueTest, WhatIsKeptIsBoundedAndForgottenWithItsApplication) {
  const auto catalogue = Begin();
  std::vector<std::uint32_t> traces;
  CatalogueApp* const app = catalogue->Enter("orders");
  const std::string name(Catalogue::kKeptBytesMax - 4, 'x');
  EXPECT_FALSE(catalogue->Keep(*app, SettingsText::Read(name + "x=off"), &traces));
  EXPECT_TRUE(catalogue->Keep(*app, SettingsText::Read(name + "=off"), &traces));
  EXPECT_TRUE(catalogue->ForgetWaiting(*app));
  EXPECT_EQ(catalogue->Find("orders"), nullptr) << "only its name was known";
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

TEST_F(CatalogueTest, ANameOfTheMostBytesIsTakenAndALongerOneIsNot) {
  const auto catalogue = Begin();
  EXPECT_NE(catalogue->Enter(std::string(Catalogue::kNameBytesMax, 'n')), nullptr);
  EXPECT_EQ(catalogue->Enter(std::string(Catalogue::kNameBytesMax + 1, 'n')), nullptr);
  EXPECT_EQ(catalogue->Enter(""), nullptr);
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

TEST_F(CatalogueTest, DamageFarAfterTheHeadOfTheStateIsFoundToo) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    for (int i = 0; i < 2000; ++i)
      catalogue->EnterTrace(*app, "Net", "category " + std::to_string(i));
  }
  std::string bytes = ReadAll(m_folder.File("state.db"));
  ASSERT_GT(bytes.size(), 40000u);
  std::fill(bytes.begin() + 20480, bytes.begin() + 36864, 'x');
  m_folder.File("state.db", bytes);
  const auto catalogue = Begin();
  EXPECT_EQ(catalogue->Find("orders"), nullptr);
  EXPECT_EQ(ReadAll(m_folder.File("state.db.damaged")), bytes);
}

TEST_F(CatalogueTest, AStateThatCannotBeOpenedIsNotTakenByAnother) {
  std::string why;
  bool isTaken = true;
  EXPECT_EQ(CatalogueStore::Open(m_folder.File("none/state.db"), &why, &isTaken), nullptr);
  EXPECT_FALSE(isTaken);
  const auto catalogue = Begin();
  EXPECT_EQ(CatalogueStore::Open(m_folder.File("state.db"), &why, &isTaken), nullptr);
  EXPECT_TRUE(isTaken);
}

TEST_F(CatalogueTest, WhatCouldNotBeWrittenOnAFullDiskIsWrittenWithTheNextChange) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const old = catalogue->Enter("old");
    catalogue->EnterTrace(*old, "Net", "0");
    CatalogueApp* fresh = nullptr;
    {
      const FileLimit full(0);
      fresh = catalogue->Enter("fresh");
      for (const char* const category : {"1", "2"}) {
        catalogue->EnterTrace(*old, "Net", category);
        catalogue->EnterTrace(*fresh, "Db", category);
      }
      catalogue->BeginInstance(*fresh, kMe);
      catalogue->Submit(*fresh, {{{1, 0x1F}}, {}});
    }
    EXPECT_EQ(catalogue->EnterTrace(*old, "Net", "3"), 3u);
    catalogue->EnterTrace(*fresh, "Db", "3");
    catalogue->OpenHandle(*fresh, kMe);
  }
  const auto catalogue = Begin();
  ASSERT_NE(catalogue->Find("fresh"), nullptr);
  ASSERT_EQ(catalogue->Find("old")->traces.size(), 4u);
  ASSERT_EQ(catalogue->Find("fresh")->traces.size(), 3u);
  for (std::uint32_t id = 0; id < 4; ++id)
    EXPECT_EQ(catalogue->EnterTrace(*catalogue->Find("old"), "Net", std::to_string(id)), id);
  EXPECT_EQ(Word(*catalogue, "fresh", 0), 7u);
  EXPECT_EQ(Word(*catalogue, "fresh", 1), 0x1Fu);
}

TEST_F(CatalogueTest, AfterATraceThatIsMissingInTheStateNoneGetsAWrongNumber) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    for (const char* const category : {"0", "1", "2"}) catalogue->EnterTrace(*app, "Net", category);
  }
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(m_folder.File("state.db").c_str(), &database), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(database, "DELETE FROM trace WHERE id = 1", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(database);
  for (int restart = 0; restart < 2; ++restart) {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Find("orders");
    EXPECT_EQ(catalogue->EnterTrace(*app, "Net", "0"), 0u);
    EXPECT_EQ(catalogue->EnterTrace(*app, "Net", "2"), 1u);
    EXPECT_EQ(app->traces.size(), 2u);
  }
}

TEST_F(CatalogueTest, ThatTheDiskWasFullUntilTheEndCostsNoTraceItsNumber) {
  {
    const auto catalogue = Begin();
    CatalogueApp* const app = catalogue->Enter("orders");
    catalogue->EnterTrace(*app, "Net", "0");
    const FileLimit full(0);
    catalogue->EnterTrace(*app, "Net", "lost");
  }
  const auto catalogue = Begin();
  CatalogueApp* const app = catalogue->Find("orders");
  EXPECT_EQ(catalogue->EnterTrace(*app, "Net", "0"), 0u);
  EXPECT_EQ(catalogue->EnterTrace(*app, "Net", "other"), 1u);
}

TEST(Catalogue, TheApplicationNotNeededForLongestMakesRoomForANewOne) {
  Catalogue catalogue(nullptr, kDefaultSettings);
  const auto runs = [&catalogue](const std::string& name) {
    CatalogueApp* const app = catalogue.Enter(name);
    if (!app) return false;
    catalogue.EnterTrace(*app, "Net", "Connect");
    catalogue.BeginInstance(*app, kMe);
    catalogue.EndInstance(*app, kMe);
    return true;
  };
  CatalogueApp* const running = catalogue.Enter("running");
  catalogue.BeginInstance(*running, kMe);
  CatalogueApp* const prepared = catalogue.Enter("prepared");
  catalogue.EnterTrace(*prepared, "Net", "Connect");
  catalogue.OpenHandle(*prepared, kMe);
  catalogue.Submit(*prepared, {{{0, 0x1F}}, {}});
  catalogue.CloseHandle(*prepared, kMe);
  ASSERT_TRUE(runs("again"));
  ASSERT_TRUE(runs("once"));
  // As from programs that have their process id in their name.
  for (std::size_t i = 4; i < Catalogue::kAppsMax; ++i) ASSERT_TRUE(runs(std::to_string(i)));
  ASSERT_TRUE(runs("again"));
  ASSERT_TRUE(runs("one more"));
  EXPECT_EQ(catalogue.Find("once"), nullptr);
  for (const char* const kept : {"again", "running", "4", "one more"})
    EXPECT_NE(catalogue.Find(kept), nullptr) << kept;
  for (std::size_t i = 0; i < 300; ++i) ASSERT_TRUE(runs("n" + std::to_string(i)));
  EXPECT_EQ(catalogue.Find("running"), running);
  EXPECT_EQ(Word(catalogue, "prepared", 0), 0x1Fu);
}

TEST(Catalogue, LargeMapsOfManyApplicationsMakeRoomForEachOther) {
  Catalogue catalogue(nullptr, kDefaultSettings);
  const auto begins = [&catalogue](const std::string& name, std::size_t traces) {
    CatalogueApp* const app = catalogue.Enter(name);
    catalogue.BeginInstance(*app, kMe);
    for (std::size_t i = 0; i < traces; ++i)
      catalogue.EnterTrace(*app, std::string(1000, 'c'), std::to_string(i));
    return app;
  };
  const auto bytes = [&catalogue](const std::string& name) {
    const CatalogueApp* const app = catalogue.Find(name);
    return app ? app->mapBytes : 0;
  };
  CatalogueApp* const running = begins("running", 2000);
  std::size_t held = 0;
  const auto count = [&](std::size_t last) {
    held = bytes("running");
    for (std::size_t i = 0; i <= last; ++i) held += bytes(std::to_string(i));
    return held;
  };
  for (std::size_t i = 0; i < 20; ++i) {
    catalogue.EndInstance(*begins(std::to_string(i), 2000), kMe);
    EXPECT_LE(count(i), Catalogue::kAllMapsBytesMax);
  }
  EXPECT_EQ(catalogue.Find("0"), nullptr);
  EXPECT_NE(catalogue.Find("19"), nullptr);
  EXPECT_GT(held, Catalogue::kAllMapsBytesMax / 2);
  EXPECT_EQ(catalogue.Find("running"), running);
  EXPECT_EQ(running->traces.size(), 2000u);
}

}  // namespace

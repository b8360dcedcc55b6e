// A hub whose batches are of one account each, and what a stream of one account is told.
#include "hub_fixture.h"
#include "quor/hub/ended_sources.h"

namespace {

Source SourceOf(uid_t account, std::uint8_t instance, std::uint64_t serial = 0) {
  Source source;
  source.instance[0] = instance;
  source.account = account;
  source.serial = serial;
  return source;
}

class Batches final : public HubStream {
 public:
  explicit Batches(Hub& hub) : m_hub(hub) { hub.Add(*this); }
  ~Batches() { m_hub.Remove(*this); }
  void OnBatch(const SharedBatch& batch) override { all.push_back(batch); }
  std::vector<SharedBatch> all;

 private:
  Hub& m_hub;
};

TEST(HubOfAccounts, NoBatchHasLossesOrForgottenSourcesOfTwoAccounts) {
  Hub hub(HubBatches::OfOneAccount);
  Batches batches(hub);
  const auto alice = hub.AddSource(SourceOf(1, 1)), again = hub.AddSource(SourceOf(1, 2)),
             bob = hub.AddSource(SourceOf(2, 3));
  hub.Lose(alice, 1, "x");
  hub.Lose(again, 2, "x");
  hub.CountLost(bob, 3);
  hub.Lose(alice, 4, "x");
  hub.Seal();
  hub.Deliver();
  ASSERT_EQ(batches.all.size(), 3u);
  EXPECT_EQ(batches.all[0]->sources.size(), 2u) << "two sources of one account";
  for (const SharedBatch& batch : batches.all)
    for (const SourceDelta& delta : batch->sources)
      EXPECT_EQ(delta.source->account, AccountOf(*batch));
  // More of both end than are kept: what is forgotten is told apart, too.
  batches.all.clear();
  for (std::uint8_t turn = 0; turn < 2; ++turn)
    for (int i = 0; i < 200; ++i) {
      Source source = SourceOf(turn == 0 ? 1 : 2, 9);
      source.instance[1] = static_cast<std::uint8_t>(i);
      source.instance[2] = turn;
      const auto added = hub.AddSource(std::move(source));
      hub.CountLost(added, 5);
      hub.EndSource(added);
    }
  for (int i = 0; i < 200; ++i) {
    Source source = SourceOf(1, 10);
    source.instance[1] = static_cast<std::uint8_t>(i);
    hub.EndSource(hub.AddSource(std::move(source)));
  }
  hub.Seal();
  hub.Deliver();
  std::uint64_t forgotten = 0;
  for (const SharedBatch& batch : batches.all)
    for (const auto& source : batch->forgotten) {
      EXPECT_EQ(source->account, AccountOf(*batch));
      ++forgotten;
    }
  EXPECT_EQ(forgotten, 600u - 256u);
  EXPECT_EQ(hub.Forgotten(1), 200u * 5);
  EXPECT_EQ(hub.Forgotten(2), 144u * 5);
  EXPECT_EQ(hub.Forgotten(), hub.Forgotten(1) + hub.Forgotten(2));
}

// Its instance is made of what a program says of itself.
TEST(HubOfAccounts, ASourceComesBackOnlyToItsOwnAccount) {
  Hub hub(HubBatches::OfOneAccount);
  const auto alice = hub.AddSource(SourceOf(1, 7));
  hub.CountLost(alice, 10);
  hub.EndSource(alice);
  const auto bob = hub.AddSource(SourceOf(2, 7, 1000));
  EXPECT_NE(bob, alice);
  EXPECT_NE(bob->instance, alice->instance);
  EXPECT_EQ(alice->serial, 10u);
  EXPECT_EQ(hub.AddSource(SourceOf(1, 7)), alice);
}

TEST(HubOfAccounts, TheAccountFollowsEveryNameOfAProcess) {
  Hub hub(HubBatches::OfOneAccount);
  SourceNames names;
  names.SetAccount("alice", 4711);
  names.Enter(AppNameId{1}, "7");
  names.Enter(AppNameId{2}, "8 bob");
  HubNameId id{};
  for (int times = 0; times < 2; ++times) {
    ASSERT_TRUE(names.FindPid(AppNameId{1}, hub.Names(), id));
    EXPECT_EQ(hub.Names().Text(id), "7 alice");
    ASSERT_TRUE(names.FindPid(AppNameId{2}, hub.Names(), id));
    EXPECT_EQ(hub.Names().Text(id), "4711 alice");
  }
  EXPECT_FALSE(names.FindPid(AppNameId{3}, hub.Names(), id));
  // The same name is the plain text where no process is meant.
  ASSERT_TRUE(names.Find(AppNameId{1}, hub.Names(), id));
  EXPECT_EQ(hub.Names().Text(id), "7");
  names.Enter(AppNameId{1}, "9");
  ASSERT_TRUE(names.FindPid(AppNameId{1}, hub.Names(), id));
  EXPECT_EQ(hub.Names().Text(id), "9 alice");
}

// Else one program that invents names would take them from everybody.
TEST(HubOfAccounts, AnAccountUsesUpOnlyItsShareOfTheNames) {
  Hub hub(HubBatches::OfOneAccount);
  SourceNames alice, another, bob;
  alice.SetShare(hub.Names().ShareOf(1));
  another.SetShare(hub.Names().ShareOf(1));
  bob.SetShare(hub.Names().ShareOf(2));
  HubNameId id{};
  for (std::uint16_t name = 1; name <= NameShare::kNamesMax; ++name) {
    alice.Enter(AppNameId{name}, "alice " + std::to_string(name));
    ASSERT_TRUE(alice.Find(AppNameId{name}, hub.Names(), id));
    ASSERT_NE(id, HubNames::kOverflow);
  }
  EXPECT_FALSE(alice.Share()->MustReport());
  another.Enter(AppNameId{1}, "one more");
  ASSERT_TRUE(another.Find(AppNameId{1}, hub.Names(), id));
  EXPECT_EQ(id, HubNames::kOverflow);
  EXPECT_TRUE(alice.Share()->MustReport());
  EXPECT_FALSE(alice.Share()->MustReport());
  another.Enter(AppNameId{2}, "alice 7");
  ASSERT_TRUE(another.Find(AppNameId{2}, hub.Names(), id));
  EXPECT_EQ(hub.Names().Text(id), "alice 7") << "what is there may be used";
  bob.Enter(AppNameId{1}, "one more");
  ASSERT_TRUE(bob.Find(AppNameId{1}, hub.Names(), id));
  EXPECT_EQ(hub.Names().Text(id), "one more");
  // The names begin anew, and so does the share.
  hub.Names().Clear();
  another.Follow(hub.Names());
  ASSERT_TRUE(another.Find(AppNameId{1}, hub.Names(), id));
  EXPECT_EQ(hub.Names().Text(id), "one more");
}

// A program may change its name with each link, and have a loss reported under each.
TEST(HubOfAccounts, ReportsOfLossesUseUpOnlyTheShareOfTheirAccount) {
  Hub hub(HubBatches::OfOneAccount);
  TakingStream stream(hub);
  Source source;
  source.account = 1;
  const auto alice = hub.AddSource(source);
  for (std::size_t name = 0; name < NameShare::kNamesMax + 100; ++name) {
    alice->app = "name " + std::to_string(name);
    hub.Lose(alice, 1, "no room");
    hub.Deliver();
  }
  EXPECT_LT(hub.Names().Count(), NameShare::kNamesMax + 50);
  SourceNames bob;
  bob.SetShare(hub.Names().ShareOf(2));
  bob.Enter(AppNameId{1}, "his own");
  HubNameId id{};
  ASSERT_TRUE(bob.Find(AppNameId{1}, hub.Names(), id));
  EXPECT_EQ(hub.Names().Text(id), "his own");
}

}  // namespace

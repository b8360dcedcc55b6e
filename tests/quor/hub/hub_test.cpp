// The hub and what waits for its streams: numbers, names, batches, losses, ledgers.
#include "quor/hub/hub.h"

#include <gmock/gmock.h>

#include "hub_fixture.h"
#include "quor/hub/batch_records.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

TEST(HubNames, TheSameTextHasTheSameIdAndTheEmptyTextIsZero) {
  HubNames names;
  EXPECT_EQ(names.IdOf(""), HubNameId{0});
  const HubNameId id = names.IdOf("orders");
  EXPECT_EQ(names.IdOf("orders"), id);
  EXPECT_NE(names.IdOf("billing"), id);
  EXPECT_EQ(names.Text(id), "orders");
}

TEST(HubNames, AfterSixtyFiveThousandNamesAllFurtherTextsShareOneThatSaysSo) {
  HubNames names;
  for (int i = 0; i < 70000; ++i) names.IdOf("name " + std::to_string(i));
  EXPECT_TRUE(names.IsFull());
  EXPECT_EQ(names.IdOf("one more"), HubNames::kOverflow);
  EXPECT_EQ(names.Text(HubNames::kOverflow), "(no more names: 65,535 are in use)");
  EXPECT_EQ(names.Text(names.IdOf("name 60000")), "name 60000");  // never a wrong name
  EXPECT_EQ(names.Text(names.IdOf("Loss")), "Loss");
}

TEST(HubNames, TheRoomForTextsIsBounded) {
  HubNames names;
  for (int i = 0; i < 2000; ++i) names.IdOf(std::string(65535, 'x') + std::to_string(i));
  EXPECT_FALSE(names.IsFull());  // they are all cut to one text
  for (int i = 0; i < 1100; ++i) names.IdOf(std::to_string(i) + std::string(65000, 'x'));
  EXPECT_TRUE(names.IsFull());
  EXPECT_LE(names.Count(), 1100u);
}

TEST(Hub, NumbersTracesInTheOrderOfTakingOverAllSources) {
  Hub hub;
  FedSource one(hub, "orders", 1), two(hub, "billing", 2);
  TakingStream stream(hub);
  one.Trace("a");
  two.Trace("b");
  one.Trace("c");
  EXPECT_THAT(stream.Read(), ElementsAre("1 orders Net/Connect a", "2 billing Net/Connect b",
                                         "3 orders Net/Connect c"));
}

TEST(Hub, TheNumberSkipsTheValueThatMeansNone) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream stream(hub);
  hub.SetNextNumber(0xFFFFFFFE);
  for (const char* text : {"a", "b", "c"}) one.Trace(text);
  EXPECT_THAT(stream.Read(), ElementsAre("4294967294 orders Net/Connect a",
                                         "0 orders Net/Connect b", "1 orders Net/Connect c"));
}

TEST(Hub, ALossStandsWhereItHappenedAndKeepsOutOfTheCount) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream stream(hub);
  one.Trace("a");
  one.Lose(12, "the ring of the application was full");
  one.Trace("b");
  EXPECT_THAT(stream.Read(),
              ElementsAre("1 orders Net/Connect a",
                          "- orders Quor/Loss 12 traces lost: the ring of the application was full",
                          "2 orders Net/Connect b"));
  EXPECT_EQ(stream.Delivered(), 2u);
  EXPECT_EQ(stream.Lost(), 12u);
  EXPECT_EQ(one.Get()->serial, 14u);
}

TEST(Hub, AMonitorGetsWhatIsTakenFromItsSubscribeOnAndEachNameOnce) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream early(hub);
  one.Trace("a");
  TakingStream late(hub);
  one.Trace("b");
  EXPECT_THAT(early.Read(), ElementsAre("1 orders Net/Connect a", "2 orders Net/Connect b"));
  EXPECT_THAT(late.Read(), ElementsAre("2 orders Net/Connect b"));
  EXPECT_EQ(late.ledger.begin()->second.serial(), 2u);
  EXPECT_EQ(late.ledger.begin()->second.delivered(), 1u);
}

TEST(Hub, WithoutAMonitorTracesAreCountedAndNothingIsKept) {
  Hub hub;
  FedSource one(hub, "orders");
  for (int i = 0; i < 1000; ++i) one.Trace("nobody looks");
  EXPECT_FALSE(hub.HasOpenBatch());
  TakingStream stream(hub);
  one.Trace("seen");
  EXPECT_THAT(stream.Read(), ElementsAre("1001 orders Net/Connect seen"));
  EXPECT_EQ(stream.ledger.begin()->second.serial(), 1001u);
}

TEST(Hub, NamesAreBegunAnewWhenTheLastMonitorHasGone) {
  Hub hub;
  FedSource one(hub, "orders");
  {
    TakingStream stream(hub);
    one.Trace("a");
    stream.Read();
  }
  EXPECT_EQ(hub.Names().Count(), 3u);
  TakingStream stream(hub);
  one.Trace("b");
  EXPECT_THAT(stream.Read(), ElementsAre("2 orders Net/Connect b"));
}

TEST(Hub, AMonitorThatComesBackLearnsHowFarTheSourcesCameThatEndedMeanwhile) {
  Hub hub;
  FedSource one(hub, "orders");
  for (int i = 0; i < 5; ++i) one.Trace("nobody looks");
  hub.EndSource(one.Get());
  const auto sources = hub.Sources();
  ASSERT_EQ(sources.size(), 1u);
  EXPECT_EQ(sources[0]->serial, 5u);
  EXPECT_TRUE(sources[0]->ended);
  EXPECT_EQ(hub.Forgotten(), 0u);
  // Not for ever: the oldest are forgotten, but for the sum.
  for (std::uint32_t pid = 0; pid < 256; ++pid) {
    Source source;
    source.instance[0] = 9;
    StoreBe32(source.instance.data() + 4, pid);
    hub.EndSource(hub.AddSource(source));
  }
  EXPECT_EQ(hub.Sources().size(), 256u);
  EXPECT_EQ(hub.Sources().front()->instance[0], 9u);
  EXPECT_EQ(hub.Forgotten(), 5u);
}

TEST(Hub, ASourceOfAnEarlierServiceIsKeptLonger) {
  Hub hub;
  Source earlier;
  earlier.instance[0] = 1;
  earlier.serial = 3;
  hub.EndSource(hub.AddSource(earlier));
  for (std::uint32_t pid = 0; pid < 300; ++pid) {
    Source source;
    source.instance[0] = 9;
    StoreBe32(source.instance.data() + 4, pid);
    hub.EndSource(hub.AddSource(source));
  }
  EXPECT_EQ(hub.Sources().back()->instance[0], 1u);
  EXPECT_EQ(hub.Forgotten(), 0u);
}

TEST(Hub, ASourceThatComesBackIsTheSameAndWhatWasTakenElsewhereIsALoss) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream stream(hub);
  one.Trace("a");
  stream.Read();
  hub.EndSource(one.Get());
  Source again = *one.Get();
  again.serial = 4;
  again.ended = false;
  EXPECT_EQ(hub.AddSource(again), one.Get());
  one.Trace("b");
  EXPECT_THAT(stream.Read(),
              ElementsAre("- orders Quor/Loss 3 traces lost: they were taken where nobody counts "
                          "them",
                          "2 orders Net/Connect b"));
  EXPECT_EQ(stream.Delivered(), 2u);
  EXPECT_EQ(stream.Lost(), 3u);
}

TEST(Hub, SixtyThousandNamesAndBeyondNeverGiveAWrongName) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream stream(hub);
  // An application may name its ids again; only the text counts.
  Lines lines;
  for (int i = 0; i < 70000; ++i) {
    const std::string text = "category " + std::to_string(i);
    one.Name(4, text);
    one.Trace(text);
    if (i % 1000 == 999)
      for (std::string& line : stream.Read()) lines.push_back(std::move(line));
  }
  std::size_t reported = 0, shared = 0, good = 0;
  for (const std::string& line : lines) {
    if (line.find("All 65,535 names are in use") != line.npos) {
      ++reported;
    } else if (line.find("Net/(no more names: 65,535 are in use) category ") != line.npos) {
      ++shared;
    } else {
      const std::size_t at = line.find("Net/");
      const std::string rest = line.substr(at + 4);
      ASSERT_EQ(rest.substr(0, rest.size() / 2), rest.substr(rest.size() / 2 + 1)) << line;
      ++good;
    }
  }
  EXPECT_EQ(reported, 1u);
  EXPECT_GT(good, 60000u);
  EXPECT_EQ(good + shared, 70000u);
}

TEST(Hub, AnIdThatTheSourceNeverNamedGetsANameThatSaysSo) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream stream(hub);
  RecordFieldsOf<AppNameId> fields;
  fields.component = AppNameId{999};
  one.Trace("a", fields);
  EXPECT_THAT(stream.Read(),
              ElementsAre("1 orders (a name that the application never entered)/Connect a"));
}

TEST(Hub, AnIdThatIsNamedAgainAndTheSameIdOfAnotherSourceMeanTheirOwnText) {
  Hub hub;
  TakingStream stream(hub);
  FedSource one(hub, "orders", 1);
  one.Trace("a");
  one.Name(3, "Db");
  one.Trace("b");
  FedSource two(hub, "billing", 2);
  two.Trace("c");
  EXPECT_THAT(stream.Read(), ElementsAre("1 orders Net/Connect a", "2 orders Db/Connect b",
                                         "3 billing Net/Connect c"));
}

TEST(Hub, TheLongestRecordsAndNamesStayWithinOneFrame) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream stream(hub);
  for (int i = 0; i < 40; ++i) {
    for (std::uint16_t id = 10; id < 16; ++id)
      one.Name(id, std::to_string(i * 10 + id) + std::string(65000, 'n'));
    one.Trace(std::string(65535, 't'), {.machine = AppNameId{10},
                                        .app = AppNameId{11},
                                        .component = AppNameId{12},
                                        .category = AppNameId{13},
                                        .pid = AppNameId{14},
                                        .tid = AppNameId{15}});
  }
  EXPECT_EQ(stream.Read().size(), 40u);  // the reader checks each frame's length
}

TEST(StreamQueue, AFullQueueDropsTheOldestAndTheSumIsExact) {
  Hub hub;
  FedSource one(hub, "orders", 1), two(hub, "billing", 2);
  TakingStream slow(hub, {256u << 10, 10000, "the monitor is too slow"});
  TakingStream fast(hub);
  for (int i = 0; i < 20000; ++i) {
    one.Trace("some text of a usual length, as applications have it");
    if (i % 3 == 0) two.Trace("other");
    if (i % 1000 == 0) one.Lose(5, "the ring of the application was full");
    hub.Deliver();
  }
  EXPECT_LE(slow.Queue().WaitingBytes(), 256u << 10);
  const Lines lines = slow.Read();
  EXPECT_EQ(slow.numbered, slow.Delivered());
  EXPECT_EQ(slow.Delivered() + slow.Lost(), one.Get()->serial + two.Get()->serial);
  EXPECT_GT(slow.Lost(), 10000u);
  // In front, where they are missing, one report for each source.
  EXPECT_NE(lines[0].find(" traces lost: the monitor is too slow"), std::string::npos);
  EXPECT_NE(lines[1].find(" traces lost: the monitor is too slow"), std::string::npos);
  fast.Read();
  EXPECT_EQ(fast.Lost(), 100u);  // the slow monitor costs this one nothing
  EXPECT_EQ(fast.Delivered(), one.Get()->serial + two.Get()->serial - 100);
}

TEST(StreamQueue, APausedMonitorGetsNothingAndKeepsABacklogOfTenThousand) {
  Hub hub;
  FedSource one(hub, "orders");
  TakingStream stream(hub);
  one.Trace("before");
  EXPECT_EQ(stream.Read().size(), 1u);
  stream.Queue().Pause();
  for (int i = 0; i < 25000; ++i) one.Trace("paused");
  EXPECT_THAT(stream.Read(), IsEmpty());
  stream.Queue().Resume();
  const Lines lines = stream.Read();
  EXPECT_NE(lines[0].find(" traces lost: the monitor is paused"), std::string::npos) << lines[0];
  EXPECT_LE(lines.size() - 1, 10000u);
  EXPECT_GT(lines.size() - 1, 8000u);
  EXPECT_EQ(stream.Delivered() + stream.Lost(), 25001u);
  EXPECT_EQ(lines.back(), "25001 orders Net/Connect paused");  // the newest are kept
}

TEST(StreamQueue, AStreamThatBeginsAnewHasEveryNameAgainAndCountsFromThere) {
  Hub hub(HubBatches::OfOneSource);
  FedSource one(hub, "orders");
  TakingStream first(hub);
  one.Trace("taken");
  first.Read();
  one.Trace("under way");
  first.Deliver();
  Outgoing out;
  ASSERT_TRUE(first.Queue().Next(out));
  const std::vector<SharedBatch> kept = {out.batch};
  first.Queue().Restart(kept);
  first.names.clear();
  first.ledger.clear();
  ASSERT_TRUE(first.Queue().Next(out));
  EXPECT_NE(out.names, nullptr);
  ASSERT_EQ(out.ledger.sources_size(), 1);
  EXPECT_EQ(out.ledger.sources(0).serial(), 2u);
  EXPECT_EQ(out.ledger.sources(0).delivered(), 1u);  // the first was there before this stream
}

// Otherwise a frame that comes again would have other numbers than at first.
TEST(StreamQueue, WhatComesAgainStandsBeforeWhatWasDroppedAfterItAndIsNeverDropped) {
  Hub hub(HubBatches::OfOneSource);
  FedSource one(hub, "orders");
  TakingStream stream(hub, {1u << 14, 0, "broken", true});
  std::vector<SharedBatch> sent;
  Outgoing out;
  for (int i = 0; i < 3; ++i) {
    one.Trace("sent " + std::to_string(i));
    stream.Deliver();
    ASSERT_TRUE(stream.Queue().Next(out));
    sent.push_back(out.batch);
  }
  const auto flood = [&] {
    for (int i = 0; i < 2000; ++i) {
      one.Trace("later " + std::to_string(i));
      stream.Deliver();
    }
  };
  flood();
  stream.Queue().Restart(sent);
  flood();
  for (std::uint64_t i = 0; i < 3; ++i) {
    ASSERT_TRUE(stream.Queue().HasAgain());
    ASSERT_TRUE(stream.Queue().Next(out));
    EXPECT_EQ(out.batch, sent[i]);
    ASSERT_EQ(out.ledger.sources_size(), 1);
    EXPECT_EQ(out.ledger.sources(0).serial(), i + 1);
    EXPECT_EQ(out.ledger.sources(0).delivered(), i + 1);
  }
  EXPECT_FALSE(stream.Queue().HasAgain());
  ASSERT_TRUE(stream.Queue().Next(out));
  EXPECT_GT(out.ledger.sources(0).lost(), 2000u) << "the losses stand in their place";
  while (stream.Queue().Next(out)) continue;
  EXPECT_EQ(out.ledger.sources(0).serial(), 4003u);
}

TEST(Batch, KnowsTheSourceOfEachOfItsRecordsAlsoOfReports) {
  Hub hub;
  FedSource one(hub, "orders", 1), two(hub, "billing", 2);
  SharedBatch batch;
  TakingStream stream(hub);
  stream.change = [&](const SharedBatch& got) { return batch = got; };
  one.Trace("a");
  two.Lose(3, "gone");
  one.Trace("b");
  one.Lose(1, "gone");
  two.Trace("c");
  stream.Deliver();
  ASSERT_NE(batch, nullptr);
  std::string seen;
  SourceOfRecord sources(*batch);
  ForEachRecord(*batch, [&](Bytes record) {
    seen += batch->sources[sources.Next()].source->app + ": " +
            std::string(RawHubTrace(record.data()).Text()) + "\n";
  });
  EXPECT_EQ(seen,
            "orders: a\nbilling: 3 traces lost: gone\norders: b\norders: 1 traces lost: gone\n"
            "billing: c\n");
}

// So many that the hub forgets those that ended before.
void EndMany(Hub& hub) {
  for (std::uint32_t pid = 0; pid < 256; ++pid) {
    Source other;
    other.instance[0] = 9;
    StoreBe32(other.instance.data() + 4, pid);
    hub.EndSource(hub.AddSource(other));
  }
}

TEST(StreamQueue, AForgottenSourceIsReportedAfterItsLastLine) {
  Hub hub;
  TakingStream stream(hub);
  FedSource one(hub, "orders", 1);
  one.Trace("a");
  hub.EndSource(one.Get());
  EndMany(hub);
  stream.Deliver();
  Outgoing out;
  ASSERT_TRUE(stream.Queue().Next(out));
  ASSERT_EQ(out.ledger.sources_size(), 1);
  EXPECT_EQ(out.ledger.sources(0).serial(), 1u);
  ASSERT_EQ(out.ledger.forgotten_sources_size(), 1);
  EXPECT_EQ(out.ledger.forgotten_sources(0).instance(), out.ledger.sources(0).instance());
  EXPECT_EQ(out.ledger.forgotten_sources(0).serial(), 1u);
  EXPECT_EQ(stream.Queue().WholeLedger().sources_size(), 0);
}

TEST(StreamQueue, AFullQueueReportsAForgottenSourceAfterItsLoss) {
  Hub hub;
  TakingStream stream(hub, {1000, 0, "too slow", false});
  FedSource one(hub, "orders", 1), two(hub, "billing", 2);
  one.Trace("told");
  EXPECT_EQ(stream.Read().size(), 1u);
  one.Trace("a");
  hub.EndSource(one.Get());
  EndMany(hub);
  for (int i = 0; i < 30; ++i) {
    two.Trace("b");
    stream.Deliver();
  }
  Outgoing out;
  ASSERT_TRUE(stream.Queue().Next(out));
  ASSERT_EQ(out.ledger.sources_size(), 2);
  EXPECT_EQ(out.ledger.sources(0).lost(), 1u);
  ASSERT_EQ(out.ledger.forgotten_sources_size(), 1);
  ASSERT_TRUE(stream.Queue().Next(out));
  EXPECT_EQ(out.ledger.forgotten_sources_size(), 0);
}

// A pause may last for hours while applications come and go: no list of them may grow.
TEST(StreamQueue, APauseKeepsOfTheSourcesThatCameAndWentOnlyTheirSum) {
  constexpr std::uint64_t kSources = 30000;
  Hub hub;
  FedSource steady(hub, "steady", 1);
  TakingStream stream(hub, {32u << 20, 1000, "too slow"});
  steady.Trace("before");
  EXPECT_EQ(stream.Read().size(), 1u);
  stream.Queue().Pause();
  for (std::uint32_t i = 0; i < kSources; ++i) {
    FedSource brief(hub, "brief", i + 2);
    brief.Trace("of many that nobody waits for");
    if (i % 2 == 0) brief.Lose(2, "the ring of the application was full");
    steady.Trace("x");
    hub.EndSource(brief.Get());
    hub.Deliver();
  }
  stream.Queue().Resume();
  const Lines lines = stream.Read();
  // Of those in the backlog and those that the hub still knows each one has a report of its own.
  EXPECT_LT(lines.size(), 4000u);
  EXPECT_EQ(stream.Delivered() + stream.Lost(), 1 + kSources * 3);
  EXPECT_EQ(stream.Forgotten(), hub.Forgotten());
  EXPECT_GT(hub.Forgotten(), kSources);
}

// Sources that an earlier service knew; a forwarder may claim any number of them.
void EndManyOlder(Hub& hub, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    Source older;
    older.instance[0] = 8;
    StoreBe32(older.instance.data() + 4, i);
    older.serial = 5;
    const auto source = hub.AddSource(older);
    hub.CountLost(source, 2);
    hub.EndSource(source);
    hub.Deliver();
  }
}

TEST(StreamQueue, APauseReportsOnlySoManySourcesOfAnEarlierServiceSingly) {
  constexpr std::uint32_t kSources = 30000;
  Hub hub;
  FedSource steady(hub, "steady", 1);
  TakingStream stream(hub, {32u << 20, 0, "too slow"});
  stream.Queue().Pause();
  EndManyOlder(hub, kSources);
  steady.Trace("x");
  stream.Deliver();
  stream.Queue().Resume();
  const Lines lines = stream.Read();
  EXPECT_LT(lines.size(), StreamLosses::kReportedSinglyMax + 9000);
  EXPECT_EQ(stream.Lost() + stream.Delivered(), 2 * kSources + 1);
  EXPECT_EQ(stream.Forgotten(), hub.Forgotten());
}

TEST(StreamQueue, ALedgerOfManyForgottenSourcesIsSplitIntoFrames) {
  constexpr std::uint32_t kSources = 150000;
  Hub hub;
  TakingStream stream(hub);
  for (std::uint32_t i = 0; i < kSources; ++i) {
    Source brief;
    StoreBe32(brief.instance.data(), i + 1);
    hub.EndSource(hub.AddSource(brief));
  }
  stream.Deliver();
  Outgoing out;
  std::uint64_t words = 0;
  while (stream.Queue().Next(out)) {
    EXPECT_LT(out.ledger.ByteSizeLong(), kControlFrameBytesMax / 8);
    words += static_cast<std::uint64_t>(out.ledger.forgotten_sources_size());
  }
  EXPECT_EQ(words, kSources - 256);
}

TEST(StreamQueue, WhatArrivedAsPartOfASumIsNotedForEachSourceOfIt) {
  Hub hub(HubBatches::OfOneSource, "other");
  TakingStream stream(hub, {1, 0, "the link is broken", true});
  std::vector<std::shared_ptr<Source>> sources;
  std::vector<std::uint64_t> noted(3, 0);
  for (std::uint32_t i = 0; i < noted.size(); ++i) {
    FedSource brief(hub, "brief", i + 2);
    sources.push_back(brief.Get());
    sources.back()->noteForwarded = [&noted, i](std::uint64_t forwarded) { noted[i] = forwarded; };
    for (std::uint32_t traces = 0; traces <= i; ++traces) brief.Trace("a");
    hub.EndSource(brief.Get());
  }
  EndMany(hub);
  FedSource last(hub, "last", 1);
  last.Trace("b");
  stream.Deliver();
  Outgoing out;
  ASSERT_TRUE(stream.Queue().Next(out));
  ASSERT_EQ(out.batch->sources.size(), 1u);
  const SourceDelta& sum = out.batch->sources[0];
  EXPECT_EQ(sum.lost, 6u);
  ASSERT_TRUE(sum.source->noteForwarded);
  EXPECT_EQ(noted, (std::vector<std::uint64_t>{0, 0, 0}));
  sources[2].reset();  // its file is not kept any more
  sum.source->noteForwarded(sum.lost);
  EXPECT_EQ(noted, (std::vector<std::uint64_t>{1, 2, 0}));
}

TEST(StreamQueue, ASourceThatWasForgottenAndComesBackBeginsAnewAfterItsLastSerial) {
  Hub hub;
  TakingStream stream(hub);
  FedSource one(hub, "orders", 1);
  one.Trace("a");
  hub.EndSource(one.Get());
  EndMany(hub);
  stream.Read();
  Source again = *one.Get();
  again.ended = false;
  again.serial = 1;
  const auto back = hub.AddSource(again);
  hub.CountLost(back, 2);
  stream.Deliver();
  Outgoing out;
  ASSERT_TRUE(stream.Queue().Next(out));
  ASSERT_EQ(out.ledger.sources_size(), 1);
  EXPECT_EQ(out.ledger.sources(0).serial(), 3u);
  EXPECT_EQ(out.ledger.sources(0).delivered(), 0u);
  EXPECT_EQ(out.ledger.sources(0).lost(), 2u);
}

TEST(Hub, AForwardingHubNeverMixesSourcesInABatch) {
  Hub hub(HubBatches::OfOneSource);
  FedSource one(hub, "orders", 1), two(hub, "billing", 2);
  TakingStream stream(hub, {1u << 20, 0, "broken", true});
  for (int i = 0; i < 10; ++i) {
    one.Trace("a");
    two.Trace("b");
  }
  stream.Deliver();
  Outgoing out;
  while (stream.Queue().Next(out)) {
    EXPECT_EQ(out.ledger.sources_size(), 1);
    stream.Take(out);
  }
  EXPECT_EQ(stream.Delivered(), 20u);
}

}  // namespace

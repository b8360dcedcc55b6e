// The ring, its producers and its consumer, in one process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <random>
#include <string>
#include <thread>

#include "quor/ring/ring_consumer.h"
#include "quor/ring/ring_producer.h"
#include "records/record_fields.h"

namespace {

constexpr std::uint64_t kSalt = 0xFEDCBA9876543210;

class RingTest : public testing::Test {
 protected:
  void SetUp() override { Make(4096); }
  void Make(std::uint32_t ringBytes) {
    SegmentSizes sizes;
    sizes.points = 16;
    sizes.nameBytes = 4096;
    sizes.ringBytes = ringBytes;
    ASSERT_TRUE(m_segment.Create(sizes, 1, kSalt));
    m_producer = RingProducer(m_segment);
  }
  static bool Trace(RingProducer& producer, const std::string& text) {
    RingProducer::Slot slot;
    if (!producer.Reserve(static_cast<std::uint32_t>(kTraceFixedBytes + text.size()), slot))
      return false;
    StoreRecord<AppNameId>(slot.record, {.text = text});
    producer.Commit(slot);
    return true;
  }
  bool Trace(const std::string& text) { return Trace(m_producer, text); }
  // Reserves without ever committing.
  RingProducer::Slot Leave(std::size_t bytes = kTraceFixedBytes) {
    RingProducer::Slot slot;
    EXPECT_TRUE(m_producer.Reserve(static_cast<std::uint32_t>(bytes), slot));
    return slot;
  }
  static std::string TextOf(const RingItem& item) {
    return item.trace.empty() ? "-" : std::string(RawAppTrace(item.trace.data()).Text());
  }
  // All items as "drops+damaged:text", until empty.
  static std::string All(RingConsumer& consumer, bool dead = false) {
    std::string all;
    RingItem item;
    RingStep step;
    while ((step = dead ? consumer.NextOfDead(item) : consumer.Next(item)) == RingStep::Item) {
      if (item.dropsBefore + item.damagedBefore != 0)
        all += std::to_string(item.dropsBefore) + "+" + std::to_string(item.damagedBefore) + ":";
      all += TextOf(item) + " ";
    }
    return all + (step == RingStep::Empty ? "." : "broken");
  }

  SegmentMap m_segment;
  RingProducer m_producer;
};

TEST_F(RingTest, TracesComeOutInTheOrderInWhichTheyWereReserved) {
  RingConsumer consumer(m_segment);
  EXPECT_EQ(All(consumer), ".");
  Trace("a");
  Trace("b");
  EXPECT_EQ(All(consumer), "a b .");
  EXPECT_EQ(consumer.Traces(), 2u);
}

TEST_F(RingTest, AConsumerStopsAtARecordThatIsNotCommittedYet) {
  RingConsumer consumer(m_segment);
  Trace("a");
  const RingProducer::Slot slot = Leave();
  Trace("c");
  EXPECT_EQ(All(consumer), "a .");
  StoreRecord<AppNameId>(slot.record, {});
  m_producer.Commit(slot);
  EXPECT_EQ(All(consumer), " c .");
}

TEST_F(RingTest, ManyLapsWithEverySizeOfPaddingKeepEveryTrace) {
  RingConsumer consumer(m_segment);
  for (int i = 0; i < 20000; ++i) {
    const std::string text(static_cast<std::size_t>(i % 97), 'x');
    ASSERT_TRUE(Trace(text)) << i;
    RingItem item;
    ASSERT_EQ(consumer.Next(item), RingStep::Item) << i;
    ASSERT_EQ(TextOf(item), text);
    consumer.Publish();
  }
}

TEST_F(RingTest, ARecordThatEndsWhereTheRingEndsNeedsNoPadding) {
  const std::string text(128 - sizeof(RingRecord) - kTraceFixedBytes, 'x');
  int kept = 0;
  while (Trace(text)) ++kept;
  EXPECT_EQ(kept, 4096 / 128);
}

TEST_F(RingTest, AFullRingDropsTheNewestAndTheNextRecordTellsHowMany) {
  RingConsumer consumer(m_segment);
  int kept = 0;
  while (Trace("x")) ++kept;
  EXPECT_FALSE(Trace("y"));
  EXPECT_EQ(m_segment.Header()->dropped.load(), 2u);
  RingItem item;
  for (int i = 0; i < kept; ++i) {
    ASSERT_EQ(consumer.Next(item), RingStep::Item);
    EXPECT_EQ(item.dropsBefore, 0u);
  }
  consumer.Publish();
  EXPECT_TRUE(Trace("z"));
  EXPECT_EQ(All(consumer), "2+0:z .");
  EXPECT_EQ(consumer.Drops(), 2u);
}

TEST_F(RingTest, DropsAfterTheLastRecordAreReportedWithoutOne) {
  RingConsumer consumer(m_segment);
  while (Trace("x")) {
  }
  const std::string all = All(consumer);
  EXPECT_EQ(all.substr(all.size() - 7), "1+0:- .");
}

TEST_F(RingTest, ATraceLongerThanTheRingIsCountedAsDropped) {
  EXPECT_FALSE(Trace(std::string(5000, 'x')));
  RingConsumer consumer(m_segment);
  EXPECT_EQ(All(consumer), "1+0:- .");
}

TEST_F(RingTest, TheLongestTraceGoesThroughARingOfTheUsualSize) {
  Make(kSegmentRingBytes);
  RingConsumer consumer(m_segment);
  const std::string text(65535, 't');
  RingProducer::Slot slot;
  ASSERT_TRUE(m_producer.Reserve(kTraceBytesMax, slot));
  StoreRecord<AppNameId>(slot.record, {.text = text, .stack = text});
  m_producer.Commit(slot);
  RingItem item;
  ASSERT_EQ(consumer.Next(item), RingStep::Item);
  EXPECT_EQ(item.trace.size(), kTraceBytesMax);
  EXPECT_EQ(RawAppTrace(item.trace.data()).Stack(), text);
}

TEST_F(RingTest, AfterADeathUncommittedRecordsAreSkippedAndCountedExactly) {
  RingConsumer consumer(m_segment);
  Trace("a");
  Leave();
  Leave(100);
  Trace("d");
  Leave(60);
  EXPECT_EQ(All(consumer, true), "a d .");
  EXPECT_EQ(consumer.Uncommitted(), 3u);
}

TEST_F(RingTest, AfterADeathAnUncommittedRecordBeforeTheWrapIsSkippedToo) {
  RingConsumer consumer(m_segment);
  while (Trace("x")) {
  }
  const std::string ignored = All(consumer);
  consumer.Publish();
  for (int i = 0; i < 20; ++i) {
    Leave();
    ASSERT_TRUE(Trace("y" + std::to_string(i)));
  }
  std::string expected;
  for (int i = 0; i < 20; ++i) expected += "y" + std::to_string(i) + " ";
  EXPECT_EQ(All(consumer, true), expected + ".");
  EXPECT_EQ(consumer.Uncommitted(), 20u);
}

TEST_F(RingTest, ATakerThatFollowsBeginsWhereTheLastOnePublished) {
  RingConsumer first(m_segment);
  Trace("a");
  EXPECT_EQ(All(first), "a .");
  first.Publish();
  Trace("b");
  EXPECT_EQ(All(first), "b .");  // taken but not published: the next one sees it again
  RingConsumer second(m_segment);
  EXPECT_EQ(second.Traces(), 1u);
  EXPECT_EQ(All(second), "b .");
}

TEST_F(RingTest, StaleRecordsOfAnEarlierLapAreNotReadAgain) {
  RingConsumer consumer(m_segment);
  while (Trace("old")) {
  }
  const std::string ignored = All(consumer);
  consumer.Publish();
  Trace("new");
  EXPECT_EQ(All(consumer), "new .");
}

TEST_F(RingTest, AProducerRingsOnceForAConsumerThatSleepsAndAnOpenRingIsNotSleptOn) {
  RingConsumer consumer(m_segment);
  SegmentHeader& header = *m_segment.Header();
  EXPECT_EQ(consumer.BeginWait(), RingConsumer::Wait::Soon);
  EXPECT_EQ(consumer.BeginWait(), RingConsumer::Wait::Asleep);
  EXPECT_EQ(header.wakeEvent.load(), 0u);
  Trace("a");
  Trace("b");
  EXPECT_EQ(header.wakeEvent.load(), 1u);
  EXPECT_EQ(header.consumerCalled.load(), 1u);
  EXPECT_EQ(consumer.BeginWait(), RingConsumer::Wait::Ready);
  EXPECT_EQ(header.consumerWaits.load(), 0u);
  EXPECT_EQ(All(consumer), "a b .");
  EXPECT_EQ(consumer.BeginWait(), RingConsumer::Wait::Soon);
}

TEST_F(RingTest, TheFirstLapTakesItsMemoryAsItGoesAndTheConsumerMayAlwaysLookAtTheNextPlace) {
  Make(1u << 20);
  RingConsumer consumer(m_segment);
  const auto pages = [this] {
    struct stat status {};
    fstat(m_segment.Descriptor(), &status);
    return status.st_blocks / 8;
  };
  const auto atFirst = pages();
  EXPECT_LT(atFirst, 32);
  for (int i = 0; i < 3000; ++i) {
    ASSERT_TRUE(Trace(std::string(1000, 'x')));
    const auto before = pages();
    ASSERT_EQ(All(consumer).size(), 1002u);  // and looks after the last one
    ASSERT_EQ(pages(), before);
    consumer.Publish();
  }
  EXPECT_GE(pages(), 256);
  EXPECT_EQ(m_segment.Header()->dropped.load(), 0u);
}

TEST_F(RingTest, DropsThatATakerWasReportingWhenItDiedAreReportedForTheDead) {
  while (Trace("x")) {
  }
  RingItem item;
  {
    RingConsumer killed(m_segment);  // never publishes
    while (killed.Next(item) == RingStep::Item) {
    }
    EXPECT_EQ(killed.Drops(), 1u);
  }
  RingConsumer next(m_segment);
  while (next.NextOfDead(item) == RingStep::Item) EXPECT_EQ(item.dropsBefore, 0u);
  EXPECT_EQ(next.UnreportedDrops(), 1u);
  next.MarkDropsReported();
  next.Publish();
  EXPECT_EQ(RingConsumer(m_segment).UnreportedDrops(), 0u);
}

TEST_F(RingTest, ThreadsAndAConsumerAtOnceTracedIsConsumedPlusDropped) {
  Make(64 * 1024);
  RingConsumer consumer(m_segment);
  constexpr std::uint64_t kThreads = 8, kEach = 20000;
  std::atomic<int> running{static_cast<int>(kThreads)};
  std::vector<std::thread> threads;
  for (std::uint64_t t = 0; t < kThreads; ++t)
    threads.emplace_back([this, &running, t] {
      RingProducer producer(m_segment);
      for (std::uint64_t i = 0; i < kEach; ++i) Trace(producer, std::to_string(t));
      --running;
    });
  std::uint64_t consumed = 0;
  RingItem item;
  for (bool last = false; !last;) {
    last = running.load() == 0;
    while (consumer.Next(item) == RingStep::Item) consumed += item.trace.empty() ? 0 : 1;
    consumer.Publish();
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(consumer.IsBroken());
  EXPECT_EQ(consumed + consumer.Drops(), kThreads * kEach);
  EXPECT_EQ(consumer.Drops(), m_segment.Header()->dropped.load());
  EXPECT_EQ(consumer.Traces(), consumed);
  EXPECT_EQ(consumer.Uncommitted(), 0u);
}

TEST_F(RingTest, ARecordThatIsNoWholeTraceIsSkippedAndCounted) {
  RingConsumer consumer(m_segment);
  const RingProducer::Slot slot = Leave(100);
  std::memset(slot.record, 0xFF, 100);
  m_producer.Commit(slot);
  Trace("good");
  EXPECT_EQ(All(consumer), "0+1:good .");
}

TEST_F(RingTest, ARecordLongerThanItsRoomIsDamagedAndNothingAfterItIsRead) {
  RingConsumer consumer(m_segment);
  const RingProducer::Slot slot = Leave();
  StoreRecord<AppNameId>(slot.record, {});
  slot.header->recordBytes = 0x7FFFFFFF;
  m_producer.Commit(slot);
  EXPECT_EQ(All(consumer), "0+1:- .");
}

TEST_F(RingTest, ARecordThatReachesBeyondTheRingBreaksIt) {
  RingConsumer consumer(m_segment);
  auto* const first = reinterpret_cast<RingRecord*>(m_segment.Ring());
  first->word.store(ring_word::Make(0, 4096, false) ^ m_segment.Layout().salt);
  EXPECT_EQ(All(consumer), "broken");
  EXPECT_TRUE(consumer.IsBroken());
}

TEST_F(RingTest, AnEmptyRecordBreaksTheRingInsteadOfHoldingTheConsumer) {
  RingConsumer consumer(m_segment);
  auto* const first = reinterpret_cast<RingRecord*>(m_segment.Ring());
  first->word.store(ring_word::Make(0, 0, false) ^ m_segment.Layout().salt);
  EXPECT_EQ(All(consumer), "broken");
}

TEST_F(RingTest, AReservationFurtherThanTheRingIsLongBreaksItAtTheDeath) {
  RingConsumer consumer(m_segment);
  m_segment.Header()->reserved.store(ring_mark::Make(1u << 30, 5));
  EXPECT_EQ(All(consumer, true), "broken");
}

constexpr std::uint64_t kPart = RingConsumer::kSkipUnits, kPage = 4096 / kRingUnitBytes;

class LongRing : public RingTest {
 protected:
  // A trace after that many units that were reserved and never committed.
  void PlaceAfter(std::uint64_t units) {
    Make(4u << 20);
    for (std::uint64_t left = units; left != 0;) {
      const std::uint64_t some = left > 8000 ? 7000 : left;
      Leave(some * kRingUnitBytes - sizeof(RingRecord));
      left -= some;
    }
    ASSERT_TRUE(Trace("found"));
  }
  off_t HeldBytes() const {
    struct stat status {};
    EXPECT_EQ(fstat(m_segment.Descriptor(), &status), 0);
    return status.st_blocks * 512;
  }
  // How many calls find the trace, and that it is the last.
  static std::uint64_t Calls(RingConsumer& consumer) {
    RingItem item;
    RingStep step;
    std::uint64_t calls = 1;
    while ((step = consumer.NextOfDead(item)) == RingStep::Later) ++calls;
    EXPECT_EQ(step, RingStep::Item);
    EXPECT_EQ(TextOf(item), "found");
    EXPECT_EQ(consumer.NextOfDead(item), RingStep::Empty);
    return calls;
  }
};

// A ring of half a gibibyte must not hold up the service.
TEST_F(LongRing, WhatFollowsALongUnfinishedPartIsFoundInPartsWhereverItStands) {
  for (const std::uint64_t before :
       {std::uint64_t{7}, kPage - 1, kPage, kPage + 1, kPart - 1, kPart, kPart + 1, kPart + 2,
        2 * kPart, 2 * kPart + 1, 2 * kPart + 2, 3 * kPart + kPage, 3 * kPart + kPage + 1}) {
    PlaceAfter(before);
    RingConsumer consumer(m_segment);
    EXPECT_EQ(Calls(consumer), (before - 1) / kPart + 1) << before;
  }
}

// An account could make the service take memory for files that have none.
TEST_F(LongRing, HolesOfItsFileArePassedOverAndStayHoles) {
  for (const std::uint64_t before :
       {kPage, kPage + 1, kPart, kPart + 1, 2 * kPart + kPage, 3 * kPart + kPage + 1}) {
    PlaceAfter(before);
    const auto first = static_cast<off_t>(m_segment.Layout().ringOffset);
    const auto pages = static_cast<off_t>(before / kPage * 4096);
    ASSERT_EQ(
        fallocate(m_segment.Descriptor(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, first, pages),
        0);
    const off_t held = HeldBytes();
    RingConsumer consumer(m_segment);
    Calls(consumer);
    EXPECT_LE(HeldBytes() - held, 4096) << "only the first page was looked at, " << before;
  }
}

// Whatever stands in the memory: no read out of bounds (the sanitizers look), no end without end.
TEST_F(RingTest, RandomBytesInRingAndHeaderAreSurvived) {
  std::mt19937_64 random(7);
  for (int round = 0; round < 300; ++round) {
    Make(4096);
    RingConsumer consumer(m_segment);
    for (int i = 0; i < 12; ++i) Trace(std::string(random() % 80, 'x'));
    auto* const words = reinterpret_cast<std::uint64_t*>(m_segment.Ring());
    for (int i = 0; i < 20; ++i) {
      const std::uint64_t at = random() % 512;
      // Half of them well-formed words of a wrong size, the others noise.
      words[at] = random() % 2 ? random()
                               : ring_word::Make(at, random() % 600, random() % 3 == 0) ^
                                     m_segment.Layout().salt;
    }
    if (round % 3 == 0) m_segment.Header()->reserved.store(random());
    if (round % 5 == 0) m_segment.Header()->pendingDrops.store(random());
    RingItem item;
    int steps = 0;
    while (consumer.NextOfDead(item) == RingStep::Item) ASSERT_LT(++steps, 1000);
    ASSERT_LE(consumer.Uncommitted(), ring_mark::kCountMask);
  }
}

TEST(RingMark, ACountIsWidenedToTheNearestOfItsLowBits) {
  EXPECT_EQ(ring_mark::Widen(0, 5), 5u);
  EXPECT_EQ(ring_mark::Widen(0x1000001, 0xFFFFFF), 0xFFFFFFu);
  EXPECT_EQ(ring_mark::Widen(0xFFFFFF, 1), 0x1000001u);
  EXPECT_EQ(ring_mark::Widen(0x5000123, 0x123), 0x5000123u);
}

}  // namespace

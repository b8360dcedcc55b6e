#include "records/trace_list.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <set>

#include "support/trc_image.h"

namespace {

// An event that tells when it is released.
class CountedEvent : public _TraceEvent_t {
 public:
  CountedEvent(const std::uint8_t* record, int& alive) : _TraceEvent_t(record), m_alive(alive) {
    ++m_alive;
  }
  ~CountedEvent() override { --m_alive; }

 private:
  int& m_alive;
};

class TraceList : public testing::Test {
 protected:
  TraceList() : m_bytes(TrcImage("").Trace("up").Guarded()) {}
  // Records are told apart by their addresses alone.
  const std::uint8_t* Record(std::size_t number) const { return m_bytes.At(1 + number % 1000); }
  TraceEvent_i* NewEvent() { return new CountedEvent(m_bytes.At(1), m_alive); }

  GuardedBytes m_bytes;
  int m_alive = 0;
  TraceList_t m_list;
};

TEST_F(TraceList, ANewListIsEmpty) {
  EXPECT_TRUE(m_list.empty());
  EXPECT_EQ(m_list.size(), 0u);
  EXPECT_EQ(m_list.Popped(), 0u);
  EXPECT_EQ(m_list.StorageBytes(), 0u);
  m_list.ForEach(0, [](TraceEvent_i*) { ADD_FAILURE(); });
}

TEST_F(TraceList, TracesAreFoundByPositionInTheOrderOfTheirAdding) {
  constexpr std::size_t kTraces = 600000;  // over all sizes of block
  for (std::size_t number = 0; number < kTraces; ++number) {
    TraceEvent_i* const added = m_list.EmplaceRecord(Record(number));
    ASSERT_EQ(added, m_list.back());
  }
  ASSERT_EQ(m_list.size(), kTraces);
  for (std::size_t number = 0; number < kTraces; ++number) {
    ASSERT_EQ(m_list[number]->Record(), Record(number)) << number;
  }
  EXPECT_EQ(m_list.front()->Record(), Record(0));
  EXPECT_EQ(m_list.back()->Record(), Record(kTraces - 1));
}

TEST_F(TraceList, ATraceOfAMappedFileCosts16BytesAndASmallDocumentFewPages) {
  constexpr std::size_t kBytes = 2 * sizeof(void*);
  m_list.EmplaceRecord(Record(0));
  EXPECT_LE(m_list.StorageBytes(), 8192u);
  for (int number = 1; number < 2000000; ++number) m_list.EmplaceRecord(Record(0));
  EXPECT_LE(m_list.StorageBytes(), 2000000 * kBytes * 1.1);
  EXPECT_GE(m_list.StorageBytes(), 2000000 * kBytes) << "no less than there is";
}

TEST_F(TraceList, PointersStayGoodWhileTheListGrowsAndIsTrimmed) {
  for (int number = 0; number < 300; ++number) m_list.EmplaceRecord(Record(299));
  TraceEvent_i* const kept = m_list[299];
  for (int number = 0; number < 100000; ++number) m_list.EmplaceRecord(Record(0));
  for (int number = 0; number < 299; ++number) m_list.PopFront();
  EXPECT_EQ(m_list.front(), kept);
  EXPECT_EQ(kept->Record(), Record(299));
}

TEST_F(TraceList, OtherEventsAreReleasedWhenPoppedWhenClearedAndAtTheEnd) {
  {
    TraceList_t list;
    for (int number = 0; number < 1000; ++number) list.push_back(NewEvent());
    EXPECT_EQ(m_alive, 1000);
    list.PopFront();
    EXPECT_EQ(m_alive, 999);
    list.Clear();
    EXPECT_EQ(m_alive, 0);
    list.push_back(NewEvent());
    EXPECT_EQ(m_alive, 1);
  }
  EXPECT_EQ(m_alive, 0);
}

TEST_F(TraceList, BothKindsOfTraceMayStandInAnyMixture) {
  std::deque<TraceEvent_i*> expected;
  std::mt19937 random(1);
  for (int step = 0; step < 300000; ++step) {
    const unsigned choice = random() % 8;
    if (choice < 3) {
      expected.push_back(m_list.EmplaceRecord(Record(random())));
    } else if (choice < 5 || expected.empty()) {
      expected.push_back(NewEvent());
      m_list.push_back(expected.back());
    } else {
      m_list.PopFront();
      expected.pop_front();
    }
    ASSERT_EQ(m_list.size(), expected.size());
    if (!expected.empty()) {
      ASSERT_EQ(m_list.front(), expected.front());
      ASSERT_EQ(m_list.back(), expected.back());
      const std::size_t position = random() % expected.size();
      ASSERT_EQ(m_list[position], expected[position]);
    }
  }
  std::vector<TraceEvent_i*> visited;
  m_list.ForEach(0, [&](TraceEvent_i* event) { visited.push_back(event); });
  EXPECT_EQ(visited, std::vector<TraceEvent_i*>(expected.begin(), expected.end()));
  m_list.Clear();
  EXPECT_EQ(m_alive, 0);
}

TEST_F(TraceList, ForEachBeginsAtAnyPositionAndGoesToTheEnd) {
  for (std::size_t number = 0; number < 3000; ++number) m_list.EmplaceRecord(Record(number));
  for (int number = 0; number < 10; ++number) m_list.PopFront();
  for (const std::size_t from : {0, 1, 245, 246, 247, 1000, 2989, 2990}) {
    std::size_t number = from;
    m_list.ForEach(from, [&](TraceEvent_i* event) {
      ASSERT_EQ(event, m_list[number]);
      ++number;
    });
    EXPECT_EQ(number, std::max<std::size_t>(from, 2990));
  }
}

TEST_F(TraceList, APositionWithThePoppedCountNamesATraceThroughTrims) {
  for (std::size_t number = 0; number < 2000; ++number) m_list.EmplaceRecord(Record(number));
  TraceEvent_i* const watched = m_list[1500];
  const std::uint64_t name = 1500 + m_list.Popped();
  for (int number = 0; number < 1200; ++number) m_list.PopFront();
  EXPECT_EQ(m_list.Popped(), 1200u);
  EXPECT_EQ(m_list[name - m_list.Popped()], watched);
}

TEST_F(TraceList, AListTrimmedAsItGrowsKeepsItsStorageSmall) {
  for (int number = 0; number < 2000; ++number) m_list.EmplaceRecord(Record(0));
  std::size_t most = 0;
  for (int number = 0; number < 3000000; ++number) {
    m_list.EmplaceRecord(Record(0));
    m_list.PopFront();
    most = std::max(most, m_list.StorageBytes());
  }
  EXPECT_EQ(m_list.size(), 2000u);
  EXPECT_LE(most, 5u << 20);
}

TEST_F(TraceList, AListPoppedEmptyAtTheEndOfABlockGoesOn) {
  for (int round = 0; round < 3; ++round) {
    for (std::size_t number = 0; number < 256u << round; ++number) m_list.EmplaceRecord(Record(7));
    while (!m_list.empty()) m_list.PopFront();
  }
  EXPECT_EQ(m_list.Popped(), 256u + 512 + 1024);
  EXPECT_LT(m_list.StorageBytes(), 1024u);  // no block is left
  m_list.EmplaceRecord(Record(9));
  EXPECT_EQ(m_list.front()->Record(), Record(9));
}

TEST_F(TraceList, AClearGivesTheStorageBackAndBeginsANewGeneration) {
  const std::uint64_t generation = m_list.Generation();
  for (int number = 0; number < 1000; ++number) m_list.EmplaceRecord(Record(0));
  m_list.PopFront();
  m_list.Clear();
  EXPECT_TRUE(m_list.empty());
  EXPECT_EQ(m_list.StorageBytes(), 0u);
  EXPECT_EQ(m_list.Popped(), 0u);
  EXPECT_EQ(m_list.Generation(), generation + 1);
  m_list.EmplaceRecord(Record(3));
  EXPECT_EQ(m_list[0]->Record(), Record(3));
}

TEST_F(TraceList, AMovedListKeepsItsTracesAndCountsAsACleared) {
  m_list.push_back(NewEvent());
  const std::uint64_t generation = m_list.Generation();
  TraceList_t other;
  for (std::size_t number = 0; number < 1000; ++number) other.EmplaceRecord(Record(number));
  other.PopFront();
  TraceEvent_i* const third = other[3];
  m_list = std::move(other);
  EXPECT_EQ(m_alive, 0);
  EXPECT_EQ(m_list.size(), 999u);
  EXPECT_EQ(m_list[3], third);
  EXPECT_EQ(m_list.Popped(), 1u);
  EXPECT_EQ(m_list.Generation(), generation + 1);
  EXPECT_TRUE(other.empty());
  other.push_back(NewEvent());
  EXPECT_EQ(other.size(), 1u);
  const TraceList_t made(std::move(m_list));
  EXPECT_EQ(made.size(), 999u);
}

TEST_F(TraceList, ReleasingAPlacedTraceFreesNothing) {
  TraceEvent_i* const event = m_list.EmplaceRecord(Record(0));
  event->Release();
  EXPECT_EQ(m_list.front(), event);
  EXPECT_EQ(event->GetSequenceNumber(), 1u);
}

// Lists of any length, joined; beside a plain queue.
TEST_F(TraceList, JoinedListsHaveAllTracesInOrderAndGoOnLikeOne) {
  std::mt19937 random(9);
  for (int round = 0; round < 20; ++round) {
    TraceList_t list;
    std::deque<const std::uint8_t*> wanted;
    std::size_t number = 0;
    const auto fill = [&](TraceList_t& to, std::size_t count) {
      for (; count > 0; --count) {
        wanted.push_back(Record(number++));
        to.EmplaceRecord(wanted.back());
      }
    };
    fill(list, random() % 3 == 0 ? 0 : random() % 1500);
    for (unsigned pops = random() % 900; pops > 0 && !list.empty(); --pops, wanted.pop_front())
      list.PopFront();
    for (unsigned parts = 1 + random() % 6; parts > 0; --parts) {
      TraceList_t part(random() % 2 ? TraceStorage::First::Small : TraceStorage::First::Large);
      fill(part, random() % 5 == 0 ? random() % 300000 : random() % 700);
      list.Append(std::move(part));
      ASSERT_TRUE(part.empty());
      if (random() % 3 == 0) fill(list, random() % 900);
    }
    ASSERT_EQ(list.size(), wanted.size());
    for (std::size_t at = 0; at < wanted.size(); ++at)
      ASSERT_EQ(list[at]->Record(), wanted[at]) << at;
    const std::size_t from = wanted.empty() ? 0 : random() % wanted.size();
    std::size_t at = from;
    list.ForEach(from, [&](TraceEvent_i* event) { ASSERT_EQ(event->Record(), wanted[at++]); });
    ASSERT_EQ(at, wanted.size());
    while (!wanted.empty()) {
      ASSERT_EQ(list.front()->Record(), wanted.front());
      ASSERT_EQ(list.back()->Record(), wanted.back());
      list.PopFront();
      wanted.pop_front();
    }
    EXPECT_TRUE(list.empty());
    fill(list, 700);
    EXPECT_EQ(list.back()->Record(), wanted.back());
  }
}

TEST_F(TraceList, AJoinedListReleasesTheTracesOfBoth) {
  {
    TraceList_t part;
    for (int i = 0; i < 300; ++i) part.push_back(NewEvent());
    m_list.push_back(NewEvent());
    m_list.Append(std::move(part));
    EXPECT_EQ(m_alive, 301);
  }
  EXPECT_EQ(m_alive, 301) << "the emptied part releases none";
  m_list.PopFront();
  EXPECT_EQ(m_alive, 300);
  m_list.Clear();
  EXPECT_EQ(m_alive, 0);
}

TEST_F(TraceList, JoinedListsTakeNoMoreThanTheirTraces) {
  std::size_t traces = 0;
  for (int parts = 0; parts < 10; ++parts) {
    TraceList_t part(TraceStorage::First::Large);
    for (int i = 0; i < 140000; ++i, ++traces) part.EmplaceRecord(Record(0));
    m_list.Append(std::move(part));
  }
  EXPECT_LE(m_list.StorageBytes(), traces * 16 + (std::size_t{2} << 20)) << "the last may be open";
}

}  // namespace

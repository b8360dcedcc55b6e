// Messages of a source that come late, twice, in any order, or not at all: the sum is exact.
#include "quor/relay/source_ledger.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using Verdict = SourceLedger::Verdict;
using Ranges = std::vector<SerialRange>;

TEST(SerialIntervals, GiveOutOnlyWhatNothingHasCovered) {
  SerialIntervals serials(10);
  EXPECT_EQ(serials.Cover({5, 12}), (Ranges{{10, 12}}));
  EXPECT_EQ(serials.Base(), 12u);
  EXPECT_EQ(serials.Cover({20, 25}), (Ranges{{20, 25}}));
  EXPECT_EQ(serials.Cover({30, 31}), (Ranges{{30, 31}}));
  EXPECT_EQ(serials.FirstHole(), (SerialRange{12, 20}));
  EXPECT_EQ(serials.Cover({11, 40}), (Ranges{{12, 20}, {25, 30}, {31, 40}}));
  EXPECT_EQ(serials.Base(), 40u);
  EXPECT_EQ(serials.FirstHole().Size(), 0u);
  EXPECT_TRUE(serials.Cover({0, 40}).empty());
  EXPECT_TRUE(serials.Cover({50, 50}).empty());
  EXPECT_TRUE(serials.Cover({60, 50}).empty());
  EXPECT_EQ(serials.High(), 40u);
}

TEST(SerialIntervals, AHoleThatIsGivenUpIsKnownAndTheNextOneFollows) {
  SerialIntervals serials;
  serials.Cover({5, 6});
  serials.Cover({8, 9});
  EXPECT_EQ(serials.GiveUpFirstHole(), 5u);
  EXPECT_EQ(serials.Base(), 6u);
  EXPECT_TRUE(serials.WasGivenUp(1));
  EXPECT_TRUE(serials.WasGivenUp(5));
  EXPECT_FALSE(serials.WasGivenUp(6));
  EXPECT_EQ(serials.GiveUpFirstHole(), 2u);
  EXPECT_EQ(serials.GiveUpFirstHole(), 0u);
  serials.Reach(20);
  EXPECT_EQ(serials.FirstHole(), (SerialRange{9, 20}));
  EXPECT_EQ(serials.GiveUpFirstHole(), 11u);
}

TEST(SerialIntervals, HolesWithoutEndAskToBeGivenUp) {
  SerialIntervals serials;
  std::uint64_t at = 0;
  while (!serials.MustGiveUp()) serials.Cover({at += 2, at + 1});
  EXPECT_EQ(at / 2, SerialIntervals::kRangesMax + 1);
  serials.GiveUpFirstHole();
  EXPECT_FALSE(serials.MustGiveUp());
}

TEST(SourceLedger, AMessageCountsOnce) {
  SourceLedger ledger;
  EXPECT_EQ(ledger.Take(10, 8, 2), Verdict::Deliver);
  EXPECT_EQ(ledger.Take(10, 8, 2), Verdict::Twice);
  EXPECT_EQ(ledger.Take(30, 10, 0), Verdict::Deliver) << "early";
  EXPECT_EQ(ledger.Settled(), 10u);
  EXPECT_TRUE(ledger.HasHole());
  EXPECT_EQ(ledger.GiveUpFirstHole(), 10u);
  EXPECT_EQ(ledger.Settled(), 30u);
  EXPECT_EQ(ledger.Take(20, 10, 0), Verdict::Late);
  EXPECT_EQ(ledger.Counts(), (SourceCounts{18, 12, 8, 10}));
}

TEST(SourceLedger, WhatContradictsItselfChangesNothing) {
  SourceLedger ledger;
  EXPECT_EQ(ledger.Take(5, 6, 0), Verdict::Torn);
  EXPECT_EQ(ledger.Take(5, 3, 3), Verdict::Torn);
  EXPECT_EQ(ledger.Take(5, ~std::uint64_t{0}, 7), Verdict::Torn);
  EXPECT_EQ(ledger.Counts(), SourceCounts());
  EXPECT_EQ(ledger.Settled(), 0u);
}

TEST(SourceLedger, MessagesThatOverlapInAPartAreNeverCountedTwice) {
  SourceLedger ledger;
  EXPECT_EQ(ledger.Take(10, 10, 0), Verdict::Deliver);
  EXPECT_EQ(ledger.Take(15, 10, 0), Verdict::Twice);
  EXPECT_EQ(ledger.Settled(), 15u);
  EXPECT_EQ(ledger.Counts(), (SourceCounts{10, 5, 10, 0}));
}

struct Message {
  std::uint64_t serial, delivered, lost;
};

// One by one, what each serial is.
class Slow {
 public:
  enum class Is { Unknown, Covered, GivenUp };
  Slow(std::uint64_t base, std::uint64_t end) : m_is(end + 1, Is::Unknown) {
    for (std::uint64_t i = 0; i <= base; ++i) m_is[i] = Is::Covered;
  }
  void Take(const Message& message) {
    const std::uint64_t from = message.serial - message.delivered - message.lost;
    if (m_is[from + 1] == Is::GivenUp)
      counts.late += message.delivered;
    else if (m_is[from + 1] == Is::Covered)
      counts.twice += message.delivered;
    else
      counts.delivered += message.delivered, counts.lost += message.lost;
    for (std::uint64_t i = from + 1; i <= message.serial; ++i)
      if (m_is[i] == Is::Unknown) m_is[i] = Is::Covered;
    m_high = std::max(m_high, message.serial);
  }
  void GiveUp(std::uint64_t high) {
    std::uint64_t at = 0;
    high = std::max(high, m_high);
    while (at <= high && m_is[at] != Is::Unknown) ++at;
    for (; at <= high && m_is[at] == Is::Unknown; ++at) m_is[at] = Is::GivenUp, ++counts.lost;
  }
  std::uint64_t Settled() const {
    std::uint64_t at = 0;
    while (at + 1 < m_is.size() && m_is[at + 1] != Is::Unknown) ++at;
    return at;
  }
  SourceCounts counts;

 private:
  std::vector<Is> m_is;
  std::uint64_t m_high = 0;
};

// The way delays, swaps, doubles, drops and trims; the reader gives holes up at any time.
TEST(SourceLedger, AgreesWithASlowOneAndTheSumIsExact) {
  std::uint64_t late = 0, twice = 0, holes = 0;
  for (unsigned seed = 1; seed <= 1000; ++seed) {
    std::mt19937 random(seed);
    const std::uint64_t base = random() % 20;
    std::vector<Message> way;
    std::uint64_t end = base;
    for (unsigned i = random() % 80; i > 0; --i) {
      const Message message{0, random() % 12, random() % 3 == 0 ? 1 + random() % 4 : 0};
      if (message.delivered + message.lost == 0) continue;
      end += message.delivered + message.lost;
      if (random() % 8 == 0) continue;  // dropped
      for (unsigned copies = random() % 6 == 0 ? 2 : 1; copies > 0; --copies)
        way.push_back({end, message.delivered, message.lost});
    }
    for (unsigned swaps = random() % 40; swaps > 0 && !way.empty(); --swaps)
      std::swap(way[random() % way.size()], way[random() % way.size()]);
    if (random() % 4 == 0) way.erase(way.begin(), way.begin() + way.size() / 3);  // trimmed
    SourceLedger ledger(base);
    Slow slow(base, end);
    for (const Message& message : way) {
      ledger.Take(message.serial, message.delivered, message.lost);
      slow.Take(message);
      if (random() % 9 == 0 && ledger.HasHole()) {
        ledger.GiveUpFirstHole();
        slow.GiveUp(0);
        ++holes;
      }
      ASSERT_EQ(ledger.Counts(), slow.counts) << seed;
      ASSERT_EQ(ledger.Settled(), slow.Settled()) << seed;
    }
    ledger.Reach(end);
    while (ledger.HasHole()) ledger.GiveUpFirstHole();
    EXPECT_EQ(ledger.Settled(), end);
    EXPECT_EQ(ledger.Counts().delivered + ledger.Counts().lost, end - base) << seed;
    late += ledger.Counts().late;
    twice += ledger.Counts().twice;
  }
  EXPECT_GT(late, 0u);
  EXPECT_GT(twice, 0u);
  EXPECT_GT(holes, 0u);
}

}  // namespace

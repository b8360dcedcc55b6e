#include "tree/find/hits/hit_bits.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tree/find/hits/hit_rows.h"

namespace {

// What HitBits says, by counting.
struct PlainHits {
  std::vector<bool> rows;

  int Count() const { return Position(static_cast<int>(rows.size())); }
  int Position(int row) const {
    int hits = 0;
    for (int at = 0; at < row && at < static_cast<int>(rows.size()); ++at)
      hits += rows[static_cast<std::size_t>(at)];
    return hits;
  }
  int Next(int row) const {
    for (std::size_t at = static_cast<std::size_t>(row); at < rows.size(); ++at)
      if (rows[at]) return static_cast<int>(at);
    return -1;
  }
  int RowOf(int hit) const {
    for (std::size_t at = 0; at < rows.size(); ++at)
      if (rows[at] && hit-- == 0) return static_cast<int>(at);
    return -1;
  }
};

class HitBitsSteps : public testing::TestWithParam<unsigned> {
 protected:
  int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
  void Compare() {
    const int known = static_cast<int>(m_plain.rows.size());
    ASSERT_EQ(m_bits.Known(), known);
    ASSERT_EQ(m_bits.Count(), m_plain.Count());
    for (int looks = 0; looks < 8; ++looks) {
      const int row = Below(known + 3);
      ASSERT_EQ(m_bits.Has(row), row < known && m_plain.rows[static_cast<std::size_t>(row)]) << row;
      ASSERT_EQ(m_bits.Position(row), m_plain.Position(row)) << row;
      ASSERT_EQ(m_bits.Next(row), m_plain.Next(row)) << row;
      const int hit = Below(m_plain.Count() + 2);
      ASSERT_EQ(m_bits.RowOf(hit), m_plain.RowOf(hit)) << hit;
    }
  }

  std::mt19937 m_random{GetParam()};
  HitBits m_bits;
  PlainHits m_plain;
};

TEST_P(HitBitsSteps, AreThoseOfASlowCountWhateverComesAndGoes) {
  const int gap = 1 + Below(GetParam() % 3 == 0 ? 2000 : 40);
  for (int step = 0; step < 300; ++step) {
    const int known = static_cast<int>(m_plain.rows.size());
    const int kind = Below(100);
    if (kind < 70) {
      const int row = known + Below(gap);
      m_bits.AddHit(row);
      m_plain.rows.resize(static_cast<std::size_t>(row));
      m_plain.rows.push_back(true);
    } else if (kind < 80) {
      m_bits.PassTo(known + gap);
      m_plain.rows.resize(static_cast<std::size_t>(known + gap));
    } else if (kind < 98) {
      // Also more than are known.
      const int rows = Below(known + known / 8 + 2) / (1 + Below(6));
      m_bits.DropFront(rows);
      m_plain.rows.erase(m_plain.rows.begin(), m_plain.rows.begin() + std::min(rows, known));
    } else {
      m_bits.Clear();
      m_plain.rows.clear();
    }
    ASSERT_NO_FATAL_FAILURE(Compare()) << "step " << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, HitBitsSteps, testing::Range(1U, 61U));

TEST(HitBits, TakeABitForEachRowAndNothingForAHit) {
  HitBits bits;
  for (int row = 0; row < 4'000'000; ++row) bits.AddHit(row);
  EXPECT_EQ(bits.Count(), 4'000'000);
  EXPECT_EQ(bits.RowOf(3'999'999), 3'999'999);
  EXPECT_LE(bits.StorageBytes(), 4'000'000U / 8 * 9 / 8 + 100);
}

class FixedHits final : public FindHitRows {
 public:
  int Known() const override { return m_bits.Known(); }
  bool IsWhole() const override { return whole; }
  int Count() const override { return m_bits.Count(); }
  bool Has(int row) const override { return m_bits.Has(row); }
  int Position(int row) const override { return m_bits.Position(row); }
  int Next(int row) const override { return m_bits.Next(row); }
  int RowOf(int hit) const override { return m_bits.RowOf(hit); }
  std::uint64_t Version() const override { return 1; }

  HitBits m_bits;
  bool whole = true;
};

TEST(HitText, SaysWhichOfAllTheCurrentRowIs) {
  FixedHits hits;
  EXPECT_EQ(HitText(hits, -1), "no hits");
  hits.m_bits.AddHit(3);
  EXPECT_EQ(HitText(hits, 3), "1 of 1 hit");
  for (int row = 10; row < 4310; ++row) hits.m_bits.AddHit(row);
  EXPECT_EQ(HitText(hits, 20), "12 of 4,301 hits");
  EXPECT_EQ(HitText(hits, 5), "4,301 hits") << "the row has none";
  EXPECT_EQ(HitText(hits, -1), "4,301 hits");
  hits.whole = false;
  EXPECT_EQ(HitText(hits, 20), "12 of 4,301 hits so far");
  hits.m_bits.Clear();
  EXPECT_EQ(HitText(hits, 20), "no hits so far");
}

TEST(HitRows, AreVisitedInARangeAlone) {
  FixedHits hits;
  for (const int row : {2, 5, 6, 900, 1200}) hits.m_bits.AddHit(row);
  std::vector<int> rows;
  hits.VisitIn(5, 1200, [&](int row) { rows.push_back(row); });
  EXPECT_EQ(rows, (std::vector{5, 6, 900}));
}

}  // namespace

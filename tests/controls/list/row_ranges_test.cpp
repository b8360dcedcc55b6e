#include "controls/list/row_ranges.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

TEST(RowRanges, RangesThatTouchBecomeOne) {
  RowRanges rows;
  rows.Add(1, 3);
  rows.Add(7, 9);
  rows.Add(4, 6);
  EXPECT_EQ(rows.Count(), 9);
  EXPECT_EQ(rows.FirstFrom(0), 1);
  EXPECT_EQ(rows.FirstFrom(5), 5);
  EXPECT_EQ(rows.FirstFrom(10), -1);
}

TEST(RowRanges, RemovingFromTheMiddleLeavesBothEnds) {
  RowRanges rows;
  rows.Add(0, 99'999'999);
  rows.Remove(10, 20);
  EXPECT_EQ(rows.Count(), 100'000'000 - 11);
  EXPECT_TRUE(rows.Contains(9));
  EXPECT_FALSE(rows.Contains(10));
  EXPECT_FALSE(rows.Contains(20));
  EXPECT_TRUE(rows.Contains(21));
}

TEST(RowRanges, AnEmptyRangeChangesNothing) {
  RowRanges rows;
  rows.Add(5, 4);
  EXPECT_EQ(rows.Count(), 0);
  rows.Add(5, 5);
  rows.Remove(6, 5);
  EXPECT_EQ(rows.Count(), 1);
}

TEST(RowRanges, AgreeWithAPlainSetWhateverIsDone) {
  std::mt19937 random(7);
  RowRanges rows;
  std::set<int> plain;
  for (int step = 0; step < 3000; ++step) {
    const int first = static_cast<int>(random() % 60);
    const int last = first + static_cast<int>(random() % 8);
    switch (random() % 3) {
      case 0:
        rows.Add(first, last);
        for (int row = first; row <= last; ++row) plain.insert(row);
        break;
      case 1:
        rows.Remove(first, last);
        for (int row = first; row <= last; ++row) plain.erase(row);
        break;
      default:
        rows.Close(first, last - first + 1);
        std::set<int> moved;
        for (const int row : plain) {
          if (row < first) moved.insert(row);
          if (row > last) moved.insert(row - (last - first + 1));
        }
        plain = moved;
    }
    ASSERT_EQ(rows.Count(), static_cast<std::int64_t>(plain.size())) << "step " << step;
    const int from = static_cast<int>(random() % 70);
    const auto next = plain.lower_bound(from);
    ASSERT_EQ(rows.FirstFrom(from), next == plain.end() ? -1 : *next) << "step " << step;
    ASSERT_EQ(rows.Contains(from), plain.count(from) == 1) << "step " << step;
  }
}

#include "listview/columns/time_columns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "settings/registry.h"
#include "support/temp_dir.h"

namespace {

class TimeColumns : public testing::Test {
 protected:
  TimeColumns() { SetSettingsFile(m_directory.File("settings.ini")); }
  ~TimeColumns() override {
    SetSettingsFile("");
    g_activeColumns = kDefaultActiveColumns;
  }
  static AllColumnOrder Default() {
    return AllColumnOrder(kDefaultColumnOrder.begin(), kDefaultColumnOrder.end());
  }
  static AllColumnOrder Ascending(int count) {
    AllColumnOrder order(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    return order;
  }
  TempDir m_directory;
};

TEST_F(TimeColumns, AreHiddenAtFirstAndFollowTheFifteenByTheirIndex) {
  int index = kColumnCount;
  for (const Column column : kTimeColumns) {
    EXPECT_FALSE(IsColumnShown(column));
    EXPECT_EQ(static_cast<int>(column), index++);
    EXPECT_EQ(ColumnByHeader(InfoOf(column).header), column);
  }
  EXPECT_EQ(index, kAllColumnCount);
  EXPECT_FALSE(IsAnyTimeColumnShown());
}

TEST_F(TimeColumns, EachIsShownByItself) {
  ShowTimeColumn(Column::Since, true);
  EXPECT_TRUE(IsColumnShown(Column::Since));
  EXPECT_FALSE(IsColumnShown(Column::Delta));
  ShowTimeColumn(Column::Delta, true);
  ShowTimeColumn(Column::Since, false);
  EXPECT_FALSE(IsColumnShown(Column::Since));
  EXPECT_TRUE(IsColumnShown(Column::Delta));
  EXPECT_TRUE(IsAnyTimeColumnShown());
}

TEST_F(TimeColumns, TheFifteenKeepTheirFlagsAndTheirStoredOrder) {
  StoreColumnOrder(kDefaultColumnOrder);
  ShowTimeColumn(Column::Delta, true);
  AllColumnOrder all = WithTimeColumns(Default());
  std::ranges::rotate(all, all.begin() + 6);
  StoreTimeColumnOrder(all);
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
  ReadColumnOrder();  // of a store without a version
  EXPECT_EQ(ReadColumnOrder(), kDefaultColumnOrder);
}

TEST_F(TimeColumns, StandBehindTheTimeUntilTheUserMovesThem) {
  EXPECT_EQ(WithTimeColumns(Default()),
            (AllColumnOrder{0, 1, 2, 3, 4, 15, 16, 17, 5, 6, 7, 8, 9, 10, 11, 14, 12, 13}));
  EXPECT_EQ(WithTimeColumns({4, 0, 1, 2, 3, 5, 6, 7, 8, 9, 10, 11, 14, 12, 13}),
            (AllColumnOrder{4, 15, 16, 17, 0, 1, 2, 3, 5, 6, 7, 8, 9, 10, 11, 14, 12, 13}));
}

TEST_F(TimeColumns, AMixedOrderComesBack) {
  std::mt19937 random(17);
  for (int round = 0; round < 200; ++round) {
    AllColumnOrder all = Ascending(kAllColumnCount);
    std::ranges::shuffle(all, random);
    StoreTimeColumnOrder(all);
    const ColumnOrder fifteen = WithoutTimeColumns(all);
    EXPECT_EQ(WithTimeColumns(AllColumnOrder(fifteen.begin(), fifteen.end())), all);
  }
}

TEST_F(TimeColumns, AnOrderOfTheFifteenThatWasChangedMeanwhileHolds) {
  std::mt19937 random(18);
  for (int round = 0; round < 200; ++round) {
    AllColumnOrder all = Ascending(kAllColumnCount), other = Ascending(kColumnCount);
    std::ranges::shuffle(all, random);
    std::ranges::shuffle(other, random);
    StoreTimeColumnOrder(all);
    AllColumnOrder mixed = WithTimeColumns(other);
    const ColumnOrder fifteen = WithoutTimeColumns(mixed);
    EXPECT_EQ(AllColumnOrder(fifteen.begin(), fifteen.end()), other);
    std::ranges::sort(mixed);
    EXPECT_EQ(mixed, Ascending(kAllColumnCount));
  }
}

TEST_F(TimeColumns, AStoredOrderThatIsNoneIsNotUsed) {
  AllColumnOrder twice = Ascending(kAllColumnCount);
  twice[17] = 3;
  StoreTimeColumnOrder(twice);
  EXPECT_EQ(WithTimeColumns(Default())[5], 15);
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, "Time Column Order", "short", 5);
  EXPECT_EQ(WithTimeColumns(Default())[5], 15);
}

TEST_F(TimeColumns, HaveWidthsUnderTheirHeaders) {
  StoreColumnWidth(Column::WallTime, 230);
  EXPECT_EQ(StoredColumnWidth(Column::WallTime), 230);
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegColumns, "Wall Time", 0U), 230U);
  EXPECT_EQ(StoredColumnWidth(Column::Delta), 0);
}

}  // namespace

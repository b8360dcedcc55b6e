#include "listview/columns/columns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "settings/registry.h"
#include "support/temp_dir.h"

namespace {

class ColumnStore : public testing::Test {
 protected:
  ColumnStore() { SetSettingsFile(m_directory.File("settings.ini")); }
  ~ColumnStore() override { SetSettingsFile(""); }
  static std::string Version() {
    return NtRegGet(HKEY_CURRENT_USER, kRegProgram, "Version", "none");
  }
  static void SetVersion(const char* version) {
    NtRegPut(HKEY_CURRENT_USER, kRegProgram, "Version", version);
  }
  // The order as stored; all -1 when there is none.
  static ColumnOrder Stored() {
    ColumnOrder none, order;
    none.fill(-1);
    NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, "Column Order", order.data(), none.data(),
                sizeof order);
    return order;
  }
  TempDir m_directory;
};

constexpr ColumnOrder kFirstRun = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 14};
constexpr ColumnOrder kAscending = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
constexpr ColumnOrder kNone = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};

TEST(ColumnTable, HasFifteenColumnsByTheirIndex) {
  for (std::size_t i = 0; i < kColumns.size(); ++i)
    EXPECT_EQ(static_cast<std::size_t>(kColumns[i].column), i);
}

TEST(ColumnTable, HasHeadersAlignmentsAndWidths) {
  std::string table;
  for (const ColumnInfo& column : kColumns)
    table += std::string(column.header) + " " + "LRC"[static_cast<int>(column.align)] + " " +
             std::to_string(column.widthChars) + " " + std::to_string(column.optionsBox) + "\n";
  EXPECT_EQ(table,
            "Sev C 4 1159\nCount R 7 1041\nTic Count R 18 1072\nTic Diff R 18 1078\n"
            "Time L 18 1042\nMachine L 9 1044\nApplication L 9 1045\nComponent L 9 1066\n"
            "Category L 9 1067\nAttributes L 10 1158\nPID L 4 1046\nTID L 4 1047\n"
            "Trace L 80 0\nSource L 20 0\nStack L 20 1071\n");
}

TEST(ColumnTable, TheAccountIsFoundByItsHeaderAndIsNotOneOfThem) {
  EXPECT_EQ(ColumnByHeader("account"), Column::Account);
  EXPECT_STREQ(InfoOf(Column::Account).header, "Account");
  for (const ColumnInfo& column : kColumns) {
    EXPECT_NE(column.column, Column::Account);
    EXPECT_EQ(&InfoOf(column.column), &column);
  }
}

TEST(ColumnTable, IsSearchedByHeaderIgnoringCase) {
  EXPECT_EQ(ColumnByHeader("tic diff"), Column::TicDiff);
  EXPECT_EQ(ColumnByHeader("TRACE"), Column::Trace);
  EXPECT_EQ(ColumnByHeader("Trac"), std::nullopt);
  EXPECT_EQ(ColumnByHeader(""), std::nullopt);
}

TEST_F(ColumnStore, WidthsStandUnderTheirHeaders) {
  EXPECT_EQ(StoredColumnWidth(Column::TicDiff), 0);
  StoreColumnWidth(Column::TicDiff, 123);
  EXPECT_EQ(StoredColumnWidth(Column::TicDiff), 123);
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegColumns, "Tic Diff", 0u), 123u);
  EXPECT_EQ(StoredColumnWidth(Column::TicCount), 0);
}

TEST_F(ColumnStore, AWidthThatNoScreenHasIsNone) {
  NtRegPut(HKEY_CURRENT_USER, kRegColumns, "PID", 65535u);
  EXPECT_EQ(StoredColumnWidth(Column::Pid), 65535);
  NtRegPut(HKEY_CURRENT_USER, kRegColumns, "PID", 65536u);
  EXPECT_EQ(StoredColumnWidth(Column::Pid), 0);
  NtRegPut(HKEY_CURRENT_USER, kRegColumns, "PID", 0xFFFFFFFFu);
  EXPECT_EQ(StoredColumnWidth(Column::Pid), 0);
}

TEST_F(ColumnStore, AWidthOfAnotherKindIsNone) {
  NtRegPut(HKEY_CURRENT_USER, kRegColumns, "PID", "wide");
  EXPECT_EQ(StoredColumnWidth(Column::Pid), 0);
}

TEST_F(ColumnStore, TheFirstRunHasColumn14TwiceAndWritesItsVersion) {
  EXPECT_EQ(ReadColumnOrder(), kFirstRun);
  EXPECT_EQ(Version(), "3.1.0");
  EXPECT_EQ(Stored(), kNone) << "the widened order is not written back";
}

TEST_F(ColumnStore, FromThenOnTheDefaultOrderReachesTheControlUnchanged) {
  ReadColumnOrder();
  EXPECT_EQ(ReadColumnOrder(), kDefaultColumnOrder);
}

TEST_F(ColumnStore, AnOlderOrderWithColumn12InPlace12GetsTheLaterColumns) {
  StoreColumnOrder({11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 12, 0, 0});
  EXPECT_EQ(ReadColumnOrder(), (ColumnOrder{11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 14, 12, 13}));
  EXPECT_EQ(ReadColumnOrder(), (ColumnOrder{11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 12, 0, 0}))
      << "later views read the stored order again";
}

TEST_F(ColumnStore, AnOlderOrderWithColumn12ElsewhereGetsTheLaterColumnsLast) {
  StoreColumnOrder({12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0});
  EXPECT_EQ(ReadColumnOrder(), (ColumnOrder{12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 13, 14}));
}

TEST_F(ColumnStore, AnyVersionButTheOldOneUsesTheStoredOrder) {
  for (const char* version : {"3.1.0", "9", ""}) {
    SetVersion(version);
    StoreColumnOrder(kAscending);
    EXPECT_EQ(ReadColumnOrder(), kAscending);
    EXPECT_EQ(Version(), version);
  }
}

TEST_F(ColumnStore, AnOldVersionThatIsWrittenOutTakesTheStepToo) {
  SetVersion("2.x");
  StoreColumnOrder(kAscending);
  EXPECT_EQ(ReadColumnOrder(), (ColumnOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 12, 13}));
  EXPECT_EQ(Version(), "3.1.0");
}

TEST_F(ColumnStore, TheOrderIsSixtyBytesLittleEndian) {
  StoreColumnOrder(kDefaultColumnOrder);
  std::array<unsigned char, 60> bytes, none{};
  NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, "Column Order", bytes.data(), none.data(), 60);
  for (std::size_t i = 0; i < 15; ++i) {
    EXPECT_EQ(bytes[4 * i], kDefaultColumnOrder[i]);
    EXPECT_EQ(bytes[4 * i + 1] + bytes[4 * i + 2] + bytes[4 * i + 3], 0);
  }
}

TEST_F(ColumnStore, AnOrderOfAnotherSizeIsTheDefault) {
  SetVersion("3.1.0");
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, "Column Order", kAscending.data(), 56);
  EXPECT_EQ(ReadColumnOrder(), kDefaultColumnOrder);
}

}  // namespace

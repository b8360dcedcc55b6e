#include "settings/globals.h"

#include <gtest/gtest.h>

#include "settings/registry.h"
#include "support/temp_dir.h"

namespace {

class Globals : public testing::Test {
 protected:
  Globals() { SetSettingsFile(m_dir.File("settings.ini")); }
  ~Globals() override {
    SetSettingsFile(m_dir.File("none.ini"));
    ReadStartupSettings();
    ReadActiveColumns();
    SetSettingsFile("");
  }
  TempDir m_dir;
};

TEST_F(Globals, WithAnEmptyStoreTheyHaveTheirDefaults) {
  ReadStartupSettings();
  ReadActiveColumns();
  EXPECT_EQ(g_traceLimit, 500000u);
  EXPECT_FALSE(g_useUtc);
  EXPECT_EQ(g_updateInterval, 333u);
  EXPECT_FALSE(g_quickClose);
  EXPECT_EQ(g_activeColumns, (ColumnFlags{1, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0}));
}

TEST_F(Globals, TheThreeNumbersAreReadFromTheirKey) {
  const char key[] = "Software\\Zentara\\QuorTrace\\Tessera\\Settings\\TraceView";
  NtRegPut(HKEY_CURRENT_USER, key, "Trace Limit", 2500u);
  NtRegPut(HKEY_CURRENT_USER, key, "Coordinated Universal Time", 1u);
  NtRegPut(HKEY_CURRENT_USER, key, "Update Interval", 50u);
  ReadStartupSettings();
  EXPECT_EQ(g_traceLimit, 2500u);
  EXPECT_TRUE(g_useUtc);
  EXPECT_EQ(g_updateInterval, 50u);
}

TEST_F(Globals, TheStoredTraceLimitIsNotRangeChecked) {
  for (const unsigned limit : {0u, 1u, 4294967295u}) {
    NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Trace Limit", limit);
    ReadStartupSettings();
    EXPECT_EQ(g_traceLimit, limit);
  }
}

TEST_F(Globals, AnyOtherNumberThanZeroMeansUtc) {
  NtRegPut(HKEY_CURRENT_USER, kRegTraceView, "Coordinated Universal Time", 256u);
  ReadStartupSettings();
  EXPECT_TRUE(g_useUtc);
}

TEST_F(Globals, TheColumnsAreABlockOf60BytesAndReadOnTheirOwn) {
  ColumnFlags all;
  all.fill(1);
  static_assert(sizeof all == 60);
  const char key[] = "Software\\Zentara\\QuorTrace\\Tessera\\Settings\\TraceView\\Columns";
  NtRegPutBuf(HKEY_CURRENT_USER, key, "Active Columns", all.data(), sizeof all);
  ReadStartupSettings();
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
  ReadActiveColumns();
  EXPECT_EQ(g_activeColumns, all);
}

TEST_F(Globals, ColumnsOfAnotherSizeReadAsTheBuiltInOnes) {
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", "1234", 4);
  ReadActiveColumns();
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
}

TEST(RegistryKeys, TheyAreThePathsOfTheTable) {
  EXPECT_STREQ(kRegProgram, "Software\\Zentara\\QuorTrace\\Tessera");
  const std::string settings = std::string(kRegProgram) + "\\Settings";
  EXPECT_EQ(kRegSettings, settings);
  EXPECT_EQ(kRegTraceView, settings + "\\TraceView");
  EXPECT_EQ(kRegColumns, settings + "\\TraceView\\Columns");
  EXPECT_EQ(kRegConfigView, settings + "\\ConfigView");
  EXPECT_EQ(kRegWizard, settings + "\\Wizard");
}

}  // namespace

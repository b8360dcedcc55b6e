#include "settings/globals.h"

#include "settings/registry.h"

namespace {
constexpr std::uint32_t kDefaultTraceLimit = 500000;
constexpr std::uint32_t kDefaultUpdateIntervalMs = 333;
}  // namespace

std::uint32_t g_traceLimit = kDefaultTraceLimit;
bool g_useUtc = false;
bool g_tintSeverity = true;
std::uint32_t g_updateInterval = kDefaultUpdateIntervalMs;
ColumnFlags g_activeColumns = kDefaultActiveColumns;
bool g_bWizardLocalConfig = false;
bool g_quickClose = false;

void ReadStartupSettings() {
  // Kept: the stored limit is not checked; only the Options dialog has a range.
  g_traceLimit = NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Trace Limit", kDefaultTraceLimit);
  g_useUtc = NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Coordinated Universal Time", 0u) != 0;
  g_tintSeverity = NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Tint Warnings and Errors", 1u) != 0;
  g_updateInterval =
      NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Update Interval", kDefaultUpdateIntervalMs);
}

void ReadActiveColumns() {
  NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", g_activeColumns.data(),
              kDefaultActiveColumns.data(), sizeof g_activeColumns);
}

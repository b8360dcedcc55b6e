// The process-wide settings. Read once at program start; only the Options dialog changes them.
//
// Threads  Interface thread.
#pragma once

#include <array>
#include <cstdint>

constexpr int kColumnCount = 15;
using ColumnFlags = std::array<std::int32_t, kColumnCount>;  // 1 shown, 0 hidden

// "Sev", "Application", "Component", "Category" and "Trace".
inline constexpr ColumnFlags kDefaultActiveColumns = {1, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0};

extern std::uint32_t g_traceLimit;      // most traces that a monitor keeps; not checked when read
extern bool g_useUtc;                   // times in UTC, not local time
extern bool g_tintSeverity;             // rows of warnings and errors have a pale tint
extern std::uint32_t g_updateInterval;  // period of a monitor's timer, ms; set by hand only
extern ColumnFlags g_activeColumns;     // built-in until ReadActiveColumns
extern bool g_bWizardLocalConfig;       // a configuration that is opened is for this machine
extern bool g_quickClose;               // the user chose to leave without saving; never cleared

// Reads the three numbers from the store. Called before the application object starts.
void ReadStartupSettings();
// Reads "Active Columns". Called by the application's start.
void ReadActiveColumns();

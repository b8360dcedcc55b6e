// What a window shows of its traces, as a value: columns, filter text, colour rules, list or tree,
// the panes beside the rows, and the row that has the focus. Each part may be missing: nothing is
// said about it then.
//
// Shape    UTF-8. Columns are known by their headers, panes by their titles, so that a state fits
//          programs with more of them, and with fewer.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "where/colours/colour_rules.h"

// Bounds of a state that is kept.
constexpr std::size_t kViewColumnsMax = 100, kViewPanesMax = 32, kViewNameBytes = 256,
                      kViewFilterBytes = 64 * 1024;
constexpr int kViewWidthMaxPx = 65535;

struct ViewColumn {
  std::string header;
  int widthPx = 0;  // of a hidden column: that it has when it is shown
  bool shown = false;
  bool operator==(const ViewColumn&) const = default;
};

struct ViewColours {
  bool shown = false;
  ColourRules rules;  // empty if they are not shown
  bool operator==(const ViewColours&) const = default;
};

struct ViewRow {
  std::uint64_t row = 0;    // the place of the trace in its file, from 0
  std::uint64_t print = 0;  // of its record (notes/fingerprint.h)
  bool operator==(const ViewRow&) const = default;
};

struct ViewState {
  std::vector<ViewColumn> columns;  // from left to right; empty: nothing is said
  std::optional<std::string> filter;
  // The marks of the filter dialog's tree as a filter text; empty: all are set.
  std::optional<std::string> marks;
  std::optional<ViewColours> colours;
  std::optional<bool> tree;
  std::optional<std::vector<std::string>> panes;  // those that are shown
  std::optional<ViewRow> row;
  bool operator==(const ViewState&) const = default;
};

// trc export: the traces of a file in the form of the desktop's "Export...", or as clean data for
// other programs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "filter/filter_paths.h"
#include "listview/cells/cell_text.h"

enum class ExportFormat { Csv, CsvRfc4180, Jsonl };

struct ExportOptions {
  std::string file, out;  // out "-": standard output
  ExportFormat format = ExportFormat::Csv;
  // The shown columns, in the list's default order. Unset: those that a list shows at first, or all
  // of them in the clean formats.
  std::optional<std::vector<Column>> columns;
  bool hidden = false;  // all columns
  bool utc = false;
  FilterPaths filter;
};

int RunExport(const ExportOptions& options);

// trc export: the traces of a file in the form of the desktop's "Export...", or as clean data for
// other programs.
#pragma once

#include <string>
#include <vector>

#include "filter/trace_options.h"

enum class ExportFormat { Csv, CsvRfc4180, Jsonl, Otlp };

struct ExportOptions {
  std::vector<std::string> files;
  std::string out;  // "-": standard output
  ExportFormat format = ExportFormat::Csv;
  bool hidden = false;  // all columns
  // Its columns stand in the list's default order. Unset: those that a list shows at first, or all
  // of them in the clean formats.
  TraceOptions traces;
};

int RunExport(const ExportOptions& options);

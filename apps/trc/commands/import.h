// trc import: writes the lines of another program's log, or its events, as traces.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "import/fields/import_field.h"
#include "import/log_import.h"

enum class ImportForm { ByContent, Journal, Syslog, Jsonl, Regex, Otlp, Chrome };

struct ImportOptions {
  ImportForm form = ImportForm::ByContent;
  std::string expression;  // of Regex
  std::vector<std::pair<std::string, ImportField>> keys;
  ImportFieldRules rules;
  std::string timeFormat, zone = "local";
  JoinLines join = JoinLines::None;
  std::vector<std::string> in;  // "-" is standard input
  std::string out;
};

// ByContent finds forms without lines only: any text has lines.
inline bool HasLines(ImportForm form) {
  return form != ImportForm::ByContent && form != ImportForm::Otlp && form != ImportForm::Chrome;
}

int RunImport(const ImportOptions& options);

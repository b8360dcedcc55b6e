// trc import: writes the lines of another program's log as traces.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "import/fields/import_field.h"
#include "import/log_import.h"

enum class ImportForm { Journal, Syslog, Jsonl, Regex };

struct ImportOptions {
  ImportForm form = ImportForm::Jsonl;
  std::string expression;  // of Regex
  std::vector<std::pair<std::string, ImportField>> keys;
  ImportFieldRules rules;
  std::string timeFormat, zone = "local";
  JoinLines join = JoinLines::None;
  std::vector<std::string> in;  // "-" is standard input
  std::string out;
};

int RunImport(const ImportOptions& options);

// The fields that a key of a log, or a group of an expression, can be mapped to.
//
// Threads  Pure; ImportFields one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "import/fields/import_clock.h"
#include "import/fields/imported_trace.h"
#include "import/fields/level_words.h"

enum class ImportField {
  Time,
  Level,
  LevelOfPython,  // the same, where a key says whose numbers they are
  LevelOfSyslog,
  LevelOfOtel,
  Logger,    // becomes component and category
  Location,  // "net/connect.cpp:42"
  Machine,
  Application,
  Component,
  Category,
  Pid,
  Tid,
  File,
  Line,
  Text,
  Stack,
  Count,
  Tic,
  Attributes,
};

// By the word of the command line ("time", "level", ...).
std::optional<ImportField> FieldNamed(std::string_view word);
// All these words.
const std::vector<std::string>& FieldWords();

struct ImportFieldRules {
  std::optional<std::string> component;             // for all traces; a logger is the category then
  std::optional<std::string> application, machine;  // for traces that say none
  LevelNumbers levels = LevelNumbers::Any;
};

// Puts values into the fields of a trace.
class ImportFields {
 public:
  ImportFields(ImportFieldRules rules, ImportClock& clock)
      : m_rules(std::move(rules)), m_clock(clock) {}

  // A trace with what the rules say of all.
  ImportedTrace Begin() const;
  // False: the value is none for this field, which stays as it is. The trace borrows it.
  bool Set(ImportField field, std::string_view value, ImportedTrace& trace);
  // What the rules say of a trace that has no other.
  void Complete(ImportedTrace& trace) const;

  // Levels that are not known; their traces are Info.
  std::uint64_t StrangeLevels() const { return m_strangeLevels; }
  const std::string& FirstStrangeLevel() const { return m_firstStrange; }
  // Those behind the first `kept` are of a line that is read once more.
  void ForgetLevels(std::uint64_t kept) { m_strangeLevels = kept; }

 private:
  bool SetLevel(std::string_view value, LevelNumbers numbers, ImportedTrace& trace);
  void SetLogger(std::string_view value, ImportedTrace& trace) const;

  ImportFieldRules m_rules;
  ImportClock& m_clock;
  std::uint64_t m_strangeLevels = 0;
  std::string m_firstStrange;
};

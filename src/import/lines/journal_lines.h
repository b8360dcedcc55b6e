// Lines of `journalctl -o json`, and what import/journal_export.h makes of `journalctl -o export`.
//
// Shape    _HOSTNAME is the machine, SYSLOG_IDENTIFIER or _COMM the application, LOGGER the
//          component and category; without it the unit is the component and the facility the
//          category. Other fields of the journal are left out. A field with several values has them
//          one a line.
// Errors   A line is not understood if it is no object or has no time of the journal.
// Threads  One.
#pragma once

#include <string>

#include "import/fields/import_field.h"
#include "import/lines/flat_json.h"
#include "import/lines/line_format.h"

class JournalLines final : public LineFormat, private FlatJsonTaker {
 public:
  explicit JournalLines(ImportFields& fields) : m_fields(fields) {}
  bool Read(std::string_view line, ImportedTrace& trace) override;
  bool MayBeExported() const override { return true; }
  std::vector<std::string> Notes() const override;

 private:
  static constexpr std::size_t kKeys = 21;

  bool OnValue(const std::string& path, JsonKind kind, std::string_view value) override;
  void OnAgain() override;
  void Begin();
  const std::string* Value(std::size_t key) const { return m_has[key] ? &m_values[key] : nullptr; }
  bool SetFirst(ImportField field, std::initializer_list<std::size_t> keys, ImportedTrace& trace);
  void SetNames(ImportedTrace& trace);

  ImportFields& m_fields;
  bool m_has[kKeys] = {};
  bool m_textIsMissing = false;
  std::string m_values[kKeys];
  std::string m_list[kKeys];  // the path of the bytes that were given last
  // Entries whose text journalctl has left out, because it is long and --all was not given.
  std::uint64_t m_missingTexts = 0;
  std::uint64_t m_mended = 0;
  bool m_again = false;
};

// Reads the times of one input: by the given format, or in any of the usual forms.
//
// Errors   False for a text that is no time, and for one before the year 1 or after 9999.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "import/fields/clock_text.h"
#include "import/fields/import_zone.h"
#include "import/fields/imported_trace.h"

struct ImportTimeRules {
  ImportZone zone;     // of times that do not say theirs
  std::string format;  // for strptime; empty: the usual forms
};

class ImportClock {
 public:
  explicit ImportClock(ImportTimeRules rules) : m_rules(std::move(rules)) {}

  // The latest moment that this input can speak of, in seconds since 1970: the time of its last
  // write. A time without a year is in the last year that does not put it a day after that.
  void SetLatest(std::int64_t seconds) { m_latest = seconds; }
  // Reads the whole text.
  bool Read(std::string_view text, ImportedTrace& trace);
  // Reads a time of syslog from the beginning; gives its characters, 0 for none.
  std::size_t ReadBeginning(std::string_view text, ImportedTrace& trace);
  // How many times had no year.
  std::uint64_t YearsAdded() const { return m_yearsAdded; }

 private:
  bool Store(ClockTime time, ImportedTrace& trace);
  bool AddYear(ClockTime& time) const;

  ImportTimeRules m_rules;
  std::int64_t m_latest = 0;
  std::uint64_t m_yearsAdded = 0;
};

// Milliseconds since 1970. False outside of the years 1 to 9999.
bool StoreMoment(std::int64_t ms, ImportedTrace& trace);

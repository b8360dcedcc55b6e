// Lines of syslog: RFC 5424, RFC 3164 and what syslog daemons write into files, each with and
// without <PRI>.
//
// Shape    The host is the machine, the tag or APP-NAME the application, the facility the
//          component and MSGID the category. Structured data stands behind the text. Without <PRI>
//          a trace is Info and of the component "syslog".
// Errors   A line that does not begin with <PRI>, a version or a time is not understood.
// Threads  One.
#pragma once

#include <string>

#include "import/fields/import_field.h"
#include "import/lines/line_format.h"

class SyslogLines final : public LineFormat {
 public:
  SyslogLines(ImportFields& fields, ImportClock& clock) : m_fields(fields), m_clock(clock) {}
  bool Read(std::string_view line, ImportedTrace& trace) override;

 private:
  bool ReadPriority(std::string_view& line, ImportedTrace& trace);
  bool ReadCurrent(std::string_view line, ImportedTrace& trace);
  bool ReadTraditional(std::string_view line, ImportedTrace& trace);
  void ReadTag(std::string_view line, ImportedTrace& trace);
  void SetName(ImportField field, std::string_view value, ImportedTrace& trace);

  ImportFields& m_fields;
  ImportClock& m_clock;
  std::string m_text;
};

// "kern", "user", "mail" ...: the facility of a number, "syslog" for others.
std::string_view FacilityName(unsigned number);

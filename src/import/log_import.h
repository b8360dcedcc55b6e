// Imports the lines of a log into trace files.
//
// Shape    A trace for each line, in their order, and lines that belong to the text of the trace
//          before them. A line that is not understood becomes a trace too, an Info with the whole
//          line as its text, and the time of the trace before it.
// Owner    Borrows everything.
// Errors   Read is false with a reason: a write or a read failed, or `goOn` said no (reader's
//          Stopped).
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "import/fields/import_field.h"
#include "import/import_parts.h"
#include "import/line_reader.h"
#include "import/lines/line_format.h"

// Which lines that are not understood belong to the trace before them.
enum class JoinLines { Indented, All, None };

struct ImportCounts {
  std::uint64_t lines = 0;  // but for empty ones
  std::uint64_t understood = 0, joined = 0;
  std::uint64_t strange = 0;       // not understood
  std::uint64_t firstStrange = 0;  // its number, from 1
  std::string firstStrangeIn;      // the name of its input
  std::uint64_t cutLines = 0;      // longer than LineReader::kLineBytesMax
};

class LogImport {
 public:
  LogImport(LineFormat& format, ImportFields& fields, ImportParts& parts, JoinLines join)
      : m_format(format), m_fields(fields), m_parts(parts), m_join(join) {}

  // All lines of one input, of which the messages speak as `name`.
  bool Read(LineReader& reader, const std::string& name, std::string* why);
  const ImportCounts& Counts() const { return m_counts; }

 private:
  bool Take(const InputLine& line, std::uint64_t number, const std::string& name, std::string* why);
  bool Belongs(std::string_view line) const;
  bool PutStrange(std::string_view line, std::uint64_t number, const std::string& name,
                  std::string* why);

  LineFormat& m_format;
  ImportFields& m_fields;
  ImportParts& m_parts;
  JoinLines m_join;
  std::uint32_t m_date = 0, m_time = 0;  // of the last trace that has them
  ImportCounts m_counts;
};

// What is told at the end: a text for each kind of what is not as in the input.
std::vector<std::string> ImportTexts(const ImportCounts& counts, const ImportLosses& losses,
                                     const ImportFields& fields);

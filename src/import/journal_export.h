// The entries of the journal's export form (`journalctl -o export`) as lines of its JSON form.
//
// Shape    An entry is a line "NAME=value" for each field, or a line "NAME", the number of its
//          bytes (64 bits, little-endian), these bytes and a line end; then an empty line. An entry
//          becomes one object with a string for each text, and an array of numbers for other bytes.
//          Any other line, also one of JSON, stays as it is.
// Owner    Borrows the reader. A line is valid until the next call.
// Errors   A number of bytes that the input does not keep leaves the line "NAME" as it is, and what
//          follows to be read as lines. Of an entry longer than LineReader::kLineBytesMax the
//          fields that fit are given, and it counts as cut.
// Threads  One.
#pragma once

#include <optional>
#include <string>

#include "import/line_reader.h"

class JournalExport {
 public:
  static constexpr std::uint64_t kFieldBytesMax = std::uint64_t{64} << 20;

  explicit JournalExport(LineReader& reader) : m_reader(reader) {}

  // As LineReader's.
  bool Next(InputLine& line);
  // The number of the line with which the last one began, from 1.
  std::uint64_t Number() const { return m_number; }

 private:
  bool TakeField(InputLine& line);
  bool TakeBytes(std::string_view name);
  void Append(std::string_view name, std::string_view value);
  InputLine Whole();

  LineReader& m_reader;
  std::string m_object, m_heldText, m_name;
  std::optional<InputLine> m_held;  // it was read, and is not of the entry before it
  bool m_cut = false;
  std::uint64_t m_lines = 0, m_number = 0;
};

// Takes the tokens of a notes file as the JSON library reads them, and keeps what it does not know.
//
// Errors   Each operation gives false at the first fault, Why() has the reason.
// Threads  One.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "notes/note_file.h"
#include "notes/unknown_members.h"

class NoteParser {
 public:
  explicit NoteParser(NoteFile& notes) : m_notes(notes) {}

  // What the library calls.
  bool null() { return Other("null"); }
  bool boolean(bool value) { return Other(value ? "true" : "false"); }
  bool number_integer(std::int64_t value) { return Other(std::to_string(value)); }
  bool number_unsigned(std::uint64_t value);
  bool number_float(double, const std::string& text) { return Other(text); }
  bool string(const std::string& value);
  bool binary(const std::vector<std::uint8_t>&) { return false; }
  bool start_object(std::size_t) { return Enter(true); }
  bool start_array(std::size_t) { return Enter(false); }
  bool key(const std::string& name);
  bool end_object() { return Leave(); }
  bool end_array() { return Leave(); }
  template <class Error>
  bool parse_error(std::size_t place, const std::string&, const Error&) {
    return Fail("no JSON at byte " + std::to_string(place));
  }

  // After the last token.
  bool Finish();
  const std::string& Why() const { return m_why; }

 private:
  // What stands around the next token; Nothing: the file itself is to come, or has been.
  enum class In : std::uint8_t { Nothing, File, Trace, Heads, Head, Rows, Row };
  enum Member : unsigned {
    kUnknown = 0,
    kFormat = 1,
    kVersion = 2,
    kTrace = 4,
    kRows = 8,
    kBytes = 16,
    kHeads = 32,
    kRow = 64,
    kPrint = 128,
    kMark = 256,
    kNote = 512,
  };
  // The members of an object, as it is read.
  struct Members {
    unsigned seen = 0;
    Member current = kUnknown;
    UnknownMembers unknown;

    bool Has(unsigned all) const { return (seen & all) == all; }
  };

  bool Fail(std::string reason);
  bool Misplaced();
  bool IsUnknown() const { return m_unknown && m_unknown->IsOpen(); }
  bool CountUnknown();
  bool Other(std::string_view json);
  bool Enter(bool object);
  bool EnterKnown(bool object);
  bool Leave();
  bool LeaveRow();
  bool ReadPrint(const std::string& text, std::uint64_t& print);
  Members* MembersHere();
  static Member MemberOf(In in, std::string_view name);

  NoteFile& m_notes;
  std::vector<In> m_levels;
  std::size_t m_unknownDepth = 0, m_unknownValues = 0;
  UnknownMembers* m_unknown = nullptr;  // of the object whose member is being kept
  Members m_ofFile, m_ofTrace, m_ofRow;
  FilePrint::Head m_head;
  std::size_t m_headItems = 0;
  NotedRow m_row;
  bool m_done = false;
  std::string m_why;
};

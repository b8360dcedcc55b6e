#include "notes/note_parser.h"

#include <charconv>

#include "base/fail_with.h"

namespace {

constexpr std::string_view kFormatName = "tessera-notes";
constexpr std::uint64_t kFormatVersion = 1;
constexpr std::size_t kPrintDigits = 16;
constexpr std::size_t kHeadsMax = 16;

}  // namespace

bool NoteParser::Fail(std::string reason) {
  // The library reports the end of the parse as one more error.
  if (m_why.empty()) m_why = std::move(reason);
  return false;
}

bool NoteParser::Misplaced() {
  return Fail(m_levels.empty() ? "no notes file" : "a value of the wrong kind");
}

NoteParser::Members* NoteParser::MembersHere() {
  if (m_levels.empty()) return nullptr;
  switch (m_levels.back()) {
    case In::File:
      return &m_ofFile;
    case In::Trace:
      return &m_ofTrace;
    case In::Row:
      return &m_ofRow;
    default:
      return nullptr;
  }
}

NoteParser::Member NoteParser::MemberOf(In in, std::string_view name) {
  struct Known {
    In in;
    std::string_view name;
    Member member;
  };
  constexpr Known kKnown[] = {{In::Row, "row", kRow},        {In::Row, "print", kPrint},
                              {In::Row, "mark", kMark},      {In::Row, "note", kNote},
                              {In::Trace, "bytes", kBytes},  {In::Trace, "heads", kHeads},
                              {In::File, "format", kFormat}, {In::File, "version", kVersion},
                              {In::File, "trace", kTrace},   {In::File, "rows", kRows}};
  for (const Known& known : kKnown)
    if (known.in == in && known.name == name) return known.member;
  return kUnknown;
}

bool NoteParser::key(const std::string& name) {
  if (IsUnknown()) {
    m_unknown->Key(name);
    return true;
  }
  Members& members = *MembersHere();
  members.current = MemberOf(m_levels.back(), name);
  const bool twice = members.current == kUnknown ? !members.unknown.Begin(name)
                                                 : (members.seen & members.current) != 0;
  if (twice) return Fail("\"" + name + "\" twice in one object");
  members.seen |= members.current;
  m_unknown = &members.unknown;
  return true;
}

bool NoteParser::CountUnknown() {
  return ++m_unknownValues <= kUnknownNotesMax || Fail("too much that is not known");
}

bool NoteParser::Other(std::string_view json) {
  if (!IsUnknown()) return Misplaced();
  m_unknown->Value(json);
  return CountUnknown();
}

bool NoteParser::number_unsigned(std::uint64_t value) {
  if (IsUnknown()) return Other(std::to_string(value));
  const In in = m_levels.empty() ? In::Nothing : m_levels.back();
  if (in == In::Head && m_headItems++ == 0) {
    m_head.bytes = value;
    return true;
  }
  const Members* const members = MembersHere();
  switch (members ? members->current : kUnknown) {
    case kVersion:
      return value == kFormatVersion || Fail("of another version: " + std::to_string(value));
    case kBytes:
      m_notes.trace.size = value;
      return true;
    case kRow:
      m_row.row = value;
      return true;
    case kMark:
      m_row.colour = static_cast<std::uint8_t>(value);
      return (value >= 1 && value <= kMarkColours) || Fail("no mark is " + std::to_string(value));
    default:
      return Misplaced();
  }
}

bool NoteParser::ReadPrint(const std::string& text, std::uint64_t& print) {
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, print, 16);
  return (text.size() == kPrintDigits && read.ec == std::errc() && read.ptr == end) ||
         Fail("a print is no 16 hexadecimal digits");
}

bool NoteParser::string(const std::string& value) {
  if (IsUnknown()) return Other(JsonQuoted(value));
  const In in = m_levels.empty() ? In::Nothing : m_levels.back();
  if (in == In::Head && m_headItems++ == 1) return ReadPrint(value, m_head.print);
  const Members* const members = MembersHere();
  switch (members ? members->current : kUnknown) {
    case kFormat:
      return value == kFormatName || Fail("no notes file");
    case kPrint:
      return ReadPrint(value, m_row.print);
    case kNote:
      m_row.note = value;
      return true;
    default:
      return Misplaced();
  }
}

bool NoteParser::Enter(bool object) {
  if (m_levels.size() + m_unknownDepth >= kNotesDepthMax) return Fail("too deep");
  if (!IsUnknown()) return EnterKnown(object);
  ++m_unknownDepth;
  m_unknown->Enter(object);
  return CountUnknown();
}

bool NoteParser::EnterKnown(bool object) {
  const In in = m_levels.empty() ? In::Nothing : m_levels.back();
  const Members* const members = MembersHere();
  const Member member = members ? members->current : kUnknown;
  In entered = In::Nothing;
  if (in == In::Nothing && object && !m_done) entered = In::File;
  if (in == In::File && object && member == kTrace) entered = In::Trace;
  if (in == In::File && !object && member == kRows) entered = In::Rows;
  if (in == In::Trace && !object && member == kHeads) entered = In::Heads;
  if (in == In::Heads && !object) entered = In::Head;
  if (in == In::Rows && object) entered = In::Row;
  if (entered == In::Nothing) return Misplaced();
  if (entered == In::Row) {
    m_row = {};
    m_ofRow.seen = 0;
    m_ofRow.unknown.Clear();
  }
  m_headItems = 0;
  m_levels.push_back(entered);
  return true;
}

bool NoteParser::Leave() {
  if (IsUnknown()) {
    --m_unknownDepth;
    m_unknown->Leave();
    return true;
  }
  const In left = m_levels.back();
  m_levels.pop_back();
  m_unknown = nullptr;
  if (left == In::Head) {
    if (m_headItems != 2 || m_notes.trace.heads.size() >= kHeadsMax) return Misplaced();
    m_notes.trace.heads.push_back(m_head);
  }
  if (left == In::File) m_done = true;
  return left == In::Row ? LeaveRow() : true;
}

bool NoteParser::LeaveRow() {
  if (!m_ofRow.Has(kRow | kPrint)) return Fail("a row without its number or its print");
  if (const std::string& more = m_ofRow.unknown.Text(); !more.empty())
    m_notes.moreOfRows[m_row.Key()] = more;
  m_notes.rows.push_back(std::move(m_row));
  return true;
}

bool NoteParser::Finish() {
  if (!m_ofFile.Has(kFormat | kVersion | kTrace | kRows) || !m_ofTrace.Has(kBytes | kHeads))
    return Fail("no notes file");
  m_notes.more = m_ofFile.unknown.Text();
  m_notes.moreOfTrace = m_ofTrace.unknown.Text();
  return true;
}

// Lines that a regular expression takes apart: its named groups are the fields.
//
// Shape    (?<time>...) (?<level>...) and so on, by the words of the fields. Without a group "text"
//          the whole line is the text.
// Owner    Holds the compiled expression.
//          It needs the groups, which the search of a filter text does not have.
// Errors   A line is not understood if it does not match, if the search takes too long (Notes), or
//          if its time is none. A value that its field cannot have stands behind the text.
// Threads  One.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "import/fields/import_field.h"
#include "import/lines/line_format.h"

class RegexLines final : public LineFormat {
 public:
  // Null and a reason: it is no expression, or a group has the name of no field.
  static std::unique_ptr<RegexLines> Make(const std::string& expression, ImportFields& fields,
                                          std::string* why);
  ~RegexLines() override;
  bool Read(std::string_view line, ImportedTrace& trace) override;
  std::vector<std::string> Notes() const override;

 private:
  struct Group {
    unsigned number;
    ImportField field;
    std::string word;
  };
  struct Compiled;

  explicit RegexLines(ImportFields& fields);
  bool Compile(const std::string& expression, std::string* why);
  bool ReadGroups(std::string* why);
  bool SetGroup(const Group& group, std::string_view value, ImportedTrace& trace);

  ImportFields& m_fields;
  std::unique_ptr<Compiled> m_compiled;
  std::vector<Group> m_groups;
  bool m_hasText = false;
  std::string m_extra, m_text;
  std::uint64_t m_givenUp = 0;  // lines
};

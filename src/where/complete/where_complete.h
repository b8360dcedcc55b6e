// What could be inserted at a place of a filter text while it is typed.
//
// Shape    Fields, the operators of the field before, values, names of the document, "and", "or",
//          "not" and brackets: only what keeps the text readable as a filter. They begin with what
//          is typed; names also have it in their middle, behind the others. Nothing inside a text
//          or pattern, and nothing when the one thing to insert is already there.
// Owner    The caller's text is not kept.
// Threads  Pure, but the names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "where/text/where_fields.h"

constexpr std::size_t kWhereCompletionsMax = 200;

struct WhereCompletion {
  enum class Kind : std::uint8_t {
    Field,
    Operator,
    Value,  // a word of the language
    Name,   // of the document
    Word,   // "and", "or", "not"
    Sign,   // a bracket, a comma
  };
  std::string insert;                          // in quotes where it needs them
  std::size_t replaceFrom = 0, replaceTo = 0;  // bytes of the text that it replaces
  Kind kind = Kind::Field;
  std::string note;  // for the user; may be empty
};

// The names that a document holds for a field, in any order, also several times. Asked only for
// the field at the caret: one whose values are names, and pid and tid, whose processes are numbers
// without the account.
using WhereNames = std::function<std::vector<std::string>(WhereField)>;

// `caret` is a byte of the text; one behind its end stands for the end.
std::vector<WhereCompletion> WhereCompletions(std::string_view text, std::size_t caret,
                                              const WhereNames& names);

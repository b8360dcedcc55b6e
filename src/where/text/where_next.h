// What could stand at the end of the beginning of a filter text.
//
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "where/text/where_fields.h"

struct WhereNext {
  enum class What : std::uint8_t {
    Nothing,     // something before the end is wrong, or only the user knows
    Test,        // a field, "not" or a bracket
    AfterTest,   // "and", "or", or a closing bracket
    Operator,    // of the field
    AfterNot,    // behind field and "not": one of the operators that have words
    List,        // "{"
    Value,       // of the field, behind the operator
    AfterValue,  // in a list: "," or "}"
  };
  What what = What::Nothing;
  WhereField field = WhereField::Severity;
  WhereOperator op = WhereOperator::IsSet;
  bool closes = false;      // a bracket is open
  bool isCompared = false;  // AfterTest: the field before may have an operator too
};

WhereNext NextInWhere(std::string_view beginning);
// For a message: "and", "==", "a number".
std::vector<std::string> ExpectedWords(const WhereNext& next);

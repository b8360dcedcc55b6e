// The fields of a trace that a filter text can name, and the operators that each of them takes.
//
// Shape    Words are in small letters; a text may have capitals.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

enum class WhereField : std::uint8_t {
  Severity,
  Count,
  Tic,
  Delta,
  Time,
  Machine,
  Application,
  Component,
  Category,
  Attributes,
  Pid,
  Tid,
  Account,
  Text,
  File,
  Line,
  Stack,
  Developer,
  Verbose,
  Marked,
  Note,
};
constexpr std::size_t kWhereFields = 21;

// What a field holds, and so which values stand behind its operator.
enum class WhereKind : std::uint8_t {
  Severity,  // info < warn < error
  Number,    // 0 to 2^64 - 1
  Id,        // a number, or a name where the traces have one: pid and tid
  Moment,    // a point in time
  Duration,  // a time span with its unit
  Name,      // one of the names of a document
  Text,      // any bytes
  Flag,      // set or not
};

enum class WhereOperator : std::uint8_t {
  Equal,
  NotEqual,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  In,
  Contains,
  StartsWith,
  Matches,
  IsSet,  // the field alone, without a value
};
constexpr std::size_t kWhereOperators = 11;

struct WhereFieldInfo {
  WhereField field;
  std::string_view word;
  WhereKind kind;
  std::string_view note;  // for the user: "the component that traced it"
};
const WhereFieldInfo& InfoOf(WhereField field);
inline std::string_view WordOf(WhereField field) {
  return InfoOf(field).word;
}
inline WhereKind KindOf(WhereField field) {
  return InfoOf(field).kind;
}
// Null: no field has this name.
const WhereFieldInfo* FieldOfWord(std::string_view word);
// All words, in the order of WhereField.
const std::vector<std::string>& WhereFieldWords();

// "==", "contains"; IsSet has none.
std::string_view WordOf(WhereOperator op);
bool TakesOperator(WhereField field, WhereOperator op);
// In the order of WhereOperator.
std::vector<WhereOperator> OperatorsOf(WhereField field);
// The words of the language that a name must not be without quotes: "and", "in", ...
bool IsWhereKeyword(std::string_view word);

#include "where/text/where_fields.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace {

using F = WhereField;
using K = WhereKind;
using O = WhereOperator;

constexpr std::array<WhereFieldInfo, kWhereFields> kFields{{
    {F::Severity, "severity", K::Severity, "info < warn < error"},
    {F::Count, "count", K::Number, "the sequence number"},
    {F::Tic, "tic", K::Number, "the tic count"},
    {F::Delta, "delta", K::Duration, "the time since the trace before"},
    {F::Time, "time", K::Moment, "when it was traced"},
    {F::Machine, "machine", K::Name, "the machine that it is from"},
    {F::Application, "application", K::Name, "the application that it is from"},
    {F::Component, "component", K::Name, "the component that traced it"},
    {F::Category, "category", K::Name, "the category within the component"},
    {F::Attributes, "attributes", K::Number, "all bits of its attributes"},
    {F::Pid, "pid", K::Id, "the process"},
    {F::Tid, "tid", K::Id, "the thread"},
    {F::Account, "account", K::Name, "the account of the process"},
    {F::Text, "text", K::Text, "the text"},
    {F::File, "file", K::Name, "the source file"},
    {F::Line, "line", K::Number, "the source line"},
    {F::Stack, "stack", K::Text, "the call stack; alone: there is one"},
    {F::Developer, "developer", K::Flag, "it is for developers"},
    {F::Verbose, "verbose", K::Flag, "it is verbose"},
    {F::Marked, "marked", K::Number, "the colour of its mark; alone: it has one"},
    {F::Note, "note", K::Text, "its note; alone: it has one"},
}};

constexpr std::array<std::string_view, kWhereOperators> kOperatorWords{
    "==", "!=", "<", "<=", ">", ">=", "in", "contains", "startswith", "matches", ""};

constexpr unsigned Bit(O op) {
  return 1U << static_cast<unsigned>(op);
}
constexpr unsigned kSame = Bit(O::Equal) | Bit(O::NotEqual);
constexpr unsigned kOrder =
    Bit(O::Less) | Bit(O::LessEqual) | Bit(O::Greater) | Bit(O::GreaterEqual);
constexpr unsigned kParts = Bit(O::Contains) | Bit(O::StartsWith) | Bit(O::Matches);

unsigned OperatorBits(F field) {
  if (field == F::Marked) return kSame | kOrder | Bit(O::In) | Bit(O::IsSet);
  if (field == F::Stack || field == F::Note) return kSame | Bit(O::In) | kParts | Bit(O::IsSet);
  switch (KindOf(field)) {
    case K::Severity:
    case K::Number:
      return kSame | kOrder | Bit(O::In);
    case K::Id:
      return kSame | kOrder | Bit(O::In) | kParts;
    case K::Moment:
    case K::Duration:
      return kSame | kOrder;
    case K::Name:
    case K::Text:
      return kSame | Bit(O::In) | kParts;
    case K::Flag:
      return Bit(O::IsSet);
  }
  return 0;
}

}  // namespace

const WhereFieldInfo& InfoOf(WhereField field) {
  return kFields[static_cast<std::size_t>(field)];
}

const WhereFieldInfo* FieldOfWord(std::string_view word) {
  const auto found = std::find_if(kFields.begin(), kFields.end(), [&](const auto& info) {
    return CompareIgnoringCase(info.word, word) == 0;
  });
  return found == kFields.end() ? nullptr : &*found;
}

const std::vector<std::string>& WhereFieldWords() {
  static const std::vector<std::string> words = [] {
    std::vector<std::string> all;
    for (const WhereFieldInfo& info : kFields) all.emplace_back(info.word);
    return all;
  }();
  return words;
}

std::string_view WordOf(WhereOperator op) {
  return kOperatorWords[static_cast<std::size_t>(op)];
}

bool TakesOperator(WhereField field, WhereOperator op) {
  return (OperatorBits(field) & Bit(op)) != 0;
}

std::vector<WhereOperator> OperatorsOf(WhereField field) {
  std::vector<WhereOperator> operators;
  for (std::size_t i = 0; i < kWhereOperators; ++i)
    if (TakesOperator(field, static_cast<O>(i))) operators.push_back(static_cast<O>(i));
  return operators;
}

bool IsWhereKeyword(std::string_view word) {
  constexpr std::string_view kKeywords[] = {"and",      "or",         "not",    "in",
                                            "contains", "startswith", "matches"};
  return std::any_of(std::begin(kKeywords), std::end(kKeywords),
                     [&](std::string_view one) { return CompareIgnoringCase(one, word) == 0; });
}

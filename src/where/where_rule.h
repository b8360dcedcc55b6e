// A filter text with its negations at its tests, and the tests on ids decided by what the id names.
//
// Shape    A rule is either all or any of further rules, or one test. A negated test holds where
//          the test does not, so also where the field has no value.
// Threads  Immutable values: any. HoldsFor uses the search of one thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "where/text/where_parser.h"
#include "where/where_regex.h"

struct WhereRule {
  enum class Kind : std::uint8_t { All, Any, Test };
  Kind kind = Kind::Test;
  bool negated = false;  // of a Test
  // As in WhereExpr; NotEqual is a negated Equal.
  WhereField field = WhereField::Severity;
  WhereOperator op = WhereOperator::Equal;
  std::vector<WhereValue> values;           // of In by their texts
  std::shared_ptr<const WhereRegex> regex;  // of Matches
  std::vector<WhereRule> rules;             // of All and Any
};

// Compiles the expressions of Matches. Nothing: one of them is none; `error` has its place.
std::optional<WhereRule> MakeRule(const WhereExpr& expr, WhereError& error);

// Where a record has the 16-bit number that decides a test: an id or the attributes. Nothing for a
// test on another field.
std::optional<std::uint8_t> KeyPlaceOf(WhereField field);
// The place that all tests of the rule share.
std::optional<std::uint8_t> KeyPlaceOf(const WhereRule& rule);

// Do the tests hold for a record with this id or these attributes? `name` is that of the id; a
// test on attributes takes the number. REQUIRES: the rule has a KeyPlaceOf.
bool HoldsFor(const WhereRule& rule, std::uint16_t number, std::string_view name,
              WhereRegexSearch& search);
// A test on a text: Equal, In, Contains, StartsWith, Matches; does not regard `negated`.
bool TextHolds(const WhereRule& test, std::string_view text, WhereRegexSearch& search);

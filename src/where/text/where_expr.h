// A filter text as a tree: what ParseWhere gives, WhereText writes and a program is compiled from.
//
// Shape    And and Or have at least two children and none of their own kind; Not has one, which is
//          no Not. A test has a field, an operator that the field takes, and its values: one; for
//          In one or more; for IsSet none. Places are bytes in the text that was parsed.
// Threads  Values: pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "where/text/where_fields.h"

// In the order of their weight.
enum class WhereSeverity : std::uint8_t { Info, Warn, Error };

struct WhereMoment {
  enum class Base : std::uint8_t {
    Utc,    // said with a zone
    Shown,  // said without one: of a clock in the zone in which times are shown
    End,    // relative to the end of the traces
  };
  Base base = Base::Utc;
  // Since 1970 of that clock, or the offset to the end (before it: negative).
  std::int64_t nanoseconds = 0;
  // The length of what was written: a day for a date, a second for "...:07". == and != mean any
  // moment from `nanoseconds` to before `nanoseconds + span`; the other operators compare with
  // `nanoseconds` alone.
  std::int64_t span = 1;

  bool operator==(const WhereMoment&) const = default;
};

// Which members count is said by the kind of the field and by the operator; the others have their
// defaults.
struct WhereValue {
  // A name or text, without quotes; the pattern of Matches, as PCRE2 takes it; an Id as it was
  // written, also if it is a number ("4711").
  std::string text;
  // Of a Number, and of an Id with `isNumber`: from..to, for one number both the same. to >= from.
  std::uint64_t from = 0, to = 0;
  bool isNumber = false;  // of an Id; always set for a Number
  WhereSeverity severity = WhereSeverity::Info;
  std::int64_t duration = 0;  // nanoseconds
  WhereMoment moment;
  std::size_t place = 0, length = 0;  // with its quotes
};
// The same but for places.
bool operator==(const WhereValue& a, const WhereValue& b);

struct WhereExpr {
  enum class Kind : std::uint8_t { And, Or, Not, Test };
  Kind kind = Kind::Test;
  std::vector<WhereExpr> children;
  WhereField field = WhereField::Severity;
  WhereOperator op = WhereOperator::IsSet;
  std::vector<WhereValue> values;
  std::size_t place = 0, length = 0;
};
// The same but for places.
bool operator==(const WhereExpr& a, const WhereExpr& b);

// Does it mean another moment where times are shown in another zone?
bool HasTimeWithoutZone(const WhereExpr& expr);

// The two, with the children of an operand that is itself of that kind.
WhereExpr WhereAll(std::vector<WhereExpr> children);  // And; of one: that one. REQUIRES: not empty
WhereExpr WhereAny(std::vector<WhereExpr> children);  // Or
WhereExpr WhereNot(WhereExpr expr);                   // of a Not: what it negates

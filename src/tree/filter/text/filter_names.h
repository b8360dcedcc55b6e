// The names that the ids of a filter have, and what a filter text can tell apart.
//
// Shape    A text compares the number of a process or thread by its value ("16" is "0x10"), so two
//          names of the same number are one key.
// Owner    FilterNames borrows the names.
// Threads  Pure.
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "records/name_map.h"
#include "where/text/where_expr.h"

struct FilterNames {
  const NameMap& names;
  // May further names come? Those of a file that is loaded are all there. So "all but A" and "only
  // B and C" can mean the same there, and never for traces that arrive.
  bool mayGrow = false;
};

struct IdKey {
  bool isText = false;  // no number
  std::uint64_t number = 0;
  std::string text;  // of a number its decimal digits

  static IdKey Of(std::string_view name);
  std::strong_ordering operator<=>(const IdKey&) const = default;
};

struct ProcessKey {
  IdKey pid;
  std::string account;

  static ProcessKey Of(std::string_view name);
  std::strong_ordering operator<=>(const ProcessKey&) const = default;
};

WhereValue NameValue(std::string name);
WhereValue IdValue(const IdKey& key);

// A test without a value, or with one.
WhereExpr WhereTest(WhereField field, WhereOperator op, std::vector<WhereValue> values = {});
// `component == Sql`, `component in {Net, Sql}`; `holds` false: `component != Sql`,
// `component not in {Net, Sql}`. REQUIRES: values.
WhereExpr WhereOneOf(WhereField field, std::vector<WhereValue> values, bool holds = true);
// Holds for no trace: `severity < info`.
WhereExpr WhereNever();

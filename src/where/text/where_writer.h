// A tree as text, in its normal form: least brackets, words without quotes where they need none.
//
// Shape    `severity in {warn, error} and component != Net`. ParseWhere reads an equal tree from
//          it if no bound is passed.
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>

#include "where/text/where_expr.h"

std::string WhereText(const WhereExpr& expr);
// One value of the field behind the operator: `"two words"`, `50ms`, `10..20`.
std::string WhereValueText(WhereField field, WhereOperator op, const WhereValue& value);
// A name or text as a value: without quotes where it needs none. Bytes that are no printable UTF-8
// become \xNN, so the result is one line of UTF-8.
std::string WhereQuoted(std::string_view text);

// The values behind an operator.
//
// Errors   False; the input has the error.
// Threads  Pure.
#pragma once

#include "where/text/where_expr.h"
#include "where/text/where_input.h"

// All values of the test, whose field and operator are set; for In the list with its braces.
bool ReadWhereValues(WhereInput& input, WhereExpr& test);

// Reads a filter text: docs/filter-text.md has the language.
//
// Errors   Nothing, and a WhereError. An empty text (blanks only) is one too: whether it means "all
//          traces" is for the caller to say.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "where/text/where_expr.h"

constexpr std::size_t kWhereTextMax = 64 * 1024;  // bytes
constexpr std::size_t kWhereDepthMax = 200;       // brackets and negations inside each other
constexpr std::size_t kWhereTestsMax = 4096;

struct WhereError {
  std::size_t place = 0, length = 0;  // bytes within the text; length 0: at its end
  std::string reason;                 // "there is no field "componet"; did you mean "component"?"
  std::vector<std::string> expected;  // what could stand there: "and", "==", "a number"; or none
};

std::optional<WhereExpr> ParseWhere(std::string_view text, WhereError& error);

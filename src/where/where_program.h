// A filter text that is ready to be asked about traces: compiled once, used by any number of walks
// (where_matcher.h).
//
// Shape    The language is that of docs/filter-text.md. A comparison of a field that has no value
//          does not hold, so its negation does: `count` of a trace without a number, `tic` and
//          `delta` without a tic count, `marked` of a trace without a mark, `severity` of a trace
//          without one, `pid` and `tid` compared in order where they are no numbers. `a != b` is
//          `not a == b`.
// Owner    Shared and immutable.
// Errors   Null, and the place and reason as ParseWhere gives them; a wrong expression of `matches`
//          has the place within the expression.
// Threads  Any.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "where/where_code.h"

class WhereProgram;
using WhereProgramPtr = std::shared_ptr<const WhereProgram>;

class WhereProgram {
 public:
  static WhereProgramPtr Compile(std::string_view text, WhereError& error);
  // REQUIRES: the tree could have been parsed. Its text is the normal form.
  static WhereProgramPtr Compile(WhereExpr expr, WhereError& error);

  const std::string& Text() const { return m_text; }
  const WhereExpr& Expr() const { return m_expr; }
  // Is the trace before each one needed?
  bool UsesDelta() const { return !m_code.deltas.empty(); }
  // Does a verdict depend on the newest trace?
  bool UsesEnd() const { return m_code.usesEnd; }
  // Does a verdict depend on marks and notes?
  bool UsesMarks() const { return m_code.usesMarks; }
  // Are only ids, attributes and numbers looked at, no texts?
  bool IsOfIds() const { return m_code.texts.empty(); }

  const WhereCode& Code() const { return m_code; }

 private:
  WhereProgram(std::string text, WhereExpr expr, WhereCode code)
      : m_text(std::move(text)), m_expr(std::move(expr)), m_code(std::move(code)) {}
  static WhereProgramPtr Make(std::string text, WhereExpr expr, WhereError& error);

  const std::string m_text;
  const WhereExpr m_expr;
  const WhereCode m_code;
};

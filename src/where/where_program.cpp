#include "where/where_program.h"

#include "where/text/where_writer.h"

WhereProgramPtr WhereProgram::Make(std::string text, WhereExpr expr, WhereError& error) {
  std::optional<WhereRule> rule = MakeRule(expr, error);
  if (!rule) return nullptr;
  return WhereProgramPtr(
      new WhereProgram(std::move(text), std::move(expr), MakeCode(std::move(*rule))));
}

WhereProgramPtr WhereProgram::Compile(std::string_view text, WhereError& error) {
  std::optional<WhereExpr> expr = ParseWhere(text, error);
  return expr ? Make(std::string(text), std::move(*expr), error) : nullptr;
}

WhereProgramPtr WhereProgram::Compile(WhereExpr expr, WhereError& error) {
  std::string text = WhereText(expr);
  return Make(std::move(text), std::move(expr), error);
}

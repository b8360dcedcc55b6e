#include "where/colours/colour_program.h"

#include <algorithm>

#include "base/text.h"

namespace {

std::size_t TestsOf(const WhereExpr& expr) {
  if (expr.kind == WhereExpr::Kind::Test) return 1;
  std::size_t tests = 0;
  for (const WhereExpr& child : expr.children) tests += TestsOf(child);
  return tests;
}

bool HasMatches(const WhereExpr& expr) {
  if (expr.kind == WhereExpr::Kind::Test) return expr.op == WhereOperator::Matches;
  return std::any_of(expr.children.begin(), expr.children.end(), HasMatches);
}

// The first test of marks or notes; null: there is none.
const WhereExpr* MarkTestOf(const WhereExpr& expr) {
  if (expr.kind == WhereExpr::Kind::Test)
    return expr.field == WhereField::Marked || expr.field == WhereField::Note ? &expr : nullptr;
  for (const WhereExpr& child : expr.children)
    if (const WhereExpr* const test = MarkTestOf(child)) return test;
  return nullptr;
}

WhereError NoMarks(const WhereExpr& test) {
  WhereError error;
  error.place = test.place;
  error.length = test.length;
  error.reason = "colour rules do not know marks and notes: \"" + std::string(WordOf(test.field)) +
                 "\" works in filter texts only";
  return error;
}

}  // namespace

ColourProgramPtr ColourProgram::Compile(ColourRules rules) {
  std::shared_ptr<ColourProgram> made(new ColourProgram(std::move(rules)));
  std::size_t tests = 0;
  for (const ColourRule& rule : made->m_rules) {
    Line line;
    WhereError error;
    line.program = WhereProgram::Compile(rule.where, error);
    if (!line.program) {
      line.error = std::move(error);
    } else if (line.program->UsesMarks()) {
      line.error = NoMarks(*MarkTestOf(line.program->Expr()));
      line.program = nullptr;
    } else if (!rule.on) {
      line.program = nullptr;
    } else if (tests + TestsOf(line.program->Expr()) > kTestsMax) {
      line.program = nullptr;
      line.error = WhereError{};
      line.error->reason =
          "the rules that are on have more than " + GroupDigits(kTestsMax) + " tests together";
    } else {
      tests += TestsOf(line.program->Expr());
      line.searches = HasMatches(line.program->Expr());
      made->m_usesEnd = made->m_usesEnd || line.program->UsesEnd();
    }
    made->m_lines.push_back(std::move(line));
  }
  return made;
}

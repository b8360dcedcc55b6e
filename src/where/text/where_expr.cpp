#include "where/text/where_expr.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace {

auto Compared(const WhereValue& value) {
  return std::tie(value.text, value.from, value.to, value.isNumber, value.severity, value.duration,
                  value.moment);
}

auto Compared(const WhereExpr& expr) {
  return std::tie(expr.kind, expr.field, expr.op, expr.values, expr.children);
}

WhereExpr Joined(WhereExpr::Kind kind, std::vector<WhereExpr> children) {
  WhereExpr joined;
  joined.kind = kind;
  const std::size_t place = children.front().place;
  const std::size_t end = children.back().place + children.back().length;
  for (WhereExpr& child : children) {
    if (child.kind == kind)
      joined.children.insert(joined.children.end(), std::make_move_iterator(child.children.begin()),
                             std::make_move_iterator(child.children.end()));
    else
      joined.children.push_back(std::move(child));
  }
  if (joined.children.size() == 1) return WhereExpr(std::move(joined.children.front()));
  joined.place = place;
  joined.length = end > place ? end - place : 0;
  return joined;
}

}  // namespace

bool operator==(const WhereValue& a, const WhereValue& b) {
  return Compared(a) == Compared(b);
}

bool operator==(const WhereExpr& a, const WhereExpr& b) {
  return Compared(a) == Compared(b);
}

WhereExpr WhereAll(std::vector<WhereExpr> children) {
  return Joined(WhereExpr::Kind::And, std::move(children));
}

WhereExpr WhereAny(std::vector<WhereExpr> children) {
  return Joined(WhereExpr::Kind::Or, std::move(children));
}

WhereExpr WhereNot(WhereExpr expr) {
  if (expr.kind == WhereExpr::Kind::Not) return WhereExpr(std::move(expr.children.front()));
  WhereExpr negated;
  negated.kind = WhereExpr::Kind::Not;
  negated.place = expr.place;
  negated.length = expr.length;
  negated.children.push_back(std::move(expr));
  return negated;
}

bool HasTimeWithoutZone(const WhereExpr& expr) {
  const auto isWithout = [](const WhereValue& value) {
    return value.moment.base == WhereMoment::Base::Shown;
  };
  if (expr.kind == WhereExpr::Kind::Test)
    return expr.field == WhereField::Time && std::ranges::any_of(expr.values, isWithout);
  return std::ranges::any_of(expr.children, HasTimeWithoutZone);
}

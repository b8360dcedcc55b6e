// Random texts on the names of a FilterWorld, and the same text in other words.
#pragma once

#include "tree/filter/text/filter_world.h"

inline WhereExpr FilterWorld::Test() {
  static const std::vector<F> fields = {F::Severity,  F::Severity,  F::Developer, F::Verbose,
                                        F::Component, F::Component, F::Category,  F::Application,
                                        F::Machine,   F::Pid,       F::Pid,       F::Tid,
                                        F::Tid,       F::Account};
  const F field = OneOf(fields);
  if (KindOf(field) == WhereKind::Flag) return WhereTest(field, O::IsSet);
  std::vector<O> operators = {O::Equal, O::NotEqual, O::In};
  if (KindOf(field) == WhereKind::Severity || KindOf(field) == WhereKind::Id)
    operators.insert(operators.end(), {O::Less, O::GreaterEqual});
  if (KindOf(field) != WhereKind::Severity && Below(4) == 0)
    operators = {O::Contains, O::StartsWith};
  const O op = OneOf(operators);
  std::vector<WhereValue> values;
  for (std::size_t count = op == O::In ? 1 + Below(4) : 1; count > 0; --count) {
    WhereValue& value = values.emplace_back();
    const std::string name = NameOf(m_names, static_cast<NameId>(1 + Below(25)));
    const ProcessKey process = ProcessKey::Of(name);
    if (field == F::Severity)
      value.severity = static_cast<WhereSeverity>(Below(3));
    else if (op == O::Contains || op == O::StartsWith)
      value = NameValue(name.substr(0, 1 + Below(2)));
    else if (op == O::Less || op == O::GreaterEqual)
      value = IdValue({false, 10 + Below(30), "1"});
    else if (KindOf(field) == WhereKind::Id)
      value = IdValue(field == F::Pid ? process.pid : IdKey::Of(name));
    else
      value = NameValue(field == F::Account ? process.account : name);
    if (op == O::In && KindOf(field) == WhereKind::Id && value.isNumber && Below(3) == 0) {
      value.to = value.from + Below(30);
      value.text.clear();
    }
  }
  return WhereTest(field, op, std::move(values));
}

inline WhereExpr FilterWorld::Rewritten(const WhereExpr& expr) {
  using Kind = WhereExpr::Kind;
  if (Below(3) == 0 && expr.kind != Kind::Not) {
    WhereExpr twice = Rewritten(expr);
    return WhereNot(WhereNot(std::move(twice)));
  }
  if (expr.kind == Kind::Not) return WhereNot(Rewritten(expr.children.front()));
  if (expr.kind == Kind::Test) {
    if (expr.op == O::NotEqual) return WhereNot(WhereTest(expr.field, O::Equal, expr.values));
    if (expr.op == O::Equal && Below(2)) return WhereTest(expr.field, O::In, expr.values);
    if (expr.op != O::In || Below(3) == 0) return expr;
    std::vector<WhereExpr> any;
    for (const WhereValue& value : expr.values) {
      const bool range = value.isNumber && value.text.empty();
      any.push_back(WhereTest(expr.field, range ? O::In : O::Equal, {value}));
    }
    std::shuffle(any.begin(), any.end(), m_random);
    return WhereAny(std::move(any));
  }
  std::vector<WhereExpr> children;
  for (const WhereExpr& child : expr.children) children.push_back(Rewritten(child));
  std::shuffle(children.begin(), children.end(), m_random);
  const bool all = expr.kind == Kind::And;
  if (Below(2)) return all ? WhereAll(std::move(children)) : WhereAny(std::move(children));
  for (WhereExpr& child : children) child = WhereNot(std::move(child));
  return WhereNot(all ? WhereAny(std::move(children)) : WhereAll(std::move(children)));
}

#include "tree/filter/text/filter_names.h"

#include <utility>

#include "records/process_name.h"
#include "where/text/where_values.h"

IdKey IdKey::Of(std::string_view name) {
  if (const auto number = ReadWhereNumber(name)) return {false, *number, std::to_string(*number)};
  return {true, 0, std::string(name)};
}

ProcessKey ProcessKey::Of(std::string_view name) {
  const ProcessName process = ProcessName::Of(name);
  return {IdKey::Of(process.process), std::string(process.account)};
}

WhereValue NameValue(std::string name) {
  WhereValue value;
  value.text = std::move(name);
  return value;
}

WhereValue IdValue(const IdKey& key) {
  WhereValue value = NameValue(key.text);
  value.isNumber = !key.isText;
  value.from = value.to = key.number;
  return value;
}

WhereExpr WhereTest(WhereField field, WhereOperator op, std::vector<WhereValue> values) {
  WhereExpr test;
  test.field = field;
  test.op = op;
  test.values = std::move(values);
  return test;
}

WhereExpr WhereOneOf(WhereField field, std::vector<WhereValue> values, bool holds) {
  if (values.size() == 1)
    return WhereTest(field, holds ? WhereOperator::Equal : WhereOperator::NotEqual,
                     std::move(values));
  WhereExpr in = WhereTest(field, WhereOperator::In, std::move(values));
  return holds ? in : WhereNot(std::move(in));
}

WhereExpr WhereNever() {
  WhereValue info;
  info.severity = WhereSeverity::Info;
  return WhereTest(WhereField::Severity, WhereOperator::Less, {info});
}

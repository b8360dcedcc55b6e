// Random trees that a text can say, with hostile names and values.
#pragma once

#include <random>
#include <string>

#include "where/text/where_expr.h"

class RandomWhereText {
 public:
  explicit RandomWhereText(unsigned seed) : m_random(seed) {}

  WhereExpr Tree(int depth) {
    const std::size_t kind = depth == 0 ? 3 : Below(4);
    if (kind == 2) return WhereNot(Tree(depth - 1));
    if (kind == 3) return Test();
    std::vector<WhereExpr> children;
    for (std::size_t i = 2 + Below(3); i > 0; --i) children.push_back(Tree(depth - 1));
    return kind == 0 ? WhereAll(std::move(children)) : WhereAny(std::move(children));
  }

  WhereExpr Test() {
    WhereExpr test;
    test.field = static_cast<WhereField>(Below(kWhereFields));
    const auto operators = OperatorsOf(test.field);
    test.op = operators[Below(operators.size())];
    if (test.op == WhereOperator::IsSet) return test;
    std::size_t count = test.op == WhereOperator::In ? 1 + Below(4) : 1;
    for (; count > 0; --count) test.values.push_back(Value(test.field, test.op));
    return test;
  }

  std::size_t Below(std::size_t bound) { return m_random() % bound; }
  std::uint64_t Any() { return m_random() >> Below(64); }

 private:
  WhereValue Value(WhereField field, WhereOperator op) {
    WhereValue value;
    if (op == WhereOperator::Matches) {
      value.text = Pattern();
      return value;
    }
    if (op == WhereOperator::Contains || op == WhereOperator::StartsWith) {
      value.text = Name();
      return value;
    }
    switch (KindOf(field)) {
      case WhereKind::Severity:
        value.severity = static_cast<WhereSeverity>(Below(3));
        break;
      case WhereKind::Number:
        Number(op, value);
        break;
      case WhereKind::Id:
        Id(op, value);
        break;
      case WhereKind::Moment:
        value.moment = Moment();
        break;
      case WhereKind::Duration:
        value.duration = static_cast<std::int64_t>(Any() >> 1) * (Below(2) ? 1 : -1);
        break;
      default:
        value.text = Name();
    }
    return value;
  }

  void Number(WhereOperator op, WhereValue& value) {
    value.from = value.to = Any();
    if (op == WhereOperator::In && Below(2)) value.to = value.from | Any();
    value.isNumber = true;
  }

  void Id(WhereOperator op, WhereValue& value) {
    const bool compares = op >= WhereOperator::Less && op <= WhereOperator::GreaterEqual;
    if (!compares && Below(3) == 0) {
      value.text = "x" + Name();
      return;
    }
    if (!compares && Below(8) == 0) {
      value.text = "10..20";  // a name, not a range
      return;
    }
    Number(op, value);
    if (value.from == value.to) value.text = std::to_string(value.from);
  }

  WhereMoment Moment() {
    constexpr std::int64_t kSpans[] = {
        1, 10, 100, 1000, 1000'000, 100'000'000, 1000'000'000, 60'000'000'000, 86'400'000'000'000};
    WhereMoment moment;
    moment.base = static_cast<WhereMoment::Base>(Below(3));
    if (moment.base == WhereMoment::Base::End) {
      moment.nanoseconds = static_cast<std::int64_t>(Any() >> 1) * (Below(2) ? 1 : -1);
      return moment;
    }
    moment.span = kSpans[Below(moment.base == WhereMoment::Base::Utc ? 8 : 9)];
    // 1678 to 2261.
    constexpr std::uint64_t kHalf = 9'200'000'000'000'000'000;
    const auto nanoseconds = static_cast<std::int64_t>(m_random() % (2 * kHalf) - kHalf);
    moment.nanoseconds = nanoseconds - nanoseconds % moment.span;
    return moment;
  }

  std::string Name() {
    constexpr const char* kNames[] = {"Sql",    "Cache",   "and",      "IN",           "two words",
                                      "",       "10..20",  "severity", "\"",           "\\",
                                      "\\\"\\", "a\nb\tc", "\xff\xfe", "\xe2\x80\xae", "Größe",
                                      "C++",    "{a, b}",  "--",       "4711",         "4711 alice",
                                      "end",    "0x1"};
    if (Below(4) > 0) return kNames[Below(std::size(kNames))];
    std::string bytes;
    for (std::size_t i = Below(8); i > 0; --i) bytes.push_back(static_cast<char>(m_random()));
    return bytes;
  }

  std::string Pattern() {
    constexpr const char* kPatterns[] = {
        "order [0-9]+|cart", "\\d+",  "a\\\"b",    "\\\\", "", "(?i)x",
        "[\\\"\\\\]",        "Größe", "\\x00\\xff"};
    return kPatterns[Below(std::size(kPatterns))];
  }

  std::mt19937_64 m_random;
};

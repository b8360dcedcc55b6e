// Random trees of filter texts, and random traces that some of them hold for.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "records/name_map.h"
#include "where/plain_where.h"

class RandomWhere {
 public:
  explicit RandomWhere(unsigned seed) : m_random(seed) {}

  std::size_t Below(std::size_t limit) { return m_random() % limit; }
  template <class T>
  const T& OneOf(const std::vector<T>& all) {
    return all[Below(all.size())];
  }

  WhereExpr Tree(int depth) {
    const std::size_t kind = depth == 0 ? 0 : Below(5);
    if (kind <= 1) return Test();
    if (kind == 2) return WhereNot(Tree(depth - 1));
    std::vector<WhereExpr> children;
    for (std::size_t i = 2 + Below(3); i > 0; --i) children.push_back(Tree(depth - 1));
    return kind == 3 ? WhereAll(std::move(children)) : WhereAny(std::move(children));
  }
  WhereExpr Test() {
    WhereExpr test;
    test.field = static_cast<WhereField>(Below(kWhereFields));
    test.op = OneOf(OperatorsOf(test.field));
    if (test.op == WhereOperator::IsSet) return test;
    const std::size_t count = test.op == WhereOperator::In ? 1 + Below(6) : 1;
    while (test.values.size() < count) test.values.push_back(Value(test));
    return test;
  }

  // Ids 0 to 9 in each field; `names` may lack some.
  PlainTrace Trace(const NameMap& names) {
    PlainTrace trace;
    TraceFields& fields = trace.fields;
    fields.text = OneOf(Texts());
    fields.stack = Below(2) ? OneOf(Texts()) : "";
    fields.count = Below(8) ? static_cast<std::uint32_t>(Below(20)) : kNoSequenceNumber;
    for (NameId* id : {&fields.machine, &fields.app, &fields.component, &fields.category,
                       &fields.pid, &fields.tid, &fields.file})
      *id = static_cast<NameId>(Below(10));
    if (Below(2)) fields.machine = fields.pid = 1;  // for deltas
    fields.date = PackDate(2026, 11, static_cast<unsigned>(20 + Below(3)));
    fields.time = PackTime(Below(2) ? 0 : 23, Below(2) ? 0 : 59, static_cast<unsigned>(Below(60)),
                           static_cast<unsigned>(Below(3) * 499));
    fields.tic = Below(6) == 0 ? 0 : (Below(20) == 0 ? m_random() : 1 + Below(40) * 500'000'000);
    fields.attributes = static_cast<std::uint16_t>(Below(10) ? Below(32) : m_random());
    fields.line = static_cast<std::uint32_t>(Below(10) ? Below(20) : m_random());
    Name(trace, names);
    return trace;
  }
  void Mark(PlainTrace& trace) {
    trace.mark = Below(2) ? static_cast<unsigned>(Below(10)) : 0;
    if (Below(3) == 0) trace.note = OneOf(Texts()).c_str();
  }
  static void Name(PlainTrace& trace, const NameMap& names) {
    const TraceFields& fields = trace.fields;
    trace.machine = NameOf(names, fields.machine);
    trace.application = NameOf(names, fields.app);
    trace.component = NameOf(names, fields.component);
    trace.category = NameOf(names, fields.category);
    trace.pid = NameOf(names, fields.pid);
    trace.tid = NameOf(names, fields.tid);
    trace.file = NameOf(names, fields.file);
  }
  std::string AnyName() { return OneOf(Names()); }

  static const std::vector<std::string>& Names() {
    static const std::vector<std::string> names = {
        "",         "Sql",   "sql",     "Cache",    "12", "0x1f",      "4711 alice",
        "12 bob",   "web 1", "a\"b\\c", "\xff\xfe", "7",  "src/a.cpp", "\xc3\xa9t\xc3\xa9",
        "12 bob x", "4711",  "a,b}"};
    return names;
  }
  static const std::vector<std::string>& Texts() {
    static const std::vector<std::string> texts = {"",
                                                   "retry",
                                                   "order 12 failed",
                                                   "order cart",
                                                   "a cart of 7",
                                                   "\xff\x80 order 9",
                                                   "\xc3\xa9\xc3\xa8 error",
                                                   std::string("up\0order 1", 10),
                                                   std::string("\0order", 6),
                                                   "Sql",
                                                   std::string(300, 'o') + "rder 5",
                                                   "12"};
    return texts;
  }

 private:
  WhereValue Value(const WhereExpr& test) {
    WhereValue value;
    switch (KindOf(test.field)) {
      case WhereKind::Severity:
        value.severity = static_cast<WhereSeverity>(Below(3));
        break;
      case WhereKind::Number:
        SetNumber(value, test.op == WhereOperator::In);
        break;
      case WhereKind::Id:
        SetId(value, test);
        break;
      case WhereKind::Moment:
        value.moment = Moment();
        break;
      case WhereKind::Duration:
        value.duration = (static_cast<std::int64_t>(Below(41)) - 20) * 500'000;
        if (Below(20) == 0) value.duration *= 900'000'000'000;  // 285 years
        break;
      default:
        value.text = TextFor(test.op);
    }
    return value;
  }
  void SetNumber(WhereValue& value, bool range) {
    value.isNumber = true;
    value.from = Below(10) ? Below(20) : (Below(2) ? ~std::uint64_t{0} : 0xFFFFFFFF);
    if (Below(4) == 0) value.from = Below(40) * 500'000'000 + 1;
    value.to = range && Below(3) == 0 && value.from < 1000 ? value.from + Below(5) : value.from;
  }
  void SetId(WhereValue& value, const WhereExpr& test) {
    const bool ofText = test.op == WhereOperator::Contains ||
                        test.op == WhereOperator::StartsWith || test.op == WhereOperator::Matches;
    const bool same = test.op == WhereOperator::Equal || test.op == WhereOperator::NotEqual ||
                      test.op == WhereOperator::In;
    if (ofText || (same && Below(2))) {
      value.text = TextFor(test.op);
      if (!ofText &&
          (value.text == "12" || value.text == "7" || value.text == "4711" || value.text == "0x1f"))
        value.text += "x";
    } else {
      SetNumber(value, test.op == WhereOperator::In);
    }
  }
  WhereMoment Moment() {
    constexpr std::int64_t kSecond = 1'000'000'000, kDay = 86'400 * kSecond;
    WhereMoment moment;
    moment.base = static_cast<WhereMoment::Base>(Below(3));
    const auto part = static_cast<std::int64_t>(Below(60)) * kSecond;
    if (moment.base == WhereMoment::Base::End) {
      moment.nanoseconds = -static_cast<std::int64_t>(Below(3)) * kDay - part;
      return moment;
    }
    constexpr std::int64_t kDays = 20'777;  // 2026-11-20
    moment.nanoseconds = (kDays + static_cast<std::int64_t>(Below(3))) * kDay;
    moment.span = moment.base == WhereMoment::Base::Shown ? kDay : 60 * kSecond;
    if (Below(2)) {
      moment.nanoseconds += (Below(2) ? 0 : 86'340 * kSecond) + part;
      moment.span = kSecond;
    }
    if (moment.span == kSecond && Below(2)) {
      moment.nanoseconds += static_cast<std::int64_t>(Below(3)) * 499'000'000;
      moment.span = kSecond / 1000;
    }
    return moment;
  }
  std::string TextFor(WhereOperator op) {
    static const std::vector<std::string> expressions = {"order [0-9]+|cart",
                                                         "^a|x",
                                                         "[0-9]$",
                                                         "er+or",
                                                         "^$",
                                                         "s(q|Q)l",
                                                         "o{3}",
                                                         "r[^a-z]+"
                                                         "[0-9]"};
    static const std::vector<std::string> parts = {
        "", "order", "o", "12", "\xc3\xa9", "\xff", "S", "bob", std::string("\0o", 2)};
    if (op == WhereOperator::Matches) return OneOf(expressions);
    if (op == WhereOperator::Contains || op == WhereOperator::StartsWith) return OneOf(parts);
    return Below(4) ? OneOf(Names()) : OneOf(Texts());
  }

  std::mt19937 m_random;
};

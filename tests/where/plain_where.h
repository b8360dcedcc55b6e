// What a filter text means, said slowly: over a trace whose fields are decoded, a test at a time.
//
// It shares no code with the program but the tree. Expressions of `matches` must mean the same to
// std::regex, and bytes and characters must not matter to them.
#pragma once

#include <algorithm>
#include <charconv>
#include <chrono>
#include <optional>
#include <regex>
#include <string>

#include "records/trace_event.h"
#include "support/trc_image.h"
#include "where/text/where_expr.h"

struct PlainTrace {
  TraceFields fields;
  std::string machine, application, component, category, pid, tid, file;
  unsigned mark = 0;
  std::string note;
};

class PlainWhere {
 public:
  // `zoneSeconds`: what the shown clock is ahead of UTC. `end`: nanoseconds since 1970.
  PlainWhere(std::int64_t zoneSeconds, std::optional<std::int64_t> end)
      : m_zone(zoneSeconds), m_end(end) {}

  bool Holds(const WhereExpr& expr, const PlainTrace& trace, const PlainTrace* previous) const {
    const auto holds = [&](const WhereExpr& child) { return Holds(child, trace, previous); };
    switch (expr.kind) {
      case WhereExpr::Kind::And:
        return std::all_of(expr.children.begin(), expr.children.end(), holds);
      case WhereExpr::Kind::Or:
        return std::any_of(expr.children.begin(), expr.children.end(), holds);
      case WhereExpr::Kind::Not:
        return !holds(expr.children.at(0));
      case WhereExpr::Kind::Test:
        break;
    }
    WhereExpr same = expr;
    same.op = WhereOperator::Equal;
    return expr.op == WhereOperator::NotEqual ? !Test(same, trace, previous)
                                              : Test(expr, trace, previous);
  }

 private:
  using F = WhereField;
  using O = WhereOperator;
  using Wide = long double;  // has every 64-bit number

  template <class Number>
  static bool Compares(O op, Number number, Number value) {
    if (op == O::Less) return number < value;
    if (op == O::LessEqual) return number <= value;
    if (op == O::Greater) return number > value;
    if (op == O::GreaterEqual) return number >= value;
    return number == value;
  }
  // Up to the NUL that ends it.
  static std::string Cut(const std::string& text) { return text.c_str(); }

  static bool TextTest(const WhereExpr& expr, const std::string& text) {
    const std::string& first = expr.values.at(0).text;
    if (expr.op == O::Contains) return text.find(first) != std::string::npos;
    if (expr.op == O::StartsWith) return text.substr(0, first.size()) == first;
    if (expr.op == O::Matches) return std::regex_search(text, std::regex(first));
    return std::any_of(expr.values.begin(), expr.values.end(),
                       [&](const WhereValue& value) { return value.text == text; });
  }
  static bool NumberTest(const WhereExpr& expr, std::uint64_t number) {
    if (expr.op == O::Equal || expr.op == O::In)
      return std::any_of(expr.values.begin(), expr.values.end(), [&](const WhereValue& value) {
        return number >= value.from && number <= value.to;
      });
    return Compares(expr.op, number, expr.values.at(0).from);
  }
  static std::optional<std::uint64_t> NumberIn(const std::string& text) {
    std::uint64_t number = 0;
    const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const char* const begin = text.data() + (hex ? 2 : 0);
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(begin, end, number, hex ? 16 : 10);
    if (begin == end || read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return number;
  }
  static bool IdTest(const WhereExpr& expr, const std::string& name) {
    const auto number = NumberIn(name);
    if (expr.op == O::Contains || expr.op == O::StartsWith || expr.op == O::Matches)
      return TextTest(expr, name);
    if (expr.op != O::Equal && expr.op != O::In) return number && NumberTest(expr, *number);
    for (const WhereValue& value : expr.values) {
      if (value.isNumber && number && *number >= value.from && *number <= value.to) return true;
      if (!value.isNumber && value.text == name) return true;
    }
    return false;
  }
  static bool SeverityTest(const WhereExpr& expr, int attributes) {
    const int severity = attributes & 1 ? 0 : attributes & 2 ? 1 : attributes & 4 ? 2 : -1;
    if (severity < 0) return false;
    return std::any_of(expr.values.begin(), expr.values.end(), [&](const WhereValue& value) {
      return Compares(expr.op, severity, static_cast<int>(value.severity));
    });
  }
  // A process and its account.
  static std::pair<std::string, std::string> Divided(const std::string& name) {
    static const std::regex form("([0-9]+) ([^ ]+)");
    std::smatch parts;
    if (!std::regex_match(name, parts, form)) return {name, ""};
    return {parts[1], parts[2]};
  }

  // Milliseconds since 1970; only for fields that are a moment.
  static std::int64_t MsOf(const TraceFields& fields) {
    using namespace std::chrono;
    const UnpackedDate date = UnpackDate(fields.date);
    const UnpackedTime time = UnpackTime(fields.time);
    const sys_days day =
        year(static_cast<int>(date.year)) / month(date.month) / std::chrono::day(date.day);
    return duration_cast<milliseconds>(day.time_since_epoch()).count() + time.hour * 3'600'000LL +
           time.minute * 60'000LL + time.second * 1000LL + time.ms;
  }
  bool MomentTest(const WhereExpr& expr, const TraceFields& fields) const {
    const WhereMoment& said = expr.values.at(0).moment;
    Wide moment = said.nanoseconds;
    if (said.base == WhereMoment::Base::Shown) moment -= Wide(m_zone) * 1e9L;
    if (said.base == WhereMoment::Base::End) {
      if (!m_end) return false;
      moment += *m_end;
    }
    const Wide at = Wide(MsOf(fields)) * 1e6L;
    if (expr.op == O::Equal) return at >= moment && at < moment + said.span;
    return Compares(expr.op, at, moment);
  }
  static bool DeltaTest(const WhereExpr& expr, const PlainTrace& trace,
                        const PlainTrace* previous) {
    if (!previous || trace.fields.tic == 0 || previous->fields.tic == 0) return false;
    if (trace.fields.pid != previous->fields.pid) return false;
    if (trace.fields.machine != previous->fields.machine) return false;
    const auto picoseconds = static_cast<std::int64_t>(trace.fields.tic - previous->fields.tic);
    return Compares(expr.op, Wide(picoseconds), Wide(expr.values.at(0).duration) * 1000);
  }

  bool Test(const WhereExpr& expr, const PlainTrace& trace, const PlainTrace* previous) const {
    const TraceFields& fields = trace.fields;
    switch (expr.field) {
      case F::Severity:
        return SeverityTest(expr, fields.attributes);
      case F::Count:
        return fields.count.value_or(~0u) != ~0u && NumberTest(expr, *fields.count);
      case F::Tic:
        return fields.tic != 0 && NumberTest(expr, fields.tic);
      case F::Delta:
        return DeltaTest(expr, trace, previous);
      case F::Time:
        return MomentTest(expr, fields);
      case F::Machine:
        return TextTest(expr, trace.machine);
      case F::Application:
        return TextTest(expr, trace.application);
      case F::Component:
        return TextTest(expr, trace.component);
      case F::Category:
        return TextTest(expr, trace.category);
      case F::Attributes:
        return NumberTest(expr, fields.attributes);
      case F::Pid:
        return IdTest(expr, Divided(trace.pid).first);
      case F::Tid:
        return IdTest(expr, trace.tid);
      case F::Account:
        return TextTest(expr, Divided(trace.pid).second);
      case F::Text:
        return TextTest(expr, Cut(fields.text));
      case F::File:
        return TextTest(expr, trace.file);
      case F::Line:
        return NumberTest(expr, fields.line);
      case F::Stack:
        return expr.op == O::IsSet ? !Cut(fields.stack).empty() : TextTest(expr, Cut(fields.stack));
      case F::Developer:
        return (fields.attributes & 8) != 0;
      case F::Verbose:
        return (fields.attributes & 16) != 0;
      case F::Marked:
        return trace.mark != 0 && (expr.op == O::IsSet || NumberTest(expr, trace.mark));
      case F::Note:
        return expr.op == O::IsSet ? !trace.note.empty() : TextTest(expr, trace.note);
    }
    return false;
  }

  const std::int64_t m_zone;
  const std::optional<std::int64_t> m_end;
};

#include "where/complete/where_complete.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>

#include "base/text.h"
#include "where/complete/where_place.h"
#include "where/text/where_values.h"
#include "where/text/where_writer.h"

namespace {

using What = WhereNext::What;
using Kind = WhereCompletion::Kind;

// By the order of WhereOperator.
constexpr const char* kOperatorNotes[kWhereOperators] = {"is",
                                                         "is not",
                                                         "is less than",
                                                         "is at most",
                                                         "is more than",
                                                         "is at least",
                                                         "is one of",
                                                         "has this part",
                                                         "begins with",
                                                         "has a match of the pattern",
                                                         ""};

class Completions {
 public:
  Completions(const WherePlace& place, const WhereNames& names) : m_place(place), m_names(names) {}

  std::vector<WhereCompletion> Take();

 private:
  void Add(std::string_view insert, Kind kind, std::string_view note = {});
  void AddTests();
  void AddOperators(bool behindNot);
  void AddValues();
  void AddNames();
  WhereCompletion Made(std::string insert, Kind kind, std::string_view note) const {
    return {std::move(insert), m_place.from, m_place.to, kind, std::string(note)};
  }

  const WherePlace& m_place;
  const WhereNames& m_names;
  std::vector<WhereCompletion> m_all;
};

// By the order in which they are offered.
struct Found {
  bool inMiddle;
  std::string folded, name;
  bool operator<(const Found& other) const {
    return std::tie(inMiddle, folded, name) < std::tie(other.inMiddle, other.folded, other.name);
  }
};

bool BeginsWith(std::string_view word, std::string_view typed) {
  return CompareIgnoringCase(word.substr(0, typed.size()), typed) == 0;
}

// Words of the language: none has quotes.
void Completions::Add(std::string_view insert, Kind kind, std::string_view note) {
  if (!m_place.isQuoted && BeginsWith(insert, m_place.typed))
    m_all.push_back(Made(std::string(insert), kind, note));
}

void Completions::AddTests() {
  for (std::size_t i = 0; i < kWhereFields; ++i) {
    const WhereFieldInfo& info = InfoOf(static_cast<WhereField>(i));
    Add(info.word, Kind::Field, info.note);
  }
  Add("not", Kind::Word, "all but these");
  Add("(", Kind::Sign);
}

void Completions::AddOperators(bool behindNot) {
  for (const WhereOperator op : OperatorsOf(m_place.next.field))
    if (op != WhereOperator::IsSet && (!behindNot || op >= WhereOperator::In))
      Add(WordOf(op), Kind::Operator, kOperatorNotes[static_cast<std::size_t>(op)]);
}

void Completions::AddValues() {
  if (m_place.next.op == WhereOperator::Matches) return;
  const auto addAll = [&](std::initializer_list<const char*> words) {
    for (const char* word : words) Add(word, Kind::Value);
  };
  switch (KindOf(m_place.next.field)) {
    case WhereKind::Severity:
      return addAll({"info", "warn", "error"});
    case WhereKind::Moment:
      return addAll({"end", "end - 1m", "end - 10m", "end - 1h"});
    case WhereKind::Duration:
      return addAll({"1ms", "10ms", "100ms", "1s"});
    case WhereKind::Name:
    case WhereKind::Id:
      return AddNames();
    case WhereKind::Number:
    case WhereKind::Text:
    case WhereKind::Flag:
      return;
  }
}

void Completions::AddNames() {
  // Only the first ones: a document may have 65,536 names, and somebody is typing.
  std::set<Found> found;
  const std::string typed = ToLowerAscii(m_place.typed);
  const WhereOperator op = m_place.next.op;
  const bool isOrder = op >= WhereOperator::Less && op <= WhereOperator::GreaterEqual;
  for (std::string& name : m_names(m_place.next.field)) {
    std::string folded = ToLowerAscii(name);
    const std::size_t at = folded.find(typed);
    const bool isFit = !name.empty() && (!isOrder || ReadWhereNumber(name));
    if (at == folded.npos || !isFit) continue;
    found.insert({at > 0, std::move(folded), std::move(name)});
    if (found.size() > kWhereCompletionsMax) found.erase(std::prev(found.end()));
  }
  for (const Found& one : found) {
    WhereValue value;
    value.isNumber = ReadWhereNumber(one.name).has_value();
    value.text = one.name;
    m_all.push_back(Made(WhereValueText(m_place.next.field, op, value), Kind::Name, {}));
  }
}

std::vector<WhereCompletion> Completions::Take() {
  const WhereNext& next = m_place.next;
  switch (next.what) {
    case What::Nothing:
      break;
    case What::Test:
      AddTests();
      break;
    case What::AfterTest:
      Add("and", Kind::Word);
      Add("or", Kind::Word);
      if (next.closes) Add(")", Kind::Sign);
      if (next.isCompared) AddOperators(false);
      break;
    case What::Operator:
      AddOperators(false);
      break;
    case What::AfterNot:
      AddOperators(true);
      break;
    case What::List:
      Add("{", Kind::Sign);
      break;
    case What::Value:
      AddValues();
      break;
    case What::AfterValue:
      Add(",", Kind::Sign);
      Add("}", Kind::Sign);
      break;
  }
  return std::move(m_all);
}

}  // namespace

std::vector<WhereCompletion> WhereCompletions(std::string_view text, std::size_t caret,
                                              const WhereNames& names) {
  const WherePlace place = WherePlaceAt(text, std::min(caret, text.size()));
  std::vector<WhereCompletion> all = Completions(place, names).Take();
  const std::string_view there = text.substr(place.from, place.to - place.from);
  if (all.size() == 1 && all.front().insert == there) all.clear();
  return all;
}

// Of a small document all trees are known. A text opens as a tree exactly where one of them shows
// the same traces.
#include <gtest/gtest.h>

#include <unordered_set>

#include "tree/filter/text/filter_of_text.h"
#include "tree/filter/text/filter_world_texts.h"
#include "where/text/where_writer.h"

namespace {

// Components A and B; machine M with process 1, which has two threads, and process 2, which has
// one. What else there is comes later.
class SmallDocument {
 public:
  explicit SmallDocument(bool mayGrow) : m_mayGrow(mayGrow) {
    constexpr const char* kNames[] = {"A", "B", "M", "1", "2", "t", "u", "v",
                                      "C", "D", "N", "O", "3", "4", "w", "x"};
    NameId id = 0;
    for (const char* const name : kNames) m_names[++id].name = name;
    m_fresh.components = {{1, 1}, {2, 1}};
    m_fresh.threads[3].processes[4].threadMarks = {{6, 1}, {7, 1}};
    m_fresh.threads[3].processes[5].threadMarks = {{8, 1}};
    MakeTraces();
  }

  std::string ShownBy(const CTraceFilter& filter) const {
    std::string shown;
    CTraceFilter changing = filter;
    for (const EventPtr& event : m_events) shown += changing.Matches(*event) ? '1' : '0';
    return shown;
  }
  std::string ShownBy(const WhereExpr& expr) const {
    std::string shown;
    for (const PlainTrace& trace : m_traces) shown += FilterWorld::Shows(expr, trace) ? '1' : '0';
    return shown;
  }
  // Of each tree that the dialog can write.
  std::unordered_set<std::string> ShownByTrees() const {
    std::unordered_set<std::string> all;
    for (unsigned bits = 0; bits < 1U << 9; ++bits) {
      CTraceFilter filter = m_fresh;
      unsigned left = bits;
      const auto next = [&] { return static_cast<int>(std::exchange(left, left >> 1) & 1U); };
      for (std::size_t i = 0; i < 3; ++i) filter.severities[i] = next();
      filter.attributes[1] = next();
      for (auto& [id, mark] : filter.components) mark = next();
      for (auto& [id, process] : filter.threads[3].processes) {
        process.allThreadsOfProcess = 0;
        for (auto& [tid, mark] : process.threadMarks) mark = next();
      }
      filter.allTraces = filter.allSeverities = filter.allComponents = filter.allAttributes = 0;
      filter.allThreads = filter.threads[3].allProcesses = 0;
      FilterWorld(1).PressOk(filter);
      all.insert(ShownBy(filter));
    }
    return all;
  }

  WhereExpr Text(FilterWorld& random, std::size_t depth) const {
    const std::size_t kind = depth == 0 ? 0 : random.Below(6);
    if (kind <= 1) return Test(random);
    if (kind == 2) return WhereNot(Text(random, depth - 1));
    std::vector<WhereExpr> children;
    for (std::size_t i = 2 + random.Below(2); i > 0; --i)
      children.push_back(Text(random, depth - 1));
    return kind == 3 ? WhereAny(std::move(children)) : WhereAll(std::move(children));
  }

  FilterNames Names() const { return {m_names, m_mayGrow}; }
  const CTraceFilter& Fresh() const { return m_fresh; }

 private:
  using F = WhereField;

  void MakeTraces() {
    const std::vector<NameId> components =
        m_mayGrow ? std::vector<NameId>{1, 2, 9, 10} : std::vector<NameId>{1, 2};
    std::vector<TraceFields> threads;
    const auto add = [&](NameId machine, NameId pid, NameId tid) {
      threads.push_back({.machine = machine, .pid = pid, .tid = tid});
    };
    if (m_mayGrow) {
      for (const NameId machine : {3, 11, 12})
        for (const NameId pid : {4, 5, 13, 14})
          for (const NameId tid : {6, 7, 8, 15, 16}) add(machine, pid, tid);
    } else {
      add(3, 4, 6);
      add(3, 4, 7);
      add(3, 5, 8);
    }
    for (TraceFields fields : threads)
      for (const NameId component : components)
        for (const int attributes : {0, 1, 2, 4, 8, 9, 10, 12}) {
          fields.component = component;
          fields.attributes = static_cast<std::uint16_t>(attributes);
          PlainTrace& trace = m_traces.emplace_back();
          trace.fields = fields;
          trace.component = NameOf(m_names, fields.component);
          trace.machine = NameOf(m_names, fields.machine);
          trace.pid = NameOf(m_names, fields.pid);
          trace.tid = NameOf(m_names, fields.tid);
          m_events.push_back(MakeEvent(fields));
        }
  }
  WhereExpr Test(FilterWorld& random) const {
    const auto one = [&](std::initializer_list<const char*> words) {
      return std::string(std::data(words)[random.Below(words.size())]);
    };
    const bool equal = random.Below(2) != 0;
    WhereValue severity;
    severity.severity = static_cast<WhereSeverity>(random.Below(3));
    switch (random.Below(6)) {
      case 0:
        return WhereTest(F::Severity, equal ? WhereOperator::Equal : WhereOperator::GreaterEqual,
                         {severity});
      case 1:
        return WhereTest(F::Developer, WhereOperator::IsSet);
      case 2:
        return WhereOneOf(F::Component, {NameValue(one({"A", "B", "C"}))}, equal);
      case 3:
        return WhereOneOf(F::Machine, {NameValue(one({"M", "M", "N"}))}, equal);
      case 4:
        return WhereOneOf(F::Pid, {IdValue(IdKey::Of(one({"1", "2", "3"})))}, equal);
      default:
        return WhereOneOf(F::Tid, {IdValue(IdKey::Of(one({"t", "u", "v", "w"})))}, equal);
    }
  }

  const bool m_mayGrow;
  NameMap m_names;
  CTraceFilter m_fresh;
  std::vector<PlainTrace> m_traces;
  std::vector<EventPtr> m_events;
};

class FilterOfTextAll : public testing::TestWithParam<bool> {};

TEST_P(FilterOfTextAll, ATextOpensAsATreeExactlyIfOneOfThemShowsTheSame) {
  const SmallDocument document(GetParam());
  const std::unordered_set<std::string> trees = document.ShownByTrees();
  FilterWorld random(20261123);
  int opened = 0;
  constexpr int kTexts = 6000;
  for (int i = 0; i < kTexts; ++i) {
    const WhereExpr expr = document.Text(random, 1 + random.Below(3));
    const std::string shown = document.ShownBy(expr);
    CTraceFilter filter = document.Fresh();
    WhereError error;
    const bool opens = FilterOfText(expr, document.Names(), filter, error);
    ASSERT_EQ(opens, trees.contains(shown)) << WhereText(expr) << "\n" << error.reason;
    if (!opens) continue;
    ++opened;
    ASSERT_EQ(document.ShownBy(filter), shown) << WhereText(expr);
  }
  EXPECT_GT(opened, kTexts / 20);
  EXPECT_LT(opened, kTexts * 9 / 10);
}

INSTANTIATE_TEST_SUITE_P(AllNamesAreThereOrMoreMayCome, FilterOfTextAll, testing::Bool());

}  // namespace

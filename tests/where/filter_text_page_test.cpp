// The examples of docs/filter-text.md hold for the rows that the page names.
#include "support/filter_text_page.h"

#include <gtest/gtest.h>

#include <map>

#include "support/make_event.h"
#include "where/text/where_values.h"
#include "where/where_matcher.h"

namespace {

// Milliseconds since 09:40, when the tic count of the page's machines began.
std::uint64_t SinceBegin(const std::string& time) {
  const auto begin = ReadWhereMoment("2026-11-21 09:40"), moment = ReadWhereMoment(time);
  EXPECT_TRUE(moment) << time;
  return static_cast<std::uint64_t>((moment->nanoseconds - begin->nanoseconds) / 1'000'000);
}

std::uint16_t AttributesOf(const std::string& words) {
  constexpr std::pair<const char*, std::uint16_t> kWords[] = {{"info", kAttributeInfo},
                                                              {"warn", kAttributeWarn},
                                                              {"error", kAttributeError},
                                                              {"developer", kAttributeDeveloper},
                                                              {"verbose", kAttributeVerbose}};
  std::uint16_t attributes = 0;
  for (const auto& [word, bit] : kWords)
    if (words.find(word) != words.npos) attributes |= bit;
  return attributes;
}

// The traces of the page's table.
class PageTraces {
 public:
  explicit PageTraces(const std::vector<FilterTextPage::Row>& rows) {
    for (const FilterTextPage::Row& row : rows) Add(row);
  }

  // The rows that pass, as "2 3 7".
  std::string Passing(const WhereProgramPtr& program) const {
    WhereMatcher matcher(program, m_names, {.utc = true, .end = m_end});
    matcher.SetMarks(std::make_shared<Marks>(m_marks));
    WherePrevious previous;
    std::string rows;
    for (std::size_t i = 0; i < m_events.size(); ++i) {
      const std::uint8_t* const record = m_events[i]->Record();
      if (matcher.Matches(record, previous))
        rows.append(rows.empty() ? "" : " ").append(std::to_string(i + 1));
      previous = WherePrevious(RawTrace(record));
    }
    return rows;
  }

 private:
  struct Said {
    std::uint8_t colour;
    std::string note;
  };
  struct Marks final : WhereMarks {
    explicit Marks(const std::map<const std::uint8_t*, Said>& marks) : m_marks(marks) {}
    WhereMark Of(const std::uint8_t* record) const override {
      const Said& said = m_marks.at(record);
      return {said.colour, said.note};
    }
    const std::map<const std::uint8_t*, Said>& m_marks;
  };

  void Add(const FilterTextPage::Row& row) {
    const std::uint64_t ms = SinceBegin(row.at(1));
    const auto inDay = static_cast<unsigned>(ms) + (9 * 60 + 40) * 60'000;
    const std::string& source = row.at(9);
    const std::size_t colon = source.find(':');
    TraceFields trace{.text = row.at(10), .stack = row.at(11)};
    trace.count = static_cast<std::uint32_t>(std::stoul(row.at(0)));
    trace.time = PackTime(inDay / 3'600'000, inDay / 60'000 % 60, inDay / 1000 % 60, inDay % 1000);
    trace.tic = ms * 1'000'000'000;  // picoseconds
    trace.machine = Named(row.at(2));
    trace.app = Named(row.at(3));
    trace.pid = Named(row.at(4));
    trace.tid = Named(row.at(5));
    trace.attributes = AttributesOf(row.at(6));
    trace.component = Named(row.at(7));
    trace.category = Named(row.at(8));
    trace.file = Named(source.substr(0, colon));
    trace.line = static_cast<std::uint32_t>(std::stoul(source.substr(colon + 1)));
    m_events.push_back(MakeEvent(trace));
    const auto colour = row.at(12).empty() ? 0 : std::stoi(row.at(12));
    m_marks[m_events.back()->Record()] = {static_cast<std::uint8_t>(colour), row.at(13)};
    m_end = ReadWhereMoment(row.at(1))->nanoseconds;
  }

  NameId Named(const std::string& name) {
    const auto [entry, isNew] = m_ids.try_emplace(name, static_cast<NameId>(m_ids.size() + 1));
    if (isNew) m_names[entry->second].name = name;
    return entry->second;
  }

  std::map<std::string, NameId> m_ids;
  NameMap m_names;
  std::vector<EventPtr> m_events;
  std::map<const std::uint8_t*, Said> m_marks;
  std::int64_t m_end = 0;
};

TEST(FilterTextPage, EveryExampleHoldsForTheRowsThatThePageNames) {
  const FilterTextPage page = FilterTextPage::Read();
  ASSERT_EQ(page.traces.size(), 9U);
  ASSERT_GE(page.examples.size(), 45U);
  const PageTraces traces(page.traces);
  for (const FilterTextPage::Row& example : page.examples) {
    WhereError error;
    const WhereProgramPtr program = WhereProgram::Compile(example[0], error);
    ASSERT_TRUE(program) << example[0] << ": " << error.reason;
    std::string expected;
    for (const int row : FilterTextPage::Numbers(example[1]))
      expected.append(expected.empty() ? "" : " ").append(std::to_string(row));
    EXPECT_EQ(traces.Passing(program), expected) << example[0];
  }
}

}  // namespace

#include "listview/copy/copied_filter.h"

#include <algorithm>

#include "where/text/where_parser.h"
#include "where/text/where_writer.h"
#include "where/where_clock.h"

namespace {

constexpr std::int64_t kMillisecondNs = 1'000'000;
// Each has two tests.
constexpr std::size_t kOthersMax = kWhereTestsMax / 2 - 1;

WhereExpr Test(WhereField field, WhereOperator op, std::vector<WhereValue> values) {
  WhereExpr test;
  test.field = field;
  test.op = op;
  test.values = std::move(values);
  return test;
}

WhereExpr NumbersTest(std::vector<std::uint32_t>& numbers) {
  std::ranges::sort(numbers);
  std::vector<WhereValue> ranges;
  for (const std::uint32_t number : numbers) {
    if (!ranges.empty() && number <= ranges.back().to + 1) {
      ranges.back().to = number;
      continue;
    }
    WhereValue value;
    value.from = value.to = number;
    value.isNumber = true;
    ranges.push_back(value);
  }
  return Test(WhereField::Count, WhereOperator::In, std::move(ranges));
}

WhereExpr OtherTest(std::uint64_t stamp, const std::string& text) {
  WhereValue said;
  said.text = text;
  std::vector<WhereExpr> both;
  both.push_back(Test(WhereField::Text, WhereOperator::Equal, {said}));
  if (const std::optional<std::int64_t> moment = MomentOfStamp(stamp)) {
    WhereValue when;
    when.moment = {WhereMoment::Base::Utc, *moment, kMillisecondNs};
    both.insert(both.begin(), Test(WhereField::Time, WhereOperator::Equal, {when}));
  }
  return WhereAll(std::move(both));
}

}  // namespace

void CopiedFilter::Add(const TraceEvent_i& trace) {
  if (m_tooLong) return;
  if (trace.GetSequenceNumber() != kNoSequenceNumber) {
    m_numbers.push_back(trace.GetSequenceNumber());
    return;
  }
  m_others.emplace(std::uint64_t{trace.GetDate()} << 32 | trace.GetTime(), trace.GetText());
  m_tooLong = m_others.size() > kOthersMax;
}

void CopiedFilter::Finish(std::string& out) {
  std::vector<WhereExpr> any;
  if (!m_numbers.empty()) any.push_back(NumbersTest(m_numbers));
  for (const auto& [stamp, text] : m_others) any.push_back(OtherTest(stamp, text));
  if (any.empty() || m_tooLong) return;
  const std::string text = WhereText(WhereAny(std::move(any)));
  m_tooLong = text.size() > kWhereTextMax;
  if (!m_tooLong) out += text;
}

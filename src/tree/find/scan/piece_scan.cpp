#include "tree/find/scan/piece_scan.h"

#include <algorithm>
#include <utility>

namespace {

// Of the matcher, in one text: a small part of a millisecond.
constexpr std::int64_t kSteps = 20000;

}  // namespace

std::vector<ScanHit> PieceScan::Hits(std::size_t from, std::size_t end) {
  m_hits.clear();
  if (from < end && m_plan.KnowsBytes())
    ScanBytes(from, end);
  else
    ScanTexts(from, end);
  return std::move(m_hits);
}

void PieceScan::ScanTexts(std::size_t from, std::size_t end) {
  for (; from < end; ++from) Test(from);
}

void PieceScan::Test(std::size_t place) {
  const RegexAnswer answer = m_matcher.Begin(m_plan, RawTrace(RecordAt(place)).Text(), kSteps);
  if (answer != RegexAnswer::No) m_hits.emplace_back(place, answer == RegexAnswer::Yes);
}

// Bytes that are found may also be in a name, in a stack or in numbers; those of a text lie in the
// text of one record.
void PieceScan::ScanBytes(std::size_t from, std::size_t end) {
  const auto textOf = [this](std::size_t place) { return RecordAt(place) + TraceAt::kText; };
  const std::uint8_t* const begin = RecordAt(from);
  const std::uint8_t* const stop = textOf(end - 1) + RawTrace(RecordAt(end - 1)).TextLength();
  const std::string_view bytes(reinterpret_cast<const char*>(begin),
                               static_cast<std::size_t>(stop - begin));
  for (std::size_t at = TraceAt::kText; at < bytes.size();) {
    at = m_plan.FindBytes(bytes, at);
    if (at == kNowhere) return;
    const std::uint8_t* const found = begin + at;
    from = PlaceOf(found, from, end);
    const std::uint8_t* const text = textOf(from);
    const std::uint8_t* const textEnd = text + RawTrace(RecordAt(from)).TextLength();
    const std::uint8_t* next = text;
    if (found >= text) {
      if (found < textEnd) Test(from);
      if (++from == end) return;
      next = textOf(from);
    }
    at = std::max(at + 1, static_cast<std::size_t>(next - begin));
  }
}

// The last one of [from, end) whose record begins at or before the byte. REQUIRES: `from` does.
std::size_t PieceScan::PlaceOf(const std::uint8_t* byte, std::size_t from, std::size_t end) const {
  std::size_t step = 1;
  while (end - from > step && RecordAt(from + step) <= byte) {
    from += step;
    step *= 2;
  }
  for (; step > 0; step /= 2)
    if (end - from > step && RecordAt(from + step) <= byte) from += step;
  return from;
}

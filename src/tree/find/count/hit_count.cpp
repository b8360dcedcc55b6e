#include "tree/find/count/hit_count.h"

#include <utility>

#include "tree/find/searched_text.h"

namespace {

constexpr unsigned kPauseMs = 5;
constexpr std::chrono::milliseconds kStep{4};
constexpr int kRowsPerLook = 64;
// Of the matcher, in one text: less than a millisecond.
constexpr std::int64_t kSteps = 20'000;

// Also of another count: whoever follows a view sees a new search by the version alone.
std::uint64_t NextVersion() {
  static std::uint64_t last = 0;
  return ++last;
}

}  // namespace

HitCount::HitCount(CTraceDoc& document, std::unique_ptr<CountedRows> rows,
                   const RegexProgram& program, const HitCountSetup& setup)
    : m_document(document),
      m_rows(std::move(rows)),
      m_program(program),
      m_plan(program),
      m_setup(setup) {
  OnAnew();
}

const TraceEvent_i* HitCount::TraceAt(int row) const {
  const bool stale = m_document.m_loading || m_generation != m_document.m_traces.Generation();
  return stale || row < 0 || row >= m_rows->CountedSize() ? nullptr : m_rows->CountedAt(row);
}

void HitCount::OnAnew() {
  m_bits.Clear();
  m_scan.reset();
  m_found = m_unfinished = m_begun = false;
  m_version = NextVersion();
  OnAdded();
}

void HitCount::OnAdded() {
  if (!m_timer) m_timer.emplace(m_document.GetHost(), kPauseMs, [this] { GoOn(); });
}

void HitCount::OnRemoved(int first, int count) {
  // Only a trim is frequent, and it begins at the first row. A scan is of a file, which trims none.
  if (first != 0 || m_scan) return OnAnew();
  if (count > m_bits.Known()) m_unfinished = false;
  m_bits.DropFront(count);
  m_version = NextVersion();
}

bool HitCount::IsWhole() const {
  return m_begun && m_bits.Known() >= m_rows->CountedSize() && m_rows->AreRowsWhole() &&
         !m_document.m_loading;
}

void HitCount::GoOn() {
  if (!Step(kStep)) m_timer.reset();
}

// The rows of a document that was cleared are gone; while one loads, they are not there yet.
bool HitCount::Step(std::chrono::milliseconds time) {
  if (m_document.m_loading) return false;
  if (m_begun && m_generation != m_document.m_traces.Generation()) OnAnew();
  if (!std::exchange(m_begun, true)) Begin();
  m_rows->BeginStep();
  const int knownBefore = m_bits.Known();
  const bool wholeBefore = IsWhole();
  const Clock::time_point until = Clock::now() + time;
  const bool more = m_scan ? StepScan(until) : StepRows(until);
  if (m_bits.Known() != knownBefore || IsWhole() != wholeBefore) m_version = NextVersion();
  return more;
}

void HitCount::Begin() {
  m_version = NextVersion();
  m_generation = m_document.m_traces.Generation();
  // Of a few rows in a large file most of what threads find would not be shown.
  if (m_rows->AreRowsWhole() && m_rows->CountedSize() < m_setup.rowsForThreads) return;
  std::shared_ptr<const LentTraces> lent = m_document.Lend();
  if (!lent || lent->traces.size() == 0 || lent->traces.size() != m_document.m_traces.size())
    return;
  if (m_setup.threads > 0)
    m_scan = TextScan::BeginWith(m_setup.threads, m_setup.perPiece, std::move(lent), m_program, {});
  else
    m_scan = TextScan::Begin(std::move(lent), m_program, {});
}

// ---- with threads

bool HitCount::StepScan(Clock::time_point until) {
  for (int looks = 1;; ++looks) {
    if (m_found && !TakeFound(until)) return true;
    if (looks % kRowsPerLook == 0 && Clock::now() >= until) return true;
    switch (m_scan->Next(std::chrono::milliseconds(0))) {
      case TextScan::State::Found:
        m_found = true;
        break;
      case TextScan::State::NotYet:
        return true;
      case TextScan::State::Failed:
        m_scan.reset();
        return StepRows(until);
      case TextScan::State::Over:
        // None of the rows that are still to come has a hit.
        m_bits.PassTo(m_rows->CountedSize());
        return !m_rows->AreRowsWhole();
    }
  }
}

bool HitCount::TakeFound(Clock::time_point until) {
  const int row = RowOfFound();
  if (row == m_rows->CountedSize() && !m_rows->AreRowsWhole()) return false;
  m_bits.PassTo(row);
  m_found = false;
  const TraceEvent_i* const found = m_document.m_traces[m_scan->Place()];
  if (row == m_rows->CountedSize() || m_rows->CountedAt(row) != found) return true;
  RegexAnswer answer = m_scan->IsSure() ? RegexAnswer::Yes : Test(row);
  while (answer == RegexAnswer::Unfinished && Clock::now() < until) answer = Test(row);
  m_found = answer == RegexAnswer::Unfinished;
  if (answer == RegexAnswer::Yes && m_rows->IsShown(row)) m_bits.AddHit(row);
  return !m_found;
}

// The first row, of those that are not known, whose record stands at that of the trace or behind
// it: found in steps that double, because neighbours are often near.
int HitCount::RowOfFound() const {
  const std::uint8_t* const record = m_document.m_traces[m_scan->Place()]->Record();
  const int size = m_rows->CountedSize();
  int low = m_bits.Known(), step = 1;
  while (low + step < size && m_rows->CountedAt(low + step)->Record() < record) {
    low += step;
    step *= 2;
  }
  int high = low + step < size ? low + step : size;
  while (low < high) {
    const int middle = low + (high - low) / 2;
    if (m_rows->CountedAt(middle)->Record() < record)
      low = middle + 1;
    else
      high = middle;
  }
  return low;
}

// ---- row by row

bool HitCount::StepRows(Clock::time_point until) {
  for (int looks = 1;; ++looks) {
    const int row = m_bits.Known();
    if (row >= m_rows->CountedSize()) return false;
    const RegexAnswer answer = Test(row);
    const bool slow = answer == RegexAnswer::Unfinished;
    if (answer == RegexAnswer::Yes && m_rows->IsShown(row)) m_bits.AddHit(row);
    if (!slow) m_bits.PassTo(row + 1);
    if ((slow || looks % kRowsPerLook == 0) && Clock::now() >= until) return true;
  }
}

// Goes on with a test that was not finished.
RegexAnswer HitCount::Test(int row) {
  std::string kept;
  const std::string_view text = SearchedText(*m_rows->CountedAt(row), kept);
  const RegexAnswer answer =
      m_unfinished ? m_matcher.Resume(m_plan, text, kSteps) : m_matcher.Begin(m_plan, text, kSteps);
  m_unfinished = answer == RegexAnswer::Unfinished;
  return answer;
}
